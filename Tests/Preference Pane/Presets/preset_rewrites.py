#!/usr/bin/python3
# SPDX-FileCopyrightText: 2026 Corvane
# SPDX-License-Identifier: MIT
"""Judges rewrites of damaged presets by a reader that is not the pane's.

usage: preset_rewrites.py FOLDER

FOLDER has "N.before" and "N.after" for N from 0: a preset, and what the pane made of it when the key
"stop" was given key code N % 128 with Command. Prints how many presets were compared and how many the
pane left alone. Exit status 1 with the first one that lost or gained something.
"""
import os
import plistlib
import sys

KEYS = ("play", "stop", "menu")
EDITED = "stop"
COMMAND = 0x100000


def preset(path):
    """The dictionary in the file; None where it holds none."""
    try:
        with open(path, "rb") as file:
            value = plistlib.load(file)
    except Exception:  # pylint: disable=broad-except; it raises whatever the damage leads to
        return None
    return value if isinstance(value, dict) else None


def typed(value):
    """The value, with what tells 1 from True and from 1.0."""
    if isinstance(value, dict):
        return {key: typed(entry) for key, entry in value.items()}
    if isinstance(value, list):
        return [typed(entry) for entry in value]
    return type(value), value


def expected_keys(before, key_code):
    """All keys of the remote, in the dictionary form; less the text of the edited one."""
    shortcuts = before.get("keys")
    shortcuts = shortcuts if isinstance(shortcuts, dict) else {}
    keys = {}
    for key in KEYS:
        row = {"key": key, "val": ""}
        shortcut = shortcuts.get(key)
        if isinstance(shortcut, str):
            row["val"] = shortcut
        elif isinstance(shortcut, dict):
            row.update(shortcut)
        if key == EDITED:
            row.update(val=None, keycode=key_code, modifiers=COMMAND)
        keys[row["key"]] = {name: row[name] for name in ("val", "keycode", "modifiers") if name in row}
    return keys


def compare(folder, number):
    """Whether there was something to compare."""
    name = f"{folder}/{number}"
    before, after = preset(name + ".before"), preset(name + ".after")
    if after is None:
        sys.exit(f"{name}: no preset was written")
    if before is None:
        return False  # the pane's reader takes some malformed numbers
    keys = after.pop("keys", None)
    wanted = expected_keys(before, number % 128)
    before.pop("keys", None)
    if typed(before) != typed(after):
        sys.exit(f"{name}: {before} became {after}")
    for key, shortcut in wanted.items():
        if shortcut["val"] is None:
            shortcut["val"] = keys.get(key, {}).get("val")
    if keys != wanted:
        sys.exit(f"{name}: the keys {wanted} became {keys}")
    return True


def main():
    folder = sys.argv[1]
    compared = left_alone = 0
    number = 0
    while os.path.exists(f"{folder}/{number}.before"):
        with open(f"{folder}/{number}.before", "rb") as before, open(f"{folder}/{number}.after", "rb") as after:
            is_rewritten = before.read() != after.read()
        if is_rewritten:
            compared += compare(folder, number)
        else:  # what the pane does not take for a preset; Python takes more
            left_alone += 1
        number += 1
    print(compared, left_alone)


if __name__ == "__main__":
    main()
