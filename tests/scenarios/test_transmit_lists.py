"""Frames from the CPU in transmit mode 0, to a list of ports or flooded: which ports they leave, byte for byte."""

import adp
import pytest
from samples import (  # noqa: F401  (fixtures among them)
    ALL_PORTS,
    BOTH_SIDES,
    MEMBERS,
    OTHER_TYPE,
    VLAN,
    Sample,
    member_group,
    sample,
    to_each,
    vlan,
)

# With a list


def test_list_reaches_both_sides_of_port_24(lab, cpu, sample):
    assert cpu.transmit(sample.plain, BOTH_SIDES) == 0
    assert lab.arrivals(sample.marker) == to_each(sample.plain, BOTH_SIDES)


def test_list_leaves_out_the_source(lab, cpu, sample):
    assert cpu.transmit(sample.plain, (1, 22, 26), source=22) == 0
    assert lab.arrivals(sample.marker) == to_each(sample.plain, (1, 26))


@pytest.mark.parametrize("ports, source", [((22,), 22), ((), 0), ((0,), 0), ((OTHER_TYPE,), 0), ((27,), 0)])
def test_list_that_names_no_port_sends_nothing(lab, cpu, sample, ports, source):
    # Interface 27 lies beyond the map: its port, -1, has no bit.
    assert cpu.transmit(sample.plain, ports, source=source) == -1
    assert lab.arrivals(sample.marker) == {}


def test_list_passes_over_ports_outside_the_vlan(lab, cpu, sample, vlan):
    assert cpu.transmit(sample.tagged, (1, 2, 21, 25, 26), vlan) == 0
    assert lab.arrivals(sample.marker) == sample.by_rule((1, 21, 26))


def test_list_of_ports_outside_the_vlan_sends_nothing(lab, cpu, sample, vlan):
    assert cpu.transmit(sample.tagged, (2, 25), vlan) == -1
    assert lab.arrivals(sample.marker) == {}


def test_list_reaches_a_group_through_its_management_port(lab, cpu, sample):
    cpu.give_management_port(3, 22)
    assert cpu.transmit(sample.plain, (adp.agg(3), 2)) == 0
    assert lab.arrivals(sample.marker) == to_each(sample.plain, (2, 22))


def test_list_passes_over_a_group_without_management_port(lab, cpu, sample):
    assert cpu.transmit(sample.plain, (adp.agg(4), 2)) == 0
    assert lab.arrivals(sample.marker) == to_each(sample.plain, (2,))


def test_list_with_a_group_as_source_leaves_it_out(lab, cpu, sample):
    cpu.give_management_port(3, 22)
    assert cpu.transmit(sample.plain, (adp.agg(3), 2), source=adp.agg(3)) == 0
    assert lab.arrivals(sample.marker) == to_each(sample.plain, (2,))


def test_list_reaches_a_group_of_the_vlan(lab, cpu, sample, vlan, member_group):
    cpu.give_management_port(4, 26)
    assert cpu.transmit(sample.tagged, (adp.agg(4), member_group, 2), vlan) == 0
    assert lab.arrivals(sample.marker) == sample.by_rule((22,))


# Without a list


def test_flood_without_vlan_leaves_every_port_but_the_source(lab, cpu, sample):
    assert cpu.transmit(sample.plain, source=22) == 0
    assert lab.arrivals(sample.marker) == to_each(sample.plain, ALL_PORTS - {22})


def test_flood_without_vlan_and_source_leaves_every_port(lab, cpu, sample):
    assert cpu.transmit(sample.tagged) == 0
    assert lab.arrivals(sample.marker) == to_each(sample.tagged, ALL_PORTS)


def test_flood_without_vlan_adds_no_groups(lab, cpu, sample):
    # Through its group the source's port would be reached after all.
    cpu.give_management_port(1, 5)
    assert cpu.transmit(sample.plain, source=5) == 0
    assert lab.arrivals(sample.marker) == to_each(sample.plain, ALL_PORTS - {5})


def test_flood_of_a_vlan_leaves_its_members_but_the_source(lab, cpu, sample, vlan):
    assert cpu.transmit(sample.tagged, vlan=vlan, source=21) == 0
    assert lab.arrivals(sample.marker) == sample.by_rule(MEMBERS - {21})


def test_flood_of_a_vlan_whose_only_member_is_the_source_sends_nothing(lab, cpu, sample):
    cpu.vlan(VLAN, {0, 22})
    assert cpu.transmit(sample.tagged, vlan=VLAN, source=22) == -1
    assert lab.arrivals(sample.marker) == {}


def test_flood_of_an_unknown_vlan_sends_nothing(lab, cpu, sample):
    assert cpu.transmit(sample.tagged, vlan=VLAN) == -1
    assert lab.arrivals(sample.marker) == {}


def test_flood_of_a_vlan_adds_its_groups_but_the_source(lab, cpu, sample, member_group):
    # Group 3 is in the VLAN through its member 21 alone; its management port is reached through the group only.
    cpu.vlan_ports(VLAN, {1, 21}, {1})
    assert cpu.transmit(sample.plain, vlan=VLAN) == 0
    assert lab.arrivals(sample.marker) == to_each(sample.plain, (1, 21, 22))
    second = Sample(lab)
    assert cpu.transmit(second.plain, vlan=VLAN, source=member_group) == 0
    assert lab.arrivals(second.marker) == to_each(second.plain, (1, 21))
