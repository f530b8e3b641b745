"""IGMP and MLD messages in frames, built byte by byte, so that they can be malformed."""

import ipaddress
import struct
from typing import NamedTuple

from adp.lab.frames import ETHERTYPE_IPV4, ETHERTYPE_IPV6, ethernet
from adp.lab.listener import group_mac
from scapy.all import IP, IPOption, IPv6, IPv6ExtHdrHopByHop, Raw, RouterAlert
from scapy.layers.inet6 import in6_chksum
from scapy.utils import checksum

IGMP, ICMPV6, PIM = 2, 58, 103
IGMP_QUERY, MLD_QUERY, ROUTER_ADVERTISEMENT = 0x11, 130, 0x30
PIM_HELLO = 0x20
IGMP_REPORT2, IGMP_LEAVE, IGMP_REPORT3 = 0x16, 0x17, 0x22
MLD_REPORT1, MLD_DONE, MLD_REPORT2 = 131, 132, 143
MODE_IS_INCLUDE, MODE_IS_EXCLUDE, TO_INCLUDE, TO_EXCLUDE, ALLOW_SOURCES, BLOCK_SOURCES = range(1, 7)
SPEAKER = bytes.fromhex("02ae0000f001")
CHECKSUM_AT = 2


def with_checksum(message, value):
    return message[:CHECKSUM_AT] + struct.pack("!H", value) + message[CHECKSUM_AT + 2 :]


def igmp_frame(message, is_checked=True, tags=b"", **fields):
    """A frame with an IGMP message; `fields` are the IP header's."""
    if is_checked:
        message = with_checksum(message, checksum(with_checksum(message, 0)))
    usual = {"src": "10.9.0.5", "dst": "224.0.0.22", "ttl": 1, "proto": IGMP, "options": [IPOption(b"\x94\x04\0\0")]}
    packet = bytes(IP(**{**usual, **fields}) / Raw(message))
    return ethernet(group_mac(fields.get("dst", usual["dst"])), SPEAKER, ETHERTYPE_IPV4, packet, tags)


def mld_frame(message, is_checked=True, tags=b"", **fields):
    """A frame with an MLD message; `fields` are the IPv6 header's."""
    usual = {"src": "fe80::5", "dst": "ff02::16", "hlim": 1}
    usual["dst"] = fields.get("dst", usual["dst"])
    header = IPv6(**{**usual, **fields})
    if is_checked:
        message = with_checksum(message, in6_chksum(ICMPV6, IPv6(**usual), with_checksum(message, 0)))
    packet = bytes(header / IPv6ExtHdrHopByHop(nh=ICMPV6, options=[RouterAlert()]) / Raw(message))
    return ethernet(group_mac(usual["dst"]), SPEAKER, ETHERTYPE_IPV6, packet, tags)


def pim_hello(is_checked=True, kind=PIM_HELLO, **fields):
    """A frame in which a router tells others of its kind that it is there."""
    message = bytes([kind, 0, 0, 0]) + struct.pack("!HHH", 1, 2, 105)
    return igmp_frame(message, is_checked, **{"proto": PIM, "dst": "224.0.0.13", "options": [], **fields})


def router_advertisement(is_checked=True, **fields):
    """A frame in which a router tells switches that it is there (RFC 4286)."""
    message = struct.pack("!BBHHH", ROUTER_ADVERTISEMENT, 20, 0, 125, 2)
    return igmp_frame(message, is_checked, **{"dst": "224.0.0.106", **fields})


class Dialect(NamedTuple):
    """One of the two protocols, with its frames and messages."""

    name: str
    ip_version: int
    frame: callable
    query: int
    join: int
    leave: int
    report: int
    gap: bytes
    groups: str
    nobody: str
    everybody: str

    def about(self, group, kind=None):
        """A message about one group, by default that a host joins it."""
        kind = self.join if kind is None else kind
        return bytes([kind, 0, 0, 0]) + self.gap + packed(group)

    def general_query(self):
        """A query of the newest version for all groups, which hosts answer at once."""
        return self.about(self.nobody, self.query) + b"\x02\x7d\0\0"

    def query_frame(self, **fields):
        return self.frame(self.general_query(), **{"dst": self.everybody, **fields})

    def record(self, kind, group, sources=0, told_sources=None, auxiliary=0):
        """A record; its counts of sources and auxiliary words may be too large."""
        told = sources if told_sources is None else told_sources
        content = packed(group) + packed(group) * sources
        return struct.pack("!BBH", kind, auxiliary, told) + content

    def records(self, *records, told=None):
        """A report of records; its count may be too large."""
        return struct.pack("!BxxxHH", self.report, 0, len(records) if told is None else told) + b"".join(records)

    def group(self, number):
        return self.groups.format(number)


def packed(address):
    return ipaddress.ip_address(address).packed


DIALECTS = {
    "IGMP": Dialect(
        name="IGMP",
        ip_version=4,
        frame=igmp_frame,
        query=IGMP_QUERY,
        join=IGMP_REPORT2,
        leave=IGMP_LEAVE,
        report=IGMP_REPORT3,
        gap=b"",
        groups="239.9.0.{}",
        nobody="0.0.0.0",
        everybody="224.0.0.1",
    ),
    "MLD": Dialect(
        name="MLD",
        ip_version=6,
        frame=mld_frame,
        query=MLD_QUERY,
        join=MLD_REPORT1,
        leave=MLD_DONE,
        report=MLD_REPORT2,
        gap=b"\0\0\0\0",
        groups="ff15::9:{}",
        nobody="::",
        everybody="ff02::1",
    ),
}
