#!/usr/bin/python3
# SPDX-FileCopyrightText: 2026 Corvane
# SPDX-License-Identifier: MIT
"""Who can change a program, where there are several accounts and groups.

usage: trusted_path.py PROGRAM      (in desktop-session)
"""
import os
import sys
import unittest

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), "../Support"))
import session  # noqa: E402

# Mounts a file system for a program of a user's that never answers, and runs a command.
SERVED = """
import ctypes, os, subprocess, sys
user, folder, *command = sys.argv[1:]
served = os.open("/dev/fuse", os.O_RDWR)
library = ctypes.CDLL(None, use_errno=True)
options = f"fd={served},rootmode=40755,user_id={user},group_id=0,allow_other"
if library.mount(b",user_id=0", folder.encode(), b"fuse", 6, options.encode()) != 0:  # nosuid, nodev
    sys.exit(os.strerror(ctypes.get_errno()))
try:
    run = subprocess.run(command, stdout=subprocess.PIPE, text=True, timeout=300)
    print(run.stdout, end="")
finally:
    library.umount2(folder.encode(), 2)  # now, whoever uses it
"""

PROGRAM = sys.argv.pop(1)
TESTER, BOB = 1000, 4711


class TrustedPath(unittest.TestCase):
    def setUp(self):
        self.run_as_root("rm -rf /opt/t && mkdir -p /opt/t/inner && cp /bin/true /opt/t/inner/tool && "
                         "cp /etc/passwd /etc/group /root")
        self.addCleanup(self.run_as_root, "cp /root/passwd /root/group /etc; rm -rf /opt/t")

    @staticmethod
    def run_as_root(script):
        session.root(["sh", "-c", script])

    def judge(self, path="/opt/t/inner/tool", user=0):
        run = session.root([PROGRAM, path, str(user)], check=False)
        return run.output.rstrip("\n")

    def test_what_only_root_can_change_is_trusted_for_everybody(self):
        for user in 0, TESTER:
            self.assertEqual(self.judge(user=user), "/opt/t/inner/tool")

    def test_every_component_must_belong_to_the_trusted(self):
        for path in "/opt/t", "/opt/t/inner", "/opt/t/inner/tool":
            self.run_as_root(f"chown {TESTER} {path}")
            self.assertEqual(self.judge(), f"{path} belongs to user 1000")
            self.assertEqual(self.judge(user=TESTER), "/opt/t/inner/tool")
            self.run_as_root(f"chown {BOB} {path}")
            self.assertEqual(self.judge(user=TESTER), f"{path} belongs to user {BOB}")
            self.run_as_root(f"chown 0 {path}")

    def test_a_link_of_another_user_is_not_followed(self):
        self.run_as_root(f"ln -s inner/tool /opt/t/link && chown -h {TESTER} /opt/t/link")
        self.assertEqual(self.judge("/opt/t/link"), "/opt/t/link belongs to user 1000")
        self.assertEqual(self.judge("/opt/t/link", TESTER), "/opt/t/inner/tool")
        self.run_as_root(f"chown -h {BOB} /opt/t/link")
        self.assertEqual(self.judge("/opt/t/link", TESTER), f"/opt/t/link belongs to user {BOB}")

    def test_the_folder_of_a_link_on_the_way_is_judged(self):
        self.run_as_root("mkdir /opt/t/open && ln -s /opt/t/inner /opt/t/open/in && "
                         "chmod 1777 /opt/t/open && ln -s open/in /opt/t/way")
        for path in "/opt/t/open/in/tool", "/opt/t/way/tool":
            self.assertEqual(self.judge(path), "/opt/t/open can be changed by everybody")

    def test_a_group_counts_as_others(self):
        for path in "/opt/t/inner", "/opt/t/inner/tool":
            self.run_as_root(f"chmod g+w {path}")
            self.assertEqual(self.judge(), f"{path} can be changed by group 0")
            self.assertEqual(self.judge(user=TESTER), f"{path} can be changed by group 0")
            self.run_as_root(f"chmod g-w {path}")

    def test_the_private_group_of_the_user_is_the_user(self):
        self.run_as_root(f"chown {TESTER}:{TESTER} /opt/t/inner && chmod g+w /opt/t/inner")
        self.assertEqual(self.judge(user=TESTER), "/opt/t/inner/tool")
        self.assertIn("belongs to user", self.judge())

    def test_a_private_group_with_a_member_is_none(self):
        self.run_as_root(f"chgrp {TESTER} /opt/t/inner && chmod g+w /opt/t/inner && "
                         "sed -i 's/^tester:.*/tester:x:1000:tester/' /etc/group")
        self.assertEqual(self.judge(user=TESTER), "/opt/t/inner/tool")
        self.run_as_root("sed -i 's/^tester:.*/tester:x:1000:tester,admin/' /etc/group")
        self.assertEqual(self.judge(user=TESTER), "/opt/t/inner can be changed by group 1000")

    def test_a_private_group_that_is_somebody_elses_primary_one_is_none(self):
        self.run_as_root(f"chgrp {TESTER} /opt/t/inner && chmod g+w /opt/t/inner && "
                         f"echo bob:x:{BOB}:1000::/:/bin/sh >>/etc/passwd")
        self.assertEqual(self.judge(user=TESTER), "/opt/t/inner can be changed by group 1000")

    def test_a_primary_group_of_another_name_is_not_private(self):
        self.run_as_root(f"chgrp {TESTER} /opt/t/inner && chmod g+w /opt/t/inner && "
                         "sed -i 's/^tester:/staff2:/' /etc/group")
        self.assertEqual(self.judge(user=TESTER), "/opt/t/inner can be changed by group 1000")

    def test_a_user_without_an_account_has_no_private_group(self):
        self.run_as_root(f"chown {BOB}:{BOB} /opt/t/inner && chmod g+w /opt/t/inner")
        self.assertEqual(self.judge(user=BOB), f"/opt/t/inner can be changed by group {BOB}")

    def test_a_file_system_that_another_user_serves_is_not_believed(self):
        with open("/proc/filesystems", encoding="ascii") as kinds:
            if "nodev\tfuse\n" not in kinds:
                self.skipTest("the kernel has no FUSE")
        if session.root(["test", "-e", "/dev/fuse"], check=False).status != 0:
            session.root(["mknod", "/dev/fuse", "c", "10", "229"])
        for trusted in 0, TESTER:
            self.assertEqual(session.root(["python3", "-c", SERVED, str(BOB), "/opt/t/inner", PROGRAM,
                                           "/opt/t/inner/tool", str(trusted)]).output,
                             f"/opt/t/inner is served by a program of user {BOB}\n")

    def test_an_access_control_list_lets_nobody_past(self):
        # user::rwx, user:4711:rwx, group::r-x, mask::rwx, other::r-x as the system stores them
        entries = [(1, 7, -1), (2, 7, BOB), (4, 5, -1), (16, 7, -1), (32, 5, -1)]
        value = "02000000" + "".join(
            tag.to_bytes(2, "little").hex() + rights.to_bytes(2, "little").hex() +
            (who & 0xffffffff).to_bytes(4, "little").hex() for tag, rights, who in entries)
        self.run_as_root(f"chown {TESTER}:{TESTER} /opt/t/inner")
        session.root(["python3", "-c", "import os, sys; os.setxattr(sys.argv[1], "
                      "'system.posix_acl_access', bytes.fromhex(sys.argv[2]))", "/opt/t/inner", value])
        self.assertEqual(self.judge(user=TESTER),
                         "/opt/t/inner has an access control list that lets others change it")
        self.run_as_root("chown 0:0 /opt/t/inner")
        self.assertEqual(self.judge(), "/opt/t/inner can be changed by group 0")


unittest.main(verbosity=2)
