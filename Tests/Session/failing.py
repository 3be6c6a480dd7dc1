#!/usr/bin/python3
# SPDX-FileCopyrightText: 2026 Corvane
# SPDX-License-Identifier: MIT
"""A listener that ends at once, again and again: the page says so, and what the listener has said."""
import os

from pane import (Pane, agent, check_gone, copy_bundle, expect, listener_path, play, session, wait_until)

WORDS = "cannot listen: port 24780 is taken"


def notice(pane):
    """The text of the page's notice, empty where there is none."""
    return next((name for name in pane.window.names() if name.startswith("The listener ")), "")


def scene():
    copy_bundle()
    new = listener_path() + ".new"
    with open(new, "w", encoding="utf-8") as file:
        file.write(f"#!/bin/sh\necho '{WORDS}' >&2\nexit 3\n")
    os.chmod(new, 0o755)
    os.rename(new, listener_path())
    pane = Pane(status="Not loaded")
    pane.slide()
    agent.give_password(session.ADMINISTRATOR_PASSWORD)
    pane.wait_to_hear("Launching service...")
    wait_until(lambda: notice(pane), "the notice")
    pane.picture("1-failed")
    wait_until(lambda: "keeps failing" in notice(pane), f"the notice to tell of more: {notice(pane)}")
    # A journal that is kept in memory only cannot be read by the user; then the exit status is all there is.
    expect(WORDS in notice(pane) or "exit status 3" in notice(pane), f"the reason is told: {notice(pane)}")
    pane.picture("2-keeps-failing")
    # The time-out stops it.
    pane.wait_to_hear("Disconnecting...")
    pane.settled(on=False)
    check_gone()
    expect("keeps failing" in notice(pane), f"the notice stays: {notice(pane)}")
    pane.picture("3-stopped")
    pane.close()


play(scene)
