"""VLANs by IPv4 source: where a host's untagged packets go."""

import struct

import pytest
from inside import CUSTOMER, INSIDE, OTHER_CUSTOMER, OTHER_INSIDE, at_others, make_vlans
from adp.lab.frames import ETHERTYPE_IPV4, ETHERTYPE_IPV6, vlan_tag
from adp.lab.ip import UDP, Ipv4Packet
from tagging import KEEP

NET, NET_MASK = "10.1.0.0", 16
PART, PART_MASK = "10.1.2.0", 24
IN_NET, IN_PART, ELSEWHERE = "10.1.9.9", "10.1.2.3", "10.2.0.1"
SUBNET_CAPACITY = 256
CPU_PLACE, NO_PLACE = 0, 32
BAD_ARGUMENT, NO_PORT, CPU_PORT, VLAN_RANGE = -3, -4, -6, -10
EXISTS, MISSING, FULL = -80, -81, -82
PRIORITIES = 8


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
def subnets(cpu, tagging):
    """Untagged frames of all ports are in the VLAN inside unless a subnet chooses another."""
    make_vlans(cpu)
    for port in (CUSTOMER, OTHER_CUSTOMER):
        cpu.set_pvid(port, INSIDE)
    return Subnets(tagging)


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
