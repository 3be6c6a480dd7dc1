#!/usr/bin/python3
# SPDX-FileCopyrightText: 2026 Corvane
# SPDX-License-Identifier: MIT
"""How the administrator's authorisation is obtained and lost, without a dialog.

usage: authorization_session.py PROGRAM      (in desktop-session --no-agent --install)
"""
import subprocess
import time
import unittest

from authorization_program import (ACTION, FOLDER, HELPER, PASSWORD, Program, console, helpers, session,
                                   wait_until)


def pkexec_processes():
    return session.root(["pgrep", "-x", "pkexec"], check=False).output.split()


AGENT = """
import os
from gi.repository import Gio, GLib
interface = Gio.DBusNodeInfo.new_for_xml('''<node><interface
  name="org.freedesktop.PolicyKit1.AuthenticationAgent"><method name="BeginAuthentication">
  <arg type="s"/><arg type="s"/><arg type="s"/><arg type="a{ss}"/><arg type="s"/><arg type="a(sa{sv})"/>
  </method></interface></node>''').interfaces[0]
bus = Gio.bus_get_sync(Gio.BusType.SYSTEM)
bus.register_object("/agent", interface, lambda *call: call[-1].return_dbus_error(
    "org.freedesktop.PolicyKit1.Error.Cancelled", "cancelled"), None, None)
session = ("unix-session", {"session-id": GLib.Variant("s", os.environ["XDG_SESSION_ID"])})
bus.call_sync("org.freedesktop.PolicyKit1", "/org/freedesktop/PolicyKit1/Authority",
              "org.freedesktop.PolicyKit1.Authority", "RegisterAuthenticationAgent",
              GLib.Variant("((sa{sv})ss)", (session, "C", "/agent")), None, 0, -1)
print("ready", flush=True)
GLib.MainLoop().run()
"""


class Acquiring(unittest.TestCase):
    def setUp(self):
        wait_until(lambda: not helpers(), "the helpers of other tests to end")
        self.program = Program()
        self.addCleanup(self.program.close)

    def refused(self, *words):
        self.assertEqual(self.program.ask(*words), "no")
        self.assertEqual(self.program.ask("authorized"), "no")
        wait_until(lambda: not helpers() + pkexec_processes(), "all to end")

    def test_the_right_password_is_enough(self):
        self.assertEqual(self.program.ask("start-with", "admin", PASSWORD), "yes")
        self.assertEqual(self.program.ask("authorized"), "yes")
        self.assertEqual(self.program.ask("start"), "yes")
        self.assertEqual(len(helpers()), 1)

    def test_a_wrong_password_fails_at_the_first_try(self):
        began = time.monotonic()
        self.refused("start-with", "admin", "butter and bread")
        self.assertLess(time.monotonic() - began, 30)  # PAM itself takes about two seconds
        wait_until(lambda: "Authorization failed. Invalid username or password" in console(),
                   "the console line")

    def test_passwords_that_cannot_be_sent_fail(self):
        for password in "", PASSWORD + "\n", "\n" + PASSWORD, PASSWORD[:-1]:
            self.refused("start-with", "admin", password)

    def test_who_is_no_administrator_fails_with_his_own_password(self):
        self.refused("start-with", "tester", "tester")
        self.refused("start-with", "nobody-of-this-name", PASSWORD)
        self.refused("start-with", "", PASSWORD)

    def test_a_failure_ends_an_authorisation_obtained_before(self):
        self.assertEqual(self.program.ask("start-with", "admin", PASSWORD), "yes")
        self.refused("start-with", "admin", "wrong")

    def test_another_success_takes_the_place_of_the_first(self):
        for _ in range(2):
            self.assertEqual(self.program.ask("start-with", "admin", PASSWORD), "yes")
        wait_until(lambda: len(helpers()) == 1, "the first helper to end")

    def test_without_an_agent_that_is_said_in_words(self):
        self.refused("start")
        wait_until(lambda: "No polkit agent is running in this session" in console(), "the words")

    def test_a_cancelled_dialog_is_told_from_a_refusal(self):
        with subprocess.Popen(["python3", "-c", AGENT], stdout=subprocess.PIPE, text=True) as agent:
            self.assertEqual(agent.stdout.readline(), "ready\n")
            self.refused("start")
            agent.kill()
        wait_until(lambda: "The administrator's authentication was cancelled." in console(), "the words")

    def test_our_own_agent_goes_before_the_desktops(self):
        with subprocess.Popen(["python3", "-c", AGENT], stdout=subprocess.PIPE, text=True) as agent:
            self.assertEqual(agent.stdout.readline(), "ready\n")
            self.assertEqual(self.program.ask("start-with", "admin", PASSWORD), "yes")
            agent.kill()

    def test_a_rule_that_says_yes_asks_nobody(self):
        session.set_polkit_rule(ACTION, "YES")
        self.addCleanup(session.clear_polkit_rule)
        self.assertEqual(self.program.ask("start-on-worker"), "yes")
        self.assertEqual(self.program.ask("exec-wait", "/bin/true"), "0")

    def test_many_threads_ask_once(self):
        session.set_polkit_rule(ACTION, "YES")
        self.addCleanup(session.clear_polkit_rule)
        self.assertEqual(self.program.ask("start-at-once", "20"), "20")
        self.assertEqual(len(helpers()), 1)

    def test_an_authorisation_that_ends_under_running_tools_harms_nothing(self):
        session.set_polkit_rule(ACTION, "YES")
        self.addCleanup(session.clear_polkit_rule)
        self.assertEqual(self.program.ask("renew-while-tools-run"), "yes")
        wait_until(lambda: len(helpers()) == 1, "the helpers before to end")

    def test_a_rule_that_says_no_is_obeyed(self):
        session.set_polkit_rule(ACTION, "NO")
        self.addCleanup(session.clear_polkit_rule)
        self.refused("start")
        self.refused("start-with", "admin", PASSWORD)
        wait_until(lambda: "Not authorised as administrator" in console(), "the words")

    def test_without_gui_nothing_is_asked(self):
        self.program.ask("gui", "no")
        self.refused("start")
        self.assertEqual(self.program.ask("exec", "/bin/true"), "-1")

    def test_a_missing_tool_asks_nobody(self):
        before = console().count("No polkit agent")
        self.assertEqual(self.program.ask("exec", "/bin/nobody-has-this"), "-2")
        wait_until(lambda: "path /bin/nobody-has-this doesn't exist" in console(), "the words")
        self.assertEqual(console().count("No polkit agent"), before)


OTHER_VERSION = """#!/usr/bin/python3
import socket
socket.send_fds(socket.socket(fileno=0), [b"authorization-helper 0"], [1])
"""


class Faults(unittest.TestCase):
    def setUp(self):
        wait_until(lambda: not helpers(), "the helpers of other tests to end")
        self.program = Program()
        self.addCleanup(self.program.close)

    def fails_saying(self, words):
        self.assertEqual(self.program.ask("start"), "no")
        wait_until(lambda: words in console(), words)
        self.assertEqual(self.program.ask("start-with", "admin", PASSWORD), "no")
        self.assertEqual(self.program.ask("authorized"), "no")

    def changed(self, change, undo):
        session.root(change)
        self.addCleanup(session.root, undo)

    def test_a_missing_pkexec_is_said(self):
        self.changed(["mv", "/usr/bin/pkexec", "/root/"], ["mv", "/root/pkexec", "/usr/bin/"])
        self.fails_saying("/usr/bin/pkexec is not installed. Install the package pkexec.")
        wait_until(lambda: "Unable to create authRef - error -60008" in console(), "the error")

    def test_a_missing_helper_is_said_with_what_to_do(self):
        self.changed(["mv", HELPER, "/root/"], ["mv", "/root/authorization-helper", FOLDER])
        self.fails_saying(f"{HELPER} is not installed. Install it with: "
                          "sudo cmake --install BUILD_FOLDER --component system")

    def test_a_helper_that_others_can_change_is_not_run(self):
        self.changed(["chmod", "775", FOLDER], ["chmod", "755", FOLDER])
        self.fails_saying(f"{HELPER} is not run as administrator")

    def test_a_helper_of_another_version_is_said_with_what_to_do(self):
        session.set_polkit_rule(ACTION, "YES")
        self.addCleanup(session.clear_polkit_rule)
        self.changed(["mv", HELPER, "/root/"], ["mv", "/root/authorization-helper", FOLDER])
        session.root(["install", "-m", "755", "/dev/stdin", HELPER], input=OTHER_VERSION)
        self.assertEqual(self.program.ask("start"), "no")
        wait_until(lambda: f"{HELPER} is of another version. Install it with: sudo cmake --install "
                   "BUILD_FOLDER --component system" in console(), "the words")

    def test_polkit_that_does_not_run_is_said(self):
        self.changed(["systemctl", "mask", "--runtime", "--now", "polkit.service"],
                     ["sh", "-c", "systemctl unmask --runtime polkit.service && "
                                  "systemctl start polkit.service"])
        self.fails_saying("Unable to ask for the administrator's authorisation: ")

    def test_a_helper_that_is_killed_is_replaced_by_the_next_start(self):
        self.assertEqual(self.program.ask("start-with", "admin", PASSWORD), "yes")
        session.root(["kill", "-KILL", *helpers()])
        wait_until(lambda: self.program.ask("authorized") == "no", "the loss to be seen")
        self.assertEqual(self.program.ask("exec", "/bin/true"), "-1")
        self.assertEqual(self.program.ask("start-with", "admin", PASSWORD), "yes")
        self.assertEqual(self.program.ask("exec", "/bin/true"), "0")

    def test_a_helper_killed_in_the_middle_of_a_request_fails_it(self):
        self.assertEqual(self.program.ask("start-with", "admin", PASSWORD), "yes")
        helper = helpers()
        session.root(["kill", "-STOP", *helper])
        self.program.send("exec", "/bin/true")
        time.sleep(0.3)
        session.root(["kill", "-KILL", *helper])
        self.assertEqual(self.program.answer(), "-60008")
        self.assertEqual(self.program.ask("authorized"), "no")
        self.assertEqual(self.program.ask("start-with", "admin", PASSWORD), "yes")

    def test_output_ends_when_the_helper_is_killed_and_the_tool_has_ended(self):
        self.assertEqual(self.program.ask("start-with", "admin", PASSWORD), "yes")
        self.program.send("exec-wait", "/bin/sleep", "1")
        wait_until(lambda: session.root(["pgrep", "-x", "sleep"], check=False).output, "the tool")
        session.root(["kill", "-KILL", *helpers()])
        self.assertEqual(self.program.answer(), "0")

    def test_no_child_is_left_unreaped(self):
        self.assertEqual(self.program.ask("start-with", "admin", "wrong"), "no")
        self.assertEqual(self.program.ask("start-with", "admin", PASSWORD), "yes")
        self.program.ask("end")
        children = ["ps", "-o", "stat=", "--ppid", str(self.program.pid)]
        wait_until(lambda: not session.root(children, check=False).output, "all to be reaped")


unittest.main(verbosity=2)
