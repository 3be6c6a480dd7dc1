#!/usr/bin/python3
# SPDX-FileCopyrightText: 2026 Corvane
# SPDX-License-Identifier: MIT
"""Tools that are run with the administrator's authorisation, and who cannot have them run.

usage: authorization_tools.py PROGRAM      (in desktop-session --no-agent --install)
"""
import os
import signal
import stat
import subprocess
import time
import unittest

from authorization_program import (ACTION, FOLDER, GRANT, HELPER, ODD_NAMES, PASSWORD, Program, WithPassword,
                                   console, exists, helpers, make_file, session, wait_until)


class Tools(WithPassword):
    def test_the_output_comes_whole(self):
        output = self.program.output_of("/usr/bin/seq", "100000")
        self.assertEqual(output, "".join(f"{i}\n" for i in range(1, 100001)))

    def test_tools_run_at_once_without_mixing(self):
        self.assertEqual(self.ask("run-at-once", "50"), "50")

    def test_arguments_of_any_bytes_arrive_as_they_are(self):
        for name in ODD_NAMES + ["", "\x01", "x" * 100000]:
            self.assertEqual(self.program.output_of("/usr/bin/printf", "%s", name), name)

    def test_no_shell_is_between(self):
        self.assertEqual(self.program.output_of("/bin/echo", "$HOME;", "`id`", "*"), "$HOME; `id` *\n")

    def test_waiting_is_for_the_end_and_not_waiting_is_not(self):
        began = time.monotonic()
        self.assertEqual(self.ask("exec", "/bin/sleep", "20"), "0")
        self.assertLess(time.monotonic() - began, 15)
        began = time.monotonic()
        self.assertEqual(self.ask("exec-wait", "/bin/sleep", "1"), "0")
        self.assertGreaterEqual(time.monotonic() - began, 1)

    def test_a_tool_that_fails_was_started(self):
        self.assertEqual(self.ask("exec-wait", "/bin/false"), "0")

    def test_output_that_nobody_reads_ends_no_tool(self):
        self.assertEqual(self.ask("exec", "/bin/sh", "-c", "seq 100000 && : >/Library/t/done"), "0")
        wait_until(lambda: exists("/Library/t/done"), "the tool to get to its end")

    def test_a_tool_that_others_can_change_is_refused(self):
        own = f"{session.HOME}/true"
        session.user(["cp", "/bin/true", own])
        self.assertEqual(self.ask("exec", own), "-60031")
        make_file("/Library/t/true")
        session.root(["chmod", "777", "/Library/t/true"])
        self.assertEqual(self.ask("exec", "/Library/t/true"), "-60031")
        session.root(["chmod", "644", "/Library/t/true"])
        self.assertEqual(self.ask("exec", "/Library/t/true"), "-60031")  # not executable
        self.assertEqual(self.ask("exec", "true"), "-2")
        wait_until(lambda: "others than root can change it" in console(), "the words")

    def test_too_many_arguments_are_refused_and_nothing_is_lost(self):
        self.assertEqual(self.ask("exec", "/bin/true", "x" * 70000, "x" * 70000), "-60031")
        self.assertEqual(self.ask("exec", "/bin/true"), "0")

    def test_chown_knows_the_group_wheel(self):
        make_file("/Library/t/job")
        session.root(["chown", "tester:tester", "/Library/t/job"])
        self.assertEqual(self.ask("exec-wait", "/usr/sbin/chown", "root:wheel", "/Library/t/job"), "0")
        status = os.stat("/Library/t/job")
        self.assertEqual((status.st_uid, status.st_gid), (0, 0))

    def test_chown_takes_the_group_wheel_where_there_is_one(self):
        session.root(["sh", "-c", "echo wheel:x:4711: >>/etc/group"])
        self.addCleanup(session.root, ["sed", "-i", "/^wheel:/d", "/etc/group"])
        make_file("/Library/t/job")
        self.assertEqual(self.ask("exec-wait", "/usr/sbin/chown", "root:wheel", "/Library/t/job"), "0")
        self.assertEqual(os.stat("/Library/t/job").st_gid, 4711)

    def test_tools_that_have_ended_leave_no_zombie(self):
        for _ in range(20):
            self.assertEqual(self.ask("exec-wait", "/bin/true"), "0")
        wait_until(lambda: not session.root(["ps", "-o", "pid=", "--ppid", *helpers()],
                                            check=False).output, "all to be reaped")

    def test_the_helper_keeps_no_descriptor_of_a_tool(self):
        self.ask("exec-wait", "/bin/true")  # opens the helper's way to the journal, which stays
        count = ["sh", "-c", f"ls /proc/{helpers()[0]}/fd | wc -l"]
        before = session.root(count).output
        for _ in range(20):
            self.ask("exec-wait", "/bin/true")
        wait_until(lambda: session.root(count).output == before, "all to be closed")

    def test_what_was_run_is_in_the_journal(self):
        self.ask("exec", "/bin/echo", "for the", "journal\n")
        wait_until(lambda: "for user 1000: /bin/echo for the journal%0A" in
                   session.journal("--identifier=ostrel-authorization-helper"), "the line")


class Safety(WithPassword):
    def test_the_environment_of_the_client_has_no_effect(self):
        traps = {"PATH": "/home/tester", "LD_PRELOAD": "/home/tester/x.so", "IFS": "/", "ENV": "/x",
                 "BASH_ENV": "/home/tester/x", "QT_PLUGIN_PATH": "/home/tester", "TMPDIR": "/home",
                 "DBUS_SYSTEM_BUS_ADDRESS": "unix:path=/nowhere", "SHELL": "/home/tester/shell",
                 "LANG": "de_DE.UTF-8", "PKEXEC_UID": "0", "HOME": "/home/tester", "LD_DEBUG": "all"}
        with Program(traps, stderr=subprocess.DEVNULL) as program:
            self.assertEqual(program.ask("start-with", "admin", PASSWORD), "yes")
            self.assertEqual(program.output_of("/usr/bin/env"),
                             "PATH=/usr/sbin:/usr/bin:/sbin:/bin\nLANG=C.UTF-8\n")

    def test_what_the_client_is_like_has_no_effect(self):
        def spoil():
            os.umask(0)
            for number in signal.SIGTERM, signal.SIGPIPE, signal.SIGHUP, signal.SIGCHLD:
                signal.signal(number, signal.SIG_IGN)
            signal.pthread_sigmask(signal.SIG_BLOCK, [signal.SIGUSR1, signal.SIGCHLD])
            os.dup2(os.open("/", os.O_RDONLY), 50)
            os.set_inheritable(50, True)
        with Program(preexec_fn=spoil, close_fds=False) as program:
            self.assertEqual(program.ask("start-with", "admin", PASSWORD), "yes")
            self.assertEqual(program.output_of("/bin/sh", "-c", "umask; pwd; id -u; id -g"),
                             "0022\n/\n0\n0\n")
            status = dict(line.split(":\t", 1) for line in
                          program.output_of("/bin/cat", "/proc/self/status").splitlines())
            self.assertEqual(int(status["SigBlk"], 16), 0)
            self.assertEqual(int(status["SigIgn"], 16) & 0x7fffffff, 0)  # without the C library's own
            self.assertEqual(program.output_of("/bin/ls", "/proc/self/fd"), "0\n1\n2\n3\n")

    def test_nobody_else_can_reach_the_helper(self):
        folder = f"/proc/{self.program.pid}/fd"
        with self.assertRaises(PermissionError):
            os.listdir(folder)
        for number in session.root(["ls", folder]).output.split():
            with self.assertRaises(PermissionError):
                os.open(f"{folder}/{number}", os.O_RDWR)
        with open("/proc/net/unix", encoding="utf-8") as sockets:
            self.assertNotIn("ostrel", sockets.read())

    def test_the_helper_serves_only_whom_pkexec_has_named(self):
        for environment in {}, {"PKEXEC_UID": "1000"}, {"PKEXEC_UID": "x"}:
            run = subprocess.run([HELPER], env=environment, stdin=subprocess.DEVNULL,
                                 capture_output=True)
            self.assertNotEqual(run.returncode, 0)
            run = session.root(["env", "-i", *(f"{k}={v}" for k, v in environment.items()), HELPER],
                               check=False)
            self.assertNotEqual(run.status, 0)
            self.assertIn("started by pkexec only", run.errors)

    def test_the_helper_ends_with_its_client(self):
        for end in Program.close, Program.kill:
            end(self.program)
            wait_until(lambda: not helpers(), "the helper to end")
            self.program = Program()
            self.addCleanup(self.program.close)
            self.assertEqual(self.ask("start-with", "admin", PASSWORD), "yes")

    def test_a_tool_runs_on_when_its_client_is_killed(self):
        self.ask("exec", "/bin/sh", "-c", "sleep 1; : >/Library/t/done")
        self.program.kill()
        wait_until(lambda: exists("/Library/t/done"), "the tool to get to its end")

    def test_only_root_can_change_what_is_installed(self):
        policy = "/usr/share/polkit-1/actions/com.corvane.ostrel.policy"
        for path in HELPER, f"{FOLDER}/chown", FOLDER, policy:
            status = os.stat(path)
            self.assertEqual(status.st_uid, 0, path)
            self.assertEqual(stat.S_IMODE(status.st_mode) & 0o7022, 0, path)
        answer = session.user(["pkaction", "--verbose", "--action-id", ACTION]).output
        self.assertIn(GRANT, answer)
        self.assertEqual(answer.count("auth_admin\n"), 3)


unittest.main(verbosity=2)
