#!/usr/bin/python3
# SPDX-FileCopyrightText: 2026 Corvane
# SPDX-License-Identifier: MIT
"""What an installation puts where, for all users, whatever the mask of who builds and installs.

usage: installation.py BUILD_FOLDER      (in a sandbox)
"""
import os
import re
import shutil
import stat
import subprocess
import sys
import unittest

BUILD = sys.argv.pop(1)
COPY = "/tmp/build"  # the build folder itself can only be read
ROOT = "/tmp/root"


def copy_of_the_build():
    """The build folder as a builder with the mask 077 would have it, with what is installed from it."""
    wanted = set()
    for folder, _, names in os.walk(BUILD):
        if "cmake_install.cmake" not in names:
            continue
        with open(f"{folder}/cmake_install.cmake", encoding="utf-8") as file:
            script = file.read()
        wanted.update(re.findall(f'"({re.escape(BUILD)}/[^"]*)"', script))
        new = folder.replace(BUILD, COPY, 1)
        os.makedirs(new, exist_ok=True)
        with open(f"{new}/cmake_install.cmake", "w", encoding="utf-8") as file:
            file.write(script.replace(BUILD, COPY))
    for path in wanted:
        new = path.replace(BUILD, COPY, 1)
        os.makedirs(os.path.dirname(new), exist_ok=True)
        if os.path.islink(path):
            os.symlink(os.readlink(path), new)
        elif os.path.isdir(path):
            shutil.copytree(path, new, symlinks=True, dirs_exist_ok=True)
        elif os.path.isfile(path) and not os.path.exists(new):
            shutil.copy(path, new)
    subprocess.run(["chmod", "-R", "go=", COPY], check=True)


class Installation(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        os.umask(0o077)
        copy_of_the_build()
        os.makedirs(f"{ROOT}/usr/share")
        os.chmod(f"{ROOT}/usr/share", 0o750)
        subprocess.run(["cmake", "--install", COPY], check=True, stdout=subprocess.DEVNULL,
                       env=dict(os.environ, DESTDIR=ROOT))

    def installed(self):
        for folder, folders, files in os.walk(ROOT):
            for name in folders + files:
                path = f"{folder}/{name}"
                yield path.removeprefix(ROOT), os.lstat(path).st_mode

    def test_others_can_use_every_file_and_folder(self):
        count = 0
        for path, mode in self.installed():
            if stat.S_ISLNK(mode) or path in ("/usr", "/usr/share"):
                continue
            runs = stat.S_ISDIR(mode) or "/bin/" in path or "/libexec/" in path or "/MacOS/" in path
            # Modules need no permission to be executed.
            allowed = {0o755} if runs else {0o644, 0o755}
            self.assertIn(stat.S_IMODE(mode), allowed, f"{path}: {stat.S_IMODE(mode):o}")
            count += 1
        self.assertGreater(count, 40)

    def test_folders_that_were_there_stay_as_they_are(self):
        for path, mode in ("", 0o700), ("/usr", 0o700), ("/usr/share", 0o750):
            self.assertEqual(stat.S_IMODE(os.stat(ROOT + path).st_mode), mode, path)

    def test_a_folder_to_install_into_may_be_relative(self):
        subprocess.run(["cmake", "--install", COPY, "--component", "system"], check=True,
                       stdout=subprocess.DEVNULL, cwd="/tmp", timeout=300,
                       env=dict(os.environ, DESTDIR="relative"))
        self.assertTrue(os.path.isdir("/tmp/relative/usr"))

    def test_a_prefix_given_at_the_installation_is_obeyed(self):
        new = "/tmp/for-a-prefix"
        subprocess.run(["cmake", "--install", COPY, "--prefix", "/opt/other"], check=True,
                       stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL,
                       env=dict(os.environ, DESTDIR=new))
        for path in "bin/ostrel-settings", "libexec/ostrel/launchctl":
            self.assertTrue(os.access(f"{new}/opt/other/{path}", os.X_OK), path)
        self.assertFalse(os.path.exists(f"{new}/usr/local"))
        files = {name: f"{folder}/{name}" for folder, _, names in os.walk(new) for name in names}
        with open(files["com.corvane.ostrel.policy"], encoding="utf-8") as file:
            self.assertIn(">/opt/other/libexec/ostrel/authorization-helper<", file.read())
        with open(files["com.corvane.Ostrel.jobs.desktop"], encoding="utf-8") as file:
            self.assertIn('\nExec="/opt/other/libexec/ostrel/launchctl" log-in\n', file.read())
        self.assertEqual(os.readlink(files["ostrel-job-generator"]),
                         "/opt/other/libexec/ostrel/job-generator")

    def test_everything_is_there(self):
        paths = dict(self.installed())
        names = {os.path.basename(path) for path in paths}
        self.assertLessEqual({"authorization-helper", "launchctl", "job-supervisor", "job-generator",
                              "com.corvane.ostrel.policy", "com.corvane.Ostrel.jobs.desktop",
                              "ostrel-settings", "OstrelListener",
                              "keynames.plist", "com.corvane.OstrelSettings.desktop"}, names)
        generators = [path for path in paths if path.endswith("/ostrel-job-generator")]
        self.assertEqual(len(generators), 1)
        target = os.readlink(ROOT + generators[0])
        self.assertTrue(os.access(ROOT + target, os.X_OK), target)


unittest.main(verbosity=2)
