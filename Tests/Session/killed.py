#!/usr/bin/python3
# SPDX-FileCopyrightText: 2026 Corvane
# SPDX-License-Identifier: MIT
"""The pane is killed in the middle of a start: the next opening shows the truth."""
import os
import plistlib
import time

from pane import (FOLDER, JOB, Pane, UNIT, agent, check_gone, check_job_file, copy_bundle, expect,
                  expected_job, helpers, listeners, play, session, slow_listener, turn_on, wait_until)


def while_it_asks(_pane):
    agent.wait_for_dialog()


def after_the_password(pane, seconds):
    agent.give_password(session.ADMINISTRATOR_PASSWORD)
    pane.wait_to_hear("Creating job...")
    time.sleep(seconds)


def when_the_job_file_appears(_pane):
    agent.give_password(session.ADMINISTRATOR_PASSWORD)
    while not os.path.exists(JOB):
        time.sleep(0.001)


def when_the_listener_starts(_pane):
    agent.give_password(session.ADMINISTRATOR_PASSWORD)
    while not listeners():
        time.sleep(0.001)


MOMENTS = (while_it_asks, lambda pane: after_the_password(pane, 0), when_the_job_file_appears,
           lambda pane: after_the_password(pane, 0.5), when_the_listener_starts)


def expect_nothing_half_written():
    """The folder holds the whole job file or nothing."""
    names = os.listdir(FOLDER) if os.path.isdir(FOLDER) else []
    expect(set(names) <= {os.path.basename(JOB)}, f"nothing else is in {FOLDER}: {names}")
    if names:
        # It may be the user's alone until its owner is set.
        text = session.root(["cat", JOB]).output.encode()
        expect(plistlib.loads(text) == expected_job(), f"the job file is whole: {text}")


def scene():
    copy_bundle()
    slow_listener()
    for number, moment in enumerate(MOMENTS, start=1):
        pane = Pane(status="Not loaded")
        pane.slide()
        moment(pane)
        pane.kill()
        wait_until(lambda: not agent.is_open(), "the dialog to close")
        wait_until(lambda: not helpers(), "the helper to end with the pane")
        time.sleep(2)  # what was started ends or comes up
        expect_nothing_half_written()
        runs = os.path.exists(JOB) and bool(listeners())
        print(f"moment {number}: {'a job file' if os.path.exists(JOB) else 'no job file'}, "
              f"{len(listeners())} listeners")
        pane = Pane(status="Running" if runs else "Not loaded")
        pane.picture(f"{number}-opened-again")
        expect(pane.is_on() == runs, f"the switch shows the truth, which is {runs}")
        if number < len(MOMENTS):
            pane.close()
            session.user(["systemctl", "--user", "stop", UNIT], check=False)
            session.root(["rm", "-rf", FOLDER])
            session.user(["systemctl", "--user", "daemon-reload"])
            continue
        # From there it goes on as ever.
        if runs:
            pane.slide()
            agent.give_password(session.ADMINISTRATOR_PASSWORD)
        else:
            turn_on(pane)
            check_job_file()
            pane.slide()
        pane.settled(on=False)
        check_gone()
        pane.close()


play(scene)
