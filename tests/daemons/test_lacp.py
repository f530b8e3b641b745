"""An Open vSwitch bond, in user space, as the partner of the switch's LACP."""

import time

import pytest
from adp.lab.flow import Flow
from adp.lab.openvswitch import BUNDLED, OpenVSwitch
from adp.lab.process import poll_until
from bench import await_equal

HOST, MEMBERS, OTHERS = 1, (3, 4), (5, 6)
ALL = (*MEMBERS, *OTHERS)
FAR = {port: f"host{port}" for port in ALL}
GROUP = """
[groups.agg1]
members = [{names}]
mode = "lacp"
rate = "fast"
"""
FLOWS = 8
KEY, OTHER_KEY = 5, 77
REFUSED_SECONDS = 5.0
BUNDLED_SECONDS, STEADY_SECONDS = 20.0, 0.5
LONGEST_GAP_SECONDS = 2.0

pytestmark = [pytest.mark.needs("ovs-vswitchd"), pytest.mark.needs_chip]


def make_switch_with(make_switch, members):
    """A switch with a host and a group in one VLAN."""
    names = ", ".join(f'"swp{port}"' for port in members)
    made = make_switch({HOST}, GROUP.format(names=names))
    made.bridge("br10", ["swp1", "agg1"])
    return made


class Partner:
    """The switch's neighbour, with a station."""

    def __init__(self, switch, ports):
        self.neighbour = switch.neighbour(ports, "partner")
        self.station = self.neighbour.station("station")
        self.ovs = switch.add(OpenVSwitch(self.neighbour.namespace))
        self.ovs.add_bridge("br0")
        self.ovs.add_port("br0", "station")

    def said(self, ports):
        """What Open vSwitch says of each port's LACP."""
        parts = self.ovs.appctl("lacp/show").split("member: ")
        return [part for part in parts if part.partition(":")[0] in {FAR[port] for port in ports}]


def active_members(control):
    """The ports over which the chip sends for group 1."""
    for trunk in control("trunks")["trunks"]:
        if trunk["group"] == 1:
            return set(trunk["members"]) - set(trunk["standby"])
    return set()


def await_members(switch, partner, ports):
    far = {FAR[port] for port in ports}
    await_equal(partner.ovs.bundled, far, "Open vSwitch collects and distributes", BUNDLED_SECONDS)
    switch.await_chip(f"the group's members are {ports}", lambda control: active_members(control) == set(ports))


def flow_to_station(switch, partner):
    """Frames of several sources, so that each member carries some; the station is known."""
    lab = switch.lab
    address = lab.mac()
    marker = lab.marker()
    with Flow(partner.station, [switch.hosts[HOST]], marker, [address]) as introduction:
        poll_until(lambda: introduction.count(switch.hosts[HOST]), BUNDLED_SECONDS, "A frame from the station")
    return Flow(switch.hosts[HOST], [partner.station], lab.marker(), [lab.mac(HOST) for _ in range(FLOWS)], address)


def test_both_members_carry_frames_and_one_goes_on_alone(make_switch, tell):
    switch = make_switch_with(make_switch, MEMBERS)
    partner = Partner(switch, MEMBERS)
    partner.ovs.add_bond("br0", "bond0", [FAR[port] for port in MEMBERS])
    await_members(switch, partner, MEMBERS)
    for pulled in MEMBERS:
        (left,) = set(MEMBERS) - {pulled}
        station = partner.station
        with flow_to_station(switch, partner) as flow:
            poll_until(lambda: flow.sent * 0.002 >= STEADY_SECONDS, BUNDLED_SECONDS, "A steady flow")
            before = flow.sent
            switch.pull(pulled)
            await_members(switch, partner, {left})
            after = flow.sent
            poll_until(lambda: flow.has_arrived_since(station, after), BUNDLED_SECONDS, "A frame by the other member")
        lost = flow.lost(station)
        tell(f"swp{pulled} pulled: {len(lost)} of {flow.sent} frames lost, none for {flow.gap(station):.3f} s")
        assert not [number for number in lost if number < before], "no frame is lost before"
        assert not [number for number in lost if number >= after], "nor afterwards"
        assert flow.repeated(station) == []
        assert flow.gap(station) < LONGEST_GAP_SECONDS
        switch.plug(pulled)
        await_members(switch, partner, MEMBERS)


def test_members_whose_partner_has_another_key_are_not_aggregated(make_switch):
    switch = make_switch_with(make_switch, ALL)
    partner = Partner(switch, ALL)
    partner.ovs.add_bond("br0", "bond0", [FAR[port] for port in MEMBERS], KEY)
    await_members(switch, partner, MEMBERS)
    partner.ovs.add_bond("br0", "bond1", [FAR[port] for port in OTHERS], OTHER_KEY)
    wanted = [True] * len(OTHERS)
    await_equal(lambda: ["current" in said for said in partner.said(OTHERS)], wanted, "The others hear LACP")
    with Flow(switch.hosts[HOST], [partner.station], switch.lab.marker(), [switch.lab.mac(HOST)]) as flow:
        time.sleep(REFUSED_SECONDS)
    await_members(switch, partner, MEMBERS)
    states = partner.ovs.bundle_states("bond1")
    assert [BUNDLED & states[FAR[port]]["partner"] for port in OTHERS] == [set(), set()]
    assert (flow.lost(partner.station), flow.repeated(partner.station)) == ([], [])
