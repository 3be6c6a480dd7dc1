# SPDX-FileCopyrightText: 2026 Corvane
# SPDX-License-Identifier: MIT
"""Drives programs from outside: reads labels over AT-SPI, moves the mouse with xdotool."""
import contextlib
import os
import plistlib
import re
import subprocess
import sys
import tempfile
import time

import gi

gi.require_version("Atspi", "2.0")
from gi.repository import Atspi, GLib  # noqa: E402

PATIENCE = 180  # seconds; a loaded machine is slow, a broken program stays broken
_started = []


def start(command, output=None, **options):
    """Starts a program that announces itself to assistive technology.

    What it prints goes to the file `output`, or where our own output goes; errors_of() has its errors.
    """
    # This brings the accessibility bus up, which leaves its address on the root window; there Qt
    # finds it at once. A Qt 5 that has to ask the session bus for it may announce itself before
    # the answer comes, and then is never seen.
    Atspi.get_desktop(0).get_child_count()
    with open(output, "w") if output else contextlib.nullcontext() as file:
        errors = tempfile.TemporaryFile()
        process = subprocess.Popen(command, env=dict(os.environ, **options), stdout=file, stderr=errors)
    process.errors = errors
    _started.append(process)
    return process


def errors_of(process):
    """The end of what the program has written to its standard error."""
    size = os.fstat(process.errors.fileno()).st_size
    return os.pread(process.errors.fileno(), 4000, max(0, size - 4000)).decode(errors="replace")


def end_all():
    for process in _started:
        if process.poll() is None:
            process.terminate()


def wait_until(condition, what):
    end = time.monotonic() + PATIENCE
    while time.monotonic() < end:
        found = condition()
        if found:
            return found
        time.sleep(0.05)
    raise AssertionError(f"waited in vain for {what}")


def wait_for_workers(process):
    """Waits until no worker thread of the program runs."""
    def running():
        folder = f"/proc/{process.pid}/task"
        for thread in os.listdir(folder):
            try:
                with open(f"{folder}/{thread}/comm", encoding="utf-8") as file:
                    if file.read() == "worker\n":
                        return True
            except OSError:  # it has ended
                continue
        return False

    wait_until(lambda: not running(), "the workers to end")


def property_list(path):
    try:
        with open(path, "rb") as file:
            return plistlib.load(file)
    except (OSError, plistlib.InvalidFileException):
        return {}


def screenshot(path):
    time.sleep(0.4)  # implicit animations end
    subprocess.run(["import", "-window", "root", "-trim", "+repage", path], check=True)


def window(title):
    """The number of the showing window of this title, once it is there."""
    found = []

    def is_there():
        search = subprocess.run(["xdotool", "search", "--onlyvisible", "--name", title],
                                capture_output=True, text=True)
        found[:] = search.stdout.split()
        return bool(found)

    wait_until(is_there, f'a window "{title}"')
    return found[-1]


def _place_of(window_number):
    """Left, top, width and height on the screen, without the window manager's frame."""
    told = subprocess.run(["xwininfo", "-id", window_number], capture_output=True, text=True).stdout
    names = "Absolute upper-left X", "Absolute upper-left Y", "Width", "Height"
    found = [re.search(f"{name}: +(-?[0-9]+)", told) for name in names]
    return tuple(int(match[1]) for match in found) if all(found) else None


def press(title, key):
    """Presses a key in the window of this title."""
    # Without a window manager nobody gives a window the focus.
    subprocess.run(["xdotool", "windowfocus", "--sync", window(title), "key", key], check=True)


class StatusWords:
    """All words of the status line, heard as a screen reader hears them, from now on."""

    def __init__(self):
        script = os.path.join(os.path.dirname(os.path.abspath(__file__)), "label_recorder.py")
        self._file = tempfile.TemporaryFile()
        self._recorder = subprocess.Popen([sys.executable, script, "Status: "], stdout=self._file)
        _started.append(self._recorder)
        wait_until(lambda: b"listening" in self._heard(), "the recorder to listen")

    def _heard(self):
        return os.pread(self._file.fileno(), 1 << 20, 0)

    def words(self):
        """The words so far, without repetitions."""
        words = []
        for line in self._heard().decode().splitlines():
            word = line.removeprefix("Status: ")
            if line.startswith("Status: ") and words[-1:] != [word]:
                words.append(word)
        return words

    def forget(self):
        os.ftruncate(self._file.fileno(), 0)
        os.lseek(self._file.fileno(), 0, os.SEEK_SET)

    def wait_for(self, word):
        """Waits until the word has been shown, be it for a moment."""
        wait_until(lambda: word in self.words(), f'"{word}"; heard: {self.words()}')

    def end(self):
        self._recorder.terminate()
        self._recorder.wait()


class Application:
    """A running program as a screen reader sees it."""

    def __init__(self, name):
        self._name = name
        self._root = None
        wait_until(self._find, f"{name} on the accessibility bus")

    def _find(self):
        desktop = Atspi.get_desktop(0)
        # Nobody runs a main loop here that would tell the cache of newcomers.
        desktop.clear_cache()
        for index in range(desktop.get_child_count()):
            child = desktop.get_child_at_index(index)
            if child is not None and child.get_name() == self._name:
                self._root = child
                return True
        return False

    def _walk(self, node=None):
        node = node or self._root
        yield node
        for index in range(node.get_child_count()):
            child = node.get_child_at_index(index)
            if child is not None:
                yield from self._walk(child)

    def find(self, name):
        """The first showing control of this accessible name, or None."""
        try:
            self._root.clear_cache()
            for node in self._walk():
                if node.get_name() == name and node.get_state_set().contains(
                        Atspi.StateType.SHOWING):
                    return node
        except GLib.Error as error:  # the tree changes while it is read
            print(f"accessibility tree: {error.message}", file=sys.stderr)
        return None

    def place_of(self, node):
        """Left, top, width and height of a control on the screen.

        A program may not know yet, and on a busy machine for long, where the window manager has put its window; the X
        server does. So the server is asked for the window's place and the program for the place within.
        """
        window = node
        while window.get_parent() is not None and window.get_parent().get_role() != Atspi.Role.APPLICATION:
            window = window.get_parent()
        # Not Atspi.CoordType.WINDOW, with which Qt 5 answers wrongly.
        inner, outer = (part.get_extents(Atspi.CoordType.SCREEN) for part in (node, window))
        found = subprocess.run(["xdotool", "search", "--onlyvisible", "--pid", str(node.get_process_id())],
                               capture_output=True, text=True)
        for left, top, width, height in filter(None, map(_place_of, found.stdout.split())):
            if (width, height) == (outer.width, outer.height):
                return left + inner.x - outer.x, top + inner.y - outer.y, inner.width, inner.height
        return None  # not on the screen yet

    def wait_for_place(self, name):
        """The place of the control of this name, once it is on the screen."""
        def place():
            node = self.find(name)
            return node and self.place_of(node)

        return wait_until(place, f'"{name}" on the screen')

    def wait_for_label(self, text):
        wait_until(lambda: self.find(text), f'"{text}"; shown: {self.names()}')

    def names(self):
        try:
            return [node.get_name() for node in self._walk() if node.get_name()]
        except GLib.Error:
            return []

    def is_checked(self, name):
        return self.find(name).get_state_set().contains(Atspi.StateType.CHECKED)

    def click(self, name, times=1):
        left, top, width, height = self.wait_for_place(name)
        # Check boxes react on their left end only where the style says so.
        x = left + min(width // 2, 10)
        y = top + height // 2
        subprocess.run(["xdotool", "mousemove", str(x), str(y), "click", "--repeat",
                        str(times), "--delay", "60", "1"], check=True)

    def double_click(self, name):
        self.click(name, times=2)
