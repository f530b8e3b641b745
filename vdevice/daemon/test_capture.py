"""Captures: each frame by its port, direction and fate, as Wireshark reads them."""
import json
import os
import signal
import subprocess
import time

import pytest

from test_explain import LOST, UNTRANSLATED
from testing.daemon import BROADCAST, PAYLOAD, Control, Reader, station, wait_until

FRAME = BROADCAST + station(1) + PAYLOAD
FIELDS = ("frame.interface_name", "frame.packet_flags_direction", "frame.comment", "frame.len", "eth.src")


def read(file):
    """The fields of each frame: port, "in" or "out", comment, length, source."""
    output = subprocess.check_output(["tshark", "-r", file, "-T", "fields", *(word for field in FIELDS for word in ("-e", field))],
                                     text=True, stderr=subprocess.DEVNULL)
    rows = [line.split("\t") for line in output.splitlines()]
    return [(port, {1: "in", 2: "out"}[int(direction, 0)], comment, int(length)) for port, direction, comment, length, _ in rows]


def test_a_capture_has_frames_as_they_come_in_and_leave(standing_device, tmp_path):
    one, two = standing_device.nics("host1", "host2")
    capture = Reader(standing_device, "capture", str(tmp_path / "all"), "--port", "1-2")
    one.send(FRAME)
    one.send(UNTRANSLATED)
    assert two.receive() == FRAME
    wait_until(lambda: (tmp_path / "all").read_bytes().count(PAYLOAD) == 2, "the frame to be written")
    output, errors = capture.interrupt()
    assert (capture.process.returncode, output, errors) == (0, b"", b"2 frames captured, 0 missed.\n")
    assert read(tmp_path / "all") == [("port1", "in", "", 60), ("port2", "out", "", 60)]


def test_dropped_frames_have_their_reason(standing_device, tmp_path):
    one, = standing_device.nics("host1")
    capture = Reader(standing_device, "capture", str(tmp_path / "dropped"), "--dropped", "--direction=in", "--count", "3")
    for frame in (UNTRANSLATED, LOST, FRAME):
        one.send(frame)
    capture.process.wait(timeout=10)
    capture.process.communicate()
    assert read(tmp_path / "dropped") == [("port1", "in", "vlan_missing", 64), ("port1", "in", "same_port", 60),
                                          ("port1", "in", "", 60)]


def test_the_cpu_port_has_the_switch_tag_and_a_pipe_is_read_as_it_fills(standing_device):
    one, = standing_device.nics("host1")
    standing_device.nics("eth0")
    capture = Reader(standing_device, "capture", "-", "--port", "cpu", "--for", "3s")
    one.send(FRAME)
    octets = b""
    while PAYLOAD not in octets:
        octets += os.read(capture.process.stdout.fileno(), 65536)
    assert octets.count(station(1) + bytes.fromhex("8874")) == 1
    capture.interrupt()


def test_every_interface_is_there_and_the_time_is_the_wall_clock(standing_device, tmp_path):
    one, = standing_device.nics("host1")
    begin = time.time()
    capture = Reader(standing_device, "capture", str(tmp_path / "one"), "--count", "1")
    one.send(FRAME)
    capture.process.communicate(timeout=10)
    output = subprocess.check_output(["tshark", "-r", tmp_path / "one", "-T", "fields", "-e", "frame.time_epoch"], text=True,
                                     stderr=subprocess.DEVNULL)
    assert begin - 1 <= float(output) <= time.time() + 1
    listed = subprocess.check_output(["capinfos", "-I", tmp_path / "one"], text=True)
    assert "Number of interfaces in file: 5" in listed
    assert [f"Name = {name}" in listed for name in ("cpu", "port1", "port4")] == [True] * 3


@pytest.mark.parametrize("words, sentence", [
    ((), "a file is missing"), (("/no/folder/file",), "No such file"), (("x", "--direction", "up"), "in, out or both"),
    (("x", "--port", "9"), "ports cpu and 1 to 4"), (("x", "y"), "one argument too many"), (("/dev/full", "--count", "1"), "No space left")])
def test_a_capture_that_cannot_be_made_is_refused(standing_device, tmp_path, words, sentence):
    one, = standing_device.nics("host1")
    capture = Reader(standing_device, "capture", *(str(tmp_path / word) if word in ("x", "y") else word for word in words))
    one.send(FRAME)
    output, errors = capture.process.communicate(timeout=10)
    assert (capture.process.returncode, output) == (1, b"") and sentence in errors.decode()


def test_a_reader_of_the_pipe_that_leaves_ends_the_capture(standing_device):
    one, = standing_device.nics("host1")
    capture = Reader(standing_device, "capture", "-")
    capture.process.stdout.close()
    one.send(FRAME)
    assert capture.process.wait(timeout=10) in (1, -signal.SIGPIPE)
    capture.process.stderr.close()


@pytest.mark.parametrize("request_", [{"port": "x"}, {"direction": 7}, {"dropped": "yes"}, {"port": 99}])
def test_a_wrong_request_is_refused(standing_device, request_):
    client = Control(standing_device)
    client.say(json.dumps({"command": "capture", **request_}).encode() + b"\n")
    assert set(client.hear()) == {"error"}
