"""The bench: a device, its hosts, and which of them received a frame."""

import contextlib
import itertools
import select
import time
from typing import ClassVar

from .builds import Build
from .device import Device
from .frames import ETHERTYPE_EXPERIMENT, directed_by_cpu, ethernet, mac
from .host import Host
from .problem import LabError
from .shell import Shell

BARRIER_SECONDS = 10.0
BARRIER_DESTINATION = mac("02:00:00:00:fe:01")
BARRIER_SOURCE = mac("02:00:00:00:fe:02")
# A host's frame and the CPU's barrier reach the device through different sockets. The second barrier is sent after the
# first has passed, so every frame that waited at a port before the first is handled before the second.
BARRIERS = 2


def ranges(ports):
    """Ports as people write them: 1-4,22."""
    runs = itertools.groupby(enumerate(sorted(ports)), lambda pair: pair[1] - pair[0])
    ends = [[port for _, port in run] for _, run in runs]
    return ",".join(f"{run[0]}-{run[-1]}" if len(run) > 1 else f"{run[0]}" for run in ends) or "none"


class Lab:
    """A device with hosts on some of its user ports, on request with IPv6. Use it in a `with` statement; leaving it
    ends everything. `device` is the Device, `hosts` has the Host of each port.
    """

    running: ClassVar[list] = []  # for those who look at every device, such as after a failure

    def __init__(self, device_build="host", hosts=range(1, 27), user_ports=26, name="device", ipv6=False):
        self._name = name
        self._ipv6 = ipv6
        self._device_build = Build(device_build)
        self._ports = tuple(hosts)
        self._user_ports = user_ports
        self._numbers = itertools.count(1)
        self.forget()
        self._stack = contextlib.ExitStack()
        self.hosts = {}

    def __repr__(self):
        return f"<Lab {self._name}: {self._device_build.name} build, hosts at the ports {ranges(self._ports)}>"

    def __enter__(self):
        with self._stack as stack:
            self.device = stack.enter_context(contextlib.closing(self._make_device()))
            for port in self._ports:
                self.hosts[port] = stack.enter_context(contextlib.closing(Host(self.device, port, self._ipv6)))
            self.await_links()
            Lab.running.append(self)
            stack.callback(Lab.running.remove, self)
            self._stack = stack.pop_all()
        return self

    def __exit__(self, *problem):
        return self._stack.__exit__(*problem)

    def _make_device(self):
        return Device(self._device_build, self._user_ports, self._name)

    def await_links(self, without=()):
        """Waits until all hosts but those without a link can send and receive."""
        linked = [port for port in self.hosts if port not in without]
        self.device.await_links(linked)
        for port in linked:
            self.hosts[port].await_link()

    def shell(self, build, before=(), namespace=None):
        """adpsh of a build on the device's CPU. `before` is a prefix of its command; another namespace is one
        from which the device can be reached but "eth0" cannot.
        """
        command = [*before, *Build(build).command("adpsh", "--json", "--keep-going")]
        return self._stack.enter_context(contextlib.closing(Shell(self.device, command, namespace)))

    def marker(self):
        """Bytes that no other frame of this bench contains, nor one of a bench with another name."""
        self.latest_marker = self._unique_bytes()
        return self.latest_marker

    def _unique_bytes(self):
        return b"<%s %06d>" % (self._name.encode(), next(self._numbers))

    def forget(self):
        """Forgets which marker was the latest, and what arrived with it."""
        self.latest_marker = self.latest_arrivals = None

    def mac(self, port=0):
        """A unicast address that no other frame of this bench has used. `port` only makes it readable."""
        return bytes([0x02, 0xAD, port, *next(self._numbers).to_bytes(3, "big")])

    def arrivals(self, marker, without=()):
        """{user port: [frames]} of every frame with the marker that has reached a host.

        It includes every frame that was sent before the call: a barrier frame follows it out of every port, and each
        port delivers in order. So an empty answer means that nothing arrived, without a timeout. Hosts without a link
        get no barrier; nor do those in `without`, which the caller knows to be out of reach.
        """
        self.latest_marker = marker or self.latest_marker
        links = self.device.links()
        linked = [host for port, host in self.hosts.items() if port in links and port not in without]
        seen = {host.port: [] for host in self.hosts.values()}
        for _ in range(BARRIERS):
            self._pass_barrier(linked, seen)
        found = {port: [frame for frame in frames if marker in frame] for port, frames in seen.items()}
        self.latest_arrivals = {port: frames for port, frames in found.items() if frames}
        return dict(self.latest_arrivals)

    def _pass_barrier(self, hosts, seen):
        barrier = self._unique_bytes()
        frame = ethernet(BARRIER_DESTINATION, BARRIER_SOURCE, ETHERTYPE_EXPERIMENT, barrier.ljust(46, b"\0"))
        ports = [self.device.physical(host.port) for host in hosts]
        self.device.cpu.send(directed_by_cpu(frame, ports))
        missing = {host.nic: host.port for host in hosts}
        deadline = time.monotonic() + BARRIER_SECONDS
        while missing:
            ready, _, _ = select.select(list(missing), [], [], max(0.0, deadline - time.monotonic()))
            if not ready:
                raise LabError(f"The ports {sorted(missing.values())} pass no frames from the CPU.")
            for nic in ready:
                frames = nic.waiting()
                seen[missing[nic]] += frames
                if any(barrier in frame for frame in frames):
                    del missing[nic]
