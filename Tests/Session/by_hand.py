#!/usr/bin/python3
# SPDX-FileCopyrightText: 2026 Corvane
# SPDX-License-Identifier: MIT
"""A listener that was started by hand gives way to the job's."""
from pane import (Pane, cgroup, check_gone, copy_bundle, desktop, expect, listener, listener_path, play,
                  turn_on, wait_until, UNIT)


def scene():
    copy_bundle()
    by_hand = desktop.start([listener_path()])
    expect(listener() == by_hand.pid, "the listener runs by hand")
    pane = Pane(status="Not loaded")
    expect(not pane.is_on(), "without its job the switch is off")
    pane.picture("1-by-hand")
    turn_on(pane)
    pane.picture("2-running")
    wait_until(lambda: by_hand.poll() is not None, "the listener started by hand to end")
    pid = listener()
    expect(pid != by_hand.pid and cgroup(pid).endswith(UNIT), "the job's listener runs alone")

    # One beside the job's ends with the stop, too.
    beside = desktop.start([listener_path()])
    pane.slide()
    pane.settled(on=False)
    wait_until(lambda: beside.poll() is not None, "the second listener to end")
    check_gone()
    pane.close()


play(scene)
