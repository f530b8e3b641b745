"""Remark rules on real packets: the receiver sees the new DSCP or 802.1p priority, and nothing else changes."""

import ipaddress
import itertools

import pytest
from acl import REMARK_DSCP, REMARK_PRIORITY
from crossing import NEIGHBOUR, RECEIVER, SENDER
from adp.lab.frames import ETHERTYPE_IPV4, mac
from adp.testing.packet import Packet

RULE, OTHER_RULE = 3, 4
NEW = {REMARK_PRIORITY: ("priority", 6), REMARK_DSCP: ("dscp", 46)}
KINDS = {"priority": REMARK_PRIORITY, "dscp": REMARK_DSCP}
UNKNOWN_FORM, FAILED = 101, 102
TCP, UDP = 6, 17


def word(address):
    return int(ipaddress.IPv4Address(address))


# Selector, value, a packet that it matches, and one that differs in this field alone.
FIELDS = {
    "destination MAC": (0, mac("02:00:00:00:a0:02"), Packet(), Packet(destination="02:00:00:00:a0:03")),
    "source MAC": (1, mac("02:00:00:00:a0:01"), Packet(), Packet(source="02:00:00:00:a0:11")),
    "inner priority": (2, 5, Packet(inner=(5, 300)), Packet(inner=(4, 300))),
    "only tag's priority": (2, 5, Packet(priority=5), Packet(priority=4)),
    "inner VLAN": (3, 300, Packet(inner=(5, 300)), Packet(inner=(5, 301))),
    "only tag's VLAN": (3, 100, Packet(), Packet(vlan=101)),
    "EtherType": (4, ETHERTYPE_IPV4, Packet(), Packet(version=6)),
    "destination IP": (5, word("10.2.0.2"), Packet(), Packet(destination_ip="10.2.0.3")),
    "source IP": (6, word("10.1.0.1"), Packet(), Packet(source_ip="10.1.0.3")),
    "protocol": (7, UDP, Packet(), Packet(transport="tcp")),
    "protocol of IPv6": (7, TCP, Packet(version=6, transport="tcp"), Packet(version=6)),
    "DSCP": (8, 10, Packet(), Packet(dscp=11)),
    "DSCP of IPv4 only": (8, 10, Packet(), Packet(version=6)),
    "traffic class": (9, 10, Packet(version=6), Packet(version=6, dscp=11)),
    "traffic class of IPv6 only": (9, 10, Packet(version=6), Packet()),
    "source port": (10, 4000, Packet(), Packet(source_port=4001)),
    "destination port": (11, 5000, Packet(transport="tcp"), Packet(transport="tcp", destination_port=5001)),
}


def remarked(packet, kind):
    name, value = NEW[kind]
    return packet.but(**{name: value})


def check_remarking(crossing, kind, packet, others=()):
    """The sender's packet arrives remarked, the others and the neighbour's own as they are."""
    untouched = [(SENDER, other) for other in others] + [(NEIGHBOUR, packet.but(source="02:00:00:00:a0:0b"))]
    arrive = crossing.flooded((SENDER, remarked(packet, kind)), *untouched)
    crossing.check([(SENDER, packet), *untouched], arrive)


@pytest.fixture(params=KINDS.values(), ids=KINDS)
def kind(request):
    return request.param


@pytest.mark.parametrize("name", FIELDS)
def test_packets_that_match_a_field_are_remarked(crossing, acl, kind, name):
    field, value, packet, other = FIELDS[name]
    assert acl.remark(RULE, {SENDER}, kind, NEW[kind][1], field, value) == 0
    check_remarking(crossing, kind, packet, [other])
    assert acl.delete_remark(RULE) == 0
    crossing.check_flooded((SENDER, packet), (SENDER, other))


@pytest.mark.parametrize("version, transport", itertools.product((4, 6), ("udp", "tcp")))
def test_all_packets_of_a_port_are_remarked(crossing, acl, kind, version, transport):
    packet = Packet(version=version, transport=transport, congestion=1)
    assert acl.remark(RULE, {SENDER}, kind, NEW[kind][1]) == 0
    check_remarking(crossing, kind, packet)
    assert acl.delete_remark(RULE) == 0
    crossing.check_flooded((SENDER, packet))


def test_frames_without_ip_get_a_priority_but_no_dscp(crossing, acl, kind):
    packet = Packet(version=0)
    assert acl.remark(RULE, {SENDER}, kind, NEW[kind][1]) == 0
    arrives = remarked(packet, kind) if kind == REMARK_PRIORITY else packet
    crossing.check([(SENDER, packet)], crossing.flooded((SENDER, arrives)))


def test_packet_behind_two_tags_gets_its_dscp_and_its_outer_priority(crossing, acl, kind):
    assert acl.remark(RULE, {SENDER}, kind, NEW[kind][1]) == 0
    check_remarking(crossing, kind, Packet(inner=(1, 300)))


def test_rule_of_several_ports_holds_for_each_and_no_other(crossing, acl):
    assert acl.remark(RULE, {NEIGHBOUR, RECEIVER}, REMARK_DSCP, 46) == 0
    packets = {port: Packet(source=f"02:00:00:00:a0:{port:02}") for port in (SENDER, NEIGHBOUR, RECEIVER)}
    arrive = {port: packet.but(dscp=46) if port != SENDER else packet for port, packet in packets.items()}
    crossing.check(packets.items(), crossing.flooded(*arrive.items()))


def test_rule_with_the_higher_number_comes_first(crossing, acl):
    assert acl.remark(OTHER_RULE, {SENDER}, REMARK_DSCP, 20, 7, UDP) == 0
    assert acl.remark(RULE, {SENDER}, REMARK_DSCP, 30) == 0
    arrive = crossing.flooded((SENDER, Packet(dscp=20)), (SENDER, Packet(transport="tcp", dscp=30)))
    crossing.check([(SENDER, Packet()), (SENDER, Packet(transport="tcp"))], arrive)
    assert acl.delete_remark(0x10000 | OTHER_RULE) == 0, "only 16 bits of the number count"
    crossing.check([(SENDER, Packet())], crossing.flooded((SENDER, Packet(dscp=30))))


def test_new_rule_takes_the_place_of_the_one_with_its_number(crossing, acl):
    assert acl.remark(RULE, {SENDER}, REMARK_DSCP, 20) == 0
    assert acl.remark(RULE, {NEIGHBOUR}, REMARK_PRIORITY, 7) == 0
    assert acl.listed_rules() == 1
    sends = [(SENDER, Packet()), (NEIGHBOUR, Packet(source="02:00:00:00:a0:0b"))]
    crossing.check(sends, crossing.flooded(sends[0], (NEIGHBOUR, sends[1][1].but(priority=7))))


def test_unknown_form_installs_nothing(crossing, acl):
    assert acl.remark(RULE, {SENDER}, REMARK_DSCP, 20, form=3) == UNKNOWN_FORM
    assert acl.listed_rules() == 0
    crossing.check_flooded((SENDER, Packet()))


def test_unknown_kind_remarks_the_dscp_all_the_same(crossing, acl):
    assert acl.remark(RULE, {SENDER}, 3, 20) == FAILED
    crossing.check([(SENDER, Packet())], crossing.flooded((SENDER, Packet(dscp=20))))


def test_unknown_field_matches_every_packet_of_the_port(crossing, acl):
    assert acl.remark(RULE, {SENDER}, REMARK_DSCP, 20, 12, 1) == FAILED
    check = [(SENDER, Packet()), (SENDER, Packet(version=6))]
    crossing.check(check, crossing.flooded(*((port, packet.but(dscp=20)) for port, packet in check)))
