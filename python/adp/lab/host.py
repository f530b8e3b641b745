"""Who is at the far end of a cable: a host with raw frames and the kernel's IP stack, or a neighbour with several
cables.
"""

import select
import socket
import struct
import time

from .device import host_interface
from .frames import internet_checksum
from .netns import NetNamespace
from .nic import Nic
from .offload import disable_offloads
from .process import poll_until

LINK_SECONDS = 10.0
STATION_INTERFACE = "eth0"
ECHO_REQUEST = 8
ECHO_REPLY = 0
ECHO_ID = 1
ECHO_HEADER = struct.Struct("!BBHHH")


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
        self.nic.send(frame)

    def receive(self, marker, seconds=3.0):
        return self.nic.receive(marker, seconds)

    def raise_link(self):
        self.namespace.ip(f"link set {self.nic.interface} up")

    def await_link(self, seconds=LINK_SECONDS):
        """Waits until frames of the station reach the cable: the kernel drops them silently until it has handled the
        carrier.
        """
        interface = self.nic.interface
        poll_until(lambda: self.namespace.is_operational(interface), seconds, f"A link on {self.namespace.name}")
        # The kernel reports the new state just before it acts on it; this waits for the lock that it holds meanwhile.
        self.raise_link()

    def lower_link(self):
        """Switches the host's interface off: the cable has no link."""
        self.namespace.ip(f"link set {self.nic.interface} down")

    def set_address(self, address):
        """Gives the interface this IP address, as in "10.0.0.1/24", in place of any other."""
        self.namespace.ip(f"address flush dev {self.nic.interface}", f"address add {address} dev {self.nic.interface}")

    def ping(self, address, seconds=3.0, attempts=1):
        """Sends ICMP echo requests to an address; true if one of them is answered in time."""
        return any(self._ping_once(address, number, seconds / attempts) for number in range(attempts))

    def _ping_once(self, address, number, seconds):
        body = struct.pack("!I", id(self) & 0xFFFFFFFF)
        head = ECHO_HEADER.pack(ECHO_REQUEST, 0, 0, ECHO_ID, number)
        head = ECHO_HEADER.pack(ECHO_REQUEST, 0, internet_checksum(head + body), ECHO_ID, number)
        with self.namespace.entered():
            echo = socket.socket(socket.AF_INET, socket.SOCK_RAW, socket.IPPROTO_ICMP)
        with echo:
            echo.sendto(head + body, (address, 0))
            deadline = time.monotonic() + seconds
            while (remaining := deadline - time.monotonic()) > 0 and select.select([echo], [], [], remaining)[0]:
                packet = echo.recv(2048)
                answer = packet[(packet[0] & 15) * 4 :]
                if answer[0] == ECHO_REPLY and answer[4:] == head[4:] + body:
                    return True
        return False

    def close(self):
        self.nic.close()
        self.namespace.close()


class Host(Station):
    """A station with the far end of one user port's cable."""

    def __init__(self, device, port):
        self.device = device
        self.port = port
        namespace = NetNamespace(f"host {port}")
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
