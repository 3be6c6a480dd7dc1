#!/usr/bin/python3
# SPDX-FileCopyrightText: 2026 Corvane
# SPDX-License-Identifier: MIT
"""How the supervisor keeps programs running, and how it ends.

usage: job_supervisor.py BUILD_FOLDER
"""
import errno
import os
import shutil
import signal
import socket
import time

import jobs
from jobs import launchctl, wait_until, write_job, write_program

LABEL = "com.example.job"
AFTER_FAILURE = {"SuccessfulExit": False}
AFTER_SUCCESS = {"SuccessfulExit": True}
RUNTIME = os.environ["XDG_RUNTIME_DIR"]
STARTS = "/tmp/starts"
FAULTS = f"{jobs.BUILD}/Tests/Support/libFaults.so"


def supervisors():
    return [pid for pid in jobs.processes("job-supervisor") if jobs.runs(pid)]


def starts():
    """When the program that notes its starts has been started, in seconds."""
    ticks = os.sysconf("SC_CLK_TCK")
    return [int(line) / ticks for line in jobs.contents(STARTS).split()]


def noting_program(rest):
    return write_program("/tmp/program", f"cut -d' ' -f22 /proc/$$/stat >>{STARTS}\n{rest}\n")


class Supervisor(jobs.JobTest):
    def tearDown(self):
        super().tearDown()
        wait_until(lambda: not supervisors(), "the end of the supervisor")
        if os.path.exists(STARTS):
            os.unlink(STARTS)

    def test_a_crash_after_a_while_is_made_up_for_at_once(self):
        self.load(write_job(LABEL, KeepAlive=AFTER_FAILURE, ThrottleInterval=6))
        pid = self.pid(LABEL)
        time.sleep(6.5)
        os.kill(pid, signal.SIGSEGV)
        begin = time.monotonic()
        self.pid(LABEL, other_than=pid)
        self.assertLess(time.monotonic() - begin, 5)
        self.assertEqual(self.details(LABEL)["Restarts"], "1")
        self.assertEqual(self.details(LABEL)["Status"], "-11")

    def test_an_end_by_any_signal_is_no_success(self):
        self.load(write_job(LABEL, KeepAlive=AFTER_FAILURE, ThrottleInterval=1))
        pid = self.pid(LABEL)
        for number in signal.SIGTERM, signal.SIGHUP, signal.SIGKILL:
            os.kill(pid, number)
            pid = self.pid(LABEL, other_than=pid)

    def test_who_dies_at_once_waits_for_its_interval(self):
        self.load(write_job(LABEL, program=noting_program("exit 1"), KeepAlive=AFTER_FAILURE,
                            ThrottleInterval=2))
        wait_until(lambda: len(starts()) >= 3, "three starts")
        times = starts()
        for earlier, later in zip(times, times[1:]):
            self.assertGreater(later - earlier, 1.95)
        self.assertEqual(self.details(LABEL)["Status"], "1")

    def test_there_are_ten_seconds_between_starts_where_nothing_is_said(self):
        self.load(write_job(LABEL, program=noting_program("exit 1"), KeepAlive=True))
        wait_until(lambda: self.details(LABEL)["State"] == "waiting for the next start", "the wait")
        wait_until(lambda: len(starts()) >= 2, "two starts")
        self.assertGreater(starts()[1] - starts()[0], 9.95)

    def test_a_clean_exit_stays_ended(self):
        self.load(write_job(LABEL, program=noting_program("exit 0"), KeepAlive=AFTER_FAILURE,
                            ThrottleInterval=1))
        wait_until(lambda: self.details(LABEL)["State"] == "ended", "the end")
        time.sleep(1.5)
        self.assertEqual(len(starts()), 1)
        self.assertEqual(self.details(LABEL)["Status"], "0")

    def test_a_job_that_is_not_kept_alive_stays_ended(self):
        self.load(write_job(LABEL, program=noting_program("exit 3"), ThrottleInterval=1))
        wait_until(lambda: self.details(LABEL)["Status"] == "3", "the end")
        time.sleep(1.5)
        self.assertEqual(len(starts()), 1)

    def test_a_clean_exit_is_made_up_for_where_that_is_asked(self):
        for keep_alive in True, AFTER_SUCCESS:
            self.load(write_job(LABEL, program=noting_program("exit 0"), KeepAlive=keep_alive,
                                ThrottleInterval=1))
            before = len(starts())
            wait_until(lambda: len(starts()) > before + 1, "the next start")
            self.expect(launchctl("remove", LABEL))

    def test_it_never_gives_up(self):
        self.load(write_job(LABEL, program=noting_program("exit 1"), KeepAlive=AFTER_FAILURE,
                            ThrottleInterval=1))
        wait_until(lambda: len(starts()) >= 8, "eight starts")

    def test_a_first_start_without_a_process_to_be_had_is_tried_again(self):
        spawn, third, fails = 1 << 9, 3, 0  # Calls, and the two that make it a daemon, and Outcome
        fault = {"LD_PRELOAD": FAULTS, "FAULT": f"{spawn} {third} {fails} {errno.EAGAIN} 0"}
        path = write_job(LABEL, KeepAlive=AFTER_FAILURE, ThrottleInterval=1)
        self.expect(launchctl("load", path, env=dict(os.environ, **fault)), 1,
                    f"launchctl: {LABEL}: loaded, but not started: {jobs.sleep_program()} cannot be "
                    "run: Resource temporarily unavailable\n")
        self.pid(LABEL)

    def test_a_program_that_is_missing_is_tried_again(self):
        write_program("/tmp/late", "exec sleep 1000\n")
        self.load(write_job(LABEL, program="/tmp/late", KeepAlive=AFTER_FAILURE, ThrottleInterval=1))
        pid = self.pid(LABEL)
        os.unlink("/tmp/late")
        os.kill(pid, signal.SIGKILL)
        wait_until(lambda: self.details(LABEL)["Status"] == "203", "the failed start")
        write_program("/tmp/late", "exec sleep 1000\n")
        self.pid(LABEL, other_than=pid)
        os.unlink("/tmp/late")

    def test_a_program_is_judged_before_each_start(self):
        os.mkdir("/tmp/judged")
        self.addCleanup(shutil.rmtree, "/tmp/judged")
        program = write_program("/tmp/judged/program", "exec sleep 1000\n")
        self.load(write_job(LABEL, program=program, KeepAlive=AFTER_FAILURE, ThrottleInterval=1))
        pid = self.pid(LABEL)
        os.chmod("/tmp/judged", 0o777)
        os.rename(program, "/tmp/judged/real")
        write_program(program, "touch /tmp/judged/replaced\nexec sleep 1000\n")  # anybody's
        os.kill(pid, signal.SIGKILL)
        wait_until(lambda: self.details(LABEL)["Status"] == "203", "the refused start")
        self.assertFalse(os.path.exists("/tmp/judged/replaced"))
        os.rename("/tmp/judged/real", program)
        os.chmod("/tmp/judged", 0o755)
        self.pid(LABEL, other_than=pid)

    def test_the_program_has_a_session_and_streams_of_its_own(self):
        os.umask(0o077)
        self.load(write_job(LABEL, Umask=0o027, Nice=3, WorkingDirectory="/usr",
                            StandardOutPath="/tmp/output", ProcessType="Background"))
        os.umask(0o022)
        pid = self.pid(LABEL)
        self.assertEqual(os.getsid(pid), pid)
        self.assertEqual(os.getpgid(pid), pid)
        self.assertEqual(os.readlink(f"/proc/{pid}/cwd"), "/usr")
        self.assertEqual(os.getpriority(os.PRIO_PROCESS, pid), 3)
        self.assertEqual(os.sched_getscheduler(pid), os.SCHED_BATCH)
        streams = {name: os.readlink(f"/proc/{pid}/fd/{name}")
                   for name in os.listdir(f"/proc/{pid}/fd")}
        self.assertEqual(streams, {"0": "/dev/null", "1": "/tmp/output", "2": "/dev/null"})
        self.assertEqual(os.stat("/tmp/output").st_mode & 0o777, 0o640)
        with open(f"/proc/{pid}/status") as file:
            status = dict(line.split(":\t", 1) for line in file.read().splitlines() if ":\t" in line)
        self.assertEqual(status["Umask"], "0027")
        for mask in "SigBlk", "SigIgn":
            # Not those that the C library keeps for itself.
            self.assertEqual(int(status[mask], 16) & 0x7FFFFFFF, 0)

    def test_the_supervisor_has_left_its_caller(self):
        reading, writing = os.pipe()
        os.set_inheritable(writing, True)
        self.expect(launchctl("load", write_job(LABEL), close_fds=False))
        os.close(writing)
        self.assertEqual(os.read(reading, 1), b"")  # else this would wait for ever
        os.close(reading)
        pid = supervisors()[0]
        self.assertNotEqual(os.getsid(pid), os.getsid(0))
        self.assertNotEqual(os.getpgid(pid), os.getpgid(0))
        self.assertEqual(os.readlink(f"/proc/{pid}/cwd"), "/")
        self.assertEqual({os.readlink(f"/proc/{pid}/fd/{stream}") for stream in range(3)},
                         {"/dev/null"})
        self.assertEqual(os.stat(f"{RUNTIME}/ostrel").st_mode & 0o777, 0o700)

    def test_a_program_is_asked_to_end(self):
        program = write_program("/tmp/program", "trap 'echo bye >/tmp/bye; exit' TERM\n"
                                                "touch /tmp/ready\nsleep 1000 & wait\n")
        self.load(write_job(LABEL, program=program))
        wait_until(lambda: os.path.exists("/tmp/ready"), "the program")
        self.expect(launchctl("remove", LABEL))
        self.assertEqual(jobs.contents("/tmp/bye"), "bye\n")
        wait_until(lambda: not [p for p in jobs.processes("sleep") if jobs.runs(p)], "the group's end")

    def test_who_does_not_end_is_ended_with_its_group(self):
        program = write_program("/tmp/program", "trap '' TERM\nsleep 1000 &\ntouch /tmp/stubborn\n"
                                                "while :; do sleep 1; done\n")
        self.load(write_job(LABEL, program=program))
        pid = self.pid(LABEL)
        wait_until(lambda: os.path.exists("/tmp/stubborn"), "the program")
        begin = time.monotonic()
        self.expect(launchctl("remove", LABEL))
        self.assertGreater(time.monotonic() - begin, 4.5)
        self.assertFalse(jobs.runs(pid))
        wait_until(lambda: not [p for p in jobs.processes("sleep") if jobs.runs(p)], "the group's end")

    def test_no_zombie_is_left(self):
        program = write_program("/tmp/program",
                                "for i in 1 2 3 4 5; do (setsid sleep 0.1 & ) ; done\nexit 0\n")
        self.load(write_job("com.example.other"))
        self.load(write_job(LABEL, program=program, KeepAlive=True, ThrottleInterval=1))
        wait_until(lambda: int(self.details(LABEL)["Restarts"]) >= 2, "two restarts")
        supervisor = supervisors()[0]
        def zombies():
            states = [jobs.status_of(pid) for pid in jobs.processes()]
            return [state for state in states
                    if state and state[0] == b"Z" and int(state[1]) == supervisor]
        wait_until(lambda: not zombies(), "all children reaped")

    def test_the_last_unload_ends_it(self):
        first, second = write_job("com.example.one"), write_job("com.example.two")
        self.expect(launchctl("load", first, second))
        supervisor = supervisors()[0]
        self.expect(launchctl("unload", first))
        self.assertEqual(supervisors(), [supervisor])
        self.expect(launchctl("unload", second))
        wait_until(lambda: not supervisors(), "the end of the supervisor")
        self.assertEqual(os.listdir(f"{RUNTIME}/ostrel"), [])

    def test_a_first_load_that_fails_leaves_none(self):
        path = write_job(LABEL)
        os.chmod(path, 0o666)
        self.assertEqual(launchctl("load", path).returncode, 1)
        wait_until(lambda: not supervisors(), "the end of the supervisor")

    def test_killed_it_leaves_no_program_and_the_next_load_works(self):
        path = write_job(LABEL, KeepAlive=True)
        self.load(path)
        pid, supervisor = self.pid(LABEL), supervisors()[0]
        os.kill(supervisor, signal.SIGKILL)
        self.wait_for_end(supervisor)
        self.wait_for_end(pid)
        self.expect(launchctl("list"), output="PID\tStatus\tLabel\n")
        self.load(path)
        self.assertNotEqual(self.pid(LABEL), pid)

    def test_asked_to_end_it_ends_with_its_jobs(self):
        self.load(write_job(LABEL, KeepAlive=True))
        pid, supervisor = self.pid(LABEL), supervisors()[0]
        os.kill(supervisor, signal.SIGTERM)
        self.wait_for_end(supervisor)
        self.wait_for_end(pid)
        self.assertEqual(os.listdir(f"{RUNTIME}/ostrel"), [])

    def test_it_ends_with_the_sessions_folder(self):
        self.load(write_job(LABEL, KeepAlive=True))
        pid, supervisor = self.pid(LABEL), supervisors()[0]
        shutil.rmtree(f"{RUNTIME}/ostrel")
        self.wait_for_end(supervisor)
        self.wait_for_end(pid)

    def test_broken_requests_do_no_harm(self):
        self.load(write_job(LABEL))
        pid = self.pid(LABEL)
        stuck = []
        for request in (b"", b"\0", b"load", b"load\0", b"load\0\0", b"list\0a\0b\0", b"\xff" * 5000,
                        b"x" * 100000, b"load\0/nowhere.plist\0", b"unload\0\n\0"):
            client = socket.socket(socket.AF_UNIX)
            client.connect(f"{RUNTIME}/ostrel/supervisor.socket")
            try:
                client.sendall(request)
                client.shutdown(socket.SHUT_WR)
                answer = client.recv(4096)
                self.assertTrue(answer == b"" or answer.startswith(b"error\0"), answer)
            except (BrokenPipeError, ConnectionResetError):
                pass
            client.close()
            stuck.append(socket.socket(socket.AF_UNIX))
            stuck[-1].connect(f"{RUNTIME}/ostrel/supervisor.socket")
            stuck[-1].send(request[:10])
        self.assertEqual(self.pid(LABEL), pid)
        for client in stuck:
            client.close()

    def test_who_asks_too_slowly_is_left(self):
        self.load(write_job(LABEL))
        client = socket.socket(socket.AF_UNIX)
        client.connect(f"{RUNTIME}/ostrel/supervisor.socket")
        client.settimeout(jobs.PATIENCE)
        client.send(b"load")
        self.assertEqual(client.recv(10), b"")
        client.close()

    def test_a_long_runtime_folder(self):
        folder = "/tmp/" + "long/" * 40
        os.makedirs(folder)
        environment = dict(os.environ, XDG_RUNTIME_DIR=folder)
        path = write_job(LABEL)
        self.expect(launchctl("load", path, env=environment))
        self.assertIn(LABEL, launchctl("list", env=environment).stdout)
        self.expect(launchctl("unload", path, env=environment))

    def test_each_session_has_its_own(self):
        path = write_job(LABEL)
        self.load(path)
        os.makedirs("/tmp/session", exist_ok=True)
        other = dict(os.environ, XDG_RUNTIME_DIR="/tmp/session")
        self.expect(launchctl("load", path, env=other))
        self.assertEqual(len(supervisors()), 2)
        self.expect(launchctl("unload", path, env=other))

    def test_without_a_runtime_folder_there_is_one_in_tmp(self):
        own = f"/tmp/ostrel-{os.getuid()}"
        environment = {name: value for name, value in os.environ.items()
                       if name != "XDG_RUNTIME_DIR"}
        path = write_job(LABEL)
        os.chmod(RUNTIME, 0o777)  # not this user's alone
        try:
            self.expect(launchctl("load", path, env=environment))
            self.assertEqual(os.stat(own).st_mode & 0o777, 0o700)
            self.expect(launchctl("unload", path, env=environment))
            wait_until(lambda: not supervisors(), "the end of the supervisor")
            os.chmod(own, 0o777)  # anybody may have put a socket there
            self.assertEqual(launchctl("load", path, env=environment).returncode, 1)
            self.assertEqual(supervisors(), [])
        finally:
            os.chmod(RUNTIME, 0o700)


jobs.main()
