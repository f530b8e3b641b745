"""The program adp-panel with a real device: how it begins and ends, captures, and what it says of a lab."""

import asyncio
import os
import pathlib
import re
import signal
import socket
import struct
import subprocess
import tempfile
import urllib.error
import urllib.request

import aiohttp
import pytest
from adp.lab.builds import native_build
from adp.lab.device import Device
from adp.lab.process import LineReader, poll_until, stop
from adp.panel.command import main
from client import Page
from panels import module

pytestmark = pytest.mark.usefixtures("loopback")
SECONDS = 30


@pytest.fixture(name="device", scope="module")
def make_device(loopback):
    device = Device(native_build(), 2)
    yield device
    device.close()


class Program:
    """adp-panel, as it was started."""

    def __init__(self, *words, **environment):
        without_lab = {name: value for name, value in os.environ.items() if name != "ADP_LAB"}
        self._complaints = tempfile.TemporaryFile("w+")
        self.process = subprocess.Popen(
            module("adp.panel", *words),
            stdout=subprocess.PIPE,
            stderr=self._complaints,
            env={**without_lab, **environment},
        )
        self.url = LineReader(self.process.stdout).line(SECONDS, "adp-panel")

    def children(self):
        path = pathlib.Path(f"/proc/{self.process.pid}/task/{self.process.pid}/children")
        return path.read_text(encoding="ascii").split()

    def end(self, number=signal.SIGTERM):
        """(exit status, what it wrote to standard error)"""
        self.process.send_signal(number)
        return self.wait()

    def wait(self):
        status = self.process.wait(SECONDS)
        self._complaints.seek(0)
        return status, self._complaints.read()


@pytest.fixture(name="start")
def make_starter():
    started = []

    def start(*words, **environment):
        started.append(Program(*words, **environment))
        return started[-1]

    yield start
    for program in started:
        stop(program.process)


def failed(monkeypatch, capfd, *words, **environment):
    """(exit status, complaint) of adp-panel in this process. It must end by itself and print no address."""
    for name, value in environment.items():
        monkeypatch.setenv(name, value)
    try:
        status = main(words)
    except SystemExit as misuse:
        status = misuse.code
    said, complaint = capfd.readouterr()
    assert said == ""
    return status, complaint


@pytest.mark.parametrize("number", [signal.SIGINT, signal.SIGTERM, signal.SIGHUP])
def test_it_prints_an_address_and_ends_with_a_signal(device, start, number):
    program = start(f"sw1={device.run_dir}")
    assert re.fullmatch(r"http://127\.0\.0\.1:\d+/[\w-]{32}/", program.url)
    with urllib.request.urlopen(program.url, timeout=SECONDS) as page:
        assert b"<!doctype html>" in page.read()
    assert program.end(number) == (0, "")


def test_the_port_can_be_chosen(start, device, monkeypatch, capfd):
    with socket.socket() as taken:
        taken.bind(("127.0.0.1", 0))
        port = taken.getsockname()[1]
    program = start(device.run_dir, "--port", str(port))
    assert f":{port}/" in program.url
    status, complaint = failed(monkeypatch, capfd, device.run_dir, "--port", str(port))
    assert status == 1
    assert re.fullmatch(rf"adp-panel: .*{port}.*address already in use.*\n", complaint)


@pytest.mark.parametrize(
    "words, status, complaint",
    [
        (["--lab", "none"], 1, "No lab with the name 'none' is running."),
        (["--lab", "none", "/tmp"], 1, "Name a lab or run folders, not both."),
        (["a=/tmp/x", "a=/tmp/y"], 1, "Two devices have the name 'a'."),
        (["--port", "70000"], 2, "a port is a number from 0 to 65535"),
        (["--nonsense"], 2, "--nonsense"),
    ],
)
def test_an_error_is_a_sentence(tmp_path, monkeypatch, capfd, words, status, complaint):
    found, said = failed(monkeypatch, capfd, *words, ADP_LAB_DIR=str(tmp_path))
    assert found == status
    assert re.fullmatch(r"adp-panel: [^\n]*\.\n", said), said
    assert complaint in said


async def page_of(url, use):
    """Lets `use` talk as a page."""
    async with aiohttp.ClientSession() as client:
        origin = url.rsplit("/", 2)[0]
        async with client.ws_connect(f"{url}socket", headers={"Origin": origin}) as opened:
            return await use(Page(opened))


def test_a_page_reads_and_changes_a_real_device(device, start):
    async def use(page):
        assert (await page.ask(1, "sw1", command="version"))["answer"]["user_ports"] == 2
        await page.say(2, device="sw1", read={"command": "ports", "port": "1-2"}, every=3600)
        assert [row["pulled"] for row in (await page.hear(2))["answer"]["ports"]] == [False, False]
        assert (await page.ask(3, "sw1", command="pull", port=2))["answer"] == {}
        assert [row["pulled"] for row in (await page.hear(2))["answer"]["ports"]] == [False, True]
        assert (await page.ask(4, "sw1", command="plug", port=2))["answer"] == {}
        assert "port" in (await page.ask(5, "sw1", command="pull", port=99))["error"]

    asyncio.run(page_of(start(f"sw1={device.run_dir}").url, use))


def blocks(octets):
    """The types of the blocks of a pcapng file, which must be whole."""
    kinds = []
    while octets:
        kind, length = struct.unpack_from("<II", octets)
        assert len(octets) >= length >= 12
        assert struct.unpack_from("<I", octets, length - 4)[0] == length
        kinds.append(kind)
        octets = octets[length:]
    return kinds


SECTION, INTERFACE, FRAME = 0x0A0D0D0A, 1, 6


def test_a_capture_is_a_whole_file(device, start):
    url = start(f"sw1={device.run_dir}").url
    with urllib.request.urlopen(f"{url}capture/sw1?port=1-2&seconds=1&direction=both&dropped=1", timeout=SECONDS) as answer:
        assert answer.headers["Content-Disposition"] == 'attachment; filename="sw1.pcapng"'
        assert blocks(answer.read())[:3] == [SECTION, INTERFACE, INTERFACE]


def test_a_capture_has_the_frames(device, start):
    device.namespace.ip("link set host1 up")
    poll_until(lambda: device.control("ports")["ports"][1]["up"], SECONDS, "the link")
    url = start(f"sw1={device.run_dir}").url
    answer = urllib.request.urlopen(f"{url}capture/sw1?port=1&count=2&direction=in", timeout=SECONDS)
    with device.namespace.entered():
        sender = socket.socket(socket.AF_PACKET, socket.SOCK_RAW)
        sender.bind(("host1", 0))
    with answer, sender:
        for _ in range(2):
            sender.send(bytes.fromhex("ffffffffffff02000000000188b5") + bytes(46))
        found = blocks(answer.read())
    assert (found[0], found.count(FRAME)) == (SECTION, 2)


@pytest.mark.parametrize(
    "query",
    ["port=--help", "port=1%20-w", "direction=x", "dropped=yes", "seconds=0", "count=-1", "count=1e3", "more=1", "port=99"],
)
def test_a_capture_that_cannot_be_is_a_sentence(device, start_once, query):
    with pytest.raises(urllib.error.HTTPError) as refused:
        urllib.request.urlopen(f"{start_once.url}capture/sw1?{query}", timeout=SECONDS)
    assert refused.value.code == 400
    assert refused.value.read().decode().endswith((".", "'"))


@pytest.fixture(name="start_once", scope="module")
def make_one(device):
    program = Program(f"sw1={device.run_dir}")
    yield program
    stop(program.process)


def begun_capture(url):
    """A connection whose capture has begun, and goes on."""
    host, path = url.removeprefix("http://").split("/", 1)
    connection = socket.create_connection(host.split(":"), timeout=SECONDS)
    connection.sendall(f"GET /{path}capture/sw1 HTTP/1.1\r\nHost: {host}\r\n\r\n".encode())
    assert connection.recv(100).startswith(b"HTTP/1.1 200")
    return connection


def test_a_capture_ends_when_the_browser_leaves(start_once):
    with begun_capture(start_once.url):
        assert len(start_once.children()) == 1
    poll_until(lambda: not start_once.children(), SECONDS, "the end of vdevctl")


@pytest.mark.parametrize("number", [signal.SIGTERM, signal.SIGKILL])
def test_a_capture_ends_with_the_panel(device, start, number):
    program = start(f"sw1={device.run_dir}")
    with begun_capture(program.url):
        (child,) = program.children()
        program.end(number)
        poll_until(lambda: not pathlib.Path(f"/proc/{child}/exe").exists(), SECONDS, "the end of vdevctl")


def test_so_many_captures_run_at_a_time(start_once):
    connections = [begun_capture(start_once.url) for _ in range(8)]
    with pytest.raises(urllib.error.HTTPError) as refused:
        urllib.request.urlopen(f"{start_once.url}capture/sw1?seconds=1", timeout=SECONDS)
    assert "8 captures are running already." in refused.value.read().decode()
    for connection in connections:
        connection.close()
    poll_until(lambda: not start_once.children(), SECONDS, "the end of vdevctl")


def test_without_words_it_shows_the_folder_of_the_environment_and_with_one_that_one(device, start, tmp_path):
    async def state(page):
        return await page.hear_panel()

    by_environment = start(VDEVICE_DIR=device.run_dir, ADP_LAB_DIR=str(tmp_path))
    by_name = start(device.run_dir, "--read-only", ADP_LAB="none")
    states = [asyncio.run(page_of(program.url, state)) for program in (by_environment, by_name)]
    assert [each["devices"][0]["name"] for each in states] == ["device", pathlib.Path(device.run_dir).name]
    assert [each["read_only"] for each in states] == [False, True]
    for command in ("vdevctl", "adpsh"):
        words = f"{states[0]['devices'][0][command]} --version"
        assert subprocess.run(words, shell=True, check=True, capture_output=True, timeout=SECONDS).stdout


def test_a_folder_may_have_an_equals_sign(start, tmp_path):
    async def names(page):
        return [each["name"] for each in (await page.hear_panel())["devices"]]

    program = start(f"{tmp_path}/a=b", f"c=={tmp_path}/d=e")
    assert asyncio.run(page_of(program.url, names)) == ["a=b", "c="]


def test_a_browser_is_told_the_address_by_a_file_of_this_user(start, tmp_path):
    """Everybody sees the words with which a program is started."""
    browser, words = tmp_path / "browser", tmp_path / "words"
    browser.write_text(f'#!/bin/sh\necho "$@" >{words}.new; mv {words}.new {words}\n', encoding="utf-8")
    browser.chmod(0o700)
    program = start(str(tmp_path), "--open", BROWSER=str(browser))
    poll_until(words.exists, SECONDS, "the browser")
    said = words.read_text(encoding="utf-8").strip()
    assert said.startswith("file:///")
    file = pathlib.Path(said.removeprefix("file://"))
    assert (f"url={program.url}" in file.read_text(encoding="utf-8"), file.stat().st_mode & 0o777) == (True, 0o600)
    assert program.end() == (0, "")
    assert not file.exists()
