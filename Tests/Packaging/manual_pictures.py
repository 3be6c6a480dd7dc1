#!/usr/bin/python3
# SPDX-FileCopyrightText: 2026 Corvane
# SPDX-License-Identifier: MIT
"""The script that takes the pictures of the user manual.

usage: manual_pictures.py BUILD_FOLDER
"""
import os
import plistlib
import shutil
import subprocess
import sys
import unittest

BUILD = sys.argv.pop(1)
SOURCE = os.path.realpath(os.path.join(os.path.dirname(__file__), "../.."))
SCRIPT = f"{SOURCE}/Packaging/ManualMaker/take-pictures"
BUNDLE = f"{BUILD}/Ostrel.prefPane"
PAGES = ("general", "keyboard", "network", "security")
HOME = os.path.expanduser("~")


def take(folder, *pages, program=f"{BUILD}/bin/ostrel-settings"):
    return subprocess.run([SCRIPT, program, BUNDLE, folder, *(pages or PAGES)],
                          capture_output=True, text=True, timeout=800)


def contents(path):
    with open(path, "rb") as file:
        return file.read()


def tree(folder):
    """Every file below a folder with its contents, every folder with its entries."""
    found = {}
    for path, folders, files in os.walk(folder):
        found[path] = sorted(folders + files)
        for name in files:
            found[f"{path}/{name}"] = contents(f"{path}/{name}")
    return found


class ManualPictures(unittest.TestCase):
    def test_they_are_the_same_whatever_the_user_has_and_touch_none_of_it(self):
        self.assertEqual(take("/tmp/before").returncode, 0)
        presets = f"{HOME}/Library/Application Support/Corvane/Ostrel/Keyboard Layouts"
        os.makedirs(presets)
        os.makedirs(f"{HOME}/Library/Preferences")
        with open(f"{presets}/A preset of my own.okl", "wb") as file:
            plistlib.dump({"keys": {}}, file)
        with open(f"{HOME}/Library/Preferences/com.corvane.OstrelListener.plist", "wb") as file:
            plistlib.dump({"volChangeFeedback": 0, "customPortSet": 1, "customPort": 1234}, file)
        before = tree(HOME)
        done = take("/tmp/pictures")
        self.assertEqual((done.returncode, done.stdout, done.stderr), (0, "", ""))
        self.assertEqual(tree(HOME), before)
        for page in PAGES:
            self.assertTrue(contents(f"/tmp/pictures/{page}.png") ==
                            contents(f"/tmp/before/{page}.png"), page)

    def test_each_page_has_a_picture_of_its_own_and_nothing_else_is_left(self):
        take("/tmp/four")
        self.assertEqual(sorted(os.listdir("/tmp/four")), sorted(f"{page}.png" for page in PAGES))
        self.assertEqual(len({contents(f"/tmp/four/{page}.png") for page in PAGES}), len(PAGES))

    def test_a_picture_that_has_not_changed_is_left_alone(self):
        take("/tmp/twice", "general", "network")
        network = contents("/tmp/twice/network.png")
        os.utime("/tmp/twice/general.png", (1, 1))
        shutil.copy("/tmp/twice/general.png", "/tmp/twice/network.png")
        done = take("/tmp/twice", "general", "network")
        self.assertEqual(done.returncode, 0)
        self.assertEqual(os.stat("/tmp/twice/general.png").st_mtime, 1)
        self.assertTrue(contents("/tmp/twice/network.png") == network)

    def test_a_program_that_fails_is_an_error_with_its_words(self):
        done = take("/tmp/failed", "general", "sound")
        self.assertEqual(done.returncode, 1)
        self.assertIn("the pages are general", done.stderr)
        self.assertIn("take-pictures: no picture of the page sound", done.stderr)
        self.assertEqual(os.listdir("/tmp/failed"), ["general.png"])

    def test_wrong_arguments_are_refused(self):
        done = subprocess.run([SCRIPT, "a", "b", "c"], capture_output=True, text=True, timeout=300)
        self.assertEqual(done.returncode, 2)
        self.assertIn("usage: take-pictures", done.stderr)


unittest.main(verbosity=2)
