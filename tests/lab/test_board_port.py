"""Interfaces of the tester's machine that are cabled to a board: used for nothing else, and left as they were."""

import contextlib
import json
import subprocess
import sys

import pytest
from adp.lab import LabError, board, board_port, nic
from adp.lab.board import NotOnBoardError, open_board
from adp.lab.board_port import BoardPort
from adp.lab.netns import NetNamespace
from adp.lab.nic import Nic
from adp.lab.offload import offloads_of

PORT = 5
NEAR, FAR = "eth1", "far1"
FRAME = bytes(12) + b"\x88\xb5" + b"marker".ljust(46)


@pytest.fixture(name="machine")
def make_machine():
    """A namespace with a cable from eth1 to far1. The test runs in it."""
    with contextlib.closing(NetNamespace("tester")) as namespace, namespace.entered():
        namespace.ip(f"link add {NEAR} type veth peer name {FAR}", f"link set {FAR} up")
        yield namespace


@pytest.fixture(name="file")
def make_file(tmp_path):
    path = tmp_path / "board.toml"
    path.write_text(f'interfaces = {{{PORT} = "{NEAR}"}}\nshell = "true"\nsettle = "50ms"\n', encoding="ascii")
    return path


def state(machine):
    """What a test may not have changed for good: flags, promiscuity, offloads."""
    shown = json.loads(machine.run("ip", "-json", "-details", "link", "show", "dev", NEAR))[0]
    return "UP" in shown["flags"], shown["promiscuity"], offloads_of(NEAR)


@pytest.mark.parametrize("is_up", [True, False])
def test_an_interface_is_left_as_it_was(machine, file, is_up):
    if is_up:
        machine.ip(f"link set {NEAR} up")
    before = state(machine)
    assert before[:2] == (is_up, 0) and any(before[2].values())
    with open_board(file):
        during = state(machine)
        assert during[:2] == (True, 1) and not any(during[2].values())
    assert state(machine) == before


def test_an_interface_is_left_as_it_was_after_a_failure(machine, file):
    before = state(machine)
    with pytest.raises(ZeroDivisionError), open_board(file):
        raise ZeroDivisionError
    assert state(machine) == before


@pytest.mark.parametrize(
    "lines, use",
    [
        ([f"address add 192.0.2.1/24 dev {NEAR}"], "has the address 192.0.2.1"),
        (["link add br0 type bridge", f"link set {NEAR} master br0"], "has a place in br0"),
    ],
)
def test_an_interface_in_use_is_refused_unless_forced(machine, file, lines, use):
    machine.ip(*lines)
    before = state(machine)
    with pytest.raises(LabError, match=f"The interface {NEAR} {use}, so it seems to be in use.*'force = true'"):
        with open_board(file):
            pass
    assert state(machine) == before
    with file.open("a") as text:
        text.write("force = true\n")
    with open_board(file) as lab:
        lab.hosts[PORT].send(FRAME)


def test_interfaces_that_cannot_be_used_are_named(machine):
    with pytest.raises(LabError, match="There is no interface eth9 here"):
        BoardPort(PORT, "eth9")
    with pytest.raises(LabError, match="The interface lo is the loopback"):
        BoardPort(PORT, "lo", force=True)


def test_a_second_interface_that_is_missing_leaves_the_first_as_it_was(machine, file):
    before = state(machine)
    file.write_text(file.read_text().replace("{", '{9 = "eth9", '))
    with pytest.raises(LabError, match="There is no interface eth9 here"), open_board(file):
        pass
    assert state(machine) == before


def test_a_missing_link_is_told(machine, file, monkeypatch):
    monkeypatch.setattr(board, "LINK_SECONDS", 0.2)
    machine.ip(f"link set {FAR} down")
    before = state(machine)
    with pytest.raises(LabError, match=rf"There was no link within 0.2 seconds on {NEAR} \(port {PORT}\)."):
        with open_board(file):
            pass
    assert state(machine) == before


def test_an_interface_that_vanishes_is_told(machine, file):
    with open_board(file) as lab:
        machine.ip(f"link delete {NEAR}")
        for use in (
            lambda: lab.hosts[PORT].send(FRAME),
            lambda: lab.hosts[PORT].receive(b"marker", 0.1),
            lambda: lab.arrivals(b"marker"),
        ):
            with pytest.raises(LabError, match=f"The interface {NEAR} at port {PORT} is gone."):
                use()
        machine.ip(f"link add {NEAR} type veth peer name {FAR}", f"link set {FAR} up", f"link set {NEAR} up")
        with pytest.raises(LabError, match="is gone"):
            lab.arrivals(b"marker")


def test_a_frame_that_the_interface_refuses_is_told(machine, file):
    with open_board(file) as lab, pytest.raises(LabError, match="at port 5 fails: Message too long"):
        lab.hosts[PORT].send(FRAME.ljust(2000))


def test_frames_without_end_are_told(machine, file, monkeypatch):
    monkeypatch.setattr(board, "MOST_FRAMES", 20)
    with open_board(file) as lab, contextlib.closing(Nic(machine, FAR)) as far:
        for _ in range(20):
            far.send(FRAME)
        assert lab.arrivals(b"marker") == {PORT: [FRAME] * 20}
        for _ in range(21):
            far.send(FRAME)
        with pytest.raises(LabError, match="Frames go on arriving, 21 with the marker"):
            lab.arrivals(b"marker")


def test_a_board_that_never_is_quiet_is_told(machine, file, monkeypatch):
    monkeypatch.setattr(board, "MOST_SECONDS", 0.2)
    program = (
        "import socket, time; s = socket.socket(socket.AF_PACKET, socket.SOCK_RAW); "
        f"s.bind(('{FAR}', 0)); end = time.time() + 5\nwhile time.time() < end: s.send({FRAME!r}); time.sleep(0.001)"
    )
    with open_board(file) as lab:
        talker = subprocess.Popen([sys.executable, "-c", program])
        try:
            assert lab.hosts[PORT].receive(b"marker") == FRAME
            with pytest.raises(LabError, match="Frames go on arriving"):
                lab.arrivals(b"marker")
        finally:
            talker.kill()
            talker.wait()


def test_frames_that_were_lost_here_are_told(machine, file, monkeypatch):
    for module in (nic, board_port):
        monkeypatch.setattr(module, "RECEIVE_BUFFER_BYTES", 4096)
    with open_board(file) as lab, contextlib.closing(Nic(machine, FAR)) as far:
        for _ in range(2000):
            far.send(FRAME)
        with pytest.raises(LabError, match=r"had more frames than could wait; \d+ were lost on this machine"):
            lab.arrivals(b"other")
        lab.forget()
        far.send(FRAME)
        assert lab.arrivals(b"marker") == {PORT: [FRAME]}


def test_forgetting_drops_what_has_arrived(machine, file):
    with open_board(file) as lab, contextlib.closing(Nic(machine, FAR)) as far:
        far.send(FRAME)
        lab.forget()
        assert lab.arrivals(b"marker") == {}


def test_a_user_without_the_right_is_told(machine, file):
    program = f"from adp.lab.board import open_board\nwith open_board({str(file)!r}): pass"
    command = ["setpriv", "--bounding-set=-all", "--inh-caps=-all", "--", sys.executable, "-B", "-c", program]
    done = subprocess.run(command, capture_output=True, text=True, timeout=30)
    assert "can be used by root only." in done.stderr


def test_what_only_the_virtual_device_has_is_named(machine, file):
    with open_board(file) as lab:
        for ask, name in (
            (lambda: lab.device.control("vlans"), "device.control"),
            (lambda: lab.hosts[PORT].ping("10.0.0.1"), r"hosts\[port\].ping"),
            (lambda: lab.lab, "lab"),
        ):
            with pytest.raises(NotOnBoardError, match=f"^A board has no '{name}'; a test that needs it runs on the virt"):
                ask()
        assert not hasattr(lab.device, "explain")
        assert (lab.device.name, lab.device.physical(PORT)) == ("board", PORT + 3)
        with pytest.raises(LabError, match=r"Port 22 of the board has no cable to this machine; the ports \[5\] have"):
            lab.hosts[22].send(FRAME)
        with pytest.raises(LabError, match="The board runs the build 'mips', by its file, and not 'host'"):
            lab.shell("host")
        with pytest.raises(NotOnBoardError, match="adpsh cannot be started by another command"):
            lab.shell("mips", before=["strace"])
        with pytest.raises(LabError, match="needs a marker"):
            lab.arrivals(b"")
