#!/usr/bin/python3
# SPDX-FileCopyrightText: 2026 Corvane
# SPDX-License-Identifier: MIT
"""The administrator's authorisation with the desktop's own dialog.

usage: authorization_dialog.py PROGRAM PICTURE_FOLDER      (in desktop-session --install)
"""
import os
import sys
import unittest

from authorization_program import GRANT, Program, console, helpers, session, wait_until
import agent
import attacker
import desktop

PICTURES = sys.argv.pop(1)


class Dialog(unittest.TestCase):
    def setUp(self):
        self.program = Program()
        self.addCleanup(self.program.close)

    def test_the_password_given_once_lasts_until_the_end(self):
        self.program.send("start-on-worker")
        agent.give_password(session.ADMINISTRATOR_PASSWORD)
        self.assertEqual(self.program.answer(), "yes")
        # The thread that has asked is gone and the authorisation still there.
        self.assertEqual(self.program.ask("authorized"), "yes")
        self.assertEqual(self.program.output_of("/usr/bin/id", "-u"), "0\n")
        self.assertEqual(self.program.ask("start"), "yes")
        self.assertFalse(agent.is_open())
        self.program.ask("end")
        self.assertEqual(self.program.ask("authorized"), "no")
        wait_until(lambda: not helpers(), "the helper to end")

    def test_the_dialog_says_what_it_grants(self):
        self.program.send("start")
        agent.wait_for_dialog()
        dialog = desktop.Application("polkit-kde-authentication-agent-1")
        dialog.wait_for_label("The Ostrel pane installs or removes its listener. " + GRANT)
        desktop.screenshot(f"{PICTURES}/authorization_dialog-words.png")
        agent.cancel()
        self.program.answer()

    def test_nobody_gets_into_the_process_while_the_password_is_asked_for(self):
        self.program.ask("authorized")
        address = attacker.an_address(self.program.pid)
        self.program.send("start-on-worker")
        agent.wait_for_dialog()
        self.assertEqual(attacker.successes(self.program.pid, address), [])
        agent.cancel()
        self.assertEqual(self.program.answer(), "no")
        self.assertEqual(len(attacker.successes(self.program.pid, address)), attacker.COUNT)

    def test_an_operation_asks_by_itself(self):
        self.program.send("exec-wait", "/bin/mkdir", "/Library/asked")
        agent.give_password(session.ADMINISTRATOR_PASSWORD)
        self.assertEqual(self.program.answer(), "0")
        wait_until(lambda: os.path.isdir("/Library/asked"), "the folder")

    def test_a_cancelled_dialog_leaves_nothing(self):
        self.program.send("start")
        agent.cancel()
        self.assertEqual(self.program.answer(), "no")
        self.assertEqual(self.program.ask("authorized"), "no")
        self.assertEqual(helpers(), [])
        # KDE's agent tells polkit no more than that.
        wait_until(lambda: "Not authorised as administrator: the dialog was cancelled" in console(),
                   "the console line")

    def test_an_operation_after_a_cancelled_dialog_is_not_authorised(self):
        self.program.send("exec", "/bin/mkdir", "/Library/cancelled")
        agent.cancel()
        self.assertEqual(self.program.answer(), "-1")
        self.assertFalse(os.path.exists("/Library/cancelled"))

    def test_the_dialog_closes_when_the_program_is_killed(self):
        self.program.send("start")
        agent.wait_for_dialog()
        self.program.kill()
        wait_until(lambda: not agent.is_open(), "the dialog to close")
        self.assertEqual(helpers(), [])


unittest.main(verbosity=2)
