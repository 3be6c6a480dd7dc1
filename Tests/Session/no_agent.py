#!/usr/bin/python3
# SPDX-FileCopyrightText: 2026 Corvane
# SPDX-License-Identifier: MIT
"""A desktop without an authentication agent: the switch goes back, and the pane says why."""
from pane import Pane, agent, authentications, check_gone, copy_bundle, expect, play, session, wait_until

NOTICE = "The administrator's password cannot be asked for: no polkit agent is running in this session."
CONSOLE = "No polkit agent is running in this session"


def scene():
    copy_bundle()
    pane = Pane(status="Not loaded")
    pane.slide()
    pane.window.wait_for_label(NOTICE)
    wait_until(lambda: CONSOLE in session.journal("--identifier=ostrel-settings"),
               f'"{CONSOLE}" on the console')
    pane.settled(on=False)
    pane.wait_for("Not loaded")
    pane.picture("1-back")
    expect(not agent.is_open() and authentications() == 0, "nobody was asked")
    check_gone()
    pane.close()


play(scene)
