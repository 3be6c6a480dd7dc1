#!/usr/bin/python3
# SPDX-FileCopyrightText: 2026 Corvane
# SPDX-License-Identifier: MIT
"""Archives that mean harm, or are damaged: nothing is ever put outside of the folder."""
import os
import random
import stat
import struct
import zipfile

from zips import DITTO, DittoTest, link, main, make_tree, run, tree, write


def add(archive, name, contents=b"evil", mode=stat.S_IFREG | 0o644):
    entry = zipfile.ZipInfo(name, (2001, 2, 3, 4, 5, 6))
    entry.create_system = 3
    entry.external_attr = mode << 16
    archive.writestr(entry, contents)


class Hostile(DittoTest):
    def setUp(self):
        super().setUp()
        os.mkdir(self.path("outside"))
        os.mkdir(self.path("work"))

    def archive(self, *entries):
        """Entries are names, or pairs of a link's name and where it leads."""
        with zipfile.ZipFile(self.path("work/a.zip"), "w") as archive:
            add(archive, "before", b"harmless")
            for entry in entries:
                if isinstance(entry, str):
                    add(archive, entry)
                else:
                    add(archive, entry[0], entry[1], stat.S_IFLNK | 0o777)

    def assert_refused(self, words=b""):
        before = tree(self.path("outside"))
        self.refused("-xk", self.path("work/a.zip"), self.path("work/out"), words=words)
        self.assertEqual(os.listdir(self.path("work")), ["a.zip"])
        self.assertEqual(tree(self.path("outside")), before)
        self.assertFalse(os.path.exists(self.path("evil")))

    def test_names_that_lead_up(self):
        for name in ("../evil", "a/../../evil", "a/../evil", "..", "a/..", "../", "./../evil",
                     "a/b/c/../../../../evil"):
            self.archive(name)
            self.assert_refused(b"leads out")

    def test_absolute_names(self):
        for name in self.path("outside/evil"), "//evil", "/":
            self.archive(name)
            self.assert_refused(b"leads out")

    def test_an_entry_through_a_link_that_leads_out(self):
        for target in self.path("outside"), "../../outside", "..", ".", "/":
            self.archive(("link", target), "link/evil")
            self.assert_refused(b"through a link")
            self.archive("folder/file", ("folder/link", target), "folder/link/below/evil")
            self.assert_refused(b"through a link")
            self.archive(("link", target), "link/")
            self.assert_refused(b"through a link")

    def test_a_link_to_a_link(self):
        self.archive(("one", self.path("outside")), ("two", "one"), "two/evil")
        self.assert_refused(b"through a link")

    def test_a_file_in_place_of_a_link_does_not_go_through_it(self):
        write(self.path("outside/file"), b"untouched")
        self.archive(("link", self.path("outside/file")), "link")
        self.done("-xk", self.path("work/a.zip"), self.path("work/out"))
        self.assertEqual(tree(self.path("work/out/link"))[""][2], b"evil")
        self.assertEqual(tree(self.path("outside/file"))[""][2], b"untouched")

    def test_a_link_in_place_of_a_folder(self):
        self.archive("folder/file", ("folder", self.path("outside")), "folder/evil")
        self.assert_refused()

    def test_modes_and_times_do_not_go_through_a_link(self):
        os.chmod(self.path("outside"), 0o700)
        with zipfile.ZipFile(self.path("work/a.zip"), "w") as archive:
            add(archive, "link", self.path("outside"), stat.S_IFLNK | 0o777)
            add(archive, "link/", b"", stat.S_IFDIR | 0o777)
        self.assert_refused(b"through a link")
        self.assertEqual(os.stat(self.path("outside")).st_mode & 0o777, 0o700)

    def test_an_entry_below_a_file(self):
        self.archive("file", "file/evil")
        self.assert_refused(b"through a link or a file")

    def test_a_link_that_was_there_before_is_not_followed(self):
        os.mkdir(self.path("work/out"))
        link(self.path("outside"), self.path("work/out/folder"))
        self.archive("folder/evil")
        self.refused("-xk", self.path("work/a.zip"), self.path("work/out"), words=b"through a link")
        self.assertEqual(os.listdir(self.path("outside")), [])

    def test_links_that_lead_out_are_kept_as_they_are(self):
        self.archive(("absolute", self.path("outside")), ("up", "../../outside"))
        self.done("-xk", self.path("work/a.zip"), self.path("work/out"))
        self.assertEqual(os.readlink(self.path("work/out/up")), "../../outside")
        self.assertEqual(os.listdir(self.path("outside")), [])

    def test_bits_that_hand_out_rights_are_dropped(self):
        with zipfile.ZipFile(self.path("work/a.zip"), "w") as archive:
            add(archive, "program", b"#!/bin/sh\n", stat.S_IFREG | 0o6755)
            add(archive, "folder/", b"", stat.S_IFDIR | 0o2755)
        self.done("-xk", self.path("work/a.zip"), self.path("work/out"))
        for name in "program", "folder":
            mode = os.stat(self.path(f"work/out/{name}")).st_mode
            self.assertEqual(stat.S_IMODE(mode), 0o755)

    def test_devices_are_refused(self):
        for kind in stat.S_IFCHR, stat.S_IFBLK, stat.S_IFSOCK:
            with zipfile.ZipFile(self.path("work/a.zip"), "w") as archive:
                add(archive, "device", b"", kind | 0o666)
            self.assert_refused()

    def test_names_with_commands_for_the_terminal_are_not_repeated(self):
        self.archive("../\x1b]0;evil\x07")
        self.assert_refused(b"../?]0;evil?")

    def test_names_that_differ_in_front_of_the_entry_and_in_the_directory(self):
        self.archive("harmless/1")
        with open(self.path("work/a.zip"), "rb") as file:
            contents = file.read()
        for wrong in (contents.replace(b"harmless/1", b"../../evil", 1),
                      contents[::-1].replace(b"1/sselmrah", b"live/../..", 1)[::-1]):
            with open(self.path("work/a.zip"), "wb") as file:
                file.write(wrong)
            run(DITTO, "-xk", self.path("work/a.zip"), self.path("work/out"))
            self.assertFalse(os.path.exists(self.path("evil")))
            self.assertEqual(os.listdir(self.path("outside")), [])
            run("rm", "-rf", self.path("work/out"))

    def test_one_with_a_password_is_refused(self):
        write(self.path("work/file"), b"secret" * 100)
        run("zip", "-qP", "word", "a.zip", "file", cwd=self.path("work"))
        os.unlink(self.path("work/file"))
        self.assert_refused(b"file")

    def test_two_names_that_differ_in_form_only_are_two_files(self):
        self.archive("cafe\u0301", "caf\u00e9", "\u212b", "\u00c5")
        self.done("-xk", self.path("work/a.zip"), self.path("work/out"))
        self.assertEqual(len(os.listdir(self.path("work/out"))), 5)


class Damaged(DittoTest):
    def setUp(self):
        super().setUp()
        make_tree(self.path("tree"))
        run("rm", "-rf", *(self.path(f"tree/{name}") for name in ("random", "folder", "pieces")))
        write(self.path("tree/ü/large"), b"".join(b"line %d\n" % i for i in range(3000)))
        self.done("-ck", self.path("tree"), self.path("a.zip"))
        with open(self.path("a.zip"), "rb") as file:
            self.contents = file.read()
        self.others = sorted(os.listdir(self.folder))

    def check(self, contents):
        """Whether it unpacked; there is nothing left where it did not."""
        with open(self.path("a.zip"), "wb") as file:
            file.write(contents)
        result = run(DITTO, "-xk", self.path("a.zip"), self.path("out"))
        self.assertIn(result.returncode, (0, 1), result.stderr)
        exists = os.path.exists(self.path("out"))
        self.assertEqual(exists, result.returncode == 0)
        if exists:
            run("chmod", "-R", "u+rwx", self.path("out"))
            run("rm", "-rf", self.path("out"))
        else:  # with its own words: nothing broke
            self.assertRegex(result.stderr, rb"\A(ditto: [^\n]*\n)+\Z")
        self.assertEqual(sorted(os.listdir(self.folder)), self.others)
        return exists

    def test_one_that_is_cut_short_is_refused(self):
        size = len(self.contents)
        for end in [*range(0, size, size // 60), *range(size - 40, size)]:
            self.assertFalse(self.check(self.contents[:end]), end)

    def test_contents_that_are_not_what_they_were_are_refused(self):
        with zipfile.ZipFile(self.path("a.zip")) as archive:
            packed = archive.getinfo("closed/file").compress_size
        place = self.contents.index(b"PK", self.contents.index(b"closed/file"))
        for byte in range(place - packed, place - 1):
            wrong = bytearray(self.contents)
            wrong[byte] ^= 0x55
            self.assertFalse(self.check(bytes(wrong)), byte)

    def test_no_damage_does_harm(self):
        chance = random.Random(1)
        for _ in range(300):
            damaged = bytearray(self.contents)
            for _ in range(chance.choice((1, 1, 3, 20))):
                damaged[chance.randrange(len(damaged))] = chance.randrange(256)
            self.check(bytes(damaged))
            start = chance.randrange(len(damaged))
            self.check(self.contents[:start] + self.contents[start + chance.randrange(1, 50):])

    def test_the_directory_damaged_does_no_harm(self):
        chance = random.Random(2)
        start = self.contents.index(b"PK\x01\x02")
        for _ in range(300):
            damaged = bytearray(self.contents)
            for _ in range(chance.choice((1, 2, 8))):
                damaged[chance.randrange(start, len(damaged))] = chance.choice((0, 1, 0x7F, 0xFF))
            self.check(bytes(damaged))

    def test_what_is_no_archive_is_refused(self):
        for contents in (b"", b"PK", b"PK\x05\x06", b"x" * 100_000, b"PK\x05\x06" + b"\xff" * 18,
                         b"PK\x06\x07" + b"\xff" * 16 + b"PK\x05\x06" + b"\xff" * 18,
                         b"PK\x05\x06" + struct.pack("<HHHHIIH", 0, 0, 1, 1, 46, 0, 0)):
            self.assertFalse(self.check(contents), contents[:30])
        os.unlink(self.path("a.zip"))
        for make in (lambda path: None, os.mkdir):
            make(self.path("a.zip"))
            self.refused("-xk", self.path("a.zip"), self.path("out"))
        os.rmdir(self.path("a.zip"))
        os.mkfifo(self.path("a.zip"))
        self.refused("-xk", self.path("a.zip"), self.path("out"))


if __name__ == "__main__":
    main()
