"""What a page of another site, or somebody without the token, can do to the panel's server: nothing."""

import asyncio
import socket

import aiohttp
import pytest
from adp.panel import guards
from client import panel_of, run

pytestmark = pytest.mark.usefixtures("loopback")


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


@pytest.mark.parametrize("path", ["capture/", "capture/%ff", "capture/%ed%a0%80", "capture/sw1?port=%ff", "capture/sw1/x"])
def test_a_capture_of_nothing_is_a_sentence(path):
    async def test(opened, _):
        said = await opened.raw(f"GET /{opened.token}/{path} HTTP/1.1", f"Host: {opened.host}")
        assert said.startswith("HTTP/1.1 400"), said

    run(test)


def test_the_server_is_at_loopback_alone():
    async def test(opened, _):
        port = int(opened.host.split(":")[1])
        with socket.socket() as other:
            assert other.connect_ex(("127.0.0.2", port)) != 0

    run(test)
