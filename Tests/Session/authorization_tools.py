#!/usr/bin/python3
# SPDX-FileCopyrightText: 2026 Corvane
# SPDX-License-Identifier: MIT
"""Tools that are run with the administrator's authorisation, and who cannot have them run.

usage: authorization_tools.py PROGRAM      (in desktop-session --no-agent --install)
"""
import ctypes
import os
import resource
import signal
import stat
import subprocess
import time
import unittest

from authorization_program import (ACTION, FOLDER, GRANT, HELPER, ODD_NAMES, PASSWORD, Program, WithPassword,
                                   console, exists, is_sanitized, helpers, make_file, session, wait_until)


SWAPPER = """
import os, sys
own, link, other = sys.argv[1:]
while True:
    for target in "/bin/true", own:
        os.symlink(target, other)
        os.rename(other, link)
"""


def helper_log():
    return session.journal("--identifier=ostrel-authorization-helper")


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

    def test_a_link_of_the_users_is_not_followed(self):
        link = f"{session.HOME}/link"
        os.symlink("/bin/true", link)
        self.addCleanup(os.unlink, link)
        self.assertEqual(self.ask("exec", link), "-60031")
        session.root(["ln", "-sfn", "/bin/true", "/tmp/link"])
        self.addCleanup(session.root, ["rm", "-f", "/tmp/link"])
        self.assertEqual(self.ask("exec", "/tmp/link"), "-60031")  # everybody writes to its folder
        session.root(["ln", "-s", link, "/Library/t/link"])
        self.assertEqual(self.ask("exec", "/Library/t/link"), "-60031")

    def test_a_link_that_is_swapped_meanwhile_runs_nothing_of_the_users(self):
        own, link, other = (f"{session.HOME}/{name}" for name in ("own", "link", "other"))
        with open(own, "w", encoding="utf-8") as script:
            script.write("#!/bin/sh\n: >/Library/t/taken-over\n")
        os.chmod(own, 0o755)
        swapper = subprocess.Popen(["python3", "-c", SWAPPER, own, link, other])
        try:
            wait_until(lambda: os.path.lexists(link), "the link")
            for _ in range(300):
                self.ask("exec-wait", link)
        finally:
            swapper.kill()
            swapper.wait()
        self.assertFalse(exists("/Library/t/taken-over"))

    def test_a_tool_sees_the_name_it_was_asked_by(self):
        session.root(["ln", "-s", "/bin/cat", "/Library/t/by another name"])
        for name in "/bin/cat", "/Library/t/by another name":
            self.assertEqual(self.program.output_of(name, "/proc/self/cmdline"),
                             f"{name}\0/proc/self/cmdline\0")

    def test_scripts_of_roots_are_run(self):
        make_file("/Library/t/script", "#! /bin/sh -e\necho \"$0:$1\"\n")
        self.assertEqual(self.ask("exec", "/Library/t/script"), "-60031")  # not executable
        session.root(["chmod", "755", "/Library/t/script"])
        self.assertEqual(self.program.output_of("/Library/t/script", "a b"), "/Library/t/script:a b\n")

    def test_the_interpreter_of_a_script_is_judged(self):
        own = f"{session.HOME}/sh"
        session.user(["cp", "/bin/sh", own])
        for interpreter in own, "/Library/t/inner", "sh", "/" + "x" * 300, "":
            make_file("/Library/t/script", f"#!{interpreter}\n: >/Library/t/taken-over\n")
            make_file("/Library/t/inner", "#!/bin/sh\n")
            session.root(["chmod", "755", "/Library/t/script", "/Library/t/inner"])
            self.assertEqual(self.ask("exec-wait", "/Library/t/script"), "-60031", interpreter)
        self.assertFalse(exists("/Library/t/taken-over"))

    def test_too_many_arguments_are_refused_and_nothing_is_lost(self):
        self.assertEqual(self.ask("exec", "/bin/true", "x" * 70000, "x" * 70000), "-60031")
        self.assertEqual(self.ask("exec", "/bin/true"), "0")

    def test_chown_knows_the_group_wheel(self):
        make_file("/Library/t/job")
        session.root(["chown", "tester:tester", "/Library/t/job"])
        self.assertEqual(self.ask("exec-wait", "/usr/sbin/chown", "root:wheel", "/Library/t/job"), "0")
        status = os.stat("/Library/t/job")
        self.assertEqual((status.st_uid, status.st_gid), (0, 0))

    def test_chown_knows_the_group_wheel_where_the_systems_has_its_path(self):
        session.root(["ln", "-s", "/usr/bin/chown", "/usr/sbin/chown"])
        self.addCleanup(session.root, ["rm", "-f", "/usr/sbin/chown"])
        self.test_chown_knows_the_group_wheel()

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
                   helper_log(), "the line")

    def test_a_line_break_does_not_reach_the_journal(self):
        name = "/Library/t/two\nlines\x1b[31m"
        session.root(["cp", "/bin/true", name])
        self.assertEqual(self.ask("exec-wait", name, "three\nlines"), "0")
        wait_until(lambda: "for user 1000: /Library/t/two%0Alines%1B[31m three%0Alines" in helper_log(),
                   "the line")
        self.assertFalse([line for line in helper_log().splitlines() if not line.startswith("for user ")])

    def test_a_tool_that_ends_badly_is_in_the_journal(self):
        self.assertEqual(self.ask("exec-wait", "/bin/false"), "0")
        wait_until(lambda: "for user 1000: /bin/false ended with status 1" in helper_log(), "the line")
        self.assertEqual(self.ask("exec-wait", "/bin/sh", "-c", "kill -KILL $$"), "0")
        wait_until(lambda: "for user 1000: /bin/sh was ended by signal 9 (Killed)" in helper_log(),
                   "the line")

    def test_a_bad_end_is_told_also_when_the_program_has_ended(self):
        self.ask("exec", "/bin/sh", "-c", "sleep 1; exit 7")
        self.program.kill()
        wait_until(lambda: "for user 1000: /bin/sh ended with status 7" in helper_log(), "the line")
        wait_until(lambda: not helpers(), "the helper to end")


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

    @staticmethod
    def with_limits(limits):
        """A program that is limited so before it starts: by resource, the soft limit and the hard one."""
        def limit():
            for number, (soft, hard) in limits.items():
                resource.setrlimit(number, (soft, resource.getrlimit(number)[1] if hard is None else hard))
        return Program(preexec_fn=limit)

    def test_the_limits_of_the_client_have_no_effect(self):
        make_file("/Library/t/big", "x" * (1 << 20))
        small = {resource.RLIMIT_FSIZE: 64 << 10, resource.RLIMIT_CORE: 64 << 10, resource.RLIMIT_NOFILE: 100,
                 resource.RLIMIT_CPU: 50, resource.RLIMIT_STACK: 1 << 20}
        if not is_sanitized():  # a sanitizer's own memory counts as data
            small[resource.RLIMIT_DATA] = 2 << 30
        with self.with_limits({number: (soft, None) for number, soft in small.items()}) as program:
            self.assertEqual(program.ask("start-with", "admin", PASSWORD), "yes")
            self.assertEqual(program.ask("exec-wait", "/bin/cp", "/Library/t/big", "/Library/t/copy"), "0")
            limits = program.output_of("/bin/cat", "/proc/self/limits")
        self.assertEqual(os.path.getsize("/Library/t/copy"), 1 << 20)
        self.assertEqual(limits, self.program.output_of("/bin/cat", "/proc/self/limits"))
        soft = {line[:25].strip(): line[25:].split()[0] for line in limits.splitlines()[1:]}
        for name in "Max file size", "Max cpu time", "Max data size", "Max address space":
            self.assertEqual(soft[name], "unlimited")

    def test_a_limit_that_cannot_be_undone_lets_no_tool_run_by_halves(self):
        make_file("/Library/t/big", "x" * (1 << 20))
        with self.with_limits({resource.RLIMIT_FSIZE: (64 << 10, 64 << 10)}) as program:
            cap_sys_resource = 1 << 24
            capabilities = session.root(["sed", "-n", "s/^CapEff:\t//p", "/proc/self/status"]).output
            if int(capabilities, 16) & cap_sys_resource:
                self.assertEqual(program.ask("start-with", "admin", PASSWORD), "yes")
                program.ask("exec-wait", "/bin/cp", "/Library/t/big", "/Library/t/copy")
                self.assertEqual(os.path.getsize("/Library/t/copy"), 1 << 20)
            else:  # as root of a container
                self.assertEqual(program.ask("start-with", "admin", PASSWORD), "no")
                wait_until(lambda: "cannot be undone: resource limit 1 (setrlimit): Operation not "
                           "permitted" in console(), "the words")

    def test_the_priority_of_the_client_has_no_effect(self):
        def slow_down():
            os.nice(15)
            os.sched_setscheduler(0, os.SCHED_BATCH, os.sched_param(0))
            os.sched_setaffinity(0, {min(os.sched_getaffinity(0))})
            library = ctypes.CDLL(None)
            subprocess.run(["ionice", "-c", "3", "-p", str(os.getpid())], check=True)
            library.prctl(29, 500_000_000)  # PR_SET_TIMERSLACK
            library.personality(0x0020000)  # UNAME26
            with open("/proc/self/oom_score_adj", "w", encoding="ascii") as score:
                score.write("1000")
        with Program(preexec_fn=slow_down) as program:
            self.assertEqual(program.ask("start-with", "admin", PASSWORD), "yes")
            state = program.output_of("/bin/cat", "/proc/self/stat").rpartition(")")[2].split()
            self.assertEqual(state[19 - 3], "0")  # nice
            self.assertEqual(state[41 - 3], "0")  # SCHED_OTHER
            self.assertEqual(program.output_of("/usr/bin/ionice"), "none: prio 0\n")
            self.assertEqual(program.output_of("/usr/bin/nproc"), f"{os.cpu_count()}\n")
            self.assertEqual(program.output_of("/bin/cat", "/proc/self/oom_score_adj",
                                               "/proc/self/timerslack_ns", "/proc/self/personality"),
                             "0\n50000\n00000000\n")

    def test_the_clients_cgroup_has_no_hold_on_a_tool(self):
        group = "/sys/fs/cgroup/scene-of-client"
        with Program() as program:
            session.root(["sh", "-c", f"mkdir -p {group} && echo {program.pid} >{group}/cgroup.procs"])
            self.assertEqual(program.ask("start-with", "admin", PASSWORD), "yes")
            session.root(["mkfifo", "/Library/t/go"])
            program.ask("exec", "/bin/sh", "-c", "read go </Library/t/go; : >/Library/t/done")
            try:
                session.root(["sh", "-c", f"echo 1 >{group}/cgroup.freeze"])
                session.root(["sh", "-c", "echo go >/Library/t/go &"])
                wait_until(lambda: exists("/Library/t/done"), "the tool to get to its end")
            finally:
                session.root(["sh", "-c", f"echo 0 >{group}/cgroup.freeze"])

    def test_the_helper_is_built_of_little(self):
        libraries = {line.split()[0].split("/")[-1].split(".")[0] for line in
                     session.user(["ldd", HELPER]).output.splitlines()
                     if line.split()[0].startswith("lib")}
        sanitizers = {"libasan", "libtsan", "libubsan"}
        self.assertIn("libc", libraries)
        self.assertEqual(libraries - sanitizers - {"libstdc++", "libgcc_s", "libc", "libm"}, set())

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
            self.assertIn("can only be started by pkexec", run.errors)

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
