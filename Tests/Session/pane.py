# SPDX-FileCopyrightText: 2026 Corvane
# SPDX-License-Identifier: MIT
"""The pane in its window, as the user meets it, and what it does to the machine.

A scene is started in desktop-session as: SCENE BUILD_FOLDER PICTURE_FOLDER
"""
import os
import plistlib
import shutil
import signal
import subprocess
import sys
import time

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), "../Support"))
import agent  # noqa: E402
import desktop  # noqa: E402
import session  # noqa: E402

BUILD, PICTURES, *ARGUMENTS = sys.argv[1:]
SCENE = os.path.splitext(os.path.basename(sys.argv[0]))[0]
LABEL = "com.corvane.OstrelListener"
FOLDER = "/Library/LaunchAgents"
JOB = f"{FOLDER}/{LABEL}.plist"
UNIT = f"app-{LABEL}.service"
PREFERENCES = f"{session.HOME}/Library/Preferences/{LABEL}.plist"
BUNDLE = f"{session.HOME}/Ostrel.prefPane"
wait_until = desktop.wait_until


def expect(condition, what):
    if not condition:
        raise AssertionError(f"not so: {what}")


def listener_path(bundle=BUNDLE):
    return f"{bundle}/Contents/MacOS/OstrelListener"


def copy_bundle():
    """The user's own copy of the pane, which a scene may change."""
    shutil.copytree(f"{BUILD}/Ostrel.prefPane", BUNDLE, symlinks=True)


def slow_listener():
    """The listener takes a second to come up, so that the words before its own can be seen."""
    folder = os.path.dirname(listener_path())
    os.mkdir(f"{folder}/real")
    os.rename(listener_path(), f"{folder}/real/OstrelListener")
    silent_listener()


def silent_listener():
    """The listener never says a word. SIGUSR1 ends it with success."""
    new = listener_path() + ".new"
    shutil.copy(f"{BUILD}/bin/ListenerForTest", new)
    os.rename(new, listener_path())


def steady_listener():
    """The listener answers "Running", and says nothing when the pane takes its leave."""
    silent_listener()
    with open(f"{os.path.dirname(listener_path())}/answers", "w", encoding="utf-8"):
        pass


def listeners():
    """The numbers of the processes that run a listener."""
    found = set()
    for entry in os.listdir("/proc"):
        try:
            if entry.isdigit() and os.readlink(f"/proc/{entry}/exe").endswith("/OstrelListener"):
                found.add(int(entry))
        except OSError:
            pass  # somebody else's, or gone
    return found


def listener():
    """The number of the one listener that runs, once there is one."""
    wait_until(lambda: len(listeners()) == 1, "one listener")
    return listeners().pop()


def cgroup(pid):
    with open(f"/proc/{pid}/cgroup", encoding="utf-8") as file:
        return next(line.strip()[3:] for line in file if line.startswith("0::"))


def unit(name):
    """A property of the job's unit."""
    return session.user(["systemctl", "--user", "show", "--property", name, "--value", UNIT]).output.strip()


def unit_lines(word):
    """How often the user's manager has said, e.g., "Started" of the job."""
    lines = session.journal(f"USER_UNIT={UNIT}").splitlines()
    return sum(line.startswith(f"{word} {UNIT}") for line in lines)


def authentications(word="successfully authenticated"):
    """How often the password was accepted, or, with "FAILED to authenticate", refused."""
    return session.journal("--unit=polkit.service").count(f" {word} ")


def helpers():
    return session.root(["pgrep", "-f", "^/[^ ]*/authorization-helper"], check=False).output.split()


def expected_job(bundle=BUNDLE):
    return {"Label": LABEL, "Program": listener_path(bundle),
            "WorkingDirectory": os.path.dirname(listener_path(bundle)), "RunAtLoad": True,
            "KeepAlive": {"SuccessfulExit": False}}


def check_job_file(bundle=BUNDLE):
    """The job file is the whole one, with the owner and the mode it must have."""
    with open(JOB, "rb") as file:
        text = file.read()
    expect(text.startswith(b"<?xml "), f"the job file is XML: {text[:20]}")
    expect(plistlib.loads(text) == expected_job(bundle), f"the job file is right: {text}")
    status = os.stat(JOB)
    expect((status.st_uid, status.st_gid, status.st_mode) == (0, 0, 0o100644),
           f"the job file is root's, group 0, mode 644: {status}")
    expect(os.listdir(FOLDER) == [os.path.basename(JOB)], f"nothing beside it: {os.listdir(FOLDER)}")


def check_gone():
    expect(not os.path.exists(JOB), "the job file is gone")
    expect(not os.path.isdir(FOLDER) or not os.listdir(FOLDER), f"nothing is left in {FOLDER}")
    wait_until(lambda: not listeners(), f"the listener to be gone: {listeners()}")


class Pane:
    """An opened pane."""

    def __init__(self, command=None, program="ostrel-settings", status=None, **environment):
        """Opens it and waits until it has loaded. The default is the copied bundle in our own window."""
        self._words = desktop.StatusWords()
        before = self._stamp()
        self.process = desktop.start(
            command or [f"{BUILD}/bin/ostrel-settings", "--pane", BUNDLE], **environment)
        self.window = desktop.Application(program)
        if status is not None:
            self.wait_for(status)
        self._wait_until_loaded(before)

    def _wait_until_loaded(self, before):
        # Until the worker that writes the pane's version down has ended, the pane ignores the switch.
        wait_until(lambda: self._stamp() != before, "the pane to have loaded")
        desktop.wait_for_workers(self.process)

    def come_back(self, show):
        """Shows the pane again in an application that has shown something else meanwhile."""
        before = self._stamp()
        show()
        self._wait_until_loaded(before)

    @staticmethod
    def _stamp():
        try:
            return os.stat(PREFERENCES).st_mtime_ns
        except FileNotFoundError:
            return None

    def words(self):
        """All words of the status line so far, without repetitions."""
        return self._words.words()

    def forget_words(self):
        self._words.forget()

    def wait_for(self, word):
        self.window.wait_for_label(f"Status: {word}")

    def wait_to_hear(self, word):
        self._words.wait_for(word)

    def _switch(self):
        wait_until(lambda: self.window.find("Ostrel listener"), "the switch")
        return self.window.find("Ostrel listener")

    def _switch_has(self, state):
        return self._switch().get_state_set().contains(state)

    def is_on(self):
        return self._switch_has(desktop.Atspi.StateType.CHECKED)

    def is_enabled(self):
        return self._switch_has(desktop.Atspi.StateType.ENABLED)

    def is_working(self):
        """Whether the spinner turns; a still one shows nothing but its background."""
        left, top, width, height = self.window.wait_for_place("Working")
        colours = subprocess.run(
            ["import", "-window", "root", "-crop", f"{width}x{height}+{left}+{top}",
             "-format", "%k", "info:-"], capture_output=True, text=True, check=True).stdout
        return int(colours) > 1

    def slide(self):
        """Drags the knob to the switch's other side."""
        wait_until(self.is_enabled, "the switch to be enabled")
        if self.is_on():
            # The worker that looks 15 seconds after a launch whether the listener is up would start it again.
            desktop.wait_for_workers(self.process)
        x, y, width, height = self.window.wait_for_place("Ostrel listener")
        left, right = x + width // 4, x + width * 3 // 4
        start, end = (right, left) if self.is_on() else (left, right)
        y = str(y + height // 2)
        subprocess.run(["xdotool", "mousemove", str(start), y, "mousedown", "1"], check=True)
        for x in range(start, end, 11 if end > start else -11):
            subprocess.run(["xdotool", "mousemove", str(x), y], check=True)
        subprocess.run(["xdotool", "mousemove", str(end), y, "mouseup", "1"], check=True)

    def settled(self, on):
        """Waits until the switch may be used again and is on or off."""
        wait_until(lambda: self.is_enabled() and self.is_on() == on and not self.is_working(),
                   f"the switch to rest {'on' if on else 'off'}; heard: {self.words()}")

    def picture(self, name):
        desktop.screenshot(f"{PICTURES}/{SCENE}-{name}.png")

    def close(self):
        desktop.press("Ostrel", "ctrl+q")
        wait_until(lambda: self.process.poll() is not None, "the window to close")
        expect(self.process.returncode == 0, f"the window ended with {self.process.returncode}: "
               f"{desktop.errors_of(self.process)}")
        self.forget()

    def kill(self):
        self.process.kill()
        self.process.wait()
        self.forget()

    def forget(self):
        self._words.end()


def turn_on(pane, password=session.ADMINISTRATOR_PASSWORD):
    """Slides the switch on, gives the password and waits for the listener's word."""
    pane.slide()
    agent.give_password(password)
    pane.wait_for("Running")
    pane.settled(on=True)


def play(scene):
    """Runs a scene's function; its failure is shown, with a picture and the last lines of the journal."""
    try:
        scene(*ARGUMENTS)
        print(f"{SCENE}: played")
    except BaseException as error:
        print(f"{SCENE}: {error!r}", file=sys.stderr)
        if not isinstance(error, (AssertionError, OSError, subprocess.SubprocessError)):
            raise
        subprocess.run(["import", "-window", "root", f"{PICTURES}/{SCENE}-failed.png"], check=False)
        print(session.journal("--lines=60"), file=sys.stderr)
        sys.exit(1)
    finally:
        desktop.end_all()


def send(pid, name):
    os.kill(pid, getattr(signal, name))
