"""Settings of ports: switched off, held, isolated, looped, jumbo frames; and counters."""

import contextlib

import pytest
from adp.lab.frames import BROADCAST, ETHERTYPE_EXPERIMENT, ethernet, mac, vlan_tag

PORT = 22
PEER = 5
WITNESS = 3
ALL_PORTS = set(range(1, 27))
CPU_BIT = 1
EVERY_PORT_WORD = sum(1 << port for port in ALL_PORTS) | CPU_BIT
RECEIVE_SECONDS = 5.0

ADMIN_STATE, LOOPBACK, JUMBO, HOLD, LINK = 3, 4, 6, 11, 11
HEADER_BYTES = 14
LONGEST_PLAIN_FRAME = 1518
LONG_FRAME = 4000
LONGEST_ON_CABLE = 9300 + HEADER_BYTES

# The chip's counters that are read here, by the driver's selectors.
RX_OCTETS, RX_FRAMES, RX_UNICAST, RX_MULTICAST, RX_BROADCAST, RX_DROPS, RX_TOO_LONG = 0, 1, 2, 3, 4, 5, 6
TX_OCTETS, TX_FRAMES, TX_UNICAST, TX_MULTICAST, TX_BROADCAST, TX_TOO_LONG = 8, 9, 10, 11, 12, 13

MULTICAST = mac("01:00:5e:00:00:09")
SLOW_PROTOCOLS = mac("01:80:c2:00:00:02")
ETHERTYPE_SLOW = 0x8809
LACP, OAM = 1, 3
NO_VLAN_999 = 999


def frame_of(lab, length=60, destination=BROADCAST, source=None, tags=b""):
    """A frame of exactly this length; its marker is what follows the header."""
    head = ethernet(destination, source or lab.mac(), ETHERTYPE_EXPERIMENT, lab.marker(), tags)
    return head.ljust(length, b".")


def marker_of(frame):
    return frame[HEADER_BYTES : HEADER_BYTES + 15]


def send(lab, port, frame, without=()):
    """The arrivals of a frame that a host sends."""
    lab.hosts[port].send(frame)
    return lab.arrivals(marker_of(frame), without)


def everyone_but(port, frame):
    return {other: [frame] for other in ALL_PORTS - {port}}


@pytest.fixture
def attribute(cpu, lab):
    """Sets a port attribute; afterwards everything is put back, in reverse."""
    with contextlib.ExitStack() as undo:

        def put(port, selector, value):
            assert cpu.result("adp_set_phy_port_attr", port, selector, value, 0) == 0

        def change(port, selector, value, back):
            put(port, selector, value)
            undo.callback(put, port, selector, back)

        yield change
    lab.await_links()


@pytest.fixture
def taught(lab):
    """Station addresses of PORT and PEER that the chip knows."""
    stations = {port: lab.mac(port) for port in (PORT, PEER)}
    for port, station in stations.items():
        send(lab, port, frame_of(lab, source=station))
    return stations


# Switching a port off and on


@pytest.mark.parametrize("selector", [ADMIN_STATE, HOLD], ids=["disabled", "held"])
def test_port_that_is_switched_off_passes_nothing_until_it_is_back(lab, cpu, attribute, selector):
    attribute(PORT, selector, 0, 1)
    lab.await_links(without={PORT})
    assert set(send(lab, PEER, frame_of(lab))) == ALL_PORTS - {PORT, PEER}
    assert cpu.call("adp_get_phy_port_attr", PORT, LINK)["outputs"]["value"] == 0

    assert cpu.result("adp_set_phy_port_attr", PORT, selector, 1, 0) == 0
    lab.await_links()
    outward, inward = frame_of(lab), frame_of(lab)
    assert send(lab, PEER, outward) == everyone_but(PEER, outward)
    assert send(lab, PORT, inward) == everyone_but(PORT, inward)
    assert cpu.call("adp_get_phy_port_attr", PORT, LINK)["outputs"]["value"] == 1


def test_host_loses_its_carrier_with_the_port(lab, cpu, attribute):
    host = lab.hosts[PORT]
    attribute(PORT, ADMIN_STATE, 0, 1)
    lab.await_links(without={PORT})
    assert not host.namespace.is_operational(host.nic.interface)


def test_held_port_reads_as_switched_on_and_enabling_it_does_nothing(lab, cpu, attribute):
    attribute(PORT, HOLD, 0, 1)
    lab.await_links(without={PORT})
    assert cpu.call("adp_get_phy_port_attr", PORT, ADMIN_STATE)["outputs"]["value"] == 1
    assert cpu.result("adp_set_phy_port_attr", PORT, ADMIN_STATE, 1, 0) == 0
    assert PORT not in lab.device.links()


# Isolation


@pytest.fixture
def isolated(cpu):
    """Lets a port send to these ports only."""
    changed = set()

    def isolate(port, allowed):
        changed.add(port)
        assert cpu.result("adp_set_port_isolate", port, sum(1 << other for other in allowed), 0) == 0

    yield isolate
    for port in changed:
        assert cpu.result("adp_set_port_isolate", port, EVERY_PORT_WORD, 0) == 0


def test_isolated_host_reaches_only_whom_it_may(lab, isolated):
    isolated(PEER, {WITNESS})
    frame = frame_of(lab)
    assert send(lab, PEER, frame) == {WITNESS: [frame]}


def test_isolation_holds_for_known_addresses_and_in_one_direction_only(lab, isolated, taught):
    isolated(PEER, {WITNESS})
    assert send(lab, PEER, frame_of(lab, destination=taught[PORT], source=taught[PEER])) == {}
    back = frame_of(lab, destination=taught[PEER], source=taught[PORT])
    assert send(lab, PORT, back) == {PEER: [back]}


def test_isolation_that_is_lifted_is_gone(lab, cpu, isolated):
    isolated(PEER, {WITNESS})
    isolated(PEER, ALL_PORTS | {0})
    assert cpu.call("adp_get_port_isolatestatus", PEER)["outputs"]["bitmap"] == [EVERY_PORT_WORD, 0]
    frame = frame_of(lab)
    assert send(lab, PEER, frame) == everyone_but(PEER, frame)


# Counters


def counter(cpu, port, selector):
    """A counter, by both calls that read it."""
    summed = cpu.call("adp_get_port_stat", port, selector)
    plain = cpu.call("adp_intf_stat_get", port, selector)
    assert summed["result"] == 0 and plain["result"] == 0
    assert plain["outputs"]["value"] == summed["outputs"]["value"]
    return summed["outputs"]["value"]


def counters(cpu, port, selectors):
    return [counter(cpu, port, selector) for selector in selectors]


def deliver(lab, receiver, frames):
    """PEER sends; each frame is waited for at a host, so that nothing else is on the cables."""
    for frame in frames:
        lab.hosts[PEER].send(frame)
        assert lab.hosts[receiver].receive(frame, RECEIVE_SECONDS) == frame


def test_counters_match_what_the_hosts_sent(lab, cpu, taught):
    for port in (PEER, PORT):
        assert cpu.result("adp_clr_port_stat", port) == 0
    unicast = [frame_of(lab, length, taught[PORT], taught[PEER]) for length in (60, 61, 999, 1518, 4000)]
    multicast = [frame_of(lab, length, MULTICAST, taught[PEER]) for length in (60, 64)]
    broadcast = [frame_of(lab, length, BROADCAST, taught[PEER]) for length in (60, 100, 1500)]
    everything = unicast + multicast + broadcast
    deliver(lab, PORT, everything)
    octets = sum(map(len, everything))
    received = counters(cpu, PEER, (RX_OCTETS, RX_FRAMES, RX_UNICAST, RX_MULTICAST, RX_BROADCAST, RX_DROPS))
    assert received == [octets, 10, 5, 2, 3, 0]
    sent = counters(cpu, PORT, (TX_OCTETS, TX_FRAMES, TX_UNICAST, TX_MULTICAST, TX_BROADCAST))
    assert sent == [octets, 10, 5, 2, 3]
    assert counters(cpu, PEER, (TX_FRAMES,)) == [0]
    assert counters(cpu, PORT, (RX_FRAMES,)) == [0]


def test_dropped_frames_are_counted_as_received_and_dropped(lab, cpu, taught):
    assert cpu.result("adp_clr_port_stat", PEER) == 0
    for _ in range(3):
        lab.hosts[PEER].send(frame_of(lab, tags=vlan_tag(NO_VLAN_999)))
    deliver(lab, PORT, [frame_of(lab, 60, taught[PORT], taught[PEER])])
    assert counters(cpu, PEER, (RX_FRAMES, RX_DROPS)) == [4, 3]


def test_clearing_counters_clears_one_port(lab, cpu, taught):
    for port in (PEER, PORT):
        assert cpu.result("adp_clr_port_stat", port) == 0
    deliver(lab, PORT, [frame_of(lab, 60, taught[PORT], taught[PEER])])
    assert cpu.result("adp_clr_port_stat", PEER) == 0
    assert counters(cpu, PEER, (RX_FRAMES, RX_OCTETS, RX_UNICAST)) == [0, 0, 0]
    assert counters(cpu, PORT, (TX_FRAMES, TX_OCTETS)) == [1, 60]


# Loopback


def test_looped_port_returns_what_it_would_send(lab, attribute):
    attribute(PORT, LOOPBACK, 1, 0)
    frame = frame_of(lab)
    others = ALL_PORTS - {PEER, PORT}
    # Every other host receives the frame and its return; the sender receives the return; nothing leaves on the cable.
    seen = send(lab, PEER, frame, without={PORT})
    assert seen == {PEER: [frame]} | {port: [frame, frame] for port in others}


def test_looped_port_takes_nothing_from_its_cable(lab, attribute):
    attribute(PORT, LOOPBACK, 1, 0)
    assert send(lab, PORT, frame_of(lab), without={PORT}) == {}


def test_port_is_itself_again_after_its_loopback(lab, cpu, attribute):
    attribute(PORT, LOOPBACK, 1, 0)
    attribute(PORT, LOOPBACK, 0, 0)
    frame = frame_of(lab)
    assert send(lab, PEER, frame) == everyone_but(PEER, frame)


# Jumbo frames


def test_jumbo_frames_pass_to_the_octet(lab, cpu):
    frame = frame_of(lab, LONGEST_ON_CABLE)
    assert send(lab, PEER, frame) == everyone_but(PEER, frame)


def test_port_without_jumbo_frames_refuses_longer_ones_from_its_host(lab, cpu, attribute):
    attribute(PEER, JUMBO, 0, 1)
    assert cpu.result("adp_clr_port_stat", PEER) == 0
    longest = frame_of(lab, LONGEST_PLAIN_FRAME)
    assert send(lab, PEER, longest) == everyone_but(PEER, longest)
    assert send(lab, PEER, frame_of(lab, LONGEST_PLAIN_FRAME + 1)) == {}
    assert send(lab, PEER, frame_of(lab, LONG_FRAME)) == {}
    assert counters(cpu, PEER, (RX_FRAMES, RX_TOO_LONG)) == [3, 2]


def test_port_without_jumbo_frames_sends_no_longer_ones(lab, cpu, attribute):
    attribute(PORT, JUMBO, 0, 1)
    assert cpu.result("adp_clr_port_stat", PORT) == 0
    frame = frame_of(lab, LONG_FRAME)
    assert set(send(lab, PEER, frame)) == ALL_PORTS - {PEER, PORT}
    assert counters(cpu, PORT, (TX_TOO_LONG,)) == [1]
    shorter = frame_of(lab, LONGEST_PLAIN_FRAME)
    assert send(lab, PEER, shorter) == everyone_but(PEER, shorter)


# Protocol frames for the CPU

TRAPS = {"lacp": ("adp_set_trap_lacp_packet", LACP), "oam": ("adp_set_trap_eoam_packet", OAM)}


def slow_frame(lab, subtype):
    payload = bytes([subtype]) + lab.marker()
    return ethernet(SLOW_PROTOCOLS, lab.mac(), ETHERTYPE_SLOW, payload.ljust(50, b"\0"))


@pytest.fixture(params=TRAPS)
def trap(request, cpu):
    """(subtype of the frames, another one): frames of the first go to the CPU."""
    call, subtype = TRAPS[request.param]
    assert cpu.result(call, 1, 0, 0, 0) == 0
    yield subtype, OAM if subtype == LACP else LACP
    assert cpu.result(call, 0, 0, 0, 0) == 0


def test_trapped_frame_reaches_the_cpu_with_its_port_and_nobody_else(lab, cpu, trap):
    frame = slow_frame(lab, trap[0])
    marker = frame[HEADER_BYTES + 1 : HEADER_BYTES + 16]
    lab.hosts[PORT].send(frame)
    at_cpu = cpu.next_frame(marker)
    assert at_cpu is not None
    status, outputs = cpu.receive_plain(at_cpu)
    assert (status, outputs["out_intf"]) == (0, PORT)
    assert lab.arrivals(marker) == {}


def test_other_frames_go_their_way_past_a_trap(lab, cpu, trap):
    frame = slow_frame(lab, trap[1])
    marker = frame[HEADER_BYTES + 1 : HEADER_BYTES + 16]
    lab.hosts[PORT].send(frame)
    assert lab.arrivals(marker) == everyone_but(PORT, frame)


def test_frames_are_switched_when_their_trap_is_off(lab, cpu, trap):
    call = next(name for name, subtype in TRAPS.values() if subtype == trap[0])
    assert cpu.result(call, 0, 0, 0, 0) == 0
    frame = slow_frame(lab, trap[0])
    lab.hosts[PORT].send(frame)
    assert lab.arrivals(frame[HEADER_BYTES + 1 : HEADER_BYTES + 16]) == everyone_but(PORT, frame)
