#!/usr/bin/python3
# SPDX-FileCopyrightText: 2026 Corvane
# SPDX-License-Identifier: MIT
"""The list of network interfaces, asked for from outside; network namespaces of our own."""
import os
import plistlib
import subprocess
import sys
import time
import unittest

BUILD = sys.argv[1] if len(sys.argv) > 1 else "."
PROFILER = f"{BUILD}/libexec/ostrel/system_profiler"
ASKED = (PROFILER, "SPNetworkDataType", "-xml")
PATIENCE = 180


def run(*command, **options):
    options.setdefault("stdout", subprocess.PIPE)
    return subprocess.run(command, stdin=subprocess.DEVNULL, stderr=subprocess.PIPE,
                          timeout=PATIENCE, **options)


def items(output):
    """What the profiler lists."""
    output.decode("ascii")
    (document,) = plistlib.loads(output)
    assert document["_dataType"] == "SPNetworkDataType", document
    return document["_items"]


class Use(unittest.TestCase):
    def test_the_loopback_alone_is_an_empty_list(self):
        result = run(*ASKED)
        self.assertEqual((result.returncode, result.stderr), (0, b""))
        self.assertEqual(items(result.stdout), [])

    def test_the_order_of_the_arguments_does_not_matter(self):
        self.assertEqual(run(PROFILER, "-xml", "SPNetworkDataType").stdout, run(*ASKED).stdout)

    def test_what_can_be_told_is_listed(self):
        result = run(PROFILER, "-listDataTypes")
        self.assertEqual((result.returncode, result.stdout), (0, b"SPNetworkDataType\n"))

    def test_usage(self):
        for option in "-usage", "--help", "-h":
            result = run(PROFILER, option)
            self.assertEqual((result.returncode, result.stderr), (0, b""))
            self.assertTrue(result.stdout.startswith(b"usage: "))

    def test_what_it_does_not_know_is_refused_with_a_reason(self):
        for argument, words in (("SPUSBDataType", b'unknown data type "SPUSBDataType"'),
                                ("-json", b'unknown option "-json"'),
                                ("", b'unknown data type ""'),
                                (b"\xff\x1b[1m", b'unknown data type "&#65533;&#65533;[1m"')):
            result = run(PROFILER, "SPNetworkDataType", "-xml", argument)
            self.assertEqual((result.returncode, result.stdout), (2, b""))
            self.assertIn(words, result.stderr)
            self.assertIn(b"usage: ", result.stderr)

    def test_half_a_question_shows_the_usage(self):
        for arguments in (), ("-xml",), ("SPNetworkDataType",):
            result = run(PROFILER, *arguments)
            self.assertEqual((result.returncode, result.stdout), (2, b""))
            self.assertTrue(result.stderr.startswith(b"usage: "))

    def test_output_that_cannot_be_written_is_an_error(self):
        with open("/dev/full", "wb") as full:
            result = run(*ASKED, stdout=full)
        self.assertEqual(result.returncode, 1)
        self.assertIn(b"No space left on device", result.stderr)

    def test_descriptors_that_run_out_are_an_error(self):
        result = run("/bin/sh", "-c", 'ulimit -n 3; exec "$@"', "sh",
                     "/usr/bin/env", *ASKED)
        self.assertNotEqual(result.returncode, 0)
        self.assertEqual(result.stdout, b"")
        self.assertNotEqual(result.stderr, b"")


class Namespace(unittest.TestCase):
    """Makes interfaces in a network namespace where the system lets us, and lists them there."""

    def listed(self, script):
        """What is listed after the script; skips where the namespace or a kind is not to be had."""
        if run("unshare", "-rn", "true").returncode != 0:
            self.skipTest("no network namespace may be made here")
        result = run("unshare", "-rn", "/bin/sh", "-c", f'{script}\nexec "$@"', "sh", *ASKED)
        if b"Unknown device type" in result.stderr or b"No such file" in result.stderr:
            self.skipTest("the kernel has no such interface")
        self.assertEqual((result.returncode, result.stderr), (0, b""))
        return items(result.stdout)

    def test_a_pair_is_left_out(self):
        self.assertEqual(self.listed("ip link add veth0 type veth peer name veth1 || exit"), [])

    def test_a_bridge_is_left_out(self):
        self.assertEqual(self.listed("ip link add docker0 type bridge || exit"), [])

    def test_a_dummy_is_left_out(self):
        self.assertEqual(self.listed("ip link add dummy0 type dummy || exit"), [])

    def test_a_tunnel_is_left_out(self):
        self.assertEqual(self.listed("ip tuntap add tap0 mode tap || exit"), [])

    def test_a_virtual_one_with_a_chosen_address_is_left_out(self):
        self.assertEqual(self.listed("ip link add name x address 00:1b:21:00:00:01 type veth"
                                     " peer name y address 00:1b:21:00:00:02 || exit"), [])

    def test_hostile_names_do_no_harm(self):
        self.assertEqual(self.listed("ip link add '<&\">' type veth peer name ']]>' || exit\n"
                                     "ip link add name \"$(printf '\\377\\033[1m')\""
                                     " type veth peer name '$(x)' || exit"), [])

    def test_five_hundred_are_read_in_a_moment(self):
        script = ("for n in $(seq 250); do echo link add a$n type veth peer name b$n; done"
                  " | ip -batch - || exit")
        self.assertEqual(self.listed(script), [])


class Speed(unittest.TestCase):
    def test_it_takes_a_moment(self):
        best = PATIENCE
        for _ in range(20):
            start = time.monotonic()
            run(*ASKED)
            best = min(best, time.monotonic() - start)
        libraries = run("ldd", PROFILER).stdout
        sanitized = b"libasan" in libraries or b"libtsan" in libraries
        self.assertLess(best, 1 if sanitized else 0.05)

    def test_it_loads_no_library_of_the_desktop(self):
        self.assertNotIn(b"Qt", run("ldd", PROFILER).stdout)


if __name__ == "__main__":
    os.chdir("/tmp")
    unittest.main(argv=sys.argv[:1])
