"""A connection to a device's control socket. Whoever is at its other end may be hostile: all is bounded."""

import asyncio
import contextlib
import os
import pathlib
import socket
import stat
import struct
import time

from .problem import DeviceGone, PanelError

SECONDS = 5.0  # for an answer
RETRY_SECONDS = 0.01
CHUNK = 1 << 18  # as much of a stream as is handed on at a time
MAX_ANSWER = 16 << 20  # far more than any answer of a device
_CREDENTIALS = struct.Struct("3i")


def _check_folder(folder):
    """Whoever could put a socket there would be taken for the device."""
    found = folder.lstat()
    is_trusted = found.st_uid in (os.geteuid(), 0)
    if not stat.S_ISDIR(found.st_mode) or not is_trusted or found.st_mode & 0o022:
        raise PanelError(f"{folder} is another user's, or others may write to it.")


def _check_peer(connected, folder):
    peer = connected.getsockopt(socket.SOL_SOCKET, socket.SO_PEERCRED, _CREDENTIALS.size)
    if _CREDENTIALS.unpack(peer)[1] not in (os.geteuid(), 0):
        raise PanelError(f"Another user's program serves in {folder}.")


async def _connected(folder):
    path = str(folder / "control")
    end = time.monotonic() + SECONDS
    opened = socket.socket(socket.AF_UNIX, socket.SOCK_STREAM | socket.SOCK_NONBLOCK)
    try:
        _check_folder(folder)
        while True:
            try:
                opened.connect(path)
                break
            except BlockingIOError:  # it is too busy to accept
                if time.monotonic() > end:
                    raise PanelError(f"The device in {folder} accepts no connection.") from None
                await asyncio.sleep(RETRY_SECONDS)
        _check_peer(opened, folder)
    except BaseException:
        opened.close()
        raise
    return opened


class Connection:
    """Requests, and what is answered to them."""

    def __init__(self, folder, reader, writer):
        self._folder = folder
        self._reader = reader
        self._writer = writer
        self._rest = b""  # what came behind an answer

    @classmethod
    async def open(cls, folder):
        """Connects to the device whose run folder it is."""
        folder = pathlib.Path(folder)
        try:
            opened = await _connected(folder)
        except (FileNotFoundError, ConnectionRefusedError, NotADirectoryError):
            raise cls.gone(folder) from None
        except OSError as problem:
            raise PanelError(f"The device in {folder} cannot be reached: {problem.strerror or problem}.") from None
        return cls(folder, *await asyncio.open_unix_connection(sock=opened, limit=CHUNK))

    @staticmethod
    def gone(folder):
        return DeviceGone(f"No device is running in {folder}.")

    async def ask(self, request):
        """The answer to a request, a line without its end. Both are octets."""
        if self._rest:
            raise PanelError(f"The device in {self._folder} sent what it was not asked for.")
        try:
            async with asyncio.timeout(SECONDS):
                self._writer.write(request + b"\n")
                await self._writer.drain()
                return await self._answer()
        except TimeoutError:
            raise PanelError(f"The device in {self._folder} gave no answer within {SECONDS:g} s.") from None
        except OSError:
            raise self.gone(self._folder) from None

    async def _answer(self):
        pieces, size, end = [], 0, b""
        while not end:
            if not (piece := await self.read()):
                raise self.gone(self._folder)
            line, end, self._rest = piece.partition(b"\n")
            pieces.append(line)
            size += len(line)
            if size > MAX_ANSWER:
                raise PanelError(f"The device in {self._folder} gave an answer of more than {MAX_ANSWER >> 20} MiB.")
        return b"".join(pieces)

    async def read(self):
        """Some of what the device has sent; nothing if it has closed the connection. What is not read stays there."""
        if self._rest:
            piece, self._rest = self._rest, b""
            return piece
        with contextlib.suppress(ConnectionError):
            return await self._reader.read(CHUNK)
        return b""

    def close(self):
        self._writer.close()


@contextlib.asynccontextmanager
async def connection(folder):
    """A connection for a while."""
    opened = await Connection.open(folder)
    try:
        yield opened
    finally:
        opened.close()
