"""Each frame that was sent has arrived, or is counted where it was lost. And what limits how many arrive: the rings,
and the speed of a port."""
import contextlib
import json
import signal
import subprocess
import time

import pytest

from testing.daemon import BOARD, PAYLOAD, datagram, station, wait_until

FRAME = station(2) + station(1) + PAYLOAD
OUT_PORT = 24  # user port 2
SECONDS_ON_A_LINE_OF_10_MBIT = 1538 * 8 / 10_000_000  # a frame of 1500 octets, and the gap behind it


@pytest.fixture(name="start_with")
def make_starter(cables, start):
    """Starts a device with options, of which ports 1 and 2 know their stations."""
    def start_with(*options):
        device = start(*BOARD, *options)
        device.wait_ready()
        one, two = device.nics("host1", "host2")
        two.send(station(1) + station(2) + PAYLOAD)
        assert one.receive()
        return device, one, two

    return start_with


def arrived(interface):
    link, = json.loads(subprocess.check_output(["ip", "-json", "-statistics", "link", "show", interface]))
    return link["stats64"]["rx"]["packets"]


@contextlib.contextmanager
def standing_still(device):
    device.process.send_signal(signal.SIGSTOP)
    try:
        yield
    finally:
        device.process.send_signal(signal.SIGCONT)


def send_while_it_stands_still(device, nic, frames):
    with standing_still(device):
        send(device, nic, frames)


class Account:
    """Where the frames are that were sent by host1 to host2 since it was opened."""

    def __init__(self, device):
        self._device = device
        self._before = self._counts()

    def _counts(self):
        one, two = (self._device.counters(port) for port in (1, 2))
        lost = {name: one["drops"][name] for name in ("egress_down", "port_down")}
        lost |= {name: two[name] for name in ("tx_no_room", "tx_flushed", "tx_lost")}
        return lost | {"rx_lost": one["rx_lost"], "arrived": arrived("host2")}

    def close(self, sent):
        """{place: frames} without those where there are none. All frames must be somewhere."""
        def places():
            now = self._counts()
            return {place: now[place] - count for place, count in self._before.items() if now[place] != count}

        wait_until(lambda: sum(places().values()) == sent, f"the places of {sent} frames; they are {places()}")
        return places()


def test_a_burst_of_2000_frames_arrives_whole(start_with):
    device, one, _ = start_with()
    account = Account(device)
    send_while_it_stands_still(device, one, [FRAME] * 2000)
    assert account.close(2000) == {"arrived": 2000}


def test_a_small_ring_loses_what_does_not_fit_in(start_with):
    device, one, _ = start_with("--ring-slots", "16")
    account = Account(device)
    send_while_it_stands_still(device, one, [FRAME] * 100)
    assert account.close(100) == {"arrived": 16, "rx_lost": 84}


def test_a_port_keeps_to_its_speed(start_with):
    device, one, _ = start_with("--line-rate")
    assert device.call("speed", OUT_PORT, 10) == "0"
    assert [port["line_rate"] for port in device.ask("queues")["ports"]] == [False, True, True, True, True]
    account, frames = Account(device), 40
    began = device.ask("queues")["time"]
    for _ in range(frames):
        one.send(station(2) + station(1) + datagram(1500))
    assert account.close(frames) == {"arrived": frames}
    assert device.ask("queues")["time"] - began >= (frames - 1) * SECONDS_ON_A_LINE_OF_10_MBIT


def test_a_slow_port_drops_what_its_queue_has_no_room_for(start_with):
    device, one, _ = start_with("--line-rate")
    assert device.call("speed", OUT_PORT, 10) == "0"
    account, frames, begin = Account(device), 400, time.monotonic()
    seen = device.counters(1)["rx_frames"] + frames
    send_while_it_stands_still(device, one, [station(2) + station(1) + datagram(1500)] * frames)
    wait_until(lambda: device.counters(1)["rx_frames"] == seen, "the frames in the chip")
    on_the_line = (time.monotonic() - begin) / SECONDS_ON_A_LINE_OF_10_MBIT
    places = account.close(frames)
    # What is in the queue, one on the line, and what has left while the others came and the device read them.
    assert 65536 // 1514 + 1 <= places["arrived"] <= 65536 // 1514 + 2 + on_the_line
    assert places["tx_no_room"] == frames - places["arrived"]
    assert f"tx_no_room {places['tx_no_room']}" in device.control("counters").stdout


def test_a_device_that_was_held_up_drops_nothing_that_came_in_slowly(start_with):
    device, one, _ = start_with("--line-rate")
    assert device.call("speed", OUT_PORT, 100) == "0"
    account, frames = Account(device), 150
    with standing_still(device):
        for _ in range(frames):
            one.send(station(2) + station(1) + datagram(1500))
            time.sleep(0.0002)  # and the line needs 0.000123 s
    assert account.close(frames) == {"arrived": frames}


def test_frames_are_accounted_for_whatever_happens_to_the_port(start_with):
    device, one, _ = start_with("--line-rate", "--ring-slots", "16")
    assert device.call("speed", OUT_PORT, 10) == "0"
    account, sent = Account(device), 0
    for step in range(6):
        burst = [station(2) + station(1) + datagram(1500)] * 60
        is_pulled = step % 3 == 0
        if is_pulled:
            assert device.call("shape", OUT_PORT, 1, 8) == "0"  # so that some wait when the cable goes
        (send_while_it_stands_still if step % 2 else send)(device, one, burst)
        sent += len(burst)
        assert device.control("pull" if is_pulled else "plug", "2").returncode == 0
        if is_pulled:
            assert device.call("shape", OUT_PORT, 0, 0) == "0"
    places = account.close(sent)
    assert {"arrived", "tx_flushed", "rx_lost", "egress_down"} <= places.keys()


def send(_, nic, frames):
    for frame in frames:
        nic.send(frame)
