"""Expected results of the demonstration: the ports that each frame of frame_path leaves, and what it receives."""

import struct
from typing import NamedTuple

from adp.lab.frames import (
    BROADCAST,
    ETHERTYPE_EXPERIMENT,
    ETHERTYPE_IPV4,
    ETHERTYPE_IPV6,
    UDP,
    ethernet,
    mac,
    vlan_tag,
)

HOST_PORTS = (1, 2, 5, 21, 22, 26)
UDP_PORTS = (5000, 6000)
TEXT = b"a host speaks"


class Sent(NamedTuple):
    """Where a step's frame must leave: the user ports, and the VLAN tag that it has there (0 for none)."""

    ports: tuple
    vlan: int = 0
    given_tagged: bool = False


SENT = {
    "low-port": Sent((1,)),
    "high-port": Sent((22,)),
    "last-port": Sent((26,)),
    # The chip removes the tag on ports that send the VLAN untagged.
    "vlan-port": Sent((21,), given_tagged=True),
    "not-source": Sent((22,), given_tagged=True),
    "list": Sent((1, 2, 21, 22, 26)),
    "vlan-list": Sent((1, 22), given_tagged=True),
    "group": Sent((2, 21)),
    "no-group": Sent((5,)),
    "vlan-flood": Sent((22, 26), 200, True),
    "flood": Sent((2, 5, 21, 22, 26)),
    "switched": Sent((2, 22, 26), 200, True),
    "stranger": Sent((), given_tagged=True),
    "single": Sent((21,)),
    "no-single": Sent(()),
}

RECEIVED = {
    1: "from port 1 (physical 4): VLAN 100, IPv4, UDP 5000 > 6000, 59 bytes",
    22: "from port 22 (physical 25): VLAN 100, IPv6, UDP 5000 > 6000, 79 bytes",
    26: "from port 26 (physical 29): VLAN 200, no IP, 31 bytes",
}


def _udp(length):
    return struct.pack("!HHHH", *UDP_PORTS, length, 0)


def _ipv4_packet():
    length = 28 + len(TEXT)
    addresses = bytes([10, 0, 0, 1, 10, 0, 0, 255])
    return struct.pack("!BBHHHBBH", 0x45, 0, length, 0, 0, 64, UDP, 0) + addresses + _udp(length - 20) + TEXT


def _ipv6_packet():
    addresses = bytes.fromhex("fd000000000000000000000000000016" "ff020000000000000000000000000001")
    return struct.pack("!IHBB", 6 << 28, 8 + len(TEXT), UDP, 64) + addresses + _udp(8 + len(TEXT)) + TEXT


def host_frames():
    """(user port, frame) of what the hosts send: untagged into their port's VLAN, and tagged."""
    return [
        (1, ethernet(BROADCAST, mac("02:00:00:00:00:01"), ETHERTYPE_IPV4, _ipv4_packet())),
        (22, ethernet(BROADCAST, mac("02:00:00:00:00:16"), ETHERTYPE_IPV6, _ipv6_packet())),
        (26, ethernet(BROADCAST, mac("02:00:00:00:00:1a"), ETHERTYPE_EXPERIMENT, TEXT, vlan_tag(200))),
    ]
