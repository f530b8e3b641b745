"""The daemon as a whole, with real frames on its interfaces. Runs in a network namespace of its own:

    VDEVICE_PROGRAMS=build/host unshare -Urn /usr/bin/python3 -m pytest vdevice/daemon/test_vdeviced.py
"""
import json
import os
import select
import signal
import socket
import stat
import struct
import subprocess
import tempfile
import time
from pathlib import Path

import pytest

PROGRAMS = os.environ["VDEVICE_PROGRAMS"]
DEADLINE = 10.0
ALL_PROTOCOLS = 0x0003
PACKET_AUXDATA = 8
PACKET_IGNORE_OUTGOING = 23
VLAN_VALID, TPID_VALID = 0x10, 0x40
BROADCAST = b"\xff" * 6
PAYLOAD = b"\x08\x00" + bytes(range(46))


def station(number):
    return bytes([2, 0, 0, 0, 0, number])


def tag(tpid, tci):
    return struct.pack(">HH", tpid, tci)


def wait_until(condition, what):
    """Polls, because the kernel tells of links when it likes; fails at the deadline."""
    end = time.monotonic() + DEADLINE
    while time.monotonic() < end:
        if condition():
            return
        time.sleep(0.01)
    pytest.fail(f"waited {DEADLINE} s for {what}")


class Nic:
    """A raw socket on a host's end of a cable."""

    def __init__(self, interface):
        subprocess.run(["ip", "link", "set", interface, "up"], check=True)
        self.socket = socket.socket(socket.AF_PACKET, socket.SOCK_RAW, 0)
        self.socket.setsockopt(socket.SOL_PACKET if hasattr(socket, "SOL_PACKET") else 263, PACKET_AUXDATA, 1)
        self.socket.setsockopt(263, PACKET_IGNORE_OUTGOING, 1)
        self.socket.bind((interface, ALL_PROTOCOLS))

    def send(self, frame):
        self.socket.send(frame)

    def receive(self, deadline=DEADLINE):
        """The next frame with its outer tag in place, or None when none comes in time."""
        if not select.select([self.socket], [], [], deadline)[0]:
            return None
        frame, controls, _, _ = self.socket.recvmsg(10000, 256)
        for _, kind, data in controls:
            if kind == PACKET_AUXDATA:
                status, _, _, _, _, tci, tpid = struct.unpack("=IIIHHHH", data[:20])
                if status & VLAN_VALID:
                    frame = frame[:12] + tag(tpid if status & TPID_VALID else 0x8100, tci) + frame[12:]
        return frame


class Device:
    def __init__(self, run_dir, *options):
        self.run_dir = run_dir
        self.process = subprocess.Popen([f"{PROGRAMS}/vdeviced", "--run-dir", run_dir, *options],
                                        stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True)

    def wait_ready(self):
        assert self.process.stdout.readline() == "vdeviced: ready\n", self.process.stderr.read()

    def stop(self):
        self.process.send_signal(signal.SIGTERM)
        _, errors = self.process.communicate(timeout=DEADLINE)
        assert errors == ""
        return self.process.returncode

    def control(self, *words):
        return subprocess.run([f"{PROGRAMS}/vdevctl", "--run-dir", self.run_dir, *words], capture_output=True,
                              text=True, timeout=DEADLINE)

    def ask(self, *words):
        result = self.control("--json", *words)
        assert result.returncode == 0, result.stderr
        return json.loads(result.stdout)

    def calling(self, *words):
        """Arguments for a process of its own that makes a driver call, as a management program would."""
        return {"args": [f"{PROGRAMS}/vdevice_test_caller", *map(str, words)], "text": True,
                "env": {**os.environ, "VDEVICE_DIR": self.run_dir}}

    def call(self, *words):
        return subprocess.check_output(**self.calling(*words), timeout=DEADLINE).strip()

    def port(self, number):
        return next(port for port in self.ask("ports")["ports"] if port["port"] == number)

    def counters(self, number):
        return next(row for row in self.ask("counters")["counters"] if row["port"] == number)

    def nics(self, *interfaces):
        nics = [Nic(interface) for interface in interfaces]
        for interface in interfaces:
            number = 0 if interface == "eth0" else int(interface.removeprefix("host"))
            wait_until(lambda number=number: self.port(number)["up"], f"{interface}'s link")
        return nics


@pytest.fixture(name="run_dir")
def make_run_dir():
    with tempfile.TemporaryDirectory(prefix="vdevice-test-") as folder:
        yield folder + "/device"


@pytest.fixture(name="start")
def make_starter(run_dir):
    """Starts devices; whatever a failed test left running or standing is cleared away."""
    started = []

    def start(*options):
        started.append(Device(run_dir, *options))
        return started[-1]

    before = interfaces()
    yield start
    for device in started:
        if device.process.poll() is None:
            device.process.kill()
        device.process.communicate()
    for name in interfaces() - before:
        subprocess.run(["ip", "link", "del", name], check=False, stderr=subprocess.DEVNULL)


@pytest.fixture(name="device")
def make_device(start):
    device = start("--create-interfaces", "--user-ports", "4", "--first-port", "23")
    device.wait_ready()
    yield device
    assert device.stop() == 0


def interfaces():
    return {link["ifname"] for link in json.loads(subprocess.check_output(["ip", "-j", "link"]))}


def carrier(interface):
    link, = json.loads(subprocess.check_output(["ip", "-j", "link", "show", interface]))
    return "LOWER_UP" in link["flags"]


def test_start_and_end_leave_nothing_behind(start, run_dir):
    before = interfaces()
    device = start("--create-interfaces", "--user-ports", "2")
    device.wait_ready()
    assert interfaces() - before == {"cpu0", "eth0", "port1", "host1", "port2", "host2"}
    assert stat.S_IMODE(os.stat(run_dir).st_mode) == 0o700
    for name in ("control", "driver"):
        assert stat.S_IMODE(os.stat(f"{run_dir}/{name}").st_mode) & 0o077 == 0
    assert device.stop() == 0
    assert interfaces() == before
    assert os.listdir(run_dir) == []


def test_a_folder_that_others_may_write_to_is_refused(start, run_dir):
    os.mkdir(run_dir)
    for mode in (0o777, 0o770, 0o702):
        os.chmod(run_dir, mode)
        device = start()
        _, errors = device.process.communicate(timeout=DEADLINE)
        assert device.process.returncode == 1
        assert "is not a folder that belongs to this user alone" in errors
        assert os.listdir(run_dir) == []


def test_a_link_to_a_folder_is_refused(start, run_dir):
    os.mkdir(run_dir + ".real", mode=0o700)
    os.symlink(run_dir + ".real", run_dir)
    device = start()
    _, errors = device.process.communicate(timeout=DEADLINE)
    assert device.process.returncode == 1
    assert "is not a folder that belongs to this user alone" in errors
    assert os.listdir(run_dir) == []


def test_sockets_are_their_owners_in_an_open_folder_too(start, run_dir):
    os.mkdir(run_dir)
    os.chmod(run_dir, 0o755)
    start("--create-interfaces", "--user-ports", "1").wait_ready()
    for name in ("control", "driver"):
        assert stat.S_IMODE(os.stat(f"{run_dir}/{name}").st_mode) & 0o077 == 0


def test_a_second_device_is_refused_and_the_first_stays(device, start):
    second = start("--user-ports", "4")
    _, errors = second.process.communicate(timeout=DEADLINE)
    assert second.process.returncode == 1
    assert errors.startswith("vdeviced: cannot listen on") and "another vdeviced" in errors
    assert device.ask("version")["user_ports"] == 4


def test_what_a_killed_device_left_does_not_hinder_the_next(start):
    first = start("--create-interfaces", "--user-ports", "1")
    first.wait_ready()
    first.process.kill()
    first.process.wait()
    second = start("--user-ports", "1")
    second.wait_ready()
    assert second.ask("version")["user_ports"] == 1
    assert second.stop() == 0


def test_missing_interfaces_are_told(start, run_dir):
    device = start()
    _, errors = device.process.communicate(timeout=DEADLINE)
    assert device.process.returncode == 1
    assert errors.startswith("vdeviced: cannot find interface cpu0.")
    assert os.listdir(run_dir) == []


def test_impossible_boards_are_told(start):
    device = start("--user-ports", "30", "--first-port", "3")
    _, errors = device.process.communicate(timeout=DEADLINE)
    assert device.process.returncode == 1
    assert errors.startswith("vdeviced: cannot wire such a board")


def test_hosts_reach_each_other_and_the_cpu(device):
    one, two, cpu = device.nics("host1", "host2", "eth0")
    one.send(BROADCAST + station(1) + PAYLOAD)
    assert two.receive() == BROADCAST + station(1) + PAYLOAD
    assert cpu.receive() == BROADCAST + station(1) + tag(0x8874, 0) + struct.pack(">H", 23) + tag(0x8100, 1) + PAYLOAD
    two.send(station(1) + station(2) + PAYLOAD)
    assert one.receive() == station(1) + station(2) + PAYLOAD
    assert cpu.receive(0.2) is None
    assert {(row["mac"], row["port"]) for row in device.ask("macs")["macs"]} == {("02:00:00:00:00:01", 1),
                                                                                ("02:00:00:00:00:02", 2)}


@pytest.mark.parametrize("tags", [tag(0x88A8, 5), tag(0x9100, 5), tag(0x88A8, 5) + tag(0x8100, 7)])
def test_foreign_tags_pass_unchanged(device, tags):
    one, two = device.nics("host1", "host2")
    one.send(BROADCAST + station(1) + tags + PAYLOAD)
    assert two.receive() == BROADCAST + station(1) + tags + PAYLOAD


def test_outer_tags_are_seen_by_the_chip(device):
    one, two = device.nics("host1", "host2")
    one.send(BROADCAST + station(1) + tag(0x8100, 0xA001) + tag(0x8100, 9) + PAYLOAD)
    assert two.receive() == BROADCAST + station(1) + tag(0x8100, 9) + PAYLOAD
    one.send(BROADCAST + station(1) + tag(0x8100, 5) + PAYLOAD)
    wait_until(lambda: device.counters(1)["drops"]["vlan_missing"] == 1, "the drop to be counted")
    assert two.receive(0) is None


def test_long_frames_pass_and_are_counted_to_the_octet(device):
    one, two = device.nics("host1", "host2")
    frame = BROADCAST + station(1) + b"\x88\xb5" + bytes(9300)
    one.send(frame)
    assert two.receive() == frame
    assert device.counters(1)["rx_octets"] == len(frame)
    assert device.counters(2)["tx_octets"] == len(frame)
    assert device.counters(2)["tx_lost"] == 0


def test_a_burst_arrives_whole_and_in_order(device):
    one, two = device.nics("host1", "host2")
    for burst in range(20):
        for number in range(50):
            one.send(BROADCAST + station(1) + b"\x88\xb5" + struct.pack(">HH", burst, number) + bytes(42))
        for number in range(50):
            assert two.receive()[14:18] == struct.pack(">HH", burst, number)


def test_frames_that_came_in_too_fast_are_counted_as_lost(device):
    one, two = device.nics("host1", "host2")
    frame = BROADCAST + station(1) + PAYLOAD
    many = 5000
    device.process.send_signal(signal.SIGSTOP)
    try:
        for _ in range(many):
            one.send(frame)
    finally:
        device.process.send_signal(signal.SIGCONT)

    def accounted():
        row = device.counters(1)
        return row["rx_frames"] + row["rx_lost"]

    wait_until(lambda: accounted() == many, "every frame to be counted")
    lost = device.counters(1)["rx_lost"]
    assert 0 < lost < many
    assert f"rx_lost {lost}" in device.control("counters").stdout
    assert device.counters(2)["tx_frames"] == many - lost
    while two.receive(0) is not None:
        pass  # the host has no room for all of them either
    one.send(BROADCAST + station(2) + PAYLOAD)
    assert two.receive() == BROADCAST + station(2) + PAYLOAD
    assert device.counters(1)["rx_lost"] == lost


def test_the_cpu_directs_frames_to_ports_on_both_words(device):
    cpu, one, four = device.nics("eth0", "host1", "host4")  # chip ports 23 and 26
    cpu.send(BROADCAST + station(9) + struct.pack(">HII", 0x8874, 6 << 29 | 26, 0) + PAYLOAD)
    assert four.receive() == BROADCAST + station(9) + PAYLOAD
    cpu.send(BROADCAST + station(9) + struct.pack(">HII", 0x8874, 7 << 29 | 1 << 23, 1 << 1) + PAYLOAD)
    assert four.receive() == BROADCAST + station(9) + PAYLOAD
    assert one.receive() == BROADCAST + station(9) + PAYLOAD
    assert one.receive(0) is None
    cpu.send(BROADCAST + station(9) + PAYLOAD)
    wait_until(lambda: device.counters(0)["drops"]["no_switch_tag"] == 1, "the drop to be counted")


def test_a_pulled_cable_passes_nothing_until_it_is_plugged(device):
    one, two = device.nics("host1", "host2")
    assert device.control("pull", "2").returncode == 0
    assert not carrier("host2")
    assert device.port(2)["pulled"] and not device.port(2)["up"]
    one.send(BROADCAST + station(1) + PAYLOAD)
    wait_until(lambda: device.counters(1)["rx_frames"] == 1, "the frame to be taken")
    assert device.counters(2)["tx_frames"] == 0
    assert device.control("plug", "2").returncode == 0
    wait_until(lambda: device.port(2)["up"] and carrier("host2"), "the link")
    one.send(BROADCAST + station(1) + PAYLOAD)
    assert two.receive() == BROADCAST + station(1) + PAYLOAD


def test_a_disabled_ports_host_loses_its_carrier(device):
    one, two = device.nics("host1", "host2")
    assert device.call("enable", 24, 0) == "0"
    assert not carrier("host2")
    assert not device.port(2)["up"]
    assert device.control("pull", "2").returncode == 0
    assert device.call("enable", 24, 1) == "0"
    assert not carrier("host2"), "its cable is out"
    assert device.control("plug", "2").returncode == 0
    wait_until(lambda: device.port(2)["up"] and carrier("host2"), "the link")
    one.send(BROADCAST + station(1) + PAYLOAD)
    assert two.receive() == BROADCAST + station(1) + PAYLOAD


def test_loopback_sends_the_hosts_own_frames_back(device):
    one, = device.nics("host1")
    assert device.call("loopback", 24, 1) == "0"
    one.send(BROADCAST + station(1) + PAYLOAD)
    assert one.receive() == BROADCAST + station(1) + PAYLOAD
    assert device.counters(2)["rx_frames"] == 1


def test_a_trunk_spreads_flows_over_the_cables_that_are_left(device):
    one, two, three, four = device.nics("host1", "host2", "host3", "host4")
    assert device.call("trunk", 24, 25) == "0"
    assert device.ask("trunks")["trunks"] == [
        {"trunk": 0, "group": 1, "members": [2, 3], "standby": [], "balance": 3}]

    def send_flows():
        """How many of 40 flows arrive at each host; each arrives at one of the trunk's only."""
        for number in range(40):
            one.send(BROADCAST + station(number) + PAYLOAD)
        assert [four.receive()[11] for number in range(40)] == list(range(40))
        arrived = [count_frames(nic) for nic in (two, three)]
        assert sum(arrived) == 40
        return arrived

    assert min(send_flows()) > 0
    assert device.control("pull", "2").returncode == 0
    assert send_flows() == [0, 40]


def test_a_mirror_shows_frames_as_they_came_in(device):
    one, two, three = device.nics("host1", "host2", "host3")
    assert device.call("mirror", 23, 1, 25, 2) == "0"
    assert device.ask("mirrors") == {"enabled": False, "mirrors": [
        {"session": 1, "destination": 3, "ingress": [1], "egress": [], "flow": None, "disabled": False}]}
    foreign = BROADCAST + station(1) + tag(0x8100, 0xA063) + tag(0x88A8, 5) + PAYLOAD
    one.send(foreign)
    assert three.receive(0.2) is None
    assert device.call("control", 125, 1) == "0"
    one.send(foreign)
    assert three.receive() == foreign
    assert two.receive(0) is None, "there is no such VLAN"
    assert device.control("mirrors").stdout.splitlines()[1:] == [
        f"{1:>7}  {'1':<24} {'-':<24} {'3':>2}  {'-':>4}", "mirroring on"]


def test_addresses_are_shown_with_their_kind_and_place(device):
    one, two = device.nics("host1", "host2")
    assert device.call("trunk", 25, 26) == "0"
    assert device.call("add-address", 1, 0x8, 24, 0) == "0"
    assert device.call("add-address", 2, 0x30, 24, 0) == "0"
    assert device.call("add-address", 3, 0x9, -1, 0) == "0"
    assert device.call("add-address", 3, 0x9, -1, 7) == "-42"
    one.send(BROADCAST + station(2) + PAYLOAD)
    one.send(BROADCAST + station(4) + PAYLOAD)
    assert two.receive() == BROADCAST + station(4) + PAYLOAD, "the other one is filtered"
    rows = device.ask("macs")["macs"]
    assert [(row["kind"], row["port"], row["trunk"]) for row in rows] == [
        ("static", 2, -1), ("filter", 2, -1), ("static", 0, 0), ("dynamic", 1, -1)]
    assert [row["index"] for row in rows] == [(0x200 + number + 1) * 8 for number in (1, 2, 3, 4)]
    lines = device.control("macs").stdout.splitlines()
    assert lines[1:4] == ["   1  02:00:00:00:00:01     2   4112  static",
                          "   1  02:00:00:00:00:02     2   4120  filter to from",
                          "   1  02:00:00:00:00:03    t0   4128  static"]
    assert device.counters(1)["drops"]["filtered"] == 1


def test_a_group_reaches_its_members_and_an_unknown_one_may_be_dropped(device):
    one, two, three = device.nics("host1", "host2", "host3")
    group = bytes([0x01, 0, 0x5E, 1, 1, 1])
    unknown = bytes([0x01, 0, 0x5E, 1, 1, 2])
    assert device.call("group", 1, 3) == f"1 {1 << 23 | 1 << 25} 0"
    one.send(group + station(1) + PAYLOAD)
    assert three.receive() == group + station(1) + PAYLOAD
    one.send(unknown + station(1) + PAYLOAD)
    assert three.receive() == unknown + station(1) + PAYLOAD
    assert two.receive() == unknown + station(1) + PAYLOAD, "and not the group's frame"
    assert device.call("group-miss", 23, 1) == "0"
    one.send(unknown + station(1) + PAYLOAD)
    assert two.receive(0.2) is None
    assert device.counters(1)["drops"]["unknown_group"] == 1
    assert device.ask("mcast")["mcast"] == [
        {"vid": 1, "mac": "01:00:5e:01:01:01", "group": 1, "index": (0x100 + 0x5E01 + 0x101 + 1) % 1024 * 8,
         "ports": [1, 3]}]
    lines = device.control("mcast").stdout.splitlines()
    assert lines[1:3] == ["   1  01:00:5e:01:01:01      1     24  1,3",
                          "1 of 1024 groups; IPv4 groups known, IPv6 groups known"]
    assert lines[5].split() == ["1", "used", "known", "drop", "flood"]


def test_a_blocked_port_passes_nothing_but_what_the_cpu_directs(device):
    one, two, three, cpu = device.nics("host1", "host2", "host3", "eth0")
    assert device.call("stp-state", 0, 24, 1) == "0"
    assert device.call("group-vlan", 3, 100) == "0"
    one.send(BROADCAST + station(1) + PAYLOAD)
    assert three.receive() == BROADCAST + station(1) + PAYLOAD
    two.send(BROADCAST + station(2) + PAYLOAD)
    wait_until(lambda: device.counters(2)["drops"]["stp_blocked"] == 1, "the drop to be counted")
    assert three.receive(0) is None
    cpu.send(BROADCAST + station(9) + struct.pack(">HII", 0x8874, 6 << 29 | 24, 0) + PAYLOAD)
    assert two.receive() == BROADCAST + station(9) + PAYLOAD, "and not the broadcast"
    default, other = device.ask("groups")["groups"]
    assert (default["vlans"], other["vlans"]) == ([[1, 99], [101, 4094]], [[100, 100]])
    assert (default["blocking"], default["forwarding"], other["blocking"]) == ([2], [0, 1, 3, 4], [])
    assert device.control("groups").stdout.splitlines()[:3] == [
        "group 0*  VLANs 1-99,101-4094", "    blocking   2", "    forwarding cpu,1,3-4"]


@pytest.mark.parametrize("tpid", [0x88A8, 0x9100])
def test_a_customers_tags_cross_the_providers_port(device, tpid):
    one, two, three, cpu = device.nics("host1", "host2", "host3", "eth0")
    assert device.call("tags", 23, 2, 0x8100) == "0"
    assert device.call("tags", 24, 1, tpid) == "0"
    assert device.call("translate", 24, 500, 1) == "0"
    assert device.call("service", 23, 7, 5) == "0"
    frame = BROADCAST + station(1)
    three.send(frame + tag(0x8100, 1) + PAYLOAD)
    assert one.receive() == frame + PAYLOAD
    assert two.receive() == frame + PAYLOAD, "VLAN 1 leaves untagged"
    assert device.call("tagged-only", 24) == "0"
    one.send(frame + tag(0x8100, 7) + tag(0x8100, 8) + PAYLOAD)
    assert two.receive() == frame + tag(tpid, 0xA000 | 500) + tag(0x8100, 7) + tag(0x8100, 8) + PAYLOAD
    two.send(BROADCAST + station(2) + tag(tpid, 500) + tag(0x8100, 7) + PAYLOAD)
    assert one.receive() == BROADCAST + station(2) + tag(0x8100, 7) + PAYLOAD
    arrived = [cpu.receive() for _ in range(3)]
    assert arrived[-1] == (BROADCAST + station(2) + tag(0x8874, 0) + struct.pack(">H", 24) + tag(tpid, 1) +
                           tag(0x8100, 7) + PAYLOAD)


def test_translations_and_subnets_are_shown(device):
    assert device.call("translate", 24, 500, 1) == "0"
    assert device.call("service", 23, 7, 5) == "0"
    assert device.call("subnet", 25, 3) == "0"
    assert device.call("tags", 23, 2, 0x88A8) == "0"
    answer = device.ask("translations")
    assert answer["ingress"] == [{"port": 2, "vid": 500, "new_vid": 1, "priority": None}]
    assert answer["egress"] == [{"port": 2, "vid": 1, "new_vid": 500, "priority": None}]
    assert answer["double_tags"] == [{"port": 1, "vid": 7, "new_vid": 1, "priority": 5}]
    assert [line.split() for line in device.control("translations").stdout.splitlines()] == [
        ["TABLE", "PORT", "MATCH", "VLAN", "PRIORITY"], ["ingress", "2", "500", "1", "kept"],
        ["egress", "2", "1", "500", "kept"], ["double", "tag", "1", "7", "1", "5"],
        ["subnet", "3", "192.0.2.0/255.255.255.0", "1", "3"],
        ["port", "1:", "double", "tags", "external,", "TPID", "0x88a8"]]


def test_a_trusted_dscp_chooses_the_queue_and_is_shown(device):
    one, two = device.nics("host1", "host2")
    assert device.call("trust", 23, 2) == "0"
    assert device.call("trust", 23, 4) == "-3"
    assert device.call("dscp", 23, 46, 10, 7) == "0"
    assert device.call("queue", 24, 7, 6) == "0"
    assert device.call("queue", 24, 7, 8) == "-110"
    frame = BROADCAST + station(1) + b"\x08\x00\x45"
    one.send(frame + bytes([46 << 2]) + bytes(44))
    arrived = two.receive()
    assert arrived[:16] == frame[:15] + bytes([10 << 2])
    answer = device.ask("priorities")
    assert (answer["queues"], answer["default"]) == (list(range(8)), "802.1p")
    assert answer["dscps"][46] == {"dscp": 46, "mapped": 46, "priority": 5}
    first, second = (next(row for row in answer["ports"] if row["port"] == port) for port in (1, 2))
    assert first == {"port": 1, "trust": "dscp", "priority": 0, "remap": list(range(8)), "queues": list(range(8)),
                     "dscps": [{"dscp": 46, "mapped": 10, "priority": 7}], "tx_queues": [0] * 8}
    assert second["queues"] == [0, 1, 2, 3, 4, 5, 6, 6]
    assert second["tx_queues"] == [0, 0, 0, 0, 0, 0, 1, 0]
    lines = [line.split() for line in device.control("priorities").stdout.splitlines()]
    assert lines[2] == "1 dscp 0 0 1 2 3 4 5 6 7 0 1 2 3 4 5 6 7 0 0 0 0 0 0 0 0".split()
    assert lines[3] == "2 802.1p 0 0 1 2 3 4 5 6 7 0 1 2 3 4 5 6 6 0 0 0 0 0 0 1 0".split()
    assert lines[-1] == "DSCP 46 on port 1: DSCP 10, priority 7".split()


def test_a_limit_refuses_addresses_and_shows_them(device):
    one, two = device.nics("host1", "host2")
    assert device.call("limit", 4, 0, 23, 0, 1) == "0"
    assert device.call("limit", 0, 0, 23, 0, 1) == "-3"
    one.send(BROADCAST + station(1) + PAYLOAD)
    one.send(BROADCAST + station(2) + PAYLOAD)
    one.send(BROADCAST + station(1) + PAYLOAD)
    assert [two.receive(), two.receive(), two.receive(0.2)] == [BROADCAST + station(1) + PAYLOAD] * 2 + [None]
    assert device.ask("limits") == {
        "learned": 1, "limits": [{"scope": "port", "port": 1, "limit": 1, "learned": 1}],
        "violations": [{"port": 1, "count": 1, "addresses": [{"vid": 1, "mac": "02:00:00:00:00:02"}]}]}
    assert device.control("limits").stdout.splitlines()[1:] == [
        "port 1              1        1", "1 addresses learned", "port 1 refused 1", "   1  02:00:00:00:00:02"]


def test_pins_are_driven_by_hand_and_read_by_software(device):
    assert device.ask("gpio") == {"input": 0, "output": 0, "direction": 0}
    assert device.ask("gpio", "3", "1")["input"] == 8
    assert device.call("read-register", 0x2000) == "8 0"
    assert device.call("write-register", 0x2000, 1) == "-71"
    assert device.call("write-register", 0x2004, 5) == "0"
    assert device.control("gpio", "3", "0").stdout == (
        "direction  0x00000000\noutput     0x00000005\ninput      0x00000000\n")


def test_frames_to_a_reserved_address_reach_the_cpu_only(device):
    one, two, cpu = device.nics("host1", "host2", "eth0")
    address = bytes([0x01, 0x80, 0xC2, 0, 0, 0x0E])
    assert device.call("reserve", 10, *address) == "0"
    assert device.ask("reserved")["reserved"][10] == {"index": 10, "mac": "01:80:c2:00:00:0e"}
    one.send(address + station(1) + PAYLOAD)
    assert cpu.receive() == address + station(1) + tag(0x8874, 0) + struct.pack(">H", 23) + tag(0x8100, 1) + PAYLOAD
    assert two.receive(0.2) is None
    assert device.ask("macs")["macs"] == []


def test_attacks_are_dropped_and_counted(device):
    one, two = device.nics("host1", "host2")
    attack = station(1) + station(1) + PAYLOAD
    one.send(attack)
    assert two.receive(0.2) is None, "its destination is behind its own port"
    assert device.call("filter-attacks") == "0"
    one.send(attack)
    wait_until(lambda: device.counters(1)["drops"]["dos_same_mac"] == 1, "the drop to be counted")
    assert device.ask("reserved")["attack_filter"]


def datagram(length=46, tos=0):
    """From its type on, with a good header checksum."""
    header = struct.pack(">BBHHHBBHII", 0x45, tos, length, 0, 0, 64, 17, 0, 0x0A000001, 0x0A000002)
    total = sum(struct.unpack(">10H", header))
    checksum = 0xFFFF - (total % 0xFFFF)
    return b"\x08\x00" + header[:10] + struct.pack(">H", checksum) + header[12:] + bytes(length - 20)


def test_a_rule_rewrites_what_it_matches_and_nothing_else(device):
    one, two = device.nics("host1", "host2")
    assert device.call("rule", 768, 23, 1, 46, 0) == "0"
    assert device.call("rule", 768, 23, 1, 46, 0).startswith("-"), "the entry is there"
    one.send(BROADCAST + station(1) + datagram())
    assert two.receive() == BROADCAST + station(1) + datagram(tos=46 << 2)
    one.send(BROADCAST + station(1) + PAYLOAD)
    assert two.receive() == BROADCAST + station(1) + PAYLOAD
    assert device.ask("fields")["fields"] == [
        {"entry": 768, "group": 3, "part": "whole", "installed": True, "changed": False, "priority": 1, "matches": 1,
         "qualifiers": [{"field": "in_ports", "ports": [1]}, {"field": "protocol", "data": 17, "mask": 0xFFFFFFFF}],
         "actions": [{"action": "set_dscp", "value": 46}]}]
    assert device.control("fields").stdout.splitlines()[1].split() == [
        "768", "3", "whole", "1", "installed", "1", "in_ports", "1,", "protocol", "17/0xffffffff:", "set_dscp", "46"]
    assert device.call("destroy-rule", 768) == "0"
    one.send(BROADCAST + station(1) + datagram())
    assert two.receive() == BROADCAST + station(1) + datagram()


def test_rules_count_and_ports_have_miss_actions(device):
    one, two, cpu = device.nics("host1", "host2", "eth0")
    assert device.call("rule", 768, 23, 205, 7, 0) == "0"
    assert device.call("miss", 23, 3) == "0"
    for _ in range(3):
        one.send(BROADCAST + station(1) + datagram())
        assert two.receive() is not None
        assert cpu.receive() is not None
    one.send(BROADCAST + station(1) + PAYLOAD)
    assert cpu.receive() is not None
    assert two.receive(0.2) is None, "to the CPU only"
    assert device.call("read-field-counter", 7, 0) == "3 0"
    assert device.call("read-field-counter", 7, 1) == "180 0"
    fields = device.ask("fields")
    assert fields["counters"] == [{"counter": 7, "frames": 3, "octets": 180}]
    assert fields["miss_actions"] == [{"port": 1, "action": 3}]
    assert device.control("fields").stdout.splitlines()[-2:] == [
        "counter 7: 3 frames, 180 octets", "port 1: miss action 3"]


def test_a_meter_lets_a_burst_pass_and_drops_the_rest(device):
    one, _ = device.nics("host1", "host2")
    assert device.call("meter", 1, 5) == "0"
    assert device.call("rule", 768, 23, 53, 0, 5) == "0"
    # Each takes 1538 octets out of 3084 with all that goes with it; at 1 kbit/s a third would have to wait 12 seconds.
    for _ in range(4):
        one.send(BROADCAST + station(1) + datagram(1500))
    wait_until(lambda: device.counters(1)["rx_frames"] == 4, "four frames to come in")
    answer = device.ask("meters")
    time = answer.pop("time")
    assert answer == {"capacity": 64, "counts_gap": True, "meters": [
        {"meter": 5, "rate": 1, "depth": 3084, "passed": 2, "dropped": 2, "entries": [768]}]}
    assert 0 < time <= device.ask("version")["uptime"] < time + 60
    assert device.counters(1)["drops"]["meter"] == 2
    assert device.control("meters").stdout.splitlines()[1:] == [
        f"{5:>5}  {1:>10}  {3084:>10} {2:>12} {2:>12}  768", "1 of 64 meters; preamble and gap counted"]


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
    texts = [path.read_text() for path in Path(f"/proc/{device.process.pid}/fdinfo").iterdir()]
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


class Watcher:
    """A process that has registered with the link scan."""

    def __init__(self, device):
        self.process = subprocess.Popen(**device.calling("watch"), stdin=subprocess.PIPE, stdout=subprocess.PIPE)
        assert self.process.stdout.readline() == "0\n"

    def next_change(self):
        """When it was told, and what: port, speed, duplex, fault, link."""
        assert select.select([self.process.stdout], [], [], DEADLINE)[0]
        words = self.process.stdout.readline().split()
        return float(words[0]), [int(word) for word in words[2:]]

    def stop(self):
        self.process.communicate("", timeout=DEADLINE)


def test_link_changes_are_told_within_a_tenth_of_a_second(device):
    device.nics("host2")
    watcher, control = Watcher(device), Control(device)

    def after(action, *changes):
        """The slowest of the changes that follow an action, in seconds."""
        begin = time.monotonic()
        action()
        told = [watcher.next_change() for _ in changes]
        assert [change for _, change in told] == list(changes)
        return max(when for when, _ in told) - begin

    def say(line):
        control.say(line)
        assert control.hear() == {}

    down, up = [24, 1000, 1, 2, 0], [24, 1000, 1, 0, 1]
    times = []
    for _ in range(5):
        times.append(after(lambda: say(b'{"command": "pull", "port": 2}\n'), down))
        times.append(after(lambda: say(b'{"command": "plug", "port": 2}\n'), up))
    assert sorted(times)[len(times) // 2] < 0.1, times
    host = ["ip", "link", "set", "host2"]
    after(lambda: subprocess.run([*host, "down"], check=True), [24, 1000, 1, 1, 0])
    after(lambda: subprocess.run([*host, "up"], check=True), up)
    after(lambda: device.call("enable", 24, 0), [24, 1000, 1, 3, 0])
    after(lambda: device.call("enable", 24, 1), up)
    watcher.stop()


def test_one_process_reads_the_events_of_another(device):
    nothing = " ".join(["0"] * 13)
    assert device.call("receive-event") == nothing
    assert device.call("send-event") == "1"
    assert len(device.ask("events")["events"]) == 1
    assert device.call("receive-event") == "1 77 1 0 0 0 0 0 0 29 26 1 1"
    assert device.call("receive-event") == nothing


def count_frames(nic):
    count = 0
    while nic.receive(0.2) is not None:
        count += 1
    return count


def test_a_host_going_down_takes_its_link_along(device):
    device.nics("host3")
    subprocess.run(["ip", "link", "set", "host3", "down"], check=True)
    wait_until(lambda: not device.port(3)["link"], "the link to go")
    assert device.port(3)["present"]


def test_an_interface_that_vanishes_may_come_back(device):
    device.nics("host3")
    subprocess.run(["ip", "link", "del", "host3"], check=True)
    wait_until(lambda: not device.port(3)["present"], "the interface to be missed")
    subprocess.run(["ip", "link", "add", "port3", "type", "veth", "peer", "name", "host3"], check=True)
    one, three = device.nics("host1", "host3")
    one.send(BROADCAST + station(1) + PAYLOAD)
    assert three.receive() == BROADCAST + station(1) + PAYLOAD


@pytest.mark.parametrize("words", [("pull", "5"), ("pull", "0"), ("plug", "-1"), ("gpio", "32", "1"),
                                   ("gpio", "3", "2")])
def test_impossible_commands_are_refused_with_a_sentence(device, words):
    result = device.control(*words)
    assert result.returncode == 1
    assert result.stderr.startswith("vdevctl: The ") and result.stderr.endswith(".\n")


@pytest.mark.parametrize("command", ["ports", "vlans", "macs", "mcast", "limits", "counters", "log", "events", "trunks", "reserved",
                                     "mirrors", "gpio", "fields", "meters", "storm", "queues", "groups", "translations",
                                     "priorities", "version"])
def test_every_table_is_shown(device, command):
    assert device.control(command).returncode == 0
    assert isinstance(device.ask(command), dict)


def test_no_device_is_told(run_dir):
    result = subprocess.run([f"{PROGRAMS}/vdevctl", "--run-dir", run_dir, "ports"], capture_output=True, text=True,
                            timeout=DEADLINE)
    assert result.returncode == 1
    assert "no vdeviced is running there" in result.stderr


class Driver:
    """A client of the driver socket that sends what it likes."""

    MAGIC = 0x61647001

    def __init__(self, device):
        self.socket = socket.socket(socket.AF_UNIX)
        self.socket.settimeout(DEADLINE)
        self.socket.connect(device.run_dir + "/driver")

    def say(self, *words):
        self.socket.sendall(struct.pack(f">{len(words)}I", *words))

    def is_closed(self):
        """Reads what is still there; False if nothing comes within the deadline."""
        try:
            while self.socket.recv(4096):
                pass
        except ConnectionResetError:
            pass
        except TimeoutError:
            return False
        return True


def interface_checksum(device):
    """Even a client that was built from other headers is told."""
    client = Driver(device)
    client.say(Driver.MAGIC, 0)
    return struct.unpack(">2I", client.socket.recv(8, socket.MSG_WAITALL))[1]


@pytest.mark.parametrize("greets, words", [
    (False, (0x47455420, 0x2F204854)), (False, (Driver.MAGIC, 0)), (True, (0,)), (True, (0xFFFFFFFF,)), (True, (16385, 0)),
    (True, (1, 0xFFFFFFFF)), (True, (2, 0, 0))])
def test_strangers_at_the_driver_socket_are_closed_alone(device, greets, words):
    silent, stranger = Driver(device), Driver(device)
    silent.say(Driver.MAGIC, interface_checksum(device), 16384)
    if greets:
        stranger.say(Driver.MAGIC, interface_checksum(device))
    stranger.say(*words)
    assert stranger.is_closed()
    assert device.call("enable", 4, 1) == "0"
    assert device.ask("version")["user_ports"] == 4
    silent.say(0)
    assert silent.socket.recv(8, socket.MSG_WAITALL)[:4] == struct.pack(">I", Driver.MAGIC), "it is still served"


class Control:
    """A client of the control socket that sends what it likes."""

    def __init__(self, device):
        self.socket = socket.socket(socket.AF_UNIX)
        self.socket.settimeout(DEADLINE)
        self.socket.connect(device.run_dir + "/control")
        self.reader = self.socket.makefile("r")

    def say(self, octets):
        self.socket.sendall(octets)

    def hear(self):
        return json.loads(self.reader.readline())


@pytest.mark.parametrize("line", [b"", b"{", b"[]", b"7", b"\xff\xfe", b'{"command": 3}', b'{"command": "none"}',
                                  b'{"command": "pull", "port": "x"}', b'{"command": "pull", "port": 1e99}',
                                  b'{"command": "pull"}', b'{"command": "trace"}',
                                  b'{"command": "gpio", "pin": 3}', b'{"command": "gpio", "level": 1}',
                                  b'{"command": "gpio", "pin": 1e99, "level": 1}',
                                  b'{"command": "gpio", "pin": 3, "level": true}'])
def test_malformed_requests_get_an_error_and_the_line_stays_open(device, line):
    client = Control(device)
    client.say(line + b"\n")
    assert client.hear()["error"].endswith(".")
    client.say(b'{"command": "version"}\n')
    assert client.hear()["user_ports"] == 4


def test_requests_may_come_in_pieces_and_together(device):
    client = Control(device)
    request = b'{"command": "version"}\n'
    for octet in request[:-1]:
        client.say(bytes([octet]))
    client.say(b"\n" + request * 3)
    for _ in range(4):
        assert client.hear()["user_ports"] == 4


def test_an_endless_request_closes_only_its_client(device):
    greedy, other = Control(device), Control(device)
    try:
        greedy.say(b"x" * 1000000)
    except (BrokenPipeError, ConnectionResetError):
        pass  # closed while still talking, as it should be
    with pytest.raises((ConnectionResetError, json.JSONDecodeError)):
        greedy.hear()
    other.say(b'{"command": "version"}\n')
    assert other.hear()["user_ports"] == 4


def test_clients_that_do_not_listen_do_not_stop_the_device(device):
    one, two = device.nics("host1", "host2")
    deaf = Control(device)
    deaf.socket.setblocking(False)
    try:
        while True:
            deaf.socket.send(b'{"command": "counters"}\n')
    except BlockingIOError:
        pass
    one.send(BROADCAST + station(1) + PAYLOAD)
    assert two.receive() == BROADCAST + station(1) + PAYLOAD
    assert device.ask("version")["user_ports"] == 4
