#!/usr/bin/python3
# SPDX-FileCopyrightText: 2026 Corvane
# SPDX-License-Identifier: MIT
"""The listener crashes, ends by itself, or hangs when it is to stop."""
import time

from pane import (Pane, agent, check_gone, copy_bundle, desktop, expect, listener, listeners, play, send, session,
                  silent_listener, turn_on, unit, wait_until)


def scene():
    copy_bundle()
    pane = Pane(status="Not loaded")
    turn_on(pane)
    # The worker that looks 15 seconds after a launch whether the listener is up would start another one.
    desktop.wait_for_workers(pane.process)
    first = listener()

    send(first, "SIGSEGV")
    began = time.monotonic()
    wait_until(lambda: listeners() and first not in listeners(), "the listener to come back")
    print(f"back {time.monotonic() - began:.1f} s after the crash")
    pane.picture("1-after-the-crash")
    second = listener()
    send(second, "SIGKILL")
    wait_until(lambda: listeners() and second not in listeners(), "the listener to come back again")
    pane.wait_for("Running")
    expect(pane.is_on(), "the switch stays on")

    hanging = listener()
    send(hanging, "SIGSTOP")
    began = time.monotonic()
    pane.slide()
    pane.wait_for("Not loaded")
    expect(time.monotonic() - began >= 2, "the listener has two seconds to say good-bye")
    pane.settled(on=False)
    check_gone()
    pane.picture("2-hanging-listener-stopped")

    # One that ends with success stays ended. The pane that is closed does not look after it.
    silent_listener()
    pane.slide()
    pane.settled(on=True)
    third = listener()
    pane.close()
    send(third, "SIGUSR1")
    wait_until(lambda: unit("ActiveState") == "inactive", "the job to have ended")
    expect(unit("Result") == "success", "it ended with success")
    time.sleep(13)  # a crashed one is back after ten
    expect(not listeners(), "the listener stays ended")

    pane = Pane(status="Not loaded")
    expect(not pane.is_on(), "the pane says so")
    pane.picture("3-ended-by-itself")
    pane.close()


play(scene)
