"""The example program acl at work: an access list as a management program in C builds it."""

import contextlib
import subprocess

import pytest
from crossing import NEIGHBOUR, RECEIVER, SENDER
from adp.lab import Build
from adp.lab.acl import AclProgram
from adp.testing.packet import Packet

MIRROR_PORT = 26
USAGE_STATUS = 2
PROGRAM_SECONDS = 20.0
ADMINISTRATOR, WATCHED = "10.1.0.9", "10.1.0.66"
SSH = Packet(transport="tcp", destination_port=22)
TELNET = Packet(transport="tcp", destination_port=23)
WEB = Packet(transport="tcp", destination_port=80)
VOICE = Packet(destination_port=5004)
BULK = Packet(destination_port=9000, padding=400)
BULK_PACKETS = 40
# Groups 3 and 2, by the submodules' places.
ENTRIES = {"administrator": 770, "ssh": 771, "telnet": 772, "bulk": 892, "watched": 905}


@pytest.fixture
def program(lab, build, acl):
    """The program guards SENDER's port; the field processor is empty before and afterwards."""
    with contextlib.closing(AclProgram(lab.device, build, SENDER)) as running:
        yield running


def octets(marker, *packets):
    return len(packets), sum(len(packet.build(marker)) for packet in packets)


def test_list_is_on_the_device_as_the_program_says(acl, program):
    assert program.entries == ENTRIES
    entries = acl.entries()
    assert set(ENTRIES.values()) <= set(entries)
    for name, actions in (("ssh", {"drop", "count"}), ("bulk", {"meter", "count"}), ("watched", {"mirror", "count"})):
        assert {each["action"] for each in entries[ENTRIES[name]]["actions"]} == actions
    assert {each["ports"][0] for row in entries.values() for each in row["qualifiers"] if "ports" in each} == {SENDER}


def test_packets_go_where_the_list_says_and_are_counted(crossing, program):
    administrator, watched = SSH.but(source_ip=ADMINISTRATOR), WEB.but(source_ip=WATCHED)
    neighbours = [(NEIGHBOUR, packet.but(source="02:00:00:00:a0:0b")) for packet in (SSH, TELNET, VOICE)]
    mine = [administrator, SSH, SSH, TELNET, WEB, VOICE, watched]
    passing = [administrator, WEB, VOICE.but(dscp=46), watched]
    arrive = crossing.flooded(*((SENDER, packet) for packet in passing), *neighbours)
    marker = crossing.check([*((SENDER, packet) for packet in mine), *neighbours], {**arrive, MIRROR_PORT: [watched]})
    assert program.counts() == {
        "administrator": octets(marker, administrator),
        "ssh": octets(marker, SSH, SSH),
        "telnet": octets(marker, TELNET),
        "bulk": (0, 0),
        "watched": octets(marker, watched),
    }


def test_refusal_is_stronger_than_the_watch_which_counts_first(crossing, program):
    refused = TELNET.but(source_ip=WATCHED)
    marker = crossing.check([(SENDER, refused)], {})
    counts = program.counts()
    assert (counts["telnet"], counts["watched"]) == ((0, 0), octets(marker, refused))


def test_bulk_is_metered(lab, acl, crossing, program):
    marker = crossing.send(*[(SENDER, BULK)] * BULK_PACKETS)
    arrived = len(lab.arrivals(marker)[RECEIVER])
    (meter,) = acl.meters().values()
    assert (meter["passed"], meter["dropped"]) == (arrived, BULK_PACKETS - arrived)
    assert 0 < arrived < BULK_PACKETS
    assert program.counts()["bulk"][0] == BULK_PACKETS


def test_list_goes_with_the_program(acl, crossing, program):
    assert program.end()
    assert (acl.entries(), acl.meters()) == ({}, {})
    crossing.check_flooded((SENDER, SSH), (SENDER, TELNET), (SENDER, VOICE))


@pytest.mark.parametrize("port", ["0", "27", "here"])
def test_port_that_is_none_is_refused_with_a_sentence(lab, build, port):
    running = lab.device.popen(Build(build).command("acl", port), stdout=subprocess.PIPE, stderr=subprocess.PIPE)
    _, told = running.communicate(timeout=PROGRAM_SECONDS)
    assert (running.returncode, told.decode().startswith("usage: acl [PORT]")) == (USAGE_STATUS, True)
