"""What the scenarios of daemons share: waiting for an answer, datagrams between hosts, and cables without a switch.

With `--without-switch` the bridges join the cables themselves, so that what a daemon does wrong of its own accord is
told from what the switch does to it; the chip is not looked at then.
"""

import contextlib
import select
import socket
import time

from adp.lab import Lab, LabError
from adp.lab.host import Host
from adp.lab.netns import NetNamespace
from adp.lab.offload import disable_offloads
from adp.lab.process import poll_until

SETTLE_SECONDS = 20.0
USER_PORTS = 8
QUIET_SECONDS = 0.3
REACH_SECONDS = 0.2


class Cables:
    """Takes the place of a device: a namespace in which each port's interface is the near end of a cable."""

    def __init__(self, name):
        self.name = name
        self.namespace = NetNamespace(name)
        lines = (f"link add swp{port} type veth peer name host{port}" for port in range(1, USER_PORTS + 1))
        self.namespace.ip(*lines)
        with self.namespace.entered():
            for port in range(1, USER_PORTS + 1):
                disable_offloads(f"swp{port}")

    def control(self, verb, port):
        """Pulls a cable, or plugs it in."""
        self.namespace.ip(f"link set swp{port} {'down' if verb == 'pull' else 'up'}")

    def close(self):
        self.namespace.close()


class CablesLab(Lab):
    """A lab without a device."""

    def __enter__(self):
        self.device = self._stack.enter_context(contextlib.closing(Cables(self._name)))
        for port in self._ports:
            self.hosts[port] = self._stack.enter_context(contextlib.closing(Host(self.device, port)))
        return self

    def arrivals(self, marker, without=()):
        time.sleep(QUIET_SECONDS)
        heard = {port: host.nic.waiting() for port, host in self.hosts.items()}
        found = {port: [frame for frame in frames if marker in frame] for port, frames in heard.items()}
        return {port: frames for port, frames in found.items() if frames}


def await_equal(read, wanted, what, seconds=SETTLE_SECONDS):
    """Waits until `read()` gives what is wanted; the failure shows what it gave instead."""
    seen = []

    def is_equal():
        seen.append(read())
        return seen[-1] == wanted

    with contextlib.suppress(LabError):
        poll_until(is_equal, seconds, what, 0.1)
    assert seen and seen[-1] == wanted, what


def reaches(sender, receiver, address, port=7001, seconds=5.0):
    """Whether a datagram of one station's kernel arrives at another one's, which has this address."""
    family = socket.AF_INET6 if ":" in address else socket.AF_INET
    with receiver.namespace.entered():
        heard = socket.socket(family, socket.SOCK_DGRAM)
    with sender.namespace.entered():
        said = socket.socket(family, socket.SOCK_DGRAM)
    with heard, said:
        heard.bind(("::" if family == socket.AF_INET6 else "0.0.0.0", port))
        deadline = time.monotonic() + seconds
        while time.monotonic() < deadline:
            with contextlib.suppress(OSError):
                said.sendto(b"anybody there?", (address, port))
            if select.select([heard], [], [], REACH_SECONDS)[0]:
                return True
    return False
