#!/usr/bin/python3
# SPDX-FileCopyrightText: 2026 Corvane
# SPDX-License-Identifier: MIT
"""A first start with the password accepted, and the stop."""
import os
import time

from pane import (Pane, agent, authentications, cgroup, check_gone, check_job_file, copy_bundle, expect,
                  helpers, listener, listener_path, listeners, play, session, slow_listener, unit,
                  wait_until)


def scene():
    copy_bundle()
    slow_listener()
    pane = Pane(status="Not loaded")
    expect(not pane.is_on() and not listeners(), "nothing runs at first")
    pane.picture("1-opened")
    pane.forget_words()

    pane.slide()
    agent.wait_for_dialog()
    expect(not pane.is_enabled(), "the switch cannot be used meanwhile")
    expect(set(pane.words()) <= {"Timed out", "Not loaded"},
           f"no progress is shown before the password is given: {pane.words()}")
    pane.picture("2-password")
    agent.give_password(session.ADMINISTRATOR_PASSWORD)
    pane.wait_to_hear("Creating job...")
    expect(pane.is_working(), "the spinner turns")
    pane.picture("3-creating-job")
    pane.wait_to_hear("Launching service...")
    pane.wait_for("Running")
    pane.settled(on=True)
    pane.picture("4-running")
    words = pane.words()
    expect(words[words.index("Creating job..."):] ==
           ["Creating job...", "Launching service...", "Running"], f"these words were shown: {words}")
    check_job_file()
    pid = listener()
    expect(os.readlink(f"/proc/{pid}/exe").startswith(os.path.dirname(listener_path())),
           "the bundle's listener runs")
    expect(os.readlink(f"/proc/{pid}/cwd") == os.path.dirname(listener_path()), "in its folder")
    expect(cgroup(pid).endswith(f"/user@{session.USER}.service/app.slice/app-com.corvane.OstrelListener.service"),
           f"the user's manager keeps the listener: {cgroup(pid)}")
    expect(unit("MainPID") == str(pid) and unit("ActiveState") == "active", "the unit knows it")
    expect(authentications() == 1, "the password was asked once")

    pane.forget_words()
    began = time.monotonic()
    pane.slide()
    pane.wait_to_hear("Disconnected")
    expect(pane.is_working() and not pane.is_enabled(), "the spinner turns, the switch waits")
    pane.picture("5-disconnected")
    pane.wait_for("Not loaded")
    expect(time.monotonic() - began >= 2, "the listener has two seconds to say good-bye")
    pane.settled(on=False)
    check_gone()
    pane.picture("6-stopped")
    # The listener's "Disconnected" follows at once on "Disconnecting...".
    expect(pane.words()[-3:] == ["Disconnected", "Unloading job...", "Not loaded"] and
           set(pane.words()[:-3]) <= {"Disconnecting..."}, f"these words were shown: {pane.words()}")
    expect(unit("ActiveState") == "inactive", "the job is unloaded")
    session.user(["systemctl", "--user", "daemon-reload"])
    expect(unit("LoadState") == "not-found", "the manager does not find the job again")
    expect(authentications() == 1, "the password was not asked again")
    pane.close()
    wait_until(lambda: not helpers(), "the authorisation to end with the pane")


play(scene)
