"""The rules' tables, full and empty again: the library's list and memory, the device's entries. Overlaps, refusals."""

import pathlib

import pytest
from acl import DROP, PERMIT, SET_DSCP
from crossing import NEIGHBOUR, SENDER
from adp.lab import Build
from adp.lab.rules import distinct_places
from adp.testing.packet import Packet

RULES = 900
L4_SOURCE, L4_DESTINATION = 27, 28
FIRST_PORT = 10000
IN_PORTS = 13
FIELD_RANGE, FIELD_SLICE, FIELD_EXISTS, FIELD_MISSING = -51, -52, -53, -54
UNKNOWN_SUBMODULE = 101
KIBIBYTE = 1024
# A listed rule takes more than 6 KiB. The heap's rounding, what the C library keeps for itself and what else the shell
# and the emulator come to use in the meantime stay far below what 200 rules take, less than a quarter of all.
RULE_MEMORY = 6 * KIBIBYTE
MEMORY_TOLERANCE = 200 * RULE_MEMORY
RULES_ONCE_MORE = 400


@pytest.fixture
def places(cpu):
    """900 rules on distinct entries, of all submodules that have any."""
    chosen = distinct_places(cpu.call("show g_stFpInfo")["value"], RULES)
    assert len(chosen) == RULES
    return chosen


def memory_of(cpu):
    """Resident memory of the process with the library, in octets."""
    status = pathlib.Path(f"/proc/{cpu.shell.pid}/status").read_text(encoding="ascii")
    line = next(line for line in status.splitlines() if line.startswith("VmRSS:"))
    return int(line.split()[1]) * KIBIBYTE


def install_all(acl, places, kind):
    """Each rule asks for a port of its own, so that no two are alike."""
    for number, place in enumerate(places):
        acl.install(place.submodule, place.entity, [(kind, FIRST_PORT + number)], [(PERMIT,)])


def ports_asked_for(acl, field):
    """{entry: port} of the rules on the device."""
    conditions = {number: row["qualifiers"] for number, row in acl.entries().items()}
    return {
        number: each["data"] for number, found in conditions.items() for each in found if each["field"] == field
    }


def test_900_rules_are_installed_replaced_and_deleted_without_a_trace(cpu, build, acl, places):
    hardware = set().union(*(place.entries for place in places))
    before = memory_of(cpu)
    install_all(acl, places, L4_SOURCE)
    assert acl.listed_rules() == RULES
    entries = acl.entries()
    assert set(entries) == hardware
    assert all(row["installed"] and not row["changed"] for row in entries.values())
    assert sorted(ports_asked_for(acl, "src_port").values()) == list(range(FIRST_PORT, FIRST_PORT + RULES))
    full = memory_of(cpu)
    assert full - before > RULES * RULE_MEMORY - MEMORY_TOLERANCE

    install_all(acl, places, L4_DESTINATION)
    assert acl.listed_rules() == RULES
    assert set(acl.entries()) == hardware
    assert sorted(ports_asked_for(acl, "dst_port").values()) == list(range(FIRST_PORT, FIRST_PORT + RULES))
    assert ports_asked_for(acl, "src_port") == {}
    assert abs(memory_of(cpu) - full) < MEMORY_TOLERANCE

    for place in places:
        assert acl.delete(place.submodule, place.entity) == 0
    assert acl.listed_rules() == 0
    assert acl.entries() == {}
    if not Build(build).is_emulated:
        assert memory_of(cpu) - before < MEMORY_TOLERANCE
    # The emulator does not give memory back, but what was freed is used again.
    install_all(acl, places[:RULES_ONCE_MORE], L4_SOURCE)
    assert memory_of(cpu) - full < MEMORY_TOLERANCE


# Two submodules, one entry


SHARED_ENTRY = 833
WIDE_OWNER, INTRUDER = (24, 11), (26, 0)


@pytest.fixture
def traced(cpu):
    """The driver calls of each library call, without the logging between them."""
    cpu.call("trace on")
    yield lambda line: [call for call in cpu.call(line)["trace"] if call.startswith("user_")]
    cpu.call("trace off")


def test_overlap_is_a_refused_creation_that_reprograms_the_other_rule(crossing, acl, traced):
    from_sender, from_neighbour = (SENDER, Packet()), (NEIGHBOUR, Packet(source="02:00:00:00:a0:0b"))
    acl.install(*WIDE_OWNER, [(IN_PORTS, {SENDER})], [(SET_DSCP, 46)])
    crossing.check([from_sender, from_neighbour], crossing.flooded((SENDER, Packet(dscp=46)), from_neighbour))

    calls = traced(acl.add_line(*INTRUDER, [(IN_PORTS, {NEIGHBOUR})], [(DROP,)]))
    refused = f"user_field_entry_create_id(handle=0, unit=0, group=3, entry={SHARED_ENTRY}) -> {FIELD_EXISTS} (field_exists)"
    assert calls[0] == refused
    assert {call.rpartition(" ")[2] for call in calls[1:]} == {"0"}, "every later step is carried out"
    assert acl.listed_rules() == 2

    # One entry: its condition is the new rule's, its actions are both rules'.
    entries = acl.entries()
    assert set(entries) == {SHARED_ENTRY}
    assert [each["ports"] for each in entries[SHARED_ENTRY]["qualifiers"]] == [[NEIGHBOUR]]
    assert {each["action"] for each in entries[SHARED_ENTRY]["actions"]} == {"set_dscp", "drop"}
    crossing.check([from_sender, from_neighbour], crossing.flooded(from_sender))


def test_deleting_one_of_two_overlapping_rules_takes_the_entry_from_both(crossing, acl):
    acl.install(*WIDE_OWNER, [(IN_PORTS, {SENDER})], [(DROP,)])
    acl.install(*INTRUDER, [(IN_PORTS, {NEIGHBOUR})], [(DROP,)])
    assert acl.delete(*INTRUDER) == 0
    assert (acl.entries(), acl.listed_rules()) == ({}, 1)
    crossing.check_flooded((SENDER, Packet()), (NEIGHBOUR, Packet(source="02:00:00:00:a0:0b")))
    assert acl.delete(*WIDE_OWNER) == FIELD_MISSING


def test_creation_that_is_refused_is_told_where_no_condition_follows(acl):
    acl.install(*WIDE_OWNER, [], [(PERMIT,)])
    assert acl.add(*INTRUDER, [], [(PERMIT,)]) == FIELD_EXISTS
    acl.delete(*WIDE_OWNER)


# What the driver refuses


REFUSED = {
    "behind the last entry": (1, 128, FIELD_RANGE),
    "before the first entry": (43, 0, FIELD_RANGE),
    "in another group's slice": (8, 128, FIELD_SLICE),
    "before its group's slice": (42, 8, FIELD_SLICE),
}


@pytest.mark.parametrize("name", REFUSED)
def test_entry_outside_its_slice_is_refused_and_listed_all_the_same(acl, traced, name):
    submodule, entity, code = REFUSED[name]
    calls = traced(acl.add_line(submodule, entity, [(L4_SOURCE, 1)], [(DROP,)]))
    assert calls[0].startswith("user_field_entry_create_id") and f") -> {code} (" in calls[0]
    assert acl.entries() == {}
    assert acl.listed_rules() == 1, "a rule that failed is recorded, so that it can be deleted"
    assert acl.delete(submodule, entity) < 0
    assert acl.listed_rules() == 0


def test_refused_rule_gives_a_negative_status(acl):
    assert acl.add(8, 128, [(L4_SOURCE, 1)], [(DROP,)]) < 0


def test_unknown_submodule_reaches_neither_list_nor_driver(acl, traced):
    assert traced(acl.add_line(44, 0, [], [(DROP,)])) == []
    assert acl.add(44, 0, [], [(DROP,)]) == UNKNOWN_SUBMODULE
    assert acl.listed_rules() == 0
