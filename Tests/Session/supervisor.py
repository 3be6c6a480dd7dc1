#!/usr/bin/python3
# SPDX-FileCopyrightText: 2026 Corvane
# SPDX-License-Identifier: MIT
"""Without a service manager for users, our own supervisor keeps the listener."""
import time

from pane import (Pane, agent, check_gone, check_job_file, copy_bundle, expect, listener, listeners, play,
                  send, session, turn_on, wait_until)


def supervisors():
    return session.root(["pgrep", "-f", "^/[^ ]*/job-supervisor"], check=False).output.split()


def parent(pid):
    with open(f"/proc/{pid}/stat", encoding="utf-8") as file:
        return file.read().rpartition(")")[2].split()[1]


def scene():
    expect(session.user(["systemctl", "--user", "is-system-running"], check=False).status != 0,
           "there is no user manager")
    copy_bundle()
    pane = Pane(status="Not loaded")
    turn_on(pane)
    check_job_file()
    first = listener()
    expect(supervisors() == [parent(first)], f"the supervisor keeps the listener: {supervisors()}")
    pane.picture("1-running")
    pane.close()
    expect(listener() == first, "it runs on without the pane")

    send(first, "SIGSEGV")
    began = time.monotonic()
    wait_until(lambda: listeners() and first not in listeners(), "the listener to come back")
    print(f"back {time.monotonic() - began:.1f} s after the crash")

    pane = Pane(status="Running")
    pane.slide()
    agent.give_password(session.ADMINISTRATOR_PASSWORD)
    pane.settled(on=False)
    check_gone()
    wait_until(lambda: not supervisors(), "the supervisor to end with its last job")
    pane.picture("2-stopped")
    pane.close()


play(scene)
