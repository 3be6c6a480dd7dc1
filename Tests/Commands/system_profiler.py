#!/usr/bin/python3
# SPDX-FileCopyrightText: 2026 Corvane
# SPDX-License-Identifier: MIT
"""The list of network interfaces, asked for from outside; network namespaces of our own."""
import os
import plistlib
import shutil
import subprocess
import sys
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
    """Lists the interfaces of a network namespace of our own, real ones but for this: no namespace has a
    card. What makes "card" one is a folder in place of the kernel's, which says that it stands on a
    device."""
    CARD = {"_name": "Ethernet", "interface": "card", "Ethernet": {"MAC Address": "00:1b:21:00:00:01"}}
    MAKE_CARD = "ip link add card address 00:1b:21:00:00:01 type veth peer name cable || exit\n"

    def setUp(self):
        os.makedirs("/sys/class/net/card/device")
        self.addCleanup(shutil.rmtree, "/sys/class/net")

    def listed(self, script):
        """What is listed after the script; skips where the namespace or a kind is not to be had."""
        if run("unshare", "-rn", "true").returncode != 0:
            self.skipTest("no network namespace may be made here")
        result = run("unshare", "-rn", "/bin/sh", "-c", f'{self.MAKE_CARD}{script}\nexec "$@"', "sh", *ASKED)
        if b"Unknown device type" in result.stderr or b"No such file" in result.stderr:
            self.skipTest("the kernel has no such interface")
        self.assertEqual((result.returncode, result.stderr), (0, b""))
        return items(result.stdout)

    def named(self, name, interface, address="00:1b:21:00:00:01"):
        return {"_name": name, "interface": interface, "Ethernet": {"MAC Address": address}}

    def test_a_card_is_listed(self):
        self.assertEqual(self.listed(""), [self.CARD])

    def test_cards_are_sorted_as_people_count(self):
        made = ""
        for number in 10, 2:
            os.makedirs(f"/sys/class/net/eth{number}/device")
            made += (f"ip link add eth{number} address 00:1b:21:00:01:{number:02x} type veth"
                     f" peer name e{number} || exit\n")
        self.assertEqual([item["interface"] for item in self.listed(made)], ["card", "eth2", "eth10"])

    def test_a_card_of_an_address_made_up_by_the_kernel_is_left_out(self):
        with open("/sys/class/net/card/addr_assign_type", "w") as file:
            file.write("1\n")
        self.assertEqual(self.listed(""), [])

    def test_a_wireless_card_is_called_so(self):
        os.mkdir("/sys/class/net/card/phy80211")
        self.assertEqual(self.listed(""), [self.named("Wi-Fi", "card")])

    def test_a_pair_is_left_out(self):
        self.assertEqual(self.listed("ip link add veth0 type veth peer name veth1 || exit"), [self.CARD])

    def test_a_bridge_without_a_card_is_left_out(self):
        self.assertEqual(self.listed("ip link add docker0 type bridge || exit\n"
                                     "ip link add v type veth peer name w || exit\n"
                                     "ip link set v master docker0 || exit\n"
                                     "ip address add 192.0.2.1/24 dev docker0 || exit"), [self.CARD])

    def test_a_bridge_is_listed_in_place_of_its_card(self):
        script = ("ip link add br0 address 00:1b:21:00:00:02 type bridge || exit\n"
                  "ip link set card master br0 || exit\n")
        bridge = self.named("Bridge", "br0", "00:1b:21:00:00:02")
        self.assertEqual(self.listed(script), [bridge])
        self.assertEqual(self.listed(script + "ip address add 192.0.2.1/24 dev br0 || exit"), [bridge])
        self.assertEqual(self.listed(script + "ip link set card nomaster || exit"), [self.CARD])

    def test_a_bond_is_listed_in_place_of_its_card(self):
        self.assertEqual(self.listed("ip link add bond0 type bond || exit\n"
                                     "ip link set card down master bond0 || exit"),
                         [self.named("Bond", "bond0")])

    def test_a_vlan_is_listed_in_place_of_its_card_where_it_carries_the_address(self):
        script = "ip link set card up\nip link add link card name card.10 type vlan id 10 || exit\n"
        upper = script + "ip address add 2001:db8::1/64 dev card.10 || exit\n"
        vlan = self.named("VLAN", "card.10")
        self.assertEqual(self.listed(script), [self.CARD])
        self.assertEqual(self.listed(upper), [vlan])
        self.assertEqual(self.listed(upper + "ip address add 192.0.2.1/24 dev card || exit"),
                         [self.CARD, vlan])

    def test_a_dummy_is_left_out(self):
        self.assertEqual(self.listed("ip link add dummy0 type dummy || exit"), [self.CARD])

    def test_a_tunnel_is_left_out(self):
        self.assertEqual(self.listed("ip tuntap add tap0 mode tap || exit"), [self.CARD])

    def test_a_virtual_one_with_a_chosen_address_is_left_out(self):
        self.assertEqual(self.listed("ip link add name x address 00:1b:21:00:00:03 type veth"
                                     " peer name y address 00:1b:21:00:00:04 || exit"), [self.CARD])

    def test_hostile_names_do_no_harm(self):
        hostile = [b"<&\">", b"]]>", b"$(x)", b"\xff\x1b[1m"]
        for name in hostile:
            os.makedirs(b"/sys/class/net/" + name + b"/device")
        found = self.listed("ip link add '<&\">' type veth peer name ']]>' || exit\n"
                            "ip link add name \"$(printf '\\377\\033[1m')\""
                            " type veth peer name '$(x)' || exit")
        self.assertEqual({item["interface"] for item in found},
                         {"card", "<&\">", "]]>", "$(x)", "\ufffd\ufffd[1m"})

    def test_five_hundred_are_read(self):
        for number in range(250):
            os.makedirs(f"/sys/class/net/a{number}/device")
        found = self.listed("for n in $(seq 0 249); do echo link add a$n type veth peer name b$n; done"
                            " | ip -batch - || exit")
        self.assertEqual([item["interface"] for item in found],
                         [f"a{number}" for number in range(250)] + ["card"])


class Libraries(unittest.TestCase):
    def test_it_loads_no_library_of_the_desktop(self):
        self.assertNotIn(b"Qt", run("ldd", PROFILER).stdout)


if __name__ == "__main__":
    os.chdir("/tmp")
    unittest.main(argv=sys.argv[:1])
