"""Limits: learning stops where one is reached, the whole table included, and what is refused is counted."""

import adp
import pytest
from segment import (
    ALL,
    BUCKET_FULL,
    BUCKETS,
    CAPACITY,
    NO_LIMIT,
    SLOTS,
    TABLE_FULL,
    VLAN,
    Segment,
    bucket,
    colon_form,
    in_a_row,
)

SENDER, PORT, MEMBER, WITNESS = 1, 5, 22, 26
PORTS = (SENDER, PORT, MEMBER, WITNESS)
SCOPE_VLAN, SCOPE_INTERFACE, SCOPE_SYSTEM = 0, 1, 2
LIMIT = 3
NO_SUCH_SCOPE = 101


@pytest.fixture
def segment(lab, cpu):
    """A VLAN whose stations are the only ones that the switch knows."""
    assert cpu.result("adp_del_mac_by_lrntype", ALL) == 0
    return Segment(lab, cpu, PORTS)


SCOPES = {"VLAN": (VLAN, SCOPE_VLAN), "port": (PORT, SCOPE_INTERFACE), "system": (0, SCOPE_SYSTEM)}


@pytest.fixture
def limit(cpu):
    """Sets limits that are gone afterwards, and so are the violations."""
    given = []

    def give(number, subject, scope):
        given.append((subject, scope))
        assert cpu.result("adp_set_mac_limit", number, subject, scope) == 0
        answer = cpu.call("adp_get_mac_limit", subject, scope)
        assert (answer["result"], answer["outputs"]["limit"]) == (0, number)

    yield give
    for subject, scope in given:
        assert cpu.result("adp_set_mac_limit", NO_LIMIT, subject, scope) == 0
    for port in PORTS:
        assert cpu.result("adp_del_port_violate_mac_addr_by_intf", port) == 0


def violations(cpu, port):
    answer = cpu.call("adp_get_mac_violate_count_by_intf", port)
    assert answer["result"] == 0
    return answer["outputs"]["count"]


def check_limit(segment, port, stations):
    """The first stations pass and are learned, the others are not; each of these counts once."""
    before = violations(segment.cpu, port)
    welcome, refused = stations[:LIMIT], stations[LIMIT:]
    for _ in range(2):
        assert [segment.say(port, station) for station in welcome] == [segment.others(port)] * len(welcome)
        assert [segment.say(port, station) for station in refused] == [set()] * len(refused)
    assert [segment.entry(station) is not None for station in stations] == [True] * LIMIT + [False] * len(refused)
    assert violations(segment.cpu, port) == before + len(refused)


@pytest.mark.parametrize("scope", SCOPES)
def test_learning_stops_at_a_limit(cpu, segment, limit, scope):
    limit(LIMIT, *SCOPES[scope])
    stations = in_a_row(LIMIT + 2)
    check_limit(segment, PORT, stations)
    assert cpu.result("adp_del_port_violate_mac_addr_by_intf", PORT) == 0
    assert violations(cpu, PORT) == 0
    assert cpu.result("adp_del_mac_addr", stations[0].hex(), VLAN, 0, 0) == 0
    assert segment.say(PORT, stations[-1]) == segment.others(PORT), "there is room for one again"


def test_a_groups_limit_holds_for_its_members(cpu, segment, limit):
    cpu.form_group(1, (MEMBER,))
    limit(LIMIT, adp.agg(1), SCOPE_INTERFACE)
    check_limit(segment, MEMBER, in_a_row(LIMIT + 2))


def test_a_ports_limit_is_no_matter_to_others(segment, limit):
    limit(0, PORT, SCOPE_INTERFACE)
    assert segment.say(PORT, in_a_row(1)[0]) == set()
    assert segment.interface(segment.station(MEMBER)) == MEMBER


def test_a_station_cannot_move_to_a_port_that_is_full(lab, cpu, segment, limit):
    traveller = segment.station(MEMBER)
    limit(0, PORT, SCOPE_INTERFACE)
    assert segment.say(PORT, traveller) == set()
    assert (segment.interface(traveller), violations(cpu, PORT)) == (MEMBER, 1)
    assert segment.say(SENDER, lab.mac(SENDER), traveller) == {MEMBER}


def test_a_static_station_does_not_count(lab, cpu, segment, limit):
    limit(0, PORT, SCOPE_INTERFACE)
    fixed = lab.mac(PORT)
    assert cpu.result("adp_add_mac_addr", fixed.hex(), PORT, VLAN, 1) == 0
    assert segment.say(PORT, fixed) == segment.others(PORT)
    assert violations(cpu, PORT) == 0


def test_a_limit_without_a_known_scope_is_refused(cpu):
    assert cpu.result("adp_set_mac_limit", LIMIT, PORT, 3) == NO_SUCH_SCOPE


# The table's own


def refused_ones(lab):
    return lab.device.control("macs")["refused"]


def test_a_full_table_refuses_the_next_station_and_counts_it(lab, cpu, segment):
    stations = in_a_row(CAPACITY)
    before = refused_ones(lab)
    segment.crowd(PORT, stations)
    assert segment.learned(PORT) == CAPACITY
    table = lab.device.control("macs")
    assert {row["mac"] for row in table["macs"]} == set(map(colon_form, stations))
    assert (len(table["macs"]), table["capacity"], table["refused"]) == (CAPACITY, CAPACITY, before)

    stranger, other = in_a_row(2, first=CAPACITY)
    assert segment.say(PORT, stranger) == segment.others(PORT), "its frames go on"
    assert segment.entry(stranger) is None
    assert refused_ones(lab) == before + 1
    assert cpu.result("adp_add_mac_addr", other.hex(), PORT, VLAN, 1) == TABLE_FULL
    assert segment.say(SENDER, stations[-1], stations[0]) == {PORT}, "those that are known are still found"

    home = next(station for station in stations if bucket(station, VLAN) == bucket(stranger, VLAN))
    assert cpu.result("adp_del_mac_addr", home.hex(), VLAN, 0, 0) == 0
    segment.say(PORT, stranger)
    assert segment.interface(stranger) == PORT
    assert segment.learned(PORT) == CAPACITY - 1, "one of them has moved to the sender's port"


def test_a_full_bucket_refuses_while_the_table_has_room(lab, cpu, segment):
    stations = [station for station in in_a_row(CAPACITY + BUCKETS) if bucket(station, VLAN) == 0]
    assert len(stations) == SLOTS + 1
    before = refused_ones(lab)
    segment.crowd(PORT, stations)
    assert segment.learned(PORT) == SLOTS
    assert segment.interface(stations[-1]) is None
    assert refused_ones(lab) == before + 1
    assert cpu.result("adp_add_mac_addr", stations[-1].hex(), PORT, VLAN, 1) == BUCKET_FULL
