"""Addresses are deleted by every key and mode during other traffic: those that match are deleted, no others."""

import pytest
from segment import ALL, DYNAMIC, MISSING, STATIC, VLAN, Segment

SENDER, PORT, WITNESS = 1, 22, 26
TALKER, LISTENER = 3, 5
TALKERS_VLAN = 101
FRAMES_AROUND = 40
MOST_FRAMES = 1000  # a host that nobody reads from keeps some 1800
BAD_MODE = 3
REFUSED_MODE, REFUSED_TYPE = 101, 201
UNKNOWN_TYPE = 0x20000005


class Talk:
    """Two hosts of another VLAN in talk, whose addresses must not be lost, by a static entry or a learned one."""

    def __init__(self, lab, cpu, is_static):
        self.lab, self.cpu = lab, cpu
        self.segment = Segment(lab, cpu, (TALKER, LISTENER, WITNESS), TALKERS_VLAN)
        self.source, self.listener = lab.mac(TALKER), self.segment.station(LISTENER)
        if is_static:
            assert cpu.result("adp_add_mac_addr", self.listener.hex(), LISTENER, TALKERS_VLAN, 1) == 0

    def during(self, *words):
        """Result of a call that is made amid their frames, each of which arrives at the listener and nowhere else."""
        marker = self.lab.marker()
        sent = []
        self._talk(marker, sent, FRAMES_AROUND)
        self.cpu.shell.begin(" ".join(map(str, words)))
        while not self.cpu.shell.has_answered(0) and len(sent) < MOST_FRAMES:
            self._talk(marker, sent, 1)
        answer = self.cpu.shell.finish()
        self._talk(marker, sent, FRAMES_AROUND)
        assert self.lab.arrivals(marker) == {LISTENER: sent}
        return answer["result"]

    def _talk(self, marker, sent, frames):
        for _ in range(frames):
            frame = self.segment.frame(self.source, self.listener, marker + b" %d" % len(sent))
            self.lab.hosts[TALKER].send(frame)
            sent.append(frame)


KEYS = {
    "vlan": lambda mac, mode: ("adp_del_mac_addr_by_vlan", VLAN, mode),
    "address": lambda mac, mode: ("adp_del_mac_addr_by_mac", mac, mode),
    "port": lambda mac, mode: ("adp_del_mac_addr_by_intf", PORT, mode),
    "vlan and port": lambda mac, mode: ("adp_del_mac_addr_by_vlan_intf", VLAN, PORT, mode),
    "port and address": lambda mac, mode: ("adp_del_mac_addr_by_intf_mac", PORT, mac, mode, 0),
}
KINDS = {"dynamic": DYNAMIC, "static": STATIC}


@pytest.fixture
def segment(lab, cpu):
    return Segment(lab, cpu, (SENDER, PORT, WITNESS))


def make_station(segment, kind):
    station = segment.station(PORT)
    if kind == "static":
        assert segment.cpu.result("adp_add_mac_addr", station.hex(), PORT, VLAN, 1) == 0
    return station


def check_forgotten(segment, station, is_forgotten):
    """Frames to a forgotten station are flooded, and it is learned again when it speaks."""
    sender = segment.lab.mac(SENDER)
    assert segment.say(SENDER, sender, station) == (segment.others(SENDER) if is_forgotten else {PORT})
    segment.say(PORT, station)
    assert segment.say(SENDER, sender, station) == {PORT}


@pytest.mark.parametrize("mode", (DYNAMIC, STATIC, ALL))
@pytest.mark.parametrize("key", KEYS)
def test_a_key_picks_entries_of_the_modes_kind(lab, cpu, segment, key, mode):
    talk = Talk(lab, cpu, is_static=mode == DYNAMIC)
    for kind, mode_of_kind in KINDS.items():
        station = make_station(segment, kind)
        assert talk.during(*KEYS[key](station.hex(), mode)) == 0
        check_forgotten(segment, station, mode in (mode_of_kind, ALL))


@pytest.mark.parametrize("key", KEYS)
def test_another_mode_is_refused_and_forgets_nothing(segment, key):
    stations = [make_station(segment, kind) for kind in KINDS]
    for station in stations:
        assert segment.cpu.result(*KEYS[key](station.hex(), BAD_MODE)) == REFUSED_MODE
        assert segment.interface(station) == PORT


@pytest.mark.parametrize("key", [key for key in KEYS if "port" in key])
def test_an_interface_of_another_type_is_refused_before_the_mode(segment, key):
    station = make_station(segment, "dynamic")
    call, *words = KEYS[key](station.hex(), BAD_MODE)
    assert segment.cpu.result(call, *[UNKNOWN_TYPE if word == PORT else word for word in words]) == REFUSED_TYPE
    assert segment.interface(station) == PORT


@pytest.mark.parametrize("kind", KINDS)
def test_a_single_entry_is_deleted_whatever_its_kind(lab, cpu, segment, kind):
    talk = Talk(lab, cpu, is_static=False)
    station = make_station(segment, kind)
    assert talk.during("adp_del_mac_addr", station.hex(), VLAN, 0, 0) == 0
    check_forgotten(segment, station, True)
    neighbour = lab.mac()
    assert talk.during("adp_del_mac_addr", neighbour.hex(), VLAN, 0, 0) == MISSING


@pytest.mark.parametrize("mode", (DYNAMIC, STATIC))
def test_a_learn_type_picks_entries_everywhere(lab, cpu, segment, mode):
    talk = Talk(lab, cpu, is_static=mode == DYNAMIC)
    for kind, mode_of_kind in KINDS.items():
        station = make_station(segment, kind)
        assert talk.during("adp_del_mac_by_lrntype", mode) == 0
        check_forgotten(segment, station, mode == mode_of_kind)


def test_keys_leave_other_ports_and_vlans_alone(lab, cpu, segment):
    elsewhere = segment.station(WITNESS)
    other = Segment(lab, cpu, (SENDER, PORT, WITNESS), TALKERS_VLAN)
    there = other.station(PORT)
    for vid, port in ((VLAN, PORT), (TALKERS_VLAN, LISTENER)):
        assert cpu.result("adp_del_mac_addr_by_vlan_intf", vid, port, ALL) == 0
    assert (segment.interface(elsewhere), other.interface(there)) == (WITNESS, PORT)
    assert cpu.result("adp_del_mac_addr_by_intf", PORT, ALL) == 0
    assert (segment.interface(elsewhere), other.interface(there)) == (WITNESS, None)
    assert cpu.result("adp_del_mac_addr_by_vlan", VLAN, ALL) == 0
    assert segment.interface(elsewhere) is None
