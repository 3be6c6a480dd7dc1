#!/usr/bin/python3
# SPDX-FileCopyrightText: 2026 Corvane
# SPDX-License-Identifier: MIT
"""The window is closed while the password is asked for: the dialog goes with it, nothing changes."""
import os

from pane import Pane, FOLDER, agent, check_gone, copy_bundle, desktop, expect, helpers, play, wait_until


def scene():
    copy_bundle()
    before = sorted(os.listdir("/Library"))
    pane = Pane(status="Not loaded")
    pane.slide()
    agent.wait_for_dialog()
    pane.picture("1-asked")
    desktop.press("Ostrel", "ctrl+q")
    wait_until(lambda: pane.process.poll() is not None, "the program to end")
    expect(pane.process.returncode == 0, f"it ended well: {pane.process.returncode}")
    wait_until(lambda: not agent.is_open(), "the dialog to go")
    expect(sorted(os.listdir("/Library")) == before, f"/Library is as it was, without {FOLDER}")
    check_gone()
    wait_until(lambda: not helpers(), "no helper to be left")


play(scene)
