"""Addresses of stations: learned, aged, moved, set by hand, filtered, and shown."""

import pytest
from adp.lab.process import poll_until
from segment import ALL, CAPACITY, SLOTS, VLAN, Segment, bucket, colon_form, in_a_row

SENDER, PORT, ELSEWHERE, WITNESS = 1, 5, 22, 26
PORTS = (SENDER, PORT, ELSEWHERE, WITNESS)
FLAG_STATIC, FLAG_DROP_TO, FLAG_DROP_FROM = 0x8, 0x10, 0x20
AGE_SECONDS, USUAL_AGE_SECONDS = 1, 300
AGED_OUT_SECONDS = 20.0
NOT_UNICAST = -22
OTHER_VLAN = 101
NO_SUCH_CALL = -100
GROUP_ADDRESS = "01005e010203"


@pytest.fixture
def segment(lab, cpu):
    return Segment(lab, cpu, PORTS)


def set_by_hand(segment, port, address, is_static=1):
    assert segment.cpu.result("adp_add_mac_addr", address.hex(), port, segment.vid, is_static) == 0


def shown(lab, *addresses):
    """vdevctl's rows of addresses, all as they were at one moment."""
    rows = {row["mac"]: row for row in lab.device.control("macs")["macs"] if row["vid"] == VLAN}
    return [rows[colon_form(address)] for address in addresses]


def is_older(lab, one, other):
    first, second = shown(lab, one, other)
    return first["age"] > second["age"]


def test_a_station_is_learned_where_it_speaks(lab, segment):
    stranger = lab.mac()
    assert segment.interface(stranger) is None
    assert segment.say(SENDER, lab.mac(), stranger) == segment.others(SENDER)
    before = segment.learned(PORT)
    station = segment.station(PORT)
    entry = segment.entry(station)
    assert (entry["flags"], entry["mac"], entry["vid"], entry["port"]) == (0, station.hex(), VLAN, PORT)
    assert segment.learned(PORT) == before + 1
    assert segment.say(SENDER, lab.mac(), station) == {PORT}


def test_the_index_is_the_bucket_and_a_slot(lab, cpu, segment):
    station = segment.station(PORT)
    answer = cpu.call("adp_get_l2_index_by_addr", station.hex(), VLAN)
    assert answer["outputs"]["index"] // SLOTS == bucket(station, VLAN)
    assert answer["outputs"]["index"] == shown(lab, station)[0]["index"]


def test_a_moving_station_is_followed(lab, segment):
    station = segment.station(PORT)
    moved = lab.device.control("macs")["moved"]
    for port in (ELSEWHERE, PORT, ELSEWHERE):
        segment.say(port, station)
        assert segment.interface(station) == port
        assert segment.say(SENDER, lab.mac(), station) == {port}
    assert lab.device.control("macs")["moved"] == moved + 3


def test_a_static_station_stays_whoever_uses_its_address(lab, cpu, segment):
    station = lab.mac(PORT)
    set_by_hand(segment, PORT, station)
    assert segment.say(ELSEWHERE, station) == segment.others(ELSEWHERE)
    answer = cpu.call("adp_get_intf_flags_by_addr", station.hex(), VLAN)
    assert (answer["result"], answer["outputs"]) == (0, {"intf": PORT, "flags": FLAG_STATIC})
    assert segment.say(SENDER, lab.mac(), station) == {PORT}


def test_an_entry_set_by_hand_without_the_flag_moves(lab, segment):
    station = lab.mac(PORT)
    set_by_hand(segment, PORT, station, is_static=0)
    assert segment.interface(station) == PORT
    segment.say(ELSEWHERE, station)
    assert segment.interface(station) == ELSEWHERE


def test_entries_by_hand_are_for_stations(cpu, segment):
    assert cpu.result("adp_add_mac_addr", GROUP_ADDRESS, PORT, VLAN, 1) == NOT_UNICAST


FILTERS = {
    "both ways": (FLAG_DROP_TO | FLAG_DROP_FROM, False, False),
    "to it": (FLAG_DROP_TO, False, True),
    "from it": (FLAG_DROP_FROM, True, False),
}


@pytest.mark.parametrize("kind", FILTERS)
def test_a_filtered_station_is_cut_off(lab, cpu, segment, kind):
    flags, hears, is_heard = FILTERS[kind]
    station = segment.station(PORT)
    assert cpu.result("adp_filter_mac_addr", PORT, station.hex(), VLAN, flags) == 0
    for port in (PORT, ELSEWHERE):
        assert segment.say(port, station) == (segment.others(port) if is_heard else set())
    assert segment.say(SENDER, lab.mac(), station) == ({PORT} if hears else set())
    assert cpu.result("adp_del_mac_addr", station.hex(), VLAN, 0, 0) == 0
    assert segment.say(PORT, station) == segment.others(PORT)
    assert segment.say(SENDER, lab.mac(), station) == {PORT}


def test_speaking_again_makes_a_station_young(lab, segment):
    older, younger = segment.station(PORT), segment.station(PORT)
    assert is_older(lab, older, younger)
    segment.say(PORT, older)
    assert is_older(lab, younger, older)


@pytest.fixture
def short_age(cpu):
    assert cpu.result("adp_set_mac_age_time", AGE_SECONDS) == 0
    yield
    assert cpu.result("adp_set_mac_age_time", USUAL_AGE_SECONDS) == 0


def test_a_silent_station_is_forgotten_and_a_static_one_is_not(lab, cpu, segment, short_age):
    station, fixed = segment.station(PORT), lab.mac(PORT)
    set_by_hand(segment, PORT, fixed)
    assert cpu.call("adp_get_mac_age_time")["outputs"]["seconds"] == AGE_SECONDS
    poll_until(lambda: segment.interface(station) is None, AGED_OUT_SECONDS, "Ageing")
    assert segment.say(SENDER, lab.mac(), station) == segment.others(SENDER)
    assert segment.interface(fixed) == PORT
    assert segment.say(SENDER, lab.mac(), fixed) == {PORT}


# Walks


def walk(cpu):
    """Every valid entry of the table, in its order, one call each."""
    entries, index = [], 0
    for _ in range(CAPACITY + 1):
        answer = cpu.call("adp_get_nextvalid_mac_addr", index, 0, 0)
        if answer["result"] != 0:
            return entries
        entries.append(answer["outputs"]["entry"])
        index = entries[-1]["index"] + 1
    raise AssertionError("the walk has no end")


def test_walking_shows_each_entry_once(lab, cpu, segment):
    assert cpu.result("adp_del_mac_by_lrntype", ALL) == 0
    stations = in_a_row(100)
    segment.crowd(PORT, stations)
    entries = walk(cpu)
    assert sorted(entry["mac"] for entry in entries) == [station.hex() for station in stations]
    assert {(entry["vid"], entry["port"]) for entry in entries} == {(VLAN, lab.device.physical(PORT))}
    indexes = [entry["index"] for entry in entries]
    assert indexes == sorted(set(indexes))


def test_traversing_tells_the_log_of_a_vlans_entries(lab, cpu, segment):
    station = segment.station(PORT)
    other = Segment(lab, cpu, PORTS, OTHER_VLAN).station(ELSEWHERE)
    assert cpu.result("adp_traverse_mac_table", VLAN, 0, 0, 0) == 0
    told = str(lab.device.control("log")["log"])
    assert colon_form(station) in told
    assert colon_form(other) not in told


def test_groups_are_asked_for_by_vlan(cpu, segment):
    missing = cpu.result("adp_is_mcast_addr_exist_by_vlan", VLAN, 0, 0, 0)
    assert missing != 0
    assert cpu.result("adp_add_mac_mcast_addr", GROUP_ADDRESS, 1 << PORT, VLAN, 1) == 0
    assert cpu.result("adp_is_mcast_addr_exist_by_vlan", VLAN, 0, 0, 0) == 0
    assert cpu.result("adp_is_mcast_addr_exist_by_vlan_ex", VLAN, 0, 0, 0) == 0
    assert cpu.result("adp_traverse_mac_mcast_table", VLAN, 0, 0, 0) == 0
    assert cpu.result("adp_del_mac_mcast_addr", GROUP_ADDRESS, VLAN, 0, 0) == 0
    assert cpu.result("adp_is_mcast_addr_exist_by_vlan", VLAN, 0, 0, 0) == missing


def test_reading_in_bulk_is_refused_by_this_device(cpu):
    assert cpu.result("adp_l2_mactable_fread", 0, 0, 0, 0) == NO_SUCH_CALL
