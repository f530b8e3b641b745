"""What becomes of frames: explain, which changes nothing, follow as they pass, and capture into files."""
import json
import os
import signal
import subprocess
import time

import pytest

from testing.daemon import BROADCAST, DEADLINE, PAYLOAD, PROGRAMS, Control, Reader, station, tag, wait_until

FRAME = BROADCAST + station(1) + PAYLOAD
UNTRANSLATED = BROADCAST + station(1) + tag(0x8100, 100) + PAYLOAD
LOST = station(1) + station(1) + PAYLOAD  # to the port that it comes from
BYTES_OF_A_SECOND = b"\0" * 65535
# What changes while nothing happens, and what is no table.
NO_TABLES = {"metrics", "log", "help", "version"}
CHANGES = {"cable", "pull", "plug", "trace", "clear", "gpio"}
STREAMS = {"watch", "follow", "capture", "explain"}


def everything(device):
    """All tables of the device, without the times that go on."""
    names = [row["name"] for row in device.ask("help")["subjects"]]
    tables = {name: device.ask(name) for name in names if name not in NO_TABLES | CHANGES | STREAMS}
    for table in tables.values():
        table.pop("time", None)
    for entry in tables["macs"]["macs"]:
        entry.pop("age", None)
    return tables


def test_explaining_changes_nothing(standing_device):
    standing_device.nics("host1", "host2")
    before = everything(standing_device)
    assert len(before) > 12 and before["counters"]["counters"]
    for frame in (FRAME, UNTRANSLATED, LOST, BROADCAST + station(99) + PAYLOAD):
        for port in ("1", "2"):
            told = standing_device.ask("explain", frame.hex(), "--port", port)["frames"]
            assert told[0]["port"] == int(port)
    assert everything(standing_device) == before


def test_explain_says_what_then_happens(standing_device):
    one, two, three = standing_device.nics("host1", "host2", "host3")
    told, = standing_device.ask("explain", FRAME.hex(), "--port", "1")["frames"]
    sent = {row["port"] for row in told["ports"] if row["fate"] == "sent"}
    assert {2, 3} <= sent and 1 not in sent
    one.send(FRAME)
    assert two.receive() == three.receive() == FRAME
    text = standing_device.control("explain", "--port=1", UNTRANSLATED.hex()).stdout
    assert "VLAN 100: from the tag\n" in text and "dropped: vlan_missing: its VLAN does not exist\n" in text


def test_a_frame_from_the_cpu_shows_its_switch_tag(standing_device):
    standing_device.nics("host2")
    directed = BROADCAST + station(9) + bytes.fromhex("8874 E1000000 00000000") + PAYLOAD  # to the chip's port 24
    told, = standing_device.ask("explain", "--cpu", directed.hex())["frames"]
    assert told["steps"][1] == {"step": "cpu_tag", "opcode": 7, "ports": [2]}
    assert [row["port"] for row in told["ports"] if row["fate"] == "sent"] == [2]


@pytest.mark.parametrize("words, sentence", [
    ((FRAME.hex(),), "Say where the frame comes in"),
    ((FRAME.hex(), "--port", "1", "--cpu"), "Say where the frame comes in"),
    ((FRAME.hex(), "--port", "5"), "The port must be a user port, 1 to 4, or cpu."),
    ((FRAME.hex(), "--port", "-1"), "The port must be a user port, 1 to 4, or cpu."),
    (("ffxy", "--port", "1"), "'x' is not a hexadecimal digit"),
    (("/nothing.pcap", "--port", "1"), "No such file"),
    ((BYTES_OF_A_SECOND.hex(), "--port", "1"), "1 to 16384 octets"),
    ((FRAME.hex(), "--port", "1", "ff"), "one argument too many: 'ff'"),
])
def test_explain_refuses_with_a_sentence(standing_device, words, sentence):
    refused = standing_device.control("explain", *words)
    assert (refused.returncode, refused.stdout) == (1, "") and sentence in refused.stderr
    assert refused.stderr.count("\n") == 1


def test_explain_refuses_no_frame_and_a_broken_file(standing_device, tmp_path):
    broken = tmp_path / "broken.pcap"
    broken.write_bytes(bytes.fromhex("d4c3b2a1 0200 0400") + bytes(9))
    for words, given in ((("-",), b""), ((), b"\n"), ((str(broken),), b"")):
        done = subprocess.run([f"{PROGRAMS}/vdevctl", "--run-dir", standing_device.run_dir, "explain", *words, "--port", "1"],
                              input=given, capture_output=True, timeout=DEADLINE, check=False)
        assert done.returncode == 1 and done.stdout == b"" and done.stderr.count(b"\n") == 1, done


@pytest.mark.parametrize("request_", [
    {"port": 1}, {"port": 1, "frame": ""}, {"port": 1, "frame": "abc"}, {"port": 1, "frame": 7}, {"port": 1, "frame": None},
    {"port": 1, "frame": "ff" * 16385}, {"port": [], "frame": "ff"}, {"port": 1e9, "frame": "ff"}, {"cpu": 1, "frame": "ff"},
    {"port": 1, "frame": "ff", "texts": 1}, {"port": 2 ** 63, "frame": "ff"}, {"port": 1, "frame": "\x00\x00"}, {"port": 1, "frame": "@@"}])
def test_a_wrong_request_to_explain_is_refused(standing_device, request_):
    client = Control(standing_device)
    client.say(json.dumps({"command": "explain", **request_}).encode() + b"\n")
    assert set(client.hear()) == {"error"}


def printed(account):
    """The account as vdevctl prints it, made of its texts: of each port what is said of it."""
    steps = "".join("  " * bool(at) + step["text"] + "\n" for at, step in enumerate(account["steps"]))
    return steps, {row["port"]: row["text"] for row in account["ports"] + account["mirrors"]}


def test_the_texts_of_an_account_are_the_printed_ones(standing_device):
    one, = standing_device.nics("host1")
    client, follower = Control(standing_device), Control(standing_device)
    follower.say(b'{"command": "follow", "texts": true}\n')
    assert follower.hear() == {"following": True}
    for frame in (FRAME, UNTRANSLATED):
        text = standing_device.control("explain", "--port=1", frame.hex()).stdout
        client.say(json.dumps({"command": "explain", "port": 1, "frame": frame.hex(), "texts": True}).encode() + b"\n")
        account, = client.hear()["frames"]
        steps, ports = printed(account)
        assert text.startswith(steps)
        assert (ports[1] == "the frame came in there") == ("drop" not in account) and set(ports) == {0, 1, 2, 3, 4}
        rest = text[len(steps):]
        assert all(f": {words}\n" in rest for words in ports.values() if words != "the frame is not for it")
        one.send(frame)
        assert printed(follower.hear()) == (steps, ports)
    account, = standing_device.ask("explain", FRAME.hex(), "--port", "1")["frames"]
    assert not any("text" in row for row in account["steps"] + account["ports"])


@pytest.mark.parametrize("member", ["steps", "texts"])
def test_a_wrong_request_to_follow_leaves_room(standing_device, member):
    for _ in range(17):
        client = Control(standing_device)
        client.say(json.dumps({"command": "follow", member: 7}).encode() + b"\n")
        assert client.hear() == {"error": "An argument of the command has the wrong type."}


def test_follow_prints_a_line_a_frame(standing_device):
    one, = standing_device.nics("host1")
    lines = Reader(standing_device, "follow", "--count", "2")
    one.send(FRAME)
    one.send(UNTRANSLATED)
    first, second = lines.wait().splitlines()
    assert "port 1" in first and "02:00:00:00:00:01 > ff:ff:ff:ff:ff:ff 0x0800  VLAN 1" in first and " to cpu," in first
    assert second.endswith("dropped: vlan_missing")


def test_follow_shows_what_it_is_asked_for(standing_device):
    one, two = standing_device.nics("host1", "host2")
    readers = {name: Reader(standing_device, "--json", "follow", *words) for name, words in {
        "dropped": ("--dropped",), "reason": ("--reason", "same_port"), "vlan": ("--vlan", "100"), "port": ("--port", "4"),
        "mac": ("--mac", "02:00:00:00:00:02"), "type": ("--type", "0x0800")}.items()}
    for nic, frame in ((one, FRAME), (one, UNTRANSLATED), (one, LOST), (two, BROADCAST + station(2) + PAYLOAD)):
        nic.send(frame)
    expected = {"dropped": [(1, "vlan_missing"), (1, "same_port")], "reason": [(1, "same_port")],
                "vlan": [(1, "vlan_missing")], "mac": [(2, None)],
                "type": [(1, None), (1, "vlan_missing"), (1, "same_port"), (2, None)], "port": []}
    lines = {name: readers[name].read_until(lambda lines, all_=all_: len(lines) >= len(all_)) for name, all_ in expected.items()}
    time.sleep(0.5)  # for what must not come
    told = {}
    for name, reader in readers.items():
        lines[name] += reader.interrupt()[0].splitlines()
        told[name] = [(line["port"], line.get("drop")) for line in map(json.loads, lines[name])]
    assert told == expected


def test_follow_shows_all_steps(standing_device):
    one, = standing_device.nics("host1")
    lines = Reader(standing_device, "follow", "--steps", "--count", "1")
    one.send(FRAME)
    text = lines.wait()
    assert text.startswith("in by port 1, 60 octets\n") and "  spanning tree: forwarding\n" in text
    assert "  not sent  port 1: the frame came in there\n" in text


@pytest.mark.parametrize("words, sentence", [
    (("--reason", "same_prot"), "did you mean 'same_port'?"), (("--type", "65536"), "--type takes a number"),
    (("--mac", "me"), "--mac takes an address"), (("--port", "x"), "port"), (("--vlan", "-"), "vlan"), (("now",), "no arguments")])
def test_follow_refuses_with_a_sentence(standing_device, words, sentence):
    refused = standing_device.control("follow", *words)
    assert (refused.returncode, refused.stdout) == (1, "") and sentence in refused.stderr


@pytest.mark.parametrize("command", ["follow", "capture"])
def test_only_so_many_can_listen(standing_device, command):
    clients = []
    for _ in range(16):
        clients.append(Control(standing_device))
        clients[-1].say(json.dumps({"command": command}).encode() + b"\n")
        assert set(clients[-1].hear()) & {"following", "capturing"}
    late = Control(standing_device)
    late.say(json.dumps({"command": command}).encode() + b"\n")
    assert "16 clients" in late.hear()["error"]
    for client in clients:
        client.socket.close()
        client.reader.close()

    def has_room():
        again = Control(standing_device)
        again.say(json.dumps({"command": command}).encode() + b"\n")
        return "error" not in again.hear()
    wait_until(has_room, "room for another one")


@pytest.mark.parametrize("words", [("follow",), ("follow", "--steps"), ("capture", "-", "--dropped")])
def test_a_stopped_reader_keeps_nobody_waiting_and_is_told_what_it_missed(device, tmp_path, words):
    """Its queue and the socket are full after some frames; the others are counted."""
    sent = 60000
    one, two = device.nics("host1", "host2")
    with open(tmp_path / "output", "wb") as output:
        reader = Reader(device, "--json", *words, output=output)
    os.kill(reader.process.pid, signal.SIGSTOP)
    before = device.counters(1)["rx_frames"]
    memory = resident(device)
    for done in range(0, sent, 1000):
        for _ in range(1000):
            one.send(LOST)
        wait_until(lambda goal=before + done + 1000: device.counters(1)["rx_frames"] >= goal, "the frames to pass")
    two.send(FRAME)
    assert one.receive() == FRAME
    # The address sanitizer keeps freed memory, to detect its use.
    assert resident(device) - memory < 16 << 20 or PROGRAMS.endswith("/asan")
    os.kill(reader.process.pid, signal.SIGCONT)
    sizes = [-1]

    def has_read_all():
        time.sleep(0.5)
        sizes.append((tmp_path / "output").stat().st_size)
        return sizes[-1] == sizes[-2]

    wait_until(has_read_all, "the reader to read what waits for it")
    _, errors = reader.interrupt()
    if words[0] == "follow":
        lines = [json.loads(line) for line in (tmp_path / "output").read_text().splitlines()]
        missed = sum(line.get("missed", 0) for line in lines)
        told = sum("missed" not in line for line in lines)
    else:
        told, missed = (int(word) for word in errors.split() if word.isdigit())
    assert told + missed >= sent > told > 100 and missed > 100


def resident(device):
    with open(f"/proc/{device.process.pid}/statm", encoding="ascii") as pages:
        return int(pages.read().split()[1]) * os.sysconf("SC_PAGE_SIZE")
