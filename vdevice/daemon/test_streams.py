"""Frames and their accounts, told line by line: who reads late has the newest frames, and finds each one's account."""
import json

from testing.daemon import BROADCAST, PAYLOAD, Control, station, wait_until

BATCH = 100
LONG = b"\x88\xb5" + bytes(1400)
# More than the device keeps, and than fits into a socket.
MANY_FRAMES = 8000


def listen(device, command, **options):
    client = Control(device)
    client.say(json.dumps({"command": command, **options}).encode() + b"\n")
    return client, client.hear()


def test_a_follow_that_was_refused_leaves_nothing_behind(device):
    one, _ = device.nics("host1", "host2")
    for _ in range(2):
        assert "error" in listen(device, "follow", mac="nonsense")[1]
    client, _ = listen(device, "follow", mac="02:00:00:00:00:07")
    for number in (7, 7):
        one.send(BROADCAST + station(number) + PAYLOAD)
    lines = [client.hear() for _ in range(2)]
    assert [line.get("port") for line in lines] == [1, 1], "an account each, and none missed"


def test_an_account_as_text_has_the_time_and_port_of_its_frame(standing_device):
    device = standing_device
    one, two = device.nics("host1", "host2")
    capture, _ = listen(device, "capture", direction="in")
    follow, _ = listen(device, "follow", form="text", steps=True)
    for nic in (one, two):
        nic.send(BROADCAST + station(7) + PAYLOAD)
    frames = [capture.hear() for _ in range(2)]
    accounts = [follow.hear() for _ in range(2)]
    assert sorted(line["port"] for line in frames) == [1, 2]
    assert [(round(line["time"] * 1e9), line["port"]) for line in accounts] == [
        (line["time"], line["port"]) for line in frames]
    assert all(line["text"].startswith(f"in by port {line['port']}, ") for line in accounts)


def test_who_captures_and_reads_late_has_the_newest_frames(device):
    one, _ = device.nics("host1", "host2")
    capture, _ = listen(device, "capture", port="1", direction="in")
    before = device.counters(1)["rx_frames"]
    for sent in range(BATCH, MANY_FRAMES + 1, BATCH):
        for _ in range(BATCH):
            one.send(station(1) + station(2) + LONG)
        wait_until(lambda goal=before + sent: device.counters(1)["rx_frames"] >= goal, "the frames")
    last = station(1) + station(3) + LONG
    one.send(last)
    frames = missed = 0
    while (line := capture.hear()).get("frame") != last.hex():
        frames += "frame" in line
        missed += line.get("missed", 0)
    assert frames + missed == MANY_FRAMES
    assert missed > 0
