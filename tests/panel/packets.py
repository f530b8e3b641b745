"""Frames for the tests of the panel, and checks of what it builds."""

import struct

ARP = "ffffffffffff020000000001080600010800060400010200000000010a0000010000000000000a000002" + 18 * "00"
TAGGED = "0200000000020200000000018100" + "6064" + "0800"  # priority 3, VLAN 100


def internet_sum(octets):
    """0xffff over octets that have a right checksum."""
    total = sum(struct.unpack(f">{(len(octets) + 1) // 2}H", octets + b"\0" * (len(octets) % 2)))
    while total > 0xFFFF:
        total = (total >> 16) + (total & 0xFFFF)
    return total


def check_packet(frame, at=14):
    """The IPv4 packet of a frame has right lengths and checksums; gives its protocol."""
    length, protocol = struct.unpack_from(">H", frame, at + 2)[0], frame[at + 9]
    assert internet_sum(frame[at : at + 20]) == 0xFFFF
    payload = frame[at + 20 : at + length]
    assert len(payload) == length - 20
    pseudo = frame[at + 12 : at + 20] + struct.pack(">HH", protocol, len(payload)) if protocol in (6, 17) else b""
    assert internet_sum(pseudo + payload) == 0xFFFF
    if protocol == 17:
        assert struct.unpack_from(">H", payload, 4)[0] == len(payload)
    return protocol
