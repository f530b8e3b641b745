"""Streams: lines that a page gets until it has enough.

A source is a function of the device and the request that gives pieces of octets, in which each line ends with a line
break, as an asynchronous generator. Nothing is read ahead: a page that takes lines slowly makes the device keep the
newest, and tell of those that were missed.
"""

import asyncio
import contextlib
import time

from .answers import checked_answer, error_member, lines_text
from .calls import calls
from .connection import connection
from .problem import DeviceGone, PanelError
from .requests import octets_of

BATCH_SECONDS = 0.1
BATCH_LINES = 300
MAX_LINE = 1 << 18
RETRY_SECONDS = 0.5


async def _device_lines(device, request):
    async with connection(device.folder) as opened:
        checked_answer(await opened.ask(octets_of(request)))  # that the stream begins, or why not
        yield b""
        while piece := await opened.read():
            yield piece
    raise opened.gone(device.folder)


SOURCES = {"follow": _device_lines, "watch": _device_lines, "calls": calls}


async def _batches(pieces):
    """Lists of lines, few at a time. The first one is empty and says that the stream has begun."""
    rest = b""
    async for piece in pieces:
        if not piece:
            yield []
        rest += piece
        while b"\n" in rest:
            *lines, rest = rest.split(b"\n", BATCH_LINES)
            yield lines
        if len(rest) > MAX_LINE:
            raise PanelError(f"The device sent a line of more than {MAX_LINE >> 10} KiB.")


async def _send_lines(device, request, send):
    async with contextlib.aclosing(SOURCES[request["command"]](device, request)) as pieces:
        async for lines in _batches(pieces):
            start = time.monotonic()
            await send(f'"lines":{lines_text(lines)}')
            await asyncio.sleep(max(0, start + BATCH_SECONDS - time.monotonic()))


async def stream(device, request, send):
    """Hands members of messages to `send`, which waits until there is room for more. A device that goes is waited for."""
    while True:
        try:
            await _send_lines(device, request, send)
            return await send('"end":true')
        except DeviceGone as problem:
            await send(error_member(problem))
            await asyncio.sleep(RETRY_SECONDS)
            await device.runs()
