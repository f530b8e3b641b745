"""Meters: a flow is limited to its rate, by the device's clock; and a meter whose rule is deleted."""

import pytest
from acl import DROP, METER, PERMIT
from crossing import NEIGHBOUR, SENDER
from adp.testing.packet import Packet
from rate import MORE_THAN_A_BUCKET, TOLERANCE, frame_rate, reading

# A submodule whose rules are pairs and one whose are not, with where their meters begin and their usual rate.
PAIRS, SINGLE = 3, 10
METER_BASES = {PAIRS: 4, SINGLE: 2}
USUAL_RATE = 100
ENTITY = 1
INDEX = 1
FROM_SENDER = [(13, {SENDER})]
CHECK_SEQUENCE_BYTES = 4
GAP_BYTES = 20
METER_MISSING = -58


def shown(lab, number):
    """The reading of a meter."""
    answer = lab.device.ask("meters")
    return reading(answer["meters"], answer["time"], meter=number)


def octets_counted(lab, packet):
    """What a frame takes of a meter. Whether preamble and gap are counted is up to start-up, which is not repeated."""
    gap = GAP_BYTES if lab.device.ask("meters")["counts_gap"] else 0
    return len(packet.build(lab.marker())) + CHECK_SEQUENCE_BYTES + gap


@pytest.mark.parametrize("submodule, asked, rate", [(PAIRS, 0, USUAL_RATE), (SINGLE, 250, 250)], ids=["usual", "own"])
def test_flow_is_held_to_its_rate(lab, crossing, acl, submodule, asked, rate):
    number = METER_BASES[submodule] + INDEX
    acl.install(submodule, ENTITY, FROM_SENDER, [(METER, asked, INDEX)])
    octets = octets_counted(lab, Packet())
    kilobits = frame_rate(crossing, lambda: shown(lab, number), Packet()) * octets * 8 / 1000
    assert kilobits == pytest.approx(rate, rel=TOLERANCE)


def test_what_passes_arrives_and_what_does_not_is_counted(lab, crossing, acl):
    acl.install(SINGLE, ENTITY, FROM_SENDER, [(METER, 0, INDEX)])
    neighbours = [(NEIGHBOUR, Packet(source="02:00:00:00:a0:0b"))] * MORE_THAN_A_BUCKET
    marker = crossing.send(*[(SENDER, Packet())] * MORE_THAN_A_BUCKET, *neighbours)
    arrived = lab.arrivals(marker)
    row = acl.meters()[METER_BASES[SINGLE] + INDEX]
    assert row["passed"] + row["dropped"] == MORE_THAN_A_BUCKET
    assert min(row["passed"], row["dropped"]) > 0
    assert len(arrived[NEIGHBOUR]) == row["passed"]
    assert len(arrived[SENDER]) == MORE_THAN_A_BUCKET, "the neighbour's flow is not metered"


def test_meter_goes_with_its_rule_if_asked_to(acl, crossing):
    acl.install(SINGLE, ENTITY, FROM_SENDER, [(METER, 0, INDEX)])
    assert set(acl.meters()) == {METER_BASES[SINGLE] + INDEX}
    assert acl.delete(SINGLE, ENTITY, METER) == 0
    assert acl.meters() == {}
    crossing.check_flooded(*[(SENDER, Packet())] * MORE_THAN_A_BUCKET)


def test_meter_that_is_not_asked_for_stays(acl):
    acl.install(SINGLE, ENTITY, FROM_SENDER, [(METER, 0, INDEX)])
    assert acl.delete(SINGLE, ENTITY) == 0
    assert [row["entries"] for row in acl.meters().values()] == [[]]


def test_replacement_looks_for_meters_in_the_new_rule(acl):
    """So a rule without a meter leaves its predecessor's behind, and one with a meter gets a fresh one."""
    acl.install(SINGLE, ENTITY, FROM_SENDER, [(METER, 0, INDEX)])
    acl.install(SINGLE, ENTITY, FROM_SENDER, [(PERMIT,)])
    assert [row["entries"] for row in acl.meters().values()] == [[]]
    acl.install(SINGLE, ENTITY, FROM_SENDER, [(METER, 0, INDEX)])
    acl.install(SINGLE, ENTITY, FROM_SENDER, [(METER, 300, INDEX)])
    assert [(row["rate"], len(row["entries"])) for row in acl.meters().values()] == [(300, 1)]


def test_deleting_a_rule_with_a_meter_that_it_never_had_says_so(acl):
    acl.install(SINGLE, ENTITY, FROM_SENDER, [(DROP,)])
    assert acl.delete(SINGLE, ENTITY, METER) == METER_MISSING
    assert (acl.listed_rules(), acl.entries()) == (0, {})
