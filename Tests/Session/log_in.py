#!/usr/bin/python3
# SPDX-FileCopyrightText: 2026 Corvane
# SPDX-License-Identifier: MIT
"""The listener runs again at the next login."""
from pane import (BUILD, PICTURES, Pane, UNIT, agent, cgroup, check_gone, check_job_file,
                  copy_bundle, expect, listener, listeners, play, session, turn_on)


def scene(*part):
    if not part:
        copy_bundle()
        pane = Pane(status="Not loaded")
        turn_on(pane)
        pane.close()
        before = listener()
        session.log_out()
        expect(not listeners(), "nothing runs after the log-out")
        check_job_file()
        session.log_in()
        session.again(BUILD, PICTURES, str(before))
    expect(str(listener()) != part[0] and cgroup(listener()).endswith(UNIT), "the job runs again")
    pane = Pane(status="Running")
    expect(pane.is_on(), "the switch is on")
    pane.picture("1-after-the-login")
    pane.slide()
    agent.give_password(session.ADMINISTRATOR_PASSWORD)
    pane.settled(on=False)
    check_gone()
    pane.close()


play(scene)
