"""After start-up: what neighbours and groups say reaches the CPU alone, attacks end at the port, mirrors show frames."""

import contextlib

import pytest
from conftest import DEVICE_BUILD
from cpu import Cpu
from lab import Lab
from lab.frames import BROADCAST, ETHERTYPE_EXPERIMENT, ETHERTYPE_IPV4, ETHERTYPE_IPV6, ethernet, mac, vlan_tag
from scapy.all import IP, TCP, UDP, IPOption, IPv6, IPv6ExtHdrHopByHop, Raw, RouterAlert

PORT, PEER, SPY = 5, 22, 1
PORTS = (SPY, PORT, PEER)
EVERY_PORT_WORD = (1 << 27) - 1
INGRESS, EGRESS = 1, 2
SESSION = 1
MIRROR_BUSY = -62
STEPS = (
    "l2_user_entry_init",
    "adp_trunk_init",
    "adp_stg_init",
    "adp_lldp_init",
    "adp_mirror_init",
    "adp_igmp_init",
    "ipv6_user_init",
    "adp_dos_attack_init",
)
BRIDGES, PORT_ACCESS, NEAREST_BRIDGE = mac("01:80:c2:00:00:00"), mac("01:80:c2:00:00:03"), mac("01:80:c2:00:00:0e")
ALL_HOSTS, ALL_ROUTERS, ALL_SYSTEMS6 = mac("01:00:5e:00:00:01"), mac("01:00:5e:00:00:02"), mac("33:33:00:00:00:16")
LLC_BPDU = b"\x42\x42\x03"
IGMP, ICMPV6, MLD_REPORT = 2, 58, b"\x8f\0\0\0"


@pytest.fixture(name="bench", scope="module")
def make_bench():
    """A device of its own: what start-up turns on stays on."""
    with Lab(DEVICE_BUILD, PORTS, name="startup") as bench:
        yield bench


@pytest.fixture(name="started", scope="module")
def start(bench, build):
    """The CPU behind every step of start-up but the field processor's."""
    with contextlib.closing(Cpu(bench, build)) as cpu:
        cpu.set_up()
        assert [cpu.result(step) for step in STEPS] == [0] * len(STEPS)
        yield cpu


def igmp_report(marker):
    options = [IPOption(b"\x94\x04\0\0")]
    return bytes(IP(src="10.0.0.1", dst="224.0.0.22", proto=IGMP, options=options) / Raw(marker))


def mld_report(marker):
    hop_by_hop = IPv6ExtHdrHopByHop(nh=ICMPV6, options=[RouterAlert()])
    return bytes(IPv6(src="fe80::1", dst="ff02::16") / hop_by_hop / Raw(MLD_REPORT + marker))


TRAPPED = {
    "spanning tree": (BRIDGES, 38, lambda marker: LLC_BPDU + marker),
    "port access": (PORT_ACCESS, 0x888E, lambda marker: marker),
    "discovery": (NEAREST_BRIDGE, 0x88CC, lambda marker: marker),
    "aggregation": (mac("01:80:c2:00:00:02"), 0x8809, lambda marker: b"\x01" + marker),
    "registration": (mac("01:80:c2:00:00:21"), 0x88F5, lambda marker: marker),
    "IGMP": (ALL_ROUTERS, ETHERTYPE_IPV4, igmp_report),
    "MLD": (ALL_SYSTEMS6, ETHERTYPE_IPV6, mld_report),
}


def frame_from(bench, destination, ethertype, payload, tags=b""):
    """(marker, frame) with the marker in the payload, as long as the shortest frame at least."""
    marker = bench.marker()
    return marker, ethernet(destination, bench.mac(PORT), ethertype, payload(marker), tags).ljust(60, b"\0")


def deliver(bench, marked):
    """What reaches the other hosts of a frame that PORT's host sends."""
    marker, frame = marked
    bench.hosts[PORT].send(frame)
    return bench.arrivals(marker)


@pytest.mark.parametrize("kind", TRAPPED)
def test_control_frames_reach_the_cpu_alone_with_their_interface(bench, started, kind):
    marked = frame_from(bench, *TRAPPED[kind])
    assert deliver(bench, marked) == {}
    arrived = started.next_frame(marked[0])
    assert arrived, "the frame never reached the CPU"
    assert arrived[:12] + arrived[22:] == marked[1]
    status, plain = started.receive_plain(arrived)
    assert (status, plain["out_intf"]) == (0, PORT)


def test_other_frames_are_switched_as_before(bench, started):
    marked = frame_from(bench, ALL_HOSTS, ETHERTYPE_IPV4, lambda m: bytes(IP(dst="224.0.0.1") / UDP() / Raw(m)))
    assert deliver(bench, marked) == {SPY: [marked[1]], PEER: [marked[1]]}
    assert started.next_frame(marked[0])


def test_starting_again_writes_the_first_address_where_it_was(bench, started):
    before = {row["index"]: row["mac"] for row in bench.device.control("reserved")["reserved"]}
    assert started.result("l2_user_entry_init") == 0
    after = {row["index"]: row["mac"] for row in bench.device.control("reserved")["reserved"]}
    assert {index: after[index] for index in before} == before
    assert list(after.values()).count("01:80:c2:00:00:00") == 1
    new = [address for index, address in after.items() if index not in before]
    room = 64 - len(before)
    assert new == [f"01:80:c2:00:00:{last:02x}" for last in range(1, 16)][:room]


ATTACKS = {
    "dos_land": lambda m: IP(src="10.0.0.1", dst="10.0.0.1") / UDP() / Raw(m),
    "dos_null_scan": lambda m: IP(dst="10.0.0.2") / TCP(flags=0) / Raw(m),
    "dos_syn_fin": lambda m: IP(dst="10.0.0.2") / TCP(flags="SF") / Raw(m),
    "dos_xmas_scan": lambda m: IP(dst="10.0.0.2") / TCP(flags="FPU") / Raw(m),
    "dos_fragment": lambda m: IP(dst="10.0.0.2", proto=6, frag=1) / Raw(m),
}


@pytest.mark.parametrize("reason", ATTACKS)
def test_attacks_end_at_the_port(bench, started, reason):
    def drops():
        rows = bench.device.control("counters")["counters"]
        return next(row for row in rows if row["port"] == PORT)["drops"][reason]

    before = drops()
    marked = frame_from(bench, BROADCAST, ETHERTYPE_IPV4, lambda m: bytes(ATTACKS[reason](m)))
    assert deliver(bench, marked) == {}
    assert drops() == before + 1


@pytest.fixture(name="mirror")
def make_mirror(started):
    """Mirrors ports to SPY; afterwards nothing is mirrored."""
    mirrored = set()

    def mirror(source, directions, destination=SPY):
        status = started.result("adp_add_port_mirror", source, destination, directions, SESSION)
        if status == 0:
            mirrored.add(source)
        return status

    yield mirror
    for source in mirrored:
        assert started.result("adp_del_port_mirror", source, SPY, 0, SESSION) == 0


def experiment(bench, tags=b""):
    return frame_from(bench, BROADCAST, ETHERTYPE_EXPERIMENT, lambda marker: marker, tags)


@pytest.fixture(name="to_peer_only")
def isolate(started):
    """Frames of PORT may go to PEER only, so that what SPY gets is a copy."""
    assert started.result("adp_set_port_isolate", PORT, 1 << PEER, 0) == 0
    yield
    assert started.result("adp_set_port_isolate", PORT, EVERY_PORT_WORD, 0) == 0


@pytest.mark.parametrize("source, directions", [(PORT, INGRESS), (PEER, EGRESS)])
def test_a_mirrored_copy_is_the_frame(bench, mirror, to_peer_only, source, directions):
    assert deliver(bench, marked := experiment(bench)) == {PEER: [marked[1]]}
    assert mirror(source, directions) == 0
    assert deliver(bench, marked := experiment(bench)) == {PEER: [marked[1]], SPY: [marked[1]]}


def test_ingress_copies_keep_what_the_switch_changes(bench, mirror, to_peer_only):
    assert mirror(PORT, INGRESS | EGRESS) == 0
    marked = experiment(bench, vlan_tag(1, priority=5))
    frame = marked[1]
    assert deliver(bench, marked) == {PEER: [frame[:12] + frame[16:]], SPY: [frame]}


def test_a_session_has_one_destination_and_can_be_disabled(bench, started, mirror, to_peer_only):
    assert mirror(PORT, INGRESS) == 0
    assert mirror(PORT, INGRESS, destination=PEER) == MIRROR_BUSY
    assert started.result("adp_set_mirror_disable", SESSION, 0, 0, 1) == 0
    assert deliver(bench, marked := experiment(bench)) == {PEER: [marked[1]]}
    assert started.result("adp_check_set_mirror_disable", SESSION, 0, 0, 0) == 0
    assert started.result("adp_set_mirror_disable", SESSION, 0, 0, 0) == 0
    assert set(deliver(bench, experiment(bench))) == {PEER, SPY}


def test_pins_are_written_and_read(bench, started):
    def registers():
        pins = bench.device.control("gpio")
        return pins["direction"], pins["output"]

    assert started.result("adp_gpio_register_init") == 0
    _, output = registers()
    assert started.result("adp_reverse_gpio", 1) == 0
    assert registers() == (9, output ^ 2)
    assert started.result("adp_reverse_gpio", 1) == 0
    assert registers() == (9, output)
    for level in (1, 0):
        bench.device.control("gpio", 3, level)
        assert started.result("adp_get_gpio_val", 3) == level
