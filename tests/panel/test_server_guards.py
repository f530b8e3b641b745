"""What a page of another site, or a page that breaks the rules, can do to the panel's server: nothing."""

import asyncio
import json
import socket

import aiohttp
import pytest
from adp.panel import guards
from client import panel_of
from false_device import false_device, line

pytestmark = pytest.mark.usefixtures("loopback")
PORTS = {"command": "ports"}


def run(test):
    """Runs a test with a device `sw1` and a panel for it."""

    async def with_panel():
        async with false_device() as device, panel_of(sw1=device.folder) as opened:
            device.answers["ports"] = line({"ports": []})
            device.answers["pull"] = line({})
            await test(opened, device)

    asyncio.run(with_panel())


def test_files_of_the_page_alone_are_served_with_a_strict_policy():
    async def test(opened, _):
        for path, kind in (("", "text/html"), ("main.js", "text/javascript"), ("style/base.css", "text/css")):
            status, headers, octets = await opened.get(path)
            assert (status, headers["Content-Type"].split(";")[0]) == (200, kind)
            assert octets
            assert "script-src 'self'" in headers["Content-Security-Policy"]
            assert guards.HEADERS.items() <= headers.items()
        for path in ("tsconfig.json", "types.d.ts", "vendor/README.md", "none.js", "style", "style/"):
            assert (await opened.get(path))[0] == 404, path
        assert (await opened.get("socket"))[0] == 403
        assert (await opened.get("socket", Origin=opened.origin))[0] == 404

    run(test)


@pytest.mark.parametrize(
    "path",
    [
        "../server.py",
        "../page/main.js",
        "style/../main.js",
        "style/../../guards.py",
        "%2e%2e/server.py",
        "..%2fserver.py",
        "%2e%2e%2fpage%2fmain.js",
        "%252e%252e/server.py",
        "//etc/passwd",
        "/etc/passwd",
        "./main.js",
        "main.js%00",
        "main.js%0a",
        "MAIN.JS",
        "..\\server.py",
    ],
)
def test_no_path_leads_elsewhere(path):
    async def test(opened, _):
        said = await opened.raw(f"GET /{opened.token}/{path} HTTP/1.1", f"Host: {opened.host}")
        assert said.startswith(("HTTP/1.1 404", "HTTP/1.1 400")), said

    run(test)


def test_without_the_token_there_is_nothing():
    async def test(opened, _):
        wrong = opened.token[:-1] + ("a" if opened.token[-1] != "a" else "b")
        for path in ("/", "/main.js", f"/{wrong}/", f"/{wrong}/main.js", f"/{opened.token}", "/%ff/", "//"):
            said = await opened.raw(f"GET {path} HTTP/1.1", f"Host: {opened.host}")
            assert said.startswith("HTTP/1.1 404"), (path, said)
        with pytest.raises(aiohttp.WSServerHandshakeError) as refused:
            await opened.client.ws_connect(f"{opened.origin}/{wrong}/socket", headers={"Origin": opened.origin})
        assert refused.value.status == 404
        for method in ("POST", "PUT", "DELETE", "OPTIONS", "HEAD"):
            said = await opened.raw(f"{method} /{opened.token}/ HTTP/1.1", f"Host: {opened.host}")
            assert said.startswith("HTTP/1.1 404"), said

    run(test)


def test_each_server_has_a_token_of_its_own_of_at_least_128_bits():
    async def token():
        async with panel_of() as opened:
            return opened.token

    tokens = {asyncio.run(token()) for _ in range(3)}
    assert len(tokens) == 3
    assert all(len(each) * 6 >= 128 for each in tokens)


def test_another_name_for_this_machine_is_refused():
    async def test(opened, _):
        port = opened.host.split(":")[1]
        for host in (f"127.0.0.1:{port}", f"localhost:{port}", f"[::1]:{port}", "LOCALHOST"):
            assert (await opened.raw(f"GET /{opened.token}/ HTTP/1.1", f"Host: {host}")).startswith("HTTP/1.1 200")
        bad = ["evil.example", f"127.0.0.1.evil.example:{port}", f"evil@127.0.0.1:{port}", "", "127.0.0.2", "0.0.0.0"]
        for host in (*bad, f"localhost:{port}x", "localhost:", "[::1"):
            assert "403" in await opened.raw(f"GET /{opened.token}/ HTTP/1.1", f"Host: {host}"), host
        twice = await opened.raw(f"GET /{opened.token}/ HTTP/1.1", f"Host: {opened.host}", "Host: evil.example")
        assert "403" in twice or "400" in twice
        assert "403" in await opened.raw(f"GET /{opened.token}/ HTTP/1.1")
        assert "403" in await opened.raw(f"GET http://{opened.host}/{opened.token}/ HTTP/1.1", "Host: evil.example")

    run(test)


def test_a_name_that_was_rebound_reaches_no_device():
    async def test(opened, device):
        with pytest.raises(aiohttp.WSServerHandshakeError) as refused:
            await opened.client.ws_connect(
                f"{opened.url}socket", headers={"Host": "evil.example", "Origin": "http://evil.example"}
            )
        assert refused.value.status == 403
        assert device.asked == []

    run(test)


@pytest.mark.parametrize(
    "headers",
    [
        {"Origin": "http://evil.example"},
        {"Origin": "null"},
        {"Origin": "https://HOST"},
        {"Origin": "http://127.0.0.1"},
        {"Origin": "http://HOST.evil.example"},
        {"Sec-Fetch-Site": "cross-site"},
        {"Sec-Fetch-Site": "same-site"},
        {"Sec-Fetch-Site": "nonsense"},
        {"Sec-Fetch-Site": "cross-site", "Sec-Fetch-Mode": "navigate", "Sec-Fetch-Dest": "iframe"},
    ],
)
def test_requests_of_other_sites_are_refused(headers):
    async def test(opened, device):
        given = {name: value.replace("HOST", opened.host) for name, value in headers.items()}
        for path in ("", "main.js", "capture/sw1?count=1"):
            assert (await opened.get(path, **given))[0] == 403, path
        assert device.asked == []

    run(test)


def test_a_link_on_another_site_leads_to_the_page_alone():
    async def test(opened, _):
        visit = {"Sec-Fetch-Site": "cross-site", "Sec-Fetch-Mode": "navigate", "Sec-Fetch-Dest": "document"}
        assert (await opened.get("", **visit))[0] == 200
        assert (await opened.get("main.js", **visit))[0] == 403
        assert (await opened.get("capture/sw1?count=1", **visit))[0] == 403
        for site in ("same-origin", "none"):
            assert (await opened.get("main.js", **{"Sec-Fetch-Site": site}))[0] == 200

    run(test)


@pytest.mark.parametrize("origin", [None, "http://evil.example", "null", "http://localhost", "file://"])
def test_a_socket_needs_the_pages_own_origin(origin):
    async def test(opened, _):
        headers = {"Origin": origin} if origin else {}
        with pytest.raises(aiohttp.WSServerHandshakeError) as refused:
            await opened.client.ws_connect(f"{opened.url}socket", headers=headers)
        assert refused.value.status == 403

    run(test)


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
        ("ask", {"command": "gpio", "pin": 1, "level": 1}, "'gpio'"),
        ("ask", {"command": "trace", "value": 1}, "'trace'"),
        ("ask", {"command": "metrics"}, "'metrics'"),
        ("ask", {"command": "follow"}, "'follow'"),
        ("ask", {"command": "capture"}, "'capture'"),
        ("ask", {"command": "ports "}, "'ports '"),
        ("ask", {"command": "ports", "arguments": ["--port", "1"]}, "by their names"),
        ("ask", {"command": "clear", "arguments": ["counters"]}, "by their names"),
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
            device.answers["ports"] = line({"ports": []})
            async with opened.page() as page:
                assert (await page.hear_panel())["read_only"] is True
                for command in ("pull", "plug", "cable", "clear"):
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


def test_the_server_is_at_loopback_alone():
    async def test(opened, _):
        port = int(opened.host.split(":")[1])
        with socket.socket() as other:
            assert other.connect_ex(("127.0.0.2", port)) != 0

    run(test)
