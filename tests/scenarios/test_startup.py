"""Start-up on a device just switched on: protocol frames reach the CPU, and attacks reach no host."""

import contextlib

import pytest
from adp.lab import Lab
from adp.lab.frames import BROADCAST, ETHERTYPE_EXPERIMENT, ethernet, mac, vlan_tag
from adp.testing.cpu import Cpu
from scapy.all import IP, TCP, Ether, ICMPv6MLQuery, ICMPv6MLReport2, IPOption_Router_Alert, IPv6, Raw
from scapy.layers.inet6 import IPv6ExtHdrHopByHop, RouterAlert

TALKER, WITNESS, OTHER = 22, 5, 26
HOSTS = (WITNESS, TALKER, OTHER)
BRIDGE_GROUP = mac("01:80:c2:00:00:00")
RESERVED = [BRIDGE_GROUP[:5] + bytes([last]) for last in range(16)]
FIRST_FREE = 10
LEFT_AT_POWER_ON = 10
ETHERTYPE_LLDP, ETHERTYPE_EAPOL = 0x88CC, 0x888E
LLC_SPANNING_TREE = b"\x42\x42\x03"
STATION, VICTIM = "02:00:00:00:d0:01", "02:00:00:00:d0:02"
IGMP = 2
IGMP_REPORT_V2 = bytes.fromhex("16001de0ef010203")
MLD_ADDRESS = "ff02::1:ff00:1"
MINIMUM_TCP = 20


@pytest.fixture(scope="module")
def fresh_lab(device_build, build):
    """A device of its own for each build: start-up cannot be taken back."""
    with Lab(device_build, HOSTS) as bench:
        yield bench


@pytest.fixture(scope="module")
def started(fresh_lab, build):
    with contextlib.closing(Cpu(fresh_lab, build)) as cpu:
        cpu.set_up()
        assert cpu.result("adp_modules_init") == 0
        yield cpu


def reserved_entries(lab):
    return {row["index"]: mac(row["mac"]) for row in lab.device.control("reserved")["reserved"]}


def test_start_up_writes_the_reserved_addresses_into_free_entries(fresh_lab, started):
    entries = reserved_entries(fresh_lab)
    assert set(entries) == set(range(LEFT_AT_POWER_ON + len(RESERVED)))
    assert [entries[FIRST_FREE + at] for at in range(len(RESERVED))] == RESERVED
    assert not set(RESERVED) & {entries[index] for index in range(LEFT_AT_POWER_ON)}


def test_start_up_turns_traps_and_filter_on(fresh_lab, started):
    shown = fresh_lab.device.control("reserved")
    traps = shown["traps"]
    assert (traps["lldp"], traps["bpdu"], traps["igmp"], traps["mld"]) == (True, True, True, True)
    assert shown["reserved_multicast"] and shown["attack_filter"]
    assert fresh_lab.device.control("mirrors")["enabled"]


# Protocol frames


def length_frame(destination, marker):
    payload = LLC_SPANNING_TREE + b"\0\0\2\2" + marker
    return ethernet(destination, mac(STATION), len(payload), payload)


def igmp(marker, options):
    packet = IP(src="10.0.0.1", dst="239.1.2.3", ttl=1, proto=IGMP, options=options) / Raw(IGMP_REPORT_V2 + marker)
    return bytes(Ether(src=STATION, dst="01:00:5e:01:02:03") / packet)


def mld(marker, message):
    alert = IPv6ExtHdrHopByHop(options=[RouterAlert()])
    packet = IPv6(src="fe80::1", dst=MLD_ADDRESS, hlim=1) / alert / message / Raw(marker)
    return bytes(Ether(src=STATION, dst="33:33:ff:00:00:01") / packet)


def tagged(frame):
    return frame[:12] + vlan_tag(1, 5) + frame[12:]


def plain(destination, ethertype):
    return lambda marker: ethernet(destination, mac(STATION), ethertype, marker.ljust(46, b"."))


PROTOCOLS = {
    "LLDP": plain(RESERVED[0xE], ETHERTYPE_LLDP),
    "LLDP to the nearest bridge": plain(RESERVED[0], ETHERTYPE_LLDP),
    "STP": lambda marker: length_frame(BRIDGE_GROUP, marker),
    "EAPOL": plain(RESERVED[3], ETHERTYPE_EAPOL),
    "LACP": plain(RESERVED[2], 0x8809),
    "IGMP": lambda marker: igmp(marker, []),
    "IGMP with router alert": lambda marker: igmp(marker, [IPOption_Router_Alert()]),
    "MLD query": lambda marker: mld(marker, ICMPv6MLQuery()),
    "MLD report": lambda marker: mld(marker, ICMPv6MLReport2()),
    "tagged STP": lambda marker: tagged(length_frame(BRIDGE_GROUP, marker)),
    "tagged IGMP": lambda marker: tagged(igmp(marker, [])),
}


@pytest.mark.parametrize("port", [TALKER, WITNESS])
@pytest.mark.parametrize("name", PROTOCOLS)
def test_protocol_frame_reaches_the_cpu_and_no_other_host(fresh_lab, started, name, port):
    marker = fresh_lab.marker()
    sent = PROTOCOLS[name](marker)
    fresh_lab.hosts[port].send(sent)
    arrived = started.next_frame(marker)
    assert arrived, "the frame did not reach the CPU"
    status, outputs = started.receive_plain(arrived)
    assert (status, outputs["out_intf"]) == (0, port)
    stripped = bytes.fromhex(outputs["frame"])[: outputs["out_length"]]
    assert stripped in (sent, sent[:12] + vlan_tag(1) + sent[12:])
    assert fresh_lab.arrivals(marker) == {}


def test_first_address_beyond_the_reserved_ones_is_flooded(fresh_lab, started):
    marker = fresh_lab.marker()
    frame = plain(mac("01:80:c2:00:00:1f"), ETHERTYPE_EXPERIMENT)(marker)
    fresh_lab.hosts[TALKER].send(frame)
    assert fresh_lab.arrivals(marker) == {WITNESS: [frame], OTHER: [frame]}


# Attacks, each with a similar frame that is none


def ipv4(marker, tcp=None, **header):
    packet = IP(**{"src": "10.0.0.1", "dst": "10.0.0.2", **header}) / (tcp or TCP(flags="S"))
    return bytes(Ether(src=STATION, dst=VICTIM) / packet / Raw(marker))


def flags(text):
    return lambda marker: ipv4(marker, TCP(flags=text))


def fragment(marker, more, offset, tcp_octets):
    """A fragment of TCP whose first octets are a header's."""
    header = IP(src="10.0.0.1", dst="10.0.0.2", proto=6, flags="MF" if more else 0, frag=offset)
    octets = bytes(TCP(flags="S"))[:tcp_octets]
    return bytes(Ether(src=STATION, dst=VICTIM) / header / Raw(octets))


def padded(frame, marker):
    """The marker behind the packet's own length, where short frames have their padding."""
    return frame + marker


def land6(destination):
    return lambda marker: bytes(
        Ether(src=STATION, dst=VICTIM) / IPv6(src="fd00::1", dst=destination) / TCP(flags="S") / Raw(marker)
    )


def same_mac(source):
    return lambda marker: ethernet(mac(VICTIM), mac(source), ETHERTYPE_EXPERIMENT, marker.ljust(46, b"."))


ATTACKS = {
    "same MAC address": ("dos_same_mac", same_mac(VICTIM), same_mac(STATION)),
    "same IPv4 address": ("dos_land", lambda m: ipv4(m, dst="10.0.0.1"), ipv4),
    "same IPv6 address": ("dos_land", land6("fd00::1"), land6("fd00::2")),
    "null scan": ("dos_null_scan", flags(""), flags("A")),
    "SYN with FIN": ("dos_syn_fin", flags("SF"), flags("F")),
    "SYN with FIN and ACK": ("dos_syn_fin", flags("SFA"), flags("SA")),
    "Christmas tree": ("dos_xmas_scan", flags("FPU"), flags("FPUA")),
    "tiny offset": ("dos_fragment", lambda m: padded(fragment(m, False, 1, 20), m),
                    lambda m: padded(fragment(m, False, 3, 20), m)),
    "tiny first fragment": ("dos_fragment", lambda m: padded(fragment(m, True, 0, 16), m),
                            lambda m: padded(fragment(m, True, 0, MINIMUM_TCP), m)),
}


def drops(lab, port, reason):
    return next(row["drops"][reason] for row in lab.device.control("counters")["counters"] if row["port"] == port)


@pytest.mark.parametrize("name", ATTACKS)
def test_attack_is_dropped_and_counted_and_its_harmless_sister_passes(fresh_lab, started, name):
    reason, attack, sister = ATTACKS[name]
    before = drops(fresh_lab, TALKER, reason)
    marker = fresh_lab.marker()
    harmless = sister(marker)
    for frame in (attack(marker), harmless):
        fresh_lab.hosts[TALKER].send(frame)
    assert fresh_lab.arrivals(marker) == {WITNESS: [harmless], OTHER: [harmless]}
    assert drops(fresh_lab, TALKER, reason) == before + 1


# Last, because it changes the table that the others look at.


def test_starting_up_again_is_no_error_and_adds_what_it_does_not_clear(fresh_lab, started):
    assert started.result("adp_modules_init") == 0
    entries = reserved_entries(fresh_lab)
    # The first address is cleared and comes back in its place; the other fifteen are written anew behind all others.
    assert [entries[FIRST_FREE + at] for at in range(len(RESERVED))] == RESERVED
    assert [entries[FIRST_FREE + len(RESERVED) + at] for at in range(len(RESERVED) - 1)] == RESERVED[1:]
    marker = fresh_lab.marker()
    fresh_lab.hosts[TALKER].send(PROTOCOLS["STP"](marker))
    assert started.next_frame(marker)
    assert fresh_lab.arrivals(marker) == {}
    broadcast = ethernet(BROADCAST, mac(STATION), ETHERTYPE_EXPERIMENT, marker)
    fresh_lab.hosts[TALKER].send(broadcast)
    assert fresh_lab.arrivals(marker) == {WITNESS: [broadcast], OTHER: [broadcast]}
