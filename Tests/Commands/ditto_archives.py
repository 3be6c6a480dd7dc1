#!/usr/bin/python3
# SPDX-FileCopyrightText: 2026 Corvane
# SPDX-License-Identifier: MIT
"""Archives that ditto makes, opened by others, and those that others make, opened by ditto."""
import os
import threading
import unittest
import zipfile

from zips import DITTO, NAMES, SANITIZED, DittoTest, link, main, make_tree, run, tree, write


class Made(DittoTest):
    def test_an_archive_comes_back_with_modes_times_and_links(self):
        make_tree(self.path("tree"))
        self.done("-ck", "--keepParent", self.path("tree"), self.path("a.zip"))
        self.done("-xk", self.path("a.zip"), self.path("out"))
        self.assertEqual(os.listdir(self.path("out")), ["tree"])
        self.assert_same(self.path("out/tree"), self.path("tree"))
        self.assertEqual(sorted(os.listdir(self.folder)), ["a.zip", "out", "tree"])

    def test_a_time_that_zip_cannot_tell_becomes_the_nearest_that_it_can(self):
        write(self.path("tree/before"), time=-86_400)
        write(self.path("tree/after"), time=5_000_000_000)
        self.done("-ck", self.path("tree"), self.path("a.zip"), env={"TZ": "UTC"})
        with zipfile.ZipFile(self.path("a.zip")) as archive:
            self.assertEqual(archive.getinfo("before").date_time, (1980, 1, 1, 0, 0, 0))
            self.assertEqual(archive.getinfo("after").date_time[:3], (2106, 2, 7))
        self.done("-xk", self.path("a.zip"), self.path("out"))
        self.assertEqual(os.stat(self.path("out/before")).st_mtime, 0)
        self.assertEqual(os.stat(self.path("out/after")).st_mtime, 2**32 - 1)

    def test_without_the_parent_it_holds_what_is_in_the_folder(self):
        make_tree(self.path("tree"))
        self.done("-c", "-k", self.path("tree"), self.path("a.zip"))
        self.done("-x", "-k", self.path("a.zip"), self.path("out"))
        self.assert_same(self.path("out"), self.path("tree"), modes=False)

    def test_options_may_be_given_in_any_form_and_order(self):
        write(self.path("tree/file"))
        for options in (("-c", "-k", "--keepParent"), ("--keepParent", "-kc"), ("-k", "-c")):
            self.done(*options, self.path("tree"), self.path("a.zip"))
        self.done(self.path("tree"), self.path("a.zip"), "-ck")
        self.done("-ck", "--", self.path("tree"), self.path("a.zip"))

    def test_a_file_alone_is_at_the_top_with_and_without_the_parent(self):
        write(self.path("folder/file"), b"alone")
        for options in ("-ck",), ("-ck", "--keepParent"):
            self.done(*options, self.path("folder/file"), self.path("a.zip"))
            self.assertEqual(zipfile.ZipFile(self.path("a.zip")).namelist(), ["file"])

    def test_a_link_alone_stays_a_link(self):
        link("/nowhere", self.path("link"))
        self.done("-ck", self.path("link"), self.path("a.zip"))
        self.done("-xk", self.path("a.zip"), self.path("out"))
        self.assertEqual(os.readlink(self.path("out/link")), "/nowhere")

    def test_an_empty_folder_makes_an_empty_archive_and_back(self):
        os.mkdir(self.path("tree"))
        self.done("-ck", self.path("tree"), self.path("a.zip"))
        self.assertEqual(zipfile.ZipFile(self.path("a.zip")).namelist(), [])
        self.done("-xk", self.path("a.zip"), self.path("out"))
        self.assertEqual(os.listdir(self.path("out")), [])

    def test_the_current_folder_is_known_by_its_name(self):
        write(self.path("tree/file"))
        self.done("-ck", "--keepParent", ".", self.path("a.zip"), cwd=self.path("tree"))
        self.assertEqual(zipfile.ZipFile(self.path("a.zip")).namelist(), ["tree/", "tree/file"])

    def test_every_name_comes_back_byte_for_byte(self):
        for name in NAMES:
            write(self.path(f"tree/{name}"), os.fsencode(name))
            write(self.path(f"tree/in a folder/{name}/{name}"), os.fsencode(name))
        self.done("-ck", self.path("tree"), self.path("a.zip"), env={"LC_ALL": "C"})
        self.done("-xk", self.path("a.zip"), self.path("out"), env={"LC_ALL": "C"})
        self.assert_same(self.path("out"), self.path("tree"))
        with zipfile.ZipFile(self.path("a.zip")) as archive:
            names = archive.namelist()
        for name in NAMES:
            if not any(0xDC80 <= ord(character) <= 0xDCFF for character in name):
                self.assertIn(name, names)

    def test_every_name_may_be_that_of_source_archive_and_folder(self):
        for name in NAMES:
            write(self.path(f"sources/{name}"), b"x")
            os.makedirs(self.path("archives"), exist_ok=True)
            self.done("-ck", "--", name, f"../archives/{name}", cwd=self.path("sources"))
            self.done("-xk", "--", f"../archives/{name}", f"../out/{name}",
                      cwd=self.path("sources"))
            self.assertEqual(os.listdir(self.path(f"out/{name}")), [name])

    def test_unzip_bsdtar_and_python_open_it(self):
        make_tree(self.path("tree"))
        for name in NAMES:
            write(self.path(f"tree/names/{name}"))
        self.done("-ck", self.path("tree"), self.path("a.zip"))
        unzip = run("unzip", "-tq", self.path("a.zip"))
        self.assertEqual(unzip.returncode, 0, unzip.stdout)
        self.assertIsNone(zipfile.ZipFile(self.path("a.zip")).testzip())
        os.mkdir(self.path("bsdtar"))
        self.assertEqual(run("bsdtar", "-xpf", self.path("a.zip"), "-C",
                             self.path("bsdtar")).returncode, 0)
        expected = {name: item for name, item in tree(self.path("tree")).items()
                    if "/names/" not in name and name != "/names"}
        others = tree(self.path("bsdtar"))
        for name, item in expected.items():
            if name:
                self.assertEqual(others[name][:3], item[:3], name)
                self.assertEqual(others[name][3], item[3], name)

    def test_unzip_gives_the_same_tree(self):
        make_tree(self.path("tree"))
        self.done("-ck", self.path("tree"), self.path("a.zip"))
        self.assertEqual(run("unzip", "-q", self.path("a.zip"), "-d",
                             self.path("out")).returncode, 0)
        # Its links have the present time, and it sets the times of folders too early.
        self.assert_same(self.path("out"), self.path("tree"), times=False, modes=False)

    def test_more_entries_than_16_bits_can_count(self):
        os.mkdir(self.path("tree"))
        for number in range(70_000):
            os.close(os.open(self.path(f"tree/{number}"), os.O_CREAT | os.O_WRONLY, 0o644))
        self.done("-ck", self.path("tree"), self.path("a.zip"))
        with zipfile.ZipFile(self.path("a.zip")) as archive:
            self.assertEqual(len(archive.namelist()), 70_000)
        self.assertEqual(run("unzip", "-tqq", self.path("a.zip")).returncode, 0)
        self.done("-xk", self.path("a.zip"), self.path("out"))
        self.assertEqual(len(os.listdir(self.path("out"))), 70_000)

    @unittest.skipIf(SANITIZED, "too slow")
    def test_a_file_larger_than_32_bits_can_count_and_what_is_behind_it(self):
        os.mkdir(self.path("tree"))
        size = (1 << 32) + 12_345
        with open(self.path("tree/large"), "wb") as file:
            file.truncate(size)
        write(self.path("tree/small"))
        self.done("-ck", self.path("tree"), self.path("a.zip"))
        with zipfile.ZipFile(self.path("a.zip")) as archive:
            self.assertEqual(archive.getinfo("large").file_size, size)
            self.assertEqual(archive.read("small"), b"contents")
        self.assertEqual(run("unzip", "-tqq", self.path("a.zip")).returncode, 0)
        listed = run("bsdtar", "-tvf", self.path("a.zip")).stdout
        self.assertIn(str(size).encode(), listed)

    def test_a_tree_deeper_than_a_path_can_be_long(self):
        os.mkdir(self.path("tree"))
        home = os.getcwd()
        os.chdir(self.path("tree"))
        try:
            for _ in range(700):
                os.mkdir("folder")
                os.chdir("folder")
            write("./file", b"deep")
        finally:
            os.chdir(home)
        self.done("-ck", self.path("tree"), self.path("a.zip"))
        self.done("-xk", self.path("a.zip"), self.path("out"))
        os.chdir(self.path("out"))
        try:
            for _ in range(700):
                os.chdir("folder")
            with open("file", "rb") as file:
                self.assertEqual(file.read(), b"deep")
        finally:
            os.chdir(home)

    def test_an_archive_is_replaced_and_never_holds_itself(self):
        write(self.path("tree/file"))
        for _ in range(3):
            self.done("-ck", self.path("tree"), self.path("tree/a.zip"))
            self.assertEqual(zipfile.ZipFile(self.path("tree/a.zip")).namelist(), ["file"])

    def test_what_is_neither_file_folder_nor_link_is_left_out_with_a_word(self):
        write(self.path("tree/file"))
        os.mkfifo(self.path("tree/pipe"))
        self.done("-ck", self.path("tree"), self.path("a.zip"), words=b"/pipe: left out")
        self.assertEqual(zipfile.ZipFile(self.path("a.zip")).namelist(), ["file"])

    def test_a_file_that_grows_and_shrinks_meanwhile_leaves_a_sound_archive(self):
        write(self.path("tree/log"), b"line\n" * 3_000_000)
        write(self.path("tree/other"), b"other")
        ended = threading.Event()

        def change():
            with open(self.path("tree/log"), "r+b") as file:
                while not ended.is_set():
                    file.truncate(7_000_000)
                    file.truncate(16_000_000)

        changes = threading.Thread(target=change)
        changes.start()
        try:
            for _ in range(5):
                self.done("-ck", self.path("tree"), self.path("a.zip"))
                with zipfile.ZipFile(self.path("a.zip")) as archive:
                    self.assertIsNone(archive.testzip())
                    self.assertEqual(archive.read("other"), b"other")
        finally:
            ended.set()
            changes.join()

    def test_files_that_come_and_go_meanwhile_do_no_harm(self):
        ended = threading.Event()
        os.mkdir(self.path("tree"))

        def change():
            while not ended.is_set():
                for number in range(50):
                    write(self.path(f"tree/{number}"))
                for number in range(50):
                    os.unlink(self.path(f"tree/{number}"))

        changes = threading.Thread(target=change)
        changes.start()
        try:
            for _ in range(20):
                self.done("-ck", self.path("tree"), self.path("a.zip"))
                self.assertIsNone(zipfile.ZipFile(self.path("a.zip")).testzip())
        finally:
            ended.set()
            changes.join()

    @unittest.skipIf(SANITIZED, "the sanitizers take memory of their own")
    def test_memory_does_not_depend_on_the_size(self):
        def most_memory(*arguments):
            process = os.posix_spawn(DITTO, [DITTO, *arguments], os.environ)
            _, status, usage = os.wait4(process, 0)
            self.assertEqual(status, 0)
            return usage.ru_maxrss

        figures = {}
        for size in 8 << 20, 400 << 20:
            with open(self.path("file"), "wb") as file:
                file.truncate(size)
            figures[size] = (most_memory("-ck", self.path("file"), self.path("a.zip")),
                             most_memory("-xk", self.path("a.zip"), self.path(f"out{size}")))
        small, large = figures.values()
        for one, other in zip(small, large):
            self.assertLess(other, one + 8192)
            self.assertLess(other, 100 * 1024)


class Opened(DittoTest):
    """Archives of others."""

    def opened(self):
        self.done("-xk", self.path("a.zip"), self.path("out"))
        return self.path("out")

    def test_zip(self):
        make_tree(self.path("tree"))
        write(self.path("tree/long ago"), time=-86_400)
        write(self.path("tree/in forty years"), time=3_500_000_000)
        self.assertEqual(run("zip", "-qry", "../a.zip", ".", cwd=self.path("tree")).returncode, 0)
        self.assert_same(self.opened(), self.path("tree"))

    def test_zip_with_names_in_many_languages(self):
        for name in NAMES:
            if name.isprintable() and not set(name) & set('*?[]\\'):
                write(self.path(f"tree/{name}"), os.fsencode(name))
        for locale in "C", "C.UTF-8":
            self.assertEqual(run("zip", "-qry", self.path("a.zip"), ".", cwd=self.path("tree"),
                                 env={"LC_ALL": locale}).returncode, 0)
            self.assert_same(self.opened(), self.path("tree"))
            os.unlink(self.path("a.zip"))
            run("rm", "-rf", self.path("out"))

    def test_bsdtar(self):
        make_tree(self.path("tree"))
        self.assertEqual(run("bsdtar", "--format", "zip", "-cf", self.path("a.zip"), "-C",
                             self.path("tree"), ".").returncode, 0)
        self.assert_same(self.opened(), self.path("tree"))

    def test_python_with_every_method(self):
        for method in (zipfile.ZIP_STORED, zipfile.ZIP_DEFLATED, zipfile.ZIP_BZIP2,
                       zipfile.ZIP_LZMA):
            out = self.path(f"out{method}")
            with zipfile.ZipFile(self.path("a.zip"), "w", method) as archive:
                for name in NAMES:
                    if not any(0xD800 <= ord(character) < 0xE000 for character in name):
                        archive.writestr(f"f/{name}", os.fsencode(name) * 1000)
            self.done("-xk", self.path("a.zip"), out)
            for name in os.listdir(f"{out}/f"):
                with open(f"{out}/f/{name}", "rb") as file:
                    self.assertEqual(file.read(), os.fsencode(name) * 1000)

    def test_one_that_was_streamed(self):
        result = run("sh", "-c", "seq 300000 | zip -q - - | cat > a.zip", cwd=self.folder)
        self.assertEqual(result.returncode, 0)
        with open(f"{self.opened()}/-", "rb") as file:
            self.assertEqual(file.read(), b"".join(b"%d\n" % i for i in range(1, 300_001)))

    def test_one_with_a_program_in_front(self):
        with zipfile.ZipFile(self.path("plain.zip"), "w") as archive:
            archive.writestr("cafe\u0301", "decomposed")
            archive.writestr("caf\u00e9", "composed")
        with open(self.path("plain.zip"), "rb") as plain, open(self.path("a.zip"), "wb") as file:
            file.write(b"#!/bin/sh\nexit\n" + plain.read())
        self.assertEqual(sorted(os.listdir(self.opened())), ["cafe\u0301", "caf\u00e9"])

    def test_one_with_a_comment(self):
        with zipfile.ZipFile(self.path("a.zip"), "w") as archive:
            archive.comment = b"c" * 10_000
            archive.writestr("file", "contents")
        self.assertEqual(os.listdir(self.opened()), ["file"])

    def test_folders_that_have_no_entry_are_made(self):
        with zipfile.ZipFile(self.path("a.zip"), "w") as archive:
            archive.writestr("a/b/./c//file", "contents")
        self.assertTrue(os.path.isfile(f"{self.opened()}/a/b/c/file"))
        self.assertEqual(os.stat(self.path("out/a")).st_mode & 0o777, 0o755)

    def test_the_folder_above_is_made(self):
        with zipfile.ZipFile(self.path("a.zip"), "w") as archive:
            archive.writestr("file", "contents")
        self.done("-xk", self.path("a.zip"), self.path("new/and/newer"))
        self.assertEqual(os.listdir(self.path("new/and/newer")), ["file"])

    def test_into_a_folder_that_exists_it_is_merged(self):
        write(self.path("out/file"), b"old")
        write(self.path("out/kept"), b"kept")
        link("/nowhere", self.path("out/link"))
        with zipfile.ZipFile(self.path("a.zip"), "w") as archive:
            archive.writestr("file", "new")
            archive.writestr("link", "a file now")
        self.opened()
        contents = {name: item[2] for name, item in tree(self.path("out")).items()}
        self.assertEqual(contents, {"": None, "/file": b"new", "/kept": b"kept",
                                    "/link": b"a file now"})


class Usage(DittoTest):
    def test_help(self):
        for option in "--help", "-h":
            result = run(DITTO, option)
            self.assertEqual((result.returncode, result.stderr), (0, b""))
            self.assertTrue(result.stdout.startswith(b"usage: "))

    def test_what_is_not_understood_is_refused_with_the_usage(self):
        for arguments, words in (
                ((), b"-c or -x is needed"), (("a", "b"), b"-c or -x is needed"),
                (("-cxk", "a", "b"), b"cannot be used together"), (("-c", "a", "b"), b"(-k)"),
                (("-ck", "a"), b"two paths"), (("-ck", "a", "b", "c"), b"two paths"),
                (("-ck", "", "b"), b"empty"), (("-xk", "--keepParent", "a", "b"), b"only be used with -c"),
                (("-ckz", "a", "b"), b'"-ckz"'), (("--sequester", "a", "b"), b'"--sequester"'),
                (("-\x1b[1m", "a", "b"), b'"-?[1m"')):
            self.refused(*arguments, words=words, status=2)
            self.refused(*arguments, words=b"usage: ", status=2)


if __name__ == "__main__":
    main()
