"""An Open vSwitch bond, in user space, as the partner of the switch's LACP."""

import pytest
from adp.lab.flow import Flow
from adp.lab.openvswitch import OpenVSwitch
from adp.lab.process import poll_until
from bench import await_equal

HOST, MEMBERS = 1, (3, 4)
FAR = {3: "host3", 4: "host4"}
GROUP = """
[groups.agg1]
members = ["swp3", "swp4"]
mode = "lacp"
rate = "fast"
"""
FLOWS = 8
OTHER_KEY = 77
BUNDLED_SECONDS, STEADY_SECONDS = 20.0, 0.5
LONGEST_GAP_SECONDS = 2.0

pytestmark = [pytest.mark.needs("ovs-vswitchd"), pytest.mark.needs_chip]


@pytest.fixture
def switch(make_switch):
    made = make_switch({HOST}, GROUP)
    made.bridge("br10", ["swp1", "agg1"])
    return made


@pytest.fixture
def partner(switch):
    return Partner(switch)


class Partner:
    """The switch's neighbour, with a station behind its bond."""

    def __init__(self, switch):
        self.neighbour = switch.neighbour(MEMBERS, "partner")
        self.station = self.neighbour.station("station")
        self.ovs = switch.add(OpenVSwitch(self.neighbour.namespace))
        self.ovs.add_bridge("br0")
        self.ovs.add_bond("br0", "bond0", FAR.values())
        self.ovs.add_port("br0", "station")

    def bundled(self):
        return self.ovs.bundled("bond0")


def active_members(control):
    """The ports over which the chip sends for group 1."""
    for trunk in control("trunks")["trunks"]:
        if trunk["group"] == 1:
            return set(trunk["members"]) - set(trunk["standby"])
    return set()


def await_members(switch, partner, ports):
    await_equal(partner.bundled, {FAR[port] for port in ports}, "Open vSwitch collects and distributes", BUNDLED_SECONDS)
    switch.await_chip(f"the group's members are {ports}", lambda control: active_members(control) == set(ports))


def flow_to_station(switch, partner):
    """Frames of several sources, so that each member carries some; the station is known."""
    lab = switch.lab
    address = lab.mac()
    marker = lab.marker()
    with Flow(partner.station, [switch.hosts[HOST]], marker, [address]) as introduction:
        poll_until(lambda: introduction.count(switch.hosts[HOST]), BUNDLED_SECONDS, "A frame from the station")
    return Flow(switch.hosts[HOST], [partner.station], lab.marker(), [lab.mac(HOST) for _ in range(FLOWS)], address)


def test_both_members_carry_frames_and_one_goes_on_alone(switch, partner, tell):
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


def test_a_member_whose_partner_has_another_key_is_not_aggregated(switch, partner):
    await_members(switch, partner, MEMBERS)
    partner.ovs.set_key("host4", OTHER_KEY)
    await_members(switch, partner, {3})
    with flow_to_station(switch, partner) as flow:
        poll_until(lambda: flow.count(partner.station) > 100, BUNDLED_SECONDS, "A hundred frames")
    assert flow.repeated(partner.station) == []
