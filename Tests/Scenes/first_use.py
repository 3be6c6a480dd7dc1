#!/usr/bin/python3
# SPDX-FileCopyrightText: 2026 Corvane
# SPDX-License-Identifier: MIT
"""Plays a first use of the pane on a virtual display and leaves a picture of each step.

usage: first_use.py BUILD_FOLDER PICTURE_FOLDER

Runs as root of the sandbox, where "/Library" and the home are its own: root needs no password, and
where no service manager runs the pane's own supervisor keeps the listener. Exit status 0 when every
step showed what it should.
"""
import os
import subprocess
import sys

sys.path.insert(0, os.path.join(os.path.dirname(__file__), "../Support"))
import desktop  # noqa: E402

JOB = "/Library/LaunchAgents/com.corvane.OstrelListener.plist"
PRESETS = os.path.expanduser("~/Library/Application Support/Corvane/Ostrel/Keyboard Layouts")
PREFERENCES = os.path.expanduser("~/Library/Preferences/com.corvane.OstrelListener.plist")


def listeners():
    """The process ids of the listeners that run."""
    found = []
    for pid in filter(str.isdigit, os.listdir("/proc")):
        try:
            if os.readlink(f"/proc/{pid}/exe").endswith("/OstrelListener"):
                found.append(int(pid))
        except OSError:
            continue
    return found


def main():
    build, pictures = sys.argv[1:]
    shots = []

    def shot(name):
        path = f"{pictures}/{len(shots) + 1}-{name}.png"
        desktop.screenshot(path)
        shots.append(path)
        print(f"  {path}", flush=True)

    # Some words of the status line show for a moment only.
    status = desktop.StatusWords()
    os.makedirs("/Library/Logs/Corvane")  # where root's log goes, if somebody made it
    pane = desktop.start([f"{build}/bin/ostrel-settings"],
                         output=f"{pictures}/ostrel-settings.log")
    window = desktop.Application("ostrel-settings")
    window.wait_for_label("Status: Not loaded")
    shot("opened")

    window.click("Show feedback when the volume changes")
    desktop.wait_until(
        lambda: desktop.property_list(PREFERENCES).get("volChangeFeedback") == 0,
        "the changed setting in the preferences file")
    shot("setting-changed")

    # Until the worker that notes the pane's version has ended, the pane ignores the switch.
    desktop.wait_until(lambda: "lastRunVersion" in desktop.property_list(PREFERENCES), "the noted version")
    desktop.wait_for_workers(pane)
    window.click("Ostrel listener")
    status.wait_for("Creating job...")
    shot("switched-on")
    window.wait_for_label("Status: Running")
    if not desktop.property_list(JOB).get("RunAtLoad") or len(listeners()) != 1:
        raise AssertionError(f"job file {desktop.property_list(JOB)}, listeners {listeners()}")
    shot("listener-running")

    window.click("Keyboard")
    window.wait_for_label("Remote key")
    shot("page-keyboard")
    window.double_click("Rewind")
    desktop.window("Choose a Shortcut")
    shot("choose-a-shortcut")
    desktop.press("Choose a Shortcut", "ctrl+F7")
    preset = f"{PRESETS}/Audacious.okl"
    desktop.wait_until(
        lambda: desktop.property_list(preset).get("keys", {}).get("rewind", {}).get("val") == "Ctrl+F7",
        f"the shortcut in {preset}")
    window.wait_for_label("Ctrl+F7")
    shot("shortcut-chosen")

    for page in ("Network", "Security"):
        window.click(page)
        shot(f"page-{page.lower()}")

    window.click("Ostrel listener")
    status.wait_for("Disconnected")  # the listener's own word
    shot("switched-off")
    window.wait_for_label("Status: Not loaded")
    desktop.wait_until(lambda: not os.path.exists(JOB) and not listeners(),
                       "the job file and the listener to go")
    shot("listener-gone")

    desktop.press("Ostrel", "ctrl+q")
    desktop.wait_until(lambda: pane.poll() is not None, "the window to close")
    if pane.returncode != 0:
        raise AssertionError(f"ostrel-settings ended with {pane.returncode}")
    print("The scene was played: opened, changed a setting, switched the listener on, saw it run, "
          "chose a shortcut, switched it off, quit.")


if __name__ == "__main__":
    try:
        main()
    except (AssertionError, subprocess.SubprocessError) as error:
        sys.exit(f"first_use.py: {error}")
    finally:
        desktop.end_all()
