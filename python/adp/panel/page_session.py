"""One page that is connected: what it has asked for, and what waits to be sent to it."""

import asyncio
import contextlib
import json

from . import requests
from .answers import answer_member, error_member
from .problem import MalformedMessage, PanelError
from .streams import SOURCES, stream

MAX_JOBS = 64  # readings, streams and requests at a time
ASKED_AT_ONCE = 4
DEAD_SECONDS = 30.0
SHORTEST_SECONDS = 0.25
LONGEST_SECONDS = 3600
LARGEST_ID = 1 << 53  # that a browser has exactly


def _message_of(text):
    try:
        message = json.loads(text)
    except (ValueError, RecursionError):
        raise MalformedMessage("A message must be JSON.") from None
    if not isinstance(message, dict):
        raise MalformedMessage("A message must be an object.")
    number = message.get("id")
    if type(number) is not int or not 0 <= number < LARGEST_ID:
        raise MalformedMessage("A message must have an id.")
    if len({"ask", "read", "stream", "stop"} & message.keys()) != 1:
        raise MalformedMessage("A message must have one of the members ask, read, stream and stop.")
    return message


def _message(number, member):
    return f'{{"id":{number},{member}}}'


def _seconds_of(every):
    if type(every) not in (int, float) or not SHORTEST_SECONDS <= every <= LONGEST_SECONDS:
        raise PanelError(f"A reading is repeated every {SHORTEST_SECONDS} to {LONGEST_SECONDS} seconds.")
    return every


class PageSession:
    """Serves one WebSocket. What a page does not take is not kept, but for the newest of each reading."""

    def __init__(self, panel, socket, abort):
        """`abort` ends the connection at once."""
        self._panel = panel
        self._socket = socket
        self._abort = abort
        self._ends = {}  # {id: what ends the job}
        self._newest = {}  # {key: the text of a message that waits}
        self._has_newest = asyncio.Event()
        self._sending = asyncio.Lock()
        self._asking = asyncio.Semaphore(ASKED_AT_ONCE)

    def offer(self, key, text):
        """A message that takes the place of an earlier one of the same key, if that still waits."""
        self._newest[key] = text
        self._has_newest.set()

    def offer_panel(self, state):
        self.offer("panel", json.dumps({"panel": state}))

    async def run(self):
        """Returns when the page leaves."""
        await self._flush()
        writer = asyncio.create_task(self._write_newest())
        try:
            async for message in self._socket:
                if not isinstance(message.data, str):
                    raise MalformedMessage("A message must be text.")
                await self._take(_message_of(message.data))
        finally:
            writer.cancel()
            for end in list(self._ends.values()):
                end()

    async def _write_newest(self):
        with contextlib.suppress(ConnectionError):
            while await self._has_newest.wait():
                self._has_newest.clear()
                await self._flush()

    async def _flush(self):
        while self._newest:
            key = next(iter(self._newest))
            await self._send(self._newest.pop(key))

    async def _send(self, text):
        """Returns when there is room for more. A page that takes nothing for long is dead."""
        async with self._sending:
            try:
                async with asyncio.timeout(DEAD_SECONDS):
                    await self._socket.send_str(text)
            except TimeoutError:
                self._abort()
                raise ConnectionResetError from None

    async def _send_member(self, number, member):
        await self._send(_message(number, member))

    async def _take(self, message):
        number = message["id"]
        if "stop" in message:
            if number in self._ends:
                self._ends.pop(number)()
            return
        try:
            self._begin(number, message)
        except PanelError as problem:
            await self._send_member(number, error_member(problem))

    def _begin(self, number, message):
        if number in self._ends:
            raise MalformedMessage("An id was used twice.")
        if len(self._ends) >= MAX_JOBS:
            raise PanelError(f"A page has at most {MAX_JOBS} requests, readings and streams at a time.")
        device = self._panel.device(message.get("device"))
        if "read" in message:
            self._begin_reading(number, device, requests.read(message["read"]), _seconds_of(message.get("every")))
            return
        if "ask" in message:
            work = self._answer(number, device, requests.asked(message["ask"], self._panel.is_read_only))
        else:
            request = requests.streamed(message["stream"], SOURCES)
            work = stream(device, request, lambda member: self._send_member(number, member))
        task = asyncio.create_task(self._until_done(number, work))
        self._ends[number] = end = task.cancel
        # A page that has stopped it may have used the id again.
        task.add_done_callback(lambda _: self._ends.get(number) == end and self._ends.pop(number))

    def _begin_reading(self, number, device, request, every):
        reading = device.reading(request)
        key = (self, number)

        def end():
            reading.remove(key)
            self._newest.pop(number, None)

        self._ends[number] = end
        reading.add(key, every, lambda member: self.offer(number, _message(number, member)))

    async def _until_done(self, number, work):
        with contextlib.suppress(ConnectionError):
            try:
                await work
            except PanelError as problem:
                await self._send_member(number, error_member(problem))

    async def _answer(self, number, device, request):
        async with self._asking:
            try:
                answer = answer_member(await device.ask(request))
            finally:
                if request["command"] in requests.CHANGES:
                    device.read_again()
            await self._send_member(number, answer)
