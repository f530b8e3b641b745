"""Frames from hosts at the CPU, through both receive calls: where they came in, what is in them."""

import struct

import adp
import pytest
from adp.lab.frames import BROADCAST, ETHERTYPE_EXPERIMENT, SWITCH_TAG_TYPE, ethernet, vlan_tag
from scapy.all import IP, TCP, UDP, IPv6, IPv6ExtHdrHopByHop, IPOption, PadN, Raw

VLAN = 100
TAG_AT = 18
INNERMOST = 12
PLACES = ("ethernet_header", "vlan_tag", "ipv4_header", "ipv6_header", "l4_header", "udp_header")
ALL_PORTS = range(1, 27)
SIX_BITS = 0x3F


def places(ethernet_header=0, **others):
    """The places that a parse finds, as offsets into the stripped frame."""
    return {**dict.fromkeys(PLACES), "ethernet_header": ethernet_header, **others}


def found(descriptor):
    return {name: descriptor[name] for name in PLACES}


def ip_bytes(packet, marker):
    return bytes(packet / Raw(marker))


def receive_tag(physical):
    return struct.pack("!HI", SWITCH_TAG_TYPE, physical)


class Station:
    """A host that sends into VLAN 100 and a CPU that listens there."""

    def __init__(self, lab, cpu, port):
        self.lab, self.cpu, self.port = lab, cpu, port
        cpu.vlan(VLAN, {0, port}, {port})
        cpu.set_pvid(port, VLAN)

    def deliver(self, ethertype, payload, tags=b""):
        """Sends a frame from the host; gives it as it arrived on eth0, checked byte for byte."""
        marker = self.lab.marker()
        sent = ethernet(BROADCAST, self.lab.mac(self.port), ethertype, payload(marker), tags)
        self.lab.hosts[self.port].send(sent)
        arrived = self.cpu.next_frame(marker)
        assert arrived, "the frame never reached the CPU"
        own_tag = b"" if tags[:2] == b"\x81\x00" else vlan_tag(VLAN)
        physical = self.lab.device.physical(self.port)
        assert arrived == sent[:12] + receive_tag(physical) + own_tag + sent[12:]
        return arrived


@pytest.fixture(params=[5, 22])
def station(lab, cpu, request):
    return Station(lab, cpu, request.param)


def raw(marker):
    return marker


def ipv4_udp(marker):
    return ip_bytes(IP(dst="10.0.0.2") / UDP(), marker)


def ipv6_udp(marker):
    return ip_bytes(IPv6(dst="fd00::2") / UDP(), marker)


def ipv6_hop_by_hop(marker):
    # Twelve bytes of padding make the options 16 bytes long, a length byte of 1.
    return ip_bytes(IPv6(dst="fd00::2") / IPv6ExtHdrHopByHop(options=[PadN(optdata=b"\0" * 12)]) / UDP(), marker)


CONTENTS = {
    "raw": (ETHERTYPE_EXPERIMENT, raw, {}),
    "ipv4 udp": (0x0800, ipv4_udp, {"ipv4_header": 0, "l4_header": 20, "udp_header": 20}),
    "ipv4 tcp": (0x0800, lambda m: ip_bytes(IP(dst="10.0.0.2") / TCP(), m), {"ipv4_header": 0, "l4_header": 20}),
    "ipv4 udp with options": (
        0x0800,
        lambda m: ip_bytes(IP(dst="10.0.0.2", options=[IPOption(b"\x94\x04\0\0")]) / UDP(), m),
        {"ipv4_header": 0, "l4_header": 24, "udp_header": 24},
    ),
    "ipv6 udp": (0x86DD, ipv6_udp, {"ipv6_header": 0, "l4_header": 40, "udp_header": 40}),
    "ipv6 tcp": (0x86DD, lambda m: ip_bytes(IPv6(dst="fd00::2") / TCP(), m), {"ipv6_header": 0, "l4_header": 40}),
    "ipv6 hop-by-hop": (0x86DD, ipv6_hop_by_hop, {"ipv6_header": 0, "l4_header": 56}),
}


def expected_places(content, tag_at):
    """Where a content's headers stand behind the tag at that offset."""
    header = tag_at + 4 + 2
    return places(vlan_tag=tag_at, **{name: header + offset for name, offset in content[2].items()})


# From real hosts


def test_every_port_is_named_as_the_ingress(lab, cpu, hosts):
    for port in ALL_PORTS:
        marker = lab.marker()
        sent = ethernet(BROADCAST, lab.mac(port), ETHERTYPE_EXPERIMENT, marker)
        hosts[port].send(sent)
        arrived = cpu.next_frame(marker)
        status, plain = cpu.receive_plain(arrived)
        assert (status, plain["out_intf"], plain["out_length"], plain["out_flag"]) == (0, port, len(arrived) - 6, 0)
        status, descriptor = cpu.receive(arrived)
        assert (status, descriptor["intf"], descriptor["phy"]) == (0, port, lab.device.physical(port))


@pytest.mark.parametrize("name", CONTENTS)
def test_contents_are_found(station, cpu, name):
    content = CONTENTS[name]
    arrived = station.deliver(content[0], content[1])
    status, descriptor = cpu.receive(arrived, check=1, vlan_tag=TAG_AT)
    assert status == 0
    assert found(descriptor) == expected_places(content, INNERMOST)
    assert descriptor["intf"] == station.port
    # Ten less, although six bytes went.
    assert descriptor["length"] == len(arrived) - 10
    stripped = arrived[:12] + arrived[18:]
    assert bytes.fromhex(descriptor["frame"])[: len(stripped)] == stripped


@pytest.mark.parametrize("name", CONTENTS)
def test_contents_behind_two_tags_are_found(station, cpu, name):
    content = CONTENTS[name]
    arrived = station.deliver(content[0], content[1], vlan_tag(VLAN, 7) + vlan_tag(300))
    status, descriptor = cpu.receive(arrived)
    assert (status, found(descriptor)) == (0, expected_places(content, INNERMOST + 4))


def test_three_tags_are_refused(station, cpu):
    arrived = station.deliver(0x0800, ipv4_udp, vlan_tag(VLAN) + vlan_tag(300) + vlan_tag(301))
    status, descriptor = cpu.receive(arrived)
    assert (status, found(descriptor)) == (-1, places(vlan_tag=INNERMOST + 4))


def test_priority_reaches_the_cpu(station, cpu):
    arrived = station.deliver(ETHERTYPE_EXPERIMENT, raw, vlan_tag(VLAN, 6))
    assert arrived[18:22] == vlan_tag(VLAN, 6)


def test_priority_tag_joins_the_ports_vlan(lab, station, cpu):
    marker = lab.marker()
    sent = ethernet(BROADCAST, lab.mac(), ETHERTYPE_EXPERIMENT, marker, vlan_tag(0, 3))
    lab.hosts[station.port].send(sent)
    assert cpu.next_frame(marker)[18:22] == vlan_tag(VLAN, 3)


def test_plain_call_strips_the_tag_and_nothing_else(station, cpu):
    arrived = station.deliver(0x0800, ipv4_udp)
    status, outputs = cpu.receive_plain(arrived)
    stripped = arrived[:12] + arrived[18:]
    assert (status, outputs["out_length"]) == (0, len(stripped))
    assert bytes.fromhex(outputs["frame"])[: len(stripped)] == stripped


# The VLAN check


def test_check_lets_members_in_only(station, cpu):
    arrived = station.deliver(ETHERTYPE_EXPERIMENT, raw)
    assert cpu.receive(arrived, check=1, vlan_tag=TAG_AT)[0] == 0
    cpu.vlan_ports(VLAN, {0})
    status, descriptor = cpu.receive(arrived, check=1, vlan_tag=TAG_AT)
    assert status == -1
    assert bytes.fromhex(descriptor["frame"]) == arrived, "a refused check leaves the frame whole"
    assert cpu.receive(arrived, check=2, vlan_tag=TAG_AT)[0] == 0, "only 1 asks for the check"


def test_check_needs_a_place_to_look_at(station, cpu):
    arrived = station.deliver(ETHERTYPE_EXPERIMENT, raw)
    status, descriptor = cpu.receive(arrived, check=1)
    assert status == -1
    assert bytes.fromhex(descriptor["frame"]) == arrived


@pytest.mark.parametrize("interface, vid, status", [(5, 100, 0), (6, 100, -1), (5, 101, -1), (0x10000003, 100, -1)])
def test_vlan_ability_asks_the_device(cpu, interface, vid, status):
    cpu.vlan(100, {5})
    assert cpu.result("check_port_vlan_ability", interface, vid) == status


def test_vlan_ability_of_a_group_is_its_members(cpu):
    cpu.vlan(100, {5})
    cpu.form_group(3, (5,))
    cpu.form_group(4, (6,))
    assert cpu.result("check_port_vlan_ability", adp.agg(3), 100) == 0
    assert cpu.result("check_port_vlan_ability", adp.agg(4), 100) == -1


# Tags that this chip does not give to the CPU by itself: delivered frames with their tag exchanged.


def with_tags(arrived, tags):
    return arrived[:TAG_AT] + tags + arrived[TAG_AT + 4 :]


SERVICE = vlan_tag(7, 0, 0x9100)


@pytest.mark.parametrize(
    "tags, status, tag_at, header_at",
    [
        (SERVICE, 0, None, 18),
        (SERVICE + vlan_tag(VLAN), 0, 16, 22),
        (SERVICE + vlan_tag(VLAN) + vlan_tag(8), -1, 16, None),
        (SERVICE + SERVICE, 0, None, None),
        (vlan_tag(VLAN) + SERVICE, 0, 12, None),
        (vlan_tag(7, 0, 0x88A8), -1, None, None),
        (b"", -1, None, None),
    ],
    ids=["9100", "9100 8100", "9100 8100 8100", "9100 9100", "8100 9100", "88a8", "untagged"],
)
def test_service_tags(station, cpu, tags, status, tag_at, header_at):
    given = with_tags(station.deliver(0x0800, ipv4_udp), tags)
    got, descriptor = cpu.receive(given)
    headers = {} if header_at is None else {"l4_header": header_at + 20, "udp_header": header_at + 20}
    assert (got, found(descriptor)) == (status, places(vlan_tag=tag_at, ipv4_header=header_at, **headers))
    assert cpu.receive_plain(given)[0] == 0, "the plain call does not look behind the tag"


def test_port_that_no_row_maps_gives_no_interface(station, cpu):
    arrived = bytearray(station.deliver(ETHERTYPE_EXPERIMENT, raw))
    arrived[17] |= SIX_BITS
    status, outputs = cpu.receive_plain(bytes(arrived))
    assert (status, outputs["out_intf"]) == (0, 0xFFFFFFFF)
    status, descriptor = cpu.receive(bytes(arrived))
    assert (status, descriptor["intf"], descriptor["phy"]) == (0, 0xFFFFFFFF, SIX_BITS)


# Frames cut short. The last byte that the parse must read decides.


@pytest.mark.parametrize("name, needed", [("ipv4 udp", 34), ("ipv6 udp", 31), ("ipv6 hop-by-hop", 66), ("raw", 24)])
def test_truncated_frames_are_refused(station, cpu, name, needed):
    content = CONTENTS[name]
    arrived = station.deliver(content[0], content[1])
    statuses = {length: cpu.receive(arrived[:length])[0] for length in range(1, needed + 4)}
    assert statuses == {length: 0 if length >= needed else -1 for length in statuses}


def test_plain_call_refuses_what_is_shorter_than_the_tag(station, cpu):
    arrived = station.deliver(ETHERTYPE_EXPERIMENT, raw)
    statuses = {length: cpu.receive_plain(arrived[:length])[0] for length in range(1, 25)}
    assert statuses == {length: 0 if length >= 18 else -1 for length in statuses}
