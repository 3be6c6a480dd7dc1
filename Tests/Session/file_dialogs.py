#!/usr/bin/python3
# SPDX-FileCopyrightText: 2026 Corvane
# SPDX-License-Identifier: MIT
"""Files are chosen and pages opened while the authorisation is held, on a desktop whose file dialogs are the
portal's: it asks who the caller is in a way that no longer works then."""
import os
import shutil
import subprocess

from pane import (BUILD, BUNDLE, Pane, copy_bundle, desktop, expect, helpers, play, session, turn_on, wait_until)

PRESETS = f"{session.HOME}/Library/Application Support/Corvane/Ostrel/Keyboard Layouts"
PORTAL = "xdg-desktop-portal-gtk"
OPENED = f"{session.HOME}/opened"
MANUAL = f"{BUNDLE}/Contents/Resources/Ostrel User Manual.pdf"


def note_what_is_opened():
    """A browser and viewer that writes down what it is to show, and whether it is like other programs."""
    folder = f"{session.HOME}/bin"
    os.mkdir(folder)
    with open(f"{folder}/xdg-open", "w", encoding="utf-8") as file:
        file.write(f'#!/bin/sh\ntest -O /proc/$$/mem && echo "$1" >>{OPENED}\n')
    os.chmod(file.name, 0o755)
    return folder


def opened():
    try:
        with open(OPENED, encoding="utf-8") as file:
            return file.read().splitlines()
    except FileNotFoundError:
        return []


def program_of(window):
    """Whose window it is."""
    pid = subprocess.run(["xprop", "-id", window, "-notype", "_NET_WM_PID"], capture_output=True, text=True,
                         check=True).stdout.split()[-1]
    with open(f"/proc/{pid}/cmdline", encoding="utf-8") as file:
        return os.path.basename(file.read().split("\0")[0])


def visible_windows(pattern, part="--name"):
    return subprocess.run(["xdotool", "search", "--onlyvisible", part, pattern],
                          capture_output=True, text=True).stdout.split()


def our_windows():
    return visible_windows("ostrel-settings", "--class")


def ask_for_file(pane, letter, title):
    """Chooses the menu's entry of this letter; the window that asks for a file and whose it is."""
    before = our_windows()
    pane.window.click("More about presets")
    wait_until(lambda: set(our_windows()) - set(before), "the menu")
    [menu] = set(our_windows()) - set(before)
    # To the menu itself: on the screen it is before it holds the keyboard.
    subprocess.run(["xdotool", "key", "--window", menu, letter], check=True)
    window = desktop.window(title)
    return window, program_of(window)


def give_file(window, path):
    subprocess.run(["xdotool", "windowfocus", "--sync", window, "type", "--delay", "20", path], check=True)
    subprocess.run(["xdotool", "key", "Return"], check=True)
    wait_until(lambda: window not in our_windows(), "the dialog to close")


def scene():
    copy_bundle()
    with open(MANUAL, "a", encoding="utf-8"):
        pass
    name = os.listdir(f"{BUNDLE}/Contents/Resources/Default Layouts")[0]
    shutil.copy(f"{BUNDLE}/Contents/Resources/Default Layouts/{name}", f"{session.HOME}/Shared.okl")
    folder = note_what_is_opened()

    def opened_pane():
        return Pane([f"{BUILD}/bin/ostrel-settings", "--pane", BUNDLE, "--page", "keyboard"],
                    status="Not loaded", QT_QPA_PLATFORMTHEME="xdgdesktopportal",
                    PATH=f"{folder}:{os.environ['PATH']}")

    pane = opened_pane()
    window, program = ask_for_file(pane, "i", "Import Presets")
    pane.picture("1-before")
    expect(program == PORTAL, f"without an authorisation the dialog is the desktop's: {program}")
    subprocess.run(["xdotool", "windowfocus", "--sync", window, "key", "Escape"], check=True)
    wait_until(lambda: window not in visible_windows("Import Presets"), "the dialog to close")
    pane.close()

    # Another process: the portal remembers whom it has once recognised.
    pane = opened_pane()

    turn_on(pane)
    expect(len(helpers()) == 1, f"the authorisation is held: {helpers()}")
    window, program = ask_for_file(pane, "i", "Import Presets")
    pane.picture("2-during")
    expect(program == "ostrel-settings", f"with one it is our own: {program}")
    give_file(window, f"{session.HOME}/Shared.okl")
    wait_until(lambda: os.path.exists(f"{PRESETS}/Shared.okl"), "the import")
    window, _ = ask_for_file(pane, "x", "Export “Shared”")
    give_file(window, f"{session.HOME}/Exported.okl")
    wait_until(lambda: os.path.exists(f"{session.HOME}/Exported.okl"), "the export")
    pane.window.click("Leave feedback")
    wait_until(lambda: [page for page in opened() if "/ostrel/feedback/" in page], "the page to open")
    pane.window.click("User manual")
    wait_until(lambda: [page for page in opened() if page.endswith("Manual.pdf")], "the manual to open")
    expect(len(helpers()) == 1, f"the authorisation is held all the time: {helpers()}")
    pane.close()
    wait_until(lambda: not helpers(), "the authorisation to end")


play(scene)
