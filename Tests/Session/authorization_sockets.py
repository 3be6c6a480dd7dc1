#!/usr/bin/python3
# SPDX-FileCopyrightText: 2026 Corvane
# SPDX-License-Identifier: MIT
"""The socket of the authorisation helper in other hands than those that it was opened for.

usage: authorization_sockets.py PROGRAM      (in desktop-session --no-agent --install)
"""
import os
import signal
import socket
import struct
import subprocess
import sys
import unittest

from authorization_program import (ACTION, HELPER, Program, WithPassword, console, exists, helpers, session,
                                   wait_until)


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

    def test_a_child_cannot_hand_down_what_it_was_handed(self):
        self.program.send("hand-down", "hand-down", "authorized")
        self.assertEqual([self.program.answer() for _ in range(3)], ["no", "0", "0"])
        wait_until(lambda: "Unable to hand the authorisation down: Operation not permitted" in
                   session.journal(f"_UID={session.USER}"), "the words")

    def test_a_socket_that_does_not_lead_to_the_helper_is_no_authorisation(self):
        ours, theirs = socket.socketpair(socket.AF_UNIX, socket.SOCK_SEQPACKET)
        pipe = os.pipe()
        for number in theirs.fileno(), FORGED.fileno(), pipe[0], 0, 1, 2, 77, -1, "", "x", "3 ", 1 << 40:
            with Program({"CORVANE_AUTHORIZATION": str(number)},
                         pass_fds=(theirs.fileno(), FORGED.fileno(), pipe[0])) as program:
                self.assertEqual(program.ask("authorized"), "no", number)
        ours.close()
        theirs.close()

    def test_without_the_socket_the_variable_says_nothing(self):
        with Program({"CORVANE_AUTHORIZATION": "5"}) as program:
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
        self.assertEqual(greeting, b"authorization-helper 2")
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

    def test_an_empty_packet_ends_nothing(self):
        self.requests.send(b"")
        end, pipe = os.pipe()
        socket.send_fds(self.requests, [b""], [pipe])
        os.close(pipe)
        os.close(end)
        self.assertEqual(self.reply(self.encoded()), 0)

    def test_what_nobody_waits_for_is_not_started(self):
        request = self.encoded(b"/bin/touch", b"/Library/unawaited")
        self.requests.send(request)
        for _ in range(10):
            end, pipe = os.pipe()
            os.close(end)
            socket.send_fds(self.requests, [request], [pipe])
            os.close(pipe)
        self.assertEqual(self.run_tool(b"/bin/true"), "")
        self.assertFalse(exists("/Library/unawaited"))

    def run_tool(self, *words):
        """Returns its output when it has ended."""
        end, pipe = os.pipe()
        self.assertEqual(self.reply(self.encoded(*words), [pipe]), 0)
        os.close(pipe)
        with open(end, encoding="utf-8") as output:
            return output.read()

    def test_another_user_who_holds_the_socket_is_not_served(self):
        end, pipe = os.pipe()
        socket.send_fds(FOREIGNER, [self.encoded(b"/bin/true")], [self.requests.fileno(), pipe])
        os.close(pipe)
        self.assertEqual(struct.unpack("=i", os.read(end, 4))[0], 1)  # EPERM
        os.close(end)


    def in_another_process(self, code, *arguments, start=("python3", "-c")):
        """What a process of the same user answers that gets the socket in this way."""
        run = subprocess.run([*start, SENDER + code, str(self.requests.fileno()), *map(str, arguments)],
                             pass_fds=[self.requests.fileno()], capture_output=True, text=True)
        self.assertEqual(run.returncode, 0, run.stderr)
        return run.stdout.strip()

    def test_who_takes_the_socket_out_of_the_process_is_refused(self):
        self.assertEqual(self.in_another_process(THIEF, os.getpid()), "1")  # EPERM
        self.assertFalse(exists("/Library/stolen"))
        self.assertEqual(self.reply(self.encoded(b"/bin/true")), 0)
        wait_until(lambda: "of user 1000, which is not the one that asked" in
                   session.journal("--identifier=ostrel-authorization-helper"), "the line")

    def test_a_child_that_was_not_named_is_refused(self):
        self.assertEqual(self.in_another_process("print(send(inherited))"), "1")
        self.assertFalse(exists("/Library/stolen"))

    def test_the_sender_cannot_be_forged(self):
        forge = "print(send(inherited, (int(sys.argv[2]), os.getuid(), os.getgid())))"
        for start in ("python3", "-c"), ("unshare", "--user", "--map-root-user", "python3", "-c"):
            self.assertEqual(self.in_another_process(forge, os.getpid(), start=start), "forbidden")
        self.assertFalse(exists("/Library/stolen"))

    def test_a_child_that_is_named_is_served_and_names_nobody(self):
        with subprocess.Popen(["python3", "-c", SENDER + CHILD, str(self.requests.fileno())],
                              pass_fds=[self.requests.fileno()], stdin=subprocess.PIPE,
                              stdout=subprocess.PIPE, text=True) as child:
            process = os.pidfd_open(child.pid)
            self.assertEqual(self.reply(self.encoded(), [process]), 0)
            output, _ = child.communicate("go\n")
            self.assertEqual(output, "0\n1\n")
        wait_until(lambda: exists("/Library/stolen"), "the file of the tool that was asked for")
        session.root(["rm", "/Library/stolen"])
        self.assertEqual(self.reply(self.encoded(), [process]), 22)  # it has ended
        os.close(process)

    def test_only_children_can_be_named(self):
        grandchild = int(subprocess.run(["sh", "-c", "sleep 1000 >/dev/null & echo $!"],
                                        stdout=subprocess.PIPE, check=True).stdout)
        self.addCleanup(os.kill, grandchild, signal.SIGKILL)
        for process in 1, grandchild, os.getpid():
            descriptor = os.pidfd_open(process)
            self.assertEqual(self.reply(self.encoded(), [descriptor]), 1)
            os.close(descriptor)
        self.assertEqual(self.reply(self.encoded(), [0]), 22)

    def test_only_the_process_that_made_the_socket_is_served(self):
        ours, theirs = socket.socketpair(socket.AF_UNIX, socket.SOCK_SEQPACKET)
        with subprocess.Popen(["sh", "-c", f"pkexec --disable-internal-agent {HELPER}; exit $?"],
                              stdin=theirs, stderr=subprocess.PIPE, text=True) as other:
            theirs.close()
            self.assertEqual(ours.recv(100), b"")
            self.assertIn("can only be started by pkexec", other.stderr.read())
        ours.close()

    def test_half_a_connection_is_none(self):
        # Otherwise the helper would be told of its end again and again, and do nothing else.
        self.requests.shutdown(socket.SHUT_WR)
        self.assertEqual(self.pkexec.wait(60), 0)

    def test_the_helper_ends_with_the_process_that_asked_whoever_holds_the_socket(self):
        with subprocess.Popen([sys.executable, "-c", STARTER, HELPER], stdout=subprocess.PIPE,
                              text=True) as starter:
            holder = int(starter.stdout.readline())
        self.addCleanup(os.kill, holder, signal.SIGKILL)
        wait_until(lambda: len(helpers()) == 1, "the other helper to end")
        os.kill(holder, 0)


class StoppedHelper(WithPassword):
    def test_a_helper_that_does_not_answer_holds_nobody_up(self):
        session.root(["kill", "-STOP", *helpers()])
        self.addCleanup(session.root, ["sh", "-c", f"pkill -CONT -f ^{HELPER} || true"])
        self.assertEqual(self.ask("exec", "/bin/touch", "/Library/late"), "-60008")
        wait_until(lambda: "the authorisation helper does not answer" in console(), "the words")
        self.assertEqual(self.ask("authorized"), "no")
        session.root(["kill", "-CONT", *helpers()])
        self.ask("end")
        wait_until(lambda: not helpers(), "the helper to end")
        self.assertFalse(exists("/Library/late"))


# Sends a request that leaves a trace, and returns the helper's answer.
SENDER = """
import ctypes, os, socket, struct, sys
inherited = int(sys.argv[1])
def send(number, sender=None, packet=None, more=()):
    end, pipe = os.pipe()
    words = [b"/bin/touch", b"/Library/stolen"]
    packet = packet or struct.pack("=I", 2) + b"".join(struct.pack("=I", len(w)) + w for w in words)
    ancillary = [(socket.SOL_SOCKET, socket.SCM_RIGHTS, struct.pack("=%di" % (1 + len(more)), pipe, *more))]
    if sender:
        ancillary.append((socket.SOL_SOCKET, socket.SCM_CREDENTIALS, struct.pack("=3i", *sender)))
    try:
        socket.socket(fileno=os.dup(number)).sendmsg([packet], ancillary)
    except PermissionError:
        return "forbidden"
    os.close(pipe)
    return struct.unpack("=i", os.read(end, 4))[0]
"""

THIEF = """
pidfd_getfd = 438
taken = ctypes.CDLL(None).syscall(pidfd_getfd, os.pidfd_open(int(sys.argv[2])), inherited, 0)
assert taken >= 0
print(send(taken))
"""

CHILD = """
sys.stdin.readline()
print(send(inherited))
child = os.fork()
if child == 0:
    sys.stdin.read()
    os._exit(0)
print(send(inherited, packet=struct.pack("=I", 0), more=[os.pidfd_open(child)]))
"""

# Has the helper started, leaves the socket to another process and ends.
STARTER = """
import socket, subprocess, sys
ours, theirs = socket.socketpair(socket.AF_UNIX, socket.SOCK_SEQPACKET)
subprocess.Popen(["/usr/bin/pkexec", "--disable-internal-agent", sys.argv[1]], stdin=theirs)
theirs.close()
_, descriptors, _, _ = socket.recv_fds(ours, 1000, 4)
print(subprocess.Popen(["sleep", "1000"], pass_fds=descriptors, stdout=subprocess.DEVNULL).pid, flush=True)
"""

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
