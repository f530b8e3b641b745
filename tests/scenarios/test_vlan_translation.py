"""VLAN translation on real frames, both ways, and the tables by port and VLAN behind it and behind double tags."""

import pytest
from inside import ACCESS, CUSTOMER, INSIDE, OTHER_CUSTOMER, OTHER_INSIDE, OUTSIDE, PORTS, TRUNK, at_others, make_vlans
from adp.lab.frames import vlan_tag
from tagging import KEEP, UNTOUCHED

LAST_VLAN = 4094
CPU_PLACE, NO_PLACE = 0, 32
BAD_ARGUMENT, NO_PORT, CPU_PORT, VLAN_RANGE = -3, -4, -6, -10
EXISTS, MISSING, FULL = -80, -81, -82
READ_FAILED = 102
PRIORITIES = 8


@pytest.fixture
def vlans(cpu, tagging):
    make_vlans(cpu)
    return tagging


# On frames


@pytest.mark.parametrize("priority, arrives", [(KEEP, 3), (0, 0), (7, 7)])
def test_ingress_translation(vlans, priority, arrives):
    vlans.ingress.put(CUSTOMER, OUTSIDE, INSIDE, priority)
    assert vlans.leaves(CUSTOMER, vlan_tag(OUTSIDE, 3)) == at_others(CUSTOMER, INSIDE, arrives)
    assert vlans.leaves(OTHER_CUSTOMER, vlan_tag(OUTSIDE, 3)) == {}, "the entry is another port's"
    assert vlans.leaves(CUSTOMER, vlan_tag(INSIDE, 3)) == at_others(CUSTOMER, INSIDE, 3), "the entry is another VLAN's"


@pytest.mark.parametrize("priority, arrives", [(KEEP, 3), (0, 0), (7, 7)])
def test_egress_translation(vlans, priority, arrives):
    for port in (CUSTOMER, ACCESS):
        vlans.egress.put(port, INSIDE, OUTSIDE, priority)
    translated = {CUSTOMER: vlan_tag(OUTSIDE, arrives)}
    assert vlans.leaves(TRUNK, vlan_tag(INSIDE, 3)) == {**at_others(TRUNK, INSIDE, 3), **translated}
    assert vlans.leaves(CUSTOMER, vlan_tag(OUTSIDE, 3)) == {}, "what leaves so does not come in so"


@pytest.mark.parametrize("priorities", [(KEEP, KEEP), (6, 1)])
def test_translation_both_ways(lab, vlans, priorities):
    there, back = priorities
    vlans.ingress.put(CUSTOMER, OUTSIDE, INSIDE, there)
    vlans.egress.put(CUSTOMER, INSIDE, OUTSIDE, back)
    station, answering = lab.mac(CUSTOMER), lab.mac(TRUNK)
    kept_there, kept_back = (3 if priority == KEEP else priority for priority in priorities)
    asked = vlans.leaves(CUSTOMER, vlan_tag(OUTSIDE, 3), source=station)
    assert asked == at_others(CUSTOMER, INSIDE, kept_there)
    answer = {"destination": station, "source": answering}
    assert vlans.leaves(TRUNK, vlan_tag(INSIDE, 3), **answer) == {CUSTOMER: vlan_tag(OUTSIDE, kept_back)}
    once_more = {"destination": answering, "source": station}
    assert vlans.leaves(CUSTOMER, vlan_tag(OUTSIDE, 3), **once_more) == {TRUNK: vlan_tag(INSIDE, kept_there)}


def test_two_customers_use_the_same_vlan_apart(vlans):
    for port, inside in ((CUSTOMER, INSIDE), (OTHER_CUSTOMER, OTHER_INSIDE)):
        vlans.ingress.put(port, OUTSIDE, inside)
        vlans.egress.put(port, inside, OUTSIDE)
    assert vlans.leaves(CUSTOMER, vlan_tag(OUTSIDE)) == at_others(CUSTOMER, INSIDE)
    assert vlans.leaves(OTHER_CUSTOMER, vlan_tag(OUTSIDE)) == at_others(OTHER_CUSTOMER, OTHER_INSIDE)


def test_inner_tags_and_untagged_frames_are_not_translated(cpu, vlans):
    cpu.set_pvid(CUSTOMER, OTHER_INSIDE)
    for vid in (OUTSIDE, OTHER_INSIDE):
        vlans.ingress.put(CUSTOMER, vid, INSIDE)
    inner = vlan_tag(OUTSIDE, 1)
    through = at_others(CUSTOMER, INSIDE)
    assert vlans.leaves(CUSTOMER, vlan_tag(OUTSIDE) + inner) == {port: tag + inner for port, tag in through.items()}
    assert vlans.leaves(CUSTOMER) == at_others(CUSTOMER, OTHER_INSIDE)
    assert vlans.leaves(CUSTOMER, vlan_tag(0, 4)) == at_others(CUSTOMER, OTHER_INSIDE, 4)


def test_cpu_sees_the_vlan_inside(cpu, vlans):
    cpu.vlan_ports(INSIDE, PORTS | {0})
    vlans.ingress.put(CUSTOMER, OUTSIDE, INSIDE, 6)
    vlans.egress.put(CUSTOMER, INSIDE, OUTSIDE)
    arrived, tags = vlans.reaches_cpu(CUSTOMER, vlan_tag(OUTSIDE))
    assert tags == vlan_tag(INSIDE, 6)
    status, descriptor = cpu.receive(arrived, check=1, vlan_tag=18)
    assert (status, descriptor["intf"]) == (0, CUSTOMER)


def test_deleted_translations_no_longer_work(vlans):
    vlans.ingress.put(CUSTOMER, OUTSIDE, INSIDE)
    vlans.egress.put(CUSTOMER, INSIDE, OUTSIDE)
    assert vlans.ingress.delete(vlans.ingress.place(CUSTOMER), OUTSIDE) == 0
    assert vlans.leaves(CUSTOMER, vlan_tag(OUTSIDE)) == {}
    assert vlans.leaves(TRUNK, vlan_tag(INSIDE))[CUSTOMER] == vlan_tag(OUTSIDE)
    assert vlans.egress.delete_all() == 0
    assert vlans.leaves(TRUNK, vlan_tag(INSIDE)) == at_others(TRUNK, INSIDE)


# The tables


@pytest.fixture(params=["ingress", "egress", "double_tags"])
def table(request, tagging):
    return getattr(tagging, request.param)


def read_failure(table, status):
    """What a read answers: the library has a status of its own for those that go by interface."""
    return READ_FAILED if table.place is int else status


def test_entries_are_read_back(table):
    written = {
        (CUSTOMER, OUTSIDE): (INSIDE, KEEP),
        (CUSTOMER, LAST_VLAN): (1, 0),
        (TRUNK, OUTSIDE): (LAST_VLAN, 7),
        (26, 1): (INSIDE, 3),
    }
    for key, change in written.items():
        table.put(*key, *change)
    assert {key: table.get(table.place(key[0]), key[1]) for key in written} == {
        key: (0, change) for key, change in written.items()
    }
    assert table.entries() == written


def test_entry_is_added_once_and_deleted_once(table):
    place = table.place(CUSTOMER)
    table.put(CUSTOMER, OUTSIDE, INSIDE, 3)
    assert table.add(place, OUTSIDE, OTHER_INSIDE) == EXISTS
    assert table.get(place, OUTSIDE) == (0, (INSIDE, 3))
    assert (table.delete(place, OUTSIDE), table.delete(place, OUTSIDE)) == (0, MISSING)
    assert table.get(place, OUTSIDE) == (read_failure(table, MISSING), UNTOUCHED)
    assert table.entries() == {}


def test_all_entries_of_one_table_are_deleted(tagging, table):
    tables = (tagging.ingress, tagging.egress, tagging.double_tags)
    for each in tables:
        for port in (CUSTOMER, TRUNK):
            each.put(port, OUTSIDE, INSIDE)
    assert table.delete_all() == 0
    assert [len(each.entries()) for each in tables] == [0 if each is table else 2 for each in tables]
    assert table.delete_all() == 0, "there may be none"


def test_only_16_bits_of_vlans_count(table):
    place = table.place(CUSTOMER)
    assert table.add(place, 0x10000 | OUTSIDE, 0xFFFF0000 | INSIDE) == 0
    assert table.entries() == {(CUSTOMER, OUTSIDE): (INSIDE, KEEP)}
    assert table.get(place, 0x20000 | OUTSIDE) == (0, (INSIDE, KEEP))
    assert table.delete(place, 0x30000 | OUTSIDE) == 0
    assert table.entries() == {}


@pytest.mark.parametrize(
    "vid, new_vid, priority, kind, status",
    [
        (0, INSIDE, KEEP, 0, VLAN_RANGE),
        (4095, INSIDE, KEEP, 0, VLAN_RANGE),
        (OUTSIDE, 0, KEEP, 0, VLAN_RANGE),
        (OUTSIDE, 4095, KEEP, 0, VLAN_RANGE),
        (OUTSIDE, 0x1005, KEEP, 0, VLAN_RANGE),
        (OUTSIDE, INSIDE, PRIORITIES, 0, BAD_ARGUMENT),
        (OUTSIDE, INSIDE, KEEP - 1, 0, BAD_ARGUMENT),
        (OUTSIDE, INSIDE, KEEP, 1, BAD_ARGUMENT),
    ],
)
def test_meaningless_entries_are_refused(table, vid, new_vid, priority, kind, status):
    assert table.add(table.place(CUSTOMER), vid, new_vid, priority, kind) == status
    assert table.entries() == {}


def test_unknown_actions_and_kinds_of_deletion_are_refused(table):
    place = table.place(CUSTOMER)
    if table.has_action:
        assert table.add(place, OUTSIDE, INSIDE, action=1) == BAD_ARGUMENT
    table.put(CUSTOMER, OUTSIDE, INSIDE)
    assert table.delete(place, OUTSIDE, kind=1) == BAD_ARGUMENT
    assert table.entries() == {(CUSTOMER, OUTSIDE): (INSIDE, KEEP)}


@pytest.mark.parametrize("place, status", [(CPU_PLACE, CPU_PORT), (NO_PLACE, NO_PORT)])
def test_only_user_ports_have_entries(table, place, status):
    assert table.add(place, OUTSIDE, INSIDE) == status
    assert table.delete(place, OUTSIDE) == status
    assert table.get(place, OUTSIDE) == (read_failure(table, status), UNTOUCHED)


def test_full_table_refuses_until_there_is_room(lab, table):
    capacity = lab.device.control("translations")["capacity"]
    place = table.place(TRUNK)
    first = LAST_VLAN - capacity + 1
    assert [table.add(place, vid, INSIDE) for vid in range(first, LAST_VLAN + 1)] == [0] * capacity
    assert table.add(table.place(CUSTOMER), OUTSIDE, INSIDE) == FULL
    assert table.delete(place, LAST_VLAN) == 0
    table.put(CUSTOMER, OUTSIDE, INSIDE)
    assert len(table.entries()) == capacity
