"""The panel that `up --panel` starts with a lab."""

import os
import pathlib
import re
import signal
import subprocess
import sys
import time
import urllib.error
import urllib.request

import pytest

SECONDS = 10


@pytest.fixture(autouse=True)
def loopback():
    """The namespace of the run has one, which is down at first."""
    subprocess.run(["ip", "link", "set", "lo", "up"], check=True, timeout=SECONDS)


def address_in(said):
    (address,) = [line.removeprefix("The panel: ") for line in said.splitlines() if line.startswith("The panel: ")]
    return address


def is_served(address):
    try:
        with urllib.request.build_opener(urllib.request.ProxyHandler({})).open(address, timeout=SECONDS) as answer:
            return answer.status == 200 and b"adp front panel" in answer.read()
    except urllib.error.URLError:
        return False


def panel_pids(labs):
    """The processes of panels, of which there are none after their lab's end."""
    words = {pid: open(f"/proc/{pid}/cmdline", "rb").read().split(b"\0") for pid in labs.pids()}
    return [pid for pid, line in words.items() if b"adp.panel" in line]


def test_a_panel_comes_and_goes_with_its_lab(labs):
    said = labs.do("up", labs.switch(), "--panel")
    address = address_in(said)
    assert is_served(address)
    assert address_in(labs.do("ps")) == address == labs.records()["lab"]["panel"]
    log = labs.folder / "lab" / "panel.log"
    assert (log.read_text(encoding="utf-8"), log.stat().st_mode & 0o777) == (f"{address}\n", 0o600)
    labs.do("down")
    deadline = time.monotonic() + SECONDS
    while panel_pids(labs) and time.monotonic() < deadline:
        time.sleep(0.02)
    assert panel_pids(labs) == []
    assert not is_served(address)


def test_a_panel_that_has_ended_is_not_shown(labs):
    labs.do("up", labs.switch(), "--panel")
    (panel,) = panel_pids(labs)
    os.kill(panel, signal.SIGKILL)
    deadline = time.monotonic() + SECONDS
    while "The panel" in labs.do("ps") and time.monotonic() < deadline:
        time.sleep(0.02)
    assert "The panel" not in labs.do("ps")
    assert labs.records()["lab"]["panel"] is None


def test_a_lab_has_no_panel_by_itself(labs):
    assert "panel" not in labs.do("up", labs.switch())
    assert labs.records()["lab"]["panel"] is None


def test_without_its_library_no_lab_is_started(labs, monkeypatch):
    monkeypatch.setitem(sys.modules, "aiohttp", None)
    assert labs.refuse("up", labs.switch(), "--panel") == (
        "The panel needs the package python3-aiohttp, which is not installed."
    )
    labs.assert_nothing_is_left()


def test_a_panel_that_does_not_start_leaves_nothing(labs):
    library = labs.file("raise SystemExit('This library is broken.')\n", "aiohttp.py")
    paths = f"{library.parent}:{os.environ['PYTHONPATH']}"
    assert labs.refuse("up", labs.switch(), "--panel", more={"PYTHONPATH": paths}) == (
        "The panel ended with status 1. This library is broken."
    )
    labs.assert_nothing_is_left()


DEMO = pathlib.Path(__file__).resolve().parents[2] / "examples" / "demo_panel.py"


def demo(labs, *options):
    """The demonstration of the panel, once it has said its address."""
    words = [sys.executable, "-B", DEMO, "--shown", "0.1", *options]
    pipes = {"stdin": subprocess.DEVNULL, "stdout": subprocess.PIPE, "stderr": subprocess.STDOUT, "text": True}
    process = subprocess.Popen(words, env={**labs.environment, "CI": "1"}, **pipes)
    for line in process.stdout:
        if line.startswith("  http://"):
            return process, line.strip()
    raise AssertionError("The demonstration has ended.")


def test_the_demo_shows_a_group_that_loses_its_cables(labs):
    process, address = demo(labs, "--seconds", "0")
    assert is_served(address)
    said, _ = process.communicate(timeout=60)
    assert process.returncode == 0, said
    assert "ok: traffic continued over the remaining cables." in said
    assert re.findall(r"^  cable (\d) pulled .* management port (\d)$", said, re.M) == [
        ("3", "1"), ("1", "2"), ("2", "4"), ("4", "4")
    ]
    labs.assert_nothing_is_left()


def test_the_demo_fails_if_frames_are_lost(labs):
    process, _ = demo(labs, "--seconds", "1")
    labs.do("cable", "sw1:2", "--loss", "100%")
    said, _ = process.communicate(timeout=60)
    assert process.returncode == 1, said
    assert "differs: With all cables in, " in said
    labs.assert_nothing_is_left()
