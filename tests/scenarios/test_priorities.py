"""Priorities from 802.1p, DSCP and the port, and the queues that they choose, by which queue's counter moves."""

import adp
import pytest
from acl import REMARK_DSCP, REMARK_PRIORITY
from crossing import NEIGHBOUR, PORTS, RECEIVER, SENDER, VLAN
from adp.lab.frames import vlan_tag
from adp.testing.packet import Packet
from priorities import (
    DOT1P_MAP,
    DSCP_MAP,
    DSCPS,
    NO_MAP,
    PRIORITIES,
    TRUST_BOTH,
    TRUST_DSCP,
    TRUST_PORT,
    TRUST_TAG,
    usual_row,
)

RULE = 3
MAP_REFUSED, DRIVER_FAILED, TYPE_REFUSED = 101, 102, 201
BAD_ARGUMENT, NO_PORT, QUEUE_RANGE = -3, -4, -110
NO_QUEUE, NO_PRIORITY, NO_TRUST = 8, 8, 4
FOREIGN = 0x20000001
OWN_PRIORITY = 6
USUAL_QUEUES = list(PRIORITIES)
MIRRORED_QUEUES = USUAL_QUEUES[::-1]


def at_both(queue):
    """The queue on the two ports that a frame of the sender leaves by."""
    return {NEIGHBOUR: queue, RECEIVER: queue}


def leaves(priorities, tagging, tags=b"", **probe):
    """(queues, tags) of a frame from the sender that is no IP packet."""
    arrived = {}
    queues = priorities.queues(lambda: arrived.update(tagging.leaves(SENDER, tags, **probe)))
    return queues, arrived


# From the 802.1p priority


@pytest.mark.parametrize("priority", PRIORITIES)
def test_each_priority_has_its_queue_at_power_on(priorities, priority):
    assert priorities.queues_of(Packet(priority=priority)) == at_both(priority)


def test_dot1p_map_chooses_the_queues(priorities):
    assert priorities.create_dot1p_map(MIRRORED_QUEUES) == 0
    assert priorities.dot1p_map() == (0, MIRRORED_QUEUES)
    for priority in PRIORITIES:
        assert priorities.queues_of(Packet(priority=priority)) == at_both(7 - priority)


def test_deleted_dot1p_map_leaves_two_priorities_to_a_queue(cpu, priorities):
    assert priorities.create_dot1p_map(MIRRORED_QUEUES) == 0
    assert cpu.result("adp_delete_dot1p_map", DOT1P_MAP) == 0
    assert priorities.dot1p_map() == (0, [0, 0, 1, 1, 2, 2, 3, 3])
    for priority in PRIORITIES:
        assert priorities.queues_of(Packet(priority=priority)) == at_both(priority // 2)


def test_dot1p_map_of_another_kind_changes_nothing(cpu, priorities):
    assert priorities.create_dot1p_map(MIRRORED_QUEUES, NO_MAP) == 0
    assert priorities.create_dot1p_map(MIRRORED_QUEUES, DSCP_MAP) == MAP_REFUSED
    assert cpu.result("adp_delete_dot1p_map", NO_MAP) == 0
    assert priorities.shown()["queues"] == USUAL_QUEUES


def test_refused_row_leaves_the_rows_before_it_written(priorities):
    assert priorities.create_dot1p_map([7, 7, 7, NO_QUEUE, 7, 7, 7, 7]) == DRIVER_FAILED
    assert priorities.shown()["queues"] == [7, 7, 7, 3, 4, 5, 6, 7]


def test_single_rows_of_the_queue_map(cpu, priorities):
    assert cpu.result("adp_cosq_mapping_set", 0, 0, 3, 5) == 0
    assert priorities.read("adp_cosq_mapping_get", 0, 0, 3, output="queue") == (0, 5)
    assert priorities.queues_of(Packet(priority=3)) == at_both(5)
    assert cpu.result("adp_cosq_mapping_set", 0, 0, 3, NO_QUEUE) == QUEUE_RANGE
    assert cpu.result("adp_cosq_mapping_set", 0, 0, NO_PRIORITY, 5) == BAD_ARGUMENT
    assert priorities.read("adp_cosq_mapping_get", 0, 0, NO_PRIORITY, output="queue") == (BAD_ARGUMENT, 99)


def test_ports_own_row_goes_before_the_chips(priorities):
    assert priorities.set_own_queue(RECEIVER, 3, 7) == 0
    assert priorities.read("adp_cosq_port_mapping_get", RECEIVER, 3, output="queue") == (0, 7)
    assert priorities.queues_of(Packet(priority=3)) == {NEIGHBOUR: 3, RECEIVER: 7}
    assert priorities.create_dot1p_map([1] * len(PRIORITIES)) == 0
    assert priorities.queues_of(Packet(priority=3)) == {NEIGHBOUR: 1, RECEIVER: 7}
    assert priorities.queues_of(Packet(priority=4)) == at_both(1)


def test_ports_own_row_is_refused_on_other_interfaces(cpu, priorities):
    for interface, status in ((adp.agg(1), DRIVER_FAILED), (FOREIGN, TYPE_REFUSED)):
        assert cpu.result("adp_cosq_port_mapping_set", interface, 3, 7) == status
    assert priorities.set_own_queue(RECEIVER, 3, NO_QUEUE) == DRIVER_FAILED
    assert all(row["queues"] == USUAL_QUEUES for row in priorities.shown()["ports"])


def test_remap_replaces_the_priorities_in_a_ports_tags(cpu, priorities):
    assert priorities.remap(SENDER, 2, 7) == 0
    assert priorities.queues_of(Packet(priority=2), Packet(priority=7)) == at_both(7)
    assert priorities.queues_of(Packet(priority=3)) == at_both(3)
    neighbours = Packet(source="02:00:00:00:a0:0b", priority=2)
    assert priorities.queues_of(neighbours, sender=NEIGHBOUR) == {SENDER: 2, RECEIVER: 2}
    assert cpu.result("adp_set_dot1p_pri_remap", 0xFFFFFFFF, 2, 0, 7, 0, 0, 0, 0) == NO_PORT
    assert priorities.remap(SENDER, 2, NO_PRIORITY) == BAD_ARGUMENT


def test_cpu_port_has_queues_too(cpu, priorities, tagging):
    cpu.vlan_ports(VLAN, {*PORTS, 0})
    before = priorities.port(0)["tx_queues"]
    _, tags = tagging.reaches_cpu(SENDER, vlan_tag(VLAN, 5))
    assert tags == vlan_tag(VLAN, 5)
    assert priorities.port(0)["tx_queues"][5] == before[5] + 1


# From the port


SETTERS = {
    "adp_set_port_cos_map": lambda cpu, value: cpu.result("adp_set_port_cos_map", SENDER, value),
    "adp_port_cos_map_set": lambda cpu, value: cpu.result("adp_port_cos_map_set", SENDER, value),
    "adp_add_dot1p_assign": lambda cpu, value: cpu.result("adp_add_dot1p_assign", NO_MAP, SENDER, 0, 0, 0, value),
}


@pytest.mark.parametrize("setter", SETTERS)
def test_untagged_frames_get_the_ports_priority(cpu, priorities, tagging, setter):
    assert SETTERS[setter](cpu, OWN_PRIORITY) == 0
    assert priorities.read("adp_get_port_cos_map", SENDER, output="priority") == (0, OWN_PRIORITY)
    assert priorities.read("adp_port_cos_map_get", SENDER, output="cos") == (0, OWN_PRIORITY)
    tag = vlan_tag(VLAN, OWN_PRIORITY)
    assert leaves(priorities, tagging) == (at_both(OWN_PRIORITY), {NEIGHBOUR: tag, RECEIVER: tag})
    assert priorities.queues_of(Packet(priority=2)) == at_both(2), "a tag has a priority of its own"


def test_assignment_is_taken_back(cpu, priorities, tagging):
    assert SETTERS["adp_add_dot1p_assign"](cpu, OWN_PRIORITY) == 0
    assert cpu.result("adp_del_dot1p_assign", NO_MAP, SENDER, 0, 0, 0, 0) == 0
    assert leaves(priorities, tagging)[0] == at_both(0)


def test_port_without_trust_gives_all_frames_its_own_priority(cpu, priorities, tagging):
    priorities.trust(TRUST_PORT)
    assert cpu.result("adp_set_port_cos_map", SENDER, OWN_PRIORITY) == 0
    packet = Packet(priority=2, dscp=46)
    assert priorities.queues_of(packet, packet.but(priority=OWN_PRIORITY)) == at_both(OWN_PRIORITY)
    assert leaves(priorities, tagging)[0] == at_both(OWN_PRIORITY)
    neighbours = packet.but(source="02:00:00:00:a0:0b")
    assert priorities.queues_of(neighbours, sender=NEIGHBOUR) == {SENDER: 2, RECEIVER: 2}


def test_ports_priority_is_refused_where_it_has_no_meaning(cpu, priorities):
    assert cpu.result("adp_set_port_cos_map", SENDER, NO_PRIORITY) == DRIVER_FAILED
    assert cpu.result("adp_port_cos_map_set", SENDER, NO_PRIORITY) == BAD_ARGUMENT
    assert cpu.result("adp_port_cos_map_set", FOREIGN, 1) == NO_PORT
    assert cpu.result("adp_set_port_cos_map", adp.agg(1), 1) == TYPE_REFUSED
    assert cpu.result("adp_add_dot1p_assign", NO_MAP, adp.agg(1), 0, 0, 0, 1) == DRIVER_FAILED
    assert {row["priority"] for row in priorities.shown()["ports"]} == {0}


# From the DSCP


@pytest.mark.parametrize("mode", [TRUST_DSCP, TRUST_BOTH])
@pytest.mark.parametrize("version", [4, 6])
def test_trusted_dscp_gives_the_priority(priorities, mode, version):
    priorities.trust(mode)
    for dscp in (0, 8, 46, 63):
        packet = Packet(version=version, priority=2, dscp=dscp)
        assert priorities.queues_of(packet, packet.but(priority=dscp // 8)) == at_both(dscp // 8)


def test_trust_is_read_back_and_has_four_modes(cpu, priorities):
    for mode in (TRUST_PORT, TRUST_DSCP, TRUST_BOTH, TRUST_TAG):
        priorities.trust(mode)
        assert priorities.read("adp_get_port_pri_trust_mode", SENDER, output="mode") == (0, mode)
    assert cpu.result("adp_set_port_pri_trust_mode", SENDER, NO_TRUST) == DRIVER_FAILED
    assert cpu.result("adp_set_port_pri_trust_mode", adp.agg(1), TRUST_PORT) == DRIVER_FAILED
    assert cpu.result("adp_set_port_pri_trust_mode", FOREIGN, TRUST_PORT) == TYPE_REFUSED
    assert {row["trust"] for row in priorities.shown()["ports"]} == {"802.1p"}


def test_frames_without_a_dscp_fall_back_on_their_tags(priorities):
    priorities.trust(TRUST_BOTH)
    assert priorities.queues_of(Packet(version=0, priority=3)) == at_both(3)


def test_initialisation_makes_them_fall_back_on_the_port(cpu, priorities):
    priorities.trust(TRUST_BOTH)
    assert cpu.result("adp_qos_init") == 0
    assert priorities.port(SENDER)["trust"] == "802.1p", "the initialisation sets the trust of all ports"
    assert cpu.result("adp_set_port_cos_map", SENDER, OWN_PRIORITY) == 0
    priorities.trust(TRUST_DSCP)
    packet = Packet(version=0, priority=3)
    assert priorities.queues_of(packet, packet.but(priority=OWN_PRIORITY)) == at_both(OWN_PRIORITY)
    priorities.trust(TRUST_BOTH)
    assert priorities.queues_of(packet) == at_both(3)


def test_dscp_map_gives_priorities_and_other_dscps(priorities):
    rows = [(63 - dscp, dscp % 8) for dscp in DSCPS]
    assert priorities.create_dscp_map(rows) == 0
    assert priorities.dscp_map() == (0, rows)
    priorities.trust(TRUST_DSCP)
    for dscp in (0, 21, 46):
        packet = Packet(priority=2, dscp=dscp, congestion=1)
        arrives = packet.but(priority=dscp % 8, dscp=63 - dscp)
        assert priorities.queues_of(packet, arrives) == at_both(dscp % 8)
    priorities.trust(TRUST_TAG)
    assert priorities.queues_of(Packet(priority=2, dscp=46)) == at_both(2), "the map is for those who trust it"


def test_deleted_dscp_map_is_that_of_the_beginning(cpu, priorities):
    assert priorities.create_dscp_map([(0, 7)] * len(DSCPS)) == 0
    assert cpu.result("adp_delete_dscp_map", DSCP_MAP) == 0
    assert priorities.dscp_map() == (0, [usual_row(dscp) for dscp in DSCPS])
    priorities.trust(TRUST_DSCP)
    assert priorities.queues_of(Packet(dscp=46), Packet(dscp=46, priority=5)) == at_both(5)


def test_dscp_map_of_another_kind_changes_nothing(priorities):
    assert priorities.create_dscp_map([(0, 7)] * len(DSCPS), NO_MAP) == 0
    assert priorities.create_dscp_map([(0, 7)] * len(DSCPS), DOT1P_MAP) == MAP_REFUSED
    assert priorities.create_dscp_map([(64, 7)] * len(DSCPS)) == DRIVER_FAILED
    assert priorities.dscp_map() == (0, [usual_row(dscp) for dscp in DSCPS])


def test_single_rows_of_the_dscp_map(cpu, priorities):
    assert cpu.result("adp_port_dscp_map_set", 0, 46, 10, 1) == 0
    answer = cpu.call("adp_port_dscp_map_get", 0, 46, "mapped=99", "priority=99")
    assert (answer["result"], answer["outputs"]) == (0, {"mapped": 10, "priority": 1})
    assert cpu.result("adp_dscp_map_set", 0, 0, 46, 7) == 0
    assert priorities.read("adp_dscp_map_get", 0, 0, 46, output="priority") == (0, 7)
    priorities.trust(TRUST_DSCP)
    assert priorities.queues_of(Packet(dscp=46), Packet(dscp=10, priority=7)) == at_both(7)
    assert cpu.result("adp_port_dscp_map_set", 0, 64, 10, 1) == BAD_ARGUMENT
    assert cpu.result("adp_dscp_map_set", 0, 0, 46, NO_PRIORITY) == BAD_ARGUMENT


# And the field processor


def test_rules_have_the_last_word(acl, priorities):
    assert priorities.create_dscp_map([(20, 1)] * len(DSCPS)) == 0
    priorities.trust(TRUST_DSCP)
    assert acl.remark(RULE, {SENDER}, REMARK_PRIORITY, 6) == 0
    packet = Packet(priority=2, dscp=46)
    assert priorities.queues_of(packet, packet.but(priority=6, dscp=20)) == at_both(6)
    assert acl.delete_remark(RULE) == 0
    dscp = 46
    assert acl.remark(RULE, {SENDER}, REMARK_DSCP, 30, 8, dscp) == 0, "rules see the DSCP that the packet came with"
    assert priorities.queues_of(packet, packet.but(priority=1, dscp=30)) == at_both(1)
