"""A device that answers as a test wants: a control socket in this process."""

import asyncio
import contextlib
import json
import pathlib
import tempfile


def line(value):
    return json.dumps(value, separators=(",", ":")).encode() + b"\n"


class FalseDevice:
    """Serves a control socket. `answers` has by command octets, or a coroutine function of (request, writer)."""

    def __init__(self, folder):
        self.folder = pathlib.Path(folder)
        self.answers = {"watch": line({"watching": True}), "ports": line({"ports": []}), "pull": line({})}
        self.asked = []  # what it was asked but for `watch`, in order
        self.writers = []
        self._server = None

    async def start(self):
        self._server = await asyncio.start_unix_server(self._serve, self.folder / "control", limit=1 << 20)

    async def stop(self):
        """As if it was killed: the socket's file stays."""
        self._server.close()
        for writer in self.writers:
            writer.transport.abort()
        self.writers.clear()

    async def tell_link(self):
        """Sends an event to whoever watches or follows."""
        for writer in self.writers:
            writer.write(line({"kind": "links", "port": 1, "what": "down"}))

    def times(self, command):
        """How often it was asked this."""
        return sum(request["command"] == command for request in self.asked)

    async def _serve(self, reader, writer):
        with contextlib.suppress(ConnectionError):
            while text := await reader.readline():
                request = json.loads(text)
                if request["command"] == "watch":
                    self.writers.append(writer)
                else:
                    self.asked.append(request)
                answer = self.answers.get(request["command"], line({"error": "unknown command"}))
                if callable(answer):
                    await answer(request, writer)
                else:
                    writer.write(answer)
        writer.close()


@contextlib.asynccontextmanager
async def false_device():
    """One that runs; it is closed afterwards."""
    with tempfile.TemporaryDirectory(prefix="false-") as folder:
        device = FalseDevice(folder)
        await device.start()
        try:
            yield device
        finally:
            await device.stop()
