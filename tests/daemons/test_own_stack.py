"""The switch's own stack on its bridges: dnsmasq gives addresses, FRR routes between the VLANs and to a router."""

import pytest
from adp.lab.dhcp import Dnsmasq, Udhcpc
from adp.lab.process import poll_until
from adp.lab.routing import OspfRouter
from bench import await_equal

CLIENTS, ROUTER = (1, 2), 5
FIRST, LAST = "10.10.0.50", "10.10.0.59"
STATION = "10.30.0.2"
LEASE_SECONDS, ADJACENT_SECONDS, PING_SECONDS = 15.0, 30.0, 10.0


@pytest.fixture
def switch(make_switch):
    made = make_switch(CLIENTS)
    made.bridge("br10", ["swp1", "swp2"], addresses=["10.10.0.1/24"])
    made.bridge("br20", ["swp5"], addresses=["10.20.0.1/24"])
    return made


@pytest.mark.needs("dnsmasq", "udhcpc")
@pytest.mark.needs("ospfd")
def test_hosts_get_addresses_and_reach_a_network_behind_a_router(switch):
    neighbour = switch.neighbour({ROUTER}, "router")
    station = neighbour.station("lan")
    neighbour.namespace.ip("address add 10.20.0.5/24 dev host5", "address add 10.30.0.1/24 dev lan")
    station.set_address(f"{STATION}/24")
    station.namespace.ip("route add default via 10.30.0.1")
    here = switch.add(OspfRouter(switch.namespace, "10.20.0.1", ["br10", "br20"]))
    there = switch.add(OspfRouter(neighbour.namespace, "10.20.0.5", ["host5", "lan"]))
    server = switch.add(Dnsmasq(switch.namespace, {"br10": (FIRST, LAST)}))
    clients = {port: switch.add(Udhcpc(host.namespace, host.nic.interface)) for port, host in switch.hosts.items()}

    for port, client in clients.items():
        poll_until(client.has_lease, LEASE_SECONDS, f"A lease for host {port}")
    leases = server.leases()
    assert set(leases) == {_mac_of(host) for host in switch.hosts.values()}
    one, other = (leases[_mac_of(switch.hosts[port])] for port in CLIENTS)
    assert one != other
    assert switch.hosts[CLIENTS[0]].ping(other, PING_SECONDS, 5)

    await_equal(here.neighbours, {"10.20.0.5": "Full"}, "The switch's adjacency", ADJACENT_SECONDS)
    await_equal(there.neighbours, {"10.20.0.1": "Full"}, "The router's adjacency", ADJACENT_SECONDS)
    poll_until(lambda: "10.30.0.0/24" in here.routes(), ADJACENT_SECONDS, "The switch's route")
    poll_until(lambda: "10.10.0.0/24" in there.routes(), ADJACENT_SECONDS, "The router's route")
    for port in CLIENTS:
        assert switch.hosts[port].ping(STATION, PING_SECONDS, 5), f"from host {port} across switch and router"
    assert station.ping(other, PING_SECONDS, 5), "and back"


def _mac_of(host):
    return host.namespace.mac_of(host.nic.interface)
