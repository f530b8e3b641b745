"""adp_transmit_frame: one frame to one interface, with an opcode of the caller's."""

import adp
import pytest
from adp.lab.frames import BROADCAST, ETHERTYPE_EXPERIMENT, ethernet, vlan_tag

NOT_USED, SWITCHED, ALSO_NOT_USED, TO_PORT, TO_BITMAP, AS_GIVEN, AS_GIVEN_TOO, BITMAP_AS_GIVEN = range(8)
ALL_PORTS = range(1, 27)
VLAN = 100
NO_MANAGEMENT_PORT = "manage interface error. \n"


@pytest.fixture
def frame(lab):
    return ethernet(BROADCAST, lab.mac(), ETHERTYPE_EXPERIMENT, lab.marker().ljust(46, b"."))


@pytest.mark.parametrize("opcode", [TO_PORT, AS_GIVEN, AS_GIVEN_TOO])
@pytest.mark.parametrize("port", [1, 21, 22, 26])
def test_one_port_opcodes_reach_their_port(lab, cpu, frame, opcode, port):
    assert cpu.transmit_single(frame, port, opcode)["result"] == 0
    assert lab.arrivals(frame[14:]) == {port: [frame]}


def test_every_port_is_reached(lab, cpu):
    for port in ALL_PORTS:
        frame = ethernet(BROADCAST, lab.mac(port), ETHERTYPE_EXPERIMENT, lab.marker())
        assert cpu.transmit_single(frame, port, AS_GIVEN)["result"] == 0
        assert lab.arrivals(frame[14:]) == {port: [frame]}


@pytest.mark.parametrize("opcode, tag_stays", [(TO_PORT, False), (AS_GIVEN, True), (AS_GIVEN_TOO, True)])
def test_only_opcode_3_takes_off_the_tag_of_an_untagged_member(lab, cpu, frame, opcode, tag_stays):
    cpu.vlan(VLAN, {22}, {22})
    tagged = frame[:12] + vlan_tag(VLAN) + frame[12:]
    assert cpu.transmit_single(tagged, 22, opcode)["result"] == 0
    assert lab.arrivals(frame[14:]) == {22: [tagged if tag_stays else frame]}


@pytest.mark.parametrize("opcode", [TO_BITMAP, BITMAP_AS_GIVEN])
def test_bitmap_opcodes_read_the_port_number_as_a_bitmap(lab, cpu, frame, opcode):
    # Port 13 is physical port 16, and 16 is the bit of physical port 4, which is port 1.
    assert cpu.transmit_single(frame, 13, opcode)["result"] == 0
    assert lab.arrivals(frame[14:]) == {1: [frame]}


@pytest.mark.parametrize("opcode", [NOT_USED, ALSO_NOT_USED])
def test_unused_opcodes_are_dropped_by_the_chip(lab, cpu, frame, opcode):
    before = lab.device.control("counters")
    assert cpu.transmit_single(frame, 22, opcode)["result"] == 0
    assert lab.arrivals(frame[14:]) == {}
    assert lab.device.control("counters") != before


def test_opcode_1_is_switched_whatever_the_port(lab, cpu, frame):
    assert cpu.transmit_single(frame, 22, SWITCHED)["result"] == 0
    assert lab.arrivals(frame[14:]) == {port: [frame] for port in ALL_PORTS}


@pytest.mark.parametrize("opcode", [8 | AS_GIVEN, 0xFFFFFFF8 | AS_GIVEN])
def test_only_three_bits_of_the_opcode_count(lab, cpu, frame, opcode):
    assert cpu.transmit_single(frame, 22, opcode)["result"] == 0
    assert lab.arrivals(frame[14:]) == {22: [frame]}


@pytest.mark.parametrize("port", [5, 22])
def test_group_is_reached_through_its_management_port(lab, cpu, frame, port):
    cpu.give_management_port(2, port)
    assert cpu.transmit_single(frame, adp.agg(2), AS_GIVEN)["result"] == 0
    assert lab.arrivals(frame[14:]) == {port: [frame]}


def test_group_without_management_port_is_refused_aloud(lab, cpu, frame):
    answer = cpu.transmit_single(frame, adp.agg(2), AS_GIVEN)
    assert (answer["result"], answer["printed"]["stdout"]) == (-1, NO_MANAGEMENT_PORT)
    assert lab.arrivals(frame[14:]) == {}


def test_interface_beyond_the_map_reaches_no_port(lab, cpu, frame):
    # It translates to -1, whose low 25 bits are no port of the chip; the send itself succeeds.
    assert cpu.transmit_single(frame, 27, AS_GIVEN)["result"] == 0
    assert lab.arrivals(frame[14:]) == {}
