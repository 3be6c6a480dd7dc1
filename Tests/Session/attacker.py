# SPDX-FileCopyrightText: 2026 Corvane
# SPDX-License-Identifier: MIT
"""What a hostile program of the same user tries with another process."""
import ctypes
import os
import subprocess
import sys

_C = ctypes.CDLL(None, use_errno=True)
_C.ptrace.argtypes = (ctypes.c_long, ctypes.c_long, ctypes.c_void_p, ctypes.c_void_p)
_PTRACE_SEIZE = 0x4206
_PIDFD_GETFD = 438  # the same number on every architecture


class _Vector(ctypes.Structure):
    _fields_ = [("base", ctypes.c_void_p), ("size", ctypes.c_size_t)]


def _checked(result):
    if result < 0:
        raise OSError(ctypes.get_errno(), os.strerror(ctypes.get_errno()))
    return result


def take_descriptor(pidfd, number):
    """A copy of another process's descriptor."""
    return _checked(_C.syscall(_PIDFD_GETFD, pidfd, number, 0))


def seize(thread):
    """Traces a thread of another process until this process, or the calling thread, ends."""
    _checked(_C.ptrace(_PTRACE_SEIZE, thread, None, None))


def _trace(pid):
    # In a program of its own, whose end lets go.
    run = subprocess.run([sys.executable, "-c", f"import attacker; attacker.seize({pid})"],
                         cwd=os.path.dirname(os.path.abspath(__file__)), capture_output=True, text=True)
    if run.returncode != 0:
        raise PermissionError(run.stderr.splitlines()[-1])


def _read_memory(pid, address):
    byte = ctypes.create_string_buffer(1)
    ours, theirs = _Vector(ctypes.addressof(byte), 1), _Vector(address, 1)
    _checked(_C.process_vm_readv(pid, ctypes.byref(ours), 1, ctypes.byref(theirs), 1, 0))


def an_address(pid):
    """One that another process can read, while it can be asked."""
    with open(f"/proc/{pid}/maps", encoding="utf-8") as maps:
        return int(next(line for line in maps if " r-" in line).split("-")[0], 16)


def successes(pid, address):
    """The attacks that succeed now; those that fail are refused, not impossible otherwise."""
    def pidfd_getfd():
        pidfd = os.pidfd_open(pid)
        try:
            os.close(take_descriptor(pidfd, 0))
        finally:
            os.close(pidfd)

    def memory_file():
        with open(f"/proc/{pid}/mem", "r+b", buffering=0) as memory:
            memory.seek(address)
            memory.read(1)

    attacks = {
        "pidfd_getfd": pidfd_getfd,
        "ptrace": lambda: _trace(pid),
        "/proc/PID/mem": memory_file,
        "process_vm_readv": lambda: _read_memory(pid, address),
        "/proc/PID/fd": lambda: os.listdir(f"/proc/{pid}/fd"),
        "/proc/PID/fd/0": lambda: os.readlink(f"/proc/{pid}/fd/0"),
        "/proc/PID/environ": lambda: open(f"/proc/{pid}/environ", "rb").close(),
        "/proc/PID/maps": lambda: an_address(pid),
        "/proc/PID/root": lambda: os.close(os.open(f"/proc/{pid}/root", os.O_PATH | os.O_DIRECTORY)),
    }
    successful = []
    for name, attack in attacks.items():
        try:
            attack()
            successful.append(name)
        except PermissionError:
            pass
    return successful


COUNT = 9
