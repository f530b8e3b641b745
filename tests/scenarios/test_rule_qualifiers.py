"""Every condition of rules, on real packets: those that match are dropped and counted, the others pass.

The packet that meets a condition differs from what was asked for wherever the mask has no bit; the packet that misses
it differs in one bit or so of what the mask covers.
"""

import ipaddress

import pytest
from acl import COUNT, DROP
from crossing import NEIGHBOUR, OTHER_VLAN, SENDER
from adp.lab.frames import ETHERTYPE_EXPERIMENT, ETHERTYPE_IPV4, mac
from adp.testing.packet import Packet

# Entries are single in one submodule and pairs in the others, whose second halves have other conditions.
SUBMODULES = {"single": 20, "first pair group": 2, "second pair group": 39}
ENTITY = 1
COUNTER = 200
IN_PORTS = 13
TCP = 6
FORMAT_PRIORITY, FORMAT_VLAN = 1, 2
KIND_IPV4, KIND_IPV6, KIND_NOT_IP, KIND_ARP = 5, 10, 1, 3
FRAME_ETHERNET, FRAME_LLC, FRAME_SNAP = 1, 2, 3
LLC_TEST = b"\x7f\x7f\x03"
SNAP_IPV4 = b"\xaa\xaa\x03\0\0\0\x08\0"
LONG = Packet(padding=700)
SIX = Packet(version=6)
OTHER_BLOCK = Packet(source="02:00:01:00:a0:01")


def ip(address):
    packed = ipaddress.ip_address(address)
    return int(packed) if packed.version == 4 else packed.packed


# Code, data and mask, a packet that matches, one that does not.
QUALIFIERS = {
    "source IPv6": (0, ip("fd00::1"), None, SIX, SIX.but(source_ip="fd00::3")),
    "source IPv6 network": (0, ip("fd00::"), ip("ffff:ffff::"), SIX, SIX.but(source_ip="fd00:1::1")),
    "destination IPv6": (1, ip("fd00::2"), None, SIX, SIX.but(destination_ip="fd80::2")),
    "source MAC": (6, mac("02:00:00:00:a0:01"), None, LONG, Packet(source="02:00:00:00:a0:11")),
    "source MAC block": (6, mac("02:00:00:00:00:00"), mac("ff:ff:ff:00:00:00"), LONG, OTHER_BLOCK),
    "destination MAC": (7, mac("02:00:00:00:a0:02"), None, LONG, Packet(destination="02:00:00:00:a0:03")),
    "source IPv4": (9, ip("10.1.0.1"), None, LONG, Packet(source_ip="10.1.0.2")),
    "source IPv4 network": (9, ip("10.1.9.9"), ip("255.255.0.0"), LONG, Packet(source_ip="10.3.9.9")),
    "destination IPv4": (10, ip("10.2.0.2"), None, LONG, Packet(destination_ip="11.2.0.2")),
    "outer VLAN": (18, 100, None, LONG, Packet(vlan=OTHER_VLAN)),
    "outer priority": (19, 5, None, Packet(priority=5), Packet(priority=4)),
    "outer priority of two tags": (19, 5, None, Packet(priority=5, inner=(4, 9)), Packet(priority=4, inner=(5, 9))),
    "inner format": (21, FORMAT_VLAN, None, Packet(inner=(3, 300)), Packet(inner=(3, 0))),
    "inner format of priority": (21, FORMAT_PRIORITY, None, Packet(inner=(3, 0)), Packet()),
    "inner VLAN": (22, 300, None, Packet(inner=(3, 300)), Packet(inner=(3, 301))),
    "inner VLAN of one tag": (22, 100, None, LONG, Packet(inner=(3, 300))),
    "inner priority": (23, 5, None, Packet(inner=(5, 300)), Packet(inner=(4, 300), priority=5)),
    "source port": (27, 4000, None, LONG, Packet(source_port=4001)),
    "source ports": (27, 4000, 0xFF00, Packet(source_port=4001, transport="tcp"), Packet(source_port=4096)),
    "destination port": (28, 5000, None, SIX, SIX.but(destination_port=5001)),
    "EtherType": (29, ETHERTYPE_EXPERIMENT, None, Packet(version=0), LONG),
    "EtherType behind two tags": (29, ETHERTYPE_IPV4, None, Packet(inner=(1, 300)), Packet(inner=(1, 300), version=6)),
    "protocol": (30, TCP, None, Packet(transport="tcp"), LONG),
    "next header": (30, TCP, None, SIX.but(transport="tcp"), SIX),
    "DSCP": (31, 10 << 2, 0xFC, Packet(congestion=3), Packet(dscp=11)),
    "DSCP and congestion": (31, 10 << 2 | 1, None, Packet(congestion=1), LONG),
    "kind of packet, IPv4": (61, KIND_IPV4, None, LONG, SIX),
    "kind of packet, IPv6": (61, KIND_IPV6, None, SIX, LONG),
    "kind of packet, none of IP": (61, KIND_NOT_IP, None, Packet(version=0), LONG),
    "kind of packet, ARP": (61, KIND_ARP, None, Packet(version=0, ethertype=0x0806), Packet(version=0)),
    "frame of Ethernet": (89, FRAME_ETHERNET, None, LONG, Packet(llc=LLC_TEST)),
    "frame with LLC": (89, FRAME_LLC, None, Packet(llc=LLC_TEST), LONG),
    "frame with SNAP": (89, FRAME_SNAP, None, Packet(llc=SNAP_IPV4), Packet(llc=LLC_TEST)),
    "traffic class": (332, 10 << 2, 0xFC, SIX.but(congestion=2), SIX.but(dscp=42)),
}
ACTIONS = [(DROP,), (COUNT, COUNTER)]


def check_drop(crossing, acl, met, missed):
    """Exactly the frames that meet the rule are missing, and counted to the octet."""
    before = acl.count(COUNTER)
    marker = crossing.check([met, missed], crossing.flooded(missed))
    frames, octets = acl.count(COUNTER)
    assert (frames - before[0], octets - before[1]) == (1, len(met[1].build(marker)))


@pytest.mark.parametrize("submodule", SUBMODULES.values(), ids=SUBMODULES)
@pytest.mark.parametrize("name", QUALIFIERS)
def test_condition_selects_its_packets(crossing, acl, name, submodule):
    kind, data, mask, meets, misses = QUALIFIERS[name]
    acl.install(submodule, ENTITY, [(kind, data, mask)], ACTIONS)
    check_drop(crossing, acl, (SENDER, meets), (SENDER, misses))
    assert acl.delete(submodule, ENTITY) == 0
    crossing.check_flooded((SENDER, meets), (SENDER, misses))


@pytest.mark.parametrize("submodule", SUBMODULES.values(), ids=SUBMODULES)
def test_ingress_ports_are_a_condition(crossing, acl, submodule):
    acl.install(submodule, ENTITY, [(IN_PORTS, {SENDER, 9})], ACTIONS)
    check_drop(crossing, acl, (SENDER, Packet()), (NEIGHBOUR, Packet(source="02:00:00:00:a0:0b")))


@pytest.mark.parametrize("submodule", SUBMODULES.values(), ids=SUBMODULES)
def test_all_conditions_must_be_met(crossing, acl, submodule):
    conditions = [(IN_PORTS, {SENDER}), (6, mac(LONG.source)), (28, 5000)]
    acl.install(submodule, ENTITY, conditions, ACTIONS)
    check_drop(crossing, acl, (SENDER, LONG), (SENDER, Packet(destination_port=5001)))
    check_drop(crossing, acl, (SENDER, LONG), (SENDER, Packet(source="02:00:00:00:a0:11")))


def test_addresses_of_ipv6_at_both_ends_are_one_rule_of_a_pair(crossing, acl):
    acl.install(39, ENTITY, [(0, ip("fd00::1")), (1, ip("fd00::2"))], ACTIONS)
    halves = [acl.entries()[number]["part"] for number in sorted(acl.entries())]
    assert halves == ["first", "second"]
    check_drop(crossing, acl, (SENDER, SIX), (SENDER, SIX.but(source_ip="fd00::9")))
    check_drop(crossing, acl, (SENDER, SIX), (SENDER, SIX.but(destination_ip="fd00::9")))


def test_unknown_condition_is_passed_over(crossing, acl, cpu):
    answer = cpu.call(acl.add_line(20, ENTITY, [(2, 7), (27, 4000)], ACTIONS))
    assert answer["result"] == 0
    assert "set unknow qualify type = [2]" in answer["printed"]["stdout"]
    check_drop(crossing, acl, (SENDER, LONG), (SENDER, Packet(source_port=4001)))
