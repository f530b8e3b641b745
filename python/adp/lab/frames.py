"""Ethernet frames as bytes: built from their parts, and described in a line."""

import struct

ETHERTYPE_IPV4 = 0x0800
ETHERTYPE_IPV6 = 0x86DD
TPID_CUSTOMER = 0x8100
TPID_STACKED = (0x8100, 0x88A8, 0x9100)
ETHERTYPE_EXPERIMENT = 0x88B5
SWITCH_TAG_TYPE = 0x8874
BROADCAST = bytes.fromhex("ffffffffffff")
VID_MASK = 0x0FFF
PRIORITY_SHIFT = 13
OPCODE_SHIFT = 29
OPCODE_BITMAP_AS_GIVEN = 7
FIRST_PORT_OF_WORD_2 = 25
UDP = 17
ETHERTYPE_NAMES = {ETHERTYPE_IPV4: "IPv4", ETHERTYPE_IPV6: "IPv6", 0x0806: "ARP", ETHERTYPE_EXPERIMENT: "test frame"}


def mac(text):
    """The six bytes of a MAC address in colon form."""
    return bytes.fromhex(text.replace(":", ""))


def vlan_tag(vid, priority=0, tpid=TPID_CUSTOMER):
    return struct.pack("!HH", tpid, priority << PRIORITY_SHIFT | vid)


def ethernet(destination, source, ethertype, payload, tags=b""):
    """A frame of its parts; `tags` is put between the source address and the type."""
    return destination + source + tags + struct.pack("!H", ethertype) + payload


def internet_checksum(data):
    """The checksum of IPv4 headers and ICMP messages (RFC 1071)."""
    padded = data + b"\0" * (len(data) % 2)
    total = sum(struct.unpack(f"!{len(padded) // 2}H", padded))
    while total >> 16:
        total = (total & 0xFFFF) + (total >> 16)
    return ~total & 0xFFFF


def directed_by_cpu(frame, ports):
    """The frame with the switch tag that makes the chip send it as it is out of these physical ports (0..56)."""
    low = sum(1 << port for port in ports if port < FIRST_PORT_OF_WORD_2)
    high = sum(1 << (port - FIRST_PORT_OF_WORD_2) for port in ports if port >= FIRST_PORT_OF_WORD_2)
    tag = struct.pack("!HII", SWITCH_TAG_TYPE, OPCODE_BITMAP_AS_GIVEN << OPCODE_SHIFT | low, high)
    return frame[:12] + tag + frame[12:]


def split_switch_tag(frame):
    """(word 1, word 2, the frame without its tag) of a frame from the CPU to the switch."""
    kind, first, second = struct.unpack_from("!HII", frame, 12)
    if kind != SWITCH_TAG_TYPE:
        raise ValueError(f"a frame for the switch has the type 0x{kind:04x}")
    return first, second, frame[:12] + frame[22:]


def split_tags(frame):
    """(list of (tpid, tci), type, what follows the type) of a frame."""
    tags, at = [], 12
    (kind,) = struct.unpack_from("!H", frame, at)
    while kind in TPID_STACKED and len(frame) >= at + 6:
        tci, following = struct.unpack_from("!HH", frame, at + 2)
        tags.append((kind, tci))
        kind, at = following, at + 4
    return tags, kind, frame[at + 2 :]


def describe(frame):
    """Tags, protocol and length in a few words."""
    if len(frame) < 14:
        return f"a runt of {len(frame)} bytes"
    tags, kind, payload = split_tags(frame)
    tag_text = ", ".join(f"VLAN {tci & VID_MASK} (tag 0x{tpid:04x})" for tpid, tci in tags)
    name = ETHERTYPE_NAMES.get(kind, f"type 0x{kind:04x}")
    inside = {ETHERTYPE_IPV4: _ipv4, ETHERTYPE_IPV6: _ipv6}.get(kind, lambda _: "")(payload)
    return f"{tag_text or 'untagged'}, {name}{inside}, {len(frame)} bytes"


def _ipv4(packet):
    if len(packet) < 20:
        return " cut short"
    addresses = [".".join(map(str, packet[at : at + 4])) for at in (12, 16)]
    return f" {addresses[0]} > {addresses[1]}" + (" UDP" if packet[9] == UDP else "")


def _ipv6(packet):
    if len(packet) < 40:
        return " cut short"
    return " UDP" if packet[6] == UDP else f" next header {packet[6]}"
