"""Frames of a device as a file that the browser saves: what `vdevctl capture` writes."""

import asyncio
import contextlib
import re

from aiohttp import web

from .problem import PanelError
from .program import program

CHUNK = 65536
GONE_SECONDS = 0.5  # until it is noticed that the browser has gone
MOST_AT_ONCE = 8
MOST_SECONDS = 86400
MOST_FRAMES = 10_000_000
_running = []
_PORTS = re.compile(r"[0-9a-z,-]{1,200}", re.ASCII)


def _number(query, name, most):
    text = query.get(name, "")
    if not re.fullmatch("[0-9]{1,8}", text, re.ASCII) or not 1 <= int(text) <= most:
        raise PanelError(f"'{name}' is a number from 1 to {most}.")
    return int(text)


def _options(query):
    """What is asked for, as options of vdevctl."""
    unknown = query.keys() - {"port", "direction", "dropped", "seconds", "count"}
    if unknown:
        raise PanelError(f"A capture has no '{min(unknown)[:40]}'.")
    options = []
    if "port" in query:
        if not _PORTS.fullmatch(query["port"]):
            raise PanelError("'port' has ports, such as 1-4,7 or cpu.")
        options.append(f"--port={query['port']}")
    if query.get("direction", "both") not in ("in", "out", "both"):
        raise PanelError("'direction' is in, out or both.")
    if query.get("direction", "both") != "both":
        options.append(f"--direction={query['direction']}")
    if query.get("dropped", "0") not in ("0", "1"):
        raise PanelError("'dropped' is 0 or 1.")
    options += ["--dropped"] if query.get("dropped") == "1" else []
    options += [f"--for={_number(query, 'seconds', MOST_SECONDS)}s"] if "seconds" in query else []
    options += [f"--count={_number(query, 'count', MOST_FRAMES)}"] if "count" in query else []
    return options


async def _pieces(process, request):
    """What the program writes, until it ends or the browser leaves."""
    reading = asyncio.create_task(process.stdout.read(CHUNK))
    try:
        while request.transport is not None and not request.transport.is_closing():
            done, _ = await asyncio.wait([reading], timeout=GONE_SECONDS)
            if not done:
                continue
            if not reading.result():
                return
            yield reading.result()
            reading = asyncio.create_task(process.stdout.read(CHUNK))
    finally:
        reading.cancel()


@contextlib.contextmanager
def _place():
    """One of those that may run at a time."""
    if len(_running) >= MOST_AT_ONCE:
        raise PanelError(f"{MOST_AT_ONCE} captures are running already.")
    _running.append(None)
    try:
        yield
    finally:
        _running.pop()


async def capture(request, device):
    """The answer to a request for a capture."""
    command = [*device.control_command, "capture", "-", *_options(request.query)]
    with _place():
        return await _captured(request, device, command)


async def _captured(request, device, command):
    async with program(command) as process, contextlib.aclosing(_pieces(process, request)) as pieces:
        response = None
        async for piece in pieces:
            if response is None:
                response = web.StreamResponse(headers=_headers(device.name))
                await response.prepare(request)
            with contextlib.suppress(ConnectionError):
                await response.write(piece)
        if response is None:
            said = (await process.stderr.read()).decode(errors="replace").strip()
            raise PanelError(said.removeprefix("vdevctl: ") or "vdevctl wrote nothing.")
        with contextlib.suppress(ConnectionError):
            await response.write_eof()
        return response


def _headers(name):
    file = re.sub(r"[^A-Za-z0-9._-]", "_", name)
    return {"Content-Type": "application/octet-stream", "Content-Disposition": f'attachment; filename="{file}.pcapng"'}
