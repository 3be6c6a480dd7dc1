# SPDX-FileCopyrightText: 2026 Corvane
# SPDX-License-Identifier: MIT
"""What poppler's tools say of a PDF."""
import re
import subprocess


def run(*command):
    return subprocess.run(command, capture_output=True, text=True, check=True, timeout=300).stdout


def info(path):
    """The document's properties by name."""
    return {name: value.strip() for name, value in
            (line.split(":", 1) for line in run("pdfinfo", path).splitlines() if ":" in line)}


def pages(path):
    """The text of each page, as it lies there."""
    return run("pdftotext", "-layout", path, "-").split("\f")[:-1]


def words(path):
    """The whole text on one line, without the foot of the pages."""
    text = run("pdftotext", path, "-")
    text = re.sub(r"(?m)^(.* · Version .*|Page \d+ of \d+)$", "", text)
    return " ".join(text.split())


def pictures(path):
    """Page, width and height in pixels, coding and resolution of each picture."""
    rows = [line.split() for line in run("pdfimages", "-list", path).splitlines()[2:]]
    return [{"page": int(row[0]), "size": (int(row[3]), int(row[4])), "coding": row[8],
             "resolution": int(row[12])} for row in rows]


def fonts(path):
    """For each font, whether it is in the file and whether its letters can be told."""
    rows = run("pdffonts", path).splitlines()[2:]
    return {row.split()[0]: tuple(re.search(r"(yes|no) +(?:yes|no) +(yes|no) +\d", row).groups())
            for row in rows}


def png_size(path):
    with open(path, "rb") as file:
        head = file.read(24)
    assert head[:8] == b"\x89PNG\r\n\x1a\n", head
    return int.from_bytes(head[16:20], "big"), int.from_bytes(head[20:24], "big")
