#!/usr/bin/python3
# SPDX-FileCopyrightText: 2026 Corvane
# SPDX-License-Identifier: MIT
"""Another program of the user's, without the authorisation, lies in wait for the job file."""
import os
import subprocess
import sys

from pane import (JOB, Pane, check_gone, check_job_file, copy_bundle, expect, listener, listener_path, play,
                  session, turn_on, unit)

TEMPORARY = f"/tmp/com.corvane.{session.USER}/{os.path.basename(JOB)}"
SECRET = "/etc/secret"
# Root's "mv" waits for the attacker, who may be slow.
PREPARE = f"""
umask 077
echo secret >{SECRET}
mv /usr/bin/mv /usr/bin/mv.quick
cat >/usr/bin/mv <<'END'
#!/bin/sh
umask 022
touch /tmp/moving
until [ -e /tmp/struck ]; do sleep 0.02; done
exec /usr/bin/mv.quick "$@"
END
chmod 755 /usr/bin/mv
"""
STRIKE = """
import os
def exists(path):
    return os.access(path, os.F_OK)
while not exists("/tmp/moving"):
    pass
"""
# Opens the file wherever it is while it is still the user's, and writes to it when it has become
# root's.
WRITER = STRIKE + f"""
opened = {{}}
while True:
    for path in "{TEMPORARY}", "{JOB}":
        try:
            file = os.open(path, os.O_RDWR)
            opened.setdefault(os.fstat(file).st_ino, file)
            open("/tmp/struck", "w")
        except OSError:
            pass
    try:
        status = os.stat("{JOB}")
        if status.st_uid == 0 and status.st_gid == 0 and status.st_mode & 0o777 == 0o644:
            break
    except OSError:
        pass
for file in opened.values():
    text = os.pread(file, 65536, 0)
    os.ftruncate(file, 0)
    os.pwrite(file, text.replace(b"{listener_path()}", b"/bin/false"), 0)
print("wrote to", len(opened), flush=True)
"""
# Puts a link to root's file in place of the file that is about to be moved.
LINKER = STRIKE + f"""
os.unlink("{TEMPORARY}")
os.symlink("{SECRET}", "{TEMPORARY}")
open("/tmp/struck", "w")
print("linked", flush=True)
"""


def start(attack):
    """Turns the listener on while the attack goes on, and answers with the attacker's last word."""
    session.root(["rm", "-f", "/tmp/moving", "/tmp/struck"])
    attacker = subprocess.Popen([sys.executable, "-c", attack], stdout=subprocess.PIPE, text=True)
    try:
        pane = Pane(status="Not loaded")
        turn_on(pane)
        word = attacker.communicate(timeout=300)[0].strip()
    finally:
        attacker.kill()
    check_job_file()
    expect(os.readlink(f"/proc/{listener()}/exe") == listener_path(), "the bundle's listener runs")
    expect(listener_path() in unit("ExecStart"), f"the manager runs it: {unit('ExecStart')}")
    pane.slide()
    pane.settled(on=False)
    check_gone()
    pane.close()
    return word


def scene():
    copy_bundle()
    session.root(["sh", "-ec", PREPARE])
    word = start(WRITER)
    expect(word.startswith("wrote to") and word != "wrote to 0", f"the attacker had the file: {word}")
    expect(start(LINKER) == "linked", "the attacker has set its link")
    secret = session.root(["stat", "--format=%A %U %s", SECRET]).output
    expect(secret == "-rw------- root 7\n", f"root's file is as it was: {secret}")


play(scene)
