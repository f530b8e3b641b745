"""What a page that breaks the rules can do to the panel's server, and to a device through it: nothing."""

import asyncio
import json
import re

import aiohttp
import pytest
from adp.lab.builds import ROOT
from adp.panel import requests
from adp.panel.streams import SOURCES
from client import panel_of, run
from false_device import false_device

pytestmark = pytest.mark.usefixtures("loopback")
PORTS = {"command": "ports"}
ROWS = ("`ask` and `read`", "`ask`, not with `--read-only`", "`stream`")


@pytest.mark.parametrize(
    "message",
    [
        "",
        "nonsense",
        "[" * 100000,
        "[]",
        "7",
        "null",
        '{"id": 1',
        '{"device": "sw1", "ask": {"command": "ports"}}',
        '{"id": "1", "device": "sw1", "ask": {"command": "ports"}}',
        '{"id": true, "device": "sw1", "ask": {"command": "ports"}}',
        '{"id": -1, "device": "sw1", "ask": {"command": "ports"}}',
        '{"id": 1e999, "device": "sw1", "ask": {"command": "ports"}}',
        '{"id": 1' + "0" * 5000 + "}",
        '{"id": 1, "device": "sw1"}',
        '{"id": 1, "device": "sw1", "ask": {"command": "ports"}, "read": {"command": "ports"}, "every": 1}',
        b'{"id": 1, "device": "sw1", "ask": {"command": "ports"}}',
    ],
    ids=lambda message: repr(message)[:40],
)
def test_a_malformed_message_closes_the_connection_with_a_reason(message):
    async def test(opened, device):
        async with opened.page() as page:
            send = page.socket.send_bytes if isinstance(message, bytes) else page.socket.send_str
            await send(message)
            code, reason = await page.end()
            assert code == aiohttp.WSCloseCode.POLICY_VIOLATION
            assert reason.startswith("A message must")
        assert device.asked == []
        async with opened.page() as page:
            assert await page.ask(1, "sw1", **PORTS) == {"id": 1, "answer": {"ports": []}}

    run(test)


def test_a_message_that_is_too_long_closes_the_connection():
    async def test(opened, device):
        async with opened.page() as page:
            long = {"command": "ports", "more": "x" * (200 << 10)}
            assert "answer" in await page.ask(1, "sw1", **long)
            await page.socket.send_str(json.dumps({"id": 2, "device": "sw1", "ask": {**PORTS, "more": "x" * (1 << 18)}}))
            assert (await page.end())[0] == aiohttp.WSCloseCode.MESSAGE_TOO_BIG
        assert device.times("ports") == 1

    run(test)


@pytest.mark.parametrize(
    "kind, request_, complaint",
    [
        ("ask", {"command": "gpio"}, "'gpio'"),
        ("ask", {"command": "clear"}, "'clear'"),
        ("ask", {"command": "gpio", "pin": 1, "level": 1}, "'gpio'"),
        ("ask", {"command": "trace", "value": 1}, "'trace'"),
        ("ask", {"command": "metrics"}, "'metrics'"),
        ("ask", {"command": "follow"}, "'follow'"),
        ("ask", {"command": "capture"}, "'capture'"),
        ("ask", {"command": "ports "}, "'ports '"),
        ("ask", {"command": "ports", "arguments": ["--port", "1"]}, "by their names"),
        ("ask", {"command": "pull", "arguments": ["3"]}, "by their names"),
        ("ask", {"command": ["pull"]}, "an object with a command"),
        ("ask", {"command": {"command": "ports"}}, "an object with a command"),
        ("ask", {"command": None}, "an object with a command"),
        ("ask", {"ask": {"command": "ports"}}, "an object with a command"),
        ("ask", ["ports"], "an object with a command"),
        ("ask", "ports", "an object with a command"),
        ("read", {"command": "pull", "port": 1}, "'pull'"),
        ("read", {"command": "watch"}, "'watch'"),
        ("stream", {"command": "capture"}, "'capture'"),
        ("stream", {"command": "ports"}, "'ports'"),
        ("stream", {"command": "pull", "port": 1}, "'pull'"),
    ],
)
def test_other_commands_do_not_reach_a_device(kind, request_, complaint):
    async def test(opened, device):
        async with opened.page() as page:
            await page.say(1, device="sw1", every=1, **{kind: request_})
            assert complaint in (await page.hear(1))["error"]
            assert await page.ask(2, "sw1", **PORTS) == {"id": 2, "answer": {"ports": []}}
        assert device.asked == [PORTS]

    run(test)


def test_a_request_reaches_the_device_as_one_line():
    async def test(opened, device):
        async with opened.page() as page:
            twice = '{"id": 1, "device": "sw1", "ask": {"command": "pull", "command": "ports", "port": "1\\n{}\\u2028"}}'
            await page.socket.send_str(twice)
            assert "answer" in await page.hear(1)
        assert device.asked == [{"command": "ports", "port": "1\n{}\u2028"}]

    run(test)


def test_the_documents_have_the_commands():
    page = (ROOT / "docs/reference/adp-panel.md").read_text(encoding="utf-8")
    named = {row: set(re.findall(r"`([a-z]+)`", re.search(rf"(?m)^\| {row} \|(.*)$", page)[1])) for row in ROWS}
    assert list(named.values()) == [requests.READS, requests.CHANGES, SOURCES.keys()]


@pytest.mark.parametrize("name", ["sw2", "", "../sw1", None, 7, ["sw1"], {"name": "sw1"}])
def test_an_unknown_device_is_a_sentence(name):
    async def test(opened, _):
        async with opened.page() as page:
            await page.say(1, device=name, ask=PORTS)
            assert "The panel has no device" in (await page.hear(1))["error"]

    run(test)


def test_a_panel_that_is_read_only_changes_nothing():
    async def main():
        async with false_device() as device, panel_of(is_read_only=True, sw1=device.folder) as opened:
            async with opened.page() as page:
                assert (await page.hear_panel())["read_only"] is True
                for command in ("pull", "plug", "cable"):
                    assert (await page.ask(1, "sw1", command=command, port=1))["error"] == "This panel is read-only."
                assert "answer" in await page.ask(2, "sw1", **PORTS)
            assert device.asked == [PORTS]

    asyncio.run(main())


def test_a_page_has_so_many_readings_and_the_panel_so_many_pages():
    async def test(opened, device):
        async with opened.page() as page:
            for number in range(65):
                await page.say(number, device="sw1", read={**PORTS, "port": number}, every=60)
            assert "at most 64" in (await page.hear(64))["error"]
            await page.say(3, stop=True)
            await page.say(64, device="sw1", read=PORTS, every=60)
            assert "answer" in await page.hear(64)
        others = [await opened.client.ws_connect(f"{opened.url}socket", headers={"Origin": opened.origin}) for _ in range(16)]
        async with opened.page() as page:
            code, reason = await page.end()
            assert (code, reason) == (aiohttp.WSCloseCode.TRY_AGAIN_LATER, "16 pages are open already.")
        await others.pop().close()
        async with opened.page() as page:
            assert "answer" in await page.ask(1, "sw1", **PORTS)

    run(test)


@pytest.mark.parametrize("every", [0, 0.2, -1, 1e300, None, "1", True])
def test_a_reading_has_a_time(every):
    async def test(opened, device):
        async with opened.page() as page:
            await page.say(1, device="sw1", read=PORTS, every=every)
            assert "every 0.25 to 3600 seconds" in (await page.hear(1))["error"]
        assert device.asked == []

    run(test)


def test_an_id_that_is_in_use_closes_the_connection():
    async def test(opened, _):
        async with opened.page() as page:
            await page.say(1, device="sw1", read=PORTS, every=60)
            await page.say(1, device="sw1", read=PORTS, every=60)
            assert await page.end() == (aiohttp.WSCloseCode.POLICY_VIOLATION, "An id was used twice.")

    run(test)
