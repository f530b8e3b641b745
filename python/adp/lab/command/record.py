"""What lab.json says: how commands reach a lab, and how it is."""

import dataclasses
import json
import os
import pathlib

from ..problem import LabError
from ..topology import Cable, End, Node, Topology
from .words import did_you_mean, listed

VERSION = 1


def topology_as_data(topology):
    return json.loads(json.dumps(dataclasses.asdict(topology), default=str))


def _node(data):
    files = {name: data[name] and pathlib.Path(data[name]) for name in ("configuration", "startup")}
    return Node(**{**data, "commands": tuple(data["commands"]), **files})


def _cable(data):
    return Cable(**{**data, "ends": tuple(End(**end) for end in data["ends"])})


def topology_of(data):
    nodes = {name: _node(node) for name, node in data["nodes"].items()}
    return Topology(data["name"], nodes, tuple(map(_cable, data["cables"])), pathlib.Path(data["folder"]))


class Record:
    """The lab.json of a lab that runs."""

    def __init__(self, folder, data):
        self.folder = folder
        self.data = data
        self.topology = topology_of(data["topology"])

    @property
    def name(self):
        return self.folder.name

    @property
    def keeper(self):
        """Process id of the background process, as others see it."""
        return self.data["keeper"]

    @property
    def nodes(self):
        """{name: what is known of the node while it runs}"""
        return self.data["nodes"]

    def node(self, name):
        """A node of the topology."""
        if name not in self.topology.nodes:
            known = f" It has {listed(list(self.topology.nodes))}." if len(self.topology.nodes) <= 12 else ""
            raise LabError(
                f"The lab '{self.name}' has no node '{name}'.{did_you_mean(name, self.topology.nodes)}{known}"
            )
        return self.topology.nodes[name]

    def device(self, name):
        """A node that is a device."""
        node = self.node(name)
        if not node.is_device:
            devices = [other.name for other in self.topology.nodes.values() if other.is_device]
            raise LabError(f"{name} is a host. Devices of the lab '{self.name}': {listed(devices or ['none'])}.")
        return node

    def environment(self, name):
        """The environment of programs on a node."""
        return environment_of(self.data["path"], self.nodes[name]["environment"])


def environment_of(path, own):
    """This process's environment, with the folders of the lab's programs and what a node has of its own."""
    folders = [*path, *os.environ.get("PATH", os.defpath).split(":"), "/usr/sbin", "/sbin"]
    return {**os.environ, "PATH": ":".join(dict.fromkeys(folders)), **own}


def write(path, data):
    """Writes the file so that readers see the old or the new one whole."""
    new = path.with_suffix(".new")
    new.write_text(json.dumps(data, indent=1), encoding="utf-8")
    new.replace(path)


def read(folder):
    """The record of a lab that is up."""
    try:
        data = json.loads(folder.record_path.read_text(encoding="utf-8"))
    except FileNotFoundError:
        data = {"state": "starting"}
    if data["state"] == "starting":
        raise LabError(f"The lab '{folder.name}' is starting.")
    if data["version"] != VERSION:
        raise LabError(f"The lab '{folder.name}' was started by another version of this program, which must end it.")
    return Record(folder, data)
