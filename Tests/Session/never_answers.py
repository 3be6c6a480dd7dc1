#!/usr/bin/python3
# SPDX-FileCopyrightText: 2026 Corvane
# SPDX-License-Identifier: MIT
"""A listener that never answers: it is given up, and stopped."""
from pane import (Pane, agent, authentications, check_gone, copy_bundle, expect, listener, play, session,
                  silent_listener, wait_until)


def scene():
    copy_bundle()
    silent_listener()
    pane = Pane(status="Not loaded")
    pane.forget_words()
    pane.slide()
    agent.give_password(session.ADMINISTRATOR_PASSWORD)
    pane.wait_to_hear("Launching service...")
    pane.settled(on=True)
    listener()
    pane.picture("1-silent")
    pane.wait_to_hear("Disconnecting...")
    pane.picture("2-stop-by-itself")
    pane.settled(on=False)
    pane.wait_for("Not loaded")
    pane.picture("3-stopped")
    words = pane.words()
    words = words[words.index("Launching service..."):]
    # "Timed out" and what follows it are too short to be heard each time. The hand-start's own refresh comes
    # with the time-out; where it falls into the stop it moves the switch, and the stop is repeated.
    stop = ["Disconnecting...", "Unloading job...", "Not loaded"]
    order = iter(["Launching service...", "Timed out", "Not loaded"] + stop + stop)
    expect(all(word in order for word in words), f"these words were shown, in this order: {words}")
    expect("Disconnecting..." in words and words[-1] == "Not loaded", f"the stop was shown: {words}")
    check_gone()
    expect(authentications() == 1, "the stop did not ask for the password again")
    wait_until(lambda: not pane.is_working(), "the spinner to stop")
    pane.close()


play(scene)
