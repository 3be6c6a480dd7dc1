#!/usr/bin/python3
# SPDX-FileCopyrightText: 2026 Corvane
# SPDX-License-Identifier: MIT
"""ditto when the disk is full, a call fails or it is told to end: no half of anything is left."""
import os
import resource
import signal
import subprocess
import time
import unittest
import zipfile

from zips import BUILD, DITTO, TIME_LIMIT, SANITIZED, DittoTest, main, make_tree, run, tree, write

FAULTS = f"{BUILD}/Tests/Support/libFaults.so"
# As Faults.h has them.
OPEN, READ, WRITE, SYNC, RENAME, LINK, MAKE, REMOVE = (1 << bit for bit in range(8))
THREAD = 1 << 18
ALL = (1 << 19) - 1
FAILS, FALLS_SHORT, KILLS = range(3)
ENOSPC, EIO, EACCES, EMFILE, EINTR = 28, 5, 13, 24, 4


class Failures(DittoTest):
    def setUp(self):
        super().setUp()
        write(self.path("tree/file"), b"contents")
        write(self.path("tree/large"), b"".join(b"line %d\n" % i for i in range(200_000)))
        write(self.path("tree/folder/file"), b"contents", 0o600)
        os.symlink("file", self.path("tree/link"))
        os.mkdir(self.path("work"))

    def faulted(self, arguments, calls, nth, outcome, error=0, for_good=False):
        return run(DITTO, *arguments, env={
            "LC_ALL": "C.UTF-8", "LD_PRELOAD": FAULTS,
            "FAULT": f"{calls} {nth} {outcome} {error} {int(for_good)}"})

    def under_faults(self, arguments, calls, kinds, check):
        """Has the Nth call fail, for all N until none of the next ones makes a difference."""
        for outcome, error, for_good in kinds:
            untouched = 0
            failures = 0
            nth = 0
            while untouched < 12:
                nth += 1
                self.assertLess(nth, 1000)
                result = self.faulted(arguments, calls, nth, outcome, error, for_good)
                where = (outcome, error, for_good, nth, result.returncode, result.stderr)
                untouched = untouched + 1 if result.returncode == 0 else 0
                failures += result.returncode != 0
                if outcome == FALLS_SHORT:
                    self.assertEqual(result.returncode, 0, where)
                elif outcome == FAILS:
                    self.assertIn(result.returncode, (0, 1, 127), where)
                check(result, where)
            if outcome != FALLS_SHORT and error != EINTR:
                self.assertGreater(failures, 0)

    def check_archive(self, result, where, expected=None):
        """All of it or nothing."""
        left = os.listdir(self.path("work"))
        if expected is None:
            expected = ["a.zip"] if result.returncode == 0 else []
        self.assertEqual(left, expected, where)
        if left:
            with zipfile.ZipFile(self.path("work/a.zip")) as archive:
                self.assertEqual(sorted(archive.namelist()),
                                 ["file", "folder/", "folder/file", "large", "link"], where)
                self.assertIsNone(archive.testzip())
            os.unlink(self.path("work/a.zip"))

    @unittest.skipIf(SANITIZED, "the sanitizers meet the faults first")
    def test_no_fault_leaves_half_an_archive(self):
        kinds = [(FAILS, error, for_good) for error in (ENOSPC, EIO, EMFILE, EINTR)
                 for for_good in (False, True)] + [(FALLS_SHORT, 0, True)]
        self.under_faults(("-ck", self.path("tree"), self.path("work/a.zip")),
                          OPEN | READ | WRITE | RENAME | LINK | THREAD, kinds, self.check_archive)

    @unittest.skipIf(SANITIZED, "the sanitizers meet the faults first")
    def test_killed_at_any_call_no_half_archive_is_left(self):
        def check(result, where):
            left = os.listdir(self.path("work"))
            self.assertIn(left, ([], ["a.zip"]), where)
            self.check_archive(result, where, left)

        self.under_faults(("-ck", self.path("tree"), self.path("work/a.zip")), ALL,
                          [(KILLS, 0, False)], check)

    @unittest.skipIf(SANITIZED, "the sanitizers meet the faults first")
    def test_no_fault_leaves_half_a_folder(self):
        self.done("-ck", self.path("tree"), self.path("a.zip"))

        def check(result, where):
            expected = ["out"] if result.returncode == 0 else []
            self.assertEqual(os.listdir(self.path("work")), expected, where)
            if expected:
                self.assert_same(self.path("work/out"), self.path("tree"), times=False)
                run("rm", "-rf", self.path("work/out"))

        kinds = [(FAILS, error, False) for error in (ENOSPC, EIO, EMFILE, EINTR)]
        self.under_faults(("-xk", self.path("a.zip"), self.path("work/out")),
                          OPEN | READ | WRITE | RENAME | LINK | MAKE,
                          kinds + [(FALLS_SHORT, 0, True)], check)

    @unittest.skipIf(SANITIZED, "the sanitizers meet the faults first")
    def test_killed_at_any_call_the_folder_is_whole_or_not_there(self):
        self.done("-ck", self.path("tree"), self.path("a.zip"))

        def check(_, where):
            if os.path.exists(self.path("work/out")):
                self.assertEqual(sorted(tree(self.path("work/out"))),
                                 sorted(tree(self.path("tree"))), where)
            run("sh", "-c", 'chmod -R u+rwx "$1"; rm -rf "$1"; mkdir "$1"', "sh",
                self.path("work"))

        self.under_faults(("-xk", self.path("a.zip"), self.path("work/out")), ALL,
                          [(KILLS, 0, False)], check)

    @unittest.skipIf(SANITIZED, "the sanitizers take memory of their own")
    def test_out_of_memory_it_says_so_and_leaves_nothing(self):
        for number in range(2000):
            os.mkdir(self.path(f"tree/{'f' * 240}{number}"))
        self.done("-ck", self.path("tree"), self.path("a.zip"))

        def run_within(size, *arguments):
            return run(DITTO, *arguments, preexec_fn=lambda: resource.setrlimit(
                resource.RLIMIT_AS, (size, size)))

        least = 16 << 20  # what its libraries take
        while run_within(least, "--help").returncode != 0:
            least += 65536
        for arguments in (("-ck", self.path("tree"), self.path("work/a.zip")),
                          ("-xk", self.path("a.zip"), self.path("work/out"))):
            failures = 0
            for size in range(least + 131072, least + (64 << 20), 65536):
                result = run_within(size, *arguments)
                if result.returncode == 0:
                    break
                self.assertEqual(result.returncode, 1, result.stderr)
                self.assertRegex(result.stderr, rb"\Aditto: .*(No|Cannot allocate) memory.*\n\Z")
                self.assertEqual(os.listdir(self.path("work")), [])
                failures += 1
            self.assertEqual(result.returncode, 0)
            self.assertGreater(failures, 5)
            os.rename(self.path("work"), self.path(f"whole{arguments[0]}"))
            os.mkdir(self.path("work"))
        self.assertEqual(len(os.listdir(self.path("whole-xk/out"))), 2004)

    def full_disk(self, script):
        """Carries out a script where "/Volumes" has one megabyte."""
        result = run("unshare", "-rm", "sh", "-c",
                     "mount -t tmpfs -o size=1m none /Volumes || exit 99; cd /Volumes\n" + script,
                     "sh", DITTO, self.folder)
        if result.returncode == 99:
            self.skipTest("nothing may be mounted here")
        return result

    def test_a_full_disk_leaves_no_archive(self):
        write(self.path("tree/random"), os.urandom(5_000_000))
        result = self.full_disk('"$1" -ck "$2/tree" a.zip; echo $?; ls -A')
        self.assertEqual(result.stdout, b"1\n", result.stderr)
        self.assertIn(b"a.zip: No space left on device", result.stderr)

    def test_a_full_disk_keeps_the_archive_that_was_there(self):
        write(self.path("tree/random"), os.urandom(5_000_000))
        result = self.full_disk('echo old > a.zip; "$1" -ck "$2/tree" a.zip; echo $?; cat a.zip')
        self.assertEqual(result.stdout, b"1\nold\n", result.stderr)

    def test_a_full_disk_leaves_no_folder(self):
        self.done("-ck", self.path("tree"), self.path("a.zip"))
        result = self.full_disk('"$1" -xk "$2/a.zip" out; echo $?; ls -A')
        self.assertEqual(result.stdout, b"1\n", result.stderr)
        self.assertIn(b"large: No space left on device", result.stderr)

    def interrupted(self, arguments, begun):
        for number in signal.SIGTERM, signal.SIGINT, signal.SIGHUP:
            process = subprocess.Popen([DITTO, *arguments], stdin=subprocess.DEVNULL,
                                       stderr=subprocess.PIPE)
            until = time.monotonic() + TIME_LIMIT
            while not begun(process.pid) and time.monotonic() < until:
                time.sleep(0.001)
            process.send_signal(number)
            start = time.monotonic()
            _, words = process.communicate(timeout=TIME_LIMIT)
            self.assertEqual(process.returncode, -number, words)
            self.assertLess(time.monotonic() - start, 10)
            self.assertEqual(os.listdir(self.path("work")), [])

    def test_told_to_end_it_leaves_no_archive(self):
        with open(self.path("tree/huge"), "wb") as file:
            file.truncate(20 << 30)

        def has_written(process):
            with open(f"/proc/{process}/io", encoding="ascii") as file:
                return int(file.readlines()[0].split()[1]) > 50_000_000

        self.interrupted(("-ck", self.path("tree"), self.path("work/a.zip")), has_written)

    def test_told_to_end_it_leaves_no_folder(self):
        with open(self.path("tree/huge"), "wb") as file:
            file.truncate(1 << 30)
        self.done("-ck", self.path("tree"), self.path("a.zip"))
        self.interrupted(("-xk", self.path("a.zip"), self.path("work/out")),
                         lambda _: os.listdir(self.path("work")))

    def test_an_ignored_signal_stays_ignored(self):
        with open(self.path("tree/huge"), "wb") as file:
            file.truncate(1 << 28)
        result = run("sh", "-c", 'trap "" HUP; "$1" -ck "$2/tree" "$2/work/a.zip" &'
                     ' sleep 0.05; kill -HUP $!; wait $!', "sh", DITTO, self.folder)
        self.assertEqual(result.returncode, 0, result.stderr)
        self.assertTrue(os.path.exists(self.path("work/a.zip")))

    def test_what_cannot_be_read_is_a_failure_and_leaves_nothing(self):
        for name in "tree/file", "tree/folder":
            mode = os.stat(self.path(name)).st_mode
            os.chmod(self.path(name), 0)
            if os.getuid() == 0:  # who reads everything
                self.done("-ck", self.path("tree"), self.path("a.zip"))
                continue
            self.refused("-ck", self.path("tree"), self.path("work/a.zip"),
                         words=self.path(name).encode() + b": Permission denied")
            self.assertEqual(os.listdir(self.path("work")), [])
            os.chmod(self.path(name), mode)

    def test_what_is_not_there_is_a_failure(self):
        self.refused("-ck", self.path("missing"), self.path("work/a.zip"), words=b"No such file")
        self.refused("-ck", self.path("tree"), self.path("missing/a.zip"), words=b"No such file")
        self.refused("-ck", self.path("tree"), self.path("work"), words=b"Is a directory")
        self.refused("-ck", self.path("tree"), self.path("tree/file/a.zip"),
                     words=b"Not a directory")
        self.refused("-xk", self.path("missing"), self.path("work/out"), words=b"No such file")
        os.mkfifo(self.path("pipe"))
        self.refused("-ck", self.path("pipe"), self.path("work/a.zip"), words=b"neither a file")
        self.refused("-ck", "/dev/null", self.path("work/a.zip"), words=b"neither a file")
        self.assertEqual(os.listdir(self.path("work")), [])

    def test_a_file_where_the_folder_is_to_be_is_kept(self):
        self.done("-ck", self.path("tree"), self.path("a.zip"))
        write(self.path("work/out"), b"kept")
        self.refused("-xk", self.path("a.zip"), self.path("work/out"), words=b"Not a directory")
        self.assertEqual(tree(self.path("work/out"))[""][2], b"kept")


if __name__ == "__main__":
    main()
