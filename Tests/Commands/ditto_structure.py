#!/usr/bin/python3
# SPDX-FileCopyrightText: 2026 Corvane
# SPDX-License-Identifier: MIT
"""Archives whose parts do not fit together are refused, and nothing of them is unpacked."""
import io
import os
import random
import struct
import zipfile
import zlib

from zips import DITTO, DittoTest, main, run

MARK = b"PK\x05\x06"
UTF8 = 0x800
UNICODE_PATH = 0x7075


def field(number, contents):
    return struct.pack("<HH", number, len(contents)) + contents


def unicode_path(plain, name, version=1, crc=None):
    return field(UNICODE_PATH, struct.pack("<BI", version, zlib.crc32(plain) if crc is None
                                           else crc) + name)


class Entry:
    def __init__(self, name, contents=b"contents", **changes):
        self.name, self.contents = name, contents
        self.local_name = changes.get("local_name", name)
        self.extra = changes.get("extra", b"")
        self.local_extra = changes.get("local_extra", self.extra)
        self.flags = changes.get("flags", 0)
        self.system = changes.get("system", 3)
        self.attributes = changes.get("attributes", 0o100644 << 16)
        self.offset = changes.get("offset")
        self.disk = changes.get("disk", 0)

    def numbers(self):
        return (20, self.flags, 0, 0, 0x2A21, zlib.crc32(self.contents), len(self.contents),
                len(self.contents))

    def local(self):
        return b"PK\x03\x04" + struct.pack("<HHHHHIIIHH", *self.numbers(), len(self.local_name),
                                           len(self.local_extra)) \
            + self.local_name + self.local_extra + self.contents

    def central(self, offset):
        return b"PK\x01\x02" + struct.pack("<BB", 20, self.system) + struct.pack(
            "<HHHHHIIIHHHHHII", *self.numbers(), len(self.name), len(self.extra), 0, self.disk, 0,
            self.attributes, offset if self.offset is None else self.offset) \
            + self.name + self.extra


def end(count, size, offset, comment=b"", **changes):
    return MARK + struct.pack("<HHHHIIH", changes.get("disk", 0), 0, changes.get("here", count),
                              count, size, offset, len(comment)) + comment


def archive(*entries, comment=b"", more=0, longer=0, moved=0, here=0, disk=0):
    """The bytes of one, with what its last record says wrong by so much."""
    contents = directory = b""
    for entry in entries:
        directory += entry.central(len(contents))
        contents += entry.local()
    count = len(entries) + more
    return contents + directory + end(count, len(directory) + longer, len(contents) + moved,
                                      comment, here=count + here, disk=disk)


class Structure(DittoTest):
    def write(self, contents):
        with open(self.path("a.zip"), "wb") as file:
            file.write(contents)

    def assert_refused(self, contents, words=b""):
        self.write(contents)
        self.refused("-xk", self.path("a.zip"), self.path("out"), words=words)
        self.assertEqual(os.listdir(self.folder), ["a.zip"])

    def opened(self, contents):
        """The names and contents that come out."""
        self.write(contents)
        self.done("-xk", self.path("a.zip"), self.path("out"))
        found = {}
        for folder, _, names in os.walk(os.fsencode(self.path("out"))):
            for name in names:
                path = os.path.join(folder, name)
                with open(path, "rb") as file:
                    found[os.path.relpath(path, os.fsencode(self.path("out")))] = file.read()
        run("rm", "-rf", self.path("out"))
        return found

    def test_one_cut_short_behind_an_archive_in_it_is_refused(self):
        for comment in b"", b"of the inner one":
            inner = archive(Entry(b"inner"), Entry(b"second"), comment=comment)
            for program in b"", b"#!/bin/sh\nexit\n":
                whole = program + archive(Entry(b"first"), Entry(b"inner.zip", inner),
                                          Entry(b"last"))
                cut = whole.index(inner) + len(inner)
                self.assertTrue(whole[:cut].endswith(inner))
                self.assert_refused(whole[:cut], b"cut short")
                for place in range(cut - 60, len(whole)):
                    self.assert_refused(whole[:place])
                self.assertEqual(self.opened(whole)[b"inner.zip"], inner)

    def test_one_cut_short_behind_an_empty_archive_in_it_is_refused(self):
        whole = archive(Entry(b"empty.zip", archive()), Entry(b"last"))
        self.assert_refused(whole[:whole.index(MARK) + 22], b"cut short")

    def test_one_inside_of_one_that_was_made_by_others_is_not_taken_for_it(self):
        with zipfile.ZipFile(self.path("a.zip"), "w", zipfile.ZIP_DEFLATED) as outer:
            outer.writestr("text", "text " * 1000)
            inner = io.BytesIO()
            with zipfile.ZipFile(inner, "w") as file:
                file.writestr("inner", "inner")
            info = zipfile.ZipInfo("inner.zip")
            with outer.open(info, "w", force_zip64=True) as file:
                file.write(inner.getvalue())
        with open(self.path("a.zip"), "rb") as file:
            whole = file.read()
        self.assert_refused(whole[:whole.index(inner.getvalue()) + len(inner.getvalue())])

    def test_a_comment_may_hold_anything(self):
        entry = Entry(b"file")
        for comment in (MARK, MARK * 3, MARK + b"\0" * 17, MARK + b"\0" * 18, MARK + b"\0" * 19,
                        MARK + b"\xff" * 18, b"x" * 65535, b"x" * 20000 + MARK + b"\0" * 18,
                        MARK + b"\0" * 18 + b"x" * 20000, archive(), archive(Entry(b"evil")),
                        b"in front" + archive(Entry(b"evil")),
                        MARK + struct.pack("<HHHHIIH", 0, 0, 1, 1, 50, 0, 0)):
            self.assertEqual(self.opened(archive(entry, comment=comment)), {b"file": b"contents"})

    def test_one_that_can_be_read_in_two_ways_is_refused(self):
        self.assert_refused(archive(comment=archive(Entry(b"evil"))), b"two")

    def test_what_follows_the_end_is_refused(self):
        for more in b"x", b"\n", b"\0x", b"\0" * 20000:
            self.assert_refused(archive(Entry(b"file")) + more)

    def test_zeros_that_fill_up_the_last_block_may_follow_the_end(self):
        self.assertEqual(self.opened(archive(Entry(b"file")) + b"\0" * 1000), {b"file": b"contents"})

    def test_many_directories_are_not_all_read(self):
        ends = b""
        for _ in range(2000):
            ends = end(1, 46, 0, ends)
        self.assert_refused(archive(Entry(b"file"), comment=ends), b"too many")

    def test_entries_that_share_bytes_are_refused(self):
        self.assert_refused(archive(Entry(b"one"), Entry(b"one", offset=0)), b"overlap")
        one, two = Entry(b"same"), Entry(b"same")
        self.assert_refused(archive(one, two, Entry(b"same", offset=len(one.local()))), b"overlap")
        inner = Entry(b"inner")
        outer = Entry(b"outer", inner.local())
        at = len(outer.local()) - len(inner.local())
        directory = outer.central(0) + inner.central(at)
        self.assert_refused(outer.local() + directory + end(2, len(directory), len(outer.local())),
                            b"overlap")

    def test_an_entry_that_reaches_into_the_directory_is_refused(self):
        entry = Entry(b"file")
        contents = entry.local()
        entry.contents += entry.central(0)
        directory = entry.central(0)
        self.assert_refused(contents + directory + end(1, len(directory), len(contents)))

    def test_a_nul_in_a_name_is_refused(self):
        for name in b"file\0.txt", b"\0", b"folder\0/", b"file\0":
            self.assert_refused(archive(Entry(b"before"), Entry(name)), b"NUL")
        self.assert_refused(archive(Entry(b"a", extra=unicode_path(b"a", b"b\0c"))), b"NUL")

    def test_an_entry_without_a_name_is_refused(self):
        self.assert_refused(archive(Entry(b"before"), Entry(b"")))

    def test_a_wrong_count_is_refused(self):
        entries = Entry(b"one"), Entry(b"two")
        for changes in {"more": 1}, {"more": -1}, {"more": -2}, {"here": -1}, {"here": 1}:
            self.assert_refused(archive(*entries, **changes))

    def test_a_directory_that_is_not_where_it_is_said_to_be_is_refused(self):
        for changes in ({"longer": 1}, {"longer": -1}, {"longer": 46}, {"moved": 1},
                        {"moved": 1000}, {"moved": -1}):
            self.assert_refused(archive(Entry(b"one"), Entry(b"two"), **changes))

    def test_one_in_several_parts_is_refused(self):
        self.assert_refused(archive(Entry(b"file"), disk=1))
        self.assert_refused(archive(Entry(b"file", disk=1)))

    def test_an_entry_that_the_directory_does_not_know_is_refused_in_front(self):
        hidden = Entry(b"hidden").local()
        self.assert_refused(hidden + archive(Entry(b"file")), b"cut short")

    def test_a_program_in_front_may_know_the_marks_of_an_archive(self):
        program = b"MZ\x81\x38PK\x03\x04\x0f\x85\x12\x34\0\0 PK\x01\x02 " + MARK + b"\0" * 60
        plain = archive(Entry(b"file"))
        self.assertEqual(self.opened(program + plain), {b"file": b"contents"})
        # The same with offsets that count the program in.
        entry = Entry(b"file", offset=len(program))
        directory = entry.central(0)
        self.assertEqual(self.opened(program + entry.local() + directory + end(
            1, len(directory), len(program) + len(entry.local()))), {b"file": b"contents"})

    def test_names_that_differ_in_front_of_the_entry_and_in_the_directory_are_refused(self):
        self.assert_refused(archive(Entry(b"name", local_name=b"evil")), b"name")

    def test_an_encrypted_entry_is_refused(self):
        for flags in 1, 0x40, 0x2000:
            self.assert_refused(archive(Entry(b"secret", flags=flags)), b"secret")

    def test_the_unicode_path_is_the_name(self):
        for plain, name in ((b"caf_.txt", "café.txt"), (b"caf\x82", "café"),
                            (b"_____/x", "папка/ф"), (b"plain", "cafe\u0301")):
            entry = Entry(plain, extra=unicode_path(plain, name.encode()))
            self.assertEqual(self.opened(archive(Entry(b"other"), entry)),
                             {b"other": b"contents", name.encode(): b"contents"})

    def test_a_unicode_path_of_another_name_or_kind_is_not_the_name(self):
        for extra in (unicode_path(b"renamed", b"old"), unicode_path(b"plain", b"new", version=2),
                      unicode_path(b"plain", b""), unicode_path(b"plain", b"\xff\xfe"),
                      field(UNICODE_PATH, b""), field(UNICODE_PATH, b"\1\0\0\0")):
            self.assertEqual(self.opened(archive(Entry(b"plain", extra=extra))),
                             {b"plain": b"contents"})

    def test_a_unicode_path_leads_nowhere_else(self):
        for name in b"../evil", b"/evil", self.path("evil").encode():
            self.assert_refused(archive(Entry(b"a", extra=unicode_path(b"a", name))), b"leads out")

    def test_a_field_that_ends_behind_the_others_is_passed_over(self):
        for extra in b"\x75\x70\xff\xff\1", b"\x75", field(1, b"") + b"\0\0\0":
            self.assertEqual(self.opened(archive(Entry(b"file", extra=extra))),
                             {b"file": b"contents"})

    def test_names_from_elsewhere_have_slashes(self):
        self.assertEqual(self.opened(archive(Entry(b"folder\\file", system=0, attributes=0))),
                         {b"folder/file": b"contents"})
        self.assertEqual(self.opened(archive(Entry(b"back\\slash"))), {b"back\\slash": b"contents"})
        for name in b"..\\evil", b"\\evil", b"folder\\..\\..\\evil":
            self.assert_refused(archive(Entry(name, system=0)), b"leads out")

    def test_without_a_mode_of_its_own_an_item_gets_the_usual_one(self):
        for changes in {"system": 0, "attributes": 0}, {"system": 3, "attributes": 0}:
            self.write(archive(Entry(b"file", **changes), Entry(b"folder/", b"", **changes)))
            self.done("-xk", self.path("a.zip"), self.path("out"), umask=0o027)
            self.assertEqual(os.stat(self.path("out/file")).st_mode & 0o7777, 0o640)
            self.assertEqual(os.stat(self.path("out/folder")).st_mode & 0o7777, 0o750)
            run("rm", "-rf", self.path("out"))

    def test_no_wrong_byte_in_the_records_does_harm(self):
        inner = archive(Entry(b"inner"), comment=b"c")
        whole = archive(Entry(b"a", extra=unicode_path(b"a", b"b")), Entry(b"../x"[3:]),
                        Entry(b"folder/", b""), Entry(b"inner.zip", inner), comment=MARK + b"x")
        chance = random.Random(3)
        for _ in range(400):
            wrong = bytearray(whole)
            for _ in range(chance.choice((1, 1, 2, 5))):
                wrong[chance.randrange(len(wrong))] = chance.choice((0, 1, 0x2F, 0x7F, 0xFF, 0x50))
            if chance.randrange(3) == 0:
                del wrong[chance.randrange(len(wrong)):]
            self.write(bytes(wrong))
            result = run(DITTO, "-xk", self.path("a.zip"), self.path("out"))
            self.assertIn(result.returncode, (0, 1), (bytes(wrong), result.stderr))
            self.assertEqual(os.path.exists(self.path("out")), result.returncode == 0)
            run("rm", "-rf", self.path("out"))
            self.assertEqual(os.listdir(self.folder), ["a.zip"])


if __name__ == "__main__":
    main()
