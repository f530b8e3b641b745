"""Netlink messages as the kernel sends them, for the seeds of the fuzz target netlink_messages."""
import struct

NEW_LINK, GONE_LINK, NEW_ADDRESS, GONE_ADDRESS, NEW_GROUP, GONE_GROUP, LISTED_GROUP = 16, 17, 28, 29, 84, 85, 86
AF_BRIDGE = 7
MAC = bytes.fromhex("020000000001")
IPV4_GROUP, IPV6_GROUP = bytes([239, 1, 1, 1]), bytes.fromhex("ff02" + 13 * "00" + "05")
BRIDGE = 10


class Kernel:
    """Tells of bridge 10 and its ports 1 and 2, in the byte order of a machine ("<" or ">")."""

    def __init__(self, order):
        self.order = order

    def pack(self, form, *values):
        return struct.pack(self.order + form, *values)

    def attribute(self, kind, *parts):
        payload = b"".join(parts)
        return self.pack("HH", len(payload) + 4, kind) + payload + bytes(-len(payload) % 4)

    def number(self, kind, form, value):
        return self.attribute(kind, self.pack(form, value))

    def message(self, kind, *parts):
        payload = b"".join(parts)
        return self.pack("IHHII", len(payload) + 16, kind, 0, 0, 0) + payload

    def link(self, kind, index, *attributes, family=0):
        up = 0x11043
        return self.message(kind, self.pack("BxHiII", family, 1, index, up, 0), *attributes)

    def bridge(self, name):
        data = (self.number(4, "I", 30000), self.number(5, "I", 1), self.number(7, "B", 1), self.number(23, "B", 1),
                self.number(34, "Q", 1000), self.number(39, "H", 1),
                self.attribute(47, self.number(3, "Q", 9), self.number(7, "Q", 9)))
        kind = self.attribute(18, self.attribute(1, b"bridge\0"), self.attribute(2, *data))
        return self.link(NEW_LINK, BRIDGE, self.attribute(3, name), self.number(4, "I", 1500), kind)

    def port(self, index, name, *settings):
        kind = self.attribute(18, self.attribute(1, b"tun\0"), self.attribute(4, b"bridge\0"), self.attribute(5, *settings))
        return self.link(NEW_LINK, index, self.attribute(3, name), self.attribute(1, MAC), self.number(10, "i", BRIDGE), kind)

    def vlan_device(self, index, name, parent, vid):
        kind = self.attribute(18, self.attribute(1, b"vlan\0"), self.attribute(2, self.number(1, "H", vid)))
        return self.link(NEW_LINK, index, self.attribute(3, name), self.number(5, "i", parent), kind)

    def member(self, index, *vlans):
        settings = self.attribute(0x800C, self.number(1, "B", 3), self.number(33, "B", 1))
        known = self.attribute(26, *(self.attribute(2, self.pack("HH", *vlan)) for vlan in vlans))
        return self.link(NEW_LINK, index, self.number(10, "i", BRIDGE), settings, known, family=AF_BRIDGE)

    def address(self, kind, index, state, flags, vid=0):
        header = self.pack("B3xiHBB", AF_BRIDGE, index, state, flags, 0)
        return self.message(kind, header, self.attribute(2, MAC), self.number(9, "i", BRIDGE), self.number(5, "H", vid))

    def groups(self, kind, *attributes):
        return self.message(kind, self.pack("B3xI", AF_BRIDGE, BRIDGE), *attributes)

    def entry(self, index, group, protocol, *attributes):
        head = self.pack("IBBH", index, 0, 0, 0) + group.ljust(16, b"\0") + struct.pack(">H2x", protocol)
        return self.attribute(1, self.attribute(1, self.attribute(1, head, *attributes)))

    def router(self, index, *attributes):
        return self.attribute(2, self.attribute(1, self.pack("I", index), *attributes))

    def messages(self):
        ipv4 = self.entry(1, IPV4_GROUP, 0x800)
        yield "bridge", self.bridge(b"br100\0")
        yield "ports", self.port(1, b"swp1\0", self.number(1, "B", 3), self.number(8, "B", 0)) + self.port(
            2, b"swp2\0", self.number(1, "B", 4))
        yield "vlan", self.vlan_device(3, b"swp1.100\0", 1, 100)
        yield "members", self.member(1, (6, 1), (8, 100), (16, 110)) + self.member(2, (0, 4094))
        yield "addresses", b"".join(self.address(NEW_ADDRESS, *known) for known in (
            (1, 2, 0), (2, 0x40, 0, 7), (2, 2, 16, 7), (BRIDGE, 128, 0)))
        yield "groups", self.groups(LISTED_GROUP, ipv4, self.entry(BRIDGE, IPV6_GROUP, 0x86DD)) + self.groups(
            NEW_GROUP, self.entry(2, IPV4_GROUP, 0x800, self.attribute(4, bytes([192, 0, 2, 1]))), self.entry(2, MAC, 0))
        yield "routers", self.groups(NEW_GROUP, self.router(1), self.router(2, self.number(2, "B", 1)))
        yield "address_gone", self.address(GONE_ADDRESS, 1, 2, 0)
        yield "group_gone", self.groups(GONE_GROUP, ipv4, self.router(1))
        yield "member_gone", self.link(GONE_LINK, 2, self.number(10, "i", BRIDGE), family=AF_BRIDGE)
        yield "bridge_gone", self.link(GONE_LINK, BRIDGE, self.attribute(3, b"br100\0"))
