"""Port authorisation: a port in each of its modes, single addresses, and frames that pass a closed port."""

import adp
import pytest
from adp.lab.frames import BROADCAST, ETHERTYPE_EXPERIMENT, ethernet, mac, vlan_tag
from segment import Segment, colon_form

PORT, SENDER, WITNESS = 5, 1, 26
MEMBERS = (22, 9, 3)
UNAUTHORISED, AUTHORISED, BLOCKED = 0, 1, 2
NORMAL, PENDING, CLOSED = 5, 8, 0
BAD_MODE, CANNOT_ADD = 403, 405
PORT_ACCESS, ETHERTYPE_EAPOL = mac("01:80:c2:00:00:03"), 0x888E
EAPOL_START = b"\x02\x01\0\0"
# Frames to the CPU arrive before the answer to the bench's barriers.
QUIET_SECONDS = 0.05
NO_SUCH_VLAN = 4000


@pytest.fixture
def segment(lab, cpu):
    """A VLAN without the CPU's port; afterwards all ports learn normally again."""
    yield Segment(lab, cpu, (PORT, SENDER, WITNESS, *MEMBERS))
    for port in (PORT, *MEMBERS):
        assert cpu.result("adp_intf_learn_set", port, NORMAL) == 0


class Heard:
    """Where a host's frame arrived: at which hosts, and whether at the CPU."""

    def __init__(self, segment):
        self.segment, self.lab, self.cpu = segment, segment.lab, segment.cpu

    def frame_of(self, port, source, destination=BROADCAST, ethertype=ETHERTYPE_EXPERIMENT, payload=b""):
        """(ports, frame at the CPU or None)"""
        marker = self.lab.marker()
        content = (payload + marker).ljust(46, b"\0")
        frame = ethernet(destination, source, ethertype, content, vlan_tag(self.segment.vid))
        self.lab.hosts[port].send(frame)
        arrived = self.lab.arrivals(marker)
        assert arrived == dict.fromkeys(arrived, [frame])
        return set(arrived), self.cpu.next_frame(marker, QUIET_SECONDS)


@pytest.fixture
def heard(segment):
    return Heard(segment)


# Frame of an unauthorised station: (forwarded, sent to the CPU, learned).
PASSES, PENDS, STOPS = (True, False, True), (False, True, False), (False, False, False)
MODES = {
    "authorised": (AUTHORISED, 0, NORMAL, PASSES),
    "authorised by address": (AUTHORISED, 1, PENDING, PENDS),
    "not authorised": (UNAUTHORISED, 0, PENDING, PENDS),
    "blocked": (BLOCKED, 0, CLOSED, STOPS),
}


def set_mode(segment, port, mode, learn=0):
    assert segment.cpu.result("adp_set_port_dot1x_mode", port, mode, 0, learn) == 0


def authorise(segment, port, address, is_authorised=1):
    return segment.cpu.result("adp_set_mac_dot1x_authorized_state", port, segment.vid, address.hex(), is_authorised)


def check_stranger(segment, heard, port, outcome):
    goes_on, is_handed_over, is_learned = outcome
    stranger = segment.lab.mac(port)
    ports, at_cpu = heard.frame_of(port, stranger)
    assert ports == (segment.others(port) if goes_on else set())
    assert (at_cpu is not None) == is_handed_over
    if at_cpu:
        status, plain = segment.cpu.receive_plain(at_cpu)
        assert (status, plain["out_intf"]) == (0, port)
    assert segment.interface(stranger) == (port if is_learned else None)


@pytest.mark.parametrize("name", MODES)
def test_a_port_treats_strangers_as_its_mode_says(segment, heard, name):
    mode, learn, learning, outcome = MODES[name]
    set_mode(segment, PORT, mode, learn)
    answer = segment.cpu.call("adp_intf_learn_get", PORT)
    assert list(answer["outputs"].values()) == [learning]
    check_stranger(segment, heard, PORT, outcome)


@pytest.mark.parametrize("name", MODES)
def test_a_mode_other_than_authorised_forgets_who_was_there(segment, name):
    mode, learn, _, _ = MODES[name]
    before, elsewhere = segment.station(PORT), segment.station(WITNESS)
    set_mode(segment, PORT, mode, learn)
    assert segment.interface(before) == (PORT if mode == AUTHORISED else None)
    assert segment.interface(elsewhere) == WITNESS


def test_a_port_is_authorised_and_no_longer(segment, heard):
    for state, learn, outcome in ((0, 0, PENDS), (1, 0, PASSES), (1, 1, PENDS), (0, 1, PENDS), (1, 0, PASSES)):
        assert segment.cpu.result("adp_set_port_dot1x_authorized_state", PORT, state, learn) == 0
        check_stranger(segment, heard, PORT, outcome)


def test_another_mode_is_refused_and_changes_nothing(segment, heard):
    assert segment.cpu.result("adp_set_port_dot1x_mode", PORT, 3, 0, 0) == BAD_MODE
    check_stranger(segment, heard, PORT, PASSES)


@pytest.mark.parametrize("name", MODES)
def test_neighbours_can_ask_to_be_let_in(segment, heard, name):
    mode, learn, _, (goes_on, _, _) = MODES[name]
    set_mode(segment, PORT, mode, learn)
    start = {"ethertype": ETHERTYPE_EAPOL, "payload": EAPOL_START}
    ports, at_cpu = heard.frame_of(PORT, segment.lab.mac(PORT), PORT_ACCESS, **start)
    if goes_on:
        assert ports == segment.others(PORT), "without start-up's reserved addresses it is flooded"
        return
    assert ports == set()
    status, plain = segment.cpu.receive_plain(at_cpu)
    assert (status, plain["out_intf"]) == (0, PORT)
    assert at_cpu[:6] == PORT_ACCESS


@pytest.mark.parametrize("name", [name for name, mode in MODES.items() if mode[2] != NORMAL])
def test_an_authorised_address_passes_a_closed_port_until_it_is_not(segment, heard, name):
    mode, learn, _, outcome = MODES[name]
    set_mode(segment, PORT, mode, learn)
    guest = segment.lab.mac(PORT)
    assert authorise(segment, PORT, guest) == 0
    assert heard.frame_of(PORT, guest) == (segment.others(PORT), None)
    assert segment.say(SENDER, segment.lab.mac(SENDER), guest) == {PORT}
    check_stranger(segment, heard, PORT, outcome)

    assert authorise(segment, PORT, guest, 0) == 0
    assert segment.interface(guest) is None
    ports, at_cpu = heard.frame_of(PORT, guest)
    assert (ports, at_cpu is not None) == (set(), outcome is PENDS)


def test_an_address_is_not_let_in_elsewhere(segment, heard):
    for port in (PORT, MEMBERS[0]):
        set_mode(segment, port, BLOCKED)
    guest = segment.lab.mac(PORT)
    assert authorise(segment, PORT, guest) == 0
    assert heard.frame_of(MEMBERS[0], guest) == (set(), None)


def test_an_address_that_cannot_be_added_is_told(lab, segment):
    guest = lab.mac(PORT)
    status = segment.cpu.result("adp_set_mac_dot1x_authorized_state", PORT, NO_SUCH_VLAN, guest.hex(), 1)
    assert status == CANNOT_ADD


# Groups


def authorise_traced(segment, port, address):
    """The service call by which an address is authorised."""
    segment.cpu.shell.call("trace on")
    try:
        words = port, segment.vid, address.hex(), 1
        record = segment.cpu.call("adp_set_mac_dot1x_authorized_state", *words)
    finally:
        segment.cpu.shell.call("trace off")
    assert record["result"] == 0
    (added,) = [line for line in record["trace"] if line.startswith("add_mac_static_addr(")]
    return added


@pytest.mark.parametrize("lost", ((), (3,), (3, 9)))
def test_an_address_of_a_group_is_installed_on_its_lowest_active_member(segment, heard, lost):
    lab, cpu = segment.lab, segment.cpu
    cpu.form_group(1, MEMBERS)
    active = sorted(set(MEMBERS) - set(lost))
    if lost:
        assert cpu.result("adp_del_agg_member_by_map", adp.agg(1), sum(1 << port for port in lost), 0) == 0
    for port in MEMBERS:
        set_mode(segment, port, BLOCKED)
    guest = lab.mac(MEMBERS[0])
    assert f" intf={active[0]}, " in authorise_traced(segment, MEMBERS[0], guest)
    assert segment.interface(guest) == adp.agg(1)
    (row,) = [row for row in lab.device.control("macs")["macs"] if row["mac"] == colon_form(guest)]
    assert (row["port"], row["kind"]) == (active[0], "static")
    for port in active:
        assert heard.frame_of(port, guest) == ({PORT, SENDER, WITNESS} | set(lost), None)
    (member,) = segment.say(SENDER, lab.mac(SENDER), guest)
    assert member in active

    assert authorise(segment, MEMBERS[0], guest, 0) == 0
    for port in active:
        assert heard.frame_of(port, guest) == (set(), None)
