"""Who is at the far end of a cable: a host with raw frames and the kernel's IP stack, or a neighbour with several
cables.
"""

import json
import select
import socket
import struct
import time
from typing import NamedTuple

from .device import host_interface
from .frames import internet_checksum
from .netns import NetNamespace
from .nic import Nic
from .offload import disable_offloads
from .process import poll_until

LINK_SECONDS = 10.0
STATION_INTERFACE = "eth0"
ECHO_ID = 1
ECHO_HEADER = struct.Struct("!BBHHH")


class Echo(NamedTuple):
    """Echo messages of one version of IP."""

    family: int
    protocol: int
    request: int
    reply: int


ECHO_IPV4 = Echo(socket.AF_INET, socket.IPPROTO_ICMP, 8, 0)
ECHO_IPV6 = Echo(socket.AF_INET6, socket.IPPROTO_ICMPV6, 128, 129)


def without_ip_header(packet, echo):
    """What follows the IP header of a packet from a raw socket; those of IPv6 come without it."""
    return packet if echo is ECHO_IPV6 else packet[(packet[0] & 15) * 4 :]


class Station:
    """A namespace with an interface that is up. It takes both, and ends them."""

    def __init__(self, namespace, interface):
        self.namespace = namespace
        try:
            self.namespace.ip(f"link set {interface} up")
            self.nic = Nic(namespace, interface)
        except BaseException:
            namespace.close()
            raise

    def send(self, frame):
        """Sends exactly these bytes."""
        self.nic.send(frame)

    def receive(self, marker, seconds=3.0):
        """The next frame that contains the marker, or None when none comes in time. Frames before it are dropped."""
        return self.nic.receive(marker, seconds)

    def raise_link(self):
        """Switches the host's interface on again."""
        self.namespace.ip(f"link set {self.nic.interface} up")

    def await_link(self, seconds=LINK_SECONDS):
        """Waits until frames of the station reach the cable: the kernel drops them silently until it has handled the
        carrier. With IPv6 the station then has an address, too.
        """
        interface = self.nic.interface
        poll_until(lambda: self.namespace.is_operational(interface), seconds, f"A link on {self.namespace.name}")
        # The kernel reports the new state just before it acts on it; this waits for the lock that it holds meanwhile.
        self.raise_link()
        if self.namespace.has_ipv6:
            self.link_local()

    def lower_link(self):
        """Switches the host's interface off: the cable has no link."""
        self.namespace.ip(f"link set {self.nic.interface} down")

    def set_address(self, address):
        """Gives the interface this IP address, as in "10.0.0.1/24", in place of any other but link-local ones."""
        interface = self.nic.interface
        self.namespace.ip(f"address flush dev {interface} scope global", f"address add {address} dev {interface}")

    def link_local(self, seconds=LINK_SECONDS):
        """The station's link-local IPv6 address; waits until it can be used."""
        return poll_until(self._link_local, seconds, f"An IPv6 address on {self.namespace.name}")

    def _link_local(self):
        shown = json.loads(self.namespace.ip(f"address show dev {self.nic.interface} scope link -tentative"))
        addresses = [address for interface in shown for address in interface.get("addr_info", ())]
        return next((address["local"] for address in addresses if address.get("family") == "inet6"), None)

    def forget_neighbours(self):
        """Which MAC addresses belong to its neighbours' IP addresses, the station then has to find out anew."""
        self.namespace.ip(f"neighbour flush dev {self.nic.interface}")

    def ping(self, address, seconds=3.0, attempts=1):
        """Sends echo requests to an IPv4 or IPv6 address; true if one of them is answered in time."""
        return any(self._ping_once(address, number, seconds / attempts) for number in range(attempts))

    def _ping_once(self, address, number, seconds):
        echo = ECHO_IPV6 if ":" in address else ECHO_IPV4
        body = struct.pack("!I", id(self) & 0xFFFFFFFF)
        head = ECHO_HEADER.pack(echo.request, 0, 0, ECHO_ID, number)
        # The kernel does this for IPv6, whose checksum includes the addresses.
        head = ECHO_HEADER.pack(echo.request, 0, internet_checksum(head + body), ECHO_ID, number)
        with self.namespace.entered():
            wire = socket.socket(echo.family, socket.SOCK_RAW, echo.protocol)
            scope = (0, socket.if_nametoindex(self.nic.interface)) if echo is ECHO_IPV6 else ()
        with wire:
            wire.sendto(head + body, (address, 0, *scope))
            deadline = time.monotonic() + seconds
            while (remaining := deadline - time.monotonic()) > 0 and select.select([wire], [], [], remaining)[0]:
                answer = without_ip_header(wire.recv(2048), echo)
                if answer[0] == echo.reply and answer[4:] == head[4:] + body:
                    return True
        return False

    def close(self):
        self.nic.close()
        self.namespace.close()


class Host(Station):
    """A station with the far end of one user port's cable, on request with IPv6."""

    def __init__(self, device, port, ipv6=False):
        self.device = device
        self.port = port
        namespace = NetNamespace(f"host {port}", ipv6)
        try:
            take_cable(device, port, namespace)
        except BaseException:
            namespace.close()
            raise
        super().__init__(namespace, host_interface(port))


class Neighbour:
    """A namespace with the far ends of several cables, for a switch or a router: `interfaces`, by user port."""

    def __init__(self, device, ports, name):
        self.namespace = NetNamespace(name)
        self._stations = []
        try:
            self.interfaces = {port: take_cable(device, port, self.namespace) for port in ports}
        except BaseException:
            self.close()
            raise

    def station(self, name):
        """A station on a cable of its own to the neighbour. There the cable's end has the station's name."""
        namespace = NetNamespace(name)
        try:
            self.join(name, STATION_INTERFACE, namespace)
        except BaseException:
            namespace.close()
            raise
        self._stations.append(Station(namespace, STATION_INTERFACE))
        self._stations[-1].await_link()
        return self._stations[-1]

    def join(self, near, far, namespace=None):
        """Lays a cable from the neighbour to another namespace, or from the neighbour to itself."""
        where = f" netns {namespace.holder_pid}" if namespace else ""
        self.namespace.ip(f"link add {near} type veth peer name {far}{where}", f"link set {near} up")
        with self.namespace.entered():
            disable_offloads(near)
        if not namespace:
            self.namespace.ip(f"link set {far} up")

    def close(self):
        for station in self._stations:
            station.close()
        self.namespace.close()


def take_cable(device, port, namespace):
    """Takes the far end of a user port's cable into a namespace; gives the interface's name."""
    interface = host_interface(port)
    device.namespace.ip(f"link set {interface} netns {namespace.holder_pid}")
    namespace.ip(f"link set {interface} up")
    with namespace.entered():
        disable_offloads(interface)
    return interface
