"""Link aggregation: two devices joined by four cables, each with the example program link_aggregation on its CPU.

Cables are pulled and plugged in while many flows run both ways between hosts behind the two devices. Every frame is
accounted for.
"""

import re

import pytest
from adp.lab import Pair
from adp.lab.aggregation import GroupEvent, Handled
from adp.lab.failover import (
    CABLES,
    FAR_HOST,
    FAR_PORTS_ABOVE_NEAR,
    FAR_WITNESS,
    FLOWS,
    NEAR_HOST,
    NEAR_WITNESS,
    PLUGS,
    PULLS,
    FourCables,
)
from adp.lab.frames import BROADCAST, ETHERTYPE_EXPERIMENT, ethernet
from adp.lab.load import NOWHERE_ELSE

STEADY_SECONDS = 0.5
GROUP = 0x10000001
JUMBO, MDIX = 6, 9
RX_FRAMES = 1
FIBRE_PORT = 25
WRONG_MEDIUM = -5


@pytest.fixture(scope="module")
def pair(device_build):
    with Pair({NEAR_HOST, NEAR_WITNESS}, {FAR_HOST, FAR_WITNESS}, CABLES, device_build) as devices:
        yield devices


@pytest.fixture
def joined(pair, build):
    with FourCables(pair, build) as devices:
        yield devices
    assert [program.exit_status for program in devices.programs] == [0, 0]


def change(joined, verb, number, may_flood=False):
    """A change under load that returns no frame and delivers none twice; what the programs told before it is
    forgotten. Without a group its addresses are unknown, and frames to them are flooded to the sender's neighbours.
    """
    for program in joined.programs:
        program.take_events()
    made = joined.change(verb, number)
    assert made.astray.returned == 0
    assert may_flood or made.astray.elsewhere == 0
    assert [load.repeated() for load in joined.traffic.loads] == [[], []]
    return made


def check_events(joined, number, is_up, group_is_up, management_port, events):
    """Compares what both programs printed about the last change."""
    for side, program in enumerate(joined.programs):
        management = management_port + FAR_PORTS_ABOVE_NEAR * side
        assert program.take_events() == [*events, Handled(CABLES[number][side], is_up, group_is_up, management)]


def check_losses(joined, made, what, tell):
    """Frames may be lost until both programs have handled the change, and are counted. None is lost later."""
    for load in joined.traffic.loads:
        lost = made.meanwhile(load)
        tell(f"{what}: {lost.lost} of {lost.sent} frames lost in the {made.seconds * 1000:.0f} ms until it was handled")
        assert made.afterwards(load).sent > 0
        assert load.lost(made.handled[load]) == []


def test_groups_come_up_with_their_smallest_port_in_charge(joined):
    assert [program.at_start[2:] for program in joined.programs] == [(True, 1), (True, 11)]
    assert [program.take_events() for program in joined.programs] == [[GroupEvent(True, True)]] * 2


def test_flows_use_all_members_and_stay_in_order(joined, tell):
    before = joined.sent_by_members()
    joined.traffic.run_for(STEADY_SECONDS)
    assert joined.traffic.settle() == NOWHERE_ELSE
    after = joined.sent_by_members()
    for load, earlier, later in zip(joined.traffic.loads, before, after, strict=True):
        members = {port: later[port] - earlier[port] for port in later}
        tell(f"{load.sent} frames of {FLOWS} flows over the ports {members}")
        assert min(members.values()) > 0
        assert sum(members.values()) == load.sent
        assert (load.lost(), load.repeated(), load.overtaken()) == ([], [], [])


def test_broadcast_crosses_once_and_never_returns(joined):
    near = joined.pair.near
    frame = ethernet(BROADCAST, near.mac(), ETHERTYPE_EXPERIMENT, near.marker().ljust(46, b"."))
    near.hosts[NEAR_HOST].send(frame)
    assert joined.pair.arrivals(frame[14:]) == ({NEAR_WITNESS: [frame]}, {FAR_HOST: [frame], FAR_WITNESS: [frame]})


def test_traffic_survives_pulled_cables_until_the_last(joined, tell):
    announced = joined.announcements()
    for number, management_port in PULLS[:-1]:
        made = change(joined, "pull", number)
        check_events(joined, number, False, True, management_port, [])
        check_losses(joined, made, f"cable {number} pulled", tell)
    assert joined.announcements() == announced, "a group with a member left announces nothing"

    number, management_port = PULLS[-1]
    made = change(joined, "pull", number, may_flood=True)
    check_events(joined, number, False, False, management_port, [GroupEvent(True, False)])
    assert joined.announcements() == [(down + 1, up) for down, up in announced], "down exactly once"
    assert [made.afterwards(load).delivered for load in joined.traffic.loads] == [0, 0]


def test_group_comes_back_exactly_once(joined, tell):
    for number, _ in PULLS:
        change(joined, "pull", number, may_flood=number == PULLS[-1][0])
    announced = joined.announcements()
    for at, (number, management_port) in enumerate(PLUGS):
        made = change(joined, "plug", number, may_flood=at == 0)
        check_events(joined, number, True, True, management_port, [GroupEvent(at == 0, True)])
        assert joined.announcements() == [(down, up + 1) for down, up in announced], "up exactly once"
        check_losses(joined, made, f"cable {number} plugged in", tell)


def test_order_and_every_frame_are_kept_again_afterwards(joined):
    for verb, steps in (("pull", PULLS), ("plug", PLUGS)):
        for number, _ in steps:
            change(joined, verb, number, may_flood=number in (PULLS[-1][0], PLUGS[0][0]))
    first = joined.traffic.numbers()
    joined.traffic.run_for(STEADY_SECONDS)
    assert joined.traffic.settle() == NOWHERE_ELSE
    for load in joined.traffic.loads:
        assert (load.lost(first[load]), load.repeated(), load.overtaken(first[load])) == ([], [], [])


# Attributes and counters of a whole group


def set_traced(lab, cpu, call, *words):
    """(status, user ports for which the driver call was made, in order) of an attribute set on the group."""
    cpu.shell.call("trace on")
    try:
        record = cpu.call("adp_set_phy_port_attr", GROUP, *words)
    finally:
        cpu.shell.call("trace off")
    made = [int(port) for port in re.findall(rf"{call}\(.*?port=(-?\d+)", "\n".join(record["trace"]))]
    return record["result"], [port - lab.device.physical(0) for port in made]


def test_setting_a_group_goes_through_its_members_in_order(lab, cpu):
    cpu.form_group(1, (22, 3, 9))
    assert set_traced(lab, cpu, "user_port_jumboframe_set", JUMBO, 1, 0) == (0, [3, 9, 22])


def test_setting_a_group_stops_at_the_first_failing_member(lab, cpu):
    cpu.form_group(1, (3, FIBRE_PORT, 26))
    assert set_traced(lab, cpu, "user_port_mdix_set", MDIX, 1, 0) == (WRONG_MEDIUM, [3, FIBRE_PORT])


def test_group_counts_what_its_members_count(lab, cpu):
    cpu.form_group(1, (22, 3, 9))
    assert cpu.result("adp_clr_port_stat", GROUP) == 0
    frame = ethernet(BROADCAST, lab.mac(), ETHERTYPE_EXPERIMENT, lab.marker().ljust(46, b"."))
    for port in (22, 3, 3, 9, 9, 9):
        lab.hosts[port].send(frame)
    lab.arrivals(frame[14:])
    received = [cpu.call("adp_get_port_stat", port, RX_FRAMES) for port in (22, 3, 9, GROUP)]
    assert [record["outputs"]["value"] for record in received] == [1, 2, 3, 6]
    assert cpu.result("adp_clr_port_stat", GROUP) == 0
    assert cpu.call("adp_get_port_stat", 3, RX_FRAMES)["outputs"]["value"] == 0
