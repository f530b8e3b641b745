"""The same tests on the virtual device and on a board, whose shell is behind a socket or on a serial line."""

import contextlib
import re
import shutil
from typing import NamedTuple

import pytest
from adp.lab import Lab, LabError
from adp.lab.board import open_board
from adp.lab.builds import ROOT
from adp.lab.frames import BROADCAST, ETHERTYPE_EXPERIMENT, ethernet, vlan_tag
from remote_board import PORTS, RemoteBoard, served_at_console, served_at_socket

MEMBER, UNTAGGED, OUTSIDE = PORTS
VLAN = 100
CPU = 0
NO_VLAN = 0xFFFFFFFF
PLACES = ("virtual device", "board at a socket", "board at a console")


class Bench(NamedTuple):
    """A lab of either kind, and adpsh on it."""

    lab: object
    shell: object

    def sample(self, tags=b"", size=60):
        """(marker, broadcast frame)"""
        marker = self.lab.marker()
        payload = marker.ljust(size - 14, b".")
        return marker, ethernet(BROADCAST, self.lab.mac(), ETHERTYPE_EXPERIMENT, payload, tags)


@pytest.fixture(name="board", scope="module")
def make_board():
    with RemoteBoard() as board:
        yield board


@pytest.fixture(name="bench", scope="module", params=PLACES)
def make_bench(request, board):
    with contextlib.ExitStack() as stack:
        if request.param == PLACES[0]:
            lab = stack.enter_context(Lab(hosts=PORTS))
        else:
            stack.enter_context(board.tester.entered())
            lab = stack.enter_context(open_board(board.file(**stack.enter_context(way(request.param, board)))))
        shell = lab.shell("host")
        shell.call("map")
        shell.call("listen")
        shell.result("adp_pkt_init")
        yield Bench(lab, shell)


@contextlib.contextmanager
def way(place, board):
    """The key of the board file that says the way to the shell."""
    if place == PLACES[1]:
        with served_at_socket(board) as command:
            yield {"shell": command}
    else:
        with served_at_console(board) as line:
            yield {"serial": line}


@pytest.fixture
def vlan(bench):
    """A VLAN with two of the ports and the CPU, one of them untagged."""
    assert bench.shell.result(f"adp_vlan_create {VLAN}") == 0
    members = f"{{{CPU},{MEMBER},{UNTAGGED}}} {{{UNTAGGED}}}"
    assert bench.shell.result(f"adp_vlan_port_set {VLAN} {members}") == 0
    yield VLAN
    assert bench.shell.result(f"adp_vlan_destroy {VLAN}") == 0


def test_frames_stay_in_their_vlan_and_lose_its_tag_where_it_is_untagged(bench, vlan):
    marker, frame = bench.sample(vlan_tag(vlan))
    bench.lab.hosts[MEMBER].send(frame)
    assert bench.lab.arrivals(marker) == {UNTAGGED: [frame[:12] + frame[16:]]}


def test_untagged_frames_get_the_tag_of_their_ports_vlan(bench, vlan):
    marker, frame = bench.sample()
    assert bench.shell.result(f"adp_intf_pivd_set {UNTAGGED} {vlan}") == 0
    bench.lab.hosts[UNTAGGED].send(frame)
    assert bench.lab.arrivals(marker) == {MEMBER: [frame[:12] + vlan_tag(vlan) + frame[12:]]}
    assert bench.shell.result(f"adp_intf_pivd_set {UNTAGGED} 1") == 0


def test_frames_from_outside_the_vlan_do_not_arrive(bench, vlan):
    marker, frame = bench.sample(vlan_tag(vlan))
    bench.lab.hosts[OUTSIDE].send(frame)
    assert bench.lab.arrivals(marker) == {}


def test_frames_of_the_cpu_leave_by_the_ports_that_it_names(bench):
    marker, frame = bench.sample()
    sent = f"__adp_transmit_frame {{frame={frame.hex()} source=0}} [{MEMBER},{OUTSIDE}] {NO_VLAN} 0"
    assert bench.shell.result(sent) == 0
    assert bench.lab.arrivals(marker) == {MEMBER: [frame], OUTSIDE: [frame]}


def test_frames_reach_the_cpu(bench, vlan):
    marker, frame = bench.sample(vlan_tag(vlan))
    bench.lab.hosts[MEMBER].send(frame)
    received = b""
    while marker not in received:
        received = bytes.fromhex(bench.shell.call("wait_frame 5")["frame"])
    assert bench.lab.hosts[UNTAGGED].receive(marker) is not None


def test_frames_as_long_as_a_cable_takes_arrive_whole(bench, vlan):
    marker, frame = bench.sample(vlan_tag(vlan), size=1514)
    bench.lab.hosts[MEMBER].send(frame)
    assert bench.lab.arrivals(marker) == {UNTAGGED: [frame[:12] + frame[16:]]}


def test_a_line_that_adpsh_rejects_does_not_end_it(bench):
    with pytest.raises(LabError, match="adpsh refused 'nonsense'"):
        bench.shell.call("nonsense")
    assert bench.shell.call("echo so far")["echo"] == "so far"


def test_the_program_of_the_page_runs(board, tmp_path, monkeypatch):
    page = (ROOT / "docs" / "how-to" / "test-a-board.md").read_text(encoding="utf-8")
    (program,) = re.findall("```python\n(.*?)```", page, re.S)
    with served_at_socket(board) as command, board.tester.entered():
        shutil.copy(board.file(shell=command), tmp_path / "board.toml")
        monkeypatch.chdir(tmp_path)
        exec(program, {})
