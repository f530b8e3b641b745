"""Streams: lines that a page gets until it has enough.

A source is a function of the device and the request that gives pieces of octets, in which each line ends with a line
break, as an asynchronous generator. Nothing is read ahead: a page that takes lines slowly makes the device keep the
newest, and tell of those that were missed.
"""

import asyncio
import contextlib
import time

from .answers import answer_text, lines_text
from .connection import connection
from .problem import PanelError
from .requests import octets_of

BATCH_SECONDS = 0.1
BATCH_LINES = 300
MAX_LINE = 1 << 18


async def _device_lines(device, request):
    async with connection(device.folder) as opened:
        answer_text(await opened.ask(octets_of(request)))  # that the stream begins, or why not
        while piece := await opened.read():
            yield piece


SOURCES = {"follow": _device_lines, "watch": _device_lines}


async def _batches(pieces):
    """Lists of lines, few at a time."""
    rest = b""
    async for piece in pieces:
        rest += piece
        while b"\n" in rest:
            *lines, rest = rest.split(b"\n", BATCH_LINES)
            yield lines
        if len(rest) > MAX_LINE:
            raise PanelError(f"The device sent a line of more than {MAX_LINE >> 10} KiB.")


async def stream(device, request, send):
    """Hands arrays of lines to `send`, which waits until there is room for more. Returns when the stream ends."""
    async with contextlib.aclosing(SOURCES[request["command"]](device, request)) as pieces:
        async for lines in _batches(pieces):
            start = time.monotonic()
            await send(lines_text(lines))
            await asyncio.sleep(max(0, start + BATCH_SECONDS - time.monotonic()))
