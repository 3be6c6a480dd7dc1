#!/usr/bin/python3
# SPDX-FileCopyrightText: 2026 Corvane
# SPDX-License-Identifier: MIT
"""What the tests of ditto have in common: running it, trees of files, odd names."""
import os
import stat
import subprocess
import sys
import tempfile
import unittest

BUILD = sys.argv[1] if len(sys.argv) > 1 else "."
DITTO = f"{BUILD}/libexec/ostrel/ditto"
TIME_LIMIT = 600
SANITIZED = any(name in subprocess.run(["ldd", DITTO], stdout=subprocess.PIPE).stdout
                for name in (b"libasan", b"libtsan"))

NAMES = [
    "plain.txt", "Ελλάδα", "Россия", "עברית", "العربية", "हिन्दी", "ไทย", "中文", "日本語.log",
    "한국어", "cafe\u0301", "caf\u00e9", "\u1112\u1161\u11ab", "🎹🎶", "e\u0301\u0323",
    "-rf", "--", "--keepParent", "it's", '"quoted"', "two\nlines\r\n", "  spaces  ", "...",
    ".hidden", "100%s%n%@", "$(id);`id`|*?[a]&<>", "back\\slash", "c:drive", "x" * 255,
    "é" * 127 + "x", "🎹" * 63 + "abc",
    os.fsdecode(b"caf\xe9.txt"), os.fsdecode(b"\xff" * 255), os.fsdecode(b"\xe2\x82"),
]


def run(*command, **options):
    options.setdefault("stdout", subprocess.PIPE)
    options.setdefault("stderr", subprocess.PIPE)
    return subprocess.run(command, stdin=subprocess.DEVNULL, timeout=TIME_LIMIT, **options)


def write(path, contents=b"contents", mode=0o644, time=1_000_000_000):
    os.makedirs(os.path.dirname(path), exist_ok=True)
    with open(path, "wb") as file:
        file.write(contents)
    os.chmod(path, mode)
    os.utime(path, (time, time))


def link(target, path, time=1_000_000_001):
    os.symlink(target, path)
    os.utime(path, (time, time), follow_symlinks=False)


def make_tree(path):
    """Files, folders and links with modes and times of their own."""
    write(f"{path}/file", b"file", 0o400)
    write(f"{path}/nothing", b"")
    write(f"{path}/folder/script", b"#!/bin/sh\n", 0o751, 1_234_567_890)
    write(f"{path}/folder/below/large", b"".join(b"line %d\n" % i for i in range(500_000)))
    write(f"{path}/random", os.urandom(3_000_000))
    write(f"{path}/piece", b"p" * (1 << 20))
    write(f"{path}/pieces", b"q" * (2 << 20))
    write(f"{path}/closed/file", b"in a folder that lets nobody write")
    write(f"{path}/early", time=100_000_000)
    write(f"{path}/late", time=2_147_483_647)
    os.mkdir(f"{path}/empty")
    link("file", f"{path}/link")
    link("/nowhere", f"{path}/folder/dangling")
    link("../" * 40 + "far" * 40, f"{path}/folder/long")
    for folder, mode in (("folder/below", 0o2775), ("folder", 0o750), ("closed", 0o500),
                         ("empty", 0o1777)):
        os.chmod(f"{path}/{folder}", mode)
        os.utime(f"{path}/{folder}", (1_111_111_111, 1_111_111_111))


def tree(path, times=True, modes=True):
    """What is at the path, so that trees can be compared. Bits that change owners are left out."""
    lines = {}

    def add(item, name):
        status = os.lstat(item)
        kind = stat.S_IFMT(status.st_mode)
        contents = None
        if stat.S_ISREG(status.st_mode):
            with open(item, "rb") as file:
                contents = file.read()
        elif stat.S_ISLNK(status.st_mode):
            contents = os.readlink(item)
        mode = stat.S_IMODE(status.st_mode) & 0o1777 if not stat.S_ISLNK(status.st_mode) else 0
        lines[name] = (kind, mode if modes else 0, contents,
                       int(status.st_mtime) if times and name else 0)
        if stat.S_ISDIR(status.st_mode):
            for entry in os.listdir(item):
                add(f"{item}/{entry}", f"{name}/{entry}")

    add(path, "")
    return lines


class DittoTest(unittest.TestCase):
    maxDiff = 2000

    def setUp(self):
        self.folder = tempfile.mkdtemp(dir="/tmp")
        self.addCleanup(lambda: run("sh", "-c", 'chmod -R u+rwx "$1"; rm -rf "$1"', "sh",
                                    self.folder))

    def path(self, name):
        return f"{self.folder}/{name}"

    def done(self, *arguments, words=b"", **options):
        """Runs it, which has to succeed and say nothing but that."""
        result = run(DITTO, *arguments, **options)
        self.assertEqual((result.returncode, result.stdout), (0, b""), result.stderr)
        self.assertIn(words, result.stderr)
        if not words:
            self.assertEqual(result.stderr, b"")

    def refused(self, *arguments, words=b"", status=1, **options):
        """Runs it, which has to fail with these words."""
        result = run(DITTO, *arguments, **options)
        self.assertEqual((result.returncode, result.stdout), (status, b""), result.stderr)
        self.assertTrue(result.stderr.startswith(b"ditto: "), result.stderr)
        self.assertIn(words, result.stderr)

    def assert_same(self, one, other, **options):
        ours, theirs = tree(one, **options), tree(other, **options)
        self.assertEqual(sorted(ours), sorted(theirs))
        for name, item in ours.items():
            self.assertTrue(item == theirs[name], (name, item[:2], item[3],
                                                   theirs[name][:2], theirs[name][3]))


def main():
    os.chdir("/tmp")
    unittest.main(argv=sys.argv[:1])
