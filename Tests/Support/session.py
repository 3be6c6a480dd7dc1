# SPDX-FileCopyrightText: 2026 Corvane
# SPDX-License-Identifier: MIT
"""The desktop session that desktop-session brings up, for a scene that it runs as the user."""
import json
import os
import socket
import subprocess
import sys
import time

ADMINISTRATOR_PASSWORD = "bread and butter"
USER = 1000
HOME = "/home/tester"
RUNTIME = f"/run/user/{USER}"
_PARTS = os.path.join(os.path.dirname(os.path.abspath(__file__)), "desktop-session.d")
_RULES = "/etc/polkit-1/rules.d/10-scene.rules"
_PATIENCE = 180  # seconds; a loaded machine is slow, a broken machine stays broken
_rules_set = 0


class Result:
    """How a command ended and what it wrote."""

    def __init__(self, status, output, errors):
        self.status, self.output, self.errors = status, output, errors


def root(command, input="", check=True):
    """Runs a command as root of the machine, beside the session, to its end."""
    with socket.socket(socket.AF_UNIX) as channel:
        channel.connect("/run/desktop-session/root")
        with channel.makefile("rw", encoding="utf-8") as lines:
            lines.write(json.dumps({"command": command, "input": input}) + "\n")
            lines.flush()
            result = Result(*json.loads(lines.readline()))
    if check and result.status != 0:
        raise AssertionError(f"{command} ended with {result.status}: {result.output}{result.errors}")
    return result


def user(command, check=True, **environment):
    """Runs a command as the user, in the session, to its end."""
    run = subprocess.run(command, env=dict(os.environ, **environment), stdin=subprocess.DEVNULL,
                         capture_output=True, text=True, errors="replace", timeout=_PATIENCE)
    if check and run.returncode != 0:
        raise AssertionError(f"{command} ended with {run.returncode}: {run.stdout}{run.stderr}")
    return Result(run.returncode, run.stdout, run.stderr)


def log_out():
    """Ends the session and with it all programs of the user but this one."""
    root(["sh", "-c", f"mkdir -p /sys/fs/cgroup/scene && echo {os.getpid()} >/sys/fs/cgroup/scene/cgroup.procs"])
    root([f"{_PARTS}/log-out"])


def log_in():
    """Begins a new session of the user and enters it. What was known over AT-SPI is lost: see again."""
    root([f"{_PARTS}/log-in"])
    _enter()


def again(*arguments):
    """Runs the scene's program anew with these arguments: AT-SPI's library outlives no session."""
    sys.stdout.flush()
    os.execv(sys.executable, [sys.executable, sys.argv[0], *arguments])


def set_polkit_rule(action, answer):
    """Lets polkit answer a question about this action with a polkit.Result, e.g. "YES"."""
    _set_rules(f'polkit.addRule(function(action, subject) {{\n'
               f'    if (action.id == "{action}") return polkit.Result.{answer};\n}});\n')


def clear_polkit_rule():
    _set_rules("")


def journal(*options):
    """What the machine's journal holds, e.g. journal("--unit=polkit.service")."""
    return root(["journalctl", "--quiet", "--no-pager", "--output=cat", *options]).output


def _set_rules(text):
    global _rules_set
    _rules_set += 1
    # Moved into place, the file is whole whenever polkit reads it; then it answers this question.
    probe = "org.freedesktop.login1.halt"
    text += (f'polkit.addRule(function(action, subject) {{\n'
             f'    if (action.id == "{probe}" && action.lookup("scene") == "{_rules_set}")\n'
             f'        return polkit.Result.YES;\n}});\n')
    root(["install", "-m", "644", "/dev/stdin", f"{_RULES}.new"], input=text)
    root(["mv", f"{_RULES}.new", _RULES])
    question = ["pkcheck", "--action-id", probe, "--process", "1",
                "--detail", "scene", str(_rules_set)]
    end = time.monotonic() + _PATIENCE
    while root(question, check=False).status != 0:
        if time.monotonic() > end:
            raise AssertionError("polkit did not read its rules again")
        time.sleep(0.05)


def _enter():
    """Makes this process, and all that it starts from now on, part of the session."""
    names = (f'session=$(loginctl show-user {USER} --property=Display --value) && '
             f'scope=$(find /sys/fs/cgroup -type d -name "session-$session.scope") && '
             f'echo {os.getpid()} >"$scope/cgroup.procs" && cat {RUNTIME}/session-environment')
    environment = root(["sh", "-c", names]).output
    kept = {name: value for name, value in os.environ.items() if name.endswith("SAN_OPTIONS")}
    os.environ.clear()
    os.environ.update(kept)
    os.environ.update(entry.split("=", 1) for entry in environment.split("\0") if entry)
