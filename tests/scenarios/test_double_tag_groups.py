"""Double tags of an aggregation interface: set on every active member, read from the management port."""

import adp
import pytest
from adp.lab.frames import vlan_tag
from tagging import EXTERNAL, INTERNAL, KEEP, OLD_PROVIDER_TPID, ORDINARY_TPID, PROVIDER_TPID, UNTOUCHED

GROUP, EMPTY_GROUP = 2, 3
MEMBERS = (3, 9, 22)
CUSTOMER, NEIGHBOUR = 5, 6
SERVICE, CUSTOMERS_VLAN = 500, 10
MEMBER_FAILED = READ_FAILED = 102
BAD_GROUP = -1


@pytest.fixture
def members(cpu, tagging):
    """A group of three ports; its tags are put back while they still are its members."""
    cpu.form_group(GROUP, MEMBERS)
    yield tagging
    tagging.tidy()


def test_mode_and_tpid_are_set_on_every_member(members):
    interface = adp.agg(GROUP)
    assert (members.set_mode(interface, INTERNAL), members.set_tpid(interface, 0x10000 | PROVIDER_TPID)) == (0, 0)
    dressed = dict.fromkeys(MEMBERS, ("internal", PROVIDER_TPID))
    assert members.dressed({*MEMBERS, CUSTOMER}) == {**dressed, CUSTOMER: ("off", ORDINARY_TPID)}
    assert (members.mode(interface), members.tpid(interface)) == ((0, INTERNAL), (0, PROVIDER_TPID))


def test_only_the_members_of_the_moment_are_set(cpu, members):
    interface, gone = adp.agg(GROUP), MEMBERS[1]
    assert cpu.result("adp_del_agg_member", interface, 1, f"[{gone}]") == 0
    members.dress(interface, EXTERNAL, OLD_PROVIDER_TPID)
    rest = {port: ("external", OLD_PROVIDER_TPID) for port in MEMBERS if port != gone}
    assert members.dressed(MEMBERS) == {**rest, gone: ("off", ORDINARY_TPID)}


def test_reads_ask_the_management_port(cpu, members):
    cpu.give_management_port(GROUP, CUSTOMER)
    members.dress(CUSTOMER, EXTERNAL, OLD_PROVIDER_TPID)
    members.double_tags.put(CUSTOMER, CUSTOMERS_VLAN, SERVICE, 4)
    interface = adp.agg(GROUP)
    assert (members.mode(interface), members.tpid(interface)) == ((0, EXTERNAL), (0, OLD_PROVIDER_TPID))
    assert members.double_tags.get(interface, CUSTOMERS_VLAN) == (0, (SERVICE, 4))


def test_entries_are_made_and_deleted_on_every_member(members):
    table, interface = members.double_tags, adp.agg(GROUP)
    table.put(interface, CUSTOMERS_VLAN, SERVICE, 4)
    assert table.entries() == {(port, CUSTOMERS_VLAN): (SERVICE, 4) for port in MEMBERS}
    assert table.get(interface, CUSTOMERS_VLAN) == (0, (SERVICE, 4))
    assert table.delete(interface, CUSTOMERS_VLAN) == 0
    assert table.entries() == {}


def test_first_failing_member_ends_a_change(members):
    table, interface = members.double_tags, adp.agg(GROUP)
    first, second, third = MEMBERS
    table.put(second, CUSTOMERS_VLAN, SERVICE, 1)
    assert table.add(interface, CUSTOMERS_VLAN, SERVICE) == MEMBER_FAILED
    changed = {(first, CUSTOMERS_VLAN): (SERVICE, KEEP), (second, CUSTOMERS_VLAN): (SERVICE, 1)}
    assert table.entries() == changed, "what was done before stays, what follows is not tried"
    table.put(third, CUSTOMERS_VLAN, SERVICE)
    assert table.delete(second, CUSTOMERS_VLAN) == 0
    assert table.delete(interface, CUSTOMERS_VLAN) == MEMBER_FAILED
    assert table.entries() == {(third, CUSTOMERS_VLAN): (SERVICE, KEEP)}
    assert members.set_tpid(interface, 0) == MEMBER_FAILED
    assert members.set_mode(interface, EXTERNAL + 1) == MEMBER_FAILED


def test_group_without_members_takes_every_change_and_reads_the_cpu_port(tagging):
    interface, table = adp.agg(EMPTY_GROUP), tagging.double_tags
    assert (tagging.set_mode(interface, INTERNAL), tagging.set_tpid(interface, PROVIDER_TPID)) == (0, 0)
    assert (table.add(interface, CUSTOMERS_VLAN, SERVICE), table.delete(interface, CUSTOMERS_VLAN)) == (0, 0)
    assert tagging.mode(interface) == (0, UNTOUCHED[0]), "the mode is not even read"
    assert tagging.tpid(interface) == (0, ORDINARY_TPID)
    assert table.get(interface, CUSTOMERS_VLAN) == (READ_FAILED, UNTOUCHED)


def test_groups_that_there_cannot_be_are_refused(tagging):
    interface, table = adp.agg(adp.AGG_GROUPS) + 1, tagging.double_tags
    results = (
        tagging.cpu.result("adp_double_tag_set", interface, INTERNAL),
        tagging.cpu.result("adp_double_tag_tipd_set", interface, PROVIDER_TPID, 0),
        table.add(interface, CUSTOMERS_VLAN, SERVICE),
        table.delete(interface, CUSTOMERS_VLAN),
    )
    assert results == (BAD_GROUP,) * 4
    assert (tagging.mode(interface), tagging.tpid(interface)) == ((BAD_GROUP, UNTOUCHED[0]),) * 2
    assert table.get(interface, CUSTOMERS_VLAN) == (BAD_GROUP, UNTOUCHED)


def test_group_towards_the_provider_carries_the_services_tag(cpu, members):
    everyone = {*MEMBERS, CUSTOMER, NEIGHBOUR}
    cpu.vlan(SERVICE, everyone)
    for port in (CUSTOMER, NEIGHBOUR):
        cpu.set_pvid(port, SERVICE)
        members.dress(port, EXTERNAL)
    members.dress(adp.agg(GROUP), INTERNAL, PROVIDER_TPID)
    inner, service = vlan_tag(CUSTOMERS_VLAN, 6), vlan_tag(SERVICE, 0, PROVIDER_TPID)
    reached = members.leaves(CUSTOMER, inner)
    (member,) = set(reached) & set(MEMBERS)
    assert reached == {NEIGHBOUR: inner, member: service + inner}
    for port in MEMBERS:
        assert members.leaves(port, service + inner) == {CUSTOMER: inner, NEIGHBOUR: inner}
