"""Switch tags that a caller builds with interface numbers: translated by the library, obeyed by the chip."""

import struct

import pytest
from adp.lab.frames import BROADCAST, ETHERTYPE_EXPERIMENT, SWITCH_TAG_TYPE, ethernet

OPCODE_SHIFT = 29
TO_PORT, TO_BITMAP, AS_GIVEN, AS_GIVEN_TOO = 3, 4, 5, 6
HIGH = 25


def bitmap_tag(interfaces):
    low = sum(1 << number for number in interfaces if number < HIGH)
    high = sum(1 << (number - HIGH) for number in interfaces if number >= HIGH)
    return struct.pack("!II", TO_BITMAP << OPCODE_SHIFT | low, high)


def port_tag(opcode, interface):
    return struct.pack("!II", opcode << OPCODE_SHIFT | interface, 0)


def arrivals_of_tag(lab, cpu, tag):
    """The ports that a frame leaves which a caller sends with the translated tag himself."""
    translated = cpu.call("adp_bcmtag_dest_port_intf_2_phy", tag.hex())["outputs"]["tag"]
    frame = ethernet(BROADCAST, lab.mac(), ETHERTYPE_EXPERIMENT, lab.marker())
    lab.device.cpu.send(frame[:12] + struct.pack("!H", SWITCH_TAG_TYPE) + bytes.fromhex(translated) + frame[12:])
    arrived = lab.arrivals(frame[14:])
    assert all(frames == [frame] for frames in arrived.values())
    return set(arrived)


@pytest.mark.parametrize("interfaces", [{1}, {21}, {22}, {26}, {1, 21, 22, 26}, set(range(1, 27))])
def test_bitmap_of_interfaces_reaches_their_ports(lab, cpu, interfaces):
    assert arrivals_of_tag(lab, cpu, bitmap_tag(interfaces)) == interfaces


@pytest.mark.parametrize("opcode", [TO_PORT, AS_GIVEN, AS_GIVEN_TOO])
@pytest.mark.parametrize("interface", [1, 21, 22, 26])
def test_one_interface_reaches_its_port(lab, cpu, opcode, interface):
    assert arrivals_of_tag(lab, cpu, port_tag(opcode, interface)) == {interface}
