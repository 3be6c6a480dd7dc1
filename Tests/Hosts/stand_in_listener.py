#!/usr/bin/python3
# SPDX-FileCopyrightText: 2026 Corvane
# SPDX-License-Identifier: MIT
"""The stand-in listener's answers, asked for and heard by D-Bus programs of other makers.

usage: stand_in_listener.py BUILD_FOLDER
"""
import os
import re
import subprocess
import sys
import threading
import time
import unittest

LISTENER = f"{sys.argv.pop(1)}/Ostrel.prefPane/Contents/MacOS/OstrelListener"
INTERFACE = "com.corvane.DistributedNotifications"


class Words:
    """The status words that gdbus sees on the bus."""

    def __init__(self):
        self.words = []
        self._monitor = subprocess.Popen(
            ["stdbuf", "-oL", "dbus-monitor", "--session", f"interface='{INTERFACE}'"],
            stdout=subprocess.PIPE, text=True)
        self._ready = threading.Event()
        threading.Thread(target=self._read, daemon=True).start()
        self._ready.wait(20)

    def _read(self):
        update = status = False
        for line in self._monitor.stdout:
            self._ready.set()
            text = re.search(r'string "(.*)"', line)
            if line.startswith("signal"):
                update = status = False
            elif text and text[1] == "ZQOstrelClientStatusUpdate":
                update = True
            elif text and text[1] == "status":
                status = True
            elif text and update and status:
                self.words.append(text[1])

    def close(self):
        self._monitor.terminate()
        self._monitor.wait()
        self._monitor.stdout.close()


def post(name):
    subprocess.run(["gdbus", "emit", "--session", "--object-path",
                    "/com/corvane/DistributedNotifications", "--signal", f"{INTERFACE}.Posted",
                    f"'{name}'", "''", "@a{sv} {}"], check=True)


class StandIn(unittest.TestCase):
    def setUp(self):
        self.heard = Words()
        self.addCleanup(self.heard.close)

    def start(self, *options):
        process = subprocess.Popen([LISTENER, *options], stderr=subprocess.DEVNULL)
        self.addCleanup(lambda: (process.terminate(), process.wait()))
        return process

    def expect(self, *words):
        end = time.monotonic() + 30
        while time.monotonic() < end and len(self.heard.words) < len(words):
            time.sleep(0.02)
        self.assertEqual(self.heard.words[:len(words)], list(words))
        del self.heard.words[:len(words)]

    def test_it_announces_itself_and_answers(self):
        self.start()
        self.expect("Running")
        post("ZQOstrelClientCurrentStatus")
        self.expect("Running")
        post("ZQOstrelClientRelaunch")
        self.expect("Relaunching...", "Running")

    def test_nothing_follows_its_last_word(self):
        self.start()
        self.expect("Running")
        for name in "Disconnect", "CurrentStatus", "Relaunch", "Disconnect":
            post("ZQOstrelClient" + name)
        self.expect("Disconnected")
        self.start("--status", "Another")
        self.expect("Another")

    def test_it_takes_another_word(self):
        self.start("--status", "Serving Ann")
        self.expect("Serving Ann")
        post("ZQOstrelClientCurrentStatus")
        self.expect("Serving Ann")

    def test_it_opens_no_network_port(self):
        process = self.start()
        self.expect("Running")
        own = {os.readlink(f"/proc/{process.pid}/fd/{fd}")
               for fd in os.listdir(f"/proc/{process.pid}/fd")}
        for table in ("tcp", "tcp6", "udp", "udp6"):
            with open(f"/proc/{process.pid}/net/{table}") as file:
                for line in file.readlines()[1:]:
                    self.assertNotIn(f"socket:[{line.split()[9]}]", own)


unittest.main(verbosity=2)
