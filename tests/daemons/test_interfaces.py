"""Interfaces that people rename, move and remove, and very many things at once."""

import contextlib
import json
import subprocess

import pytest
from adp.lab.frames import ethernet
from adp.lab.netns import NetNamespace
from adp.lab.nic import Nic
from adp.lab.process import poll_until

pytestmark = pytest.mark.needs_chip


@pytest.fixture
def switch(make_switch):
    return make_switch({1, 2})


def names(switch):
    return {row["ifname"] for row in json.loads(switch.namespace.run("ip", "-json", "link", "show"))}


def batch(switch, program, lines):
    """Lines of `ip` or `bridge` in one go."""
    with switch.namespace.entered():
        subprocess.run(
            [program, "-force", "-batch", "-"], input="\n".join(lines), capture_output=True, text=True, timeout=60, check=False
        )


def synced(switch):
    return switch.switchd.status()["state"]["synced"]


def vids(switch):
    return {row["vid"] for row in switch.lab.device.control("vlans")["vlans"]}


@pytest.mark.needs("ethtool")
def test_speed_and_duplex_are_shown_as_the_kernel_lets_them(switch):
    switch.raise_ports("swp1")
    facts = switch.namespace.run("ethtool", "swp1")
    assert "Speed: 1000Mb/s" in facts
    assert "Duplex: Full" in facts


def test_a_long_lldp_frame_reaches_its_ports_interface_alone(switch):
    switch.bridge("br10", ["swp1", "swp2"])
    frame = ethernet(bytes.fromhex("0180c200000e"), switch.lab.mac(1), 0x88CC, bytes(1500))
    with contextlib.closing(Nic(switch.namespace, "swp1")) as one, contextlib.closing(Nic(switch.namespace, "swp2")) as two:
        switch.hosts[1].send(frame)
        poll_until(lambda: frame in one.waiting(), 5, "The frame on swp1")
        assert frame not in two.waiting()


def test_a_renamed_interface_stays_its_port(switch):
    switch.bridge("br10", ["swp1", "swp2"])
    switch.namespace.run("ip", "link", "set", "swp2", "down")
    switch.namespace.run("ip", "link", "set", "swp2", "name", "uplink")
    switch.namespace.run("ip", "link", "set", "uplink", "up")
    switch.hosts[2].await_link()
    for port in (1, 2):
        switch.hosts[port].set_address(f"10.0.0.{port}/24")
    assert switch.hosts[1].ping("10.0.0.2", attempts=3)
    assert any(row["name"] == "uplink" for row in switch.switchd.status()["bridges"][0]["ports"])


def test_a_removed_interface_comes_back(switch):
    switch.namespace.run("ip", "link", "del", "swp2")
    poll_until(lambda: "swp2" in names(switch), 10, "A new swp2")
    switch.bridge("br10", ["swp1", "swp2"])
    for port in (1, 2):
        switch.hosts[port].set_address(f"10.0.0.{port}/24")
    assert switch.hosts[1].ping("10.0.0.2", attempts=3)


def test_an_interface_in_another_namespace_is_still_the_ports(switch):
    other = NetNamespace("another namespace")
    try:
        switch.namespace.run("ip", "link", "set", "swp2", "netns", str(other.holder_pid))
        other.ip("address add 10.0.0.254/24 dev swp2", "link set swp2 up")
        poll_until(lambda: synced(switch), 10, "A daemon in sync")
        assert switch.switchd.status()["ports"][1]["name"] == "swp2"
    finally:
        other.close()
    switch.switchd.ask("resync")
    assert synced(switch)


def test_interfaces_with_tags_come_and_go_by_command(switch):
    switch.switchd.ask("add", "swp1.300")
    assert "swp1.300" in names(switch)
    switch.bridge("br300", ["swp1.300", "swp2"])
    switch.await_chip("a tagged member", lambda ask: any(
        row["vid"] == 300 and row["members"] == [0, 1, 2] and row["untagged"] == [2] for row in ask("vlans")["vlans"]
    ))
    switch.switchd.kill()
    switch.switchd.restart()
    assert "swp1.300" in names(switch)
    switch.switchd.ask("remove", "swp1.300")
    assert "swp1.300" not in names(switch)
    switch.await_chip("one member", lambda ask: any(row["vid"] == 300 and row["members"] == [0, 2] for row in ask("vlans")["vlans"]))


def test_hundreds_of_bridges_at_once(switch):
    before = vids(switch)
    many = range(1000, 1400)
    batch(switch, "ip", [f"link add br{vid} type bridge" for vid in many])
    batch(switch, "ip", [line for vid in many for line in (f"link set br{vid} up",)] + ["link set swp1 master br1000"])
    switch.await_chip("the one bridge with a port", lambda ask: 1000 in {row["vid"] for row in ask("vlans")["vlans"]})
    batch(switch, "ip", [f"link del br{vid}" for vid in many])
    poll_until(lambda: vids(switch) == before, 20, "The VLANs of before")
    assert synced(switch)


def test_ten_thousand_addresses_at_once(switch):
    switch.bridge("br10", ["swp1", "swp2"])
    stations = [f"02:bb:00:00:{number >> 8:02x}:{number & 255:02x}" for number in range(10_000)]
    batch(switch, "bridge", [f"fdb add {mac} dev swp1 master static" for mac in stations])
    poll_until(
        lambda: synced(switch) and switch.lab.device.control("macs")["capacity"] - _statics(switch) < 64, 20, "A full table"
    )
    refused = [row for row in switch.switchd.status()["not_in_hardware"] if "does not take" in row["text"]]
    assert refused
    batch(switch, "bridge", [f"fdb del {mac} dev swp1 master" for mac in stations])
    poll_until(lambda: _statics(switch) < 64, 20, "An empty table")
    poll_until(lambda: not switch.switchd.status()["not_in_hardware"], 20, "No remarks")


def _statics(switch):
    return sum(row["static"] for row in switch.lab.device.control("macs")["macs"])


def test_a_clean_end_leaves_nothing(switch):
    switch.bridge("br10", ["swp1", "swp2"])
    switch.await_chip("the bridge", lambda ask: 10 in {row["vid"] for row in ask("vlans")["vlans"]})
    switch.switchd.close()
    assert not {name for name in names(switch) if name.startswith("swp")}
    assert 10 not in vids(switch)
    assert all(len(row["members"]) <= 2 for row in switch.lab.device.control("vlans")["vlans"])
