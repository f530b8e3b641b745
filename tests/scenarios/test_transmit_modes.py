"""Frames from the CPU in the five transmit modes: which ports they leave, byte for byte, and which they do not."""

import pytest
from cpu import NO_VLAN, group
from adp.lab.frames import BROADCAST, ETHERTYPE_EXPERIMENT, ethernet, vlan_tag

VLAN = 100
MEMBERS = {1, 5, 21, 22, 26}
UNTAGGED = {1, 22}
OTHER_TYPE = 0x20000001
PORTS_BY_LIST, SWITCHED, VLAN_PORT, ONE_PORT, VLAN_NOT_SOURCE = range(5)
# Physical ports 4, 24 | 25, 29: the tag's first word ends at 24.
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


# Mode 0 with a list


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
    assert cpu.transmit(sample.plain, (group(3), 2)) == 0
    assert lab.arrivals(sample.marker) == to_each(sample.plain, (2, 22))


def test_list_passes_over_a_group_without_management_port(lab, cpu, sample):
    assert cpu.transmit(sample.plain, (group(4), 2)) == 0
    assert lab.arrivals(sample.marker) == to_each(sample.plain, (2,))


def test_list_with_a_group_as_source_leaves_it_out(lab, cpu, sample):
    cpu.give_management_port(3, 22)
    assert cpu.transmit(sample.plain, (group(3), 2), source=group(3)) == 0
    assert lab.arrivals(sample.marker) == to_each(sample.plain, (2,))


@pytest.fixture
def member_group(cpu, vlan):
    """Group 3 with the ports 21 and 22 of the VLAN, managed by 22."""
    cpu.form_group(3, (21, 22))
    cpu.give_management_port(3, 22)
    return group(3)


def test_list_reaches_a_group_of_the_vlan(lab, cpu, sample, vlan, member_group):
    cpu.give_management_port(4, 26)
    assert cpu.transmit(sample.tagged, (group(4), member_group, 2), vlan) == 0
    assert lab.arrivals(sample.marker) == sample.by_rule((22,))


# Mode 0 without a list


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


# Mode 1


def test_switched_frame_without_tag_floods_the_default_vlan(lab, cpu, sample):
    assert cpu.transmit(sample.plain, mode=SWITCHED) == 0
    assert lab.arrivals(sample.marker) == to_each(sample.plain, ALL_PORTS)


def test_switched_frame_obeys_its_vlan(lab, cpu, sample):
    cpu.vlan(VLAN, MEMBERS | {0}, UNTAGGED)
    assert cpu.transmit(sample.tagged, (2,), mode=SWITCHED) == 0
    assert lab.arrivals(sample.marker) == sample.by_rule(MEMBERS)


def test_switched_frame_of_a_vlan_without_the_cpu_is_dropped(lab, cpu, sample, vlan):
    assert cpu.transmit(sample.tagged, mode=SWITCHED) == 0
    assert lab.arrivals(sample.marker) == {}


def test_switched_frame_goes_only_where_its_address_was_learned(lab, cpu, hosts):
    marker, station = lab.marker(), lab.mac(22)
    hosts[22].send(ethernet(BROADCAST, station, ETHERTYPE_EXPERIMENT, marker))
    assert set(lab.arrivals(marker)) == ALL_PORTS - {22}
    answer = ethernet(station, lab.mac(), ETHERTYPE_EXPERIMENT, lab.marker())
    assert cpu.transmit(answer, mode=SWITCHED) == 0
    assert lab.arrivals(answer[14:]) == {22: [answer]}


# Modes 2 and 4: one port of a VLAN


@pytest.mark.parametrize("mode", [VLAN_PORT, VLAN_NOT_SOURCE])
@pytest.mark.parametrize("port", BOTH_SIDES)
def test_vlan_port_applies_the_vlans_tagging(lab, cpu, sample, vlan, mode, port):
    assert cpu.transmit(sample.tagged, (port,), vlan, mode) == 0
    assert lab.arrivals(sample.marker) == sample.by_rule((port,))


@pytest.mark.parametrize("mode", [VLAN_PORT, VLAN_NOT_SOURCE])
def test_vlan_port_sends_an_untagged_frame_as_it_is(lab, cpu, sample, vlan, mode):
    assert cpu.transmit(sample.plain, (21,), vlan, mode) == 0
    assert lab.arrivals(sample.marker) == to_each(sample.plain, (21,))


@pytest.mark.parametrize("mode", [VLAN_PORT, VLAN_NOT_SOURCE])
@pytest.mark.parametrize("ports", [(2,), (2, 22), (22, 2), (group(1),), (22, OTHER_TYPE), (27,)])
def test_vlan_port_refuses_a_list_with_a_stranger(lab, cpu, sample, vlan, mode, ports):
    cpu.give_management_port(1, 22)
    assert cpu.transmit(sample.tagged, ports, vlan, mode) == -1
    assert lab.arrivals(sample.marker) == {}


@pytest.mark.parametrize("mode", [VLAN_PORT, VLAN_NOT_SOURCE])
@pytest.mark.parametrize("vid", [NO_VLAN, VLAN + 1])
def test_vlan_port_needs_a_vlan_that_exists(lab, cpu, sample, vlan, mode, vid):
    assert cpu.transmit(sample.tagged, (22,), vid, mode) == -1
    assert lab.arrivals(sample.marker) == {}


@pytest.mark.parametrize("mode", [VLAN_PORT, ONE_PORT, VLAN_NOT_SOURCE])
def test_modes_for_one_port_reach_a_group_of_the_vlan(lab, cpu, sample, vlan, member_group, mode):
    assert cpu.transmit(sample.plain, (1, member_group), vlan, mode) == 0
    assert lab.arrivals(sample.marker) == to_each(sample.plain, (22,))


def test_vlan_port_does_not_leave_out_the_source(lab, cpu, sample, vlan):
    assert cpu.transmit(sample.tagged, (5, 22), vlan, VLAN_PORT, source=22) == 0
    assert lab.arrivals(sample.marker) == sample.by_rule((22,))


def test_vlan_port_but_the_source_takes_the_last_other_one(lab, cpu, sample, vlan):
    assert cpu.transmit(sample.tagged, (5, 26, 22), vlan, VLAN_NOT_SOURCE, source=22) == 0
    assert lab.arrivals(sample.marker) == sample.by_rule((26,))


def test_vlan_port_but_the_source_asks_nothing_of_the_source(lab, cpu, sample, vlan):
    # The source, port 2, is no member of the VLAN.
    assert cpu.transmit(sample.tagged, (26, 2), vlan, VLAN_NOT_SOURCE, source=2) == 0
    assert lab.arrivals(sample.marker) == sample.by_rule((26,))


@pytest.mark.parametrize("mode", [VLAN_PORT, VLAN_NOT_SOURCE])
def test_vlan_port_passes_over_index_0(lab, cpu, sample, vlan, mode):
    assert cpu.transmit(sample.tagged, (0, 22, 0), vlan, mode, source=5) == 0
    assert lab.arrivals(sample.marker) == sample.by_rule((22,))


# Mode 3: one port, with or without a VLAN


@pytest.mark.parametrize("port", BOTH_SIDES)
def test_one_port_sends_exactly_what_was_given(lab, cpu, sample, vlan, port):
    assert cpu.transmit(sample.tagged, (port,), mode=ONE_PORT) == 0
    assert lab.arrivals(sample.marker) == to_each(sample.tagged, (port,))


def test_one_port_with_a_vlan_leaves_the_tag_alone(lab, cpu, sample, vlan):
    # Port 22 would send the VLAN untagged.
    assert cpu.transmit(sample.tagged, (22,), vlan, ONE_PORT) == 0
    assert lab.arrivals(sample.marker) == to_each(sample.tagged, (22,))


@pytest.mark.parametrize("ports", [(2, 22), (22, 2), (22, 21, 2)])
def test_one_port_is_the_last_of_the_list(lab, cpu, sample, ports):
    assert cpu.transmit(sample.plain, ports, mode=ONE_PORT) == 0
    assert lab.arrivals(sample.marker) == to_each(sample.plain, ports[-1:])


def test_one_port_does_not_leave_out_the_source(lab, cpu, sample):
    assert cpu.transmit(sample.plain, (22,), mode=ONE_PORT, source=22) == 0
    assert lab.arrivals(sample.marker) == to_each(sample.plain, (22,))


def test_one_port_reaches_a_group_through_its_management_port(lab, cpu, sample):
    cpu.give_management_port(8, 26)
    assert cpu.transmit(sample.plain, (5, group(8)), mode=ONE_PORT) == 0
    assert lab.arrivals(sample.marker) == to_each(sample.plain, (26,))


def test_one_port_stays_when_a_group_has_no_management_port(lab, cpu, sample):
    assert cpu.transmit(sample.plain, (5, group(7)), mode=ONE_PORT) == 0
    assert lab.arrivals(sample.marker) == to_each(sample.plain, (5,))


@pytest.mark.parametrize("ports", [(2,), (22, 2), (group(1),)])
def test_one_port_with_a_vlan_refuses_a_stranger(lab, cpu, sample, vlan, ports):
    cpu.give_management_port(1, 22)
    assert cpu.transmit(sample.tagged, ports, vlan, ONE_PORT) == -1
    assert lab.arrivals(sample.marker) == {}


def test_one_port_refuses_an_interface_of_another_type(lab, cpu, sample):
    assert cpu.transmit(sample.plain, (22, OTHER_TYPE), mode=ONE_PORT) == -1
    assert lab.arrivals(sample.marker) == {}


def test_one_port_with_an_empty_list_is_sent_nowhere(lab, cpu, sample):
    # The destination stays 0, which is the CPU's own port.
    assert cpu.transmit(sample.plain, (), mode=ONE_PORT) == 0
    assert lab.arrivals(sample.marker) == {}


# All modes


@pytest.mark.parametrize("mode", [VLAN_PORT, ONE_PORT, VLAN_NOT_SOURCE])
def test_modes_for_one_port_need_a_list(lab, cpu, sample, vlan, mode):
    assert cpu.transmit(sample.plain, None, vlan, mode) == -1
    assert lab.arrivals(sample.marker) == {}


@pytest.mark.parametrize("mode, status", [(5, -1), (0xFFFF, -1), (0x10003, 0)])
def test_only_the_low_16_bits_of_the_mode_count(lab, cpu, sample, mode, status):
    assert cpu.transmit(sample.plain, (22,), mode=mode) == status
    assert lab.arrivals(sample.marker) == ({} if status else to_each(sample.plain, (22,)))


@pytest.mark.parametrize("size", [32, 59, 60, 61, 1514, 9000])
def test_frames_of_every_size_arrive_whole(lab, cpu, size):
    sample = Sample(lab, size=size)
    assert cpu.transmit(sample.plain, (21, 22)) == 0
    assert lab.arrivals(sample.marker) == to_each(sample.plain, (21, 22))


def test_stacked_tags_pass_unchanged(lab, cpu):
    marker = lab.marker()
    tags = vlan_tag(VLAN, 3, 0x88A8) + vlan_tag(200)
    frame = ethernet(BROADCAST, lab.mac(), ETHERTYPE_EXPERIMENT, marker, tags)
    assert cpu.transmit(frame, BOTH_SIDES) == 0
    assert lab.arrivals(marker) == to_each(frame, BOTH_SIDES)
