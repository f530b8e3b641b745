"""Topologies: devices, hosts and cables as a file in containerlab's format describes them."""

from .document import TopologyError
from .model import Cable, End, Node, Topology
from .reader import default_topology, read_topology

__all__ = ["Cable", "End", "Node", "Topology", "TopologyError", "default_topology", "read_topology"]
