"""The MAC table: stations, groups, limits on learning, reserved addresses."""
import struct

from testing.daemon import BROADCAST, PAYLOAD, station, tag


def test_addresses_are_shown_with_their_kind_and_place(device):
    one, two = device.nics("host1", "host2")
    assert device.call("trunk", 25, 26) == "0"
    assert device.call("add-address", 1, 0x8, 24, 0) == "0"
    assert device.call("add-address", 2, 0x30, 24, 0) == "0"
    assert device.call("add-address", 3, 0x9, -1, 0) == "0"
    assert device.call("add-address", 3, 0x9, -1, 7) == "-42"
    one.send(BROADCAST + station(2) + PAYLOAD)
    one.send(BROADCAST + station(4) + PAYLOAD)
    assert two.receive() == BROADCAST + station(4) + PAYLOAD, "the other one is filtered"
    rows = device.ask("macs")["macs"]
    assert [(row["kind"], row["port"], row["trunk"]) for row in rows] == [
        ("static", 2, -1), ("filter", 2, -1), ("static", 0, 0), ("dynamic", 1, -1)]
    assert [row["index"] for row in rows] == [(0x200 + number + 1) * 8 for number in (1, 2, 3, 4)]
    lines = device.control("macs").stdout.splitlines()
    assert lines[1:4] == ["   1  02:00:00:00:00:01     2   4112  static",
                          "   1  02:00:00:00:00:02     2   4120  filter to from",
                          "   1  02:00:00:00:00:03    t0   4128  static"]
    assert device.counters(1)["drops"]["filtered"] == 1


def test_a_group_reaches_its_members_and_an_unknown_one_may_be_dropped(device):
    one, two, three = device.nics("host1", "host2", "host3")
    group = bytes([0x01, 0, 0x5E, 1, 1, 1])
    unknown = bytes([0x01, 0, 0x5E, 1, 1, 2])
    assert device.call("group", 1, 3) == f"1 {1 << 23 | 1 << 25} 0"
    one.send(group + station(1) + PAYLOAD)
    assert three.receive() == group + station(1) + PAYLOAD
    one.send(unknown + station(1) + PAYLOAD)
    assert three.receive() == unknown + station(1) + PAYLOAD
    assert two.receive() == unknown + station(1) + PAYLOAD, "and not the group's frame"
    assert device.call("group-miss", 23, 1) == "0"
    one.send(unknown + station(1) + PAYLOAD)
    assert two.receive(0.2) is None
    assert device.counters(1)["drops"]["unknown_group"] == 1
    assert device.ask("mcast")["mcast"] == [
        {"vid": 1, "mac": "01:00:5e:01:01:01", "group": 1, "index": (0x100 + 0x5E01 + 0x101 + 1) % 1024 * 8,
         "ports": [1, 3]}]
    lines = device.control("mcast").stdout.splitlines()
    assert lines[1:3] == ["   1  01:00:5e:01:01:01      1     24  1,3",
                          "1 of 1024 groups; IPv4 groups known, IPv6 groups known"]
    assert lines[5].split() == ["1", "used", "known", "drop", "flood"]


def test_a_limit_refuses_addresses_and_shows_them(device):
    one, two = device.nics("host1", "host2")
    assert device.call("limit", 4, 0, 23, 0, 1) == "0"
    assert device.call("limit", 0, 0, 23, 0, 1) == "-3"
    one.send(BROADCAST + station(1) + PAYLOAD)
    one.send(BROADCAST + station(2) + PAYLOAD)
    one.send(BROADCAST + station(1) + PAYLOAD)
    assert [two.receive(), two.receive(), two.receive(0.2)] == [BROADCAST + station(1) + PAYLOAD] * 2 + [None]
    assert device.ask("limits") == {
        "learned": 1, "limits": [{"scope": "port", "port": 1, "limit": 1, "learned": 1}],
        "violations": [{"port": 1, "count": 1, "addresses": [{"vid": 1, "mac": "02:00:00:00:00:02"}]}]}
    assert device.control("limits").stdout.splitlines()[1:] == [
        "port 1              1        1", "1 addresses learned", "port 1 refused 1", "   1  02:00:00:00:00:02"]


def test_frames_to_a_reserved_address_reach_the_cpu_only(device):
    one, two, cpu = device.nics("host1", "host2", "eth0")
    address = bytes([0x01, 0x80, 0xC2, 0, 0, 0x0E])
    assert device.call("reserve", 10, *address) == "0"
    assert device.ask("reserved")["reserved"][10] == {"index": 10, "mac": "01:80:c2:00:00:0e"}
    one.send(address + station(1) + PAYLOAD)
    assert cpu.receive() == address + station(1) + tag(0x8874, 0) + struct.pack(">H", 23) + tag(0x8100, 1) + PAYLOAD
    assert two.receive(0.2) is None
    assert device.ask("macs")["macs"] == []
