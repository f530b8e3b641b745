"""The library's VLAN calls against the device: what is set is read back, and what a chip refuses is refused."""

import adp
import pytest
from adp.testing.cpu import device_vlans

VLAN = 100
LAST = 4094
DEFAULT_VLAN = 1
ALL_INTERFACES = set(range(27))
TYPE_REFUSED = 201
DRIVER_FAILED = 102
NO_MEMBER = 203


def test_default_vlan_holds_every_port(cpu):
    assert cpu.read_vlan(DEFAULT_VLAN) == (0, ALL_INTERFACES, ALL_INTERFACES - {0})


def test_new_vlan_is_empty(cpu):
    assert cpu.create_vlan(VLAN) == 0
    assert cpu.read_vlan(VLAN) == (0, set(), set())


@pytest.mark.parametrize("members, untagged", [({0, 1, 26}, {1}), ({21, 22}, {21, 22}), (ALL_INTERFACES, {0})])
def test_ports_are_read_back(cpu, members, untagged):
    cpu.vlan(VLAN, members, untagged)
    assert cpu.read_vlan(VLAN) == (0, members, untagged)


def test_device_holds_what_was_set(lab, cpu):
    cpu.vlan(VLAN, {0, 21, 22}, {22})
    assert device_vlans(lab)[VLAN] == ({0, 21, 22}, {22})


def test_interfaces_beyond_the_map_are_dropped(cpu):
    assert cpu.create_vlan(VLAN) == 0
    cpu.vlan_ports(VLAN, {26, 27, 100, 255}, {26, 27, 255})
    assert cpu.read_vlan(VLAN) == (0, {26}, {26})


def test_only_16_bits_of_the_vlan_count(lab, cpu):
    assert cpu.result("adp_vlan_create", 0x10000 | VLAN) == 0
    assert VLAN in device_vlans(lab)
    assert cpu.result("adp_vlan_destroy", 0xFFFF0000 | VLAN) == 0
    assert VLAN not in device_vlans(lab)


@pytest.mark.parametrize("vid", [0, 4095, 0x1005])
def test_vlan_ids_out_of_range_are_refused(lab, cpu, vid):
    before = device_vlans(lab)
    assert cpu.result("adp_vlan_create", vid) < 0
    assert device_vlans(lab) == before


def test_vlan_is_created_once_and_destroyed_once(lab, cpu):
    assert cpu.create_vlan(VLAN) == 0
    assert cpu.result("adp_vlan_create", VLAN) < 0
    cpu.tidy()
    assert cpu.result("adp_vlan_destroy", VLAN) < 0


def test_unknown_vlan_has_no_ports_to_read(cpu):
    answer = cpu.call("adp_vlan_port_get", VLAN, "{4,5}", "{5}")
    assert answer["result"] < 0
    # What the arrays held is translated all the same: the physical ports 4 and 5 are the ports 1 and 2.
    assert adp.PortSet.from_words(answer["outputs"]["members"]) == {1, 2}
    assert adp.PortSet.from_words(answer["outputs"]["untagged"]) == {2}


def test_range_of_vlans_is_created_and_destroyed_whole(lab, cpu):
    assert cpu.result("adp_vlan_createEx", LAST - 4, LAST) == 0
    assert set(range(LAST - 4, LAST + 1)) <= set(device_vlans(lab))
    assert cpu.result("adp_vlan_port_addEx", LAST - 4, LAST, "{4,25}", "{25}") == 0
    for vid in (LAST - 4, LAST):
        assert cpu.read_vlan(vid) == (0, {1, 22}, {22})
    assert cpu.result("adp_vlan_port_removeEx", LAST - 4, LAST, "{4}") == 0
    assert cpu.read_vlan(LAST) == (0, {22}, {22})
    assert cpu.result("adp_vlan_destroyEx", LAST - 4, LAST) == 0
    assert not set(range(LAST - 4, LAST + 1)) & set(device_vlans(lab))


def test_range_with_a_vlan_that_exists_creates_none(lab, cpu):
    assert cpu.create_vlan(VLAN + 2) == 0
    assert cpu.result("adp_vlan_createEx", VLAN, VLAN + 4) < 0
    assert {vid for vid in device_vlans(lab) if VLAN <= vid <= VLAN + 4} == {VLAN + 2}


def test_default_vlan_is_moved_and_read_back(cpu):
    assert cpu.create_vlan(VLAN) == 0
    assert cpu.result("adp_vlan_default_set", VLAN) == 0
    answer = cpu.call("adp_vlan_default_get")
    assert cpu.result("adp_vlan_default_set", DEFAULT_VLAN) == 0
    assert (answer["result"], answer["outputs"]["vid"]) == (0, VLAN)


def test_default_vlan_is_not_destroyed(lab, cpu):
    assert cpu.result("adp_vlan_destroy", DEFAULT_VLAN) < 0
    assert DEFAULT_VLAN in device_vlans(lab)


@pytest.mark.parametrize("port", [1, 21, 22, 26])
def test_port_vlan_is_read_back(lab, cpu, port):
    cpu.vlan(VLAN, {port})
    cpu.set_pvid(port, VLAN)
    answer = cpu.call("adp_intf_pivd_get", port)
    assert (answer["result"], answer["outputs"]["vid"]) == (0, VLAN)


def test_port_vlan_of_an_unmapped_port_is_refused(cpu):
    assert cpu.result("adp_intf_pivd_set", 27, DEFAULT_VLAN) < 0
    assert cpu.result("adp_intf_pivd_get", 27) == DRIVER_FAILED


def test_port_vlan_of_a_group_is_its_management_ports(cpu):
    cpu.vlan(VLAN, {22})
    cpu.set_pvid(22, VLAN)
    cpu.give_management_port(2, 22)
    answer = cpu.call("adp_intf_pivd_get", "agg2")
    assert (answer["result"], answer["outputs"]["vid"]) == (0, VLAN)


def test_port_vlan_of_an_empty_group(cpu):
    assert cpu.result("adp_intf_pivd_get", "agg2") == NO_MEMBER
    assert cpu.result("adp_intf_pivd_set", "agg2", DEFAULT_VLAN) == 0


def test_port_vlan_of_a_group_with_members_is_refused_by_the_chip(cpu):
    # The library hands the driver the group's own translation, -1, as the port. Reading asks the management port.
    cpu.form_group(2, (22,))
    assert cpu.result("adp_intf_pivd_set", "agg2", DEFAULT_VLAN) == DRIVER_FAILED
    read = cpu.call("adp_intf_pivd_get", "agg2")
    assert (read["result"], read["outputs"]["vid"]) == (0, DEFAULT_VLAN)


def test_port_vlan_of_another_type_is_refused(cpu):
    assert cpu.result("adp_intf_pivd_get", 0x20000001) == TYPE_REFUSED
    assert cpu.result("adp_intf_pivd_set", 0x20000001, DEFAULT_VLAN) == TYPE_REFUSED
