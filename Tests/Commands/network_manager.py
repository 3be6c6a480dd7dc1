#!/usr/bin/python3
# SPDX-FileCopyrightText: 2026 Corvane
# SPDX-License-Identifier: MIT
"""Answers on the system bus as NetworkManager does, or as it should not."""
import sys

from gi.repository import Gio, GLib

NAME = "org.freedesktop.NetworkManager"
ROOT = "/org/freedesktop/NetworkManager"
BEHAVIOUR = sys.argv[1]
DESCRIPTION = Gio.DBusNodeInfo.new_for_xml("""
<node><interface name="org.freedesktop.DBus.ObjectManager">
  <method name="GetManagedObjects"><arg type="%s" direction="out"/></method>
</interface></node>""" % ("as" if BEHAVIOUR == "babble" else "a{oa{sa{sv}}}"))


def device(interface, connection):
    return {NAME + ".Device": {"Interface": GLib.Variant("s", interface),
                               "ActiveConnection": GLib.Variant("o", connection),
                               "State": GLib.Variant("u", 100)},
            NAME + ".Device.Wired": {"Interface": GLib.Variant("s", "not this")}}


def connection(name):
    return {NAME + ".Connection.Active": {"Id": GLib.Variant("s", name),
                                          "Devices": GLib.Variant("ao", [])},
            NAME + ".IP4Config": {"Id": GLib.Variant("s", "nor this")}}


def few():
    return {ROOT: {NAME: {"Version": GLib.Variant("s", "1.42.4")}},
            ROOT + "/Devices/1": device("eth0", ROOT + "/ActiveConnection/2"),
            ROOT + "/Devices/2": device("wlan0", ROOT + "/ActiveConnection/1"),
            ROOT + "/Devices/3": device("eth1", "/"),
            ROOT + "/Devices/4": device("br0", ROOT + "/ActiveConnection/9"),
            ROOT + "/Devices/5": device("eth2", ROOT + "/ActiveConnection/3"),
            ROOT + "/Devices/6": {NAME + ".Device": {"Interface": GLib.Variant("u", 7)}},
            ROOT + "/ActiveConnection/1": connection("Home"),
            ROOT + "/ActiveConnection/2": connection("Büro & <Labor>"),
            ROOT + "/ActiveConnection/3": connection("")}


def many():
    objects = {}
    for number in range(500):
        path = f"{ROOT}/ActiveConnection/{number}"
        objects[f"{ROOT}/Devices/{number}"] = device(f"eth{number}", path)
        objects[path] = connection(f"Wired connection {number}")
    return objects


def answer(_bus, _sender, _path, _interface, _method, _arguments, invocation):
    if BEHAVIOUR == "refuse":
        invocation.return_dbus_error("org.freedesktop.DBus.Error.AccessDenied", "no")
    elif BEHAVIOUR == "babble":
        invocation.return_value(GLib.Variant("(as)", (["eth0", "Home"],)))
    elif BEHAVIOUR != "wait":
        objects = many() if BEHAVIOUR == "many" else few()
        invocation.return_value(GLib.Variant("(a{oa{sa{sv}}})", (objects,)))


def main():
    bus = Gio.DBusConnection.new_for_address_sync(
        "unix:path=/run/dbus/system_bus_socket",
        Gio.DBusConnectionFlags.AUTHENTICATION_CLIENT
        | Gio.DBusConnectionFlags.MESSAGE_BUS_CONNECTION)
    bus.register_object("/org/freedesktop", DESCRIPTION.interfaces[0], answer)
    Gio.bus_own_name_on_connection(bus, NAME, Gio.BusNameOwnerFlags.NONE,
                                   lambda *_: print("ready", flush=True), None)
    GLib.MainLoop().run()


main()
