"""What happens on the device is told to who watches, and never waits for them."""
import json
import signal
import time

import pytest

from testing.daemon import BROADCAST, DEADLINE, PAYLOAD, Control, Reader, station, wait_until


CHANGES = 2000
MOST_A_SECOND = 100


def events(lines):
    return [json.loads(line) for line in lines]


def send_all(device, nic, frames):
    """Returns when the device has taken them, or has lost them."""
    def seen():
        row = device.counters(1)
        return row["rx_frames"] + row["rx_lost"]

    goal = seen() + len(frames)
    for frame in frames:
        nic.send(frame)
    wait_until(lambda: seen() >= goal, "the frames to be taken")


def test_links_and_addresses_are_told_as_they_come(device):
    one, _ = device.nics("host1", "host2")
    watcher = Reader(device, "--json", "watch", "links", "learning")
    device.control("pull", "2")
    device.control("plug", "2")
    one.send(BROADCAST + station(77) + PAYLOAD)
    told = events(watcher.read_until(lambda lines: any(b"02:00:00:00:00:4d" in line for line in lines)))
    told += events(watcher.interrupt()[0].splitlines())
    links = [(event["port"], event["what"]) for event in told if event["kind"] == "links"]
    assert links == [(2, "down"), (2, "up")]
    assert ("learned", 1, "02:00:00:00:00:4d", 1) in [
        (event["what"], event["port"], event["mac"], event["vid"]) for event in told if event["kind"] == "learning"]
    assert {event["kind"] for event in told} == {"links", "learning"}
    assert all(event["time"] > 0 for event in told)


def test_text_has_a_line_an_event_and_ends_after_so_many(device):
    device.nics("host1", "host2")
    watcher = Reader(device, "watch", "links", "--count", "1")
    device.control("pull", "2")
    line, = watcher.wait().splitlines()
    assert line.split()[1:] == ["links", "port", "2", "down"]


def test_a_flood_is_summed_by_second_and_reason(device):
    one, = device.nics("host1")
    watcher = Reader(device, "--json", "watch", "drops")
    before, begin = device.counters(1)["drops"]["same_port"], time.monotonic()
    send_all(device, one, [station(1) + station(1) + PAYLOAD] * 3000)  # to the port that it comes from
    dropped = device.counters(1)["drops"]["same_port"] - before

    def of_port(lines):
        return [event["count"] for event in events(lines) if event["port"] == 1 and event["what"] == "same_port"]

    told = watcher.read_until(lambda lines: sum(of_port(lines)) >= dropped)
    seconds = time.monotonic() - begin
    told += watcher.interrupt()[0].splitlines()
    assert sum(of_port(told)) == dropped > 1000
    assert len(of_port(told)) <= 10 + seconds


def test_very_many_addresses_are_counted(device):
    one, = device.nics("host1")
    watcher = Reader(device, "--json", "watch", "learning", "full", "ageing")
    before, begin = device.ask("macs", "--last", "0"), time.monotonic()
    send_all(device, one, [BROADCAST + bytes([2, 9, 9]) + number.to_bytes(3, "big") + PAYLOAD for number in range(1500)])
    after = device.ask("macs", "--last", "0")
    learned, refused = (after[name] - before[name] for name in ("learned", "refused"))

    def counts(lines):
        """Of single addresses, of those that are only counted, and of refused ones."""
        told = events(lines)
        return (sum(event.get("mac", "").startswith("02:09:09") for event in told),
                sum(event["count"] for event in told if event["kind"] == "learning" and "count" in event),
                sum(event["count"] for event in told if event["kind"] == "full"))

    def is_all(lines):
        single, more, full = counts(lines)
        return single + more >= learned - 5 and full >= refused

    told = watcher.read_until(is_all)
    seconds = time.monotonic() - begin
    single, more, full = counts(told + watcher.interrupt()[0].splitlines())
    assert 100 <= single <= MOST_A_SECOND * (2 + seconds) and single + more >= learned - 5 > 500
    assert full == refused


def test_the_device_goes_on_beside_a_reader_who_does_not_read(device):
    one, two, _ = device.nics("host1", "host2", "host3")
    deaf = Control(device)
    deaf.say(b'{"command": "watch", "kind": ["links"], "form": "text"}\n')
    switch = Control(device)
    for _ in range(CHANGES):
        switch.say(b'{"command": "pull", "port": 3}\n{"command": "plug", "port": 3}\n')
        assert switch.hear() == switch.hear() == {}
    one.send(BROADCAST + station(1) + PAYLOAD)
    assert two.receive() == BROADCAST + station(1) + PAYLOAD
    assert deaf.hear() == {"watching": True}
    told = 0
    while "missed" not in (line := deaf.hear()["text"]):
        assert " links " in line
        told += 1
    assert told + int(line.split()[2]) > CHANGES > told, "what is missing is counted"


@pytest.mark.parametrize("line", [b'{"command": "watch", "kind": ["linkz"]}', b'{"command": "watch", "kind": 7}',
                                  b'{"command": "watch", "kind": [{}]}', b'{"command": "watch", "arguments": ["--x"]}'])
def test_wrong_requests_get_an_error_and_the_line_stays_open(device, line):
    client = Control(device)
    client.say(line + b"\n")
    assert "error" in client.hear()
    client.say(b'{"command": "version"}\n')
    assert client.hear()["user_ports"] == 4


def test_unknown_kinds_and_the_devices_end_are_told(device, start):
    refused = device.control("watch", "linkz")
    assert (refused.returncode, refused.stdout) == (1, "") and "did you mean 'links'?" in refused.stderr
    watcher = Reader(device, "watch")
    device.process.send_signal(signal.SIGTERM)
    device.process.wait(timeout=DEADLINE)
    _, errors = watcher.process.communicate(timeout=DEADLINE)
    assert watcher.process.returncode == 1 and errors == b"vdevctl: the device has ended.\n"
