"""Two switches back to back with all of it at once, under load, while adp-switchd is killed and started again."""

import contextlib
import time

import pytest
from adp.lab import Pair
from adp.lab.dhcp import Dnsmasq, Udhcpc
from adp.lab.flow import Flow
from adp.lab.iperf import Iperf
from adp.lab.listener import Listener
from adp.lab.lldp import Lldpd
from adp.lab.port_access import Hostapd, Supplicant
from adp.lab.process import poll_until
from adp.lab.routing import OspfRouter
from adp.lab.switch import Switch, chip_state
from bench import USER_PORTS, await_equal

CLIENT, STATION, GUEST = 1, 2, 3
CABLES = ((7, 7), (8, 8))
COMMON = """
mac = "02:00:5e:10:0{number}:00"
interfaces = ["agg1.10", "agg1.20"]
[groups.agg1]
members = ["swp7", "swp8"]
mode = "lacp"
"""
ACCESS = """
[ports.swp3]
dot1x = "port"
"""
TREE = "stp_state 1 forward_delay 200 hello_time 100 max_age 600"
SNOOPING = (
    "mcast_snooping 1 mcast_querier {querier} mcast_query_use_ifaddr 1 "
    "mcast_query_interval 300 mcast_query_response_interval 100 mcast_startup_query_interval 100"
)
GROUP = "239.1.2.3"
READY_SECONDS, STEADY_SECONDS, DOWN_SECONDS = 40.0, 1.0, 1.0
MOST_SYNC_SECONDS = 3.0

pytestmark = [
    pytest.mark.needs("lldpd", "hostapd", "wpa_supplicant", "ospfd", "dnsmasq", "udhcpc", "iperf3"),
    pytest.mark.needs_chip,
]


class Network:
    """The two switches and everything that runs on them and on their hosts."""

    def __init__(self, pair, stack):
        self.pair = pair
        self.near, self.far = (
            stack.enter_context(contextlib.closing(Switch(lab, COMMON.format(number=number) + access)))
            for number, (lab, access) in enumerate(((pair.near, ACCESS), (pair.far, "")), 1)
        )
        self._make_bridges()
        self._start_daemons()

    def _make_bridges(self):
        for switch in (self.near, self.far):
            switch.raise_ports("swp7", "swp8", "agg1")
        snooping = [SNOOPING.format(querier=querier) for querier in (1, 0)]
        self.near.bridge("br10", ["swp1", "swp3", "agg1.10"], TREE, snooping[0], addresses=["10.10.0.1/24"])
        self.near.bridge("br20", ["swp2", "agg1.20"], addresses=["10.20.0.1/24"])
        self.far.bridge("br10", ["swp1", "agg1.10"], TREE, snooping[1])
        self.far.bridge("br20", ["swp2", "agg1.20"], addresses=["10.20.0.2/24"])
        self.far.bridge("br30", ["swp3"], addresses=["10.30.0.1/24"])
        self.near.namespace.run("bridge", "fdb", "add", "02:00:00:00:00:99", "dev", "swp1", "master", "static")
        lan = self.far.hosts[GUEST]
        lan.set_address("10.30.0.3/24")
        lan.namespace.ip("route add default via 10.30.0.1")
        self.near.hosts[GUEST].set_address("10.10.0.3/24")

    def _start_daemons(self):
        near, far = self.near, self.far
        self.lldp = [
            switch.add(Lldpd(switch.namespace, name, "swp*")) for switch, name in ((near, "near"), (far, "far"))
        ]
        self.routers = [
            near.add(OspfRouter(near.namespace, "10.20.0.1", ["br10", "br20"])),
            far.add(OspfRouter(far.namespace, "10.20.0.2", ["br20", "br30"])),
        ]
        self.server = near.add(Dnsmasq(near.namespace, {"br10": ("10.10.0.50", "10.10.0.59")}))
        near.add(Hostapd(near.namespace, "swp3", {"guest": "secret"}, near.switchd))
        self.clients = []
        for switch in (near, far):
            host = switch.hosts[CLIENT]
            self.clients.append(switch.add(Udhcpc(host.namespace, host.nic.interface)))
        guest = near.hosts[GUEST]
        self.supplicant = near.add(Supplicant(guest.namespace, guest.nic.interface, "guest", "secret"))
        self.listener = far.add(Listener(far.hosts[CLIENT], GROUP, 5000))

    def await_ready(self):
        for client in self.clients:
            poll_until(client.has_lease, READY_SECONDS, "A lease on either switch")
        poll_until(self.supplicant.is_let_in, READY_SECONDS, "The guest's success")
        self.check()
        await_equal(self.lldp[0].neighbours, {f"swp{n}": {("far", f"swp{n}")} for n, _ in CABLES}, "Neighbours by LLDP")

    def check(self):
        """All of it works."""
        await_equal(self.routers[0].neighbours, {"10.20.0.2": "Full"}, "The near router's adjacency", READY_SECONDS)
        await_equal(self.routers[1].neighbours, {"10.20.0.1": "Full"}, "The far router's adjacency", READY_SECONDS)
        client, guest = self.near.hosts[CLIENT], self.near.hosts[GUEST]
        poll_until(lambda: client.ping("10.30.0.3", 1), READY_SECONDS, "A ping across both routers")
        poll_until(lambda: guest.ping("10.10.0.1", 1), READY_SECONDS, "A ping of the guest to the switch")
        self.near.await_chip(f"a group for {GROUP}", lambda control: has_group(control, "01:00:5e:01:02:03"))
        assert self.supplicant.is_let_in()


def has_group(control, address):
    return any((row["vid"], row["mac"]) == (10, address) for row in control("mcast")["mcast"])


@pytest.fixture
def network(device_build):
    hosts = (CLIENT, STATION, GUEST)
    with contextlib.ExitStack() as stack:
        pair = stack.enter_context(Pair(hosts, hosts, CABLES, device_build, USER_PORTS))
        made = Network(pair, stack)
        made.await_ready()
        yield made


@pytest.fixture
def load(network):
    """TCP between the clients, through both switches."""
    near, far = network.near.hosts[CLIENT], network.far.hosts[CLIENT]
    server = network.server.leases()[far.namespace.mac_of(far.nic.interface)]
    with contextlib.closing(Iperf(near.namespace, far.namespace, server)) as made:
        yield made


def flows(network):
    """Frames between the stations of VLAN 20, both ways, each with an address that the switches know."""
    near, far = network.near.hosts[STATION], network.far.hosts[STATION]
    lab = network.pair.near
    addresses = lab.mac(STATION), lab.mac(STATION)
    ways = ((near, far, addresses), (far, near, addresses[::-1]))
    made = [
        Flow(sender, [receiver], lab.marker(), [source], destination)
        for sender, receiver, (source, destination) in ways
    ]
    return made, [receiver for _, receiver, _ in ways]


def test_a_killed_daemon_comes_back_to_the_same_switch(network, load, tell):
    made, receivers = flows(network)
    before = {name: chip_state(switch.lab.device) for name, switch in (("near", network.near), ("far", network.far))}
    with contextlib.ExitStack() as stack:
        for flow in made:
            stack.enter_context(flow)
        time.sleep(STEADY_SECONDS)
        first = [flow.sent for flow in made]
        network.near.switchd.kill()
        time.sleep(DOWN_SECONDS)
        while_down = chip_state(network.near.lab.device)
        begin = time.monotonic()
        network.near.switchd.restart()
        seconds = time.monotonic() - begin
        time.sleep(STEADY_SECONDS)
    lost = [len(flow.lost(receiver, number)) for flow, receiver, number in zip(made, receivers, first, strict=True)]
    sent = [flow.sent - number for flow, number in zip(made, first, strict=True)]
    tell(f"killed for {DOWN_SECONDS:g} s, back after {seconds:.2f} s: {lost} of {sent} frames lost, {load.summary()}")
    assert while_down == before["near"], "nothing changes in the chip while the daemon is away"
    assert chip_state(network.near.lab.device) == before["near"], "nor when it is back"
    assert chip_state(network.far.lab.device) == before["far"], "nor at the other switch"
    assert lost == [0, 0]
    assert [flow.repeated(receiver) for flow, receiver in zip(made, receivers, strict=True)] == [[], []]
    assert seconds < MOST_SYNC_SECONDS
    network.check()
