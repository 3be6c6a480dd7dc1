#!/usr/bin/python3
# SPDX-FileCopyrightText: 2026 Corvane
# SPDX-License-Identifier: MIT
"""Files of root's that an ordinary user's program changes.

usage: authorization_files.py PROGRAM      (in desktop-session --no-agent --install)
"""
import os
import re
import unittest

from authorization_program import (ODD_NAMES, PASSWORD, PROGRAM, Program, WithPassword, console, exists,
                                   make_file, session, wait_until)


class Files(WithPassword):
    def setUp(self):
        super().setUp()
        self.trash = f"{session.HOME}/.Trash"

    def test_a_file_of_roots_is_moved_copied_trashed_and_removed(self):
        make_file("/Library/t/a.txt", "contents")
        self.assertEqual(self.ask("copy", "/Library/t/a.txt", "/Library/t/b.txt"), "yes")
        wait_until(lambda: exists("/Library/t/b.txt"), "the copy")
        self.assertEqual(self.ask("move", "/Library/t/b.txt", "/Library/t/c.txt"), "yes")
        wait_until(lambda: exists("/Library/t/c.txt"), "the move")
        self.assertFalse(exists("/Library/t/b.txt"))
        self.assertEqual(self.ask("trash", "/Library/t/c.txt"), "yes")
        wait_until(lambda: exists(f"{self.trash}/c.txt"), "the trash")
        self.assertEqual(self.ask("remove", "/Library/t/a.txt"), "yes")
        wait_until(lambda: not exists("/Library/t/a.txt"), "the removal")
        self.assertEqual(self.ask("create", "/Library/t/x/y/z"), "yes")
        wait_until(lambda: exists("/Library/t/x/y/z"), "the folder")

    def test_a_name_that_the_trash_has_already_gets_the_time(self):
        for name, pattern in ("notes.txt", r"^notes_\d{14}\.txt$"), ("report", r"^report_\d{14}\.$"):
            for _ in range(2):
                make_file(f"/Library/t/{name}")
                self.assertEqual(self.ask("trash", f"/Library/t/{name}"), "yes")
                wait_until(lambda: not exists(f"/Library/t/{name}"), "the trash")
            names = [entry for entry in os.listdir(self.trash) if entry != name]
            self.assertTrue(any(re.match(pattern, entry) for entry in names), names)

    def test_odd_names_are_names_in_every_operation(self):
        for name in ODD_NAMES:
            with self.subTest(name=name):
                source, other = f"/Library/t/{name}", f"/Library/t/other {name}"
                self.assertEqual(self.ask("create", source), "yes")
                wait_until(lambda: exists(source), "the folder")
                self.assertEqual(self.ask("copy", source, other), "yes")
                wait_until(lambda: exists(other), "the copy")
                make_file(f"{other}/{name}")
                self.assertEqual(self.ask("move-contents", other, source), "yes")
                wait_until(lambda: exists(f"{source}/{name}"), "the move")
                self.assertEqual(self.ask("trash-contents", source), "yes")
                wait_until(lambda: exists(f"{self.trash}/{name}"), "the trash")
                self.assertEqual(self.ask("move", source, f"{other}/{name}"), "yes")
                wait_until(lambda: not exists(source), "the move")
                self.assertEqual(self.ask("trash", f"{other}/{name}"), "yes")
                wait_until(lambda: not exists(f"{other}/{name}"), "the trash")
                self.assertEqual(self.ask("remove", other), "yes")
                wait_until(lambda: not exists(other), "the removal")
                session.root(["rm", "-rf", self.trash, f"{session.HOME}/.local/share/Trash"])

    def test_a_relative_path_is_one_in_the_clients_folder(self):
        make_file("/Library/t/here/-rf")
        make_file("/Library/t/here/etc")
        with Program(cwd="/Library/t/here") as program:
            self.assertEqual(program.ask("start-with", "admin", PASSWORD), "yes")
            self.assertEqual(program.ask("remove", "-rf"), "yes")
            self.assertEqual(program.ask("remove", "etc"), "yes")
            wait_until(lambda: not os.listdir("/Library/t/here"), "the removal")
        self.assertTrue(exists("/etc/passwd"))

    def test_system_directories_are_refused_by_every_operation_that_destroys(self):
        before = console()
        for path in "/", "/Library", "/Applications", "/Volumes", session.HOME, f"{session.HOME}/Desktop":
            for words in (("remove", path), ("trash", path), ("trash-contents", path),
                          ("move", path, "/Library/t/x"), ("move-contents", path, "/Library/t")):
                self.assertEqual(self.ask(*words), "no", words)
        wait_until(lambda: "Unable to move contents of path /home/tester/Desktop because it is a system "
                   "directory." in console()[len(before):], "the words")
        lines = console()[len(before):]
        for words in ("Unable to delete path / because", "Unable to trash path /Library because",
                      "Unable to trash folder contents of path /Volumes because",
                      "Unable to move path /Applications because"):
            self.assertIn(words, lines)
        for path in "/Library/t", "/etc/passwd":
            self.assertTrue(exists(path))

    def test_what_is_in_a_system_directory_is_not_protected(self):
        make_file("/Library/Caches/stale")
        self.assertEqual(self.ask("remove", "/Library/Caches/stale"), "yes")
        wait_until(lambda: not exists("/Library/Caches/stale"), "the removal")

    def test_for_root_that_was_a_user_at_first_the_trash_is_the_users(self):
        make_file("/Library/t/a.txt")
        lines = "become 1000\nauthorized\nbecome 0\nauthorized\ntrash /Library/t/a.txt\n"
        run = session.root(["env", f"HOME={session.HOME}", PROGRAM], lines)
        self.assertEqual([line for line in run.output.splitlines() if line.startswith("= ")],
                         ["= yes", "= no", "= yes", "= yes", "= yes"])
        wait_until(lambda: exists(f"{self.trash}/a.txt"), "the trash")

    def test_the_required_commands_get_the_required_arguments(self):
        make_file("/Library/t/a")
        record = "/run/record"
        tools = ["rm", "mv", "cp", "mkdir"]
        # One write for a line: the tools run side by side.
        script = '#!/bin/bash\nline=${0##*/}\nfor word; do line+="|$word"; done\n' + \
            f'echo "$line" >>{record}\n'
        try:
            for tool in tools:
                session.root(["ln", f"/usr/bin/{tool}", f"/usr/bin/{tool}.real"])
                session.root(["install", "-m", "755", "/dev/stdin", f"/usr/bin/{tool}"], script)
            for words in (("remove", "/Library/t/a"), ("move", "/Library/t/a", "/Library/b"),
                          ("copy", "/Library/t/a", "/Library/b"), ("create", "/Library/c"),
                          ("trash", "/Library/t/a")):
                self.assertEqual(self.ask(*words), "yes")
            expected = ["rm|-Rdf|/Library/t/a", "mv|-f|/Library/t/a|/Library/b",
                        "cp|-f|-p|-R|/Library/t/a|/Library/b", "mkdir|-p|/Library/c",
                        f"mv|-f|/Library/t/a|{self.trash}/a"]
            wait_until(lambda: len(session.root(["cat", record], check=False).output.splitlines()) ==
                       len(expected), "all commands")
            self.assertEqual(sorted(session.root(["cat", record]).output.splitlines()),
                             sorted(expected))
        finally:
            for tool in tools:
                session.root(["ln", "-f", f"/usr/bin/{tool}.real", f"/usr/bin/{tool}"])


unittest.main(verbosity=2)
