"""Frames from the CPU in the transmit modes 1 to 4: which ports they leave, byte for byte, and which they do not."""

import adp
import pytest
from adp.lab.frames import BROADCAST, ETHERTYPE_EXPERIMENT, ethernet, vlan_tag
from samples import (  # noqa: F401  (fixtures among them)
    ALL_PORTS,
    BOTH_SIDES,
    MEMBERS,
    ONE_PORT,
    OTHER_TYPE,
    SWITCHED,
    UNTAGGED,
    VLAN,
    VLAN_NOT_SOURCE,
    VLAN_PORT,
    Sample,
    member_group,
    sample,
    to_each,
    vlan,
)

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
@pytest.mark.parametrize("ports", [(2,), (2, 22), (22, 2), (adp.agg(1),), (22, OTHER_TYPE), (27,)])
def test_vlan_port_refuses_a_list_with_a_stranger(lab, cpu, sample, vlan, mode, ports):
    cpu.give_management_port(1, 22)
    assert cpu.transmit(sample.tagged, ports, vlan, mode) == -1
    assert lab.arrivals(sample.marker) == {}


@pytest.mark.parametrize("mode", [VLAN_PORT, VLAN_NOT_SOURCE])
@pytest.mark.parametrize("vid", [adp.NO_VLAN, VLAN + 1])
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
    assert cpu.transmit(sample.plain, (5, adp.agg(8)), mode=ONE_PORT) == 0
    assert lab.arrivals(sample.marker) == to_each(sample.plain, (26,))


def test_one_port_stays_when_a_group_has_no_management_port(lab, cpu, sample):
    assert cpu.transmit(sample.plain, (5, adp.agg(7)), mode=ONE_PORT) == 0
    assert lab.arrivals(sample.marker) == to_each(sample.plain, (5,))


@pytest.mark.parametrize("ports", [(2,), (22, 2), (adp.agg(1),)])
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
