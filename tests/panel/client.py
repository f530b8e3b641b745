"""A page without a browser: the panel's server in this process, and a client of its WebSocket."""

import asyncio
import contextlib
import json
import pathlib
import re
import urllib.parse

import aiohttp
from adp.lab.builds import native_build
from adp.panel.device import Device
from adp.panel.panel import Panel
from adp.panel.server import Server
from false_device import false_device

SECONDS = 30.0
COMMANDS = {"vdevctl": "vdevctl", "adpsh": "adpsh", "exec": "env"}


class Page:
    """What a page is sent, and what it says."""

    def __init__(self, socket):
        self.socket = socket
        self.panel = None
        self._kept = []  # heard, and not asked for yet

    async def say(self, number, **message):
        await self.socket.send_str(json.dumps({"id": number, **message}))

    async def hear(self, number, seconds=SECONDS):
        """The next message with an id."""
        async with asyncio.timeout(seconds):
            while not (found := next((each for each in self._kept if each.get("id") == number), None)):
                self._kept.append(await self.hear_any())
        self._kept.remove(found)
        return found

    async def hear_any(self):
        """The next message; what the panel says of itself last is known afterwards."""
        message = await self.socket.receive()
        assert message.type == aiohttp.WSMsgType.TEXT, message
        heard = json.loads(message.data)
        self.panel = heard.get("panel", self.panel)
        return heard

    async def hear_panel(self):
        return (await self.hear(None))["panel"]

    async def ask(self, number, device, **request):
        await self.say(number, device=device, ask=request)
        return await self.hear(number)

    async def hears_nothing(self, number, seconds):
        """Whether there is no message with this id for so long."""
        with contextlib.suppress(TimeoutError):
            return not await self.hear(number, seconds)
        return True

    @contextlib.contextmanager
    def paused(self):
        """The page does not read."""
        protocol = self.socket._conn.protocol
        protocol.pause_reading()
        try:
            yield
        finally:
            protocol.resume_reading()

    async def end(self):
        """Why the server has closed the connection: (code, reason)."""
        async with asyncio.timeout(SECONDS):
            while (message := await self.socket.receive()).type == aiohttp.WSMsgType.TEXT:
                pass
        return message.data, message.extra


class Opened:
    """A server that runs, and how one talks to it."""

    def __init__(self, url, client, panel, server):
        self.server = server
        self.url = url
        self.client = client
        self.panel = panel
        parts = urllib.parse.urlsplit(url)
        self.host = parts.netloc
        self.token = parts.path.strip("/")
        self.origin = f"http://{self.host}"

    @contextlib.asynccontextmanager
    async def page(self, **headers):
        """A page that is connected."""
        async with self.client.ws_connect(
            f"{self.url}socket", headers={"Origin": self.origin, **headers}, max_msg_size=0
        ) as socket:
            yield Page(socket)

    async def get(self, path="", **headers):
        """(status, headers, octets) of a file."""
        async with self.client.get(f"{self.url}{path}", headers=headers) as answer:
            return answer.status, answer.headers, await answer.read()

    async def raw(self, *lines):
        """The first line of the answer to a request as it stands here."""
        reader, writer = await asyncio.open_connection(*self.host.split(":"))
        writer.write("\r\n".join([*lines, "", ""]).encode())
        async with asyncio.timeout(SECONDS):
            said = await reader.readline()
        writer.close()
        return said.decode().strip()


@contextlib.asynccontextmanager
async def panel_of(is_read_only=False, **folders):
    """A panel for devices in these run folders."""
    program = native_build().path_of("vdevctl")
    devices = [
        Device(name, folder, [str(program), f"--run-dir={folder}"], COMMANDS) for name, folder in folders.items()
    ]
    panel = Panel(devices, is_read_only=is_read_only)
    server = Server(panel)
    url = await server.start()
    try:
        async with aiohttp.ClientSession() as client:
            yield Opened(url, client, panel, server)
    finally:
        await server.stop()


def run(test, names=("sw1",), **others):
    """Runs a test, a coroutine function of a server and of false devices, with these names. `others` are run folders."""

    async def with_panel():
        async with contextlib.AsyncExitStack() as stack:
            devices = {name: await stack.enter_async_context(false_device()) for name in names}
            folders = {name: device.folder for name, device in devices.items()}
            opened = await stack.enter_async_context(panel_of(**others, **folders))
            await test(opened, *devices.values())

    asyncio.run(with_panel())


class Memory:
    """How much more memory this process has had since this was made, in MiB."""

    def __init__(self):
        pathlib.Path("/proc/self/clear_refs").write_text("5", encoding="ascii")  # the peak begins anew
        self._before = self._peak()

    @staticmethod
    def _peak():
        status = pathlib.Path("/proc/self/status").read_text(encoding="ascii")
        return int(re.search(r"VmHWM:\s+(\d+) kB", status)[1]) / 1024

    def grown(self):
        return self._peak() - self._before


async def until(condition):
    async with asyncio.timeout(SECONDS):
        while not condition():
            await asyncio.sleep(0.01)
