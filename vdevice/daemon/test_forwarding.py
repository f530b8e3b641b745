"""Frames between hosts and the CPU."""
import signal
import struct

from testing.daemon import BROADCAST, PAYLOAD, count_frames, station, tag, wait_until


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


def test_foreign_tags_pass_unchanged(device):
    one, two = device.nics("host1", "host2")
    for tags in (tag(0x88A8, 5), tag(0x9100, 5), tag(0x88A8, 5) + tag(0x8100, 7)):
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
        arrived = count_frames(two, three)
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


def test_attacks_are_dropped_and_counted(device):
    one, two = device.nics("host1", "host2")
    attack = station(1) + station(1) + PAYLOAD
    one.send(attack)
    assert two.receive(0.2) is None, "its destination is behind its own port"
    assert device.call("filter-attacks") == "0"
    one.send(attack)
    wait_until(lambda: device.counters(1)["drops"]["dos_same_mac"] == 1, "the drop to be counted")
    assert device.ask("reserved")["attack_filter"]
