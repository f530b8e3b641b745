"""Multicast snooping with the example program igmp_snooping: hosts' kernels join and leave groups, a stream follows."""

import pytest
from adp.lab.listener import set_protocol_version
from stage import MEMBERS, NEIGHBOUR, ONE, OTHER, PORTS, PROTOCOLS, SOURCE

FLOWS = 16


@pytest.fixture(params=PROTOCOLS)
def protocol(request, theatre):
    chosen = PROTOCOLS[request.param]
    for host in theatre.hosts.values():
        set_protocol_version(host, chosen.ip_version, chosen.version)
    return chosen


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
    listener = group_stage.join(NEIGHBOUR, protocol.group)
    assert check_group_hears(group_stage, protocol.group) == set(MEMBERS)
    group_stage.leave(listener, NEIGHBOUR, protocol.group)
    assert group_stage.heard(protocol.group) == set()


@pytest.mark.parametrize("first", (ONE, NEIGHBOUR))
def test_a_group_and_a_port_come_and_go(group_stage, protocol, first):
    address = protocol.group
    second = ({ONE, NEIGHBOUR} - {first}).pop()
    listeners = {port: group_stage.join(port, address) for port in (first, second)}
    assert check_group_hears(group_stage, address, {ONE}) == set(MEMBERS)
    group_stage.leave(listeners[first], first, address)
    if first == ONE:
        assert check_group_hears(group_stage, address) == set(MEMBERS)
    else:
        assert group_stage.heard(address) == {ONE}


def test_a_group_goes_on_hearing_when_it_loses_a_member(group_stage, protocol):
    bench = group_stage.bench
    group_stage.join(NEIGHBOUR, protocol.group)
    bench.device.control("pull", NEIGHBOUR)
    try:
        bench.device.await_links(set(PORTS) - {NEIGHBOUR})
        assert check_group_hears(group_stage, protocol.group) == {MEMBERS[1]}
    finally:
        bench.device.control("plug", NEIGHBOUR)
        bench.await_links()


def test_the_agent_leaves_no_groups_behind(group_stage):
    address = PROTOCOLS["IGMPv3"].group
    for port in (ONE, NEIGHBOUR):
        group_stage.join(port, address)
    assert group_stage.entries()
    assert group_stage.agent.end() == 0
    assert group_stage.entries() == {}
    assert group_stage.heard(address) == set(PORTS) - {SOURCE}, "as before, groups are flooded"
