"""Storm limits, ingress limits and shapers."""
import contextlib
from pathlib import Path

from testing.daemon import BROADCAST, datagram, station, wait_until


def test_limits_of_a_port_are_shown_with_what_they_let_in(device):
    one, _ = device.nics("host1", "host2")
    assert device.ask("storm")["storm"] == device.ask("storm")["ingress"] == []
    assert device.call("storm-limit", 23, 3, 1, 24) == "0"
    assert device.call("ingress-limit", 23, 1, 48) == "0"
    # Each takes 1518 octets with its check sequence: out of 3000, then out of 6000.
    for destination in [BROADCAST] * 3 + [station(2)] * 3:
        one.send(destination + station(1) + datagram(1500))
    wait_until(lambda: device.counters(1)["rx_frames"] == 6, "six frames to come in")
    answer = device.ask("storm")
    levels = [row.pop("level") for row in answer["storm"] + answer["ingress"]]
    assert 3000 - 1518 <= levels[0] <= 1517 and 6000 - 3 * 1518 <= levels[1] <= 1517
    time = answer.pop("time")
    limit = {"port": 1, "rate": 1, "counts": "octets"}
    assert answer == {
        "storm": [{**limit, "type": "broadcast", "burst": 24, "depth": 3000, "passed": 1, "dropped": 2,
                   "enabled": True, "in_joint": True, "exceeded": True}],
        "ingress": [{**limit, "burst": 48, "depth": 6000, "passed": 3, "dropped": 3}],
        "counting": dict.fromkeys(["joint", "multicast", "broadcast", "unknown_unicast"], "octets")}
    assert 0 < time <= device.ask("version")["uptime"] < time + 60
    drops = device.counters(1)["drops"]
    assert (drops["storm"], drops["policed"]) == (2, 3)
    lines = device.control("storm").stdout.splitlines()
    assert [line.split()[:4] + line.split()[6:] for line in lines[1:3]] == [
        ["1", "broadcast", "1", "kbit/s", "3000", "1", "2", "exceeded"], ["1", "ingress", "1", "kbit/s", "6000", "3", "3"]]
    assert lines[3:] == ["counted: broadcast octets, joint octets, multicast octets, unknown_unicast octets"]


def running_single_timers(device):
    """How many of the daemon's timers that expire once only are set."""
    texts = []
    for path in Path(f"/proc/{device.process.pid}/fdinfo").iterdir():
        with contextlib.suppress(FileNotFoundError):  # of a client that leaves
            texts.append(path.read_text())
    singles = [text for text in texts if "it_interval: (0, 0)" in text]
    assert len(singles) == 1
    return sum("it_value: (0, 0)" not in text for text in singles)


def first_queue(device, port):
    """Of a port's queue 0: what has left, waits, and was thrown away."""
    queue = next(row for row in device.ask("queues")["ports"] if row["port"] == port)["queues"][0]
    return queue["frames"], queue["waiting_frames"], queue["flushed"]


def test_a_shaped_port_lets_frames_wait_and_sends_them_when_they_are_due(device):
    one, two = device.nics("host1", "host2")
    frame_kbit = 8
    assert device.call("shape", 24, 80, frame_kbit) == "0"
    frames = [BROADCAST + station(1) + datagram(996 - 14) for _ in range(4)]
    began = device.ask("queues")["time"]
    for frame in frames:
        one.send(frame)
    assert [two.receive() for _ in frames] == frames
    ended = device.ask("queues")["time"]
    assert ended - began > 0.3, "three of the frames had to wait for a tenth of a second each"
    assert first_queue(device, 2) == (4, 0, 0)
    assert first_queue(device, 1)[0] == 0
    assert device.counters(2)["tx_frames"] == 4
    assert running_single_timers(device) == 0, "nothing waits, so nothing wakes the daemon"


def test_frames_that_wait_leave_when_the_shaper_goes_and_are_lost_when_the_cable_does(device):
    one, two = device.nics("host1", "host2")
    assert device.call("shape", 24, 1, 8) == "0"
    frame = BROADCAST + station(1) + datagram(996 - 14)
    for _ in range(3):
        one.send(frame)
    wait_until(lambda: first_queue(device, 2) == (1, 2, 0), "two frames to wait")
    assert running_single_timers(device) == 1
    assert device.control("queues").stdout.splitlines()[4:6] == [
        f"   2  strict      {1:>10} {8:>10}  1 1 1 1 1 1 1 1",
        "      queue 0: 1 frames, 996 octets; 2 waiting with 1992 octets; 0 dropped, 0 flushed"]
    assert device.call("shape", 24, 0, 0) == "0"
    assert [two.receive() for _ in range(3)] == [frame] * 3
    assert device.call("shape", 24, 1, 8) == "0"
    for _ in range(3):
        one.send(frame)
    wait_until(lambda: first_queue(device, 2) == (4, 2, 0), "two frames to wait")
    device.control("pull", "2")
    assert first_queue(device, 2) == (4, 0, 2)
