"""Multicast snooping starts on a network that is up: hosts have already reported their groups, and IPv6 needs some."""

import contextlib
import ipaddress
import struct

import pytest
from adp.lab.frames import ETHERTYPE_IPV4, ETHERTYPE_IPV6, VID_MASK, split_tags
from adp.lab.listener import Listener, set_protocol_version
from adp.testing.cpu import Cpu
from reports import ICMPV6, IGMP, IGMP_QUERY, MLD_QUERY
from scapy.all import IPv6
from scapy.layers.inet6 import in6_chksum
from scapy.utils import checksum
from stage import ONE, OTHER, PORTS, PROTOCOLS, SOURCE, STREAM_PORT, performance

TRUNK_VLAN = 100
TRUNK_PORTS = (SOURCE, ONE)
QUERIES = 2
UNTAGGED = ()
ANSWERED = 1.0  # long enough for hosts to answer on a busy machine
FOREVER = 12
MLD_VERSIONS = (1, 2)


def query_of(frame):
    """(VLANs of the tags, protocol, what must be 0 in a right query and else is a checksum, source) of a query; None for
    any other frame.
    """
    tags, kind, packet = split_tags(frame)
    vids = tuple(tci & VID_MASK for _, tci in tags)
    if kind == ETHERTYPE_IPV4 and packet[9] == IGMP and packet[24] == IGMP_QUERY:
        (length,) = struct.unpack_from("!H", packet, 2)
        return vids, "IGMP", checksum(packet[:24]) | checksum(packet[24:length]), packet[12:16]
    if kind == ETHERTYPE_IPV6 and packet[6] == 0 and packet[40] == ICMPV6 and packet[48] == MLD_QUERY:
        return vids, "MLD", in6_chksum(ICMPV6, IPv6(packet[:40]), packet[48:]), packet[8:10]
    return None


def queries_at(theatre):
    """{port: queries that have arrived there since the last look}"""
    arrived = {port: list(filter(None, map(query_of, frames))) for port, frames in theatre.arrivals(b"").items()}
    return {port: queries for port, queries in arrived.items() if queries}


def test_all_hosts_are_asked_in_every_vlan(theatre, build):
    with contextlib.closing(Cpu(theatre, build)) as cpu:
        cpu.set_up()
        cpu.vlan(TRUNK_VLAN, TRUNK_PORTS)
        queries_at(theatre)
        with performance(theatre, build) as stage:
            stage.agent.await_dropping()
            asked = queries_at(theatre)
        cpu.tidy()
    for port in PORTS:
        vlans = (UNTAGGED, (TRUNK_VLAN,)) if port in TRUNK_PORTS else (UNTAGGED,)
        once = [query for vids in vlans for query in ((vids, "IGMP", 0, bytes(4)), (vids, "MLD", 0, b"\xfe\x80"))]
        assert asked[port] == once * QUERIES


@pytest.mark.parametrize("protocol", PROTOCOLS.values(), ids=PROTOCOLS)
def test_a_listener_from_before_goes_on_hearing(theatre, build, protocol):
    host = theatre.hosts[ONE]
    set_protocol_version(host, protocol.ip_version, protocol.version)
    with contextlib.closing(Listener(host, protocol.group, STREAM_PORT)):
        with performance(theatre, build, response_time=ANSWERED) as stage:
            stage.agent.await_dropping()
            assert stage.heard(protocol.group) == {ONE}
            assert stage.heard(protocol.namesake) == {ONE}, "it has the same MAC address"
    set_protocol_version(host, protocol.ip_version, 0)


def test_groups_are_flooded_until_hosts_have_answered(theatre, build):
    with performance(theatre, build, response_time=FOREVER) as stage:
        for protocol in PROTOCOLS.values():
            assert stage.heard(protocol.group) == set(PORTS) - {SOURCE}
            stage.join(ONE, protocol.group)
            assert stage.heard(protocol.group) == set(PORTS) - {SOURCE}, "others may want it and not have answered yet"
        assert stage.entries() == {}


def test_what_hosts_need_not_ask_for_is_always_flooded(stage):
    for address in ("224.0.0.5", "224.0.0.251", "ff02::1"):
        assert stage.heard(address) == set(PORTS) - {SOURCE}
    for address in ("239.1.1.1", "ff15::1:1"):
        assert stage.heard(address) == set()


def solicitations(theatre, host):
    """The ports where the host was asked for its MAC address since the last look."""
    group = b"\x33\x33\xff" + ipaddress.ip_address(host.link_local()).packed[-3:]
    return {port for port, frames in theatre.arrivals(group).items() if any(frame[:6] == group for frame in frames)}


def find_each_other(theatre):
    """Two hosts discover each other anew; gives for either the ports where it was asked for."""
    asked = []
    for asking, answering in ((ONE, OTHER), (OTHER, ONE)):
        theatre.arrivals(b"")
        one, other = theatre.hosts[asking], theatre.hosts[answering]
        for host in (one, other):
            host.forget_neighbours()
        assert one.ping(other.link_local()), f"The host at port {asking} does not find the one at port {answering}."
        asked.append(solicitations(theatre, other))
    return asked


@pytest.mark.parametrize("version", MLD_VERSIONS)
def test_ipv6_neighbours_find_each_other(theatre, build, version):
    everywhere = [set(PORTS) - {ONE}, set(PORTS) - {OTHER}]
    for host in theatre.hosts.values():
        set_protocol_version(host, 6, version)
    assert find_each_other(theatre) == everywhere
    with performance(theatre, build, response_time=ANSWERED) as stage:
        stage.agent.await_dropping()
        assert find_each_other(theatre) == [{OTHER}, {ONE}], "only those who are asked for get solicitations"
    assert find_each_other(theatre) == everywhere
    for host in theatre.hosts.values():
        set_protocol_version(host, 6, 0)
