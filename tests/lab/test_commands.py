"""What each command of adp-lab does with a lab that is up."""

import json
import os
import re
import signal
import subprocess
import time

import pytest

PING = ("ping", "-c1", "-W2")
CAPTURED_FRAMES = 4


def test_up_shows_nodes_and_what_to_try(labs):
    said = labs.do("up")
    assert re.match(r"The lab 'lab' is up: 5 nodes in \d+\.\d s\.\n\nNODE  CABLES  +ADDRESSES\n", said)
    assert re.search(r"^sw1   1=h1:eth1 2=h2:eth1 3=h3:eth1 4=h4:eth1  -$", said, re.M)
    assert re.search(r"^h4    eth1=sw1:4 +10\.0\.0\.4/24$", said, re.M)
    tries = said.partition("Try:\n")[2].split("\n")[:2]
    for command in tries:
        assert labs.try_to(*command.split()[1:]).status == 0, command


def test_hosts_reach_each_other_by_name(lab):
    for host in ("h2", "h3", "h4"):
        assert " 0% packet loss" in lab.do("exec", "h1", "--", *PING, host)
    assert lab.do("exec", "h2", "--", "getent", "hosts", "h1").split() == ["10.0.0.1", "h1"]


def test_hosts_have_ipv6(lab):
    shown = json.loads(lab.do("exec", "h1", "--", "ip", "-json", "address", "show", "dev", "eth1"))
    families = {address["family"] for address in shown[0]["addr_info"]}
    assert families == {"inet", "inet6"}


def test_nothing_of_the_machine_is_reached(lab):
    for node in ("h1", "sw1"):
        names = {link["ifname"] for link in json.loads(lab.do("exec", node, "--", "ip", "-json", "link"))}
        assert names <= {"lo", "eth0", "eth1", "cpu0", "port1", "port2", "port3", "port4"}
        assert lab.try_to("exec", node, "--", *PING, "192.0.2.1").status == 2  # no way there


def test_ps_shows_programs_and_their_process_ids(lab):
    said = lab.do("ps").split("\n")
    assert re.fullmatch(r"Lab 'lab', up for \d+ s: 1 device, 4 hosts, 4 cables\.", said[0])
    name, program, state, pid, *_ = said[2].split()
    assert (name, program, state) == ("sw1", "vdeviced", "running")
    with open(f"/proc/{pid}/comm", encoding="utf-8") as command:
        assert command.read() == "vdeviced\n"
    assert said[3].split()[:3] == ["h1", "-", "running"]


def test_exec_gives_output_and_exit_status(lab):
    answer = lab.try_to("exec", "h1", "--", "sh", "-c", "cat; echo oh >&2; exit 7", text="given")
    assert answer == (7, "given", "oh\n")
    assert lab.try_to("exec", "h1", "sh", "-c", "kill -9 $$").status == 128 + 9


def test_exec_starts_where_the_caller_is(lab, tmp_path):
    assert lab.do("exec", "h1", "pwd", cwd=tmp_path) == f"{tmp_path}\n"


def test_the_shell_has_the_hosts_name_at_its_prompt(lab):
    answer = lab.try_to("shell", "h2", text="ip -br address show dev eth1\nexit 3\n")
    assert answer.status == 3
    assert "10.0.0.2/24" in answer.said
    assert "h2# " in answer.complaint


def test_adpsh_and_vdevctl_of_a_device(lab):
    assert lab.do("adpsh", "sw1", "--map", "adp_vlan_create 100") == "= 0 (success)\n"
    assert "100" in lab.do("vdevctl", "sw1", "vlans")
    assert lab.do("adpsh", "sw1", text="map\nadp_vlan_create 101\n").endswith("= 0 (success)\n")
    assert json.loads(lab.do("vdevctl", "sw1", "--json", "vlans", "--vlan", "101"))["vlans"]


def test_pull_and_plug_by_either_end(lab):
    for end in ("sw1:3", "sw1:eth3", "h3:eth1"):
        lab.do("pull", end)
        assert "pulled" in lab.do("vdevctl", "sw1", "ports").split("\n")[4]
        lab.do("plug", end)
        assert "pulled" not in lab.do("vdevctl", "sw1", "ports")


def test_a_bad_cable(lab):
    lab.do("cable", "h4:eth1", "--loss", "100%")
    assert "loss 100%" in lab.do("vdevctl", "sw1", "cables")
    assert lab.try_to("exec", "h1", "--", "ping", "-c1", "-W0.3", "h4").status == 1
    lab.do("cable", "sw1:4", "--clear")
    assert " 0% packet loss" in lab.do("exec", "h1", "--", "ping", "-c3", "-i0.1", "-W1", "h4")


@pytest.mark.parametrize("end", ["sw1:2", "h2:eth1"])
def test_capture(lab, tmp_path, end):
    """Frames of a device's port, or of a host's interface, on standard output."""
    with open(tmp_path / "frames", "wb") as frames:
        capture = lab.popen("capture", end, "-w", "-", "--count", CAPTURED_FRAMES, stdout=frames)
        lab.do("exec", "h1", "--", "sh", "-c", "for i in 1 2 3 4 5 6 7 8 9; do ping -c1 -W1 h2; sleep 0.1; done")
        assert capture.communicate(timeout=20) and capture.returncode == 0
    read = ["tshark", "-r", str(tmp_path / "frames"), "-T", "fields", "-e", "ip.src", "-e", "frame.protocols"]
    rows = subprocess.run(read, capture_output=True, text=True, check=True).stdout.splitlines()
    assert len(rows) == CAPTURED_FRAMES
    assert any(row.startswith("10.0.0.1\t") and "icmp" in row for row in rows)


@pytest.mark.parametrize("end", ["sw1:2", "h2:eth1"])
def test_an_interrupt_ends_a_capture(lab, tmp_path, end):
    """As from a terminal, where it reaches all of the capture's processes."""
    capture = lab.popen("capture", end, "-w", tmp_path / "frames", process_group=0)
    while not (tmp_path / "frames").exists() or not (tmp_path / "frames").stat().st_size:
        assert capture.poll() is None
        time.sleep(0.02)
    os.killpg(capture.pid, signal.SIGINT)
    capture.communicate(timeout=20)
    assert capture.returncode == 0


def test_capture_into_a_file_for_a_time(lab, tmp_path):
    began = time.monotonic()
    lab.do("capture", "sw1:1", "-w", "frames", "--for", 0.3, cwd=tmp_path)
    assert 0.3 <= time.monotonic() - began < 5
    assert (tmp_path / "frames").stat().st_size > 0


def test_graph(lab, tmp_path):
    lab.do("pull", "sw1:2")
    lab.do("graph", "-o", "lab.svg", cwd=tmp_path)
    lab.do("plug", "sw1:2")
    picture = (tmp_path / "lab.svg").read_text(encoding="utf-8")
    assert "pulled" in picture and "h4" in picture
    assert "<svg" in lab.do("graph")


def test_help(labs):
    """Each command has a help, and stands in that of the program."""
    said = labs.do("--help")
    names = re.findall(r"^    (\w+)", said.partition("Commands:\n")[2], re.M)
    assert len(names) == 14
    for name in names:
        assert f"usage: adp-lab {name} " in labs.do(name, "--help")


SENTENCES = [
    (["exec", "hh1", "--", "true"], "The lab 'lab' has no node 'hh1'. Did you mean 'h1'? It has sw1, h1, h2, h3 and h4."),
    (["exec", "h1"], "A command is missing: adp-lab exec h1 -- ip address"),
    (["exec", "h1", "nonsense"], "On h1, there is no program 'nonsense'."),
    (["vdevctl", "h1", "ports"], "h1 is a host. Devices of the lab 'lab': sw1."),
    (["vdevctl", "sw1"], "A command is missing: adp-lab vdevctl sw1 ports"),
    (["adpsh", "h1"], "h1 is a host. Devices of the lab 'lab': sw1."),
    (["pull", "sw1"], "'sw1' should be a node and its port: sw1:1."),
    (["pull", "sw1:27"], "The device sw1 has no port '27': its user ports are 1 to 26."),
    (["plug", "h1:eth2"], "The host h1 has no interface 'eth2'. Did you mean 'eth1'? It has eth1."),
    (["cable", "sw1:0"], "The device sw1 has no port '0': its user ports are 1 to 26."),
    (["capture", "h1:wlan0"], "The host h1 has no interface 'wlan0'. It has eth1."),
    (["capture", "h1:eth1", "-w", "/nowhere/x"], "/nowhere/x: No such file or directory."),
    (["logs", "sw1", "vdevice"], "sw1 has no program 'vdevice'. Did you mean 'vdeviced'? It has vdeviced."),
    (["logs", "h1", "x"], "h1 has no program 'x'. It has none."),
    (["restart", "sw2"], "The lab 'lab' has no node 'sw2'. Did you mean 'sw1'? It has sw1, h1, h2, h3 and h4."),
    (["--lab", "labb", "ps"], "No lab with the name 'labb' is running. Did you mean 'lab'? Running: lab."),
    (["up"], "A lab with the name 'lab' is running. 'adp-lab down --lab lab' ends it; --name gives the new one another name."),
    (["up", "--name", "a/b"], "'a/b' cannot be a lab's name: up to 32 letters, digits, hyphens, dots and underlines, the "
                              "first a letter or digit."),
    (["up", "nowhere.clab.yml"], "nowhere.clab.yml: Cannot be read: No such file or directory."),
]


@pytest.mark.parametrize("words, sentence", SENTENCES, ids=lambda value: " ".join(value) if isinstance(value, list) else "")
def test_a_mistake_is_told(lab, words, sentence):
    assert lab.refuse(*words) == sentence


@pytest.mark.parametrize("words, sentence", [
    (["exe"], "There is no command 'exe'. Did you mean 'exec'? 'adp-lab --help' shows what there is."),
    (["pull"], "The following arguments are required: END. 'adp-lab pull --help' shows what there is."),
])
def test_a_mistake_of_the_command_line_is_told(labs, words, sentence):
    assert labs.try_to(*words) == (2, "", f"adp-lab: {sentence}\n")


def test_without_a_lab(labs):
    assert labs.do("ps") == "No lab is running. 'adp-lab up' starts one.\n"
    assert labs.refuse("exec", "h1", "true") == "No lab is running. 'adp-lab up' starts one."
