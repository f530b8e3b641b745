"""Streams of lines through the panel's server, and pages that do not take them."""

import asyncio
import contextlib
import time

import pytest
from adp.panel import page_session
from client import SECONDS, Memory, panel_of, run, until
from false_device import false_device, line

pytestmark = pytest.mark.usefixtures("loopback")
PORTS = {"command": "ports"}


def test_a_stream_hands_on_lines_in_batches():
    async def test(opened, device):
        async def lines(_, writer):
            writer.write(line({"following": True}) + b"".join(line({"n": number}) for number in range(1000)))
            await asyncio.sleep(1)
            writer.write(line({"n": 1000}))

        device.answers["follow"] = lines
        async with opened.page() as page:
            await page.say(1, device="sw1", stream={"command": "follow", "steps": True})
            assert await page.hear(1) == {"id": 1, "lines": []}
            start, heard = time.monotonic(), []
            while len(heard) < 1001:
                batch = (await page.hear(1))["lines"]
                assert len(batch) <= 300
                heard += batch
            assert [each["n"] for each in heard] == list(range(1001))
            assert time.monotonic() - start >= 0.3
            assert device.asked == [{"command": "follow", "steps": True}]

    run(test)


async def standstill(value):
    """A value that no longer changes."""
    async with asyncio.timeout(SECONDS):
        while True:
            before = value()
            await asyncio.sleep(1)
            if value() == before:
                return before


def test_a_page_that_does_not_read_makes_the_device_wait(monkeypatch):
    """The server takes no more of a stream than the page, and drops a page that takes nothing for long."""
    monkeypatch.setattr(page_session, "DEAD_SECONDS", 3.0)
    most = 1 << 23
    written = 0

    async def test(opened, device):
        async def lines(_, writer):
            nonlocal written
            piece = line({"frame": "x" * 1000}) * 60
            writer.write(line({"following": True}))
            with contextlib.suppress(ConnectionError):
                while not writer.transport.is_closing():
                    writer.write(piece)
                    await writer.drain()
                    written += len(piece)

        device.answers["follow"] = lines
        device.answers["ports"] = line({"ports": ["x" * 100000]})
        device.answers["macs"] = line({"macs": ["x" * 4000000]})
        async with opened.page() as page:
            await page.hear_panel()
            memory = Memory()
            with page.paused():
                for number in range(8):
                    await page.say(number, device="sw1", stream={"command": "follow"})
                for number in range(8, 32):
                    await page.say(number, device="sw1", read={**PORTS, "port": number}, every=0.25)
                for number in range(100, 400):
                    await page.say(number, device="sw1", ask={"command": "macs"})
                stopped = await standstill(lambda: written)
                assert stopped < 8 * most
                assert memory.grown() < 100
                async with opened.page() as other:
                    assert (await other.ask(1, "sw1", **PORTS))["answer"]["ports"]
                await until(lambda: not opened.panel._pages)

    run(test)


def test_the_server_ends_while_a_page_does_not_read():
    async def main():
        async with false_device() as device:
            device.answers["ports"] = line({"ports": ["x" * 1000000]})
            async with contextlib.AsyncExitStack() as stack:
                opened = await stack.enter_async_context(panel_of(sw1=device.folder))
                page = await stack.enter_async_context(opened.page())
                await page.hear_panel()
                with page.paused():
                    for number in range(20):
                        await page.say(number, device="sw1", ask=PORTS)
                    await asyncio.sleep(0.5)
                    start = time.monotonic()
                    await opened.server.stop()
                    assert time.monotonic() - start < 5

    asyncio.run(main())
