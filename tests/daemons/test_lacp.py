"""An Open vSwitch bond, in user space, as the partner of the switch's LACP."""

import time
from typing import NamedTuple

import pytest
from adp.lab import LabError
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
FLOWS, TRIES = 8, 3
# What Open vSwitch has not taken yet waits in the kernel, which keeps less than 300 frames.
INTERVAL_SECONDS = 0.005
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
    with Flow(partner.station, [switch.hosts[HOST]], lab.marker(), [address]) as introduction:
        poll_until(lambda: introduction.count(switch.hosts[HOST]), BUNDLED_SECONDS, "A frame from the station")
    sources = [lab.mac(HOST) for _ in range(FLOWS)]
    return Flow(switch.hosts[HOST], [partner.station], lab.marker(), sources, address, INTERVAL_SECONDS)


def await_all_sources(flow, partner):
    """Waits until frames of every source that were sent from now on have arrived."""
    now = flow.sent
    arrived = lambda: flow.sources_since(partner.station, now) == FLOWS  # noqa: E731
    poll_until(arrived, BUNDLED_SECONDS, "A frame of every source")


class Pull(NamedTuple):
    """A member's cable was pulled while frames flowed."""

    flow: Flow
    before: int  # the next frame's number when it was pulled
    after: int  # ... and when both sides had only the other member


def pull(switch, partner, port, left):
    with flow_to_station(switch, partner) as flow:
        time.sleep(STEADY_SECONDS)
        before = flow.sent
        switch.pull(port)
        await_members(switch, partner, {left})
        after = flow.sent
        await_all_sources(flow, partner)
    return Pull(flow, before, after)


def pull_while_partner_is_awake(switch, partner, port, left):
    """Open vSwitch forwards nothing while it waits for the machine, which says nothing about the switch: then again."""
    for _ in range(TRIES):
        stalls = partner.ovs.stalls()
        pulled = pull(switch, partner, port, left)
        if partner.ovs.stalls() == stalls:
            return pulled
        switch.plug(port)
        await_members(switch, partner, MEMBERS)
    raise LabError(f"Open vSwitch stood still in {TRIES} measurements.")


def test_both_members_carry_frames_and_one_goes_on_alone(make_switch, tell):
    switch = make_switch_with(make_switch, MEMBERS)
    partner = Partner(switch, MEMBERS)
    partner.ovs.add_bond("br0", "bond0", [FAR[port] for port in MEMBERS])
    await_members(switch, partner, MEMBERS)
    for port, left in (MEMBERS, MEMBERS[::-1]):
        flow, before, after = pull_while_partner_is_awake(switch, partner, port, left)
        station = partner.station
        lost = flow.lost(station)
        tell(f"swp{port} pulled: {len(lost)} of {flow.sent} frames lost, none for {flow.gap(station):.3f} s")
        assert not [number for number in lost if number < before], "no frame is lost before"
        assert not [number for number in lost if number >= after], "nor afterwards"
        assert flow.repeated(station) == []
        assert flow.gap(station) < LONGEST_GAP_SECONDS
        switch.plug(port)
        await_members(switch, partner, MEMBERS)


def test_members_whose_partner_has_another_key_are_not_aggregated(make_switch):
    switch = make_switch_with(make_switch, ALL)
    partner = Partner(switch, ALL)
    partner.ovs.add_bond("br0", "bond0", [FAR[port] for port in MEMBERS], KEY)
    await_members(switch, partner, MEMBERS)
    partner.ovs.add_bond("br0", "bond1", [FAR[port] for port in OTHERS], OTHER_KEY)
    wanted = [True] * len(OTHERS)
    await_equal(lambda: ["current" in said for said in partner.said(OTHERS)], wanted, "The others hear LACP")
    with flow_to_station(switch, partner) as flow:
        time.sleep(REFUSED_SECONDS)
        await_all_sources(flow, partner)
    await_members(switch, partner, MEMBERS)
    states = partner.ovs.bundle_states("bond1")
    assert [BUNDLED & states[FAR[port]]["partner"] for port in OTHERS] == [set(), set()]
    assert flow.repeated(partner.station) == []
