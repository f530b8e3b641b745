"""IPv4 packets for hosts that send raw frames."""

import struct
from typing import NamedTuple

from .frames import ETHERTYPE_IPV4, ethernet, internet_checksum

TCP, UDP = 6, 17
HEADER = struct.Struct("!BBHHHBBH4s4s")
VERSION_AND_LENGTH = 0x45
TIME_TO_LIVE = 64
DSCP_SHIFT = 2
SYN = 2
TCP_HEADER_WORDS = 5


def ip_bytes(address):
    """The four bytes of an IPv4 address."""
    return bytes(map(int, address.split(".")))


class Ipv4Packet(NamedTuple):
    """A packet to a port of a server, with the fields that an access list matches. TCP packets are SYN."""

    source: str
    destination: str
    protocol: int
    port: int
    dscp: int = 0
    length: int = 0

    def build(self, destination_mac, source_mac, marker):
        """The frame's bytes; the payload is the marker, filled up to a length."""
        content = self._transport() + marker.ljust(self.length, b".")
        fields = [VERSION_AND_LENGTH, self.dscp << DSCP_SHIFT, HEADER.size + len(content), 0, 0, TIME_TO_LIVE]
        addresses = ip_bytes(self.source), ip_bytes(self.destination)
        checksum = internet_checksum(HEADER.pack(*fields, self.protocol, 0, *addresses))
        header = HEADER.pack(*fields, self.protocol, checksum, *addresses)
        return ethernet(destination_mac, source_mac, ETHERTYPE_IPV4, header + content)

    def _transport(self):
        """The transport header. The checksum is 0, which UDP allows; for TCP nobody checks it."""
        if self.protocol == UDP:
            return struct.pack("!HHHH", self.port, self.port, 8 + self.length, 0)
        return struct.pack("!HHIIBBHHH", self.port, self.port, 0, 0, TCP_HEADER_WORDS << 4, SYN, 0, 0, 0)
