#!/usr/bin/python3
# SPDX-FileCopyrightText: 2026 Corvane
# SPDX-License-Identifier: MIT
"""Gathers the logs in the window, on a virtual display, and leaves a picture of each step.

usage: gather_logs.py BUILD_FOLDER PICTURE_FOLDER

Runs as an ordinary user of the sandbox. Exit status 0 when every step showed what it should.
"""
import os
import subprocess
import sys
import zipfile

sys.path.insert(0, os.path.join(os.path.dirname(__file__), "../Support"))
import desktop  # noqa: E402

HOME = os.path.expanduser("~")
ARCHIVE = f"{HOME}/Desktop/Ostrel Logs.zip"
LOGS = {
    f"{HOME}/Library/Logs/Corvane/OstrelListener.1.log": b"the user's log\n" * 100_000,
    "/Library/Logs/Corvane/OstrelListener.1.log": b"the computer's log\n",
    f"{HOME}/Library/Logs/DiagnosticReports/Ostrel_2024-01-31-120000_host.crash": b"a crash\n",
}
PRIVATE = {
    f"{HOME}/Library/Logs/Corvane/Runvale.1.log": b"another program's\n",
    f"{HOME}/Documents/Ostrel.1.log": b"a document\n",
}


def write(path, contents):
    os.makedirs(os.path.dirname(path), exist_ok=True)
    with open(path, "wb") as file:
        file.write(contents)


def main():
    build, pictures = sys.argv[1:]
    os.makedirs(os.path.dirname(ARCHIVE), exist_ok=True)
    for path, contents in {**LOGS, **PRIVATE}.items():
        write(path, contents)

    def shot(name):
        path = f"{pictures}/{name}.png"
        desktop.screenshot(path)
        print(f"  {path}", flush=True)

    pane = desktop.start([f"{build}/bin/ostrel-settings"])
    window = desktop.Application("ostrel-settings")
    window.wait_for_label("Status: Not loaded")
    window.click("Gather logs")
    window.wait_for_label("Logs gathered successfully")
    shot("1-gathered")
    with zipfile.ZipFile(ARCHIVE) as archive:
        files = {name[len("ZQ_App_Logs"):]: archive.read(name)
                 for name in archive.namelist() if not name.endswith("/")}
    own = files.pop(f"{HOME}/Library/Logs/Corvane/Ostrel.1.log", b"")
    if b" - Log started: " not in own:
        raise AssertionError(f"the pane's own log: {own}")
    expected = dict(LOGS)
    settings = f"{HOME}/Library/Preferences/com.corvane.OstrelListener.plist"
    if settings in files:  # written by the pane a second after it has opened
        expected[settings] = files[settings]
    if files != expected:
        raise AssertionError(f"gathered {sorted(files)}, not {sorted(expected)}")
    subprocess.run(["unzip", "-tq", ARCHIVE], check=True, stdout=subprocess.DEVNULL)

    window.click("OK")
    desktop.wait_until(lambda: not window.find("Logs gathered successfully"), "the alert to go")

    unreadable = f"{HOME}/Library/Logs/Corvane/OstrelListener.2.log"
    write(unreadable, b"not for this user\n")
    os.chmod(unreadable, 0)
    window.click("Gather logs")
    window.wait_for_label(f"The logs could not be gathered: {unreadable}: Permission denied")
    shot("2-not-gathered")

    if os.listdir(f"{HOME}/Desktop") != ["Ostrel Logs.zip"]:
        raise AssertionError(f"on the desktop: {os.listdir(f'{HOME}/Desktop')}")

    # Closed at once, the window still brings what was asked for to its end.
    os.unlink(unreadable)
    os.unlink(ARCHIVE)
    large = os.urandom(60_000_000)
    write(f"{HOME}/Library/Logs/Corvane/OstrelListener.3.log", large)
    window.click("Gather logs")
    desktop.press("Ostrel", "ctrl+q")
    desktop.wait_until(lambda: pane.poll() is not None, "the window to close")
    if pane.returncode != 0:
        raise AssertionError(f"ostrel-settings ended with {pane.returncode}")
    with zipfile.ZipFile(ARCHIVE) as archive:
        gathered = archive.read(f"ZQ_App_Logs{HOME}/Library/Logs/Corvane/OstrelListener.3.log")
    if gathered != large:
        raise AssertionError("the large log is not whole")
    print("The scene was played: gathered the logs, looked into the archive, met one that nobody "
          "may read, quit while gathering.")


if __name__ == "__main__":
    try:
        main()
    except (AssertionError, OSError, subprocess.SubprocessError) as error:
        sys.exit(f"gather_logs.py: {error}")
    finally:
        desktop.end_all()
