"""Customers' frames across a provider: two devices joined by a cable whose ports write the provider's tag.

Beside the cable each device has a host on a port that is set like the cable's. It hears what is flooded as it passes
the cable.
"""

import contextlib

import pytest
from adp.lab import Pair
from adp.lab.frames import vlan_tag
from adp.testing.cpu import Cpu
from tagging import EXTERNAL, INTERNAL, OLD_PROVIDER_TPID, PROVIDER_TPID, Probe, Tagging

SERVICE_A, SERVICE_B = 500, 600
# Ports of (near, far) devices; they differ, so that nothing works because numbers happen to be equal.
CABLE = (1, 22)
CUSTOMER_A, CUSTOMER_B, WITNESS = (5, 7), (6, 8), (21, 10)
FORTH, BACK = (0, 1), (1, 0)
TPIDS = (PROVIDER_TPID, OLD_PROVIDER_TPID)
CUSTOMERS_TAGS = {
    "untagged": b"",
    "tagged": vlan_tag(10, 5),
    "tagged twice": vlan_tag(SERVICE_B, 5) + vlan_tag(10),
    "priority": vlan_tag(0, 7),
    "a provider's own": vlan_tag(SERVICE_B, 1, PROVIDER_TPID) + vlan_tag(10),
    "an old provider's own": vlan_tag(SERVICE_A, 1, OLD_PROVIDER_TPID),
}


class Network:
    """Both devices, each with the library of a build; `sides` are near and far."""

    def __init__(self, pair, build, stack):
        self.pair = pair
        self.labs = (pair.near, pair.far)
        cpus = [stack.enter_context(contextlib.closing(Cpu(lab, build))) for lab in self.labs]
        for cpu in cpus:
            cpu.set_up()
        self.sides = [Tagging(lab, cpu) for lab, cpu in zip(self.labs, cpus, strict=True)]

    def set_up(self, tpid):
        for side, tagging in enumerate(self.sides):
            tagging.cpu.default_vlan_ports({0})
            self._connect(side, CUSTOMER_A[side], SERVICE_A)
            self._connect(side, CUSTOMER_B[side], SERVICE_B)
            for port in (CABLE[side], WITNESS[side]):
                tagging.dress(port, INTERNAL, tpid)

    def _connect(self, side, port, service):
        tagging = self.sides[side]
        tagging.cpu.vlan(service, {port, CABLE[side], WITNESS[side]})
        tagging.cpu.set_pvid(port, service)
        tagging.dress(port, EXTERNAL)

    def leaves(self, side, ports, tags, **probe):
        """({near port: tags}, {far port: tags}) of a frame that the host of one side sends."""
        sent = Probe.of(self.labs[side], **probe)
        self.labs[side].hosts[ports[side]].send(sent.with_tags(tags))
        return tuple(sent.tags_of(arrived) for arrived in self.pair.arrivals(sent.marker))

    def tidy(self):
        for tagging in self.sides:
            tagging.tidy()
            tagging.cpu.tidy()


@pytest.fixture(scope="module")
def pair(device_build):
    near, far = zip(CUSTOMER_A, CUSTOMER_B, WITNESS, strict=True)
    with Pair(set(near), set(far), [CABLE], device_build) as devices:
        yield devices


@pytest.fixture(scope="module")
def joined(pair, build):
    with contextlib.ExitStack() as stack:
        yield Network(pair, build, stack)


@pytest.fixture(params=TPIDS, ids=hex)
def network(joined, request):
    joined.set_up(request.param)
    joined.tpid = request.param
    yield joined
    joined.tidy()


def sorted_sides(here, at_sender, at_receiver):
    """(near, far) of what came at the sender's side and at the other."""
    return (at_sender, at_receiver) if here == 0 else (at_receiver, at_sender)


@pytest.mark.parametrize("here, there", [FORTH, BACK], ids=["forth", "back"])
@pytest.mark.parametrize("name", CUSTOMERS_TAGS)
def test_customers_tags_cross_unchanged(network, name, here, there):
    tags = CUSTOMERS_TAGS[name]
    service = vlan_tag(SERVICE_A, 0, network.tpid)
    wanted = {WITNESS[here]: service + tags}, {WITNESS[there]: service + tags, CUSTOMER_A[there]: tags}
    assert network.leaves(here, CUSTOMER_A, tags) == sorted_sides(here, *wanted)


def test_customers_stay_apart(network):
    tags = vlan_tag(10)
    for customer, service in ((CUSTOMER_A, SERVICE_A), (CUSTOMER_B, SERVICE_B)):
        outer = vlan_tag(service, 0, network.tpid)
        near, far = network.leaves(0, customer, tags)
        assert near == {WITNESS[0]: outer + tags}
        assert far == {WITNESS[1]: outer + tags, customer[1]: tags}


def test_known_station_is_reached_alone(network):
    tags, station = vlan_tag(10), network.pair.far.mac(CUSTOMER_A[1])
    network.leaves(1, CUSTOMER_A, tags, source=station)
    assert network.leaves(0, CUSTOMER_A, tags, destination=station) == ({}, {CUSTOMER_A[1]: tags})
    near, far = network.leaves(0, CUSTOMER_B, tags, destination=station)
    assert (set(near), set(far)) == ({WITNESS[0]}, {WITNESS[1], CUSTOMER_B[1]}), "the other service does not know it"


def test_customers_vlans_take_different_services(network):
    for side, tagging in enumerate(network.sides):
        members = {CUSTOMER_A[side], CUSTOMER_B[side], CABLE[side], WITNESS[side]}
        tagging.cpu.vlan_ports(SERVICE_B, members)
        tagging.double_tags.put(CUSTOMER_A[side], 10, SERVICE_B, 6)
    chosen, other = vlan_tag(10, 2), vlan_tag(11, 2)
    outer = vlan_tag(SERVICE_B, 6, network.tpid)
    near, far = network.leaves(0, CUSTOMER_A, chosen)
    assert near == {WITNESS[0]: outer + chosen, CUSTOMER_B[0]: chosen}
    assert far == {WITNESS[1]: outer + chosen, CUSTOMER_A[1]: chosen, CUSTOMER_B[1]: chosen}
    outer = vlan_tag(SERVICE_A, 0, network.tpid)
    near, far = network.leaves(0, CUSTOMER_A, other)
    assert (near, far) == ({WITNESS[0]: outer + other}, {WITNESS[1]: outer + other, CUSTOMER_A[1]: other})


def test_devices_that_disagree_on_the_tpid_do_not_connect_customers(network):
    (other,) = set(TPIDS) - {network.tpid}
    far = network.sides[1]
    far.dress(CABLE[1], INTERNAL, other)
    tags = vlan_tag(10)
    outer = vlan_tag(SERVICE_A, 0, network.tpid)
    assert network.leaves(0, CUSTOMER_A, tags) == ({WITNESS[0]: outer + tags}, {})
    far.dress(CABLE[1], INTERNAL, network.tpid)
    assert network.leaves(0, CUSTOMER_A, tags)[1][CUSTOMER_A[1]] == tags


def test_provider_tag_is_translated_at_the_cable(network):
    far = network.sides[1]
    far.cpu.vlan(700, {CUSTOMER_A[1], CABLE[1], WITNESS[1]})
    far.ingress.put(CABLE[1], SERVICE_A, 700)
    far.egress.put(CABLE[1], 700, SERVICE_A)
    far.cpu.set_pvid(CUSTOMER_A[1], 700)
    tags = vlan_tag(10, 4)
    agreed, own = (vlan_tag(vid, 0, network.tpid) for vid in (SERVICE_A, 700))
    there = {WITNESS[1]: own + tags, CUSTOMER_A[1]: tags}
    assert network.leaves(0, CUSTOMER_A, tags) == ({WITNESS[0]: agreed + tags}, there)
    back = {WITNESS[0]: agreed + tags, CUSTOMER_A[0]: tags}
    assert network.leaves(1, CUSTOMER_A, tags) == (back, {WITNESS[1]: own + tags})
