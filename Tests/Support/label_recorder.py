#!/usr/bin/python3
# SPDX-FileCopyrightText: 2026 Corvane
# SPDX-License-Identifier: MIT
"""Writes every text that a label of any program takes, as a screen reader hears it.

usage: label_recorder.py BEGINNING        (of the texts of interest)

A word that shows for a few milliseconds is too short for one who looks now and then.
"""
import os
import sys

import gi

gi.require_version("Atspi", "2.0")
from gi.repository import Atspi, GLib  # noqa: E402


def main():
    def heard(event):
        label = event.source
        try:
            label.clear_cache()
            text = label.get_name()
        except GLib.Error:  # its program has ended
            return
        if text.startswith(sys.argv[1]):
            os.write(sys.stdout.fileno(), (text + "\n").encode())

    listener = Atspi.EventListener.new(heard)
    listener.register("object:property-change:accessible-name")
    os.write(sys.stdout.fileno(), b"listening\n")
    Atspi.event_main()


main()
