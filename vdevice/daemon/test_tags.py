"""Spanning-tree groups, VLAN tags and priorities."""
import struct

import pytest

from testing.daemon import BROADCAST, PAYLOAD, station, tag, wait_until


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
