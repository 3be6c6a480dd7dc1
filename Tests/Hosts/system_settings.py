#!/usr/bin/python3
# SPDX-FileCopyrightText: 2026 Corvane
# SPDX-License-Identifier: MIT
"""Loads the module in the real shell for modules of KDE System Settings and uses it from outside.

usage: system_settings.py BUILD_FOLDER PICTURE

Runs in the sandbox with a session bus and an X server. Leaves a picture of the screen at PICTURE.
"""
import os
import subprocess
import sys

sys.path.insert(0, os.path.join(os.path.dirname(__file__), "../Support"))
import desktop  # noqa: E402

PROGRAM = "kcmshell5"
JOB = "/Library/LaunchAgents/com.corvane.OstrelListener.plist"
PREFERENCES = os.path.expanduser("~/Library/Preferences/com.corvane.OstrelListener.plist")


def main():
    build, picture = sys.argv[1:]
    os.makedirs(os.path.dirname(JOB), exist_ok=True)
    os.makedirs(os.path.dirname(PREFERENCES), exist_ok=True)
    with open(JOB, "wb"):
        pass
    # A listener of this name runs and its job is installed, so the pane opens with "Running".
    listener = desktop.start([f"{build}/Ostrel.prefPane/Contents/MacOS/OstrelListener"])
    requests = subprocess.Popen(["dbus-monitor", "--session",
                                 "member='Posted',arg0='ZQOstrelClientCurrentStatus'"],
                                stdout=subprocess.PIPE, text=True)
    host = desktop.start([PROGRAM, "kcm_ostrel"], QT_PLUGIN_PATH=f"{build}/plugins",
                         XDG_CURRENT_DESKTOP="KDE")
    desktop.Application(PROGRAM).wait_for_label("Status: Running")
    for line in requests.stdout:  # until the pane has asked the listener
        if "ZQOstrelClientCurrentStatus" in line:
            break
    desktop.press("Ostrel", "alt+f")  # "Show feedback when the volume changes"
    desktop.wait_until(
        lambda: desktop.property_list(PREFERENCES).get("volChangeFeedback") == 0,
        "the changed setting in the preferences file")
    desktop.screenshot(picture)
    print(f"  {picture}")
    if host.poll() is not None:
        raise AssertionError(f"{PROGRAM} ended with {host.returncode}")
    listener.terminate()
    requests.terminate()
    # Closing the module takes the pane down while its poll and observers are alive.
    desktop.press("Ostrel", "Escape")
    desktop.wait_until(lambda: host.poll() is not None, f"{PROGRAM} to close")
    if host.returncode != 0:
        raise AssertionError(f"{PROGRAM} ended with {host.returncode}")


if __name__ == "__main__":
    try:
        main()
    except (AssertionError, subprocess.SubprocessError) as error:
        sys.exit(f"system_settings.py: {error}")
    finally:
        desktop.end_all()
