#!/usr/bin/python3
# SPDX-FileCopyrightText: 2026 Corvane
# SPDX-License-Identifier: MIT
"""The password is refused: nothing changes, and the switch goes back, which asks once more."""
import os

from pane import (Pane, FOLDER, agent, authentications, check_gone, copy_bundle, expect, helpers, play,
                  wait_until)


def scene():
    copy_bundle()
    before = sorted(os.listdir("/Library"))
    pane = Pane(status="Not loaded")
    pane.forget_words()
    pane.slide()
    agent.wait_for_dialog()
    pane.picture("1-asked")
    agent.cancel()
    # The switch goes off by itself, which is a stop, and a stop asks for the authorisation too.
    agent.wait_for_dialog()
    pane.picture("2-asked-again")
    agent.cancel()
    pane.settled(on=False)
    pane.wait_for("Not loaded")
    pane.picture("3-refused")
    expect(set(pane.words()) <= {"Not loaded", "Timed out"}, f"no progress is shown: {pane.words()}")
    expect(not agent.is_open(), "it does not ask a third time")
    expect(authentications() == 0, "no password was accepted")
    expect(sorted(os.listdir("/Library")) == before, f"/Library is as it was, without {FOLDER}")
    check_gone()
    wait_until(lambda: not helpers(), "no helper to be left")
    pane.close()


play(scene)
