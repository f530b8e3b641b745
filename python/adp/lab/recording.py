"""What becomes of the frames on a device, for those who ask only after something went wrong.

    with Recording(lab) as recording:
        ...
        recording.report([marker])           # what became of the frames with the marker, and the drops, as lines
        recording.save("failure.pcapng")     # all frames, with the reasons of drops as comments

The device keeps the frames and the accounts of them; nothing is read before somebody asks. It keeps 4 MiB of the
newest frames and the 512 oldest accounts, and tells how many are missing.
"""

import collections
import contextlib
import json
import os
import socket
import subprocess
import tempfile
import threading
from typing import NamedTuple

from .bench import BARRIER_SOURCE
from .device import CONTROL_SECONDS
from .frames import describe
from .problem import LabError
from .process import LineReader

QUIET_SECONDS = 0.3
# A bound if frames pass on and on.
MOST_LINES = 200_000
MOST_FRAMES = 4
MOST_OTHERS = 8
MARKER_SHOWN = 40
NANOSECONDS = 1_000_000_000
MAC_BYTES = 6


class Stream:
    """What the device tells line by line, from now on and until this is closed."""

    def __init__(self, device, command, **options):
        self._connection = device.connect(command, **options)
        self._lines = LineReader(self._connection)
        self.first = self._line(CONTROL_SECONDS)

    def has_lines(self):
        """Whether the device has told anything that was not read."""
        return self._lines.has_line()

    def read(self):
        """The lines that wait, until none comes for a while."""
        with contextlib.suppress(LabError):
            for _ in range(MOST_LINES):
                yield self._line(QUIET_SECONDS)

    def _line(self, seconds):
        line = json.loads(self._lines.line(seconds, "The device"))
        if "error" in line:
            raise LabError(line["error"])
        return line

    def close(self):
        self._connection.close()


class Passed(NamedTuple):
    """A frame that came in, and what became of it."""

    time: int
    port: int
    frame: bytes
    account: str


class Recording:
    """The frames and drops of a lab's device since begin()."""

    def __init__(self, lab):
        self.lab = lab
        self._streams = ()
        self._lines = None
        self._problem = ""
        self.begin()

    def __enter__(self):
        return self

    def __exit__(self, *problem):
        self.close()

    def close(self):
        for stream in self._streams:
            stream.close()
        self._streams = ()

    def begin(self):
        """What was before is forgotten."""
        if not self._streams or self.has_frames():
            self._lines, self._problem = None, ""
            before, self._streams = self._streams, ()
            try:
                self._open()
            except (LabError, OSError) as problem:
                self._problem = str(problem)
            # Only now, so that the device always has somebody to tell.
            for stream in before:
                stream.close()

    def _open(self):
        device = self.lab.device
        with contextlib.ExitStack() as opened:
            capture = opened.enter_context(contextlib.closing(Stream(device, "capture", dropped=True)))
            follow = opened.enter_context(contextlib.closing(Stream(device, "follow", form="text", steps=True)))
            self._drops = drops_of(device)
            self._streams = (capture, follow)
            opened.pop_all()

    def has_frames(self):
        """Whether any frame has passed, as far as is known."""
        return bool(self._problem) or self._lines is not None or any(stream.has_lines() for stream in self._streams)

    def _read(self):
        """(lines of frames, lines of accounts); they are read once."""
        if self._lines is None:
            self._lines = [list(stream.read()) for stream in self._streams] or [[], []]
        return self._lines

    def drops(self):
        """{(port, reason): frames} since begin()."""
        now = drops_of(self.lab.device)
        return {key: count - self._drops.get(key, 0) for key, count in now.items() if count != self._drops.get(key, 0)}

    def passed(self):
        """The frames that came in, oldest first."""
        captured, followed = self._read()
        accounts = collections.defaultdict(collections.deque)
        for line in followed:
            if "text" in line and "time" in line:
                accounts[round(line["time"] * NANOSECONDS), line["port"]].append(line["text"])
        for line in captured:
            if line.get("direction") == "in":
                waiting = accounts[line["time"], line["port"]]
                account = waiting.popleft() if waiting else ""
                yield Passed(line["time"], line["port"], bytes.fromhex(line["frame"]), account)

    def report(self, markers, astray=()):
        """What became of the frames with one of the markers, above all of those that went astray, and the drops since
        begin(). Lines of text.
        """
        if self._problem:
            return [f"The device could not be recorded: {self._problem}"]
        try:
            return [*self._frames_report(markers, astray), *self._drops_report()]
        except (LabError, OSError) as problem:
            return [f"The device gives no account: {problem}"]

    def _frames_report(self, markers, astray):
        passed = [one for one in self.passed() if one.frame[MAC_BYTES : 2 * MAC_BYTES] != BARRIER_SOURCE]
        ours = [one for one in passed if any(marker in one.frame for marker in markers)]
        chosen = [one for one in ours if one.frame in astray] or ours
        for one in chosen[:MOST_FRAMES]:
            yield from self._account(one)
        if len(chosen) > MOST_FRAMES:
            yield f"... and {len(chosen) - MOST_FRAMES} more such frames"
        if not chosen:
            wanted = " or ".join(repr(marker[:MARKER_SHOWN]) for marker in markers) or "a marker"
            yield f"No frame with {wanted} has come in since the test began."
            yield from (f"  port {one.port or 'cpu'} had: {describe(one.frame)}" for one in passed[-MOST_OTHERS:])
        missed = [sum(line.get("missed", 0) for line in lines) for lines in self._read()]
        if any(missed):
            yield "The device kept no record of {} frames and no account of {}.".format(*missed)

    def _account(self, one):
        text = one.account
        if not text:
            answer = self.lab.device.ask("explain", port=one.port or "cpu", frame=one.frame.hex(), form="text")
            yield "As it would go now, since the device has kept no account of it:"
            text = answer.get("text") or answer["error"]
        yield from text.splitlines()

    def _drops_report(self):
        drops = self.drops()
        yield "Drops since the test began:" + ("" if drops else " none")
        yield from (f"  port {port or 'cpu'}: {count} {reason}" for (port, reason), count in sorted(drops.items()))

    def save(self, path):
        """Writes the frames in both directions as a capture file; gives what vdevctl says of it."""
        if self._problem:
            raise LabError(self._problem)
        frames = [line for line in self._read()[0] if "frame" in line or "missed" in line]
        return write_capture(self.lab.device, [self._streams[0].first, *frames], path)


def drops_of(device):
    """{(port, reason): frames} since the device was switched on."""
    rows = device.ask("counters")["counters"]
    return {(row["port"], reason): count for row in rows for reason, count in row["drops"].items() if count}


def write_capture(device, lines, path):
    """`vdevctl capture` writes them. It is told in a run folder of its own what the device has told before."""
    with tempfile.TemporaryDirectory(prefix="vdevice-") as folder, socket.socket(socket.AF_UNIX) as listener:
        listener.bind(os.path.join(folder, "control"))
        listener.listen()
        threading.Thread(target=_tell_again, args=(device, listener, lines), daemon=True).start()
        count = sum("frame" in line for line in lines)
        return device.run_control("--run-dir", folder, "capture", path, "--count", count).stderr.strip()


def _tell_again(device, listener, lines):
    """Tells the lines to the first who captures. The device answers all else."""
    is_told = False
    while not is_told:
        connection, _ = listener.accept()
        with connection, connection.makefile("rb") as requests:
            request = json.loads(requests.readline())
            is_told = request["command"] == "capture"
            for answer in lines if is_told else [device.ask(**request)]:
                connection.sendall(json.dumps(answer).encode() + b"\n")
