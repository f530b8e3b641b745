"""Devices that lie, go on without end or are silent: a sentence in the page, and little memory in the panel's server."""

import asyncio
import contextlib
import json

import pytest
from adp.panel import connection
from client import SECONDS, Memory, run
from false_device import line

pytestmark = pytest.mark.usefixtures("loopback")
PORTS = {"command": "ports"}
LIES = {
    "no JSON": b"nonsense\n",
    "another value": b"[]\n",
    "a value that goes on": b'{},"id":2,"answer":{}\n',
    "the end of the message": b'{}}{"id":2\n',
    "a member": b'{}, "panel": {"devices": []}\n',
    "no number": b'{"ports": NaN}\n',
    "no text": b'{"ports": "\xff\xfe"}\n',
    "a control character": b'{"ports": "\x01"}\n',
    "deep": b'{"ports": ' + b"[" * 100000 + b"]" * 100000 + b"}\n",
    "many values": b'{"ports": [' + b"[]," * 2_000_000 + b"[]]}\n",
    "a long number": b'{"ports": ' + b"1" * 10000 + b"}\n",
    "nothing": b"\n",
}


@pytest.mark.parametrize("lie", LIES)
def test_an_answer_that_is_none_is_a_sentence_and_stays_in_its_message(lie):
    async def test(opened, device):
        device.answers["ports"] = LIES[lie]
        memory = Memory()
        device.answers["version"] = line({"version": "1"})
        async with opened.page() as page:
            before = await page.hear_panel()
            await page.say(1, device="sw1", ask=PORTS)
            message = json.loads((await page.socket.receive()).data)
            assert message.keys() == {"id", "error"}
            assert "The device sent" in message["error"]
            await page.say(3, device="sw1", read=PORTS, every=0.25)
            assert "The device sent" in (await page.hear(3))["error"]
            assert (await page.ask(4, "sw1", command="version"))["answer"] == {"version": "1"}
            assert page.panel == before
        assert memory.grown() < 100

    run(test)


def test_an_endless_answer_is_a_sentence_and_takes_little_memory():
    async def test(opened, device):
        async def endless(_, writer):
            with contextlib.suppress(ConnectionError):
                while not writer.transport.is_closing():
                    writer.write(b"x" * (1 << 20))
                    await writer.drain()

        device.answers["ports"] = device.answers["follow"] = endless
        async with opened.page() as page:
            memory = Memory()
            assert "more than 16 MiB" in (await page.ask(1, "sw1", **PORTS))["error"]
            await page.say(2, device="sw1", read=PORTS, every=0.25)
            assert "more than 16 MiB" in (await page.hear(2))["error"]
            await page.say(3, device="sw1", stream={"command": "follow"})
            assert "more than 16 MiB" in (await page.hear(3))["error"]
            assert memory.grown() < 100

    run(test)


def test_an_endless_line_of_a_stream_ends_the_stream():
    async def test(opened, device):
        async def endless(_, writer):
            with contextlib.suppress(ConnectionError):
                writer.write(line({"following": True}))
                while not writer.transport.is_closing():
                    writer.write(b"x" * (1 << 16))
                    await writer.drain()

        device.answers["follow"] = endless
        async with opened.page() as page:
            await page.say(1, device="sw1", stream={"command": "follow"})
            assert await page.hear(1) == {"id": 1, "lines": []}
            assert "a line of more than 256 KiB" in (await page.hear(1))["error"]

    run(test)


def test_a_line_that_is_none_ends_the_stream_with_a_sentence():
    async def test(opened, device):
        device.answers["follow"] = line({"following": True}) + b'{}],"id":2,"lines":[{}\n'
        device.answers["watch"] = line({"error": "There is nothing to watch."})
        async with opened.page() as page:
            await page.say(1, device="sw1", stream={"command": "follow"})
            assert await page.hear(1) == {"id": 1, "lines": []}
            assert await page.hear(1) == {"id": 1, "error": "The device sent what is no JSON."}
            await page.say(2, device="sw1", stream={"command": "watch"})
            assert await page.hear(2) == {"id": 2, "error": "There is nothing to watch."}

    run(test)


def test_a_silent_device_is_a_sentence(monkeypatch):
    async def silence(_, __):
        await asyncio.sleep(SECONDS)

    async def test(opened, device):
        monkeypatch.setattr(connection, "SECONDS", 0.3)
        device.answers["ports"] = silence
        async with opened.page() as page:
            assert "gave no answer within 0.3 s" in (await page.ask(1, "sw1", **PORTS))["error"]
            await page.say(2, device="sw1", read=PORTS, every=0.25)
            assert "gave no answer" in (await page.hear(2))["error"]
            device.answers["ports"] = line({"ports": []})
            assert (await page.hear(2))["answer"] == {"ports": []}
        device.answers["watch"] = silence
        async with opened.page() as page:
            assert not (await page.hear_panel())["devices"][0]["running"]

    run(test)


def test_a_folder_that_others_may_write_to_is_not_trusted():
    async def test(opened, device):
        device.folder.chmod(0o777)
        async with opened.page() as page:
            assert "others may write to it" in (await page.ask(1, "sw1", **PORTS))["error"]
            assert not page.panel["devices"][0]["running"]
        assert device.asked == []
        device.folder.chmod(0o700)

    run(test)
