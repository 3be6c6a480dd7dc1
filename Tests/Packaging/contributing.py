#!/usr/bin/python3
# SPDX-FileCopyrightText: 2026 Corvane
# SPDX-License-Identifier: MIT
"""What CONTRIBUTING.md says of the tree is so.

usage: contributing.py SOURCE_FOLDER
"""
import os
import re
import sys
import unittest

SOURCE = sys.argv.pop(1)


def contents(path):
    with open(f"{SOURCE}/{path}", encoding="utf-8") as file:
        return file.read()


TEXT = contents("CONTRIBUTING.md")


def steps(text):
    return re.findall(r"^\d+\. `([^`]+)`, `(\w+)`:", text, re.MULTILINE)


def missing(text):
    """The steps whose file has no function of that name."""
    return [(path, function) for path, function in steps(text)
            if not os.path.isfile(f"{SOURCE}/{path}")
            or not re.search(rf"^[\w:<>,*& ]*\b{function}\(", contents(path), re.MULTILINE)]


class Contributing(unittest.TestCase):
    def test_each_step_of_the_event_is_in_the_file_that_is_named(self):
        self.assertGreater(len(steps(TEXT)), 15)
        self.assertEqual(missing(TEXT), [])

    def test_a_step_that_is_gone_is_noticed(self):
        path, function = steps(TEXT)[0]
        self.assertEqual(missing(f"1. `{path}`, `{function}X`: ..."), [(path, f"{function}X")])
        self.assertEqual(missing(f"1. `{path}X`, `{function}`: ..."), [(f"{path}X", function)])

    def test_the_steps_are_numbered_in_order(self):
        numbers = re.findall(r"^(\d+)\. `", TEXT, re.MULTILINE)
        self.assertEqual(numbers, [str(number + 1) for number in range(len(numbers))])

    def test_each_room_has_a_sentence_and_no_other_has_one(self):
        rooms = re.findall(r'^room\("?([\w/ -]+?)"?(?: Platform| Shared| "|\)|\n)',
                           contents("cmake/Rooms.cmake"), re.MULTILINE)
        table = TEXT.split("\n| Room | ")[1].split("\n\n")[0]
        described = re.findall(r"^\| `([^`]+)` \| \S", table, re.MULTILINE)
        self.assertEqual(sorted(described), sorted(rooms))
        for room in rooms:
            self.assertTrue(os.path.isdir(f"{SOURCE}/{room}"), room)


unittest.main(verbosity=2)
