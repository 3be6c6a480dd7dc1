#!/usr/bin/python3
# SPDX-FileCopyrightText: 2026 Corvane
# SPDX-License-Identifier: MIT
"""The units that the generator makes of job files.

usage: job_generator.py BUILD_FOLDER
"""
import os
import random
import resource
import shutil
import signal
import unittest

import jobs
from jobs import COMPUTER, write_job

LISTENER = "com.corvane.OstrelListener"
OUT = "/tmp/units"
WANTS = "default.target.wants"
LOG_IN = "ostrel-log-in.service"


class Generator(unittest.TestCase):
    def setUp(self):
        for folder in COMPUTER, jobs.own_folder(), OUT, f"{os.environ['HOME']}/.config/systemd/user":
            shutil.rmtree(folder, ignore_errors=True)
            os.makedirs(folder)

    def generate(self, errors=(), folder=OUT, **options):
        """Runs it as the manager does; it succeeds whatever it meets."""
        result = jobs.run(jobs.GENERATOR, folder, folder, folder, **options)
        self.assertEqual(result.returncode, 0)
        self.assertEqual(result.stderr.splitlines(), [f"<4>{line}" for line in errors])
        self.assertEqual(result.stdout, "")

    def units(self):
        return sorted(name for name in os.listdir(OUT) if name not in (WANTS, LOG_IN))

    def wanted(self):
        return sorted(os.listdir(f"{OUT}/{WANTS}")) if os.path.isdir(f"{OUT}/{WANTS}") else []

    def setting(self, unit, name):
        lines = jobs.contents(f"{OUT}/{unit}").splitlines()
        return [line.split("=", 1)[1] for line in lines if line.startswith(name + "=")]

    def test_the_listeners_job_becomes_a_unit_that_starts_in_the_graphical_session(self):
        folder = "/Library/PreferencePanes/Ostrel.prefPane/Contents/MacOS"
        os.makedirs(folder, exist_ok=True)
        program = jobs.write_program(f"{folder}/OstrelListener", "exit\n")
        path = write_job(LISTENER, program=program, WorkingDirectory=folder,
                         KeepAlive={"SuccessfulExit": False})
        self.generate()
        unit = f"app-{LISTENER}.service"
        self.assertEqual(self.units(), [unit])
        # Log-in starts what waits for the session and its display, and not the job.
        self.assertEqual(self.wanted(), [LOG_IN])
        self.assertEqual(os.readlink(f"{OUT}/{WANTS}/{LOG_IN}"), f"../{LOG_IN}")
        self.assertEqual(self.setting(LOG_IN, "ExecStart"),
                         [f'"@:{jobs.LAUNCHCTL}" "{jobs.LAUNCHCTL}" "log-in"'])
        self.assertEqual(self.setting(LOG_IN, "StartLimitIntervalSec"), ["0"])
        self.assertEqual(self.setting(unit, "SourcePath"), [path])
        self.assertEqual(self.setting(unit, "Restart"), ["on-failure"])
        self.assertEqual(self.setting(unit, "WorkingDirectory"), [folder])
        self.assertEqual(self.setting(unit, "KillMode"), ["mixed"])

    def test_without_job_files_and_without_folders_there_is_nothing(self):
        self.generate()
        shutil.rmtree(jobs.own_folder())
        self.generate()
        self.assertEqual(self.units(), [])

    def test_a_job_that_does_not_run_at_load_is_not_wanted(self):
        write_job("idle", RunAtLoad=False)
        self.generate()
        self.assertEqual((self.units(), self.wanted()), (["app-idle.service"], []))
        self.assertFalse(os.path.exists(f"{OUT}/{LOG_IN}"))

    def test_a_disabled_job_has_no_unit(self):
        write_job("off", Disabled=True)
        self.generate()
        self.assertEqual(self.units(), [])

    def test_broken_job_files_harm_no_other(self):
        write_job("good")
        write_job("sockets", Sockets={})
        write_job("other", Label="another")
        write_job("open")
        os.chmod(jobs.job_file("open"), 0o666)
        os.mkdir(jobs.job_file("folder"))
        os.mkfifo(jobs.job_file("pipe"))
        os.symlink("/nowhere", jobs.job_file("link"))
        os.symlink("/dev/zero", jobs.job_file("zero"))
        with open(jobs.job_file("junk"), "wb") as file:
            file.write(b"<plist><dict>" * 9000)
        with open(jobs.job_file("large"), "wb") as file:
            file.truncate(1 << 40)
        self.generate([
            f"{COMPUTER}/folder.plist: not a regular file",
            f"{COMPUTER}/junk.plist: not a property list with a dictionary",
            f"{COMPUTER}/large.plist: larger than any job file",
            f"{COMPUTER}/link.plist: No such file or directory",
            f"{COMPUTER}/open.plist: Dubious ownership: others than the owner may write to the file",
            f'{COMPUTER}/other.plist: a job with the label "another" belongs in a file '
            '"another.plist"',
            f"{COMPUTER}/pipe.plist: not a regular file",
            f'{COMPUTER}/sockets.plist: the key "Sockets" has no meaning here',
            f"{COMPUTER}/zero.plist: not a regular file",
        ])
        self.assertEqual((self.units(), self.wanted()), (["app-good.service"], [LOG_IN]))

    def test_other_files_in_the_folder_are_left_alone(self):
        for name in "a.plist.new", ".hidden.plist.new", "readme":
            with open(f"{COMPUTER}/{name}", "w") as file:
                file.write("junk")
        self.generate()
        self.assertEqual(self.units(), [])

    def test_a_label_that_begins_with_a_dot_has_no_unit(self):
        path = write_job(".hidden")
        self.generate([f'{path}: the key "Label" begins with a dot'])
        self.assertEqual(self.units(), [])

    def test_a_noncharacter_and_a_path_too_long_for_the_system_have_no_unit(self):
        # Systemd drops such a line, and would run the job without its setting.
        character = write_job("character", WorkingDirectory="/tmp/\ufdd0")
        name = write_job("name", StandardOutPath="/" + "x" * 256)
        self.generate([f'{character}: the key "WorkingDirectory" holds a noncharacter',
                       f'{name}: the key "StandardOutPath" is a path with a name of more than 255 bytes'])
        self.assertEqual(self.units(), [])

    def test_the_computers_job_goes_before_the_users_of_that_label(self):
        first = write_job("twice")
        second = write_job("twice", folder=jobs.own_folder())
        write_job("own", folder=jobs.own_folder())
        self.generate([f"{second}: there already is a system-wide job with this label"])
        self.assertEqual(self.setting("app-twice.service", "SourcePath"), [first])
        self.assertIn("app-own.service", self.units())

    def test_a_computers_job_has_no_unit_where_others_can_change_what_it_runs(self):
        program = "/tmp/link/program"
        os.makedirs("/tmp/programs/inner", exist_ok=True)
        jobs.write_program("/tmp/programs/inner/program", "exit\n")
        os.symlink("programs/inner", "/tmp/link")
        self.addCleanup(os.unlink, "/tmp/link")
        path = write_job("judged", program=program)
        self.generate()
        self.assertEqual(self.units(), ["app-judged.service"])
        for place, mode in ("/tmp/programs/inner/program", 0o757), ("/tmp/programs/inner", 0o1777), \
                ("/tmp/programs", 0o777):
            shutil.rmtree(OUT)
            os.makedirs(OUT)
            before = os.stat(place).st_mode & 0o7777
            os.chmod(place, mode)
            self.generate([f"{path}: others could change what it runs: {place} can be changed by "
                           "everybody"])
            self.assertEqual((self.units(), self.wanted()), ([], []))
            os.chmod(place, before)

    def test_a_users_own_job_runs_what_the_user_likes_and_roots_does_not(self):
        program = jobs.write_program("/tmp/open", "exit\n")
        os.chmod(program, 0o777)
        path = write_job("own", folder=jobs.own_folder(), program=program)
        if os.getuid() != 0:
            self.generate()
            self.assertEqual(self.units(), ["app-own.service"])
            return
        self.generate([f"{path}: others could change what it runs: {program} can be changed by "
                       "everybody"])
        self.assertEqual(self.units(), [])

    def test_a_computers_job_without_its_program_has_no_unit(self):
        path = write_job("gone", program="/nowhere/program")
        self.generate([f"{path}: /nowhere/program cannot be run: No such file or directory"])
        self.assertEqual(self.units(), [])

    def test_a_unit_of_another_origin_is_not_touched(self):
        other = f"{os.environ['HOME']}/.config/systemd/user/app-taken.service"
        path = write_job("taken")
        for make in (lambda: open(other, "w").close(), lambda: os.symlink("/dev/null", other)):
            make()
            self.generate([f"{path}: there already is a unit with this name, {other}"])
            self.assertEqual((self.units(), self.wanted()), ([], []))
            os.unlink(other)
        self.generate()
        self.assertEqual(self.units(), ["app-taken.service"])

    def test_systemd_takes_every_unit(self):
        folder = "/tmp/it's \"odd\" %h $HOME\\ x"
        os.makedirs(folder, exist_ok=True)
        program = jobs.write_program(folder + "/pro\ngram", "exit\n")
        write_job("plain", KeepAlive=True)
        write_job("- 'a\"b%$\\@", program=jobs.sleep_program(), ProgramArguments=["%h", "$HOME", "a\nb"],
                  WorkingDirectory=folder, StandardOutPath=folder + "/out",
                  EnvironmentVariables={"A": "%h\n$B\"'\\"}, KeepAlive={"SuccessfulExit": True})
        write_job("all", program=program, WorkingDirectory=folder, Nice=-20, Umask=0,
                  StandardInPath="/dev/null", StandardErrorPath=folder,
                  ProcessType="Background", ThrottleInterval=86400)
        self.generate()
        self.assertEqual(len(self.units()), 3)
        with open(f"{OUT}/app-wrong.service", "w") as file:
            file.write("[Service]\nExecStart=/bin/true\nRestart=maybe\n")
        for unit in [LOG_IN, *self.units()]:
            result = jobs.run("systemd-analyze", "--user", "--man=no", "verify", f"{OUT}/{unit}")
            told = [line for line in result.stderr.splitlines() if "app-" in line]
            self.assertEqual(bool(told), unit == "app-wrong.service", result.stderr)

    def test_what_systemd_cannot_express_has_no_unit(self):
        odd = jobs.write_program(b"/tmp/\xff", "exit\n")
        bytes_job = write_job("bytes", program=odd)
        path_job = write_job("path", WorkingDirectory="/tmp/a\nb")
        self.generate([f"{bytes_job}: systemd cannot take what is not UTF-8: /tmp/\uFFFD",
                       f"{path_job}: systemd cannot take a path with such a name: /tmp/a\uFFFDb"])
        self.assertEqual(self.units(), [])

    def test_an_odd_home_folder(self):
        home = "/tmp/home %h 'x' \"y\""
        write_job("own", folder=f"{home}/Library/LaunchAgents")
        self.generate(env=dict(os.environ, HOME=home))
        self.assertEqual(self.setting("app-own.service", "SourcePath"),
                         [home.replace("%", "%%") + "/Library/LaunchAgents/own.plist"])
        broken = os.fsdecode(b"/tmp/home\n\xff")
        write_job("own", folder=f"{broken}/Library/LaunchAgents")
        self.generate(["/tmp/home\uFFFD\uFFFD/Library/LaunchAgents/own.plist: systemd cannot take a "
                       "job file in a folder with such a name"],
                      env=dict(os.environ, HOME=broken))

    def test_a_unit_is_written_whole_or_not_at_all(self):
        write_job("large", EnvironmentVariables={"A": "x" * 50000})
        write_job("small")

        def limit():
            signal.signal(signal.SIGXFSZ, signal.SIG_IGN)
            resource.setrlimit(resource.RLIMIT_FSIZE, (4096, 4096))

        self.generate([f"{OUT}/app-large.service: File too large"], preexec_fn=limit,
                      restore_signals=False)
        self.assertEqual((self.units(), self.wanted()), (["app-small.service"], [LOG_IN]))

    def test_a_folder_that_cannot_be_written_to_keeps_nobody_from_logging_in(self):
        write_job("small")
        self.generate(["/nowhere/app-small.service: No such file or directory"], folder="/nowhere")

    def test_hostile_files_make_no_harm(self):
        numbers = random.Random(20260131)
        write_job("good")
        seed = jobs.contents(write_job("seed", KeepAlive={"SuccessfulExit": False},
                                       EnvironmentVariables={"A": "b"})).encode()
        os.unlink(jobs.job_file("seed"))
        for number in range(500):
            data = bytearray(seed)
            for _ in range(numbers.randint(1, 6)):
                at = numbers.randrange(len(data))
                piece = numbers.choice([b"", b"\xff", b"<dict>", b"\n[Service]\nExecStart=/x\n",
                                        b"</string>", b"&#x10FFFF;", b"%h", bytes([at % 256])])
                data[at:at + numbers.randint(0, 9)] = piece
            with open(jobs.job_file(f"hostile{number}"), "wb") as file:
                file.write(data)
        result = jobs.run(jobs.GENERATOR, OUT)
        self.assertEqual(result.returncode, 0)
        self.assertTrue(all(line.startswith("<4>/Library/LaunchAgents/hostile")
                            for line in result.stderr.splitlines()), result.stderr)
        self.assertIn("app-good.service", self.units())

    def test_it_loads_no_graphics(self):
        libraries = jobs.run("ldd", jobs.GENERATOR).stdout
        for library in "Gui", "Widgets", "DBus":
            self.assertNotRegex(libraries, f"libQt[56]{library}")

    def test_used_wrongly_it_says_how(self):
        result = jobs.run(jobs.GENERATOR)
        self.assertEqual(result.returncode, 2)
        self.assertTrue(result.stderr.startswith("usage: job-generator FOLDER"))


jobs.main()
