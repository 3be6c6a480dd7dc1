#!/usr/bin/python3
# SPDX-FileCopyrightText: 2026 Corvane
# SPDX-License-Identifier: MIT
"""The pane is left in the desktop's settings application, which goes on: the authorisation ends."""
import attacker
from pane import (BUILD, Pane, agent, authentications, check_gone, check_job_file, expect, helpers, listener,
                  play, session, turn_on, wait_until)

PROGRAM = "systemsettings"
OURS, OTHER = "kcm_ostrel", "kcm_filetypes"


def show(module):
    """As from the desktop's menu: the application that runs already shows it."""
    session.user([PROGRAM, module])


def leave(pane):
    show(OTHER)
    wait_until(lambda: not pane.window.find("Ostrel listener"), "the pane to go")


def scene():
    bundle = f"{BUILD}/Ostrel.prefPane"
    pane = Pane([PROGRAM, OURS], PROGRAM, "Not loaded", QT_PLUGIN_PATH=f"{BUILD}/plugins")
    address = attacker.an_address(pane.process.pid)

    turn_on(pane)
    listener()
    check_job_file(bundle)
    expect(len(helpers()) == 1, f"the authorisation is held: {helpers()}")
    expect(attacker.successes(pane.process.pid, address) == [], "nobody else can use it")
    leave(pane)
    pane.picture("1-left")
    wait_until(lambda: not helpers(), "the authorisation to end")
    expect(pane.process.poll() is None, "the application runs on")
    expect(len(attacker.successes(pane.process.pid, address)) == attacker.COUNT, "as it was before")
    listener()
    check_job_file(bundle)

    # Left again while a worker uses it: that is done to its end.
    pane.come_back(lambda: show(OURS))
    pane.settled(on=True)
    before = authentications()
    pane.slide()
    agent.give_password(session.ADMINISTRATOR_PASSWORD)
    wait_until(lambda: len(helpers()) == 1, "the stop to begin")
    leave(pane)
    wait_until(lambda: not helpers(), "the authorisation to end")
    expect(authentications() == before + 1, "the password was asked for anew")
    check_gone()
    expect(pane.process.poll() is None, "the application runs on")


play(scene)
