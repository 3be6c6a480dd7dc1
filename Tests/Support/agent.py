# SPDX-FileCopyrightText: 2026 Corvane
# SPDX-License-Identifier: MIT
"""The password dialog of the desktop's authentication agent, as the user meets it."""
import subprocess

import desktop

TITLE = "Authentication Required"


def _run(*command):
    return subprocess.run(["xdotool", *command], capture_output=True, text=True)


def is_open():
    return bool(_run("search", "--onlyvisible", "--name", TITLE).stdout.split())


def wait_for_dialog():
    """The number of the dialog's window, once it has the focus."""
    number = desktop.window(TITLE)
    desktop.wait_until(lambda: _run("getactivewindow").stdout.strip() == number,
                       "the password dialog to have the focus")
    # The window is there before its text field takes keys.
    dialog = desktop.Application("polkit-kde-authentication-agent-1")
    dialog.wait_for_label("OK")
    return number


def give_password(password):
    """Answers the dialog. A wrong password brings up another one."""
    wait_for_dialog()
    subprocess.run(["xdotool", "type", "--delay", "20", password], check=True)
    subprocess.run(["xdotool", "key", "Return"], check=True)


def cancel():
    number = wait_for_dialog()
    subprocess.run(["xdotool", "key", "Escape"], check=True)
    desktop.wait_until(lambda: _run("getwindowname", number).returncode != 0 or not is_open(),
                       "the cancelled dialog to close")
