"""Cables: a port without a link passes nothing, in either direction, and works again with one."""

import pytest
from adp.lab import LabError
from adp.lab.frames import BROADCAST, ETHERTYPE_EXPERIMENT, ethernet

PORT = 22
WITNESS = 5
ALL_PORTS = set(range(1, 27))
CPU_PORT = 0


def unplug_device_side(lab):
    lab.device.control("pull", PORT)


def plug_device_side(lab):
    lab.device.control("plug", PORT)


def unplug_host_side(lab):
    lab.hosts[PORT].lower_link()


def plug_host_side(lab):
    lab.hosts[PORT].raise_link()


SIDES = {"device": (unplug_device_side, plug_device_side), "host": (unplug_host_side, plug_host_side)}


@pytest.fixture(params=SIDES)
def unplugged(lab, request):
    """Pulls the port's cable; gives a function that plugs it in again."""
    unplug, plug = SIDES[request.param]

    def repair():
        plug(lab)
        lab.await_links()

    unplug(lab)
    lab.await_links(without={PORT})
    yield repair
    repair()


def broadcast(lab):
    return ethernet(BROADCAST, lab.mac(), ETHERTYPE_EXPERIMENT, lab.marker())


def test_port_without_link_sends_nothing(lab, cpu, unplugged):
    frame = broadcast(lab)
    assert cpu.transmit(frame, (PORT, WITNESS)) == 0
    assert lab.arrivals(frame[14:]) == {WITNESS: [frame]}
    unplugged()
    assert cpu.transmit(frame, (PORT, WITNESS)) == 0
    assert lab.arrivals(frame[14:]) == {WITNESS: [frame], PORT: [frame]}


def test_link_that_is_back_passes_frames_from_its_host(lab, cpu, unplugged):
    unplugged()
    frame = broadcast(lab)
    lab.hosts[PORT].send(frame)
    assert set(lab.arrivals(frame[14:])) == ALL_PORTS - {PORT}


def test_frames_flood_past_a_port_without_link(lab, cpu, unplugged):
    frame = broadcast(lab)
    lab.hosts[WITNESS].send(frame)
    assert set(lab.arrivals(frame[14:])) == ALL_PORTS - {PORT, WITNESS}


def test_port_is_told_to_be_down(lab, cpu, unplugged):
    states = {port["port"]: port["link"] for port in lab.device.control("ports")["ports"]}
    assert states == {port: port != PORT for port in ALL_PORTS | {CPU_PORT}}


@pytest.fixture
def bad_cable(lab):
    """Makes the port's cable a bad one; it is a good one again afterwards."""
    yield lambda **conditions: lab.device.cable(PORT, **conditions)
    lab.device.cable(PORT)


def test_bad_cable_loses_duplicates_and_delays_what_leaves(lab, cpu, bad_cable):
    frame = broadcast(lab)
    bad_cable(loss="100%")
    assert cpu.transmit(frame, (PORT, WITNESS)) == 0
    assert lab.arrivals(frame[14:], without={PORT}) == {WITNESS: [frame]}
    bad_cable(delay="100ms", duplicate="100%")
    assert cpu.transmit(frame, (PORT, WITNESS)) == 0
    assert lab.arrivals(frame[14:]) == {WITNESS: [frame], PORT: [frame, frame]}


def test_impossible_cable_is_refused_with_a_sentence(lab):
    with pytest.raises(LabError, match="takes a percentage from 0% to 100%"):
        lab.device.cable(PORT, loss="101%")
