#!/usr/bin/python3
# SPDX-FileCopyrightText: 2026 Corvane
# SPDX-License-Identifier: MIT
"""The socket of the authorisation helper in other hands than those that it was opened for.

usage: authorization_sockets.py PROGRAM      (in desktop-session --no-agent --install)
"""
import os
import socket
import struct
import subprocess
import unittest

from authorization_program import ACTION, HELPER, Program, WithPassword, session


class HandingDown(WithPassword):
    def test_a_child_uses_its_parents_authorisation(self):
        self.program.send("hand-down", "authorized")
        self.assertEqual([self.program.answer(), self.program.answer()], ["yes", "0"])
        self.program.send("hand-down", "run", "/usr/bin/id", "-u")
        self.assertEqual([self.program.answer(), self.program.answer()], ["0 0%0A", "0"])
        self.assertEqual(self.ask("authorized"), "yes")

    def test_the_child_that_ends_leaves_the_parents_authorisation(self):
        self.program.send("hand-down", "end")
        self.assertEqual([self.program.answer(), self.program.answer()], ["done", "0"])
        self.assertEqual(self.ask("exec", "/bin/true"), "0")

    def test_a_socket_that_does_not_lead_to_the_helper_is_no_authorisation(self):
        ours, theirs = socket.socketpair(socket.AF_UNIX, socket.SOCK_SEQPACKET)
        pipe = os.pipe()
        for number in theirs.fileno(), FORGED.fileno(), pipe[0], 0, 1, 2, 77, -1, "", "x", "3 ", 1 << 40:
            with Program({"OSTREL_AUTHORIZATION": str(number)},
                         pass_fds=(theirs.fileno(), FORGED.fileno(), pipe[0])) as program:
                self.assertEqual(program.ask("authorized"), "no", number)
        ours.close()
        theirs.close()

    def test_without_the_socket_the_variable_says_nothing(self):
        with Program({"OSTREL_AUTHORIZATION": "5"}) as program:
            self.assertEqual(program.ask("authorized"), "no")


class RawRequests(unittest.TestCase):
    """What a client that has gone wrong might send."""

    def setUp(self):
        session.set_polkit_rule(ACTION, "YES")
        self.addCleanup(session.clear_polkit_rule)
        ours, theirs = socket.socketpair(socket.AF_UNIX, socket.SOCK_SEQPACKET)
        self.pkexec = subprocess.Popen(["/usr/bin/pkexec", "--disable-internal-agent", HELPER],
                                       stdin=theirs, stdout=subprocess.DEVNULL)
        theirs.close()
        greeting, descriptors, _, _ = socket.recv_fds(ours, 1000, 4)
        self.assertEqual(greeting, b"authorization-helper 1")
        self.requests = socket.socket(fileno=descriptors[0])
        ours.close()

    def tearDown(self):
        self.requests.close()
        self.assertEqual(self.pkexec.wait(60), 0)

    @staticmethod
    def encoded(*texts):
        return struct.pack("=I", len(texts)) + b"".join(struct.pack("=I", len(t)) + t for t in texts)

    def reply(self, packet, more=()):
        end, pipe = os.pipe()
        try:
            socket.send_fds(self.requests, [packet], [pipe, *more])
            os.close(pipe)
            return struct.unpack("=i", os.read(end, 4))[0]
        finally:
            os.close(end)

    def test_requests_that_are_none_are_refused_and_the_next_is_served(self):
        whole = self.encoded(b"/bin/true", b"x")
        bad = [whole[:n] for n in range(1, len(whole))] + [
            whole + b"x", self.encoded(b""), self.encoded(b"/bin/true", b"a\0b"), b"\xff" * 64,
            struct.pack("=II", 1, 0xffffffff), struct.pack("=I", 0xffffffff)]
        for packet in bad:
            self.assertEqual(self.reply(packet), 22, packet)  # EINVAL
        self.assertEqual(self.reply(whole), 0)

    def test_a_packet_that_is_too_long_is_refused(self):
        self.requests.setsockopt(socket.SOL_SOCKET, socket.SO_SNDBUF, 1 << 20)
        self.assertEqual(self.reply(self.encoded(b"/bin/true", b"x" * 140000)), 7)  # E2BIG
        self.assertEqual(self.reply(self.encoded(b"/bin/true")), 0)

    def test_only_pipes_are_written_to(self):
        path = f"{session.HOME}/file"
        with open(path, "w", encoding="utf-8") as file:
            self.assertEqual(self.reply(self.encoded(b"/bin/echo"), [file.fileno()]), 22)
            socket.send_fds(self.requests, [self.encoded(b"/bin/true")], [file.fileno()])
            self.assertEqual(self.reply(self.encoded()), 0)
        self.assertEqual(os.path.getsize(path), 0)

    def test_a_request_without_a_pipe_harms_nothing(self):
        self.requests.send(self.encoded(b"/bin/true"))
        self.assertEqual(self.reply(self.encoded()), 0)

    def test_a_client_that_does_not_wait_for_its_answer_harms_nothing(self):
        for _ in range(10):
            end, pipe = os.pipe()
            os.close(end)
            socket.send_fds(self.requests, [self.encoded(b"/bin/true")], [pipe])
            os.close(pipe)
        self.assertEqual(self.reply(self.encoded()), 0)

    def test_another_user_who_holds_the_socket_is_not_served(self):
        end, pipe = os.pipe()
        socket.send_fds(FOREIGNER, [self.encoded(b"/bin/true")], [self.requests.fileno(), pipe])
        os.close(pipe)
        self.assertEqual(struct.unpack("=i", os.read(end, 4))[0], 1)  # EPERM
        os.close(end)


# Another process, started by root: hands out a socket of root's that does not lead to the helper, then
# uses, as another user, the sockets that it gets.
OTHER = """
import os, socket, sys
channel = socket.socket(socket.AF_UNIX, socket.SOCK_SEQPACKET)
channel.connect(sys.argv[1])
forged, end = socket.socketpair(socket.AF_UNIX, socket.SOCK_SEQPACKET)
socket.send_fds(channel, [b"forged"], [forged.fileno()])
os.setgroups([])
os.setresgid(1001, 1001, 1001)
os.setresuid(1001, 1001, 1001)
while True:
    packet, descriptors, _, _ = socket.recv_fds(channel, 1000, 4)
    if not packet:
        break
    requests = socket.socket(fileno=descriptors[0])
    socket.send_fds(requests, [packet], descriptors[1:])
    requests.close()
    os.close(descriptors[1])
"""


def start_other():
    """Its socket and the forged one."""
    path = f"{session.HOME}/other"
    with socket.socket(socket.AF_UNIX, socket.SOCK_SEQPACKET) as listening:
        listening.bind(path)
        listening.listen()
        session.root(["sh", "-c", 'python3 -c "$0" "$1" </dev/null >/dev/null 2>&1 &', OTHER, path])
        channel, _ = listening.accept()
    _, descriptors, _, _ = socket.recv_fds(channel, 100, 1)
    return channel, socket.socket(fileno=descriptors[0])


FOREIGNER, FORGED = start_other()
unittest.main(verbosity=2)
