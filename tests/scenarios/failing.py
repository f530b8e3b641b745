"""Scenarios that fail on purpose, each in another way. test_failures.py reads what they say."""

import pytest
from adp.lab import Lab
from adp.lab.frames import BROADCAST, ETHERTYPE_EXPERIMENT, ethernet, vlan_tag
from adp.testing.packet import Packet
from segment import VLAN, Segment, in_a_row


FROM, MEMBER, OUTSIDE = 1, 5, 7
EMPTY_VLAN = 200
# More frames than the device keeps accounts of.
CROWD = 2000


@pytest.fixture(scope="session")
def lab(device_build):
    with Lab(device_build, (FROM, MEMBER, OUTSIDE)) as bench:
        yield bench


@pytest.fixture
def segment(lab, cpu):
    return Segment(lab, cpu, {FROM, MEMBER})


def test_a_frame_is_dropped(lab, segment):
    marker = lab.marker()
    frame = ethernet(BROADCAST, lab.mac(), ETHERTYPE_EXPERIMENT, marker.ljust(46, b"."), vlan_tag(EMPTY_VLAN))
    lab.hosts[FROM].send(frame)
    assert lab.arrivals(marker) == {MEMBER: [frame]}


def test_a_flood_passes_over_a_port(lab, segment):
    assert segment.say(FROM, lab.mac(FROM)) == {MEMBER, OUTSIDE}


def test_a_frame_arrives_where_it_should_not(lab, cpu):
    segment = Segment(lab, cpu, {FROM, MEMBER, OUTSIDE})
    marker = lab.marker()
    frame = segment.frame(lab.mac(FROM), marker=marker)
    lab.hosts[FROM].send(frame)
    assert lab.arrivals(marker) == {MEMBER: [frame]}


def test_a_frame_arrives_with_another_field(lab, segment):
    marker = lab.marker()
    sent, wanted = (Packet(vlan=VLAN, priority=priority).build(marker) for priority in (2, 3))
    lab.hosts[FROM].send(sent)
    assert lab.arrivals(marker) == {MEMBER: [wanted]}


def test_nothing_is_sent(lab, segment):
    marker = lab.marker()
    assert lab.arrivals(marker) == {MEMBER: [segment.frame(lab.mac(FROM), marker=marker)]}


def test_a_crowd_speaks_first(lab, segment):
    segment.crowd(MEMBER, in_a_row(CROWD))
    assert segment.say(FROM, lab.mac(FROM)) == set()
