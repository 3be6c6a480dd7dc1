# SPDX-FileCopyrightText: 2026 Corvane
# SPDX-License-Identifier: MIT
"""A program that holds the administrator's authorisation, led from outside."""
import os
import signal
import subprocess
import sys
import time
import unittest
import urllib.parse

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), "../Support"))
import session  # noqa: E402

ACTION = "com.corvane.ostrel.administer"
FOLDER = "/usr/local/libexec/ostrel"
HELPER = f"{FOLDER}/authorization-helper"
GRANT = ("Whoever enters an administrator's password lets this program change any file of this computer "
         "as administrator until the pane is closed.")
PATIENCE = 180
PROGRAM = sys.argv.pop(1)
PASSWORD = session.ADMINISTRATOR_PASSWORD
ODD_NAMES = ["-rf", "--help", "it's \"quoted\"", "two\nlines", "100% %s %n %@", "*", "$(id)", "a;b",
             " ", "\\", "tab\there", os.fsdecode(b"not \xff\xfe UTF-8"), os.fsdecode("größe".encode())]



def wait_until(condition, what):
    end = time.monotonic() + PATIENCE
    while not condition():
        if time.monotonic() > end:
            raise AssertionError(f"waited in vain: {what}")
        time.sleep(0.02)


def helpers():
    """The helpers that run, as process numbers."""
    return session.root(["pgrep", "-f", f"^{HELPER}"], check=False).output.split()


def console():
    """The console lines of all such programs so far."""
    return session.journal("--identifier=AuthorizationProgram")


def is_sanitized():
    """Whether the programs are built with a sanitizer."""
    with open(PROGRAM, "rb") as file:
        contents = file.read()
    return b"libasan.so" in contents or b"libtsan.so" in contents


def exists(path):
    """Also in folders that the user cannot look into."""
    return session.root(["test", "-e", path], check=False).status == 0


def make_file(path, text="text"):
    session.root(["install", "-D", "-m", "644", "/dev/stdin", path], input=text)


class Program:
    """Carries out commands; see AuthorizationProgram.cpp."""

    def __init__(self, environment=None, **options):
        self._process = subprocess.Popen(
            [PROGRAM], stdin=subprocess.PIPE, stdout=subprocess.PIPE, text=True, bufsize=1,
            env=dict(os.environ, **(environment or {})), **options)

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.close()

    @property
    def pid(self):
        return self._process.pid

    def send(self, *words):
        encoded = (urllib.parse.quote_from_bytes(os.fsencode(word)) for word in words)
        self._process.stdin.write(" ".join(encoded) + "\n")
        self._process.stdin.flush()

    def answer(self):
        for line in self._process.stdout:
            if line.startswith("= "):
                return line[2:].rstrip("\n")
        raise AssertionError("the program has ended")

    def ask(self, *words):
        self.send(*words)
        return self.answer()

    def output_of(self, *command):
        """What a tool writes that is run with the authorisation."""
        status, _, output = self.ask("run", *command).partition(" ")
        if status != "0":
            raise AssertionError(f"{command} was not run: {status}")
        return os.fsdecode(urllib.parse.unquote_to_bytes(output))

    def kill(self):
        self._process.kill()
        self._process.wait()

    def close(self):
        self._process.stdin.close()
        self._process.stdout.close()
        status = self._process.wait()
        if status not in (0, -signal.SIGKILL):
            raise AssertionError(f"the program has ended with {status}")


class WithPassword(unittest.TestCase):
    """A test begins with an authorised program and "/Library/t" of root's."""

    def setUp(self):
        wait_until(lambda: not helpers(), "the helpers of other tests to end")
        session.root(["rm", "-rf", "/Library/t", f"{session.HOME}/.Trash", f"{session.HOME}/.local/share/Trash"])
        session.root(["mkdir", "/Library/t"])
        self.program = Program()
        self.addCleanup(self.program.close)
        self.assertEqual(self.program.ask("start-with", "admin", PASSWORD), "yes")

    def ask(self, *words):
        return self.program.ask(*words)
