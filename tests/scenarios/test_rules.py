"""Actions of rules on frames that match: redirect, drop, copy, change and count."""

import pytest
from acl import (
    COPY_TO_CPU,
    COUNT,
    DROP,
    FRAMES,
    OCTETS,
    PERMIT,
    SET_DSCP,
    SET_PRIORITY,
    SET_VLAN,
    TO_CPU,
    TO_PORT,
    TO_PORTS,
)
from adp.testing.calls import text_of
from adp.testing.packet import Packet
from crossing import NEIGHBOUR, OTHER_VLAN, RECEIVER, SENDER

SUBMODULE, SAME_GROUP, LATER_GROUP, PAIRS, UNTRANSLATED = 20, 21, 31, 2, 16
ENTITY = 1
COUNTER = 7
IN_PORTS, L4_DESTINATION = 13, 28
OUTSIDER = 26
FIRST_PHYSICAL = 4
FROM_SENDER = [(IN_PORTS, {SENDER})]
TO_5000 = [*FROM_SENDER, (L4_DESTINATION, 5000)]
OTHER = Packet(destination_port=5001)
RECEIVE_TAG_BYTES = 6
TAG_AT = 12
MISS_NONE, MISS_DROP, MISS_COPY, MISS_TO_CPU = 0, 1, 2, 3


def from_sender(*packets):
    return [(SENDER, packet) for packet in packets]


def at_cpu(cpu, marker):
    """(interface, frame without the switch tag) of the next frame at the CPU, from the library's receive call."""
    arrived = cpu.next_frame(marker)
    assert arrived, "no frame reached the CPU"
    status, outputs = cpu.receive_plain(arrived)
    assert status == 0
    return outputs["out_intf"], arrived[:TAG_AT] + arrived[TAG_AT + RECEIVE_TAG_BYTES :]


# Elsewhere


@pytest.mark.parametrize("submodule", [SUBMODULE, PAIRS], ids=["single", "pair"])
@pytest.mark.parametrize("port", [RECEIVER, OUTSIDER])
def test_frames_go_to_one_port_only(crossing, acl, submodule, port):
    acl.install(submodule, ENTITY, TO_5000, [(TO_PORT, port)])
    arrive = crossing.flooded((SENDER, OTHER))
    arrive.setdefault(port, []).append(Packet())
    crossing.check(from_sender(Packet(), OTHER), arrive)
    assert acl.delete(submodule, ENTITY) == 0
    crossing.check_flooded(*from_sender(Packet(), OTHER))


@pytest.mark.parametrize("submodule", [SUBMODULE, PAIRS], ids=["single", "pair"])
def test_frames_go_to_a_set_of_ports(crossing, acl, submodule):
    acl.install(submodule, ENTITY, TO_5000, [(TO_PORTS, {1, NEIGHBOUR, OUTSIDER})])
    crossing.check(from_sender(Packet()), {port: [Packet()] for port in (1, NEIGHBOUR, OUTSIDER)})
    assert acl.delete(submodule, ENTITY) == 0
    crossing.check_flooded((SENDER, Packet()))


def test_one_submodule_takes_physical_ports(crossing, acl):
    acl.install(UNTRANSLATED, ENTITY, FROM_SENDER, [(TO_PORTS, {FIRST_PHYSICAL, FIRST_PHYSICAL + 25})])
    crossing.check(from_sender(Packet()), {1: [Packet()], OUTSIDER: [Packet()]})


def test_port_that_is_not_the_first_action_stays_an_interface_number(crossing, acl):
    # The translation goes into the record's first action, whichever asked for it, and that one was handed on already.
    # 26 is then the physical port of 23.
    acl.install(SUBMODULE, ENTITY, TO_5000, [(COUNT, COUNTER), (TO_PORT, OUTSIDER)])
    crossing.check(from_sender(Packet()), {23: [Packet()]})
    assert acl.count(COUNTER)[0] == 1


# Dropped, to the CPU, and with other tags


def test_dropped_frames_arrive_nowhere_until_the_rule_is_deleted(crossing, acl):
    acl.install(SUBMODULE, ENTITY, TO_5000, [(DROP,)])
    crossing.check(from_sender(Packet(), OTHER), crossing.flooded((SENDER, OTHER)))
    assert acl.delete(SUBMODULE, ENTITY) == 0
    crossing.check_flooded((SENDER, Packet()))


def test_copied_frames_reach_the_cpu_and_their_hosts(crossing, acl, cpu):
    acl.install(SUBMODULE, ENTITY, TO_5000, [(COPY_TO_CPU,)])
    marker = crossing.check_flooded((SENDER, Packet()))
    assert at_cpu(cpu, marker) == (SENDER, Packet().build(marker))


def test_diverted_frames_reach_the_cpu_alone(crossing, acl, cpu):
    acl.install(SUBMODULE, ENTITY, TO_5000, [(TO_CPU,)])
    marker = crossing.check(from_sender(Packet()), {})
    assert at_cpu(cpu, marker) == (SENDER, Packet().build(marker))


def test_frames_are_moved_to_another_vlan_and_marked(crossing, acl):
    actions = [(SET_VLAN, OTHER_VLAN), (SET_PRIORITY, 7), (SET_DSCP, 46)]
    acl.install(SUBMODULE, ENTITY, TO_5000, actions)
    changed = Packet(vlan=OTHER_VLAN, priority=7, dscp=46)
    crossing.check(from_sender(Packet()), crossing.flooded((SENDER, changed)))


# Which rule


def test_higher_priority_wins_within_a_group(crossing, acl):
    acl.install(SUBMODULE, ENTITY, FROM_SENDER, [(DROP,)], priority=1)
    acl.install(SUBMODULE, ENTITY + 1, TO_5000, [(PERMIT,)], priority=2)
    crossing.check(from_sender(Packet(), OTHER), crossing.flooded((SENDER, Packet())))
    acl.install(SUBMODULE, ENTITY, FROM_SENDER, [(DROP,)], priority=3)
    crossing.check(from_sender(Packet(), OTHER), {})


def test_submodules_of_a_group_are_ranked_by_their_place(crossing, acl):
    acl.install(SUBMODULE, ENTITY, FROM_SENDER, [(DROP,)], priority=19)
    acl.install(SAME_GROUP, ENTITY, TO_5000, [(PERMIT,)], priority=0)
    crossing.check(from_sender(Packet(), OTHER), crossing.flooded((SENDER, Packet())))


def test_groups_act_on_the_same_frame(crossing, acl):
    acl.install(SUBMODULE, ENTITY, TO_5000, [(SET_DSCP, 46)])
    acl.install(LATER_GROUP, ENTITY, FROM_SENDER, [(SET_PRIORITY, 1), (COUNT, COUNTER)])
    acl.install(PAIRS, ENTITY, FROM_SENDER, [(TO_PORT, OUTSIDER)])
    marker = crossing.check(from_sender(Packet()), {OUTSIDER: [Packet(dscp=46, priority=1)]})
    assert acl.count(COUNTER) == (1, len(Packet().build(marker)))


# Counters


@pytest.mark.parametrize("submodule", [SUBMODULE, PAIRS], ids=["single", "pair"])
def test_counters_equal_what_was_sent(crossing, acl, submodule):
    acl.install(submodule, ENTITY, FROM_SENDER, [(COUNT, COUNTER)])
    packets = [Packet(padding=length) for length in (0, 1, 99, 700, 1400)] + [Packet(version=6), Packet(version=0)]
    marker = crossing.check_flooded(*from_sender(*packets), (NEIGHBOUR, Packet(source="02:00:00:00:a0:0b")))
    assert acl.count(COUNTER) == (len(packets), sum(len(packet.build(marker)) for packet in packets))


def test_counters_are_cleared_one_by_one(crossing, acl, cpu):
    acl.install(SUBMODULE, ENTITY, FROM_SENDER, [(COUNT, COUNTER)])
    marker = crossing.check_flooded((SENDER, Packet()))
    octets = len(Packet().build(marker))
    assert cpu.result("adp_fp_clear_statistics", COUNTER + 1, OCTETS, COUNTER, FRAMES) == 0
    assert acl.count(COUNTER) == (0, octets)
    assert cpu.result("adp_fp_clear_statistics", 0, 0, COUNTER, OCTETS) == 0
    assert acl.count(COUNTER) == (0, 0)


# Frames that no rule matches


def test_port_drops_what_matches_no_rule(crossing, acl, cpu):
    acl.install(SUBMODULE, ENTITY, TO_5000, [(PERMIT,)])
    assert cpu.result("adp_fp_lookupMissAct_set", SENDER, MISS_DROP) == 0
    neighbours = (NEIGHBOUR, OTHER.but(source="02:00:00:00:a0:0b"))
    crossing.check([*from_sender(Packet(), OTHER), neighbours], crossing.flooded((SENDER, Packet()), neighbours))
    assert cpu.result("adp_fp_lookupMissAct_set", SENDER, MISS_NONE) == 0
    crossing.check_flooded((SENDER, OTHER))


@pytest.mark.parametrize("action", [MISS_COPY, MISS_TO_CPU], ids=["copied", "diverted"])
def test_frames_without_a_rule_go_to_the_cpu(crossing, acl, cpu, action):
    assert cpu.result("adp_fp_lookupMissAct_set", SENDER, action) == 0
    arrive = crossing.flooded((SENDER, OTHER)) if action == MISS_COPY else {}
    assert at_cpu(cpu, crossing.check(from_sender(OTHER), arrive))[0] == SENDER


def test_miss_action_of_a_set_of_ports(crossing, acl, cpu):
    assert cpu.result("adp_fp_lookupMissAct_pbmp_set", text_of({SENDER, RECEIVER, 40}), MISS_DROP) == 0
    sends = [(port, Packet(source=f"02:00:00:00:a0:{port:02}")) for port in (SENDER, NEIGHBOUR, RECEIVER)]
    crossing.check(sends, crossing.flooded(sends[1]))
