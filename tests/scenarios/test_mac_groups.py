"""Addresses behind an aggregation group: whichever member they use, and whichever of them is lost."""

import contextlib

import adp
import pytest
from segment import ALL, DYNAMIC, STATIC, VLAN, Segment

SENDER, ELSEWHERE = 1, 26
MEMBERS = (3, 9, 22)
GROUP = adp.agg(1)
FAIL = -1
FLAG_STATIC, FLAG_DROP_TO = 0x8, 0x10
LINK_SECONDS = 10.0
KINDS = {"dynamic": DYNAMIC, "static": STATIC}


@pytest.fixture
def segment(lab, cpu):
    cpu.form_group(1, MEMBERS)
    return Segment(lab, cpu, (SENDER, ELSEWHERE, *MEMBERS))


def learn_station(segment, member):
    """A new address that has spoken on a member; its frame came out once at each other port, never at a member."""
    address = segment.lab.mac(member)
    assert segment.say(member, address) == {SENDER, ELSEWHERE}
    return address


def set_station(segment, member):
    address = segment.lab.mac(member)
    assert segment.cpu.result("adp_add_mac_addr", address.hex(), GROUP, VLAN, 1) == 0
    return address


MAKERS = {"dynamic": learn_station, "static": set_station}


def member_used(segment, address):
    """The one port where a frame to the address comes out, which is a member."""
    (port,) = segment.say(SENDER, segment.lab.mac(SENDER), address)
    assert port in MEMBERS
    return port


@contextlib.contextmanager
def pulled(segment):
    """A function that pulls a member's cable and tells the library; afterwards they are all plugged in again."""
    lab, cpu = segment.lab, segment.cpu
    out = []

    def pull(port):
        out.append(port)
        lab.device.control("pull", port)
        lab.device.await_links(set(lab.hosts) - set(out), LINK_SECONDS)
        assert cpu.result("adp_agg_linkscan_handle", port, 0) == 0

    try:
        yield pull
    finally:
        for port in out:
            lab.device.control("plug", port)
        lab.await_links()
        for port in out:
            assert cpu.result("adp_agg_linkscan_handle", port, 1) == 0


@pytest.mark.parametrize("kind", MAKERS)
def test_an_address_survives_the_loss_of_members(segment, kind):
    address = MAKERS[kind](segment, MEMBERS[0])
    with pulled(segment) as pull:
        left = set(MEMBERS)
        while len(left) > 1:
            used = member_used(segment, address)
            assert used in left
            pull(used)
            left.remove(used)
            assert segment.interface(address) == GROUP
        assert {member_used(segment, address)} == left
    assert segment.interface(address) == GROUP
    assert member_used(segment, address) in MEMBERS


def test_members_are_one_place(segment):
    address = learn_station(segment, MEMBERS[0])
    moved = segment.lab.device.control("macs")["moved"]
    for member in MEMBERS:
        segment.say(member, address)
        assert segment.interface(address) == GROUP
        assert segment.learned(member) == segment.learned(MEMBERS[0])
        assert segment.say(member, segment.lab.mac(member), address) == set(), "nothing goes back to the group"
    assert segment.lab.device.control("macs")["moved"] == moved


def test_a_learned_address_moves_from_the_group_to_a_port_and_back(segment):
    address = learn_station(segment, MEMBERS[0])
    segment.say(ELSEWHERE, address)
    assert segment.interface(address) == ELSEWHERE
    segment.say(MEMBERS[1], address)
    assert segment.interface(address) == GROUP


def test_a_static_address_stays_with_the_group(segment):
    address = set_station(segment, MEMBERS[0])
    segment.say(ELSEWHERE, address)
    answer = segment.cpu.call("adp_get_intf_flags_by_addr", address.hex(), VLAN)
    assert answer["outputs"]["intf"] == GROUP
    assert answer["outputs"]["flags"] & FLAG_STATIC
    member_used(segment, address)


def test_an_address_is_filtered_behind_the_group(segment):
    address = learn_station(segment, MEMBERS[0])
    assert segment.cpu.result("adp_filter_mac_addr", GROUP, address.hex(), VLAN, FLAG_DROP_TO) == 0
    assert segment.say(SENDER, segment.lab.mac(SENDER), address) == set()


DELETES = {
    "group": lambda mac, mode: ("adp_del_mac_addr_by_intf", GROUP, mode),
    "member": lambda mac, mode: ("adp_del_mac_addr_by_intf", MEMBERS[1], mode),
    "member, address and VLAN": lambda mac, mode: (
        "adp_del_mac_addr_by_trunkid_mac_vlan",
        MEMBERS[1],
        mac,
        mode,
        VLAN,
    ),
}


@pytest.mark.parametrize("mode", (DYNAMIC, STATIC, ALL))
@pytest.mark.parametrize("key", DELETES)
def test_keys_pick_what_is_behind_the_group(segment, key, mode):
    for kind, mode_of_kind in KINDS.items():
        is_picked = mode in (mode_of_kind, ALL)
        address = MAKERS[kind](segment, MEMBERS[0])
        status = segment.cpu.result(*DELETES[key](address.hex(), mode))
        # Only the key of a single entry has nothing to delete where the kind is another.
        assert (status == 0) == (is_picked or "address" not in key)
        assert (segment.interface(address) is None) == is_picked


def test_a_vlan_and_group_pick_static_entries_only_together_with_the_others(segment):
    for mode, status, kinds_gone in ((DYNAMIC, 0, {"dynamic"}), (STATIC, FAIL, set(KINDS)), (ALL, 0, set(KINDS))):
        stations = {kind: make(segment, MEMBERS[0]) for kind, make in MAKERS.items()}
        assert segment.cpu.result("adp_del_mac_addr_by_vlan_intf", VLAN, GROUP, mode) == status
        assert {kind for kind, address in stations.items() if segment.interface(address) is None} == kinds_gone


def test_a_group_and_an_address_pick_nothing(segment):
    address = learn_station(segment, MEMBERS[0])
    assert segment.cpu.result("adp_del_mac_addr_by_intf_mac", GROUP, address.hex(), ALL, 0) == FAIL
    assert segment.interface(address) == GROUP


def test_a_group_without_members_is_refused_whatever_the_mode(cpu):
    cpu.form_group(1, ())
    for mode in (DYNAMIC, STATIC, ALL, ALL + 1):
        assert cpu.result("adp_del_mac_addr_by_intf", GROUP, mode) == FAIL
