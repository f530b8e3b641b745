"""Mirrors: a port's frames, or those that a rule selects, are copied to another port, octet for octet."""

import pytest
from acl import DROP, MIRROR, SET_DSCP
from crossing import NEIGHBOUR, RECEIVER, SENDER
from adp.testing.packet import Packet

MIRROR_PORT = 26
SECOND_MIRROR_PORT = 1
INGRESS, EGRESS = 1, 2
SESSION = 2
SUBMODULES = {"single": 20, "pair": 2}
ENTITY = 1
TO_5000 = [(13, {SENDER}), (28, 5000)]
SESSION_RANGE, SAME_PORT, SESSION_BUSY, NO_SUCH_MIRROR = -60, -61, -62, -63
REPLY = Packet(source="02:00:00:00:a0:16", destination="02:00:00:00:a0:17", padding=300)


@pytest.fixture
def mirrors(cpu):
    """Mirroring set up anew, and forgotten afterwards."""
    assert cpu.result("adp_mirror_init") == 0
    yield lambda: {row["session"]: row for row in cpu.lab.device.control("mirrors")["mirrors"]}
    assert cpu.result("adp_mirror_init") == 0


@pytest.fixture
def mirrored(cpu, mirrors):
    """Copies the frames of a port to MIRROR_PORT."""
    return lambda port, directions: cpu.result("adp_add_port_mirror", port, MIRROR_PORT, directions, SESSION)


DIRECTIONS = {
    "ingress": (INGRESS, [Packet()]),
    "egress": (EGRESS, [REPLY]),
    "both": (INGRESS | EGRESS, [Packet(), REPLY]),
}


@pytest.mark.parametrize("name", DIRECTIONS)
def test_port_is_mirrored_octet_for_octet_until_it_is_deleted(crossing, cpu, mirrors, mirrored, name):
    directions, copied = DIRECTIONS[name]
    assert mirrored(SENDER, directions) == 0
    sends = [(SENDER, Packet()), (RECEIVER, REPLY)]
    crossing.check(sends, {**crossing.flooded(*sends), MIRROR_PORT: copied})
    assert cpu.result("adp_del_port_mirror", SENDER, MIRROR_PORT, 0, SESSION) == 0
    assert mirrors() == {}
    crossing.check_flooded(*sends)


def test_frame_that_is_dropped_is_mirrored_as_it_came_in(crossing, mirrored, acl):
    acl.install(SUBMODULES["single"], ENTITY, TO_5000, [(DROP,)])
    assert mirrored(SENDER, INGRESS) == 0
    crossing.check([(SENDER, Packet())], {MIRROR_PORT: [Packet()]})


def test_frame_is_mirrored_as_it_leaves(crossing, mirrored, acl):
    acl.install(SUBMODULES["single"], ENTITY, TO_5000, [(SET_DSCP, 46)])
    assert mirrored(NEIGHBOUR, EGRESS) == 0
    arrive = crossing.flooded((SENDER, Packet(dscp=46)))
    crossing.check([(SENDER, Packet())], {**arrive, MIRROR_PORT: [Packet(dscp=46)]})


def test_frame_between_two_mirrored_ports_is_copied_for_each(crossing, mirrored):
    for port in (SENDER, RECEIVER):
        assert mirrored(port, INGRESS | EGRESS) == 0
    arrive = crossing.flooded((SENDER, Packet()))
    crossing.check([(SENDER, Packet())], {**arrive, MIRROR_PORT: [Packet(), Packet()]})


def test_no_direction_mirrors_nothing(crossing, mirrors, mirrored):
    assert mirrored(SENDER, 0) == 0
    assert mirrors() == {}
    crossing.check_flooded((SENDER, Packet()))


def test_disabled_session_copies_nothing_until_it_is_enabled(crossing, cpu, mirrors, mirrored):
    assert mirrored(SENDER, INGRESS) == 0
    assert cpu.result("adp_check_set_mirror_disable", SESSION, 0, 0, 1) == 0
    assert not mirrors()[SESSION - 1]["disabled"], "asking changes nothing"
    assert cpu.result("adp_set_mirror_disable", SESSION, 0, 0, 1) == 0
    crossing.check_flooded((SENDER, Packet()))
    assert cpu.result("adp_set_mirror_disable", SESSION, 0, 0, 0) == 0
    crossing.check([(SENDER, Packet())], {**crossing.flooded((SENDER, Packet())), MIRROR_PORT: [Packet()]})


def test_sessions_are_shown_as_the_software_set_them(cpu, mirrors, mirrored):
    assert mirrored(SENDER, INGRESS | EGRESS) == 0
    assert mirrored(NEIGHBOUR, INGRESS) == 0
    assert cpu.result("adp_set_flow_mirror", SECOND_MIRROR_PORT, SESSION + 1) == 0
    shown = mirrors()
    assert set(shown) == {SESSION - 1, SESSION}
    row = shown[SESSION - 1]
    assert (row["ingress"], row["egress"], row["destination"]) == ([SENDER, NEIGHBOUR], [SENDER], MIRROR_PORT)
    assert (shown[SESSION]["flow"], shown[SESSION]["ingress"]) == (SECOND_MIRROR_PORT, [])


@pytest.mark.parametrize("submodule", SUBMODULES.values(), ids=SUBMODULES)
def test_rule_selects_the_flow_that_is_mirrored(crossing, cpu, mirrors, acl, submodule):
    assert cpu.result("adp_set_flow_mirror", MIRROR_PORT, SESSION) == 0
    acl.install(submodule, ENTITY, TO_5000, [(MIRROR, SESSION - 1), (SET_DSCP, 46)])
    other = Packet(destination_port=5001)
    sends = [(SENDER, Packet()), (SENDER, other), (NEIGHBOUR, REPLY)]
    arrive = crossing.flooded((SENDER, Packet(dscp=46)), *sends[1:])
    crossing.check(sends, {**arrive, MIRROR_PORT: [Packet()]})
    assert acl.delete(submodule, ENTITY) == 0
    crossing.check_flooded(*sends)


def test_flow_mirror_of_a_disabled_session_copies_nothing(crossing, cpu, mirrors, acl):
    assert cpu.result("adp_set_flow_mirror", MIRROR_PORT, SESSION) == 0
    acl.install(SUBMODULES["single"], ENTITY, TO_5000, [(MIRROR, SESSION - 1)])
    assert cpu.result("adp_set_mirror_disable", SESSION, 0, 0, 1) == 0
    crossing.check_flooded((SENDER, Packet()))
    assert cpu.result("adp_set_mirror_disable", SESSION, 0, 0, 0) == 0
    crossing.check([(SENDER, Packet())], {**crossing.flooded((SENDER, Packet())), MIRROR_PORT: [Packet()]})


def test_what_cannot_be_mirrored_is_refused(cpu, mirrors, mirrored):
    assert cpu.result("adp_add_port_mirror", SENDER, MIRROR_PORT, INGRESS, 5) == SESSION_RANGE
    assert cpu.result("adp_add_port_mirror", SENDER, SENDER, INGRESS, SESSION) == SAME_PORT
    assert cpu.result("adp_del_port_mirror", SENDER, MIRROR_PORT, 0, SESSION) == NO_SUCH_MIRROR
    assert mirrored(SENDER, INGRESS) == 0
    assert cpu.result("adp_add_port_mirror", NEIGHBOUR, SECOND_MIRROR_PORT, INGRESS, SESSION) == SESSION_BUSY
    assert cpu.result("adp_del_port_mirror", SENDER, SECOND_MIRROR_PORT, 0, SESSION) == NO_SUCH_MIRROR
    assert cpu.result("adp_add_port_mirror", "agg1", MIRROR_PORT, INGRESS, SESSION) < 0
    assert list(mirrors()) == [SESSION - 1]
