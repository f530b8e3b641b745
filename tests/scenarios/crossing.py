"""Where the hosts of the crossing are."""

from adp.testing.crossing import OTHER_VLAN, VLAN

__all__ = ["NEIGHBOUR", "OTHER_VLAN", "PORTS", "RECEIVER", "SENDER", "VLAN"]
SENDER, NEIGHBOUR, RECEIVER = 5, 7, 22
PORTS = (SENDER, NEIGHBOUR, RECEIVER)
