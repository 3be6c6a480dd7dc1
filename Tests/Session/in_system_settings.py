#!/usr/bin/python3
# SPDX-FileCopyrightText: 2026 Corvane
# SPDX-License-Identifier: MIT
"""The whole story in the desktop's own settings application."""
from pane import (BUILD, Pane, check_gone, check_job_file, desktop, expect, listener, play, turn_on,
                  wait_until)

PROGRAM = "kcmshell5"


def scene():
    bundle = f"{BUILD}/Ostrel.prefPane"
    pane = Pane([PROGRAM, "kcm_ostrel"], PROGRAM, "Not loaded", QT_PLUGIN_PATH=f"{BUILD}/plugins")
    pane.picture("1-opened")
    turn_on(pane)
    listener()
    check_job_file(bundle)
    pane.picture("2-running")
    pane.slide()
    pane.settled(on=False)
    check_gone()
    pane.picture("3-stopped")
    desktop.press("Ostrel", "Escape")
    wait_until(lambda: pane.process.poll() is not None, f"{PROGRAM} to close")
    expect(pane.process.returncode == 0, f"{PROGRAM} ended with {pane.process.returncode}")
    pane.forget()


play(scene)
