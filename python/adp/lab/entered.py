"""The bench in a lab that stays: the process that makes an EnteredPair enters the lab's networks, and has two of its
devices as a Pair.

    with EnteredPair(record, ("sw1", "sw2"), CABLES) as pair, FollowedFourCables(pair) as joined:
        joined.change("pull", 2)

The lab and its programs go on when the process ends.
"""

import contextlib
import pathlib
import subprocess
from types import SimpleNamespace

from .aggregation import AggregationProgram
from .bench import Lab
from .builds import Build
from .command.cabling import port_of
from .command.namespaces import enter
from .device import CPU_INTERFACE, Device
from .failover import FourCables
from .nic import Nic
from .pair import Pair

PROGRAM = "aggregation"


class _Here:
    """The network that the process is in while it makes a socket, which stays there."""

    @staticmethod
    def entered():
        return contextlib.nullcontext()


class EnteredDevice(Device):
    """A device that somebody else switches on and off."""

    def __init__(self, record, name):
        node = record.topology.nodes[name]
        self._describe(Build(record.data["build"]), node.user_ports, name)
        self.run_dir = record.nodes[name]["folder"]
        self.cpu = Nic(_Here, CPU_INTERFACE)

    def close(self):
        self.cpu.close()


class EnteredLab(Lab):
    """A device of the lab with its hosts, by the ports that they are at."""

    def __init__(self, device):
        super().__init__(hosts=(), name=device.name)
        self.device = device

    def add_host(self, port):
        nic = Nic(_Here, "eth1")
        self.hosts[port] = SimpleNamespace(port=port, nic=nic, send=nic.send, close=nic.close)


class EnteredPair(Pair):
    """Two devices of the lab; cable number i joins `cables[i]`. The process stays in the network of one of them."""

    def __init__(self, record, names, cables):
        self.cables = tuple(cables)
        self.labs = ()
        hosts = _hosts_of(record, names)
        networks = iter(enter(record, *names, *hosts, place=()))
        labs = {}
        for name in names:
            next(networks)()
            labs[name] = EnteredLab(EnteredDevice(record, name))
        for device, port in hosts.values():
            next(networks)()
            labs[device].add_host(port)
        self.labs = self.near, self.far = tuple(labs.values())

    def __enter__(self):
        return self

    def __exit__(self, *problem):
        for lab in self.labs:
            for each in (*lab.hosts.values(), lab.device):
                each.close()


def _hosts_of(record, devices):
    """{host: (device, port)}"""
    ends = [each for cable in record.topology.cables for each in (cable.ends, cable.ends[::-1])]
    return {far.node: (near.node, port_of(near)) for near, far in ends if near.node in devices and far.node not in devices}


class FollowedProgram(AggregationProgram):
    """link_aggregation that the lab has started. Its lines are those of its log, the earlier ones included."""

    def __init__(self, device):
        log = pathlib.Path(device.run_dir) / f"program-{PROGRAM}.log"
        tail = subprocess.Popen(["tail", "-n", "+1", "-s", "0.05", "-f", log], stdout=subprocess.PIPE)
        self._follow(tail, f"link_aggregation on the {device.name}")


class FollowedFourCables(FourCables):
    """FourCables whose programs run already."""

    def _start(self, lab, ports):
        return FollowedProgram(lab.device)

    def _prepare_traffic(self):
        # Whatever hosts have said meanwhile fills the sockets.
        for lab in self.pair.labs:
            for host in lab.hosts.values():
                host.nic.waiting()
        super()._prepare_traffic()
