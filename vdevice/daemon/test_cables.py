"""Bad cables: what they do to real frames, in both directions, and what vdevctl says of them."""
import signal

import pytest

from testing.daemon import BOARD, DEADLINE, PAYLOAD, Control, datagram, station, wait_until

TO_TWO = station(2) + station(1) + PAYLOAD
TO_ONE = station(1) + station(2) + PAYLOAD
COUNTS = ("frames", "passed", "lost", "duplicated", "corrupted", "waiting", "no_room", "cut")


@pytest.fixture(name="hosts")
def make_hosts(device):
    """Ports 1 and 2, which know their stations."""
    one, two = device.nics("host1", "host2")
    for nic, frame, other in ((one, TO_TWO, two), (two, TO_ONE, one)):
        nic.send(frame)
        assert other.receive() == frame
    return one, two


def make_bad(device, port, **conditions):
    words = [word for name, value in conditions.items() for word in (f"--{name}", str(value))]
    result = device.control("cable", str(port), *words)
    assert (result.returncode, result.stdout, result.stderr) == (0, "", "")


def way(device, port, direction):
    return next(row for row in device.ask("cables")["cables"] if (row["port"], row["direction"]) == (port, direction))


def counts(device, port, direction):
    """Those that are not 0."""
    row = way(device, port, direction)
    return {name: row[name] for name in COUNTS if row[name]}


def numbered(frame, count):
    return [frame[:-2] + number.to_bytes(2, "big") for number in range(count)]


def send(nic, frames):
    for frame in frames:
        nic.send(frame)


def passed(device, direction, near, far, frame):
    """Which of 200 frames come over the cable of port 1, in their order."""
    frames = numbered(frame, 200)
    send(near, frames)
    wait_until(lambda: way(device, 1, direction)["frames"] == len(frames), "all frames to come to the cable")
    row = way(device, 1, direction)
    assert row["passed"] + row["lost"] == len(frames)
    return [frames.index(far.receive()) for _ in range(row["passed"])]


def test_the_same_frames_are_lost_each_time_in_both_directions(device, hosts):
    one, two = hosts
    arrived = []
    for _ in range(2):
        make_bad(device, 1, loss="20%", seed=7)
        arrived.append([passed(device, "in", one, two, TO_TWO), passed(device, "out", two, one, TO_ONE)])
    assert arrived[0] == arrived[1]
    inward, outward = arrived[0]
    assert inward != outward and all(130 < len(life) < 190 and life == sorted(life) for life in (inward, outward))
    make_bad(device, 1, loss="20%", seed=8)
    assert passed(device, "in", one, two, TO_TWO) != inward


def test_what_is_lost_on_the_cable_never_reached_the_chip(device, hosts):
    one, _ = hosts
    before = device.counters(1)["rx_frames"], device.counters(2)["tx_frames"]
    make_bad(device, 1, loss="100%")
    send(one, [TO_TWO] * 3)
    wait_until(lambda: counts(device, 1, "in") == {"frames": 3, "lost": 3}, "the frames to be lost")
    make_bad(device, 1, loss="0%")
    assert device.ask("cables")["cables"] == []
    make_bad(device, 2, loss="100%")
    send(one, [TO_TWO] * 3)
    wait_until(lambda: counts(device, 2, "out") == {"frames": 3, "lost": 3}, "the frames to be lost")
    after = device.counters(1)["rx_frames"], device.counters(2)["tx_frames"]
    assert after == (before[0] + 3, before[1] + 3), "the second three only"


def test_frames_come_twice_or_with_one_bit_changed(device, hosts):
    one, two = hosts
    make_bad(device, 1, duplicate="100%")
    one.send(TO_TWO)
    assert [two.receive(), two.receive(), two.receive(0.1)] == [TO_TWO, TO_TWO, None]
    make_bad(device, 2, corrupt="100%")
    one.send(TO_TWO)
    for frame in (two.receive(), two.receive()):
        assert (int.from_bytes(frame, "big") ^ int.from_bytes(TO_TWO, "big")).bit_count() == 1
    assert counts(device, 1, "in") == {"frames": 2, "passed": 4, "duplicated": 2}
    assert counts(device, 2, "out") == {"frames": 2, "passed": 2, "corrupted": 2}


@pytest.mark.parametrize("port", [1, 2])
def test_a_delay_is_at_least_so_long(device, hosts, port):
    one, two = hosts
    make_bad(device, port, delay="60ms", jitter="10ms")
    began = device.ask("cables")["time"]
    frames = numbered(TO_TWO, 20)
    send(one, frames)
    assert two.receive() == frames[0]
    assert device.ask("cables")["time"] - began >= 0.05
    assert [two.receive() for _ in frames[1:]] == frames[1:]
    make_bad(device, port, delay="10s")
    one.send(TO_TWO)
    direction = "in" if port == 1 else "out"
    wait_until(lambda: counts(device, port, direction) == {"frames": 1, "waiting": 1}, "the frame to wait")
    assert device.control("cable", str(port), "--clear").returncode == 0
    assert two.receive() == TO_TWO, "what waits passes when the cable is a good one again"


@pytest.mark.parametrize("port", [1, 2])
def test_a_rate_is_kept(device, hosts, port):
    one, two = hosts
    make_bad(device, port, rate="10M")
    long, count = station(2) + station(1) + datagram(1500), 40
    began = device.ask("cables")["time"]
    send(one, [long] * count)
    for _ in range(count):
        assert two.receive() == long
    assert device.ask("cables")["time"] - began >= count * 1538 * 8 / 10_000_000


def test_a_pulled_cable_loses_what_waits_and_keeps_its_conditions(device, hosts):
    one, two = hosts
    for port in (1, 2):
        make_bad(device, port, delay="10s")
    one.send(TO_TWO)
    wait_until(lambda: counts(device, 1, "in") == {"frames": 1, "waiting": 1}, "the frame to wait")
    for verb in ("pull", "plug"):
        assert device.control(verb, "1").returncode == 0
    assert counts(device, 1, "in") == {"frames": 1, "cut": 1}
    wait_until(lambda: device.port(1)["up"], "the link")
    make_bad(device, 2, delay="1ms")
    assert way(device, 1, "in")["conditions"] == {"delay": "10s", "seed": 1}
    assert two.receive(0.1) is None
    assert device.control("clear", "counters", "1").returncode == 0
    assert counts(device, 1, "in") == {}


def test_conditions_are_shown_as_they_are_written(device):
    make_bad(device, 3, loss="5%", delay="20ms", jitter="2ms", rate="100M", corrupt="0.1%", duplicate="1%", seed=7)
    rows = device.ask("cables", "3")["cables"]
    assert [row["direction"] for row in rows] == ["in", "out"]
    for row in rows:
        assert row["conditions"] == {"loss": "5%", "delay": "20ms", "jitter": "2ms", "rate": "100M", "corrupt": "0.1%",
                                     "duplicate": "1%", "seed": 7}
    lines = device.control("cables").stdout.splitlines()
    assert len(lines) == 3 and lines[0].split()[:2] == ["PORT", "DIRECTION"]
    assert lines[1].split()[:2] == ["3", "in"]
    assert lines[1].endswith("loss 5%, duplicate 1%, corrupt 0.1%, rate 100M, delay 20ms, jitter 2ms, seed 7")
    assert "counts per second, over" in device.control("cables", "--rate", "10ms").stdout
    make_bad(device, 3, delay="1500us")
    assert way(device, 3, "out")["conditions"] == {"delay": "1.5ms", "seed": 1}, "what is not named is none"
    assert 'adp_cable_frames_total{direction="in",port="3",what="lost"} 0' in device.control("metrics").stdout


REFUSED = [
    (["cpu", "--loss", "5%"], "The port must be a user port, 1 to 4."),
    (["0", "--loss", "5%"], "The port must be a user port, 1 to 4."),
    (["5", "--clear"], "The port must be a user port, 1 to 4."),
    (["1"], "A cable is given its conditions, at least one besides a seed, or --clear."),
    (["1", "--seed", "7"], "A cable is given its conditions, at least one besides a seed, or --clear."),
    (["1", "--clear", "--loss", "1%"], "A cable is given its conditions, at least one besides a seed, or --clear."),
    (["1", "--loss", "101%"], "The option --loss takes a percentage from 0% to 100%"),
    (["1", "--loss", "5"], "The option --loss takes a percentage from 0% to 100%"),
    (["1", "--delay", "11s"], "The option --delay takes a time up to 10s"),
    (["1", "--rate", "1s"], "The option --rate takes a rate up to 100G"),
    (["1", "--rate", "100"], "The option --rate takes a rate up to 100G"),
    (["1", "--rate"], "The option is used as '--rate RATE'."),
    (["1", "--seed", "-1", "--loss", "1%"], "The option --seed takes a number from 0 to 4294967295."),
    (["1", "--jitter", "1ms"], "There is no such cable: the jitter of a cable is at most its delay."),
    (["1", "--los", "1%"], "did you mean '--loss'?"),
]


def test_hostile_conditions_are_refused_and_change_nothing(device):
    make_bad(device, 1, loss="7%")
    before = device.ask("cables")["cables"]
    for words, sentence in REFUSED:
        result = device.control("cable", *words)
        assert result.returncode == 1 and sentence in result.stderr, (words, result.stderr)
    client = Control(device)
    for member in (b'"loss": []', b'"loss": {"a": 1}', b'"loss": true', b'"loss": 1e999', b'"loss": "\\u0000%"',
                   b'"delay": null', b'"clear": false', b'"clear": 1', b'"seed": 1.5, "loss": "1%"',
                   b'"rate": "' + b"9" * 1000 + b'G"'):
        client.say(b'{"command": "cable", "port": 1, ' + member + b"}\n")
        assert client.hear()["error"].endswith("."), member
    assert device.ask("cables")["cables"] == before


def test_a_restarted_device_has_good_cables(cables, start, run_dir):
    device = start(*BOARD)
    device.wait_ready()
    make_bad(device, 1, loss="100%")
    device.process.kill()
    device.process.communicate(timeout=DEADLINE)
    device = start(*BOARD)
    device.wait_ready()
    assert device.ask("cables")["cables"] == []
    assert device.stop() == 0


def reload(device, file, text):
    file.write_text(text, encoding="utf-8")
    read = len(device.ask("log", "--word", "DAEMON")["log"])
    device.process.send_signal(signal.SIGHUP)
    wait_until(lambda: len(device.ask("log", "--word", "DAEMON")["log"]) > read, "the file to be read")


def test_the_files_cables_hold_again_after_a_reload(cables, start, tmp_path):
    file = tmp_path / "vdeviced.toml"
    text = '[[cable]]\nports = "1-2"\nloss = "100%"\nseed = 7\n'
    file.write_text(text, encoding="utf-8")
    device = start("--config", str(file), *BOARD)
    device.wait_ready()
    one, = device.nics("host1")
    one.send(TO_TWO)
    wait_until(lambda: counts(device, 1, "in") == {"frames": 1, "lost": 1}, "the frame to be lost")
    make_bad(device, 2, delay="1s")
    make_bad(device, 3, delay="1s")
    reload(device, file, text)
    assert counts(device, 1, "in") == {"frames": 1, "lost": 1}, "a cable that is right goes on"
    assert way(device, 2, "in")["conditions"] == {"loss": "100%", "seed": 7}
    assert way(device, 3, "in")["conditions"] == {"delay": "1s", "seed": 1}, "the file does not know of it"
    reload(device, file, text.replace('"1-2"', "2") + "[[cable]]\nports = 5\n")
    assert {row["port"] for row in device.ask("cables")["cables"]} == {1, 2, 3}, "a file with a mistake"
    reload(device, file, text.replace('"1-2"', "2"))
    assert {row["port"] for row in device.ask("cables")["cables"]} == {2, 3}
    device.process.send_signal(signal.SIGTERM)
    _, errors = device.process.communicate(timeout=DEADLINE)
    assert device.process.returncode == 0 and "the board has no port 5" in errors
