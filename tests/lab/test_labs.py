"""Labs that stay: without a terminal, several side by side, large ones, on the target's build."""

import json
import os
import pathlib
import pty
import re
import shutil
import subprocess
import time

import pytest

ROOT = pathlib.Path(__file__).resolve().parents[2]
SIZE = os.environ.get("ADP_LAB_SIZE", "3x12")


def test_a_lab_outlives_its_terminal(labs):
    """`up` on a terminal of its own, which then is closed: its processes get SIGHUP."""
    main, terminal = pty.openpty()
    script = 'exec setsid --ctty --wait "$@"'
    words = ["sh", "-c", script, "sh", "/usr/bin/python3", "-B", "-m", "adp.lab.command", "up", str(labs.switch())]
    process = subprocess.Popen(words, stdin=terminal, stdout=terminal, stderr=terminal, env=labs.environment)
    os.close(terminal)
    said = b""
    while b"Try:" not in said:
        said += os.read(main, 4096)
    process.wait(10)
    os.close(main)
    time.sleep(0.2)
    assert " 0% packet loss" in labs.do("exec", "h1", "ping", "-c1", "-W2", "h2")


def test_two_labs_side_by_side(labs):
    for name in ("one", "two"):
        labs.do("up", labs.switch(name))
    labs.do("exec", "--lab", "one", "h2", "--", "ip", "link", "set", "eth1", "down")
    for choice in (["--lab", "two", "exec"], ["exec", "--lab", "two"]):
        assert " 0% packet loss" in labs.do(*choice, "h1", "ping", "-c1", "-W2", "h2")
    assert labs.try_to("exec", "h1", "ping", "-c1", "-W0.3", "h2", more={"ADP_LAB": "one"}).status == 1
    assert labs.refuse("exec", "h1", "true") == (
        "Several labs are running: one and two. Name one with --lab or in ADP_LAB."
    )
    assert re.findall(r"^Lab '(\w+)'", labs.do("ps"), re.M) == ["one", "two"]
    labs.do("down", "--lab", "one")
    assert " 0% packet loss" in labs.do("exec", "h1", "ping", "-c1", "-W2", "h2")


def test_one_topology_twice(labs):
    labs.do("up", labs.switch())
    labs.do("up", labs.switch(), "--name", "again")
    assert list(labs.records()) == ["again", "lab"]


def topology_of(devices, hosts):
    """Devices in a row, hosts on all of them in turn."""
    ends = [(at, f"eth{2 + (host - 1) // devices}", host) for host in range(1, hosts + 1) for at in [(host - 1) % devices + 1]]
    lines = ["name: large", "topology:", "  nodes:"]
    lines += [f"    sw{at}: {{kind: adp}}" for at in range(1, devices + 1)]
    lines += [f'    h{at}: {{kind: linux, exec: ["ip address add 10.0.0.{at}/24 dev eth1"]}}' for at in range(1, hosts + 1)]
    lines += ["  links:"]
    lines += [f'    - endpoints: ["sw{at}:eth26", "sw{at + 1}:eth1"]' for at in range(1, devices)]
    lines += [f'    - endpoints: ["sw{at}:{port}", "h{host}:eth1"]' for at, port, host in ends]
    return "\n".join(lines) + "\n"


def test_a_large_lab(labs, record_property):
    devices, hosts = map(int, SIZE.split("x"))
    began = time.monotonic()
    labs.do("up", labs.file(topology_of(devices, hosts)))
    seconds = time.monotonic() - began
    record_property("seconds", seconds)
    print(f"{SIZE}: up in {seconds:.1f} s")
    assert seconds < 15
    for host in (2, hosts // 2, hosts):
        assert " 0% packet loss" in labs.do("exec", "h1", "ping", "-c1", "-W2", f"h{host}")


def test_management_programs_of_the_target(labs):
    """adpsh and the start-up lines run under emulation; the device is this machine's."""
    labs.file("map\nadp_vlan_create 300\n", "lines")
    labs.do("up", "--target", labs.switch(device=', binds: ["lines:/etc/adp/startup.adpsh"]'))
    assert labs.do("adpsh", "sw1", "--map", "adp_vlan_create 301") == "= 0 (success)\n"
    labs.do("exec", "sw1", "--", "adpsh", "--map", "adp_vlan_create 302")
    vlans = {row["vid"] for row in json.loads(labs.do("vdevctl", "sw1", "--json", "vlans"))["vlans"]}
    assert vlans >= {300, 301, 302}
    for program, emulated in (("adpsh", True), ("vdeviced", False)):
        path = labs.do("exec", "sw1", "--", "sh", "-c", f"command -v {program}").strip()
        with open(path, "rb") as file:
            assert (b"qemu" in file.read(4096)) == emulated


BRIDGE = """\
set -e
until adp-switchd status state 2>/dev/null | grep -q "in sync"; do sleep 0.05; done
ip link add br0 type bridge
for port in swp1 swp2; do ip link set $port master br0; ip link set $port up; done
ip link set br0 up
ip address add 10.0.0.9/24 dev br0
"""


def test_adp_switchd_is_a_program_of_a_device(labs):
    """It closes all ports until they are in a bridge; then hosts reach each other, and the switch's own address."""
    labs.do("up", labs.switch(device=", config: {vars: {adp: {programs: {switchd: adp-switchd}}}}"))
    labs.do("exec", "sw1", "--", "sh", "-c", BRIDGE)
    for address in ("h2", "10.0.0.9"):
        assert labs.try_to("exec", "h1", "ping", "-c1", "-i0.2", "-w10", address).status == 0
    assert labs.do("logs", "sw1", "switchd") == "adp-switchd: ready\n"
    assert re.search(r"^sw1 .* 10\.0\.0\.9/24$", labs.do("ps"), re.M)


def test_an_installed_lab_has_its_programs_from_the_path(labs):
    """The package stands in a folder that is no checkout."""
    package = labs.file("").parent / "package"
    shutil.copytree(ROOT / "python" / "adp", package / "adp", ignore=shutil.ignore_patterns("__pycache__"))
    programs = f"{ROOT / 'build' / 'host'}:{os.environ['PATH']}"
    more = {"PYTHONPATH": str(package), "PATH": programs}
    for words, wanted in (
        (["up", labs.switch()], "is up: 3 nodes"),
        (["exec", "h1", "--", "ping", "-c1", "-W2", "h2"], " 0% packet loss"),
        (["adpsh", "sw1", "--map", "adp_vlan_create 100"], "= 0 (success)"),
        (["ps", "--json"], '"build": "installed"'),
        (["down"], ""),
    ):
        process = labs.popen(*words, more=more)
        said, complaint = process.communicate(timeout=30)
        assert (process.returncode, complaint) == (0, "") and wanted in said
    for path, words, sentence in (
        (os.environ["PATH"], [], "vdeviced is not installed: it is in no folder of $PATH."),
        (programs, ["--target"], "--target needs a checkout with the target's build; what is installed is this machine's."),
    ):
        process = labs.popen("up", *words, more={**more, "PATH": path})
        assert process.communicate(timeout=30) == ("", f"adp-lab: {sentence}\n")


@pytest.mark.parametrize("topology", ["two-switches", "ring", "failover"])
def test_the_examples(labs, topology):
    labs.do("up", ROOT / "examples" / "topologies" / f"{topology}.clab.yml")
    # A bad cable may lose any frame, and so three questions for an address, which ends a ping.
    pings = "for attempt in 1 2 3 4 5 6; do ping -c1 -w4 h2 && exit; done; exit 1"
    assert labs.try_to("exec", "h1", "--", "sh", "-c", pings).status == 0
    assert "ended" not in labs.do("ps")
