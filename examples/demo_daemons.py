"""The demonstration with other projects' daemons: a switch with adp-switchd, and unmodified daemons on it and around it.

Each line says what ran, what was seen, and whether it was as expected; the exit status is 0 only if all was.
script/demo daemons starts it.
"""

import argparse
import contextlib
import os
import sys
import time

from adp.lab import Lab, LabError, lldp, openvswitch
from adp.lab.dhcp import Dnsmasq, Udhcpc
from adp.lab.flow import Flow
from adp.lab.ip import UDP, Ipv4Packet
from adp.lab.listener import Listener, group_mac
from adp.lab.lldp import Lldpd
from adp.lab.openvswitch import OpenVSwitch
from adp.lab.port_access import Hostapd, Supplicant
from adp.lab.process import poll_until
from adp.lab.routing import OspfRouter
from adp.lab.switch import Switch, chip_state

USER_PORTS = 8
VLAN = 10
ONE, TWO, GUEST = 1, 2, 3
ROUTER, MEMBERS = 5, (7, 8)
CONFIGURATION = """
[groups.agg1]
members = ["swp7", "swp8"]
mode = "lacp"
rate = "fast"
[ports.swp3]
dot1x = "port"
"""
# Times are hundredths of a second.
SNOOPING = (
    "mcast_snooping 1 mcast_querier 1 mcast_query_use_ifaddr 1 "
    "mcast_query_interval 300 mcast_query_response_interval 100 mcast_startup_query_interval 100"
)
GROUP, STREAM_PORT = "239.1.2.3", 5000
SECONDS = 30.0
PING_SECONDS = 0.5
STEADY_SECONDS = 0.5
NAME_WIDTH = 43
CODES = {"green": "32", "red": "31", "bold": "1"}


def paint(text, look):
    """Text in colour, on a terminal only."""
    return f"\033[{CODES[look]}m{text}\033[0m" if sys.stdout.isatty() and "NO_COLOR" not in os.environ else text


class Demonstration:
    """The switch with its bridge br10, whose ports are three hosts and a group, and br20 to a router."""

    def __init__(self, lab, stack):
        self.switch = stack.enter_context(contextlib.closing(Switch(lab, CONFIGURATION)))
        self.lab, self.hosts = lab, lab.hosts
        self.good = True

    def say(self, name, seen, good):
        self.good = self.good and good
        verdict = paint("ok", "green") if good else paint("DIFFERS", "red")
        print(f"  {name:{NAME_WIDTH}} {seen}  {verdict}")

    def leave_out(self, name, reason):
        """What an ordinary user may lack is no failure."""
        print(f"  {name:{NAME_WIDTH}} left out: {reason}")

    def set_up(self):
        """Bridges, neighbours and daemons, started before anything is waited for."""
        switch = self.switch
        self.partner = switch.neighbour(MEMBERS, "partner")
        self.station = self.partner.station("station")
        self.router = switch.neighbour({ROUTER}, "router")
        lan = self.router.station("lan")
        self.router.namespace.ip("address add 10.20.0.5/24 dev host5", "address add 10.30.0.1/24 dev lan")
        lan.set_address("10.30.0.2/24")
        lan.namespace.ip("route add default via 10.30.0.1")
        switch.bridge("br10", ["swp1", "swp2", "swp3", "agg1"], SNOOPING, addresses=["10.10.0.1/24"])
        switch.bridge("br20", ["swp5"], addresses=["10.20.0.1/24"])
        self.hosts[GUEST].set_address("10.10.0.3/24")
        self.routers = [
            switch.add(OspfRouter(switch.namespace, "10.20.0.1", ["br10", "br20"])),
            switch.add(OspfRouter(self.router.namespace, "10.20.0.5", ["host5", "lan"])),
        ]
        if lldp.is_usable():
            self.lldp = switch.add(Lldpd(switch.namespace, "switch", "swp*"))
            switch.add(Lldpd(self.router.namespace, "router", "host5"))
        switch.add(Dnsmasq(switch.namespace, {"br10": ("10.10.0.50", "10.10.0.59")}))
        switch.add(Hostapd(switch.namespace, "swp3", {"guest": "secret"}, switch.switchd))
        if openvswitch.is_usable():
            self._join_partner()

    def _join_partner(self):
        """The partner's bond, and the station behind it."""
        self.ovs = self.switch.add(OpenVSwitch(self.partner.namespace))
        self.ovs.add_bridge("br0")
        self.ovs.add_bond("br0", "bond0", ["host7", "host8"])
        self.ovs.add_port("br0", "station")

    def show(self):
        """One after the other; each waits for what was started."""
        self.show_lldp()
        self.show_dhcp()
        self.show_ospf()
        self.show_multicast()
        self.show_access()
        self.show_lacp()
        self.show_kill()

    def show_lldp(self):
        name = "lldpd on the switch and on a router"
        if not lldp.is_usable():
            self.leave_out(name, lldp.NOT_USABLE)
            return
        poll_until(lambda: self.lldp.neighbours().get("swp5"), SECONDS, "A neighbour by LLDP")
        seen = self.lldp.neighbours()["swp5"]
        ((system, port),) = seen
        self.say(name, f"swp5 sees {port} of {system}", seen == {("router", "host5")})

    def show_dhcp(self):
        clients = [
            self.switch.add(Udhcpc(self.hosts[port].namespace, self.hosts[port].nic.interface)) for port in (ONE, TWO)
        ]
        for client in clients:
            poll_until(client.has_lease, SECONDS, "A lease")
        leases = [client.address() for client in clients]
        reached = self.hosts[ONE].ping(leases[1], SECONDS, 10)
        self.say("dnsmasq on the switch, udhcpc on hosts", f"{leases[0]} pings {leases[1]}", reached)

    def show_ospf(self):
        poll_until(lambda: self.routers[0].neighbours() == {"10.20.0.5": "Full"}, SECONDS, "An adjacency")
        poll_until(lambda: "10.30.0.0/24" in self.routers[0].routes(), SECONDS, "A route")
        poll_until(lambda: "10.10.0.0/24" in self.routers[1].routes(), SECONDS, "A route back")
        reached = self.hosts[ONE].ping("10.30.0.2", SECONDS, 10)
        self.say("FRR on the switch and on the router", "OSPF is Full; host 1 pings 10.30.0.2 behind it", reached)

    def show_multicast(self):
        self.switch.add(Listener(self.hosts[TWO], GROUP, STREAM_PORT))
        self.switch.await_chip(f"a group for {GROUP}", lambda control: control("mcast", "--vlan", VLAN)["mcast"])
        marker = self.lab.marker()
        packet = Ipv4Packet("10.10.0.9", GROUP, UDP, STREAM_PORT, length=40)
        self.hosts[ONE].send(packet.build(group_mac(GROUP), self.lab.mac(ONE), marker))
        arrived = {f"host {port}" for port in self.lab.arrivals(marker)}
        if any(marker in frame for frame in self.station.nic.waiting()):
            arrived.add("the station")
        seen = f"host 2 has joined {GROUP}; its stream arrives at {', '.join(sorted(arrived))}"
        self.say("the kernel bridge's multicast snooping", seen, arrived == {"host 2"})

    def show_access(self):
        guest = self.hosts[GUEST]
        before = guest.ping("10.10.0.1", PING_SECONDS)
        supplicant = self.switch.add(Supplicant(guest.namespace, guest.nic.interface, "guest", "secret"))
        poll_until(supplicant.is_let_in, SECONDS, "The supplicant's success")
        inside = guest.ping("10.10.0.1", SECONDS, 10)
        supplicant.log_off()
        poll_until(lambda: not guest.ping("10.10.0.1", PING_SECONDS), SECONDS, "The end of the guest's access")
        seen = f"{'in' if before else 'out'} at first, {'in' if inside else 'out'} by its password, out by logoff"
        self.say("hostapd on the switch, wpa_supplicant", seen, (before, inside) == (False, True))

    def show_lacp(self):
        name = "Open vSwitch bond, LACP of adp-switchd"
        if not openvswitch.is_usable():
            self.leave_out(name, openvswitch.NOT_USABLE)
            return
        poll_until(lambda: self.ovs.bundled() == {"host7", "host8"}, SECONDS, "Both members of the bond")
        with self._flow(self.station) as flow:
            time.sleep(STEADY_SECONDS)
            self.switch.pull(MEMBERS[0])
            poll_until(lambda: self.ovs.bundled() == {"host8"}, SECONDS, "One member of the bond")
            time.sleep(STEADY_SECONDS)
        lost, gap = len(flow.lost(self.station)), flow.gap(self.station)
        seen = f"a cable is pulled: {lost} of {flow.sent} frames lost, at most {1000 * gap:.0f} ms"
        self.say(name, seen, gap < 1 and not flow.repeated(self.station))

    def show_kill(self):
        receiver = self.hosts[TWO]
        if openvswitch.is_usable():
            poll_until(lambda: self.ovs.bundled() == {"host8"}, SECONDS, "One member of the bond")
            receiver = self.station
        before = chip_state(self.lab.device)
        with self._flow(receiver) as flow:
            time.sleep(STEADY_SECONDS)
            self.switch.switchd.kill()
            time.sleep(STEADY_SECONDS)
            begin = time.monotonic()
            self.switch.switchd.restart()
            seconds = time.monotonic() - begin
            time.sleep(STEADY_SECONDS)
        lost, same = len(flow.lost(receiver)), chip_state(self.lab.device) == before
        chip = "as before" if same else "DIFFERS"
        seen = f"{lost} of {flow.sent} frames lost, in sync after {seconds:.1f} s, chip {chip}"
        self.say("adp-switchd is killed and started again", seen, same and lost == 0)

    def _flow(self, receiver):
        """Frames of several sources from host 1 to an address behind the receiver, which has just been learned there."""
        address, sources = self.lab.mac(), [self.lab.mac(ONE) for _ in range(8)]
        with Flow(receiver, [self.hosts[ONE]], self.lab.marker(), [address]) as introduction:
            poll_until(lambda: introduction.count(self.hosts[ONE]), SECONDS, "A frame from the receiver")
        return Flow(self.hosts[ONE], [receiver], self.lab.marker(), sources, address)


def main():
    parser = argparse.ArgumentParser(prog="script/demo daemons", description=__doc__.splitlines()[0])
    parser.add_argument("--device", default="host", help="build of the virtual device and of adp-switchd")
    arguments = parser.parse_args()
    sys.stdout.reconfigure(line_buffering=True)
    begin = time.monotonic()
    print(paint("A switch with adp-switchd, and unmodified daemons on it, on hosts, a router and another switch", "bold"))
    try:
        with Lab(arguments.device, (ONE, TWO, GUEST), USER_PORTS) as lab, contextlib.ExitStack() as stack:
            shown = Demonstration(lab, stack)
            shown.set_up()
            shown.show()
    except KeyboardInterrupt:
        sys.exit("\ndemo: interrupted. Everything is switched off.")
    except LabError as problem:
        sys.exit(f"\ndemo: {problem}")
    result = "All was as expected" if shown.good else "Not all was as expected"
    print(f"{result}, after {time.monotonic() - begin:.0f} s.")
    sys.exit(0 if shown.good else 1)


if __name__ == "__main__":
    main()
