"""Processes of the bench: started so that they cannot outlive it, stopped within a bounded time."""

import os
import select
import subprocess
import time

from .problem import LabError

GRACE_SECONDS = 5.0


def tied(command):
    """The command, prefixed so that the kernel ends it when the bench dies without cleaning up."""
    return ["setpriv", "--pdeathsig", "KILL", "--", *map(str, command)]


def stop(process, grace=GRACE_SECONDS):
    """Ends one process: its input closed, then asked, then forced. Returns its exit status."""
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
        process.kill()
        process.wait(grace)
    for stream in (process.stdout, process.stderr):
        if stream:
            stream.close()
    return process.returncode


class LineReader:
    """Reads a process's output line by line with a deadline (a plain readline could wait for ever)."""

    def __init__(self, stream):
        self._fd = stream.fileno()
        self._pending = b""

    def has_line(self):
        """Whether line() has something to tell at once: a line, or that the speaker has ended."""
        return b"\n" in self._pending or bool(select.select([self._fd], [], [], 0)[0])

    def line(self, seconds, what):
        """The next line without its end. `what` names the speaker in the error when none comes."""
        deadline = time.monotonic() + seconds
        while b"\n" not in self._pending:
            remaining = deadline - time.monotonic()
            if remaining <= 0 or not select.select([self._fd], [], [], remaining)[0]:
                raise LabError(f"{what} did not answer within {seconds:g} seconds.")
            chunk = os.read(self._fd, 65536)
            if not chunk:
                rest = self._pending.decode(errors="replace")
                raise LabError(f"{what} ended without an answer. It last wrote: {rest!r}")
            self._pending += chunk
        line, _, self._pending = self._pending.partition(b"\n")
        return line.decode(errors="replace")


def poll_until(condition, seconds, what, pause=0.02):
    """Calls `condition` until it gives something true, and returns that; a sentence naming `what` at the deadline."""
    deadline = time.monotonic() + seconds
    while True:
        value = condition()
        if value:
            return value
        if time.monotonic() >= deadline:
            raise LabError(f"{what} did not happen within {seconds:g} seconds.")
        time.sleep(pause)
