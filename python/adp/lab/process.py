"""Processes of the bench: they end when it ends, and are stopped within a bounded time."""

import os
import select
import subprocess
import time

from .problem import LabError

GRACE_SECONDS = 5.0
LONGEST_LINE = 1 << 24
LAST_BYTES = 300
# Ending a process with many packet sockets is the kernel's work, and waits for all processors more than once a socket.
KILLED_SECONDS = 60.0


def tied(command):
    """The command, prefixed so that the kernel ends it when the bench dies without cleaning up."""
    return ["setpriv", "--pdeathsig", "KILL", "--", *map(str, command)]


def stop(process, grace=GRACE_SECONDS):
    """Ends a process: closes its input, then sends SIGTERM, then SIGKILL. Gives its exit status."""
    if process.stdin:
        try:
            process.stdin.close()
        except BrokenPipeError:
            pass
    if process.poll() is None:
        process.terminate()
    try:
        process.wait(grace)
    except subprocess.TimeoutExpired:
        kill(process)
    for stream in (process.stdout, process.stderr):
        if stream:
            stream.close()
    return process.returncode


def kill(process, seconds=KILLED_SECONDS):
    """Ends a process by SIGKILL, and waits until the kernel has done so."""
    process.kill()
    try:
        process.wait(seconds)
    except subprocess.TimeoutExpired:
        command = " ".join(map(str, process.args))
        raise LabError(f"{seconds:g} seconds after it was killed, there still is a process of: {command}") from None


class LineReader:
    """Reads a process's output line by line with a deadline."""

    def __init__(self, stream):
        self._fd = stream.fileno()
        self._pending = b""

    def has_line(self):
        """Whether line() returns at once, with a line or because the process has ended."""
        return b"\n" in self._pending or bool(select.select([self._fd], [], [], 0)[0])

    def line(self, seconds, what):
        """The next line without its end. `what` names the process in the error if none comes."""
        return self._line_before(time.monotonic() + seconds, seconds, what)

    def _line_before(self, deadline, seconds, what):
        while b"\n" not in self._pending:
            remaining = deadline - time.monotonic()
            if remaining <= 0 or not select.select([self._fd], [], [], remaining)[0]:
                raise LabError(f"{what} did not answer within {seconds:g} seconds.")
            chunk = os.read(self._fd, 65536)
            if not chunk:
                raise LabError(f"{what} ended without an answer. It last wrote: {self._rest()!r}")
            if len(self._pending) > LONGEST_LINE:
                raise LabError(f"{what} wrote more than {LONGEST_LINE} bytes without the end of a line.")
            self._pending += chunk
        line, _, self._pending = self._pending.partition(b"\n")
        return line.decode(errors="replace")

    def _rest(self):
        """The end of what has no end of a line yet."""
        return self._pending[-LAST_BYTES:].decode(errors="replace")


def poll_until(condition, seconds, what, pause=0.02):
    """Calls `condition` until its value is true, and returns that; at the deadline an error that names `what`."""
    deadline = time.monotonic() + seconds
    while True:
        value = condition()
        if value:
            return value
        if time.monotonic() >= deadline:
            raise LabError(f"{what} did not happen within {seconds:g} seconds.")
        time.sleep(pause)
