#!/usr/bin/python3
# SPDX-FileCopyrightText: 2026 Corvane
# SPDX-License-Identifier: MIT
"""The pane was updated: its next opening relaunches the listener once."""
import plistlib

from pane import (BUNDLE, PREFERENCES, Pane, authentications, check_job_file, copy_bundle, desktop, expect,
                  listener, play, steady_listener, turn_on, unit_lines, wait_until)

INFO = f"{BUNDLE}/Contents/Info.plist"


def counts():
    return unit_lines("Stopped"), unit_lines("Started")


def scene():
    copy_bundle()
    # One that says "Disconnected" turns the switch off and, back again, on; which is another start.
    steady_listener()
    pane = Pane(status="Not loaded")
    turn_on(pane)
    pane.close()
    old = listener()
    stopped, started = counts()
    info = desktop.property_list(INFO)
    version = info["CFBundleVersion"]
    expect(desktop.property_list(PREFERENCES)["lastRunVersion"] == version, "the version is noted")

    info["CFBundleVersion"] = f"{version}.1"
    with open(INFO, "wb") as file:
        plistlib.dump(info, file)
    pane = Pane(status="Running")
    wait_until(lambda: counts() == (stopped + 1, started + 1), f"one stop and one start: {counts()}")
    new = listener()
    expect(new != old, "another listener runs")
    pane.wait_for("Running")
    expect(pane.is_on(), "the switch is on")
    expect(desktop.property_list(PREFERENCES)["lastRunVersion"] == f"{version}.1",
           "the new version is noted")
    pane.picture("1-relaunched")
    pane.close()

    pane = Pane(status="Running")
    pane.picture("2-opened-again")
    pane.close()
    expect(listener() == new, "the same listener runs on")
    expect(counts() == (stopped + 1, started + 1), f"nothing was stopped or started: {counts()}")
    check_job_file()
    expect(authentications() == 1, "none of it needed a password")


play(scene)
