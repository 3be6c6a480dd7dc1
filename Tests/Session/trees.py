#!/usr/bin/python3
# SPDX-FileCopyrightText: 2026 Corvane
# SPDX-License-Identifier: MIT
"""What root copies, moves, trashes and removes where others own the folders.

usage: trees.py PROGRAM      (in desktop-session --as root)
"""
import os
import shutil
import stat
import subprocess
import sys
import unittest

PROGRAM = sys.argv.pop(1)
TESTER = 1000
TOP, OTHER = "/srv/trees", "/mnt/trees"  # the second is another file system
HOME, ROOTS = f"{TOP}/home", f"{TOP}/roots"
CAPABILITY = bytes.fromhex("01000002" "00040000" "00000000" "00000000" "00000000")
# Everything for everybody: owner, group, mask and others.
DEFAULT_LIST = bytes.fromhex("02000000" "01000700ffffffff" "04000700ffffffff" "20000700ffffffff")
REFUSED = "Permission denied"


def perform(*arguments, user=0):
    command = [PROGRAM, *arguments]
    if user:
        command = ["setpriv", f"--reuid={user}", f"--regid={user}", "--clear-groups", *command]
    return subprocess.run(command, check=True, capture_output=True, text=True).stdout.rstrip("\n")


def write(path, text="contents", owner=0, mode=0o644):
    os.makedirs(os.path.dirname(path), exist_ok=True)
    with open(path, "w", encoding="utf-8") as file:
        file.write(text)
    os.chown(path, owner, owner)
    os.chmod(path, mode)


def make_folder(path, owner=0, mode=0o755):
    os.makedirs(path, exist_ok=True)
    os.chown(path, owner, owner)
    os.chmod(path, mode)


def state(path):
    status = os.lstat(path)
    return status.st_mode, status.st_uid, status.st_gid, status.st_rdev


class Trees(unittest.TestCase):
    def setUp(self):
        make_folder(TOP)
        self.addCleanup(shutil.rmtree, TOP)
        make_folder(HOME, TESTER)
        make_folder(ROOTS)
        os.makedirs(OTHER, exist_ok=True)
        subprocess.run(["mount", "-t", "tmpfs", "-o", "mode=0777", "tmpfs", OTHER], check=True)
        self.addCleanup(subprocess.run, ["umount", OTHER], check=True)

    def test_owners_capabilities_and_devices_are_kept(self):
        source = f"{TOP}/source"
        write(f"{source}/tool", owner=TESTER, mode=0o755)
        os.setxattr(f"{source}/tool", "security.capability", CAPABILITY)
        os.mknod(f"{source}/null", stat.S_IFCHR | 0o640, os.makedev(1, 3))
        os.mkfifo(f"{source}/pipe", 0o600)
        os.symlink("nowhere", f"{source}/link")
        for name in "null", "pipe", "link":
            os.lchown(f"{source}/{name}", TESTER, 4711)
        make_folder(f"{source}/closed", TESTER, 0o500)
        names = ["tool", "null", "pipe", "link", "closed", "."]
        before = [state(f"{source}/{name}") for name in names]

        def check(copy):
            self.assertEqual([state(f"{copy}/{name}") for name in names], before)
            self.assertEqual(os.getxattr(f"{copy}/tool", "security.capability"), CAPABILITY)

        for where in TOP, OTHER:
            self.assertEqual(perform("copy", source, f"{where}/copy"), "done")
            check(f"{where}/copy")
            for name in names[:-1]:
                self.assertEqual(perform("copy", f"{source}/{name}", f"{where}/one"), "done")
                self.assertEqual(state(f"{where}/one"), state(f"{source}/{name}"))
                if name == "tool":
                    self.assertEqual(os.getxattr(f"{where}/one", "security.capability"), CAPABILITY)
                self.assertEqual(perform("remove", f"{where}/one"), "done")
        self.assertEqual(perform("move", source, f"{OTHER}/moved"), "done")
        check(f"{OTHER}/moved")
        self.assertFalse(os.path.exists(source))

    def test_no_access_list_is_inherited_from_where_a_copy_is_put(self):
        write(f"{TOP}/source/file", mode=0o640)
        make_folder(f"{TOP}/to")
        os.setxattr(f"{TOP}/to", "system.posix_acl_default", DEFAULT_LIST)
        for name in "", "/file":
            self.assertEqual(perform("copy", f"{TOP}/source{name}", f"{TOP}/to/copy"), "done")
            for path in f"{TOP}/to/copy", f"{TOP}/to/copy/file":
                if os.path.exists(path):
                    self.assertEqual([n for n in os.listxattr(path) if "acl" in n], [])
            self.assertEqual(perform("remove", f"{TOP}/to/copy"), "done")

    def test_root_follows_no_link_that_another_user_plants(self):
        write(f"{ROOTS}/file", mode=0o600)
        make_folder(f"{ROOTS}/folder")
        os.symlink(ROOTS, f"{HOME}/link")
        os.symlink(f"{ROOTS}/file", f"{HOME}/file")
        for name in "link", "file":
            os.lchown(f"{HOME}/{name}", TESTER, TESTER)
        write(f"{HOME}/script", owner=TESTER)
        for arguments in (("copy", f"{HOME}/script", f"{HOME}/link/new"), ("move", f"{HOME}/script", f"{HOME}/link/new"),
                          ("trash", f"{HOME}/script", f"{HOME}/link"), ("remove", f"{HOME}/link/file"),
                          ("trash", f"{HOME}/script", f"{HOME}/link/folder"), ("make", f"{HOME}/link/new/below"),
                          ("private", f"{HOME}/link/new"), ("mode", f"{HOME}/file", "666"),
                          ("mode", f"{HOME}/link/file", "666"), ("copy", f"{HOME}/link/file", f"{HOME}/new")):
            with self.subTest(arguments=arguments):
                self.assertEqual(perform(*arguments), REFUSED)
        self.assertEqual(sorted(os.listdir(ROOTS)), ["file", "folder"])
        self.assertEqual(os.listdir(f"{ROOTS}/folder"), [])
        self.assertEqual(stat.S_IMODE(os.stat(f"{ROOTS}/file").st_mode), 0o600)
        self.assertTrue(os.path.exists(f"{HOME}/script"))

    def test_a_users_own_link_to_the_users_own_folder_is_followed(self):
        make_folder(f"{HOME}/data", TESTER)
        os.symlink("data", f"{HOME}/link")
        os.lchown(f"{HOME}/link", TESTER, TESTER)
        self.assertEqual(perform("private", f"{HOME}/link/new/below"), "done")
        for path in "new", "new/below":
            self.assertEqual(os.stat(f"{HOME}/data/{path}").st_uid, TESTER)
        self.assertEqual(sorted(os.listdir(f"{HOME}/data")), ["new"])

    def test_only_what_root_left_unfinished_is_cleared(self):
        # A folder of root's in the user's, who can rename it, and one of the user's that looks right.
        write(f"{HOME}/keep/file", mode=0o600)
        os.chmod(f"{HOME}/keep", 0o700)
        os.rename(f"{HOME}/keep", f"{HOME}/.unfinished-keep")
        write(f"{HOME}/.unfinished-users/file", owner=TESTER)
        make_folder(f"{HOME}/.unfinished-users", TESTER, 0o1700)
        write(f"{TOP}/source/file")
        self.assertEqual(perform("copy", f"{TOP}/source", f"{HOME}/copy"), "done")
        self.assertEqual(sorted(os.listdir(HOME)), [".unfinished-keep", ".unfinished-users", "copy"])
        self.assertTrue(os.path.exists(f"{HOME}/.unfinished-keep/file"))
        self.assertTrue(os.path.exists(f"{HOME}/.unfinished-users/file"))

    def test_a_neighbour_who_swaps_names_all_the_time_gains_nothing(self):
        secret = f"{ROOTS}/secret"
        write(secret, mode=0o600)
        make_folder(f"{ROOTS}/victim")
        write(f"{ROOTS}/victim/file")
        os.mkfifo(f"{TOP}/pipe", 0o666)
        os.chmod(f"{TOP}/pipe", 0o666)
        write(f"{TOP}/source/file")
        # A copy that fails is taken back.
        os.symlink("x" * 200, f"{TOP}/source/link")
        swap = f"""
import os
os.setgid({TESTER}); os.setuid({TESTER}); os.chdir({HOME!r})
print("ready", flush=True)
count = 0
while True:
    for name in os.listdir("."):
        if name.startswith("taken") or os.path.islink(name):
            continue
        try:
            count += 1
            os.rename(name, f"taken{{count}}")
            os.symlink({ROOTS + "/victim"!r} if name.startswith(".") else {secret!r}, name)
        except OSError:
            pass
"""
        with subprocess.Popen(["python3", "-c", swap], stdout=subprocess.PIPE) as attacker:
            attacker.stdout.readline()
            for number in range(100):
                perform("copy", f"{TOP}/pipe", f"{HOME}/pipe{number}")
                perform("copy", f"{TOP}/source", f"{HOME}/copy{number}")
            attacker.kill()
        self.assertEqual(state(secret), (stat.S_IFREG | 0o600, 0, 0, 0))
        self.assertEqual(os.listdir(f"{ROOTS}/victim"), ["file"])
        self.assertEqual(state(f"{ROOTS}/victim"), (stat.S_IFDIR | 0o755, 0, 0, 0))

    def test_what_a_user_cannot_remove_is_not_moved_to_another_file_system(self):
        write(f"{HOME}/tree/roots/file")
        write(f"{HOME}/tree/own", owner=TESTER)
        os.chown(f"{HOME}/tree", TESTER, TESTER)
        self.assertEqual(perform("move", f"{HOME}/tree", f"{OTHER}/tree", user=TESTER), REFUSED)
        self.assertEqual(os.listdir(OTHER), [])
        self.assertTrue(os.path.exists(f"{HOME}/tree/own") and os.path.exists(f"{HOME}/tree/roots/file"))
        # So that an administrator's tool finds the new name free.
        self.assertEqual(perform("move", f"{HOME}/tree", f"{OTHER}/tree"), "done")
        self.assertEqual(sorted(os.listdir(f"{OTHER}/tree")), ["own", "roots"])


unittest.main()
