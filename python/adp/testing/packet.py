"""Packets of hosts, made from their fields."""

from typing import NamedTuple

from adp.lab.frames import ETHERTYPE_EXPERIMENT
from scapy.layers.inet import IP, TCP, UDP
from scapy.layers.inet6 import IPv6
from scapy.layers.l2 import Dot1Q, Ether
from scapy.packet import Raw

DSCP_SHIFT = 2
TRANSPORTS = {"udp": UDP, "tcp": TCP}
DEFAULT_ADDRESSES = {4: ("10.1.0.1", "10.2.0.2"), 6: ("fd00::1", "fd00::2")}


class Packet(NamedTuple):
    """A packet in a frame with the tag of a VLAN, None for an untagged one; `inner` is the priority and VLAN of a second
    tag. Version 0 is no IP packet, nor is what has an LLC header, whose octets are `llc`.
    """

    source: str = "02:00:00:00:a0:01"
    destination: str = "02:00:00:00:a0:02"
    vlan: int | None = 100
    priority: int = 2
    inner: tuple | None = None
    version: int = 4
    source_ip: str | None = None
    destination_ip: str | None = None
    dscp: int = 10
    congestion: int = 0
    transport: str = "udp"
    source_port: int = 4000
    destination_port: int = 5000
    ethertype: int = ETHERTYPE_EXPERIMENT
    llc: bytes = b""
    padding: int = 0

    def build(self, marker):
        """The frame's bytes, with the marker and correct checksums."""
        header = Ether(src=self.source, dst=self.destination)
        if self.vlan is not None:
            header /= Dot1Q(vlan=self.vlan, prio=self.priority)
        if self.inner:
            header /= Dot1Q(prio=self.inner[0], vlan=self.inner[1])
        content = self._content(Raw(marker + b"." * self.padding))
        if self.llc:
            # Behind a tag, too, a length in place of the type makes the frame one with an LLC header.
            header.lastlayer().type = len(content)
        elif self.version == 0:
            header.lastlayer().type = self.ethertype
        return bytes(header / content)

    def but(self, **changes):
        """The packet with other values of these fields."""
        return self._replace(**changes)

    def _content(self, payload):
        if self.llc:
            return Raw(self.llc) / payload
        if self.version == 0:
            return payload
        layer = TRANSPORTS[self.transport](sport=self.source_port, dport=self.destination_port)
        return self._network_header() / layer / payload

    def _network_header(self):
        usual = DEFAULT_ADDRESSES[self.version]
        addresses = {"src": self.source_ip or usual[0], "dst": self.destination_ip or usual[1]}
        kind_of_service = self.dscp << DSCP_SHIFT | self.congestion
        if self.version == 6:
            return IPv6(**addresses, tc=kind_of_service)
        return IP(**addresses, tos=kind_of_service)
