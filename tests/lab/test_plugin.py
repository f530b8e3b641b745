"""The plugin in other people's projects: a folder outside the tree, a file of tests, plain pytest."""

import inspect
import os
import pathlib
import re
import tempfile

import pytest
from adp.lab.builds import ROOT, Build
from adp.testing import plugin
from adp.testing.settings import OPTIONS
from project import Project, as_nobody, installed_at
from remote_board import RemoteBoard, served_at_socket

PASSES = """
from adp.testing.packet import Packet


def test_a_vlan_keeps_its_frames(lab, cpu):
    cpu.vlan_create(100)
    cpu.vlan_port_set(100, {1, 2}, set())
    marker = lab.marker()
    frame = Packet(vlan=100).build(marker)
    lab.hosts[1].send(frame)
    assert lab.arrivals(marker) == {2: [frame]}
"""
FAILS = PASSES.replace("{2: [frame]}", "{2: [Packet(vlan=100, dscp=46).build(marker)], 3: [frame]}")


@pytest.fixture
def project():
    """In a folder that every user can write to, which those of tmp_path are not."""
    with tempfile.TemporaryDirectory(prefix="adp-project-") as name:
        os.chmod(name, 0o777)
        yield Project(pathlib.Path(name))


def namespace():
    return pathlib.Path("/proc/self/ns/net").readlink()


WHERE = """
import adp.testing

def test_place(build):
    assert (build, adp.testing.__path__) == ("installed", ["{}/adp/testing"])
"""


def test_a_test_of_ten_lines_passes_for_an_ordinary_user_who_has_installed_it(project, device_build):
    project.write("test_mine.py", PASSES)
    with tempfile.TemporaryDirectory(prefix="adp-installed-") as name:
        os.chmod(name, 0o755)
        installed_at(pathlib.Path(name))
        programs = f"{Build(device_build).folder}:{os.environ['PATH']}"
        project.write("test_place.py", WHERE.format(name))
        environment = {"PYTHONPATH": name, "PATH": programs}
        said = project.run(prefix=as_nobody(), loaded=(), **environment)
        assert "2 passed" in said
        assert "1 passed" in project.run("test_place.py", **environment), "it is loaded once"
    assert sorted(path.name for path in project.folder.iterdir()) == ["pytest.ini", "test_mine.py", "test_place.py"]


def test_a_failed_test_shows_fields_ways_drops_and_keeps_the_frames(project):
    project.write("test_mine.py", FAILS)
    said = re.sub(" +", " ", project.run("--adp-failures", "kept/here", status=1))
    assert "\n> IP tos 0xb8 | 0x28\n" in said
    assert " port 3 " in said and " octets | nothing\n" in said
    assert "\n not sent ports cpu,3-26: not a member of the VLAN\n" in said
    assert "Drops since the test began: none\n" in said
    (path,) = re.findall(r"All frames: (kept/here/\S+\.pcapng) ", said)
    assert (project.folder / path).stat().st_size > 0


def test_a_mistake_is_told_where_it_was_made(project):
    tests = "def test_name(cpu):\n    cpu.vlan_crate(100)\n\ndef test_refused(cpu):\n    cpu.vlan_create(1)\n"
    project.write("test_mine.py", tests)
    said = project.run(status=1)
    assert "libadp has no call 'vlan_crate'; did you mean vlan_create" in said
    assert "test_mine.py:2: AttributeError" in said
    assert "E       adp.errors.Error: adp_vlan_create gave -11 (vlan_exists of the virtual device: " in said
    assert "test_mine.py:5: Error" in said


@pytest.mark.parametrize("option", ["--adp-builds", "--adp-device"])
def test_a_build_that_is_missing_ends_the_run_with_a_sentence(project, option):
    project.write("test_mine.py", PASSES)
    said = project.run(option, "nowhere", status=1)
    assert "nowhere" in said and "missing" in said
    assert "Traceback" not in said and "ERROR" not in said


def test_options_are_for_one_run_and_the_ini_file_for_all(project):
    project.write("test_mine.py", "def test_hosts(hosts, build):\n    assert (list(hosts), build) == ([2, 5, 6], 'host')\n")
    assert "1 failed" in project.run(status=1)
    assert "1 passed" in project.run("--adp-hosts", "2,5-6")
    assert "else adp-failures)" in project.run("--help")


def test_a_file_can_have_a_lab_of_its_own(project):
    own = """
import pytest
from adp.lab import Lab

@pytest.fixture(scope="module")
def lab(adp_isolated):
    with Lab(hosts=(4,), user_ports=4) as lab:
        yield lab

def test_hosts(hosts, cpu):
    assert list(hosts) == [4] and cpu.intf_2_phy_id(4) == 7
"""
    project.write("test_mine.py", own)
    project.write("test_others.py", "def test_hosts(lab, cpu):\n    assert cpu.lab is lab and list(lab.hosts) == [1, 2, 3]\n")
    assert "2 passed" in project.run()
    assert "2 passed" in project.run("test_others.py", "test_mine.py")


def test_markers_choose_builds(project):
    marked = """
import pytest

@pytest.mark.build("host")
def test_here(build):
    assert build == "host"

@pytest.mark.build("mips")
def test_there(build):
    assert False
"""
    project.write("test_mine.py", marked)
    said = project.run()
    assert "1 passed, 1 skipped" in said
    assert "It is for the build mips, and the run has host." in said


def test_a_board_runs_what_does_not_need_the_virtual_device(project):
    marked = """
import pytest

@pytest.mark.virtual_device("It pulls a cable.")
def test_cable(lab):
    assert False

def test_inside(device):
    assert False

@pytest.mark.build("host")
def test_anything(build):
    assert build == "mips"
"""
    project.write("test_mine.py", marked)
    project.write("board.toml", 'interfaces = {1 = "eth1"}\nshell = "true"\n')
    said = project.run("--adp-board", "board.toml")
    assert "1 passed, 2 skipped" in said
    assert "It pulls a cable. The run is on the board of board.toml." in said
    assert "It looks into the virtual device. The run is on the board of board.toml." in said


ON_ANY_LAB = """
from adp.testing.packet import Packet


def arrivals(lab, cpu):
    first, second = sorted(lab.hosts)[:2]
    cpu.vlan_create(100)
    cpu.vlan_port_set(100, {first, second}, set())
    marker = lab.marker()
    frame = Packet(vlan=100).build(marker)
    lab.hosts[first].send(frame)
    return lab.arrivals(marker), second, frame

def test_right(lab, cpu):
    arrived, second, frame = arrivals(lab, cpu)
    assert arrived == {second: [frame]}

def test_wrong(lab, cpu):
    arrived, _, _ = arrivals(lab, cpu)
    assert set(arrived) == {7}
"""


def test_the_same_tests_run_on_a_board(project):
    project.write("test_mine.py", ON_ANY_LAB)
    said = project.run("--adp-hosts", "1,5,7", status=1)
    with RemoteBoard() as board, served_at_socket(board) as command, board.tester.entered():
        on_board = project.run("--adp-board", board.file(shell=command), status=1)
    for text in (said, on_board):
        assert "1 failed, 1 passed" in text
        assert re.search(r"^> port 7 +the frame +\| nothing$", text, re.M)
    assert "what became of the frames" in said and "what became of the frames" not in on_board


def test_options_that_are_wrong_are_told(project):
    project.write("board.toml", "interfaces = {}\n")
    assert project.run("--adp-board", "board.toml", status=4).startswith("ERROR: board.toml: 'interfaces' is missing.")
    assert project.run("--adp-hosts", "1;2", status=4).startswith("ERROR: '1;2' are no ports; write them as 1-4,22.")
    assert project.run("--adp-hosts", "0-3", status=4).startswith("ERROR: '0-3' are not among the user ports, 1 to 26.")


def test_who_may_not_have_namespaces_is_told(project):
    project.write("test_mine.py", PASSES)
    forbid = 'echo 0 >/proc/sys/user/max_net_namespaces && exec "$@"'
    said = project.run(prefix=("unshare", "--user", "--map-root-user", "sh", "-c", forbid, "sh"), status=1)
    assert "The system does not let this user make namespaces" in said
    assert "Traceback" not in said


def test_threads_that_keep_an_ordinary_user_out_are_named(project):
    start = "threading.Thread(target=time.sleep, args=(9,), daemon=True).start()"
    project.write("conftest.py", f"import threading, time\n{start}\n")
    project.write("test_mine.py", PASSES)
    if not as_nobody():
        pytest.skip("There is no other user in this namespace.")
    said = project.run(prefix=as_nobody(), status=1)
    assert "It has threads already." in said and "adp.lab.isolate" in said


def test_the_page_has_every_fixture_option_and_marker():
    made = {name: getattr(value, "_pytestfixturefunction", None) for name, value in vars(plugin).items()}
    scopes = {"session": "run", "function": "test"}
    rows = [(f"`{name}`", scopes[mark.scope], one_line(name)) for name, mark in made.items() if mark]
    rows += [
        (f"`--adp-{name}={value}`", f"`{usual}`" if usual else "none", text)
        for name, (value, usual, text) in OPTIONS.items()
    ]
    rows += [(f"`{call}`", text) for call, _, text in (marker.partition(": ") for marker in plugin.MARKERS)]
    page = (ROOT / "docs" / "reference" / "testing-plugin.md").read_text(encoding="utf-8")
    assert re.findall(r"^\| `.*$", page, re.M) == [f"| {' | '.join(row)} |" for row in rows]


def one_line(name):
    return " ".join(inspect.getdoc(vars(plugin)[name]).split())


def test_a_run_without_the_lab_is_left_alone(project):
    other = f"""
import pathlib, sys

def test_something_else():
    assert str(pathlib.Path("/proc/self/ns/net").readlink()) == "{namespace()}"
    assert not {{"scapy", "adp.bindings"}} & set(sys.modules)
    assert {{1: [b"frame"]}} == {{1: [b"frames"]}}
"""
    project.write("test_mine.py", other)
    said = project.run(status=1)
    assert "b'frame'" in said and "The frames did not arrive" not in said


def test_a_run_with_the_lab_is_in_a_namespace_of_its_own(project):
    inside = f"""
import pathlib, socket
import pytest

@pytest.mark.parametrize("fixture", ["adp_isolated"])
def test_inside(request, fixture):
    request.getfixturevalue(fixture)
    assert str(pathlib.Path("/proc/self/ns/net").readlink()) != "{namespace()}"
    assert [name for _, name in socket.if_nameindex()] == ["lo"]
    with socket.create_server(("127.0.0.1", 0)) as server:
        socket.create_connection(server.getsockname()).close()
"""
    project.write("test_mine.py", inside)
    assert "1 passed" in project.run()
