#!/usr/bin/python3
# SPDX-FileCopyrightText: 2026 Corvane
# SPDX-License-Identifier: MIT
"""The network cards of this computer, against the kernel's own files. Reads only."""
import os
import plistlib
import subprocess
import sys

PROFILER = f"{sys.argv[1]}/libexec/ostrel/system_profiler"
FOLDER = "/sys/class/net"
SKIPPED = 77


def read(name, file):
    with open(f"{FOLDER}/{name}/{file}") as text:
        return text.read().strip()


def profile():
    output = subprocess.run([PROFILER, "SPNetworkDataType", "-xml"], check=True, capture_output=True,
                            timeout=300).stdout
    return plistlib.loads(output)[0]["_items"]


names = os.listdir(FOLDER) if os.path.isdir(FOLDER) else []
cards = [name for name in names if os.path.exists(f"{FOLDER}/{name}/device")
         and read(name, "type") == "1" and read(name, "addr_assign_type") == "0"
         and not os.path.exists(f"{FOLDER}/{name}/master")
         and not any(other.startswith("upper_") for other in os.listdir(f"{FOLDER}/{name}"))]
stacked = [name for name in names if any(other.startswith("lower_") and
                                         os.path.exists(f"{FOLDER}/{other[6:]}/device")
                                         for other in os.listdir(f"{FOLDER}/{name}"))]
found = profile()
listed = {item["interface"]: item for item in found}
for name in names:
    if not os.path.exists(f"{FOLDER}/{name}/device") and name not in stacked:
        assert name not in listed, f"{name} is virtual"
if not cards:
    print("This computer has no network card.")
    sys.exit(SKIPPED)
for name in cards:
    item = listed[name]
    assert item["Ethernet"]["MAC Address"] == read(name, "address"), (name, item)
    assert item["_name"], item
    assert set(item) == {"_name", "interface", "Ethernet"}, item
assert profile() == found, "the order is the same every time"
