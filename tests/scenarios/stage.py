"""Hosts, a switch and the example program igmp_snooping: the hosts that join a group and receive its stream."""

import contextlib
from typing import NamedTuple

from adp.lab import Lab
from adp.lab.frames import ETHERTYPE_IPV4, ETHERTYPE_IPV6, ethernet
from adp.lab.listener import Listener, group_mac
from adp.lab.snooping import SnoopingProgram
from scapy.all import IP, UDP, IPv6, Raw

SOURCE, ONE, OTHER, WITNESS = 1, 5, 26, 7
MEMBERS = (21, 22)
# Behind a group there is one neighbour. Of the two hosts that are there instead this one alone asks for anything: what
# another had to say, such as a leave that its kernel repeats, would be taken for this one's word.
NEIGHBOUR = MEMBERS[0]
PORTS = (SOURCE, ONE, OTHER, WITNESS, *MEMBERS)
VLAN = 1
STREAM_PORT = 5000


class Protocol(NamedTuple):
    """How hosts join, and two groups with the same MAC address."""

    ip_version: int
    version: int
    group: str
    namesake: str


PROTOCOLS = {
    "IGMPv2": Protocol(4, 2, "239.1.2.3", "239.129.2.3"),
    "IGMPv3": Protocol(4, 3, "239.1.2.4", "239.129.2.4"),
    "MLDv1": Protocol(6, 1, "ff15::1:2:3", "ff15::2:2:3"),
    "MLDv2": Protocol(6, 2, "ff15::1:2:4", "ff15::2:2:4"),
}


@contextlib.contextmanager
def theatre(device_build):
    """A device whose hosts have IP addresses of both kinds."""
    with Lab(device_build, PORTS, name="snooping", ipv6=True) as lab:
        for port, host in lab.hosts.items():
            host.set_address(f"10.9.0.{port}/24")
        yield lab


def name_of(port):
    return "group 1" if port in MEMBERS else f"port {port}"


class Stage:
    """The program, with the ports of its aggregation group, and the listeners; it waits for each change."""

    def __init__(self, bench, build, members=(), **times):
        self.bench = bench
        self.agent = SnoopingProgram(bench.device, build, members, **times)
        self._listeners = contextlib.ExitStack()

    def end(self):
        """All listeners leave, then the program ends; gives its exit status."""
        self._listeners.close()
        return self.agent.end()

    def close(self):
        self._listeners.close()
        self.agent.close()

    def join(self, port, address):
        made = Listener(self.bench.hosts[port], address, STREAM_PORT)
        listener = self._listeners.enter_context(contextlib.closing(made))
        self.agent.await_change(VLAN, address, name_of(port), True)
        return listener

    def leave(self, listener, port, address):
        listener.leave()
        self.agent.await_change(VLAN, address, name_of(port), False)

    def stream(self, address, flow=0):
        """(ports that a datagram of the source comes out of, once each; its content)"""
        content = self.bench.marker().ljust(40, b".")
        frame = self._frame(address, flow, content)
        self.bench.hosts[SOURCE].send(frame)
        arrived = self.bench.arrivals(content)
        assert arrived == dict.fromkeys(arrived, [frame])
        return set(arrived), content

    def _frame(self, address, flow, content):
        source = bytes([2, 0xAE, 0, 0, 0, flow])
        rest = UDP(sport=STREAM_PORT + flow, dport=STREAM_PORT) / Raw(content)
        if ":" in address:
            return ethernet(group_mac(address), source, ETHERTYPE_IPV6, bytes(IPv6(src="fe80::1", dst=address) / rest))
        return ethernet(group_mac(address), source, ETHERTYPE_IPV4, bytes(IP(src="10.9.0.1", dst=address) / rest))

    def heard(self, address):
        return self.stream(address)[0]

    def entries(self):
        """{(vid, MAC address): ports} of the switch's groups."""
        return {(row["vid"], row["mac"]): set(row["ports"]) for row in self.bench.device.control("mcast")["mcast"]}

    def say(self, port, frame):
        """A host sends a frame that is not from its kernel."""
        self.bench.hosts[port].send(frame)


@contextlib.contextmanager
def performance(bench, build, members=(), **times):
    """A stage whose program has just started, and must end without an error."""
    with contextlib.closing(Stage(bench, build, members, **times)) as stage:
        yield stage
        assert stage.end() == 0
