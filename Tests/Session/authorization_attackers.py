#!/usr/bin/python3
# SPDX-FileCopyrightText: 2026 Corvane
# SPDX-License-Identifier: MIT
"""Hostile programs of the same user, and a process that holds the administrator's authorisation.

usage: authorization_attackers.py PROGRAM      (in desktop-session --no-agent --install)
"""
import os
import subprocess
import sys
import unittest

import attacker
from authorization_program import PASSWORD, Program, console, helpers, is_sanitized, session, wait_until

LESSENED = "".join(chr(ord(character) - 1) for character in PASSWORD)


class Attackers(unittest.TestCase):
    def setUp(self):
        wait_until(lambda: not helpers(), "the helpers of other tests to end")
        self.program = Program()
        self.addCleanup(self.program.close)
        self.assertEqual(self.ask("authorized"), "no")
        self.pid = self.program.pid
        self.address = attacker.an_address(self.pid)

    def ask(self, *words):
        return self.program.ask(*words)

    def is_open(self):
        """All the attacks succeed: what refuses them otherwise is the authorisation."""
        found = attacker.successes(self.pid, self.address)
        self.assertEqual(len(found), attacker.COUNT, found)

    def is_closed(self, pid=None):
        self.assertEqual(attacker.successes(pid or self.pid, self.address), [])

    def test_an_authorised_process_is_closed_to_its_user_and_open_again_afterwards(self):
        self.is_open()
        for _ in range(2):
            self.assertEqual(self.ask("start-with", "admin", PASSWORD), "yes")
            self.is_closed()
            self.assertEqual(self.ask("exec-wait", "/bin/true"), "0")
            self.ask("end")
            self.is_open()

    def test_an_authorisation_that_takes_the_place_of_another_keeps_the_process_closed(self):
        for _ in range(2):
            self.assertEqual(self.ask("start-with", "admin", PASSWORD), "yes")
        self.is_closed()
        self.ask("end")
        self.is_open()

    def test_a_refused_authorisation_leaves_the_process_open(self):
        self.assertEqual(self.ask("start"), "no")
        self.assertEqual(self.ask("start-with", "admin", "wrong"), "no")
        self.is_open()

    def test_what_was_opened_before_is_of_no_use(self):
        pidfd = os.pidfd_open(self.pid)
        folder = os.open(f"/proc/{self.pid}/fd", os.O_RDONLY | os.O_DIRECTORY)
        self.addCleanup(os.close, pidfd)
        self.addCleanup(os.close, folder)
        os.close(attacker.take_descriptor(pidfd, 0))
        self.assertEqual(self.ask("start-with", "admin", PASSWORD), "yes")
        for number in range(64):
            with self.assertRaises(PermissionError):
                attacker.take_descriptor(pidfd, number)
        for number in os.listdir(folder):
            with self.assertRaises(PermissionError):
                os.open(number, os.O_RDWR, dir_fd=folder)
            with self.assertRaises(PermissionError):
                os.readlink(number, dir_fd=folder)

    def trace(self, thread):
        tracer = subprocess.Popen(
            [sys.executable, "-c", f"import attacker; attacker.seize({thread}); print(flush=True); input()"],
            cwd=os.path.dirname(os.path.abspath(__file__)), stdin=subprocess.PIPE, stdout=subprocess.PIPE)
        self.assertEqual(tracer.stdout.readline(), b"\n")
        return tracer

    def test_a_process_that_is_traced_is_not_authorised(self):
        self.ask("idle-thread")
        threads = os.listdir(f"/proc/{self.pid}/task")
        self.assertGreater(len(threads), 1)
        for thread in threads:
            with self.trace(thread) as tracer:
                for words in ("start-with", "admin", PASSWORD), ("start",):
                    self.assertEqual(self.ask(*words), "no")
                    self.assertEqual(self.ask("authorized"), "no")
                self.assertEqual(self.ask("exec", "/bin/true"), "-1")
                wait_until(lambda: f"traced by process {tracer.pid}" in console(), "the words")
                tracer.communicate(b"\n")
        self.assertEqual(self.ask("start-with", "admin", PASSWORD), "yes")

    def test_a_child_that_an_authorisation_is_handed_down_to_is_closed_too(self):
        self.assertEqual(self.ask("start-with", "admin", PASSWORD), "yes")
        self.program.send("hand-down", "hold")
        child = int(self.program.answer())
        self.is_closed(child)
        self.program.send("on")
        self.assertEqual([self.program.answer(), self.program.answer()], ["done", "0"])


class Passwords(unittest.TestCase):
    @unittest.skipIf(is_sanitized(), "a sanitizer keeps what was freed, and maps terabytes")
    def test_no_copy_of_the_password_is_left_but_the_callers(self):
        with Program() as program:
            for user, answer in ("admin", "yes"), ("tester", "no"):
                self.assertEqual(program.ask("copies-after-start-with", user, LESSENED), f"{answer} 0 1")


unittest.main(verbosity=2)
