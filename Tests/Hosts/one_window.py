#!/usr/bin/python3
# SPDX-FileCopyrightText: 2026 Corvane
# SPDX-License-Identifier: MIT
"""ostrel-settings is one a session: a second start has the first one's window come to the front.

usage: one_window.py BUILD_FOLDER

Runs in the sandbox with a session bus and an X server.
"""
import os
import subprocess
import sys
import unittest

sys.path.insert(0, os.path.join(os.path.dirname(__file__), "../Support"))
import desktop  # noqa: E402

BUILD = sys.argv.pop(1)
PROGRAM = f"{BUILD}/bin/ostrel-settings"
NAME = "com.corvane.OstrelSettings"


def begin(*arguments):
    return subprocess.Popen([PROGRAM, *arguments], stdout=subprocess.DEVNULL, stderr=subprocess.PIPE,
                            text=True)


def end(process):
    process.terminate()
    process.wait()
    (process.stderr or process.stdout).close()


def showing():
    found = subprocess.run(["xdotool", "search", "--onlyvisible", "--name", "^Ostrel$"],
                           capture_output=True, text=True)
    return found.stdout.split()


class OneWindow(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.manager = subprocess.Popen(
            ["openbox", "--sm-disable", "--startup", "touch /tmp/window-manager-is-up"], stderr=subprocess.DEVNULL)
        # A window that comes while it starts may never get on the screen.
        desktop.wait_until(lambda: os.path.exists("/tmp/window-manager-is-up"), "the window manager")

    @classmethod
    def tearDownClass(cls):
        cls.manager.terminate()
        cls.manager.wait()

    def begin_first(self, *arguments):
        first = begin(*arguments)
        self.addCleanup(end, first)
        desktop.window("^Ostrel$")
        return first

    def second(self, *arguments):
        """Ends by itself: its status and words."""
        process = begin(*arguments)
        _, words = process.communicate(timeout=desktop.PATIENCE)
        return process.returncode, words

    def test_a_second_start_brings_the_firsts_window_back(self):
        first = self.begin_first()
        window, = showing()
        subprocess.run(["xdotool", "windowminimize", window], check=True)
        desktop.wait_until(lambda: not showing(), "the window to go")
        self.assertEqual(self.second(), (0, ""))
        desktop.wait_until(showing, "the window to come back")
        self.assertEqual(showing(), [window])
        self.assertIsNone(first.poll())

    def test_a_second_start_turns_to_its_page_and_knows_the_pages(self):
        self.begin_first("--page", "general")
        self.assertEqual(self.second("--page", "network"), (0, ""))
        self.assertEqual(self.second("--page", "sound"), (
            2, 'ostrel-settings: there is no page "sound"; the pages are general, keyboard, network, '
               'security\n'))

    def test_of_many_started_at_once_one_stays(self):
        started = [begin() for _ in range(5)]
        for process in started:
            self.addCleanup(end, process)
        desktop.wait_until(lambda: [process.poll() for process in started].count(0) == 4,
                           "the others to end")
        desktop.window("^Ostrel$")
        self.assertEqual(len(showing()), 1)

    def test_when_the_first_has_ended_the_next_is_the_first(self):
        first = self.begin_first()
        end(first)
        self.begin_first()

    def test_a_picture_is_made_beside_it(self):
        self.begin_first()
        self.assertEqual(self.second("--screenshot", "/tmp/beside.png"), (0, ""))
        self.assertTrue(os.path.exists("/tmp/beside.png"))

    def test_one_that_does_not_serve_the_name_is_told_of(self):
        owner = subprocess.Popen([sys.executable, "-c", (
            "from gi.repository import Gio, GLib\n"
            f"Gio.bus_own_name(Gio.BusType.SESSION, '{NAME}', 0, None, lambda *_: print('owned', flush=True), None)\n"
            "GLib.MainLoop().run()\n")], stdout=subprocess.PIPE, text=True)
        self.addCleanup(end, owner)
        self.assertEqual(owner.stdout.readline(), "owned\n")
        status, words = self.second()
        self.assertEqual(status, 1)
        self.assertIn("ostrel-settings: ", words)


unittest.main(verbosity=2)
