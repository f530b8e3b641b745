"""Topologies: devices, hosts and cables as a file in containerlab's format describes them."""

from .model import Cable, End, Node, Topology

__all__ = ["Cable", "End", "Node", "Topology"]
