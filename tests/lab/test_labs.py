"""Labs that stay: without a terminal, several side by side, large ones, on the target's build."""

import json
import os
import pty
import re
import subprocess
import time

import pytest

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


@pytest.mark.parametrize("topology", ["two-switches", "ring"])
def test_the_examples(labs, topology):
    root = os.path.dirname(os.path.dirname(os.path.dirname(os.path.abspath(__file__))))
    labs.do("up", os.path.join(root, "examples", "topologies", f"{topology}.clab.yml"))
    # It goes on until one is answered: a bad cable may lose any of them.
    assert labs.try_to("exec", "h1", "ping", "-c1", "-i0.2", "-w10", "h2").status == 0
    assert "ended" not in labs.do("ps")
