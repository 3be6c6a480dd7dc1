#!/usr/bin/python3
# SPDX-FileCopyrightText: 2026 Corvane
# SPDX-License-Identifier: MIT
"""Jobs under the systemd user manager of a real session.

usage: service_manager.py BUILD_FOLDER

Runs in desktop-session --install.
"""
import os
import signal
import sys
import time

HERE = os.path.dirname(os.path.abspath(__file__))
sys.path[:0] = [f"{HERE}/../Support", f"{HERE}/../Commands"]
import jobs  # noqa: E402
import session  # noqa: E402
from jobs import COMPUTER, launchctl, run, wait_until, write_program  # noqa: E402

LABEL = "com.corvane.OstrelListener"
UNIT = f"app-{LABEL}.service"
AFTER_FAILURE = {"SuccessfulExit": False}


def write_job(label=LABEL, **keys):
    """A job of the user's own."""
    return jobs.write_job(label, folder=jobs.own_folder(), **keys)


def write_computer_job(label=LABEL, **keys):
    """A job of everybody's, as an administrator installs it."""
    made = jobs.write_job(label, folder="/tmp/made", **keys)
    session.root(["install", "-D", "-o", "root", "-g", "root", "-m", "644", made,
                  jobs.job_file(label)])
    return jobs.job_file(label)


def systemctl(*arguments):
    return run("systemctl", "--user", "--no-pager", *arguments)


def shown(unit, name):
    return systemctl("show", unit, f"--property={name}", "--value").stdout.strip()


class ServiceManager(jobs.JobTest):
    def remove(self, path):
        session.root(["rm", path])

    def tearDown(self):
        super().tearDown()
        session.root(["rm", "-rf", "/tmp/made"])
        self.expect(systemctl("daemon-reload"))

    def test_a_loaded_job_is_a_unit_that_runs(self):
        path = write_job()
        self.expect(launchctl("list", LABEL), 1, f"launchctl: {LABEL}: not loaded\n")
        self.load(path)
        details = self.details(LABEL)
        pid = int(details["PID"])
        self.assertTrue(jobs.runs(pid))
        self.assertEqual((details["Unit"], details["File"]), (UNIT, path))
        self.assertEqual(details["State"], "active (running)")
        self.assertEqual(shown(UNIT, "MainPID"), str(pid))
        # Desktop portals know a program by the name of its group.
        self.assertTrue(jobs.contents(f"/proc/{pid}/cgroup").strip().endswith(f"/app.slice/{UNIT}"))
        status = systemctl("status", UNIT)
        self.assertEqual(status.returncode, 0)
        self.assertIn(f"{path}; generated", status.stdout)
        self.expect(launchctl("list"), output=f"PID\tStatus\tLabel\n{pid}\t0\t{LABEL}\n")
        self.expect(launchctl("load", path), 1, f"launchctl: {LABEL}: already loaded\n")
        self.assertEqual(self.pid(LABEL), pid)
        self.expect(launchctl("unload", path))
        self.assertFalse(jobs.runs(pid))
        self.expect(launchctl("unload", path), 1, f"launchctl: {LABEL}: not loaded\n")
        self.expect(launchctl("remove", LABEL), 1, f"launchctl: {LABEL}: not loaded\n")
        self.expect(launchctl("list"), output="PID\tStatus\tLabel\n")
        self.assertEqual(jobs.processes("job-supervisor"), [])

    def test_a_crash_is_made_up_for(self):
        self.load(write_job(KeepAlive=AFTER_FAILURE, ThrottleInterval=1))
        pid = self.pid(LABEL)
        for number in signal.SIGSEGV, signal.SIGTERM, signal.SIGKILL:
            os.kill(pid, number)
            pid = self.pid(LABEL, other_than=pid)
        self.assertEqual(self.details(LABEL)["Restarts"], "3")

    def test_a_clean_exit_stays_ended(self):
        program = write_program("/tmp/clean", "exit 0\n")
        path = write_job(program=program, KeepAlive=AFTER_FAILURE)
        self.load(path)
        wait_until(lambda: self.details(LABEL)["State"] == "inactive (dead)", "the end")
        time.sleep(2)
        self.assertEqual(self.details(LABEL)["Restarts"], "0")
        # Loaded all the same, until it is unloaded.
        self.expect(launchctl("load", path), 1, f"launchctl: {LABEL}: already loaded\n")
        self.expect(launchctl("unload", path))
        self.expect(launchctl("list", LABEL), 1, f"launchctl: {LABEL}: not loaded\n")

    def test_who_dies_at_once_is_started_again_for_ever_and_can_be_unloaded(self):
        program = write_program("/tmp/dying", "cut -d' ' -f22 /proc/$$/stat >>/tmp/starts; exit 7\n")
        path = write_job(program=program, KeepAlive=AFTER_FAILURE, ThrottleInterval=2)
        self.load(path)

        def starts():
            return [int(line) / os.sysconf("SC_CLK_TCK") for line in jobs.contents("/tmp/starts").split()]
        wait_until(lambda: len(starts()) >= 8, "eight starts")
        for earlier, later in zip(starts(), starts()[1:]):
            self.assertGreater(later - earlier, 1.95)  # the pause is the throttle interval
        self.assertEqual(self.details(LABEL)["Status"], "7")
        self.assertNotEqual(shown(UNIT, "ActiveState"), "failed")
        self.expect(launchctl("unload", path))
        self.assertEqual(shown(UNIT, "ActiveState"), "inactive")
        write_job()
        for _ in range(8):  # by hand it may be started as often as one likes
            self.load(path)
            self.expect(launchctl("unload", path))

    def test_what_cannot_be_run_is_told_in_words(self):
        path = write_job(program="/nowhere")
        self.expect(launchctl("load", path), 1,
                    f'launchctl: {LABEL}: loaded, but not started: the service manager says '
                    '"failed": /nowhere cannot be run: No such file or directory\n')
        self.assertEqual(self.details(LABEL)["Status"], "203")
        # One that is to be kept alive is told of at once, too, and is tried again.
        kept = write_job("com.example.kept", program="/nowhere", KeepAlive=True, ThrottleInterval=1)
        self.expect(launchctl("load", kept), 1,
                    'launchctl: com.example.kept: loaded, but not started: the service manager says '
                    '"failed": /nowhere cannot be run: No such file or directory\n')
        wait_until(lambda: int(self.details("com.example.kept")["Restarts"]) > 6, "seven restarts")
        path = write_job("com.example.folder", WorkingDirectory="/nowhere")
        self.expect(launchctl("load", path), 1,
                    'launchctl: com.example.folder: loaded, but not started: the service manager '
                    'says "failed": /nowhere cannot be the working directory: No such file or '
                    'directory\n')

    def test_who_does_not_end_is_ended_in_time(self):
        program = write_program("/tmp/stubborn", "trap '' TERM\ntouch /tmp/deaf\n"
                                                 "while :; do sleep 1; done\n")
        path = write_job(program=program, KeepAlive=True)
        self.load(path)
        pid = self.pid(LABEL)
        wait_until(lambda: os.path.exists("/tmp/deaf"), "the program")
        begin = time.monotonic()
        self.expect(launchctl("unload", path))
        self.assertLess(time.monotonic() - begin, 30)
        self.assertFalse(jobs.runs(pid))

    def test_a_job_runs_at_each_log_in(self):
        path = write_computer_job(KeepAlive=AFTER_FAILURE)
        write_job("com.example.own")
        for _ in range(2):
            session.log_out()
            self.assertEqual(jobs.processes("sleep"), [])
            session.log_in()
            pid = self.pid(LABEL)
            self.assertTrue(self.pid("com.example.own"))
            self.expect(launchctl("load", path), 1, f"launchctl: {LABEL}: already loaded\n")
            self.assertEqual(self.pid(LABEL), pid)
        # Unloaded it stays away, though the file and so the unit are still there, until the next time.
        self.expect(launchctl("unload", path))
        self.expect(systemctl("daemon-reload"))
        self.assertEqual(shown(UNIT, "ActiveState"), "inactive")
        self.expect(launchctl("list", LABEL), 1, f"launchctl: {LABEL}: not loaded\n")
        session.log_out()
        session.log_in()
        self.assertTrue(self.pid(LABEL))

    def test_a_program_that_has_ended_since_log_in_is_still_loaded(self):
        path = write_computer_job(program="/bin/true")
        session.log_out()
        session.log_in()
        wait_until(lambda: self.details(LABEL)["State"] == "inactive (dead)", "the end")
        self.expect(launchctl("load", path), 1, f"launchctl: {LABEL}: already loaded\n")
        self.expect(launchctl("unload", path))
        self.expect(launchctl("unload", path), 1, f"launchctl: {LABEL}: not loaded\n")

    def test_a_reload_makes_the_unit_and_starts_nothing(self):
        path = write_job()
        self.expect(systemctl("daemon-reload"))
        self.assertEqual(shown(UNIT, "SourcePath"), path)
        self.assertEqual(shown(UNIT, "ActiveState"), "inactive")
        self.expect(launchctl("list", LABEL), 1, f"launchctl: {LABEL}: not loaded\n")
        self.load(path)
        pid = self.pid(LABEL)
        self.expect(systemctl("daemon-reload"))
        self.assertEqual(self.pid(LABEL), pid)

    def test_a_broken_job_harms_no_log_in(self):
        write_computer_job("com.example.broken", Sockets={})
        session.root(["sh", "-c", f"echo junk >{COMPUTER}/com.example.junk.plist && "
                                  f"mkfifo {COMPUTER}/com.example.pipe.plist"])
        write_computer_job()
        session.log_out()
        session.log_in()
        self.assertTrue(self.pid(LABEL))
        self.assertEqual(systemctl("is-system-running").stdout, "running\n")
        journal = session.journal("--identifier=ostrel-job-generator") + session.journal()
        self.assertIn(f'{COMPUTER}/com.example.broken.plist: the key "Sockets" has no meaning here',
                      journal)
        self.assertIn(f"{COMPUTER}/com.example.junk.plist: not a property list", journal)

    def test_a_job_whose_file_is_gone_is_unloaded_and_its_unit_goes(self):
        path = write_job()
        self.load(path)
        pid = self.pid(LABEL)
        os.unlink(path)
        self.expect(launchctl("unload", path))
        self.assertFalse(jobs.runs(pid))
        self.assertEqual(shown(UNIT, "LoadState"), "not-found")
        write_job()
        self.load(path)
        os.unlink(path)
        self.expect(systemctl("daemon-reload"))
        self.assertTrue(self.pid(LABEL))
        self.expect(launchctl("remove", LABEL))
        self.assertEqual(shown(UNIT, "LoadState"), "not-found")

    def test_a_unit_of_another_origin_is_not_touched(self):
        path = write_job()
        folder = os.environ["HOME"] + "/.config/systemd/user"
        os.makedirs(folder, exist_ok=True)
        with open(f"{folder}/{UNIT}", "w") as file:
            file.write("[Service]\nExecStart=/bin/sleep 999\n")
        self.expect(systemctl("daemon-reload"))
        self.expect(systemctl("start", UNIT))
        pid = shown(UNIT, "MainPID")
        told = (f"launchctl: {UNIT}: this unit is not made from a job file, but from "
                f"{folder}/{UNIT}\n")
        for arguments in ("load", path), ("unload", path), ("remove", LABEL):
            self.expect(launchctl(*arguments), 1, told)
        self.expect(launchctl("list"), output="PID\tStatus\tLabel\n")
        self.assertEqual(shown(UNIT, "MainPID"), pid)
        self.expect(systemctl("stop", UNIT))
        os.unlink(f"{folder}/{UNIT}")

    def test_a_file_of_another_user_is_not_loaded(self):
        path = write_job()
        session.root(["chown", "admin", path])
        self.expect(launchctl("load", path), 1,
                    f"launchctl: {path}: Dubious ownership: the file belongs to another user\n")
        self.expect(systemctl("daemon-reload"))
        self.assertEqual(shown(UNIT, "LoadState"), "not-found")
        session.root(["chown", "root", path])
        self.load(path)

    def test_another_user_has_jobs_of_his_own(self):
        path = write_computer_job(KeepAlive=True)
        write_job("com.example.own")
        self.load(path)
        session.root(["systemctl", "start", "user@1001.service"])
        command = ["runuser", "-u", "admin", "--", "env", "XDG_RUNTIME_DIR=/run/user/1001",
                   jobs.LAUNCHCTL]
        try:
            session.root([*command, "load", path])  # nobody has logged in there
            his = wait_until(lambda: session.root(
                ["pgrep", "--uid", "1001", "--exact", "sleep"], check=False).output.split(),
                "the other user's program")
            self.assertEqual(len(his), 1)
            self.expect(launchctl("unload", path))
            self.assertTrue(jobs.runs(his[0]))
            kept = session.root([*command, "list"]).output
            self.assertEqual(kept, f"PID\tStatus\tLabel\n{his[0]}\t0\t{LABEL}\n")
        finally:
            session.root(["systemctl", "stop", "user@1001.service"])

    def test_a_computers_job_runs_only_for_who_alone_can_change_its_program(self):
        os.makedirs(f"{session.HOME}/clone", exist_ok=True)
        program = write_program(f"{session.HOME}/clone/program", "exec sleep 1000\n")
        path = write_computer_job(program=program, KeepAlive=True)
        told = f"{path}: others could change what it runs: {session.HOME} belongs to user 1000"
        session.log_out()
        session.log_in()
        self.assertTrue(self.pid(LABEL))  # his own, and root's
        session.root(["systemctl", "start", "user@1001.service"])
        try:
            his = ["runuser", "-u", "admin", "--", "env", "XDG_RUNTIME_DIR=/run/user/1001"]
            self.assertEqual(session.root([*his, "systemctl", "--user", "show", UNIT,
                                           "--property=LoadState", "--value"]).output, "not-found\n")
            self.assertIn(told, session.journal("_UID=1001"))
            for caller in his, ["env", "HOME=/root"]:
                refused = session.root([*caller, jobs.LAUNCHCTL, "load", path], check=False)
                self.assertEqual((refused.status, refused.errors), (1, f"launchctl: {told}\n"))
            self.assertEqual(session.root(["pgrep", "--uid", "0,1001", "--exact", "sleep"],
                                          check=False).output, "")
        finally:
            session.root(["systemctl", "stop", "user@1001.service"])

    def test_without_a_folder_for_the_sessions_jobs_nothing_is_done_and_that_is_told(self):
        path = write_computer_job()
        session.root(["systemctl", "start", "user@0.service"])
        try:
            for user in 0, session.USER:
                folder = f"/run/user/{user}/ostrel"
                session.root(["sh", "-c", f"rm -rf {folder} && touch {folder}"])
                told = (f"launchctl: {folder}: this must be a folder of your own that nobody else can "
                        "enter\n")
                for words in ("load", path), ("unload", path), ("list",):
                    result = session.root(["env", "HOME=/root", "XDG_RUNTIME_DIR=/run/user/0",
                                           jobs.LAUNCHCTL, *words], check=False) if user == 0 else None
                    result = result or session.user([jobs.LAUNCHCTL, *words], check=False)
                    self.assertEqual((result.status, result.errors), (1, told))
                session.root(["rm", folder])
            self.assertEqual([name for name in os.listdir("/") if name.startswith("app-")], [])
        finally:
            session.root(["systemctl", "stop", "user@0.service"])
        self.load(path)

    def test_login_screens_and_services_have_no_jobs(self):
        write_computer_job()
        for user, count in ("100", 0), ("999", 0), ("1001", 1), ("0", 1):
            made = session.root(["sh", "-c", f"rm -rf /tmp/units && mkdir -m 777 /tmp/units && "
                                 f"env HOME=/nowhere setpriv --reuid={user} --clear-groups "
                                 f"{jobs.GENERATOR} /tmp/units && ls /tmp/units | grep -c ^app-"],
                                check=False).output
            self.assertEqual(made, f"{count}\n")

    def test_a_program_of_an_odd_name_gets_its_arguments(self):
        folder = "/tmp/-'\"% $HOME\\x"
        os.makedirs(folder, exist_ok=True)
        program = write_program(folder + "/pro gram\n",
                                'pwd >"$OUT"; printf "%s|" "$@" >>"$OUT"; exec sleep 1000\n')
        every = "".join(map(chr, range(1, 128))) + "grün"
        arguments = ["me", "-n", "%h $HOME ${A} \\", "a\n\n", every.encode(), ""]
        label = "- it's \"odd\" 100%"
        self.load(write_job(label, program=program, ProgramArguments=arguments,
                            WorkingDirectory=folder, StandardErrorPath=folder + "/error %",
                            EnvironmentVariables={"OUT": "/tmp/out", "B": "%h\n$B"}))
        expected = folder + "\n" + "".join(f"{word}|" for word in [*arguments[1:4], every, ""])
        wait_until(lambda: os.path.exists("/tmp/out") and
                   open("/tmp/out", "rb").read() == expected.encode(), "the program's output")
        self.assertTrue(os.path.exists(folder + "/error %"))
        environment = open(f"/proc/{self.pid(label)}/environ", "rb").read().split(b"\0")
        self.assertIn(b"B=%h\n$B", environment)
        unit = self.details(label)["Unit"]
        self.assertEqual(systemctl("status", unit).returncode, 0)
        self.expect(launchctl("remove", label))

    def test_a_job_that_systemd_cannot_express_is_refused_in_words(self):
        path = write_job(program=write_program(b"/tmp/\xff", "exit\n"))
        self.expect(launchctl("load", path), 1,
                    f"launchctl: {path}: systemd cannot take what is not UTF-8: /tmp/\uFFFD\n")
        self.expect(launchctl("list"), output="PID\tStatus\tLabel\n")

    def test_text_reaches_a_plainly_named_program(self):
        program = write_program("/tmp/plain", 'pwd >/tmp/said; printf "%s|" "$0" "$@"; exec sleep 1000\n')
        folder = "/tmp/it's \"here\" $HOME %h\\x"
        os.makedirs(folder)
        arguments = ["me", "$HOME", "${A}", "$$", "%h%%", "a\nb\t", "\"'\\", "", "~", "grün"]
        self.load(write_job(program=program, ProgramArguments=arguments, WorkingDirectory=folder,
                            StandardOutPath=folder + "/out %h", Umask=0o027, Nice=4))
        expected = "|".join([program] + arguments[1:]) + "|"
        wait_until(lambda: jobs.contents(folder + "/out %h") == expected, "the program's output")
        self.assertEqual(jobs.contents("/tmp/said"), folder + "\n")
        self.assertEqual(os.stat("/tmp/said").st_mode & 0o777, 0o640)
        self.assertEqual(os.getpriority(os.PRIO_PROCESS, self.pid(LABEL)), 4)


jobs.main()
