#!/usr/bin/python3
# SPDX-FileCopyrightText: 2026 Corvane
# SPDX-License-Identifier: MIT
"""The user manual in the bundle, and its text beside the pane's interface.

usage: user_manual.py BUILD_FOLDER
"""
import glob
import os
import re
import sys
import unittest
from xml.etree import ElementTree

import pdf

BUILD = sys.argv.pop(1)
SOURCE = os.path.realpath(os.path.join(os.path.dirname(__file__), "../.."))
PANE = f"{SOURCE}/Preference Pane"
TEXT = f"{SOURCE}/Documentation/User Manual.md"
MANUAL = f"{BUILD}/Ostrel.prefPane/Contents/Resources/Ostrel User Manual.pdf"
PAGES = ("general", "keyboard", "network", "security")


def contents(path):
    with open(path, encoding="utf-8") as file:
        return file.read()


def plain(title):
    """A title without what marks keys to press, questions to come and fields beside it."""
    return re.sub(r"(…|\.\.\.|:)$", "", re.sub("&(.)", r"\1", title))


def titles(interface):
    """The titles of the tabs, boxes and buttons of an interface, with what fields ask for."""
    found = []
    for widget in ElementTree.fromstring(interface).iter("widget"):
        for part in widget:
            name, text = part.get("name"), part.findtext("string")
            wanted = (part.tag == "attribute" and name == "title" or
                      part.tag == "property" and name == "placeholderText" or
                      part.tag == "property" and name == "text" and
                      widget.get("class") in ("QCheckBox", "QPushButton", "QToolButton"))
            if wanted and text:
                found.append(plain(text))
        if widget.get("class") == "QLabel" and widget.find("property[@name='buddy']") is not None:
            found.append(plain(widget.findtext("property[@name='text']/string")))
    return found


def missing(text, interface):
    words = " ".join(text.split())
    # "Add" is no title because "added" is there.
    return [title for title in titles(interface)
            if not re.search(rf"\b{re.escape(title)}\b", words)]


class UserManual(unittest.TestCase):
    def test_it_is_a_pdf_of_several_pages_in_the_bundle(self):
        with open(MANUAL, "rb") as file:
            self.assertEqual(file.read(4), b"%PDF")
        info = pdf.info(MANUAL)
        self.assertGreater(int(info["Pages"]), 3)
        self.assertIn("A4", info["Page size"])
        self.assertEqual(info["Title"], "Ostrel User Manual")

    def test_every_heading_and_paragraph_is_in_it(self):
        shown = pdf.words(MANUAL)
        for line in re.sub("<!--.*?-->", "", contents(TEXT)).splitlines():
            if line.startswith("#"):
                self.assertIn(line.lstrip("# "), shown)
        for words in ("Any (recommended)", "sudo ufw allow 24780", "ostrel-settings --page network",
                      "/Library/LaunchAgents/", "Ostrel Logs.zip"):
            self.assertIn(words, shown)

    def test_its_text_can_be_selected_and_its_fonts_are_in_it(self):
        fonts = pdf.fonts(MANUAL)
        self.assertGreater(len(fonts), 2)
        for name, embedded_and_known in fonts.items():
            self.assertEqual(embedded_and_known, ("yes", "yes"), name)

    def test_it_has_a_sharp_picture_of_each_page_of_the_pane(self):
        pictures = pdf.pictures(MANUAL)
        self.assertEqual([picture["size"] for picture in pictures],
                         [pdf.png_size(f"{BUILD}/manual/{page}.png") for page in PAGES])
        for picture in pictures:
            self.assertEqual(picture["coding"], "image")  # not JPEG
            self.assertGreaterEqual(picture["resolution"], 200)
            self.assertLessEqual(picture["size"][0] / picture["resolution"] * 25.4, 210 - 2 * 20)

    def test_each_page_has_its_number_and_the_panes_version(self):
        pages = pdf.pages(MANUAL)
        version = re.search(r"CMAKE_PROJECT_VERSION:STATIC=(.*)",
                            contents(f"{BUILD}/CMakeCache.txt")).group(1)
        for number, page in enumerate(pages, 1):
            self.assertRegex(page.strip(),
                             rf"Ostrel User Manual · Version {version} +Page {number} of {len(pages)}$")

    def test_no_heading_stands_alone_at_the_end_of_a_page(self):
        headings = {line.lstrip("# ") for line in contents(TEXT).splitlines()
                    if line.startswith("#")}
        for page in pdf.pages(MANUAL):
            lines = [line.strip() for line in page.splitlines() if line.strip()]
            # Above the foot; below a heading is text or a picture, which has none.
            if lines[-2] in headings:
                self.fail(f"{lines[-2]} is the last line of a page")

    def test_it_names_every_tab_box_and_button_of_the_pane(self):
        interfaces = glob.glob(f"{glob.escape(PANE)}/*/*.ui")
        self.assertGreater(len(interfaces), 1)
        for path in interfaces:
            self.assertGreater(len(titles(contents(path))), 4)
            self.assertEqual(missing(contents(TEXT), contents(path)), [], path)

    def test_a_title_that_it_does_not_name_is_noticed(self):
        interface = contents(f"{PANE}/Pane/Ostrel_Preference_Pane.ui")
        for title in titles(interface):
            text = " ".join(contents(TEXT).split()).replace(title, "")
            self.assertIn(title, missing(text, interface))

    def test_it_names_every_entry_of_the_menu_of_presets(self):
        entries = re.findall(r'addAction\(\s*tr\("([^"]+)"\)',
                             contents(f"{PANE}/Presets/KeyboardLayoutPage.cpp"))
        self.assertGreater(len(entries), 3)
        for entry in entries:
            self.assertIn(plain(entry), contents(TEXT))

    def test_it_explains_every_status_word_of_the_pane(self):
        words = re.findall(r'QString (?!status\b)[a-zA-Z]+ = QStringLiteral\("([A-Z][a-z. ]+)"\)',
                           contents(f"{SOURCE}/Ostrel/OstrelNames.h"))
        self.assertEqual(len(words), 9)
        for word in words:
            self.assertIn(f"\n| {word} | ", contents(TEXT))

    def test_it_names_the_pages_that_can_be_opened(self):
        for page in PAGES:
            self.assertIn(f"`{page}`", contents(TEXT))


unittest.main(verbosity=2)
