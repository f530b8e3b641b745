"""Access, trunk and hybrid ports: tagged and untagged frames at hosts, and VLANs read back."""

import random

import pytest
from adp.lab.frames import vlan_tag
from adp.testing.calls import text_of
from adp.testing.cpu import DEFAULT_VLAN, device_vlans

RED, BLUE, NOWHERE = 100, 200, 300
NATIVE = DEFAULT_VLAN
# An access port of each VLAN, two trunks with a native VLAN, and a port that is untagged in one VLAN and tagged in the
# other. Physical ports on both sides of 24/25 are among them.
ACCESS_RED, ACCESS_BLUE, TRUNK, HYBRID, OTHER_TRUNK = 3, 4, 21, 22, 26
FIRST, LAST = 1000, 1019
ALL_INTERFACES = range(27)
RANDOM_VLANS = 32
VLAN_IS_DEFAULT, VLAN_MISSING, UNTAGGED_NOT_MEMBER = -13, -12, -14
PRIORITY = 5
RED_TAG, BLUE_TAG = vlan_tag(RED), vlan_tag(BLUE)
RED_FROM_ACCESS = {TRUNK: RED_TAG, OTHER_TRUNK: RED_TAG, HYBRID: b""}
RED_FROM_HYBRID = {TRUNK: RED_TAG, OTHER_TRUNK: RED_TAG, ACCESS_RED: b""}
BLUE_FROM_HYBRID = {TRUNK: BLUE_TAG, OTHER_TRUNK: BLUE_TAG, ACCESS_BLUE: b""}


@pytest.fixture
def roles(cpu, tagging):
    """The ports in their roles; no host but theirs is in any of the VLANs."""
    cpu.vlan(RED, {ACCESS_RED, TRUNK, HYBRID, OTHER_TRUNK}, {ACCESS_RED, HYBRID})
    cpu.vlan(BLUE, {ACCESS_BLUE, TRUNK, HYBRID, OTHER_TRUNK}, {ACCESS_BLUE})
    cpu.default_vlan_ports({TRUNK, OTHER_TRUNK}, {TRUNK, OTHER_TRUNK})
    for port, vid in ((ACCESS_RED, RED), (ACCESS_BLUE, BLUE), (HYBRID, RED)):
        cpu.set_pvid(port, vid)
    return tagging


def physical_set(lab, ports):
    """Ports as the plain membership calls take them: by their physical numbers."""
    return text_of(set(map(lab.device.physical, ports)))


@pytest.mark.parametrize(
    "tags, arrive",
    [
        (b"", RED_FROM_ACCESS),
        (vlan_tag(0, PRIORITY), {TRUNK: vlan_tag(RED, 5), OTHER_TRUNK: vlan_tag(RED, 5), HYBRID: b""}),
        (RED_TAG, RED_FROM_ACCESS),
        (BLUE_TAG, {}),
        (vlan_tag(NATIVE), {}),
        (vlan_tag(NOWHERE), {}),
    ],
    ids=["untagged", "priority", "own VLAN", "other VLAN", "native VLAN", "no VLAN"],
)
def test_host_of_an_access_port(roles, tags, arrive):
    assert roles.leaves(ACCESS_RED, tags) == arrive


@pytest.mark.parametrize(
    "tags, arrive",
    [
        (b"", {OTHER_TRUNK: b""}),
        (vlan_tag(NATIVE, PRIORITY), {OTHER_TRUNK: b""}),
        (vlan_tag(RED, PRIORITY), {ACCESS_RED: b"", HYBRID: b"", OTHER_TRUNK: vlan_tag(RED, PRIORITY)}),
        (BLUE_TAG, {ACCESS_BLUE: b"", HYBRID: BLUE_TAG, OTHER_TRUNK: BLUE_TAG}),
        (RED_TAG + BLUE_TAG, {ACCESS_RED: BLUE_TAG, HYBRID: BLUE_TAG, OTHER_TRUNK: RED_TAG + BLUE_TAG}),
        (vlan_tag(NOWHERE), {}),
    ],
    ids=["untagged", "native VLAN", "red", "blue", "blue in red", "no VLAN"],
)
def test_host_of_a_trunk(roles, tags, arrive):
    assert roles.leaves(TRUNK, tags) == arrive


@pytest.mark.parametrize(
    "tags, arrive",
    [(b"", RED_FROM_HYBRID), (RED_TAG, RED_FROM_HYBRID), (BLUE_TAG, BLUE_FROM_HYBRID), (vlan_tag(NATIVE), {})],
    ids=["untagged", "red", "blue", "native VLAN"],
)
def test_host_of_a_hybrid_port(roles, tags, arrive):
    assert roles.leaves(HYBRID, tags) == arrive


def test_known_station_is_reached_with_the_tag_of_its_port(lab, roles):
    station = lab.mac(HYBRID)
    assert roles.leaves(HYBRID, BLUE_TAG, source=station) == BLUE_FROM_HYBRID
    assert roles.leaves(ACCESS_BLUE, destination=station) == {HYBRID: BLUE_TAG}
    assert roles.leaves(ACCESS_RED, destination=station) == RED_FROM_ACCESS, "in the other VLAN it is unknown"


def test_access_port_moves_to_another_vlan(lab, cpu, roles):
    port = physical_set(lab, {ACCESS_RED})
    assert cpu.result("adp_vlan_port_remove", RED, port) == 0
    assert roles.leaves(ACCESS_RED) == {}, "its port VLAN is one that it is not in"
    assert cpu.result("adp_vlan_port_add", BLUE, port, port) == 0
    cpu.set_pvid(ACCESS_RED, BLUE)
    assert roles.leaves(ACCESS_RED) == {**BLUE_FROM_HYBRID, HYBRID: BLUE_TAG}
    assert roles.leaves(HYBRID) == {TRUNK: RED_TAG, OTHER_TRUNK: RED_TAG}


def test_hybrid_port_becomes_untagged_in_both_vlans(lab, cpu, roles):
    port = physical_set(lab, {HYBRID})
    assert cpu.result("adp_vlan_port_add", BLUE, port, port) == 0
    assert roles.leaves(ACCESS_BLUE) == {TRUNK: BLUE_TAG, OTHER_TRUNK: BLUE_TAG, HYBRID: b""}


# Read back


def test_vlans_are_read_back_as_written(lab, cpu):
    numbers = random.Random(6)
    written = {}
    for vid in numbers.sample(range(2, 4095), RANDOM_VLANS):
        members = set(numbers.sample(ALL_INTERFACES, numbers.randrange(len(ALL_INTERFACES) + 1)))
        untagged = {port for port in members if numbers.random() < 0.5}
        cpu.vlan(vid, members, untagged)
        written[vid] = (members, untagged)
    assert {vid: cpu.read_vlan(vid) for vid in written} == {vid: (0, *sets) for vid, sets in written.items()}
    shown = device_vlans(lab)
    assert {vid: shown[vid] for vid in written} == written


def test_refused_write_changes_nothing(cpu, roles):
    before = cpu.read_vlan(RED)
    assert cpu.result("adp_vlan_port_set", RED, text_of({TRUNK}), text_of({HYBRID})) == UNTAGGED_NOT_MEMBER
    assert cpu.read_vlan(RED) == before
    assert roles.leaves(ACCESS_RED) == RED_FROM_ACCESS


def test_port_vlans_are_read_back(cpu, roles):
    wanted = {ACCESS_RED: RED, ACCESS_BLUE: BLUE, HYBRID: RED, TRUNK: NATIVE}
    read = {port: cpu.call("adp_intf_pivd_get", port) for port in wanted}
    assert {port: (answer["result"], answer["outputs"]["vid"]) for port, answer in read.items()} == {
        port: (0, vid) for port, vid in wanted.items()
    }


def test_port_vlan_must_exist(cpu, roles):
    assert cpu.result("adp_intf_pivd_set", ACCESS_RED, NOWHERE) == VLAN_MISSING
    assert roles.leaves(ACCESS_RED) == RED_FROM_ACCESS


# Ranges


def test_range_carries_traffic_from_its_first_vlan_to_its_last(lab, cpu, tagging):
    assert cpu.create_vlans(FIRST, LAST) == 0
    ports = physical_set(lab, {TRUNK, HYBRID, OTHER_TRUNK})
    assert cpu.result("adp_vlan_port_addEx", FIRST, LAST, ports, physical_set(lab, {HYBRID})) == 0
    for vid in (FIRST, FIRST + 7, LAST):
        assert tagging.leaves(TRUNK, vlan_tag(vid)) == {HYBRID: b"", OTHER_TRUNK: vlan_tag(vid)}
    for vid in (FIRST - 1, LAST + 1):
        assert tagging.leaves(TRUNK, vlan_tag(vid)) == {}


def test_ports_leave_part_of_a_range(lab, cpu, tagging):
    assert cpu.create_vlans(FIRST, LAST) == 0
    ports = physical_set(lab, {TRUNK, OTHER_TRUNK})
    assert cpu.result("adp_vlan_port_addEx", FIRST, LAST, ports, "{}") == 0
    middle = FIRST + 5
    assert cpu.result("adp_vlan_port_removeEx", middle, LAST, physical_set(lab, {OTHER_TRUNK})) == 0
    shown = device_vlans(lab)
    for vid in range(FIRST, LAST + 1):
        members = {TRUNK, OTHER_TRUNK} if vid < middle else {TRUNK}
        assert shown[vid] == (members, set())
    assert tagging.leaves(TRUNK, vlan_tag(middle - 1)) == {OTHER_TRUNK: vlan_tag(middle - 1)}
    assert tagging.leaves(TRUNK, vlan_tag(middle)) == {}


def test_destroyed_part_of_a_range_carries_nothing(lab, cpu, tagging):
    assert cpu.create_vlans(FIRST, LAST) == 0
    assert cpu.result("adp_vlan_port_addEx", FIRST, LAST, physical_set(lab, {TRUNK, OTHER_TRUNK}), "{}") == 0
    assert cpu.destroy_vlans(FIRST, LAST - 1) == 0
    assert set(device_vlans(lab)) == {DEFAULT_VLAN, LAST}
    assert tagging.leaves(TRUNK, vlan_tag(LAST - 1)) == {}
    assert tagging.leaves(TRUNK, vlan_tag(LAST)) == {OTHER_TRUNK: vlan_tag(LAST)}


# The default VLAN


@pytest.fixture
def red_default(cpu, roles):
    assert cpu.result("adp_vlan_default_set", RED) == 0
    yield roles
    assert cpu.result("adp_vlan_default_set", DEFAULT_VLAN) == 0


def test_default_vlan_is_kept_and_leaves_port_vlans_alone(cpu, red_default):
    answer = cpu.call("adp_vlan_default_get")
    assert (answer["result"], answer["outputs"]["vid"]) == (0, RED)
    assert cpu.result("adp_vlan_destroy", RED) == VLAN_IS_DEFAULT
    assert red_default.leaves(TRUNK) == {OTHER_TRUNK: b""}
    assert red_default.leaves(ACCESS_BLUE) == {TRUNK: BLUE_TAG, OTHER_TRUNK: BLUE_TAG, HYBRID: BLUE_TAG}


def test_default_vlan_must_exist(cpu):
    assert cpu.result("adp_vlan_default_set", NOWHERE) == VLAN_MISSING
    assert cpu.call("adp_vlan_default_get")["outputs"]["vid"] == DEFAULT_VLAN
