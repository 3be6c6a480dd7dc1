#!/usr/bin/python3
# SPDX-FileCopyrightText: 2026 Corvane
# SPDX-License-Identifier: MIT
"""launchctl where no systemd keeps the user's programs.

usage: launchctl_with_supervisor.py BUILD_FOLDER
"""
import os
import plistlib
import shutil
import socket
import subprocess
import time

import jobs
from jobs import launchctl, write_job, write_program

HEADER = "PID\tStatus\tLabel\n"
LABEL = "com.example.job"


class Launchctl(jobs.JobTest):
    def setUp(self):
        # The supervisor ends by itself, a little after its last job.
        jobs.wait_until(lambda: not jobs.processes("job-supervisor"), "an earlier test's supervisor to end")

    def test_without_jobs_everything_says_so_and_nothing_is_started(self):
        self.expect(launchctl("list"), output=HEADER)
        self.expect(launchctl("list", LABEL), 1, f"launchctl: {LABEL}: not loaded\n")
        self.expect(launchctl("unload", jobs.job_file(LABEL)), 1,
                    f"launchctl: {LABEL}: not loaded\n")
        self.expect(launchctl("remove", LABEL), 1, f"launchctl: {LABEL}: not loaded\n")
        self.assertEqual(jobs.processes("job-supervisor"), [])

    def test_a_loaded_job_runs_at_once_and_an_unloaded_one_no_more(self):
        path = write_job(LABEL)
        self.load(path)
        details = self.details(LABEL)
        pid = int(details["PID"])
        self.assertTrue(jobs.runs(pid))
        self.assertEqual(details["Label"], LABEL)
        self.assertEqual(details["Status"], "0")
        self.assertEqual(details["File"], path)
        self.assertEqual(details["State"], "running")
        self.expect(launchctl("list"), output=f"{HEADER}{pid}\t0\t{LABEL}\n")
        self.expect(launchctl("unload", path))
        self.assertFalse(jobs.runs(pid))
        self.expect(launchctl("list"), output=HEADER)

    def test_loading_twice_is_told_and_starts_nothing(self):
        path = write_job(LABEL)
        self.load(path)
        pid = self.pid(LABEL)
        self.expect(launchctl("load", path), 1, f"launchctl: {LABEL}: already loaded\n")
        self.assertEqual(self.pid(LABEL), pid)
        self.assertEqual(len(jobs.processes("sleep")), 1)

    def test_unloading_twice_is_told(self):
        path = write_job(LABEL)
        self.load(path)
        self.expect(launchctl("unload", path))
        self.expect(launchctl("unload", path), 1, f"launchctl: {LABEL}: not loaded\n")

    def test_a_job_is_removed_by_its_label(self):
        self.load(write_job(LABEL))
        pid = self.pid(LABEL)
        self.expect(launchctl("remove", LABEL))
        self.assertFalse(jobs.runs(pid))

    def test_a_job_whose_file_is_gone_is_unloaded(self):
        path = write_job(LABEL)
        self.load(path)
        os.unlink(path)
        self.expect(launchctl("unload", path))

    def test_a_job_whose_file_is_damaged_is_unloaded(self):
        path = write_job(LABEL)
        self.load(path)
        with open(path, "wb") as file:
            file.write(b"junk")
        self.expect(launchctl("unload", path))

    def test_a_job_without_run_at_load_waits(self):
        self.load(write_job(LABEL, RunAtLoad=False))
        self.assertEqual(self.details(LABEL)["PID"], "-")
        self.assertEqual(self.details(LABEL)["State"], "ended")

    def test_a_broken_job_harms_no_other(self):
        broken = write_job("com.example.broken", Sockets={})
        good = write_job(LABEL)
        junk = jobs.job_file("com.example.junk")
        with open(junk, "wb") as file:
            file.write(b"\0junk")
        self.expect(launchctl("load", broken, junk, good), 1,
                    f'launchctl: {broken}: the key "Sockets" has no meaning here\n'
                    f"launchctl: {junk}: not a property list with a dictionary\n")
        self.assertTrue(self.pid(LABEL))
        self.assertNotIn("broken", launchctl("list").stdout)

    def test_a_binary_job_file_is_loaded(self):
        path = write_job(LABEL)
        with open(path, "rb") as file:
            job = plistlib.load(file)
        with open(path, "wb") as file:
            plistlib.dump(job, file, fmt=plistlib.FMT_BINARY)
        self.load(path)

    def test_a_program_that_cannot_be_run_is_told(self):
        path = write_job(LABEL, program="/nowhere")
        self.expect(launchctl("load", path), 1,
                    f"launchctl: {path}: /nowhere cannot be run: No such file or directory\n")
        program = write_program("/tmp/program", "exit\n")
        os.chmod(program, 0o644)
        path = write_job(LABEL, program=program)
        self.expect(launchctl("load", path), 1,
                    f"launchctl: {LABEL}: loaded, but not started: {program} cannot be run: "
                    "Permission denied\n")
        jobs.wait_until(lambda: self.details(LABEL)["Status"] == "203", "the exit status")

    def test_a_folder_that_is_missing_is_told(self):
        path = write_job(LABEL, WorkingDirectory="/nowhere")
        self.expect(launchctl("load", path), 1,
                    f"launchctl: {LABEL}: loaded, but not started: /nowhere cannot be the working "
                    "directory: No such file or directory\n")

    def test_output_into_a_pipe_that_nobody_reads_is_told(self):
        os.mkfifo("/tmp/pipe")
        path = write_job(LABEL, StandardOutPath="/tmp/pipe")
        self.expect(launchctl("load", path), 1,
                    f"launchctl: {LABEL}: loaded, but not started: /tmp/pipe cannot be opened: "
                    "No such device or address\n")
        os.unlink("/tmp/pipe")

    def test_a_disabled_job_is_not_loaded(self):
        path = write_job(LABEL, Disabled=True)
        self.expect(launchctl("load", path), 1, f"launchctl: {path}: the job is disabled\n")

    def test_a_file_that_others_may_write_to_is_not_loaded(self):
        path = write_job(LABEL)
        for mode in 0o664, 0o646:
            os.chmod(path, mode)
            self.expect(launchctl("load", path), 1,
                        f"launchctl: {path}: Dubious ownership: others than the owner may write "
                        "to the file\n")

    def test_a_computers_job_is_not_loaded_where_others_can_change_what_it_runs(self):
        os.mkdir("/tmp/open")
        program = write_program("/tmp/open/program", "exec sleep 1000\n")
        self.addCleanup(shutil.rmtree, "/tmp/open")
        path = write_job(LABEL, program=program)
        for place in program, "/tmp/open":
            os.chmod(place, 0o1777)
            self.expect(launchctl("load", path), 1,
                        f"launchctl: {path}: others could change what it runs: {place} can be "
                        "changed by everybody\n")
            os.chmod(place, 0o755)
        self.assertEqual(jobs.processes("job-supervisor"), [])
        self.load(path)

    def test_a_computers_job_is_not_loaded_from_a_folder_that_others_can_change(self):
        path = write_job(LABEL)
        os.chmod(jobs.COMPUTER, 0o1777)
        self.addCleanup(os.chmod, jobs.COMPUTER, 0o755)
        self.expect(launchctl("load", path), 1,
                    f"launchctl: {path}: others could put another file there: {jobs.COMPUTER} can be "
                    "changed by everybody\n")

    def test_only_the_folders_of_jobs_count(self):
        path = write_job(LABEL, folder="/tmp/elsewhere")
        self.expect(launchctl("load", path), 1,
                    f"launchctl: {path}: only job files in {jobs.COMPUTER} and "
                    f"{jobs.own_folder()} can be loaded\n")
        missing = "/tmp/nowhere/a.plist"
        self.assertEqual(launchctl("load", missing).returncode, 1)

    def test_a_file_may_be_named_in_any_way_that_leads_to_it(self):
        write_job(LABEL)
        self.expect(launchctl("load", f"./{LABEL}.plist", cwd=jobs.COMPUTER))
        self.assertEqual(self.details(LABEL)["File"], jobs.job_file(LABEL))
        self.expect(launchctl("unload", f"{LABEL}.plist", cwd=jobs.COMPUTER))
        write_job("com.example.other")
        self.expect(launchctl("load", f"{LABEL}.plist", "com.example.other.plist", cwd=jobs.COMPUTER))
        self.expect(launchctl("remove", LABEL))
        os.symlink(jobs.COMPUTER, "/tmp/link")
        self.expect(launchctl("load", f"/tmp/link//{LABEL}.plist"))
        os.unlink("/tmp/link")

    def test_the_users_own_folder_counts(self):
        path = write_job(LABEL, folder=jobs.own_folder())
        self.load(path)
        self.assertEqual(self.details(LABEL)["File"], path)
        other = write_job(LABEL)
        self.expect(launchctl("load", other), 1, f"launchctl: {LABEL}: already loaded\n")

    def test_odd_labels(self):
        for label in "-dash", "it's", 'quo"te', "100%", "a b$HOME", "Grüße 🎹", "x.", "x..y":
            with self.subTest(label):
                path = write_job(label)
                self.load(path)
                self.assertEqual(self.details(label)["Label"], label)
                self.assertIn(f"\t0\t{label}\n", launchctl("list").stdout)
                self.expect(launchctl("remove", label))

    def test_labels_that_are_none(self):
        for label, reason in (("", "is empty"), ("a/b", "holds a slash or a control character"),
                              ("a\nb", "holds a slash or a control character"),
                              (b"\xff", "is not UTF-8"), (".x", "begins with a dot"),
                              ("a\ufffe", "holds a noncharacter"), ("x" * 300, "is too long")):
            with self.subTest(label):
                self.expect(launchctl("remove", label), 1, f"launchctl: the label {reason}\n")
        self.expect(launchctl("unload", "/tmp/a.txt"), 1,
                    "launchctl: /tmp/a.txt: not the name of a job file\n")

    def test_a_label_that_begins_with_a_dot_is_not_loaded(self):
        path = write_job(".hidden")
        self.expect(launchctl("load", path), 1,
                    f'launchctl: {path}: the key "Label" begins with a dot\n')

    def test_names_of_any_bytes_reach_the_program(self):
        folder = b"/tmp/-'\"% $HOME\n\xff\\"
        os.mkdir(folder)
        program = write_program(folder + b"/pro gram\n", 'pwd >"$OUT"; printf "%s|" "$@" >>"$OUT"\n')
        arguments = [b"me", b"-n", b"%h $HOME \\", b"a\nb", b"\xfe", b""]
        self.load(write_job(LABEL, program=program, ProgramArguments=arguments,
                            WorkingDirectory=folder, StandardErrorPath=folder + b"/error\n",
                            EnvironmentVariables={"OUT": "/tmp/out", "B": "c\nd"}))
        expected = folder + b"\n" + b"".join(word + b"|" for word in arguments[1:])
        def output():
            return jobs.contents("/tmp/out").encode(errors="surrogateescape")
        jobs.wait_until(lambda: output() == expected, "the program's output")
        self.assertTrue(os.path.exists(folder + b"/error\n"))
        shutil.rmtree(folder)

    def test_two_at_once_load_a_job_once(self):
        path = write_job(LABEL)
        started = [subprocess.Popen([jobs.LAUNCHCTL, "load", path], stderr=subprocess.PIPE,
                                    text=True) for _ in range(8)]
        ends = [(process.communicate(timeout=jobs.PATIENCE)[1], process.returncode)
                for process in started]
        self.assertEqual(sorted(ends), [("", 0)] + [
            (f"launchctl: {LABEL}: already loaded\n", 1)] * 7)
        self.assertEqual(len(jobs.processes("job-supervisor")), 1)
        self.assertEqual(len(jobs.processes("sleep")), 1)

    def test_many_at_once_load_all_jobs(self):
        paths = [write_job(f"com.example.job{number}") for number in range(8)]
        for command in "load", "unload", "load":
            started = [subprocess.Popen([jobs.LAUNCHCTL, command, path]) for path in paths]
            for process in started:
                self.assertEqual(process.wait(jobs.PATIENCE), 0)
        self.assertEqual(len(jobs.processes("job-supervisor")), 1)
        self.assertEqual(len(launchctl("list").stdout.splitlines()), 9)

    def test_a_supervisor_that_does_not_answer_is_left_in_time(self):
        path = write_job(LABEL)
        self.load(path)
        supervisor = jobs.processes("job-supervisor")[0]
        os.kill(supervisor, 19)
        begin = time.monotonic()
        self.expect(launchctl("list"), 1, "launchctl: the supervisor does not answer\n")
        self.assertGreater(time.monotonic() - begin, 7)
        os.kill(supervisor, 18)

    def test_a_service_manager_that_does_not_answer_is_left_in_time(self):
        # Where one is silent, nothing is known of its jobs: no supervisor may take them on.
        os.makedirs(f"{os.environ['XDG_RUNTIME_DIR']}/systemd")
        silent = socket.socket(socket.AF_UNIX)
        silent.bind(f"{os.environ['XDG_RUNTIME_DIR']}/systemd/private")
        silent.listen()
        self.addCleanup(shutil.rmtree, f"{os.environ['XDG_RUNTIME_DIR']}/systemd")
        path = write_job(LABEL)
        self.expect(launchctl("load", path), 1,
                    "launchctl: the service manager does not answer\n")
        silent.close()  # now the socket is what a manager has left behind
        self.load(path)
        self.expect(launchctl("unload", path))

    def test_misuse_is_answered_with_the_usage(self):
        for arguments in ([], ["load"], ["unload"], ["remove"], ["remove", "a", "b"],
                          ["list", "a", "b"], ["start", "a"]):
            result = launchctl(*arguments)
            self.assertEqual((result.returncode, result.stdout), (2, ""))
            self.assertTrue(result.stderr.startswith("usage: launchctl load FILE"))
        result = launchctl("help")
        self.assertEqual((result.returncode, result.stderr), (0, ""))


jobs.main()
