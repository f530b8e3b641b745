"""Multicast snooping with the example program igmp_snooping: hosts' kernels join and leave groups, a stream follows."""

import contextlib
from typing import NamedTuple

import pytest
from conftest import DEVICE_BUILD
from lab import Lab
from lab.frames import ETHERTYPE_IPV4, ETHERTYPE_IPV6, ethernet
from lab.listener import Listener, enable_ipv6, group_mac, set_protocol_version
from lab.snooping import SnoopingProgram
from scapy.all import IP, UDP, IPv6, Raw

SOURCE, ONE, OTHER, WITNESS = 1, 5, 26, 7
MEMBERS = (21, 22)
PORTS = (SOURCE, ONE, OTHER, WITNESS, *MEMBERS)
VLAN = 1
STREAM_PORT = 5000
FLOWS = 16


class Protocol(NamedTuple):
    """How hosts ask, and two groups that have a MAC address in common."""

    ip_version: int
    version: int
    group: str
    namesake: str


PROTOCOLS = {
    "IGMPv2": Protocol(4, 2, "239.1.2.3", "239.129.2.3"),
    "IGMPv3": Protocol(4, 3, "239.1.2.4", "239.129.2.4"),
    "MLDv1": Protocol(6, 1, "ff15::1:2:3", "ff15::2:2:3"),
    "MLDv2": Protocol(6, 2, "ff15::1:2:4", "ff15::2:2:4"),
}


@pytest.fixture(scope="module")
def bench():
    """A device whose hosts have IP addresses of both kinds."""
    with Lab(DEVICE_BUILD, PORTS, name="snooping") as lab:
        for port, host in lab.hosts.items():
            host.set_address(f"10.9.0.{port}/24")
            enable_ipv6(host)
        yield lab


@pytest.fixture(params=PROTOCOLS)
def protocol(request, bench):
    chosen = PROTOCOLS[request.param]
    for host in bench.hosts.values():
        set_protocol_version(host, chosen.ip_version, chosen.version)
    return chosen


@pytest.fixture
def agent(bench, build):
    with contextlib.closing(SnoopingProgram(bench.device, build)) as program:
        yield program
        assert program.end() == 0


@pytest.fixture
def agent_with_group(bench, build):
    with contextlib.closing(SnoopingProgram(bench.device, build, MEMBERS)) as program:
        yield program
        assert program.end() == 0


@pytest.fixture
def audience(bench):
    """Listeners made with it leave at the end."""
    with contextlib.ExitStack() as stack:

        def listen(port, address):
            return stack.enter_context(contextlib.closing(Listener(bench.hosts[port], address, STREAM_PORT)))

        yield listen


def name_of(port):
    return "group 1" if port in MEMBERS else f"port {port}"


class Stage:
    """An agent and who listens; each change is waited for."""

    def __init__(self, bench, agent, audience):
        self.bench, self._agent, self._listen = bench, agent, audience

    def join(self, port, address):
        listener = self._listen(port, address)
        self._agent.await_change(VLAN, address, name_of(port), True)
        return listener

    def leave(self, listener, port, address):
        listener.leave()
        self._agent.await_change(VLAN, address, name_of(port), False)

    def stream(self, address, flow=0):
        """(ports that a datagram of the source comes out of, once each; its content)"""
        content = self.bench.marker().ljust(40, b".")
        frame = self._frame(address, flow, content)
        self.bench.hosts[SOURCE].send(frame)
        arrived = self.bench.arrivals(content)
        assert arrived == dict.fromkeys(arrived, [frame])
        return set(arrived), content

    def _frame(self, address, flow, content):
        source = bytes([2, 0xAE, 0, 0, 0, flow])
        rest = UDP(sport=STREAM_PORT + flow, dport=STREAM_PORT) / Raw(content)
        if ":" in address:
            return ethernet(group_mac(address), source, ETHERTYPE_IPV6, bytes(IPv6(src="fe80::1", dst=address) / rest))
        return ethernet(group_mac(address), source, ETHERTYPE_IPV4, bytes(IP(src="10.9.0.1", dst=address) / rest))

    def heard(self, address):
        return self.stream(address)[0]

    def entries(self):
        """{(vid, MAC address): ports} of the switch's groups."""
        return {(row["vid"], row["mac"]): set(row["ports"]) for row in self.bench.device.control("mcast")["mcast"]}


@pytest.fixture
def stage(bench, agent, audience):
    return Stage(bench, agent, audience)


@pytest.fixture
def group_stage(bench, agent_with_group, audience):
    return Stage(bench, agent_with_group, audience)


def test_a_stream_reaches_exactly_those_who_joined(stage, protocol):
    group = protocol.group
    assert stage.heard(group) == set()
    one = stage.join(ONE, group)
    assert stage.heard(group) == {ONE}
    other = stage.join(OTHER, group)
    ports, content = stage.stream(group)
    assert ports == {ONE, OTHER}
    assert one.hears(content) and other.hears(content)
    stage.leave(one, ONE, group)
    assert stage.heard(group) == {OTHER}
    stage.leave(other, OTHER, group)
    assert stage.heard(group) == set()
    stage.join(ONE, group)
    assert stage.heard(group) == {ONE}


def test_groups_with_one_mac_address_are_told_apart(stage, protocol):
    first = stage.join(ONE, protocol.group)
    second = stage.join(ONE, protocol.namesake)
    stage.leave(first, ONE, protocol.group)
    assert stage.heard(protocol.namesake) == {ONE}
    stage.leave(second, ONE, protocol.namesake)
    assert stage.heard(protocol.namesake) == set()


def check_group_hears(stage, address, ports=()):
    """Each flow comes out of one of the group's members and of these ports."""
    used = set()
    for flow in range(FLOWS):
        heard = stage.stream(address, flow)[0]
        assert heard & set(ports) == set(ports)
        (member,) = heard - set(ports)
        used.add(member)
    return used


def test_a_stream_reaches_a_group_by_one_of_its_members(group_stage, protocol):
    neighbour = group_stage.join(MEMBERS[1], protocol.group)
    assert check_group_hears(group_stage, protocol.group) == set(MEMBERS)
    group_stage.leave(neighbour, MEMBERS[1], protocol.group)
    assert group_stage.heard(protocol.group) == set()


@pytest.mark.parametrize("first", (ONE, MEMBERS[0]))
def test_a_group_and_a_port_come_and_go(group_stage, protocol, first):
    address = protocol.group
    second = ({ONE, MEMBERS[0]} - {first}).pop()
    listeners = {port: group_stage.join(port, address) for port in (first, second)}
    assert check_group_hears(group_stage, address, {ONE}) == set(MEMBERS)
    group_stage.leave(listeners[first], first, address)
    if first == ONE:
        assert check_group_hears(group_stage, address) == set(MEMBERS)
    else:
        assert group_stage.heard(address) == {ONE}


def test_a_group_goes_on_hearing_when_it_loses_a_member(group_stage, bench, protocol):
    group_stage.join(MEMBERS[0], protocol.group)
    bench.device.control("pull", MEMBERS[0])
    try:
        bench.device.await_links(set(PORTS) - {MEMBERS[0]})
        assert check_group_hears(group_stage, protocol.group) == {MEMBERS[1]}
    finally:
        bench.device.control("plug", MEMBERS[0])
        bench.await_links()


def test_the_agent_leaves_no_groups_behind(bench, build, audience):
    with contextlib.closing(SnoopingProgram(bench.device, build, MEMBERS)) as agent:
        stage = Stage(bench, agent, audience)
        address = PROTOCOLS["IGMPv3"].group
        for port in (ONE, MEMBERS[0]):
            stage.join(port, address)
        assert stage.entries()
        assert agent.end() == 0
    assert stage.entries() == {}
    assert stage.heard(address) == set(PORTS) - {SOURCE}, "as before, groups are flooded"
