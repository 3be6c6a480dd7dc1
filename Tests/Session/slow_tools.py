#!/usr/bin/python3
# SPDX-FileCopyrightText: 2026 Corvane
# SPDX-License-Identifier: MIT
"""What root does for the pane takes its time, as on a busy machine: one start and one stop still."""
import time

from pane import (Pane, check_gone, check_job_file, copy_bundle, expect, listener, play, session, turn_on,
                  unit_lines)

SLOW = """
for tool in mkdir mv rm; do
    cp /usr/bin/$tool /usr/bin/$tool.quick
    printf '#!/bin/sh\\nsleep 1\\nexec /usr/bin/%s.quick "$@"\\n' $tool >/run/slow
    chmod 755 /run/slow
    cp --remove-destination -p /run/slow /usr/bin/$tool
done
"""


def scene():
    copy_bundle()
    session.root(["sh", "-ec", SLOW])
    pane = Pane(status="Not loaded")
    turn_on(pane)
    listener()
    check_job_file()
    pane.slide()
    pane.wait_for("Not loaded")
    pane.settled(on=False)
    time.sleep(3)  # a start by itself would be seen by now
    check_gone()
    expect(not pane.is_on() and unit_lines("Started") == 1, "it was started once and stopped for good")
    pane.picture("1-stopped")
    pane.close()


play(scene)
