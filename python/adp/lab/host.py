"""A host at the far end of a cable: raw frames, and the kernel's IP stack."""

import select
import socket
import struct
import time

from .device import host_interface
from .frames import internet_checksum
from .netns import NetNamespace
from .nic import Nic
from .process import poll_until

LINK_SECONDS = 10.0
ECHO_REQUEST = 8
ECHO_REPLY = 0
ECHO_HEADER = struct.Struct("!BBHHH")


class Host:
    """A namespace with the far end of one user port's cable."""

    def __init__(self, device, port):
        self.device = device
        self.port = port
        self.namespace = NetNamespace(f"host {port}")
        try:
            interface = host_interface(port)
            device.namespace.ip(f"link set {interface} netns {self.namespace.holder_pid}")
            self.namespace.ip(f"link set {interface} up")
            self.nic = Nic(self.namespace, interface)
        except BaseException:
            self.namespace.close()
            raise

    def send(self, frame):
        self.nic.send(frame)

    def receive(self, marker, seconds=3.0):
        return self.nic.receive(marker, seconds)

    def raise_link(self):
        self.namespace.ip(f"link set {self.nic.interface} up")

    def await_link(self, seconds=LINK_SECONDS):
        """Waits until frames of the host reach the cable: the kernel drops them silently until it has handled the
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
        head = ECHO_HEADER.pack(ECHO_REQUEST, 0, 0, self.port, number)
        head = ECHO_HEADER.pack(ECHO_REQUEST, 0, internet_checksum(head + body), self.port, number)
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
