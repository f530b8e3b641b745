"""The newest calls of management programs that are traced: lines of `adptrace show --follow`.

A stream of calls follows the recordings in the device's run folder, new ones, too, and those that the panel was given. Its
lines are calls as adptrace tells them, with the recording's name; {"recording", "state"}, as a recording begins or has
ended; {"recording", "problem"}; and {"missed"}, how many lines a slow page did not get.
"""

import asyncio
import collections
import contextlib
import itertools
import json
import os
import pathlib
import stat

from ..lab.builds import native_build
from ..lab.problem import LabError
from .problem import PanelError
from .program import program

ENDING = ".adptrace"
FIND_SECONDS = 1.0
MOST_FILES = 1000  # of a run folder that are looked at
MOST_RECORDINGS = 8  # the newest of a stream
MOST_STREAMS = 8
NEWEST_CALLS = 200  # of a recording, at first
LONGEST_LINE = 16 << 20  # adptrace keeps 4 MiB of a recording for a line
LONG_LINE = 64 << 10  # a longer one is shortened
MOST_WITHIN = 200  # calls of a line that is shortened
MOST_TEXT = 300  # letters of each of them
MOST_WAITING = 4 << 20  # octets
PIECE = 128 << 10
_open = set()


class _Waiting:
    """Lines that wait for the page: the newest."""

    def __init__(self):
        self._lines = collections.deque()
        self._octets = 0
        self._missed = 0
        self._is_there = asyncio.Event()

    def put(self, line):
        self._lines.append(line)
        self._octets += len(line)
        while self._octets > MOST_WAITING:
            self._octets -= len(self._lines.popleft())
            self._missed += 1
        self._is_there.set()

    async def take(self):
        """As many as one message may have."""
        await self._is_there.wait()
        piece = []
        if self._missed:
            piece.append(_line({"missed": self._missed}))
            self._missed = 0
        size = 0
        while self._lines and (not size or size + len(self._lines[0]) <= PIECE):
            size += len(self._lines[0])
            piece.append(self._lines.popleft())
        self._octets -= size
        if not self._lines:
            self._is_there.clear()
        return b"".join(piece)


def _line(values):
    return json.dumps(values).encode() + b"\n"


def _count(call):
    return 1 + sum(map(_count, call["within"]))


def _shortened(call, room):
    """Takes calls away, and most of long texts. `room` is an iterator of as many values as calls may stay."""
    call["text"] = call["text"][:MOST_TEXT]
    call["within"] = [_shortened(each, room) for each, _ in zip(call["within"], room)]
    return call


def _named(line, name):
    """A line of adptrace with the name of the recording."""
    if len(line) <= LONG_LINE:
        return b'{"recording":' + json.dumps(name).encode() + b"," + line[1:]
    call = json.loads(line)
    before = _count(call)
    call = _shortened(call, iter(range(MOST_WITHIN)))
    left_out = call.get("left_out", 0) + before - _count(call)
    return _line({"recording": name, **call, "left_out": left_out})


def _identity(path, follow_links):
    """(device, inode, time of the last change), None if it is no regular file."""
    with contextlib.suppress(OSError, ValueError):
        found = os.stat(path, follow_symlinks=follow_links)
        if stat.S_ISREG(found.st_mode):
            return found.st_dev, found.st_ino, found.st_mtime
    return None


def _recordings(device):
    """{(path, device, inode): name} of those that are followed."""
    found = []
    for given in device.recordings:
        if identity := _identity(given, True):
            found.append((True, identity[2], (str(pathlib.Path(given).absolute()), *identity[:2]), str(given)))
    with contextlib.suppress(OSError), os.scandir(device.folder) as entries:
        for entry in itertools.islice(entries, MOST_FILES):
            # A link could lead out of the folder, which belongs to the device.
            if entry.name.endswith(ENDING) and (identity := _identity(entry.path, False)):
                found.append((False, identity[2], (os.path.abspath(entry.path), *identity[:2]), entry.name))
    newest = sorted(found, reverse=True)[:MOST_RECORDINGS]
    return {key: name for _, _, key, name in reversed(newest)}


async def _follow(key, name, waiting):
    try:
        if problem := await _problem_of(key, name, waiting):
            waiting.put(_line({"recording": name, "problem": problem}))
    except (LabError, OSError, ValueError) as problem:
        waiting.put(_line({"recording": name, "problem": str(problem)}))


async def _problem_of(key, name, waiting):
    """Why no more calls can come, if it is not that the program has ended."""
    path, *identity = key
    options = ("--follow", "--json", f"--last={NEWEST_CALLS}", path)
    async with program(native_build().command("adptrace", "show", *options), LONGEST_LINE) as process:
        waiting.put(_line({"recording": name, "state": "followed"}))
        async for line in process.stdout:
            waiting.put(_named(line, name))
        said = (await process.stderr.read(1000)).decode(errors="replace").strip()
        if await process.wait() == 0:
            waiting.put(_line({"recording": name, "state": "ended"}))
        is_same = (_identity(path, True) or ())[:2] == tuple(identity)  # another one is followed next
        problem = said.removeprefix("adptrace: ").removeprefix(f"{path}: ") or "adptrace failed."
        return is_same and process.returncode != 0 and problem


async def _find(device, waiting):
    """Follows whatever is found, until it is cancelled."""
    followed = {}
    async with asyncio.TaskGroup() as group:
        while True:
            found = _recordings(device)
            for key in followed.keys() - found.keys():
                followed.pop(key).cancel()
            for key in found.keys() - followed.keys():
                followed[key] = group.create_task(_follow(key, found[key], waiting))
            await asyncio.sleep(FIND_SECONDS)


async def calls(device, _request):
    """Pieces of lines. The programs that it starts end with it."""
    if len(_open) >= MOST_STREAMS:
        raise PanelError(f"The calls are shown on {MOST_STREAMS} pages already.")
    waiting = _Waiting()
    finding = asyncio.create_task(_find(device, waiting))
    _open.add(finding)
    try:
        yield b""
        while True:
            yield await waiting.take()
    finally:
        _open.discard(finding)
        finding.cancel()
        with contextlib.suppress(asyncio.CancelledError):
            await finding
