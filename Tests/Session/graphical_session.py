#!/usr/bin/python3
# SPDX-FileCopyrightText: 2026 Corvane
# SPDX-License-Identifier: MIT
"""Jobs start at log-in in the graphical session, with its display, and wait for it.

usage: graphical_session.py BUILD_FOLDER

Runs in desktop-session --install.
"""
import os
import sys

HERE = os.path.dirname(os.path.abspath(__file__))
sys.path[:0] = [f"{HERE}/../Support", f"{HERE}/../Commands"]
import jobs  # noqa: E402
import session  # noqa: E402
from jobs import launchctl, run, wait_until  # noqa: E402

LABEL = "com.corvane.OstrelListener"
UNIT = f"app-{LABEL}.service"
LOG_IN = "ostrel-log-in.service"
WAITS = "Waiting for the graphical session"


def shown(unit, name):
    return run("systemctl", "--user", "show", unit, f"--property={name}", "--value").stdout.strip()


def begin_session(kind, name, *command, options=()):
    """Logs the user in as kind of session, to run the command there; one in text is like one by ssh."""
    seat = [] if kind == "tty" else ["--setenv=XDG_SEAT=seat0"]
    session.root(["systemd-run", f"--unit={name}", "--uid=tester", "--property=PAMName=desktop-session",
                  "--property=TimeoutStopSec=5", f"--setenv=XDG_SESSION_TYPE={kind}",
                  "--setenv=XDG_SESSION_CLASS=user", *seat, *options, "--", *command])


def display(pid):
    """What the process has been told of its display."""
    with open(f"/proc/{pid}/environ") as file:
        variables = dict(entry.split("=", 1) for entry in file.read().split("\0") if entry)
    return {name: value for name, value in variables.items()
            if name in ("DISPLAY", "WAYLAND_DISPLAY", "XAUTHORITY")}


class GraphicalSession(jobs.JobTest):
    def setUp(self):
        made = jobs.write_job(LABEL, folder="/tmp/made", KeepAlive={"SuccessfulExit": False})
        self.path = jobs.job_file(LABEL)
        session.root(["install", "-D", "-o", "root", "-g", "root", "-m", "644", made, self.path])
        session.log_out()
        self.addCleanup(session.root, ["sh", "-c", "systemctl stop text wayland; rm -rf /tmp/made "
                                       "/home/tester/.config/sway; sed -i /^EXPORT=/d "
                                       "/run/desktop-session/settings; true"])

    def remove(self, path):
        session.root(["rm", path])

    def tearDown(self):
        if not os.path.exists(f"{session.RUNTIME}/session-environment"):
            session.root(["sh", "-c", "systemctl stop text wayland; true"])
            wait_until(lambda: not os.path.exists("/run/systemd/users/1000"), "the log-out")
            session.log_in()
        super().tearDown()

    def begin_text_session(self):
        """A session as by ssh, in which the job waits."""
        begin_session("tty", "text", "sleep", "infinity")
        wait_until(lambda: shown(LOG_IN, "StatusText") == WAITS, "the wait")
        details = self.details(LABEL)
        self.assertEqual((details["PID"], details["State"]), ("-", "waiting for the graphical session"))

    def test_at_log_in_a_job_has_the_desktops_display(self):
        session.log_in()
        self.assertEqual(display(self.pid(LABEL)), {"DISPLAY": ":0"})
        wait_until(lambda: shown(LOG_IN, "ActiveState") == "inactive", "the end of the wait")
        self.expect(launchctl("load", self.path), 1, f"launchctl: {LABEL}: already loaded\n")

    def test_in_a_text_session_a_job_waits_on_until_there_is_a_graphical_one(self):
        self.begin_text_session()
        # Another text session is no graphical one either.
        begin_session("tty", "text2", "true")
        wait_until(lambda: shown("default.target", "ActiveState") == "active", "the manager's start")
        self.assertEqual(run("systemctl", "--user", "is-system-running").stdout, "running\n")
        self.assertEqual(shown(LOG_IN, "ActiveState"), "active")
        self.assertEqual(shown(UNIT, "InactiveExitTimestampMonotonic"), "0")
        session.log_in()
        self.assertEqual(display(self.pid(LABEL)), {"DISPLAY": ":0"})

    def test_a_graphical_session_that_has_exported_nothing_yet_is_waited_for(self):
        begin_session("wayland", "wayland", "sleep", "infinity")
        wait_until(lambda: shown(LOG_IN, "StatusText") == WAITS, "the wait")
        self.expect(run("systemctl", "--user", "set-environment", "DISPLAY=:9"))  # not Wayland's
        self.assertEqual(self.details(LABEL)["State"], "waiting for the graphical session")
        self.expect(run("systemctl", "--user", "set-environment", "WAYLAND_DISPLAY=wayland-9",
                        "XAUTHORITY=/tmp/x"))
        self.assertEqual(display(self.pid(LABEL)), {
            "DISPLAY": ":9", "WAYLAND_DISPLAY": "wayland-9", "XAUTHORITY": "/tmp/x"})

    def test_load_starts_a_waiting_job_at_once(self):
        self.begin_text_session()
        self.load(self.path)
        pid = self.pid(LABEL)
        self.assertEqual(display(pid), {})
        session.log_in()
        wait_until(lambda: shown(LOG_IN, "ActiveState") == "inactive", "the end of the wait")
        self.assertEqual(self.pid(LABEL), pid)

    def test_a_waiting_job_that_is_unloaded_is_not_started(self):
        self.begin_text_session()
        self.expect(launchctl("unload", self.path))
        self.expect(launchctl("list", LABEL), 1, f"launchctl: {LABEL}: not loaded\n")
        session.log_in()
        wait_until(lambda: shown(LOG_IN, "ActiveState") == "inactive", "the end of the wait")
        self.assertEqual(shown(UNIT, "InactiveExitTimestampMonotonic"), "0")
        self.load(self.path)

    def test_under_a_manager_that_lingers_a_job_waits_and_load_starts_it(self):
        admin = ["runuser", "-u", "admin", "--", "env", "XDG_RUNTIME_DIR=/run/user/1001"]
        session.root(["loginctl", "enable-linger", "admin"])
        self.addCleanup(session.root, ["sh", "-c", "loginctl disable-linger admin; "
                                       "systemctl stop user@1001"])
        wait_until(lambda: session.root(
            [*admin, "systemctl", "--user", "show", LOG_IN, "--property=StatusText", "--value"],
            check=False).output.strip() == WAITS, "the wait")
        listed = session.root([*admin, jobs.LAUNCHCTL, "list"]).output
        self.assertEqual(listed, f"PID\tStatus\tLabel\n-\t0\t{LABEL}\n")
        session.root([*admin, jobs.LAUNCHCTL, "load", self.path])
        session.root(["pgrep", "--uid", "1001", "--exact", "sleep"])

    def test_a_display_that_the_desktop_exports_to_nobody_is_its_programs(self):
        session.root(["sh", "-c", "echo EXPORT= >>/run/desktop-session/settings"])
        session.log_in()
        self.assertEqual(display(self.pid(LABEL)), {"DISPLAY": ":0"})
        self.assertIn("DISPLAY=:0\n", run("systemctl", "--user", "show-environment").stdout)

    def test_load_finds_a_display_that_the_desktop_exports_to_nobody(self):
        session.root(["sh", "-c", f"echo EXPORT= >>/run/desktop-session/settings; mv {self.path} /tmp/made"])
        session.log_in()
        session.root(["mv", f"/tmp/made/{LABEL}.plist", self.path])
        self.load(self.path)
        self.assertEqual(display(self.pid(LABEL)), {"DISPLAY": ":0"})

    def test_in_sway_a_job_has_the_compositors_display(self):
        if not os.path.exists("/usr/bin/sway"):
            self.skipTest("sway is not installed")
        begin_session("wayland", "wayland", "env", "WLR_BACKENDS=headless", "WLR_RENDERER=pixman",
                      "WLR_LIBINPUT_NO_DEVICES=1", "LIBSEAT_BACKEND=noop", "sway")
        told = display(self.pid(LABEL))
        self.assertEqual(told.get("WAYLAND_DISPLAY"), "wayland-1", told)


if __name__ == "__main__":
    jobs.main()
