"""A lab as its background process makes it and holds it."""

import concurrent.futures
import contextlib
import json
import os
import pathlib
import subprocess

from ..builds import Build
from ..netns import NetNamespace
from ..problem import LabError
from ..process import poll_until
from . import record
from .cabling import lay_cables, set_conditions
from .node import LabNode
from .words import counted

AT_ONCE = os.cpu_count() or 1
SETTLE_SECONDS = 3.0
HOSTS_FILE = "hosts"
NODES = "nodes"
ETC_HOSTS = "/etc/hosts"


def mount(*words):
    """Mounts something in the lab's own mount namespace."""
    done = subprocess.run(["mount", *map(str, words)], capture_output=True, text=True)
    if done.returncode != 0:
        raise LabError(f"The system refuses to mount: {done.stderr.strip()}")


class LiveLab:
    """All nodes of a lab, with their processes."""

    def __init__(self, folder, data):
        self._folder = pathlib.Path(folder)
        self._data = data
        self._topology = record.topology_of(data["topology"])
        self.nodes = {}

    def make(self, say):
        """Makes everything; `say` gets a line a step."""
        self._mount_hosts()
        say(f"namespaces of {counted(len(self._topology.nodes), 'node')}")
        for node in self._topology.nodes.values():
            folder = self._folder / NODES / node.name
            self.nodes[node.name] = LabNode(node, folder, self._data["path"], self._topology)
        say(counted(len(self._topology.cables), "cable"))
        lay_cables(self.nodes, self._topology.cables, NetNamespace("the lab").ip)
        set_conditions(self.nodes, self._topology.cables)
        devices = [node for node in self.nodes.values() if node.node.is_device]
        hosts = [node for node in self.nodes.values() if not node.node.is_device]
        say(counted(len(devices), "device"))
        builds = [Build(self._data[name]) for name in ("build", "management")]
        _all_at_once(lambda device: device.switch_on(*builds), devices)
        # Devices come first, so that a program which keeps a loop open is there before hosts speak.
        self._start(devices)
        say(counted(len(hosts), "host"))
        _all_at_once(LabNode.raise_interfaces, hosts)
        _await_links(devices, hosts)
        self._start(hosts)
        self._write_hosts()

    @staticmethod
    def _start(nodes):
        _all_at_once(LabNode.run_commands, nodes)
        for node in nodes:
            node.start_programs()

    def _mount_hosts(self):
        self._write_hosts()
        mount("--bind", self._folder / HOSTS_FILE, ETC_HOSTS)

    def _write_hosts(self):
        """Writes the names of all addresses into the file that the lab's programs see as /etc/hosts."""
        lines = ["127.0.0.1 localhost", "::1 localhost"]
        for node in self.nodes.values():
            lines += [f"{address} {node.name}" for address in addresses_of(node.namespace)]
        (self._folder / HOSTS_FILE).write_text("\n".join(lines) + "\n", encoding="ascii")

    def restart(self, name):
        self.nodes[name].restart()

    def processes(self):
        return [process for node in self.nodes.values() for process, _log in node.processes().values() if process]

    def state(self):
        """What lab.json says while the lab is up."""
        return {name: node.state() for name, node in self.nodes.items()}


def _all_at_once(work, nodes):
    with concurrent.futures.ThreadPoolExecutor(AT_ONCE) as pool:
        list(pool.map(work, nodes))


def addresses_of(namespace):
    """The addresses of a node by which others reach it."""
    shown = json.loads(namespace.ip("address show scope global"))
    found = [address for interface in shown for address in interface.get("addr_info", ())]
    return [address["local"] for address in found if "local" in address]


def _await_links(devices, hosts):
    """Waits until the cables that have a carrier carry frames. Some may have none, as the topology wants it."""
    with contextlib.suppress(LabError):
        for host in hosts:
            poll_until(lambda h=host: _is_settled(h), SETTLE_SECONDS, "A link")
        for device in devices:
            poll_until(lambda d=device: _is_linked(d), SETTLE_SECONDS, "A link")


def _is_settled(host):
    shown = json.loads(host.namespace.ip("link show"))
    return all(link["operstate"] == "UP" for link in shown if "LOWER_UP" in link["flags"] and link["ifname"] != "lo")


def _is_linked(device):
    """Whether the device knows of every carrier that its interfaces have."""
    shown = json.loads(device.namespace.ip("link show"))
    carriers = {link["ifname"] for link in shown if "LOWER_UP" in link["flags"]}
    return {f"port{port}" for port in device.device.links() if port} >= {n for n in carriers if n.startswith("port")}
