#!/usr/bin/python3
# SPDX-FileCopyrightText: 2026 Corvane
# SPDX-License-Identifier: MIT
"""The command line of ostrel-settings: what it prints, writes and returns.

usage: settings_window.py BUILD_FOLDER
"""
import os
import shutil
import subprocess
import sys
import unittest

BUILD = sys.argv.pop(1)
PROGRAM = f"{BUILD}/bin/ostrel-settings"
BUNDLE = f"{BUILD}/Ostrel.prefPane"


def run(*arguments):
    return subprocess.run([PROGRAM, *arguments], capture_output=True, text=True, timeout=300)


def png_size(path):
    with open(path, "rb") as file:
        head = file.read(24)
    assert head[:8] == b"\x89PNG\r\n\x1a\n", head
    return int.from_bytes(head[16:20], "big"), int.from_bytes(head[20:24], "big")


NO_UPDATER = "Unable to launch Software Update - updater bundle not found.\n"


class SettingsWindow(unittest.TestCase):
    def test_help_names_every_option_and_the_exit_codes(self):
        done = run("--help")
        self.assertEqual(done.returncode, 0)
        for word in ("--pane", "--screenshot", "--page", "--version", "--help", "Exit status"):
            self.assertIn(word, done.stdout)

    def test_version_is_the_panes(self):
        done = run("--version")
        self.assertEqual(done.returncode, 0)
        self.assertRegex(done.stdout, r"^ostrel-settings \d+\.\d+\.\d+\n$")

    def test_a_picture_of_each_page_is_written(self):
        for page in ("general", "keyboard", "network", "security"):
            with self.subTest(page=page):
                done = run("--page", page, "--screenshot", f"/tmp/{page}.png")
                self.assertEqual(done.returncode, 0)
                # The check for updates has its say, when it gets that far before the end.
                self.assertIn(done.stdout, ("", NO_UPDATER))
                width, height = png_size(f"/tmp/{page}.png")
                self.assertGreater(width, 300)
                self.assertGreater(height, 150)

    def test_the_picture_is_sharp_at_higher_scale_factors(self):
        run("--screenshot", "/tmp/one.png")
        one = png_size("/tmp/one.png")
        for factor in (1.5, 2):
            subprocess.run([PROGRAM, "--screenshot", "/tmp/scaled.png"], check=True, timeout=300,
                           env=dict(os.environ, QT_SCALE_FACTOR=str(factor)),
                           stderr=subprocess.DEVNULL)
            width, height = png_size("/tmp/scaled.png")
            self.assertAlmostEqual(width / one[0], factor, delta=0.05)
            self.assertAlmostEqual(height / one[1], factor, delta=0.05)

    def test_a_picture_that_cannot_be_written_is_an_error_in_words(self):
        done = run("--screenshot", "/nonexistent/pane.png")
        self.assertEqual(done.returncode, 1)
        self.assertIn("cannot write the picture /nonexistent/pane.png", done.stderr)

    def test_an_unknown_page_names_the_pages(self):
        done = run("--page", "sound")
        self.assertEqual(done.returncode, 2)
        self.assertIn("general, keyboard, network, security", done.stderr)

    def test_an_unexpected_argument_is_refused(self):
        done = run("pane.prefPane")
        self.assertEqual(done.returncode, 2)
        self.assertIn("pane.prefPane", done.stderr)

    def test_a_missing_pane_is_an_error_in_words(self):
        done = run("--pane", "/nonexistent/Ostrel.prefPane")
        self.assertEqual(done.returncode, 1)
        self.assertIn("/nonexistent/Ostrel.prefPane", done.stderr)

    def test_a_damaged_pane_is_an_error_in_words(self):
        shutil.copytree(BUNDLE, "/tmp/Damaged.prefPane")
        with open("/tmp/Damaged.prefPane/Contents/MacOS/Ostrel", "r+b") as plugin:
            plugin.truncate(1000)
        done = run("--pane", "/tmp/Damaged.prefPane")
        self.assertEqual(done.returncode, 1)
        self.assertIn("/tmp/Damaged.prefPane", done.stderr)

    def test_a_pane_with_odd_characters_in_its_path_opens(self):
        path = "/tmp/-odd \"name\"\n%@ é.prefPane"
        shutil.copytree(BUNDLE, path)
        done = run("--pane", path, "--screenshot", "/tmp/odd.png")
        self.assertEqual(done.returncode, 0, done.stderr)

    def test_without_a_session_bus_it_opens_all_the_same(self):
        environment = {key: value for key, value in os.environ.items()
                       if key != "DBUS_SESSION_BUS_ADDRESS"}
        done = subprocess.run([PROGRAM, "--screenshot", "/tmp/nobus.png"], env=environment,
                              capture_output=True, text=True, timeout=300)
        self.assertEqual(done.returncode, 0, done.stderr)

    def test_the_stand_in_listener_says_that_it_is_one(self):
        listener = f"{BUNDLE}/Contents/MacOS/OstrelListener"
        for option in ("--help", "--version"):
            done = subprocess.run([listener, option], capture_output=True, text=True, timeout=300)
            self.assertEqual(done.returncode, 0)
            self.assertIn("stand-in", done.stdout)


unittest.main(verbosity=2)
