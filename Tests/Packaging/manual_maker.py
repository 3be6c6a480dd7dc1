#!/usr/bin/python3
# SPDX-FileCopyrightText: 2026 Corvane
# SPDX-License-Identifier: MIT
"""The program that sets a manual.

usage: manual_maker.py BUILD_FOLDER
"""
import os
import re
import shutil
import subprocess
import sys
import tempfile
import unittest

import pdf

BUILD = sys.argv.pop(1)
PROGRAM = f"{BUILD}/bin/manual-maker"
PICTURE = f"{BUILD}/manual/keyboard.png"
PARAGRAPH = "Words that fill a line of the page, and then some more of them. " * 4


class ManualMaker(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = folder.name
        self.source, self.target = f"{self.folder}/text.md", f"{self.folder}/manual.pdf"

    def make(self, text=None, edition="1.2"):
        if text is not None:
            with open(self.source, "w", encoding="utf-8") as file:
                file.write(text)
        return subprocess.run([PROGRAM, "--edition", edition, self.source, self.folder, self.target],
                              capture_output=True, text=True, timeout=300)

    def pages(self, text):
        done = self.make(text)
        self.assertEqual((done.returncode, done.stdout), (0, ""), done.stderr)
        return pdf.pages(self.target)

    def refused(self, done, *words):
        self.assertEqual(done.returncode, 1)
        for word in ("manual-maker: ", *words):
            self.assertIn(word, done.stderr)

    def test_a_missing_text_is_an_error_in_words(self):
        self.refused(self.make(), f"cannot read {self.source}", "No such file")
        self.assertFalse(os.path.exists(self.target))

    def test_a_missing_picture_is_an_error_that_names_it(self):
        self.refused(self.make("# Title\n\n![A page](page.png)\n"), self.source,
                     f"{self.folder}/page.png", "cannot be read")
        self.assertFalse(os.path.exists(self.target))

    def test_a_damaged_picture_is_an_error_that_names_it(self):
        shutil.copy(PICTURE, f"{self.folder}/page.png")
        os.truncate(f"{self.folder}/page.png", 20)
        self.refused(self.make("# Title\n\n![A page](page.png)\n"), f"{self.folder}/page.png")

    def test_a_text_without_a_title_is_an_error(self):
        for text in ("", "Words.\n", "## Too low\n\nWords.\n", "<!-- never ends\n"):
            self.refused(self.make(text), "title")

    def test_a_failure_leaves_the_manual_of_before(self):
        self.pages("# Title\n\nWords.\n")
        with open(self.target, "rb") as file:
            before = file.read()
        self.refused(self.make("# Title\n\n![A page](page.png)\n"))
        with open(self.target, "rb") as file:
            self.assertEqual(file.read(), before)
        self.assertEqual(sorted(os.listdir(self.folder)), ["manual.pdf", "text.md"])

    def test_a_manual_that_cannot_be_written_is_an_error_in_words(self):
        self.target = f"{self.folder}/none/manual.pdf"
        self.refused(self.make("# Title\n"), f"cannot write {self.target}")

    def test_wrong_arguments_are_refused(self):
        for arguments in ([], ["text.md"], ["a", "b", "c", "d"]):
            done = subprocess.run([PROGRAM, *arguments], capture_output=True, text=True, timeout=300)
            self.assertEqual(done.returncode, 2)
            self.assertIn("SOURCE, PICTURES and PDF", done.stderr)

    def test_the_title_is_the_documents_and_at_the_foot_of_each_page(self):
        pages = self.pages("<!-- one -->\n<!-- two -->\n# Über “this”\n\n" + f"{PARAGRAPH}\n\n" * 60)
        self.assertEqual(pdf.info(self.target)["Title"], "Über “this”")
        self.assertGreater(len(pages), 1)
        for number, page in enumerate(pages, 1):
            self.assertRegex(page.strip(), rf"Über “this” · Version 1\.2 +Page {number} of {len(pages)}$")
        self.assertNotIn("one -->", pages[0])

    def test_without_a_version_the_foot_has_the_title_alone(self):
        self.assertEqual(self.make("# Title\n", edition="").returncode, 0)
        self.assertRegex(pdf.pages(self.target)[0].strip(), r"\nTitle +Page 1 of 1$")

    # Each with as many lines before it as put it at the end of a page at some point.
    def at_every_height(self, text, check):
        for lines in range(24, 39):
            check(self.pages("# Title\n\n" + "Line.\n\n" * lines + text))

    def test_a_heading_stays_with_what_it_is_over(self):
        def check(pages):
            heading = next(page for page in pages if "The heading" in page)
            self.assertIn("The text", heading)
        self.at_every_height("## The heading\n\n### Below the heading\n\nThe text.\n", check)

    def test_a_heading_stays_with_the_picture_below(self):
        shutil.copy(PICTURE, f"{self.folder}/page.png")

        def check(pages):
            heading = next(number for number, page in enumerate(pages, 1) if "The heading" in page)
            self.assertEqual([picture["page"] for picture in pdf.pictures(self.target)], [heading])
        for lines in range(5, 39, 3):
            check(self.pages("# Title\n\n" + "Line.\n\n" * lines +
                             "## The heading\n\n![A page](page.png)\n"))

    def test_the_lines_of_code_stay_together(self):
        def check(pages):
            page = next(page for page in pages if "first line" in page)
            self.assertIn("last line", page)
        self.at_every_height("Do this:\n\n    first line\n    second line\n    last line\n", check)

    def test_a_table_of_less_than_a_page_is_not_torn(self):
        def check(pages):
            page = next(page for page in pages if "the first" in page)
            self.assertIn("the last", page)
            self.assertIn("Announced", page)
        rows = "".join(f"| {row} | {row} |\n" for row in ("the first", "2", "3", "4", "5", "the last"))
        self.at_every_height(f"Announced:\n\n| A | B |\n|---|---|\n{rows}\n", check)

    def test_a_table_of_more_than_a_page_has_its_header_on_each(self):
        rows = "".join(f"| row {row} | {row} |\n" for row in range(150))
        pages = self.pages(f"# Title\n\n| Number | Value |\n|---|---|\n{rows}\n")
        self.assertGreater(len(pages), 2)
        for page in pages:
            self.assertRegex(page, "Number +Value")
        self.assertEqual(re.findall(r"row (\d+)", "".join(pages)), [str(row) for row in range(150)])

    def test_a_picture_is_no_wider_than_the_text_and_as_sharp_as_it_was(self):
        shutil.copy(PICTURE, f"{self.folder}/page.png")
        width, height = pdf.png_size(PICTURE)
        wide = f"{self.folder}/wide.png"
        subprocess.run(["convert", PICTURE, "-resize", "300%", wide], check=True, timeout=300)
        self.pages("# Title\n\n![A page](page.png)\n\n![The same, wide](wide.png)\n")
        pictures = pdf.pictures(self.target)
        self.assertEqual([picture["size"] for picture in pictures],
                         [(width, height), (3 * width, 3 * height)])
        millimetres = [picture["size"][0] / picture["resolution"] * 25.4 for picture in pictures]
        self.assertAlmostEqual(millimetres[0], width / 2 * 0.8 / 96 * 25.4, delta=1)
        self.assertAlmostEqual(millimetres[1], 210 - 2 * 22, delta=1)

    def test_a_paragraph_longer_than_a_page_ends(self):
        pages = self.pages("# Title\n\n" + PARAGRAPH * 60 + "The end.\n")
        self.assertGreater(len(pages), 2)
        self.assertIn("The end.", " ".join(pages[-1].split()))

    def test_words_are_found_without_ligatures(self):
        self.assertIn("The first file fits.", self.pages("# Title\n\nThe first file fits.\n")[0])

    def test_code_keeps_its_spaces_and_has_a_font_of_its_own(self):
        self.pages("# Title\n\nWords and `code`.\n\n    a   b\n")
        self.assertRegex(pdf.pages(self.target)[0], "a {3,}b")
        self.assertTrue(any("Mono" in name for name in pdf.fonts(self.target)))


unittest.main(verbosity=2)
