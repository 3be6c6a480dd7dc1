#!/usr/bin/python3
# SPDX-FileCopyrightText: 2026 Corvane
# SPDX-License-Identifier: MIT
"""Whose the files are that root saves for an ordinary user, and what that user can do about it.

usage: saving_as_root.py PROGRAM      (in desktop-session --as root)
"""
import os
import shutil
import stat
import subprocess
import sys
import tempfile
import unittest

PROGRAM = sys.argv.pop(1)
TESTER, OTHER = 1000, 1001


def save(command, path, times=1):
    done = subprocess.run([PROGRAM, command, path, str(times)], capture_output=True, text=True, timeout=300,
                          check=True)
    return int(done.stdout)


class As:
    """While it lives, a program of the user's runs the statements again and again."""
    def __init__(self, user, statements):
        def become():
            os.setgroups([])
            os.setgid(user)
            os.setuid(user)
        loop = f"import os\nprint('ready', flush=True)\nwhile True:\n  try:\n    {statements}\n  except OSError: pass\n"
        self.process = subprocess.Popen([sys.executable, "-c", loop], preexec_fn=become,
                                        stdout=subprocess.PIPE)
        self.process.stdout.readline()

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.process.kill()
        self.process.wait()
        self.process.stdout.close()


class SavingAsRoot(unittest.TestCase):
    def setUp(self):
        self.top = tempfile.mkdtemp()
        os.chmod(self.top, 0o755)
        self.home, self.roots = f"{self.top}/home", f"{self.top}/roots"
        os.mkdir(self.home)
        os.chown(self.home, TESTER, TESTER)
        os.mkdir(self.roots)
        os.umask(0o022)

    def tearDown(self):
        shutil.rmtree(self.top)

    def make(self, path, contents="old", owner=0, mode=0o644):
        with open(path, "w", encoding="utf8") as file:
            file.write(contents)
        os.chmod(path, mode)
        os.lchown(path, owner, owner)
        return path

    def state(self, path):
        with open(path, encoding="utf8") as file:
            return file.read(), os.stat(path).st_uid

    def whose(self, path):
        status = os.lstat(path)
        return status.st_uid, status.st_gid

    def test_a_new_file_belongs_to_the_owner_of_its_folder(self):
        for command in "list", "bytes", "empty":
            with self.subTest(command=command):
                self.assertEqual(save(command, f"{self.home}/{command}"), 1)
                self.assertEqual(self.whose(f"{self.home}/{command}"), (TESTER, TESTER))
                self.assertEqual(save(command, f"{self.roots}/{command}"), 1)
                self.assertEqual(self.whose(f"{self.roots}/{command}"), (0, 0))

    def test_new_folders_belong_to_the_owner_of_the_one_above(self):
        for command in "folder", "private-folder":
            with self.subTest(command=command):
                self.assertEqual(save(command, f"{self.home}/{command}/b/c"), 1)
                self.assertEqual(save(command, f"{self.roots}/{command}/b"), 1)
                for path in command, f"{command}/b", f"{command}/b/c":
                    self.assertEqual(self.whose(f"{self.home}/{path}"), (TESTER, TESTER))
                self.assertEqual(self.whose(f"{self.roots}/{command}/b"), (0, 0))

    def test_a_file_that_is_replaced_keeps_owner_and_mode(self):
        for owner in TESTER, OTHER, 0:
            with self.subTest(owner=owner):
                path = self.make(f"{self.home}/{owner}", owner=owner, mode=0o640)
                self.assertEqual(save("bytes", path), 1)
                self.assertEqual(self.whose(path), (owner, owner))
                self.assertEqual(stat.S_IMODE(os.stat(path).st_mode), 0o640)

    def test_a_damaged_file_that_is_kept_stays_its_owners(self):
        path = self.make(f"{self.home}/list", "damaged", TESTER)
        self.assertEqual(save("damaged", path), 1)
        self.assertEqual(self.whose(f"{path}.damaged"), (TESTER, TESTER))

    def test_a_link_of_the_users_is_refused_and_its_file_untouched(self):
        secret = self.make(f"{self.roots}/secret", mode=0o600)
        link = f"{self.home}/link"
        os.symlink(secret, link)
        os.lchown(link, TESTER, TESTER)
        for command in "list", "bytes", "damaged":
            self.assertEqual(save(command, link), 0)
        self.assertEqual(save("empty", link), 1)    # in place of the link
        self.assertEqual((self.whose(link), os.path.islink(link)), ((TESTER, TESTER), False))
        self.assertEqual(self.state(secret), ("old", 0))
        self.assertFalse(os.path.lexists(f"{link}.damaged"))

    def test_another_name_of_roots_file_is_replaced_not_written(self):
        secret = self.make(f"{self.roots}/secret", mode=0o600)
        os.link(secret, f"{self.home}/name")
        self.assertEqual(save("bytes", f"{self.home}/name"), 1)
        self.assertEqual(self.state(secret), ("old", 0))
        self.assertEqual(self.whose(f"{self.home}/name"), (0, 0))

    def test_a_user_who_swaps_the_name_gets_no_file_elsewhere(self):
        secret, name = self.make(f"{self.roots}/secret", mode=0o600), f"{self.home}/name"
        swap = (f"os.path.lexists({name!r}) and os.unlink({name!r}); os.symlink({secret!r}, {name!r}); "
                f"os.unlink({name!r}); os.close(os.open({name!r}, os.O_CREAT, 0o600))")
        for command in "bytes", "list", "empty", "damaged":
            with self.subTest(command=command), As(TESTER, swap):
                save(command, name, 2000)
                self.assertEqual(self.state(secret), ("old", 0))
        self.assertEqual(os.listdir(self.roots), ["secret"])

    def test_a_user_who_swaps_a_new_folder_is_given_no_other(self):
        roots, name = f"{self.home}/roots", f"{self.home}/name"
        os.mkdir(roots, 0o700)
        self.make(f"{roots}/secret", mode=0o600)
        swap = (f"os.rename({name!r}, {name!r} + '2'); os.rename({roots!r}, {name!r}); "
                f"os.rename({name!r}, {roots!r}); os.rmdir({name!r} + '2')")
        for command in "folder", "private-folder":
            with self.subTest(command=command), As(TESTER, swap):
                save(command, name, 2000)
        held = [entry.path for entry in os.scandir(self.home) if os.path.exists(f"{entry.path}/secret")]
        self.assertEqual([self.whose(path) for path in held], [(0, 0)])


if __name__ == "__main__":
    unittest.main(verbosity=2)
