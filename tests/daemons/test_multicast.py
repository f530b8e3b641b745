"""The kernel bridge's IGMP and MLD snooping on the switch, as the querier and with another one; hosts with IPv6 on."""

import contextlib
import json
import time

import pytest
from adp.lab.frames import ETHERTYPE_IPV4, ETHERTYPE_IPV6, ethernet
from adp.lab.listener import Listener, enable_ipv6, group_mac, set_protocol_version
from adp.lab.process import poll_until
from scapy.all import IP, UDP, IPv6, Raw
from bench import await_equal, reaches

SOURCE, WITNESS, ROUTER = 1, 6, 7
# The host at each port with its version of IGMP or MLD, and its group.
LISTENERS = {
    2: (4, 2, "239.1.2.3"),
    3: (4, 3, "239.1.2.4"),
    4: (6, 1, "ff15::1:2:3"),
    5: (6, 2, "ff15::1:2:4"),
}
# These are for every host, joined or not: RFC 4541, sections 2.1.2 and 3.
EVERYBODYS = ("224.0.0.251", "ff02::1")
NOBODYS = ("239.1.2.5", "ff15::1:2:5")
PORTS = (SOURCE, *LISTENERS, WITNESS, ROUTER)
STREAM_PORT = 5000
# Hundredths of a second; each at the least that the kernel takes, or little more.
TIMES = {
    "mcast_query_interval": 300,
    "mcast_query_response_interval": 100,
    "mcast_startup_query_interval": 100,
    "mcast_last_member_interval": 50,
    "mcast_membership_interval": 500,
    "mcast_querier_interval": 500,
}
# Hosts that are told to speak the newest version alone do not answer queries of older ones.
QUERIER = "mcast_snooping 1 mcast_querier 1 mcast_query_use_ifaddr 1 mcast_igmp_version 3 mcast_mld_version 2"
KEPT_SECONDS = 6.0
CHANGED_SECONDS = 20.0
QUIET_SECONDS = 0.2


@pytest.fixture
def switch(make_switch):
    made = make_switch(PORTS)
    times = " ".join(f"{name} {value}" for name, value in TIMES.items())
    settings = (QUERIER, times)
    made.bridge("br10", [f"swp{port}" for port in PORTS], *settings, addresses=["10.9.0.100/24"])
    enable_on(made.namespace, "br10")
    for port, host in made.hosts.items():
        host.set_address(f"10.9.0.{port}/24")
        enable_ipv6(host)
        host.namespace.ip(f"address add fd00::{port}/64 dev {host.nic.interface} nodad")
    for port, (family, version, _) in LISTENERS.items():
        set_protocol_version(made.hosts[port], family, version)
    return made


def enable_on(namespace, interface):
    """Switches IPv6 on, with addresses that are used at once."""
    for name, value in (("accept_dad", 0), ("disable_ipv6", 0)):
        path = f"/proc/sys/net/ipv6/conf/{interface}/{name}"
        with namespace.entered(), open(path, "w", encoding="ascii") as setting:
            setting.write(str(value))


def kernel_entries(switch):
    """({(group, interface)}, {router ports}) of the bridge's multicast database."""
    (tables,) = json.loads(switch.namespace.run("bridge", "-json", "-details", "mdb", "show"))
    groups = {(row["grp"], row["port"]) for row in tables["mdb"]}
    routers = {row["port"] for rows in tables["router"].values() for row in rows}
    return groups, routers


def heard(switch, group):
    """The ports where a datagram for the group arrives, once each."""
    marker = switch.lab.marker()
    rest = UDP(sport=STREAM_PORT, dport=STREAM_PORT) / Raw(marker.ljust(40, b"."))
    source = switch.lab.mac(SOURCE)
    if ":" in group:
        frame = ethernet(group_mac(group), source, ETHERTYPE_IPV6, bytes(IPv6(src="fd00::1", dst=group) / rest))
    else:
        frame = ethernet(group_mac(group), source, ETHERTYPE_IPV4, bytes(IP(src="10.9.0.1", dst=group) / rest))
    switch.hosts[SOURCE].send(frame)
    # To a router's port the kernel forwards what nobody has joined; that takes longer than the way through the chip.
    time.sleep(QUIET_SECONDS)
    arrived = switch.lab.arrivals(marker)
    assert arrived == dict.fromkeys(arrived, [frame])
    return set(arrived)


def await_heard(switch, group, ports, why):
    await_equal(lambda: heard(switch, group), ports, f"{group} arrives where it should, {why}", CHANGED_SECONDS)


def check_neighbour_discovery(switch):
    """Hosts that have never talked find each other by IPv6, whose questions go to multicast groups."""
    for one, other in ((SOURCE, WITNESS), (WITNESS, 3), (2, 4)):
        for port in (one, other):
            host = switch.hosts[port]
            host.namespace.run("ip", "-6", "neighbour", "flush", "dev", host.nic.interface)
        assert reaches(switch.hosts[one], switch.hosts[other], f"fd00::{other}"), f"from {one} to {other}"


@contextlib.contextmanager
def outside_querier(host):
    """A multicast router behind a host's cable: another bridge's querier, with the lowest addresses."""
    interface = host.nic.interface
    host.namespace.ip(
        f"address flush dev {interface}",
        f"link add querier type bridge {QUERIER} "
        "mcast_query_interval 200 mcast_query_response_interval 100 mcast_startup_query_interval 100",
        "address add 10.9.0.1/24 dev querier",
        # Its only link-local address is the one below.
        "link set querier addrgenmode none",
    )
    enable_on(host.namespace, "querier")
    host.namespace.ip(
        "address add fe80::1/64 dev querier nodad",
        f"link set {interface} master querier",
        "link set querier up",
    )
    try:
        yield
    finally:
        host.namespace.ip("link delete querier")


def test_streams_arrive_at_those_who_asked_and_at_routers(switch):
    check_neighbour_discovery(switch)
    with contextlib.ExitStack() as stack:
        listeners = {
            port: stack.enter_context(contextlib.closing(Listener(switch.hosts[port], group, STREAM_PORT)))
            for port, (_, _, group) in LISTENERS.items()
        }
        for port, (_, _, group) in LISTENERS.items():
            await_heard(switch, group, {port}, "after it was joined")
        for group in NOBODYS:
            await_heard(switch, group, set(), "which nobody has joined")
        for group in EVERYBODYS:
            await_heard(switch, group, set(PORTS) - {SOURCE}, "which is everybody's")
        check_neighbour_discovery(switch)

        with outside_querier(switch.hosts[ROUTER]):
            poll_until(lambda: "swp7" in kernel_entries(switch)[1], CHANGED_SECONDS, "A router port")
            for port, (_, _, group) in LISTENERS.items():
                await_heard(switch, group, {port, ROUTER}, "with a router")
            time.sleep(KEPT_SECONDS)
            assert joined(switch) == set(LISTENERS), "the other querier keeps the memberships alive"
            for port, (_, _, group) in LISTENERS.items():
                assert heard(switch, group) == {port, ROUTER}, f"{group} goes on"

        for port, listener in listeners.items():
            listener.leave()
        for port, (_, _, group) in LISTENERS.items():
            poll_until(lambda group=group: heard(switch, group) <= {ROUTER}, CHANGED_SECONDS, f"The end of {group}")
    check_neighbour_discovery(switch)


def test_a_router_gets_what_nobody_has_joined(switch):
    with outside_querier(switch.hosts[ROUTER]):
        poll_until(lambda: "swp7" in kernel_entries(switch)[1], CHANGED_SECONDS, "A router port")
        for group in NOBODYS:
            await_heard(switch, group, {ROUTER}, "which nobody has joined, with a router")


def joined(switch):
    """The listeners' ports in the bridge's database."""
    groups, _ = kernel_entries(switch)
    return {port for port, (_, _, group) in LISTENERS.items() if (group, f"swp{port}") in groups}
