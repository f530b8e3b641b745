"""The switch between its hosts, with VLANs made through the library."""

import pytest
from adp.lab.frames import BROADCAST, ETHERTYPE_EXPERIMENT, ethernet, vlan_tag

VLAN = 100
OTHER_VLAN = 200
ALL_PORTS = set(range(1, 27))


@pytest.fixture
def frame(lab):
    """Builds frames with a marker of their own: (marker, frame)."""

    def build(destination=BROADCAST, source=None, tags=b""):
        marker = lab.marker()
        return marker, ethernet(destination, source or lab.mac(), ETHERTYPE_EXPERIMENT, marker.ljust(46, b"."), tags)

    return build


def send(lab, port, marked):
    """What reaches the hosts of a frame that a host sends."""
    marker, frame = marked
    lab.hosts[port].send(frame)
    return lab.arrivals(marker)


def without_tag(frame):
    return frame[:12] + frame[16:]


def with_tag(frame, tag):
    return frame[:12] + tag + frame[12:]


def test_broadcast_reaches_every_other_port(lab, cpu, frame):
    marked = frame()
    assert send(lab, 22, marked) == {port: [marked[1]] for port in ALL_PORTS - {22}}


def test_unknown_address_floods_and_a_learned_one_does_not(lab, cpu, frame):
    station = lab.mac(21)
    assert set(send(lab, 1, frame(station))) == ALL_PORTS - {1}
    send(lab, 21, frame(source=station))
    marked = frame(station)
    assert send(lab, 1, marked) == {21: [marked[1]]}


def test_address_moves_with_its_station(lab, cpu, frame):
    station = lab.mac(21)
    send(lab, 21, frame(source=station))
    send(lab, 22, frame(source=station))
    marked = frame(station)
    assert send(lab, 1, marked) == {22: [marked[1]]}


def test_frame_for_a_station_on_its_own_port_goes_nowhere(lab, cpu, frame):
    station = lab.mac(21)
    send(lab, 21, frame(source=station))
    assert send(lab, 21, frame(station)) == {}


def test_learned_addresses_are_shown(lab, cpu, frame):
    station = lab.mac(26)
    send(lab, 26, frame(source=station))
    wanted = ":".join(f"{byte:02x}" for byte in station)
    assert wanted in str(lab.device.control("macs"))


def test_same_address_in_two_vlans_is_two_stations(lab, cpu, frame):
    cpu.vlan(VLAN, {1, 5, 22})
    cpu.vlan(OTHER_VLAN, {1, 5, 22})
    station = lab.mac()
    send(lab, 5, frame(source=station, tags=vlan_tag(VLAN)))
    send(lab, 22, frame(source=station, tags=vlan_tag(OTHER_VLAN)))
    for vid, port in ((VLAN, 5), (OTHER_VLAN, 22)):
        marked = frame(station, tags=vlan_tag(vid))
        assert send(lab, 1, marked) == {port: [marked[1]]}


def test_vlan_keeps_to_its_members(lab, cpu, frame):
    cpu.vlan(VLAN, {1, 21, 22, 26}, {22})
    marker, tagged = frame(tags=vlan_tag(VLAN, 5))
    plain = without_tag(tagged)
    assert send(lab, 1, (marker, tagged)) == {21: [tagged], 22: [plain], 26: [tagged]}


def test_port_vlan_tags_what_arrives_untagged(lab, cpu, frame):
    cpu.vlan(VLAN, {1, 22, 26}, {1, 26})
    cpu.set_pvid(1, VLAN)
    marker, plain = frame()
    assert send(lab, 1, (marker, plain)) == {22: [with_tag(plain, vlan_tag(VLAN))], 26: [plain]}


def test_frame_of_a_vlan_that_its_port_is_not_in_is_dropped(lab, cpu, frame):
    cpu.vlan(VLAN, {21, 22})
    assert send(lab, 1, frame(tags=vlan_tag(VLAN))) == {}


def test_frame_of_a_vlan_that_does_not_exist_is_dropped(lab, cpu, frame):
    assert send(lab, 1, frame(tags=vlan_tag(VLAN))) == {}


def test_removed_port_hears_nothing_more(lab, cpu, frame):
    cpu.vlan(VLAN, {1, 5, 22})
    physical = "{" + str(lab.device.physical(22)) + "}"
    assert cpu.result("adp_vlan_port_remove", VLAN, physical) == 0
    marked = frame(tags=vlan_tag(VLAN))
    assert send(lab, 1, marked) == {5: [marked[1]]}


def test_added_port_hears_the_vlan(lab, cpu, frame):
    cpu.vlan(VLAN, {1})
    ports = "{" + ",".join(str(lab.device.physical(port)) for port in (21, 22)) + "}"
    untagged = "{" + str(lab.device.physical(22)) + "}"
    assert cpu.result("adp_vlan_port_add", VLAN, ports, untagged) == 0
    marker, tagged = frame(tags=vlan_tag(VLAN))
    assert send(lab, 1, (marker, tagged)) == {21: [tagged], 22: [without_tag(tagged)]}


def test_computers_on_the_ports_reach_each_other(lab, cpu, hosts):
    cpu.vlan(VLAN, {3, 4, 24, 25}, {3, 4, 24, 25})
    cpu.vlan(OTHER_VLAN, {23}, {23})
    for port in (3, 4, 24, 25):
        cpu.set_pvid(port, VLAN)
    cpu.set_pvid(23, OTHER_VLAN)
    addresses = {port: f"10.9.0.{port}" for port in (3, 23, 24)}
    for port, address in addresses.items():
        hosts[port].set_address(f"{address}/24")
    assert hosts[3].ping(addresses[24])
    assert hosts[24].ping(addresses[3])
    assert not hosts[3].ping(addresses[23], seconds=0.5), "VLANs keep apart"
