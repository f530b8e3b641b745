"""Frames from the CPU: samples to send, the VLAN and the group that they are sent to, and the transmit modes.

The fixtures are for the modules that import them.
"""

import adp
import pytest
from adp.lab.frames import BROADCAST, ETHERTYPE_EXPERIMENT, ethernet, vlan_tag

VLAN = 100
MEMBERS = {1, 5, 21, 22, 26}
UNTAGGED = {1, 22}
OTHER_TYPE = 0x20000001
PORTS_BY_LIST, SWITCHED, VLAN_PORT, ONE_PORT, VLAN_NOT_SOURCE = range(5)
# Physical ports 4, 24, 25 and 29: the first word of the tag ends at 24.
BOTH_SIDES = (1, 21, 22, 26)
ALL_PORTS = set(range(1, 27))


class Sample:
    """A broadcast frame of its own, in two forms: with a VLAN tag and without."""

    def __init__(self, lab, vid=VLAN, size=60):
        self.marker = lab.marker()
        payload = self.marker.ljust(size - 14, b".")
        source = lab.mac()
        self.plain = ethernet(BROADCAST, source, ETHERTYPE_EXPERIMENT, payload)
        self.tagged = ethernet(BROADCAST, source, ETHERTYPE_EXPERIMENT, payload, vlan_tag(vid, 5))

    def by_rule(self, ports):
        """What the ports of the VLAN send when its egress rule applies."""
        return {port: [self.plain if port in UNTAGGED else self.tagged] for port in ports}


@pytest.fixture
def sample(lab):
    return Sample(lab)


@pytest.fixture
def vlan(cpu):
    cpu.vlan(VLAN, MEMBERS, UNTAGGED)
    return VLAN


def to_each(frame, ports):
    return {port: [frame] for port in ports}


@pytest.fixture
def member_group(cpu, vlan):
    """Group 3 with the ports 21 and 22 of the VLAN, managed by 22."""
    cpu.form_group(3, (21, 22))
    cpu.give_management_port(3, 22)
    return adp.agg(3)
