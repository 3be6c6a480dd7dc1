#!/usr/bin/python3
# SPDX-FileCopyrightText: 2026 Corvane
# SPDX-License-Identifier: MIT
"""Job files and the commands that handle them, for the tests of both."""
import os
import plistlib
import shutil
import subprocess
import sys
import time
import unittest

BUILD = sys.argv[1] if len(sys.argv) > 1 else "."
COMMANDS = f"{BUILD}/libexec/ostrel"
LAUNCHCTL = f"{COMMANDS}/launchctl"
GENERATOR = f"{COMMANDS}/job-generator"
COMPUTER = "/Library/LaunchAgents"
PATIENCE = 180  # seconds; a loaded machine is slow, a broken program stays broken


def own_folder():
    return os.environ["HOME"] + "/Library/LaunchAgents"


def job_file(label, folder=COMPUTER):
    return f"{folder}/{label}.plist"


def sleep_program():
    """The system's, or a copy where it belongs to neither root nor us, as in a developer's sandbox."""
    if os.stat("/bin/sleep").st_uid in (0, os.getuid()):
        return "/bin/sleep"
    copy = os.environ["HOME"] + "/sleep"
    if not os.path.exists(copy):
        shutil.copy("/bin/sleep", copy)
    return copy


def write_job(label, folder=COMPUTER, program=None, **keys):
    """Writes a job file, by default of a program that runs, and answers with its path."""
    job = {"Label": label, "Program": program or sleep_program(), "RunAtLoad": True}
    if program is None:
        job["ProgramArguments"] = ["sleep", "1000"]
    job.update(keys)
    os.makedirs(folder, exist_ok=True)
    path = job_file(label, folder)
    with open(path, "wb") as file:
        plistlib.dump({key: value for key, value in job.items() if value is not None}, file)
    os.chmod(path, 0o644)
    return path


def write_program(path, text):
    """Writes a shell program."""
    with open(path, "w") as file:
        file.write("#!/bin/sh\n" + text)
    os.chmod(path, 0o755)
    return path


def run(*command, **options):
    return subprocess.run(command, stdin=subprocess.DEVNULL, capture_output=True, text=True,
                          errors="surrogateescape", timeout=PATIENCE, **options)


def launchctl(*arguments, **options):
    return run(LAUNCHCTL, *arguments, **options)


def wait_until(condition, what):
    end = time.monotonic() + PATIENCE
    while time.monotonic() < end:
        found = condition()
        if found:
            return found
        time.sleep(0.02)
    raise AssertionError(f"waited in vain for {what}")


def status_of(pid):
    """The fields of /proc/PID/stat from the state on; nothing where there is no such process."""
    try:
        with open(f"/proc/{pid}/stat", "rb") as file:
            return file.read().rsplit(b")", 1)[1].split()
    except OSError:
        return None


def runs(pid):
    status = status_of(pid)
    return status is not None and status[0] != b"Z"


def processes(name=None):
    """The processes of that name, zombies included."""
    found = []
    for entry in os.listdir("/proc"):
        if entry.isdigit() and status_of(entry) is not None:
            try:
                with open(f"/proc/{entry}/comm") as file:
                    if name is None or file.read().strip() == name[:15]:
                        found.append(int(entry))
            except OSError:
                pass
    return found


def contents(path):
    try:
        with open(path, errors="surrogateescape") as file:
            return file.read()
    except FileNotFoundError:
        return ""


class JobTest(unittest.TestCase):
    """A test that leaves no job files and no jobs behind."""

    def tearDown(self):
        for folder in COMPUTER, own_folder():
            for name in os.listdir(folder) if os.path.isdir(folder) else []:
                if name.endswith(".plist"):
                    launchctl("unload", f"{folder}/{name}")
                    self.remove(f"{folder}/{name}")

    def remove(self, path):
        os.unlink(path)

    def expect(self, result, status=0, errors="", output=None):
        self.assertEqual((result.returncode, result.stderr), (status, errors))
        if output is not None:
            self.assertEqual(result.stdout, output)

    def load(self, path):
        self.expect(launchctl("load", path))

    def details(self, label):
        """What "list LABEL" tells."""
        result = launchctl("list", label)
        self.assertEqual(result.returncode, 0, result.stderr)
        return dict(line.split(" = ", 1) for line in result.stdout.splitlines())

    def pid(self, label, other_than=None):
        """The job's process, once there is one."""
        def running():
            if launchctl("list", label).returncode != 0:
                return None
            pid = self.details(label)["PID"]
            return int(pid) if pid not in ("-", str(other_than)) else None
        return wait_until(running, f"a process of {label}")

    def wait_for_end(self, pid):
        wait_until(lambda: not runs(pid), f"the end of {pid}")


def main():
    del sys.argv[1:2]
    unittest.main(module="__main__", verbosity=2)
