"""Readings that are repeated: one for all pages that want the same."""

import asyncio
import contextlib
import time

from .answers import answer_member, error_member, without_time
from .problem import PanelError

SHARE = 10  # a reading takes at most this part of the time
FAILED_SECONDS = 1.0  # until a failed reading is tried again


class Reading:
    """A request that is made again and again, as often as the most eager of its takers wants."""

    def __init__(self, device, request, on_end):
        self._device = device
        self._request = request
        self._on_end = on_end
        self._takers = {}  # {key: (seconds, what takes a member of a message)}
        self._again = asyncio.Event()
        self._lasting = None  # the newest answer, without its time
        self._is_still = False  # it stayed the same, and the takers know
        self._member = None  # what the takers were given
        self._task = asyncio.create_task(self._repeat())

    def add(self, key, every, take):
        """From now on `take` gets '"answer":...' or '"error":...' when that has changed."""
        self._takers[key] = (every, take)
        if self._member:
            take(self._member)
        self._again.set()

    def remove(self, key):
        """Ends the reading if nobody wants it any more."""
        self._takers.pop(key, None)
        if not self._takers:
            self.stop()
            self._on_end()

    def stop(self):
        self._task.cancel()

    def hurry(self):
        """Does not wait for the next time."""
        self._again.set()

    async def _repeat(self):
        while True:
            self._again.clear()
            if self._device.problem:
                self._give(error_member(self._device.problem))
                await self._again.wait()
                continue
            took = await self._read()
            # A device that is asked for large tables must have time for frames.
            await asyncio.sleep((SHARE - 1) * took)
            every = min((seconds for seconds, _ in self._takers.values()), default=FAILED_SECONDS)
            await self._wait(max(0, every - SHARE * took))

    async def _wait(self, seconds):
        with contextlib.suppress(TimeoutError):
            async with asyncio.timeout(seconds):
                await self._again.wait()

    async def _read(self):
        """Gives how long the device took."""
        try:
            async with self._device.turn() as connection:
                start = time.monotonic()
                octets = await connection.ask(self._request)
                took = time.monotonic() - start
            lasting = without_time(octets)
            if lasting != self._lasting or not self._is_still:
                # Counts that stay the same are told once more: the page sees that their rate is 0.
                self._give(answer_member(octets))
                self._lasting, self._is_still = lasting, lasting == self._lasting
            return took
        except PanelError as problem:
            self._lasting = None
            self._give(error_member(problem))
            return FAILED_SECONDS / SHARE

    def _give(self, member):
        if member == self._member:
            return
        self._member = member
        for _, take in list(self._takers.values()):
            take(member)
