"""VLAN translation on real frames, both ways, and the tables behind it; VLANs by IPv4 source."""

import struct

import pytest
from lab.frames import ETHERTYPE_IPV4, ETHERTYPE_IPV6, vlan_tag
from lab.ip import UDP, Ipv4Packet
from tagging import KEEP, UNTOUCHED

# A host outside knows the VLAN by one number, the switch and the other hosts by another.
OUTSIDE, INSIDE, OTHER_INSIDE = 100, 200, 300
CUSTOMER, OTHER_CUSTOMER, TRUNK, ACCESS = 5, 6, 22, 9
PORTS = {CUSTOMER, OTHER_CUSTOMER, TRUNK, ACCESS}
LAST_VLAN = 4094
CPU_PLACE, NO_PLACE = 0, 32
BAD_ARGUMENT, NO_PORT, CPU_PORT, VLAN_RANGE = -3, -4, -6, -10
EXISTS, MISSING, FULL = -80, -81, -82
READ_FAILED = 102
PRIORITIES = 8


@pytest.fixture
def vlans(cpu, tagging):
    """The VLAN inside, tagged but for one access port."""
    for vid in (INSIDE, OTHER_INSIDE):
        cpu.vlan(vid, PORTS, {ACCESS})
    return tagging


def at_others(port, vid, priority=0):
    """{port: tags} of a frame that the port's host has sent, and nothing but the VLAN inside has touched."""
    tag = vlan_tag(vid, priority)
    return {other: b"" if other == ACCESS else tag for other in PORTS - {port}}


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


# VLANs by IPv4 source

NET, NET_MASK = "10.1.0.0", 16
PART, PART_MASK = "10.1.2.0", 24
IN_NET, IN_PART, ELSEWHERE = "10.1.9.9", "10.1.2.3", "10.2.0.1"
SUBNET_CAPACITY = 256


def number(address):
    return struct.unpack("!I", bytes(map(int, address.split("."))))[0]


def mask(length):
    return 0xFFFFFFFF << 32 - length & 0xFFFFFFFF


class Subnets:
    """The table of subnets through the library, which hands physical ports on."""

    def __init__(self, tagging):
        self.tagging, self.cpu = tagging, tagging.cpu
        self.place = tagging.lab.device.physical(CUSTOMER)

    def add(self, address, length, vid, priority=KEEP, **other):
        place, bits, flags = other.get("place", self.place), other.get("mask", mask(length)), other.get("flags", 0)
        return self.cpu.result("adp_vlan_ip4_add", place, number(address), bits, vid, priority, flags)

    def delete(self, address, length):
        return self.cpu.result("adp_vlan_ip4_delete", self.place, number(address), mask(length))

    def shown(self):
        rows = self.tagging.lab.device.control("translations")["subnets"]
        return {(row["port"], row["address"], row["mask"], row["vid"], row["priority"]) for row in rows}

    def leaves(self, source, tags=b"", port=CUSTOMER):
        return self.tagging.leaves(port, tags, ethertype=ETHERTYPE_IPV4, head=packet(source))


def packet(source):
    """The headers of a packet from an address."""
    return Ipv4Packet(source, "10.9.9.9", UDP, 5000, length=46).build(b"", b"", b"")[2:-46]


@pytest.fixture
def subnets(cpu, vlans):
    """Untagged frames of the customer are in the VLAN inside unless a subnet says otherwise, and so are others'."""
    for port in (CUSTOMER, OTHER_CUSTOMER):
        cpu.set_pvid(port, INSIDE)
    return Subnets(vlans)


@pytest.mark.parametrize("priority, arrives", [(KEEP, 0), (5, 5)])
def test_subnet_chooses_the_vlan_of_untagged_packets(subnets, priority, arrives):
    assert subnets.add(NET, NET_MASK, OTHER_INSIDE, priority) == 0
    assert subnets.leaves(IN_NET) == at_others(CUSTOMER, OTHER_INSIDE, arrives)
    assert subnets.leaves(ELSEWHERE) == at_others(CUSTOMER, INSIDE)
    assert subnets.leaves(IN_NET, port=OTHER_CUSTOMER) == at_others(OTHER_CUSTOMER, INSIDE)


def test_tagged_packets_and_other_protocols_keep_their_vlan(subnets):
    assert subnets.add(NET, NET_MASK, OTHER_INSIDE) == 0
    assert subnets.leaves(IN_NET, vlan_tag(INSIDE, 2)) == at_others(CUSTOMER, INSIDE, 2)
    assert subnets.leaves(IN_NET, vlan_tag(0, 2)) == at_others(CUSTOMER, INSIDE, 2)
    other = {"ethertype": ETHERTYPE_IPV6, "head": packet(IN_NET)}
    assert subnets.tagging.leaves(CUSTOMER, **other) == at_others(CUSTOMER, INSIDE)


def test_smallest_subnet_decides(subnets):
    assert subnets.add(NET, NET_MASK, OTHER_INSIDE, 1) == 0
    assert subnets.add(PART, PART_MASK, INSIDE, 7) == 0
    assert subnets.leaves(IN_PART) == at_others(CUSTOMER, INSIDE, 7)
    assert subnets.leaves(IN_NET) == at_others(CUSTOMER, OTHER_INSIDE, 1)
    assert subnets.delete(PART, PART_MASK) == 0
    assert subnets.leaves(IN_PART) == at_others(CUSTOMER, OTHER_INSIDE, 1)
    assert subnets.cpu.result("adp_vlan_ip4_delete_all") == 0
    assert subnets.leaves(IN_PART) == at_others(CUSTOMER, INSIDE)


def test_subnet_is_added_once_and_deleted_once(subnets):
    assert subnets.add(NET, NET_MASK, 0x10000 | INSIDE, 3) == 0
    assert subnets.add(NET, NET_MASK, OTHER_INSIDE) == EXISTS
    assert subnets.shown() == {(CUSTOMER, number(NET), mask(NET_MASK), INSIDE, 3)}
    assert subnets.delete(NET, PART_MASK) == MISSING
    assert (subnets.delete(NET, NET_MASK), subnets.delete(NET, NET_MASK)) == (0, MISSING)
    assert subnets.shown() == set()


@pytest.mark.parametrize(
    "address, vid, priority, other, status",
    [
        ("10.1.0.1", INSIDE, KEEP, {}, BAD_ARGUMENT),
        (NET, INSIDE, KEEP, {"mask": 0xFFFF00FF}, BAD_ARGUMENT),
        (NET, INSIDE, KEEP, {"flags": 1}, BAD_ARGUMENT),
        (NET, INSIDE, PRIORITIES, {}, BAD_ARGUMENT),
        (NET, 0, KEEP, {}, VLAN_RANGE),
        (NET, 4095, KEEP, {}, VLAN_RANGE),
        (NET, INSIDE, KEEP, {"place": CPU_PLACE}, CPU_PORT),
        (NET, INSIDE, KEEP, {"place": NO_PLACE}, NO_PORT),
    ],
)
def test_meaningless_subnets_are_refused(subnets, address, vid, priority, other, status):
    assert subnets.add(address, NET_MASK, vid, priority, **other) == status
    assert subnets.shown() == set()


def test_full_table_of_subnets_refuses(subnets):
    nets = [f"172.16.{part}.0" for part in range(SUBNET_CAPACITY)]
    assert {subnets.add(net, PART_MASK, INSIDE) for net in nets} == {0}
    assert subnets.add(NET, NET_MASK, OTHER_INSIDE) == FULL
    assert subnets.leaves(IN_NET) == at_others(CUSTOMER, INSIDE)
    assert subnets.delete(nets[0], PART_MASK) == 0
    assert subnets.add(NET, NET_MASK, OTHER_INSIDE) == 0
    assert subnets.leaves(IN_NET) == at_others(CUSTOMER, OTHER_INSIDE)
