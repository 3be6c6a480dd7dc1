#!/usr/bin/python3
# SPDX-FileCopyrightText: 2026 Corvane
# SPDX-License-Identifier: MIT
"""Checks that the private machine of desktop-session is what the scenes take it for.

usage: self_test.py PICTURE_FOLDER

Runs in desktop-session.
"""
import os
import subprocess
import sys

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), "../Support"))
import agent  # noqa: E402
import desktop  # noqa: E402
import session  # noqa: E402

PKEXEC = "org.freedesktop.policykit.exec"


def expect(condition, what):
    if not condition:
        raise AssertionError(f"not so: {what}")


def polkit_answer(action):
    """0 yes, 1 no, 2 with a password."""
    return session.user(["pkcheck", "--action-id", action, "--process", str(os.getpid())],
                        check=False).status


def user_processes():
    found = session.root(["pgrep", "--uid", str(session.USER)], check=False).output.split()
    return {int(pid) for pid in found} - {os.getpid()}


def check_accounts():
    expect(session.user(["id", "-un"]).output == "tester\n", "commands run as the user")
    expect("sudo" not in session.user(["id", "-Gn"]).output, "the user is no administrator")
    expect(session.root(["id", "-u"]).output == "0\n", "the other process is root")
    failed = session.user(["touch", "/Library/x"], check=False)
    expect(failed.status != 0, "the user cannot write to /Library")


def check_session():
    details = session.user(["loginctl", "show-session", os.environ["XDG_SESSION_ID"]]).output
    for line in "Active=yes", "State=active", "Seat=seat0", "Remote=no", "Name=tester":
        expect(line in details.split(), f"the session has {line}: {details}")
    for bus in "--system", "--session":
        session.user(["gdbus", "call", bus, "--dest", "org.freedesktop.DBus", "--object-path",
                      "/org/freedesktop/DBus", "--method", "org.freedesktop.DBus.GetId"])


def check_manager():
    expect(session.user(["systemctl", "--user", "is-system-running"]).output == "running\n",
           "the user manager runs")
    run = session.user(["systemd-run", "--user", "--wait", "--pipe", "--collect",
                        "cat", "/proc/self/cgroup"])
    expect("/user@1000.service/app.slice/run-" in run.output, f"units get a cgroup: {run.output}")


def check_polkit():
    # What this action allows at once is allowed to active local sessions alone.
    expect(polkit_answer("org.freedesktop.login1.reboot") == 0, "the session counts as active")
    expect(polkit_answer(PKEXEC) == 2, "pkexec asks for a password")
    session.set_polkit_rule(PKEXEC, "YES")
    expect(polkit_answer(PKEXEC) == 0, "a rule says yes")
    expect(session.user(["pkexec", "id", "-u"]).output == "0\n", "pkexec needs no password then")
    session.set_polkit_rule(PKEXEC, "NO")
    expect(polkit_answer(PKEXEC) == 1, "a rule says no")
    session.clear_polkit_rule()
    expect(polkit_answer(PKEXEC) == 2, "without the rule pkexec asks again")


def check_agent(picture):
    asked = subprocess.Popen(["pkexec", "id", "-u"], stdout=subprocess.PIPE, text=True)
    agent.wait_for_dialog()
    desktop.screenshot(picture)
    agent.give_password(session.ADMINISTRATOR_PASSWORD)
    output = asked.communicate(timeout=desktop.PATIENCE)[0]
    expect((asked.returncode, output) == (0, "0\n"), "pkexec runs after the right password")

    asked = subprocess.Popen(["pkexec", "id", "-u"], stdout=subprocess.PIPE,
                             stderr=subprocess.DEVNULL, text=True)
    agent.cancel()
    output = asked.communicate(timeout=desktop.PATIENCE)[0]
    # 126 when the agent calls it a dismissal, 127 when it says that nothing was gained.
    expect(asked.returncode in (126, 127) and output == "", "pkexec does nothing after a refusal")


def check_leaving_and_coming_back():
    first = os.environ["XDG_SESSION_ID"]
    session.user(["systemd-run", "--user", "--collect", "sleep", "1000"])
    expect(len(user_processes()) > 3, "the desktop's processes run")
    session.log_out()
    expect(not user_processes(), f"nothing runs after the log-out: {user_processes()}")
    expect(not os.path.exists(session.RUNTIME), "the runtime folder is gone")
    session.log_in()
    expect(os.environ["XDG_SESSION_ID"] != first, "the session is a new one")


def main():
    pictures, *part = sys.argv[1:]
    check_accounts()
    check_session()
    check_manager()
    check_polkit()
    check_agent(f"{pictures}/password-dialog.png")
    if not part:
        check_leaving_and_coming_back()
        session.again(pictures, "after the log-in")
    print("The machine is what it should be.")


if __name__ == "__main__":
    try:
        main()
    except (AssertionError, subprocess.SubprocessError) as error:
        sys.exit(f"self_test.py: {error}")
