"""What the panel's server does between pages and devices: readings, streams, devices that go, that lie, that are silent."""

import asyncio
import contextlib
import json
import pathlib
import re
import time

import pytest
from adp.panel import connection, page_session
from client import SECONDS, panel_of
from false_device import FalseDevice, false_device, line

pytestmark = pytest.mark.usefixtures("loopback")
PORTS = {"command": "ports"}
COUNTERS = {"command": "counters"}
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


def run(test, names=("sw1",), **options):
    """Runs a test with devices and a panel for them."""

    async def with_panel():
        async with contextlib.AsyncExitStack() as stack:
            devices = {name: await stack.enter_async_context(false_device()) for name in names}
            for device in devices.values():
                device.answers["ports"] = line({"ports": [], "time": 1.5})
            folders = {name: device.folder for name, device in devices.items()}
            opened = await stack.enter_async_context(panel_of(**options, **folders))
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


def test_a_page_is_told_of_the_devices_first():
    async def test(opened, *_):
        async with opened.page() as page:
            await page.socket.send_str('{"id": 1, "device": "sw1", "ask": {"command": "gpio"}}')
            first = json.loads((await page.socket.receive()).data)
            assert [(each["name"], each["running"]) for each in first["panel"]["devices"]] == [("sw1", True), ("sw2", True)]
            assert first["panel"]["devices"][0].keys() == {"name", "running", "vdevctl", "adpsh", "exec"}
            assert (first["panel"]["lab"], first["panel"]["read_only"]) == (None, False)
            assert re.fullmatch(r"\d+\.\d+\.\d+", first["panel"]["version"])

    run(test, names=("sw1", "sw2"))


def test_each_page_gets_the_answers_of_its_devices():
    async def test(opened, one, two):
        one.answers["version"] = line({"version": "one"})
        two.answers["version"] = line({"version": "two"})
        async with opened.page() as first, opened.page() as second:
            assert (await first.ask(7, "sw1", command="version"))["answer"] == {"version": "one"}
            assert (await second.ask(7, "sw2", command="version"))["answer"] == {"version": "two"}
            assert (await first.ask(8, "sw2", command="help")) == {"id": 8, "error": "unknown command"}

    run(test, names=("sw1", "sw2"))


def test_a_reading_is_sent_when_it_has_changed():
    async def test(opened, device):
        rows = []

        async def now(_, writer):
            writer.write(line({"ports": rows, "time": device.times("ports")}))

        device.answers["ports"] = now
        async with opened.page() as page:
            await page.say(1, device="sw1", read=PORTS, every=0.25)
            # Once it is told that nothing has changed, for a rate of 0.
            for rows in ([], [{"time": 3}], [{"time": 4}]):
                assert (await page.hear(1))["answer"]["ports"] == rows
                assert (await page.hear(1))["answer"]["ports"] == rows
                assert await page.hears_nothing(1, 0.6)
            await page.say(1, stop=True)
            await asyncio.sleep(0.1)
            before = device.times("ports")
            await asyncio.sleep(0.4)
            assert device.times("ports") == before

    run(test)


def test_equal_readings_are_made_once_for_all_pages():
    async def test(opened, device):
        async with opened.page() as first, opened.page() as second:
            await first.say(1, device="sw1", read={"command": "ports", "port": 1}, every=0.25)
            await first.hear(1)
            await second.say(5, device="sw1", read={"port": 1, "command": "ports"}, every=60)
            assert (await second.hear(5))["answer"]["ports"] == []
            start, before = time.monotonic(), device.times("ports")
            await asyncio.sleep(1)
            most = (time.monotonic() - start) / 0.25 + 1
            assert 1 <= device.times("ports") - before <= most
            # The eager one leaves, and the other one's time counts.
            await first.say(1, stop=True)
            await asyncio.sleep(0.4)
            before = device.times("ports")
            await asyncio.sleep(0.6)
            assert device.times("ports") == before
            device.answers["ports"] = line({"ports": [2]})
            await device.tell_link()
            assert (await second.hear(5))["answer"] == {"ports": [2]}

    run(test)


def test_nothing_is_read_without_a_page():
    async def test(opened, device):
        assert device.writers == []
        async with opened.page() as page:
            await page.say(1, device="sw1", read=PORTS, every=0.25)
            await page.hear(1)
            assert len(device.writers) == 1
        await until(lambda: not opened.panel.device("sw1")._readings)
        before = len(device.asked)
        await asyncio.sleep(0.6)
        assert len(device.asked) == before

    run(test)


def test_a_link_event_or_a_change_makes_a_reading_new_at_once():
    async def test(opened, device):
        async with opened.page() as page:
            await page.say(1, device="sw1", read=PORTS, every=3600)
            await page.hear(1)
            device.answers["ports"] = line({"ports": [1]})
            await device.tell_link()
            assert (await page.hear(1, 2))["answer"] == {"ports": [1]}
            device.answers["ports"], device.answers["pull"] = line({"ports": [2]}), line({})
            await page.say(2, device="sw1", ask={"command": "pull", "port": 3})
            assert (await page.hear(2, 2))["answer"] == {}
            assert (await page.hear(1, 2))["answer"] == {"ports": [2]}

    run(test)


def test_reading_takes_at_most_a_tenth_of_the_time():
    async def test(opened, device):
        async def slow(_, writer):
            await asyncio.sleep(0.1)
            writer.write(line({"ports": [len(device.asked)]}))

        device.answers["ports"] = slow
        async with opened.page() as page:
            await page.say(1, device="sw1", read=PORTS, every=0.25)
            await page.hear(1)
            start = time.monotonic()
            for _ in range(5):
                await device.tell_link()
                await asyncio.sleep(0.02)
            await page.hear(1)
            assert time.monotonic() - start >= 0.9
            assert device.times("ports") == 2

    run(test)


def test_a_device_that_goes_is_told_at_once_and_comes_back():
    async def test(opened, device):
        async with opened.page() as page:
            assert (await page.hear_panel())["devices"][0]["running"]
            await page.say(1, device="sw1", read=PORTS, every=0.25)
            await page.say(2, device="sw1", stream={"command": "watch"})
            assert (await page.hear(1))["answer"]["ports"] == []
            assert (await page.hear(2)) == {"id": 2, "lines": []}
            start = time.monotonic()
            await device.stop()
            assert not (await page.hear_panel())["devices"][0]["running"]
            assert time.monotonic() - start < 0.5
            gone = f"No device is running in {device.folder}."
            assert await page.ask(3, "sw1", **PORTS) == {"id": 3, "error": gone}
            again = FalseDevice(device.folder)
            again.answers["ports"] = line({"ports": [9]})
            (device.folder / "control").unlink()
            await again.start()
            for number in (1, 2):
                assert await page.hear(number) == {"id": number, "error": gone}
            assert await page.hear(1) == {"id": 1, "answer": {"ports": [9]}}
            assert await page.hear(2) == {"id": 2, "lines": []}
            assert (await page.hear_panel())["devices"][0]["running"]
            await again.stop()

    run(test)


def test_a_device_that_does_not_run_yet_is_waited_for(tmp_path):
    async def test(opened, _):
        async with opened.page() as page:
            assert not (await page.hear_panel())["devices"][0]["running"]
            await page.say(1, device="late", read=PORTS, every=0.25)
            assert "No device is running" in (await page.hear(1))["error"]
            device = FalseDevice(tmp_path)
            device.answers["ports"] = line({"ports": []})
            await device.start()
            assert (await page.hear(1))["answer"] == {"ports": []}
            assert page.panel["devices"][0]["running"]
            await device.stop()

    tmp_path.chmod(0o700)
    run(test, late=tmp_path)


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
        async with opened.page() as page:
            await page.hear_panel()
            memory = Memory()
            with page.paused():
                for number in range(8):
                    await page.say(number, device="sw1", stream={"command": "follow"})
                for number in range(8, 60):
                    await page.say(number, device="sw1", read={**PORTS, "port": number}, every=0.25)
                for number in range(100, 400):
                    await page.say(number, device="sw1", ask=PORTS)
                stopped = await standstill(lambda: written)
                assert stopped < 8 * most
                assert memory.grown() < 100
                async with opened.page() as other:
                    assert (await other.ask(1, "sw1", **PORTS))["answer"]["ports"]
                await until(lambda: not opened.panel._pages)

    run(test)


async def standstill(value):
    """A value that no longer changes."""
    async with asyncio.timeout(SECONDS):
        while True:
            before = value()
            await asyncio.sleep(1)
            if value() == before:
                return before


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
