"""Storm control: each type of storm is limited, other frames pass, and flags tell which limit was exceeded."""

import adp
import pytest
from adp.testing.packet import Packet
from crossing import NEIGHBOUR, PORTS, RECEIVER, SENDER
from limits import (
    ALL_CODES,
    ALL_TYPES,
    BROADCAST,
    CRAWL,
    DESTINATIONS,
    DEVICE,
    FRAMES,
    JOINT,
    MULTICAST,
    NO_DEVICE,
    OCTETS,
    TYPE_NAMES,
    UNKNOWN,
    kilobit_packet,
)
from rate import TOLERANCE, frame_rate

FAILED, BAD_TYPE = 102, 201
BURST, MANY = 4, 12
# Deep enough that it is not full by the time that the device has been asked for a reading.
DEEP = 60
GROUP = 1
MEMBERS = (SENDER, NEIGHBOUR)
NEIGHBOUR_STATION = "02:00:00:00:a0:07"
SINGLE = [pytest.param(code, id=TYPE_NAMES[code]) for code in DESTINATIONS]


def storm_packet(lab, code, **fields):
    return kilobit_packet(lab, destination=DESTINATIONS[code], **fields)


def storm_of(lab, code, port=SENDER, frames=MANY):
    """(port, packet) pairs of a storm."""
    source = f"02:00:00:00:b0:{port:02x}"
    return [(port, storm_packet(lab, code, source=source))] * frames


def known_traffic(lab, crossing):
    """(sends, arrivals) of frames to a station that the switch knows."""
    crossing.check_flooded((NEIGHBOUR, Packet(source=NEIGHBOUR_STATION)))
    packets = [kilobit_packet(lab, destination=NEIGHBOUR_STATION)] * MANY
    return [(SENDER, packet) for packet in packets], packets


@pytest.mark.parametrize("code", SINGLE)
def test_limit_holds_its_type_and_leaves_the_rest_alone(lab, crossing, limits, code):
    known, at_neighbour = known_traffic(lab, crossing)
    limits.storm(SENDER, code, CRAWL, BURST)
    assert limits.read_storm(SENDER, code) == (CRAWL, BURST)
    storm = storm_of(lab, code)
    rest = [send for other in DESTINATIONS if other != code for send in storm_of(lab, other)]
    rest += storm_of(lab, code, RECEIVER)
    before, _ = limits.drops(SENDER)
    arrive = crossing.flooded(*storm[:BURST], *rest)
    arrive[NEIGHBOUR] += at_neighbour
    crossing.check([*storm, *rest, *known], arrive)
    assert limits.drops(SENDER) == (before + MANY - BURST, limits.drops(SENDER)[1])
    assert limits.exceeded(SENDER) == {code}
    assert limits.exceeded(RECEIVER) == set()


@pytest.mark.parametrize("code, rate", [(BROADCAST, 100), (MULTICAST, 150), (UNKNOWN, 250), (JOINT, 120)])
def test_storm_is_held_to_its_rate(lab, crossing, limits, code, rate):
    limits.storm(SENDER, code, rate, DEEP)
    packet = storm_packet(lab, BROADCAST if code == JOINT else code)
    measured = frame_rate(crossing, lambda: limits.shown(SENDER, code), packet)
    assert measured == pytest.approx(rate, rel=TOLERANCE)


@pytest.mark.parametrize("padding", [0, 1000], ids=["short frames", "long frames"])
def test_storm_is_held_to_its_rate_of_frames(crossing, limits, padding):
    limits.count(BROADCAST, FRAMES)
    limits.storm(SENDER, BROADCAST, 150, DEEP)
    packet = Packet(destination=DESTINATIONS[BROADCAST], padding=padding)
    measured = frame_rate(crossing, lambda: limits.shown(SENDER, BROADCAST), packet)
    assert measured == pytest.approx(150, rel=TOLERANCE)


@pytest.mark.parametrize("code", SINGLE)
def test_frames_count_alike_however_long_if_frames_are_counted(lab, crossing, limits, code):
    limits.count(code, FRAMES)
    assert [limits.counting(each) for each in ALL_CODES] == [FRAMES if each == code else OCTETS for each in ALL_CODES]
    limits.storm(SENDER, code, CRAWL, BURST)
    storm = [(SENDER, packet.but(padding=1000)) for _, packet in storm_of(lab, code)]
    crossing.check(storm, crossing.flooded(*storm[:BURST]))
    limits.count(code, OCTETS)
    storm = storm_of(lab, code, frames=BURST - 1) + storm
    # A long frame of more than a thousand octets has no room left by three of a kilobit each.
    crossing.check(storm, crossing.flooded(*storm[: BURST - 1]))


def test_counting_of_all_types_is_set_at_once(cpu, limits):
    limits.count(ALL_TYPES, FRAMES)
    assert [limits.counting(code) for code in (ALL_TYPES, *ALL_CODES)] == [FRAMES] * 5
    limits.count(JOINT, OCTETS)
    assert cpu.result("adp_get_storm_counting_mode", DEVICE, ALL_TYPES, 0) == FAILED, "they are not alike"


def test_joint_limit_is_on_the_selected_types_together(lab, crossing, limits):
    limits.storm(SENDER, JOINT, CRAWL, BURST)
    one_each = [send for code in DESTINATIONS for send in storm_of(lab, code, frames=1)]
    storm = storm_of(lab, BROADCAST)
    crossing.check_flooded(*one_each)
    crossing.check(storm, crossing.flooded(*storm[:1]))
    assert limits.exceeded(SENDER) == {JOINT}
    limits.select(SENDER, MULTICAST, 0)
    assert [limits.selection(SENDER, code) for code in ALL_CODES] == [1, 0, 1, 0]
    crossing.check_flooded(*storm_of(lab, MULTICAST))
    unknown = storm_of(lab, UNKNOWN)
    crossing.check(unknown, {})


def test_control_that_is_off_limits_nothing(lab, crossing, limits):
    for code in DESTINATIONS:
        limits.storm(SENDER, code, CRAWL, BURST)
    limits.enable(SENDER, MULTICAST, 0)
    crossing.check_flooded(*storm_of(lab, MULTICAST))
    storm = storm_of(lab, BROADCAST)
    crossing.check(storm, crossing.flooded(*storm[:BURST]))
    limits.enable(SENDER, ALL_TYPES, 0)
    for code in DESTINATIONS:
        crossing.check_flooded(*storm_of(lab, code))
    assert limits.exceeded(SENDER) == {BROADCAST}
    limits.enable(SENDER, MULTICAST, 1)
    storm = storm_of(lab, MULTICAST)
    crossing.check(storm, crossing.flooded(*storm[:BURST]))
    crossing.check_flooded(*storm_of(lab, UNKNOWN))


def test_flags_stay_until_they_are_reset(lab, crossing, limits):
    for port in (SENDER, NEIGHBOUR):
        for code in (BROADCAST, UNKNOWN):
            limits.storm(port, code, CRAWL, BURST)
    crossing.check_flooded(*storm_of(lab, BROADCAST, frames=BURST))
    assert limits.exceeded(SENDER) == set(), "up to the limit is not over it"
    crossing.check(storm_of(lab, BROADCAST, frames=1), {})
    crossing.send(*storm_of(lab, UNKNOWN), *storm_of(lab, UNKNOWN, NEIGHBOUR))
    crossing.check_flooded((RECEIVER, Packet()))
    assert limits.exceeded(SENDER) == {BROADCAST, UNKNOWN}
    assert limits.exceeded(NEIGHBOUR) == {UNKNOWN}
    limits.storm(SENDER, BROADCAST, 0, 0)
    assert limits.exceeded(SENDER) == {BROADCAST, UNKNOWN}, "the limit is gone, the flag is not"
    limits.reset(SENDER)
    assert limits.exceeded(SENDER) == set()
    assert limits.exceeded(NEIGHBOUR) == {UNKNOWN}


def test_groups_limit_is_on_each_member(lab, cpu, crossing, limits):
    cpu.form_group(GROUP, MEMBERS)
    limits.storm(adp.agg(GROUP), BROADCAST, CRAWL, BURST)
    assert [limits.read_storm(port, BROADCAST) for port in PORTS] == [(CRAWL, BURST)] * 2 + [(0, 0)]
    assert limits.read_storm(adp.agg(GROUP), BROADCAST) == (CRAWL, BURST)
    storms = {port: storm_of(lab, BROADCAST, port) for port in MEMBERS}
    sends = [send for storm in storms.values() for send in storm]
    passed = [packet for storm in storms.values() for _, packet in storm[:BURST]]
    crossing.check(sends, {RECEIVER: passed})
    assert [limits.exceeded(port) for port in PORTS] == [{BROADCAST}, {BROADCAST}, set()]
    limits.reset(adp.agg(GROUP))
    assert [limits.exceeded(port) for port in PORTS] == [set()] * 3


def test_groups_limit_is_read_from_its_management_interface(cpu, limits):
    cpu.form_group(GROUP, MEMBERS)
    for port, burst in ((SENDER, 5), (NEIGHBOUR, 7)):
        limits.storm(port, MULTICAST, 64, burst)
        cpu.give_management_port(GROUP, port)
        assert limits.read_storm(adp.agg(GROUP), MULTICAST) == (64, burst)


def test_calls_that_know_no_groups_refuse_them(cpu, limits):
    cpu.form_group(GROUP, MEMBERS)
    agg = adp.agg(GROUP)
    for words in (
        ("adp_set_storm_seltype", DEVICE, agg, BROADCAST, 0),
        ("adp_get_storm_seltype", DEVICE, agg, BROADCAST),
        ("adp_set_stormcontrol_enable", DEVICE, agg, BROADCAST, 0),
        ("adp_get_storm_exceed_flag", DEVICE, agg, BROADCAST),
        ("adp_set_ingress_limit", DEVICE, agg, 1, 1),
        ("adp_get_ingress_limit", DEVICE, agg),
    ):
        assert cpu.result(*words) == FAILED, words[0]
    assert [limits.selection(port, BROADCAST) for port in MEMBERS] == [1, 1]
    assert [limits.read_ingress(port) for port in MEMBERS] == [(0, 0)] * 2


def test_what_has_no_meaning_is_refused_and_changes_nothing(cpu, limits):
    limits.storm(SENDER, BROADCAST, 64, BURST)
    for words in (
        ("adp_set_storm_control", DEVICE, SENDER, BROADCAST, 100000001, 1),
        ("adp_set_storm_control", DEVICE, SENDER, BROADCAST, 1, 1000001),
        ("adp_set_storm_control", DEVICE, SENDER, BROADCAST | MULTICAST, 1, 1),
        ("adp_set_storm_seltype", DEVICE, SENDER, BROADCAST, 2),
        ("adp_get_storm_exceed_flag", DEVICE, SENDER, BROADCAST | MULTICAST),
        ("adp_set_storm_counting_mode", DEVICE, BROADCAST, 0, 2),
        ("adp_set_ingress_limit", DEVICE, SENDER, 100000001, 1),
    ):
        assert cpu.result(*words) == FAILED, words
    assert cpu.result("adp_set_storm_control", DEVICE, 0x20000001, BROADCAST, 1, 1) == BAD_TYPE
    assert cpu.result("adp_set_storm_control", NO_DEVICE, SENDER, BROADCAST, 1, 1) == 0
    assert limits.read_storm(SENDER, BROADCAST) == (64, BURST)
    assert limits.read_ingress(SENDER) == (0, 0)
    assert limits.counting(BROADCAST) == OCTETS


# The ingress limit


def test_ingress_limit_holds_all_frames_together(lab, crossing, limits):
    known, at_neighbour = known_traffic(lab, crossing)
    limits.ingress(SENDER, CRAWL, BURST)
    assert limits.read_ingress(SENDER) == (CRAWL, BURST)
    _, before = limits.drops(SENDER)
    crossing.check(known[:1], {NEIGHBOUR: at_neighbour[:1]})
    one_each = [send for code in DESTINATIONS for send in storm_of(lab, code, frames=1)]
    crossing.check_flooded(*one_each)
    crossing.check([*known, *one_each], {})
    others = storm_of(lab, BROADCAST, RECEIVER)
    crossing.check_flooded(*others)
    assert limits.drops(SENDER)[1] == before + len(known) + len(one_each)
    assert limits.exceeded(SENDER) == set()


@pytest.mark.parametrize("rate", [100, 300])
def test_ingress_is_held_to_its_rate(lab, crossing, limits, rate):
    limits.ingress(SENDER, rate, DEEP)
    measured = frame_rate(crossing, lambda: limits.shown_ingress(SENDER), kilobit_packet(lab))
    assert measured == pytest.approx(rate, rel=TOLERANCE)
