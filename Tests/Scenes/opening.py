#!/usr/bin/python3
# SPDX-FileCopyrightText: 2026 Corvane
# SPDX-License-Identifier: MIT
"""Plays a first use of the pane on a virtual display and leaves a picture of each step.

usage: opening.py BUILD_FOLDER PICTURE_FOLDER

Runs in the sandbox, where "/Library" and the home are its own. Exit status 0 when every step showed
what it should.
"""
import os
import plistlib
import subprocess
import sys

sys.path.insert(0, os.path.join(os.path.dirname(__file__), "../Support"))
import desktop  # noqa: E402

JOB = "/Library/LaunchAgents/com.corvane.OstrelListener.plist"
PREFERENCES = os.path.expanduser("~/Library/Preferences/com.corvane.OstrelListener.plist")


def main():
    build, pictures = sys.argv[1:]
    listener = f"{build}/Ostrel.prefPane/Contents/MacOS/OstrelListener"
    os.makedirs(os.path.dirname(JOB), exist_ok=True)
    with open(JOB, "wb") as job:
        plistlib.dump({"Label": "com.corvane.OstrelListener", "Program": listener}, job)
    os.makedirs(os.path.dirname(PREFERENCES), exist_ok=True)

    shots = []

    def shot(name):
        path = f"{pictures}/{len(shots) + 1}-{name}.png"
        desktop.screenshot(path)
        shots.append(path)
        print(f"  {path}", flush=True)

    pane = desktop.start([f"{build}/bin/ostrel-settings"])
    window = desktop.Application("ostrel-settings")
    window.wait_for_label("Status: Not loaded")
    shot("opened")

    window.click("Show feedback when the volume changes")
    desktop.wait_until(
        lambda: desktop.property_list(PREFERENCES).get("volChangeFeedback") == 0,
        "the changed setting in the preferences file")
    shot("setting-changed")

    desktop.sleep_past_loading()
    stand_in = desktop.start([listener])
    window.wait_for_label("Status: Running")
    shot("listener-running")

    for page in ("Network", "Security"):
        window.click(page)
        shot(f"page-{page.lower()}")

    desktop.press("Ostrel", "ctrl+q")
    desktop.wait_until(lambda: pane.poll() is not None, "the window to close")
    stand_in.terminate()
    stand_in.wait(10)
    if pane.returncode != 0:
        raise AssertionError(f"ostrel-settings ended with {pane.returncode}")
    print("The scene was played: opened, changed a setting, saw the listener run, quit.")


if __name__ == "__main__":
    try:
        main()
    except (AssertionError, subprocess.SubprocessError) as error:
        sys.exit(f"opening.py: {error}")
    finally:
        desktop.end_all()
