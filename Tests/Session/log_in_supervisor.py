#!/usr/bin/python3
# SPDX-FileCopyrightText: 2026 Corvane
# SPDX-License-Identifier: MIT
"""At log-in without a service manager: jobs wait for the graphical session and its display.

usage: log_in_supervisor.py BUILD_FOLDER

Runs in desktop-session --install --no-user-manager.
"""
import os

from graphical_session import LABEL, WAITS, begin_session, display, jobs, launchctl, session, wait_until

AUTOSTART = "/etc/xdg/autostart/com.corvane.Ostrel.jobs.desktop"


def without_display():
    return {name: value for name, value in os.environ.items() if name != "DISPLAY"}


class LogInSupervisor(jobs.JobTest):
    def setUp(self):
        self.path = jobs.write_job(LABEL, folder=jobs.own_folder(), KeepAlive={"SuccessfulExit": False})
        self.addCleanup(session.root, ["sh", "-c", "systemctl stop text; true"])

    def tearDown(self):
        if not os.path.exists(f"{session.RUNTIME}/session-environment"):
            session.log_in()
        super().tearDown()

    def test_in_a_text_session_the_jobs_wait_on_until_there_is_a_graphical_one(self):
        session.log_out()
        begin_session("tty", "text", jobs.LAUNCHCTL, "log-in", options=["--property=Type=notify"])
        self.assertEqual(session.root(["systemctl", "show", "text", "--property=StatusText",
                                       "--value"]).output, WAITS + "\n")
        self.expect(launchctl("list"), output="PID\tStatus\tLabel\n")
        session.log_in()
        # Its own environment had none: it is that of the session's programs.
        self.assertEqual(display(self.pid(LABEL)), {"DISPLAY": ":0"})

    def test_the_desktop_starts_the_jobs_once(self):
        for _ in range(2):
            session.user(["gio", "launch", AUTOSTART])
            pid = self.pid(LABEL)
            self.assertEqual(display(pid), {"DISPLAY": ":0"})
        self.assertEqual(jobs.processes("sleep").count(pid), 1)
        self.expect(launchctl("load", self.path), 1, f"launchctl: {LABEL}: already loaded\n")

    def test_a_supervisor_of_a_text_session_starts_on_the_desktop_what_is_loaded_there(self):
        session.log_out()
        begin_session("tty", "text", "sleep", "infinity")
        wait_until(lambda: os.path.isdir(session.RUNTIME), "the log-in")
        other = jobs.write_job("com.example.other", folder=jobs.own_folder())
        self.expect(launchctl("load", other, env=without_display()))
        self.assertEqual(display(self.pid("com.example.other")), {})
        session.log_in()
        self.load(self.path)
        self.assertEqual(display(self.pid(LABEL)), {"DISPLAY": ":0"})


jobs.main()
