"""The topology files of the documents: their devices as the image runs them, started and then cabled as an engine does."""

import itertools
import re

import pytest
from adp.lab import topology
from adp.lab.builds import ROOT

FILES = sorted((ROOT / "examples/topologies").glob("*.clab.yml"))
assert FILES, "the topologies have moved"


def address_of(host):
    """The address that the host's commands give to its interface."""
    found = re.fullmatch(r"ip address add (\S+) dev eth1", host.commands[0])
    assert found, host
    return found[1]


def port_of(end):
    return int(end.interface.removeprefix("eth"))


def started(nodes, make_device):
    """The devices among the nodes, by name."""
    return {
        name: make_device({"startup.adpsh": node.startup.read_text(encoding="utf-8")} if node.startup else {})
        for name, node in nodes.items()
        if node.is_device
    }


@pytest.mark.parametrize("file", FILES, ids=lambda file: file.name)
def test_every_host_reaches_every_other_one(make_device, cables, file):
    nodes = topology.read_topology(file).nodes
    devices, hosts = started(nodes, make_device), {}
    for cable in topology.read_topology(file).cables:
        one, other = sorted(cable.ends, key=lambda end: not nodes[end.node].is_device)
        if nodes[other.node].is_device:
            cables.join(devices[one.node], port_of(one), devices[other.node], port_of(other))
        else:
            address = address_of(nodes[other.node])
            hosts[address.split("/")[0]] = cables.host(devices[one.node], port_of(one), address)
    assert len(hosts) >= 2
    for host in hosts.values():
        host.await_link()
    for source, target in itertools.permutations(hosts, 2):
        assert hosts[source].ping(target, seconds=10.0, attempts=10), f"{source} does not reach {target}"
