"""What the panel's server reads of devices for pages: how often, what is told, and devices that go and come back."""

import asyncio
import json
import re
import time

import pytest
from client import run, until
from false_device import FalseDevice, line

pytestmark = pytest.mark.usefixtures("loopback")
PORTS = {"command": "ports"}


def test_a_page_is_told_of_the_devices_first():
    async def test(opened, *_):
        async with opened.page() as page:
            await page.socket.send_str('{"id": 1, "device": "sw1", "ask": {"command": "gpio"}}')
            first = json.loads((await page.socket.receive()).data)
            assert [(each["name"], each["running"]) for each in first["panel"]["devices"]] == [("sw1", True), ("sw2", True)]
            assert first["panel"]["devices"][0].keys() == {"name", "running", "vdevctl", "adpsh", "exec"}
            assert (first["panel"]["lab"], first["panel"]["read_only"]) == (None, False)
            assert re.fullmatch(r"\d+\.\d+\.\d+", first["panel"]["version"])

    run(test, ("sw1", "sw2"))


def test_each_page_gets_the_answers_of_its_devices():
    async def test(opened, one, two):
        one.answers["version"] = line({"version": "one"})
        two.answers["version"] = line({"version": "two"})
        async with opened.page() as first, opened.page() as second:
            assert (await first.ask(7, "sw1", command="version"))["answer"] == {"version": "one"}
            assert (await second.ask(7, "sw2", command="version"))["answer"] == {"version": "two"}
            assert (await first.ask(8, "sw2", command="log")) == {"id": 8, "error": "unknown command"}

    run(test, ("sw1", "sw2"))


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


def test_links_that_come_and_go_quickly_are_read_ten_times_a_second():
    async def test(opened, device):
        async with opened.page() as page:
            await page.say(1, device="sw1", read=PORTS, every=3600)
            await page.hear(1)
            before, start = device.times("ports"), time.monotonic()
            for _ in range(100):
                await device.tell_link()
                await asyncio.sleep(0.005)
            assert 2 <= device.times("ports") - before <= 10 * (time.monotonic() - start) + 1

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
