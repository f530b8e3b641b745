"""What all switches have in common: a namespace with the same cables, each to a host in a namespace of its own."""

import contextlib
import pathlib

from adp.lab.netns import NetNamespace
from adp.lab.nic import Nic
from adp.lab.offload import disable_offloads
from adp.lab.process import poll_until

SENDER, RECEIVER, WITNESS = 1, 2, 3
PORTS = (SENDER, RECEIVER, WITNESS)
MTU = 9300
LINK_SECONDS = 10.0
RECEIVED_FRAMES, SENT_FRAMES = 1, 9


def near_end(port):
    return f"port{port}"


def far_end(port):
    return f"host{port}"


class Bed:
    """Cables from the ports to hosts, and one to a switch's own CPU. The hosts' kernels answer nothing."""

    def __init__(self):
        with contextlib.ExitStack() as stack:
            self.namespace = self._namespace(stack, "switch")
            self.hosts = {port: self._namespace(stack, f"host {port}") for port in PORTS}
            self.namespace.ip(f"link add cpu0 mtu {MTU} type veth peer name eth0 mtu {MTU}")
            for port, host in self.hosts.items():
                far = f"{far_end(port)} mtu {MTU} netns {host.holder_pid}"
                self.namespace.ip(f"link add {near_end(port)} mtu {MTU} type veth peer name {far}")
                host.ip(f"link set {far_end(port)} arp off up")
            for namespace, interface in self._ends():
                with namespace.entered():
                    disable_offloads(interface)
            self._stack = stack.pop_all()

    @staticmethod
    def _namespace(stack, name):
        return stack.enter_context(contextlib.closing(NetNamespace(name)))

    def _ends(self):
        """(namespace, interface) of all ends."""
        yield from ((self.namespace, name) for name in ("cpu0", "eth0", *map(near_end, PORTS)))
        yield from ((self.hosts[port], far_end(port)) for port in PORTS)

    def raise_links(self):
        """Brings all ends up, whatever the switch before has left, and waits until they pass frames."""
        self.namespace.ip(*(f"link set {name} up" for name in ("cpu0", "eth0", *map(near_end, PORTS))))
        for namespace, interface in self._ends():
            poll_until(lambda: namespace.is_operational(interface), LINK_SECONDS, f"A link on {interface}")

    def frames(self, port):
        """(sent, received) at a port's host so far."""
        with self.hosts[port].entered():
            lines = pathlib.Path("/proc/thread-self/net/dev").read_text(encoding="ascii").splitlines()
        counts = next(line for line in lines if line.strip().startswith(f"{far_end(port)}:")).split(":")[1].split()
        return int(counts[SENT_FRAMES]), int(counts[RECEIVED_FRAMES])

    def nic(self, port):
        """Ears and mouth at a port's host."""
        return contextlib.closing(Nic(self.hosts[port], far_end(port)))

    def close(self):
        self._stack.close()
