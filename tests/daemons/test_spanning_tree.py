"""The kernel bridge's spanning tree on the switch, in a ring with two Open vSwitch bridges that speak RSTP."""

import time

import pytest
from adp.lab.flow import Flow
from adp.lab.openvswitch import OpenVSwitch
from adp.lab.process import poll_until
from bench import await_equal

HOST = 1
VLAN = 10
TO_ROOT, TO_OTHER = 2, 3
ROOT_PRIORITY, OTHER_PRIORITY, SWITCH_PRIORITY = 4096, 8192, 61440
COST = 20000
TIMES = "stp_state 1 forward_delay 400 hello_time 100 max_age 600"
# The root's times hold: twice four seconds from blocking to forwarding.
MOVED_SECONDS = 40.0
LONGEST_GAP_SECONDS = 15.0
# A port without a link does in the chip what a blocking one does.
IN_CHIP = {"disabled": "blocking"}
STEADY_SECONDS = 0.5

pytestmark = pytest.mark.needs("ovs-vswitchd")


class Ring:
    """Switch, root and another bridge, each with a station. The switch blocks its port to the other bridge."""

    def __init__(self, switch):
        self.switch = switch
        switch.bridge("br10", ["swp1", "swp2", "swp3"], f"{TIMES} priority {SWITCH_PRIORITY}")
        # The kernel's costs are of 1998, a thousandth of those that Open vSwitch has.
        switch.namespace.ip(*(f"link set swp{port} type bridge_slave cost {COST}" for port in (TO_ROOT, TO_OTHER)))
        neighbour = switch.neighbour((TO_ROOT, TO_OTHER), "ring")
        neighbour.join("to-other", "to-root")
        self.stations = [switch.hosts[HOST], neighbour.station("at-root"), neighbour.station("at-other")]
        self.ovs = switch.add(OpenVSwitch(neighbour.namespace))
        self.ovs.add_rstp_bridge("root", ROOT_PRIORITY)
        self.ovs.add_rstp_bridge("other", OTHER_PRIORITY)
        for port in ("to-other", "at-root", "host2"):
            self.ovs.add_port("root", port)
        for port in ("to-root", "at-other", "host3"):
            self.ovs.add_port("other", port)

    def states(self):
        """The spanning tree's states of the switch's ports in the ring."""
        ports = self.switch.bridge_ports()
        return tuple(ports[f"swp{port}"]["state"] for port in (TO_ROOT, TO_OTHER))

    def await_states(self, *wanted):
        await_equal(self.states, wanted, "The states of the switch's ports", MOVED_SECONDS)
        in_chip = tuple(IN_CHIP.get(state, state) for state in wanted)
        self.switch.await_chip(f"the states {in_chip}", lambda control: _chip_states(control) == in_chip)


def _chip_states(control):
    """The states of the ring's ports in the chip, for the bridge's VLAN."""
    (row,) = control("groups", "--vlan", VLAN)["groups"]
    words = ("disabled", "blocking", "listening", "learning", "forwarding")
    return tuple(word for port in (TO_ROOT, TO_OTHER) for word in words if port in row[word])


def test_a_ring_never_loops_and_its_cut_moves(make_switch, tell):
    ring = Ring(make_switch({HOST}))
    switch = ring.switch
    host, at_root, at_other = ring.stations
    lab = switch.lab
    back = Flow(at_other, [host], lab.marker(), [lab.mac()], interval=0.004)
    with Flow(host, [at_root, at_other], lab.marker(), [lab.mac(HOST)], interval=0.004) as flow, back:
        ring.await_states("forwarding", "blocking")
        poll_until(lambda: flow.count(at_other), MOVED_SECONDS, "A frame around the ring")
        time.sleep(STEADY_SECONDS)
        before = flow.sent
        switch.pull(TO_ROOT)
        ring.await_states("disabled", "forwarding")
        poll_until(lambda: flow.has_arrived_since(at_root, flow.sent - 10), MOVED_SECONDS, "A frame the other way")
        moved = flow.sent
        switch.plug(TO_ROOT)
        ring.await_states("forwarding", "blocking")
        poll_until(lambda: flow.has_arrived_since(at_other, flow.sent - 10), MOVED_SECONDS, "A frame the first way")
        time.sleep(STEADY_SECONDS)
    for name, station in (("root", at_root), ("other bridge", at_other)):
        gaps = flow.gap(station, before), flow.gap(station, moved)
        tell(f"at the {name}: a gap of {gaps[0]:.1f} s when the cable was pulled, {gaps[1]:.1f} s when it was back")
        assert flow.repeated(station) == [], "no frame is seen twice at any time"
        assert max(gaps) < LONGEST_GAP_SECONDS
    assert (back.count(host) > 0, back.repeated(host)) == (True, []), "nor on the way back"
