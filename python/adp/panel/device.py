"""A device of the panel: whether it runs, and the readings of it that are repeated.

While a page is connected, a stream of link events is kept open. It ends when the device does, and an event makes the
readings new at once.
"""

import asyncio
import contextlib

from .connection import Connection, connection
from .problem import DeviceGone, PanelError
from .readings import Reading
from .requests import octets_of

RETRY_SECONDS = 0.5
KNOWN_SECONDS = 1.0
EVENT_PAUSE_SECONDS = 0.1  # links may come and go quickly
_WATCH = octets_of({"command": "watch", "kind": ["links"]})


class Device:
    """How the panel talks to a device."""

    def __init__(self, name, folder, control_command, commands, recordings=()):
        """`control_command` runs vdevctl for the device; `commands` are what a person types: {"vdevctl": ..., "adpsh":
        ..., "exec": ...}.
        """
        self.name = name
        self.folder = folder
        self.control_command = control_command
        self.recordings = recordings
        self.problem = f"The device in {folder} has not answered yet."  # why it cannot be asked
        self._commands = commands
        self._readings = {}
        self._kept = None  # the connection of the readings
        self._turn = asyncio.Lock()
        self._watcher = None
        self._is_known = asyncio.Event()
        self._runs = asyncio.Event()
        self._on_change = lambda: None

    def state(self):
        """What the page is told of it."""
        return {"name": self.name, "running": not self.problem, **self._commands}

    async def start(self, on_change):
        """Begins to watch it; waits a moment until it is known whether it runs."""
        self._on_change = on_change
        if self._watcher is None:
            self._is_known.clear()
            self._watcher = asyncio.create_task(self._watch())
        with contextlib.suppress(TimeoutError):
            async with asyncio.timeout(KNOWN_SECONDS):
                await self._is_known.wait()

    async def runs(self):
        """Returns as soon as it runs."""
        await self._runs.wait()

    def stop(self):
        """Ends whatever goes on with it."""
        for reading in self._readings.values():
            reading.stop()
        self._readings.clear()
        self._drop_connection()
        if self._watcher:
            self._watcher.cancel()
            self._watcher = None

    async def ask(self, request):
        """The answer in octets to a request that is not repeated."""
        async with connection(self.folder) as opened:
            return await opened.ask(octets_of(request))

    def reading(self, request):
        """The reading that all have in common who read the same."""
        key = octets_of(request)
        if key not in self._readings:
            self._readings[key] = Reading(self, key, lambda: self._readings.pop(key, None))
        return self._readings[key]

    def read_again(self):
        """Something has changed, so that all readings are made again at once."""
        for reading in self._readings.values():
            reading.hurry()

    @contextlib.asynccontextmanager
    async def turn(self):
        """A connection for one reading; the device makes one after the other."""
        async with self._turn:
            try:
                self._kept = self._kept or await Connection.open(self.folder)
                yield self._kept
            except BaseException:  # an answer may be under way
                self._drop_connection()
                raise

    def _drop_connection(self):
        if self._kept:
            self._kept.close()
            self._kept = None

    async def _watch(self):
        while True:
            try:
                async with connection(self.folder) as opened:
                    await opened.ask(_WATCH)
                    self._tell("")
                    while await opened.read():
                        self.read_again()
                        await asyncio.sleep(EVENT_PAUSE_SECONDS)
                    raise opened.gone(self.folder)
            except PanelError as problem:
                self._tell(str(problem))
                if isinstance(problem, DeviceGone):
                    self._drop_connection()
            await asyncio.sleep(RETRY_SECONDS)

    def _tell(self, problem):
        has_changed = problem != self.problem
        self.problem = problem
        self._is_known.set()
        if problem:
            self._runs.clear()
        else:
            self._runs.set()
        if has_changed:
            self.read_again()
            self._on_change()
