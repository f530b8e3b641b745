"""What the kernel's bridges are told with the ordinary tools, in the chip."""

import json
import time

import pytest
from adp.lab.frames import BROADCAST, ETHERTYPE_EXPERIMENT, ethernet
from adp.lab.process import poll_until

ONE, TWO, THREE, ALONE = 1, 2, 3, 4
MEMBERS = ("swp1", "swp2", "swp3")
INTERNAL = 4000
VID = 100
STATION = "02:00:00:00:00:77"
QUERIER = ("mcast_snooping", "1", "mcast_query_response_interval", "100", "mcast_querier", "1")
GROUP, GROUP_MAC = "239.1.2.3", "01:00:5e:01:02:03"

pytestmark = pytest.mark.needs_chip


@pytest.fixture
def switch(make_switch):
    made = make_switch({ONE, TWO, THREE, ALONE})
    made.bridge("br100", MEMBERS, "mcast_snooping 0")
    made.raise_ports("swp4")
    made.await_chip("the bridge", lambda ask: members_of(ask, VID) == {0, ONE, TWO, THREE})
    return made


def members_of(ask, vid):
    return next((set(row["members"]) for row in ask("vlans")["vlans"] if row["vid"] == vid), None)


def entry_of(ask, mac):
    return next((row for row in ask("macs")["macs"] if row["mac"] == mac), None)


def say(switch, port, destination=BROADCAST):
    """A host sends a frame; gives the ports where it arrived, each time whole and once."""
    lab = switch.lab
    marker = lab.marker()
    frame = ethernet(destination, lab.mac(port), ETHERTYPE_EXPERIMENT, marker.ljust(46, b"."))
    switch.hosts[port].send(frame)
    arrived = lab.arrivals(marker)
    assert arrived == dict.fromkeys(arrived, [frame])
    return set(arrived)


def remarks(switch):
    return {row["subject"]: row["text"] for row in switch.switchd.status()["not_in_hardware"]}


def since_ms(switch):
    return switch.switchd.status()["state"]["since_ms"]


def test_members_reach_each_other_and_nobody_else(switch):
    assert say(switch, ONE) == {TWO, THREE}
    assert say(switch, ALONE) == set()
    assert members_of(switch.lab.device.control, INTERNAL + ALONE) == {0, ALONE}


def test_a_port_leaves_the_bridge_and_comes_back(switch):
    time.sleep(1)
    before = since_ms(switch)
    assert before > 900
    switch.namespace.run("ip", "link", "set", "swp2", "nomaster")
    poll_until(lambda: since_ms(switch) < before, 5, "A later time of being in sync")
    switch.await_chip("one member less", lambda ask: members_of(ask, VID) == {0, ONE, THREE})
    assert say(switch, ONE) == {THREE}
    switch.namespace.run("ip", "link", "set", "swp2", "master", "br100")
    switch.await_chip("the member", lambda ask: members_of(ask, VID) == {0, ONE, TWO, THREE})
    assert say(switch, ONE) == {TWO, THREE}


def test_a_second_bridge_of_a_number_gets_another_vlan(switch):
    switch.bridge("other100", ["swp4"], "mcast_snooping 0")
    switch.namespace.run("ip", "link", "set", "swp3", "master", "other100")
    switch.await_chip("two bridges", lambda ask: members_of(ask, VID) == {0, ONE, TWO})
    assert say(switch, ALONE) == {THREE}
    assert say(switch, ONE) == {TWO}


def test_a_removed_bridge_is_gone_from_the_chip(switch):
    switch.namespace.run("ip", "link", "del", "br100")
    switch.await_chip("no VLAN", lambda ask: members_of(ask, VID) is None)
    assert say(switch, ONE) == set()


def test_an_interface_that_is_down_disables_its_port(switch):
    switch.namespace.run("ip", "link", "set", "swp2", "down")
    poll_until(lambda: TWO not in switch.lab.device.links(), 5, "No link on port 2")
    assert say(switch, ONE) == {THREE}
    switch.raise_ports("swp2")
    assert say(switch, ONE) == {TWO, THREE}


def test_carrier_follows_the_cable(switch):
    def has_carrier():
        return "LOWER_UP" in json.loads(switch.namespace.run("ip", "-json", "link", "show", "swp2"))[0]["flags"]

    assert has_carrier()
    switch.pull(TWO)
    poll_until(lambda: not has_carrier(), 5, "No carrier on swp2")
    switch.plug(TWO)
    poll_until(has_carrier, 5, "A carrier on swp2")


def test_a_static_address_is_static_in_the_chip(switch):
    switch.namespace.run("bridge", "fdb", "add", STATION, "dev", "swp3", "master", "static")
    switch.await_chip("the address", lambda ask: (entry_of(ask, STATION) or {}).get("static"))
    assert entry_of(switch.lab.device.control, STATION)["port"] == THREE
    assert say(switch, ONE, bytes.fromhex(STATION.replace(":", ""))) == {THREE}
    switch.namespace.run("bridge", "fdb", "del", STATION, "dev", "swp3", "master")
    switch.await_chip("no address", lambda ask: entry_of(ask, STATION) is None)


def learned(switch):
    rows = json.loads(switch.namespace.run("bridge", "-json", "fdb", "show", "br", "br100"))
    return {row["mac"]: row["ifname"] for row in rows if "extern_learn" in row["flags"]}


def test_what_the_chip_learns_is_in_the_kernel_and_goes_when_it_is_flushed(switch):
    station = switch.lab.mac(ONE)
    text = ":".join(f"{octet:02x}" for octet in station)
    switch.hosts[ONE].send(ethernet(BROADCAST, station, ETHERTYPE_EXPERIMENT, b"here".ljust(46, b".")))
    poll_until(lambda: learned(switch).get(text) == "swp1", 10, "The address in the bridge")
    switch.namespace.run("bridge", "fdb", "del", text, "dev", "swp1", "master")
    switch.await_chip("no address", lambda ask: entry_of(ask, text) is None)
    poll_until(lambda: text not in learned(switch), 10, "The address gone")


def test_what_the_chip_forgets_the_kernel_forgets(switch):
    station = switch.lab.mac(TWO)
    text = ":".join(f"{octet:02x}" for octet in station)
    switch.hosts[TWO].send(ethernet(BROADCAST, station, ETHERTYPE_EXPERIMENT, b"here".ljust(46, b".")))
    poll_until(lambda: text in learned(switch), 10, "The address in the bridge")
    switch.pull(TWO)
    switch.namespace.run("ip", "link", "set", "swp2", "down")
    poll_until(lambda: text not in learned(switch), 15, "The address gone")


def test_settings_of_ports_are_in_the_chip(switch):
    switch.namespace.run("ip", "link", "set", "br100", "type", "bridge", "ageing_time", "6000")
    switch.namespace.run("bridge", "link", "set", "dev", "swp1", "learning", "off")
    for port in ("swp1", "swp2"):
        switch.namespace.run("bridge", "link", "set", "dev", port, "isolated", "on")
    switch.await_chip("the ageing time", lambda ask: ask("macs")["age_time"] == 60)
    poll_until(lambda: say(switch, ONE) == say(switch, TWO) == {THREE}, 5, "Isolation of ports 1 and 2")
    assert say(switch, THREE) == {ONE, TWO}
    text = ":".join(f"{octet:02x}" for octet in switch.lab.mac(ONE))
    assert entry_of(switch.lab.device.control, text) is None


def test_what_is_not_in_hardware_is_said(switch):
    switch.namespace.run("bridge", "link", "set", "dev", "swp2", "flood", "off")
    poll_until(lambda: "swp2" in remarks(switch), 5, "A remark about swp2")
    assert "not in hardware: swp2" in switch.switchd.log()
    switch.namespace.run("bridge", "link", "set", "dev", "swp2", "flood", "on")
    poll_until(lambda: not remarks(switch), 5, "No remarks")


def test_a_static_group_is_in_the_chip(switch):
    switch.namespace.run("ip", "link", "set", "br100", "type", "bridge", *QUERIER)
    switch.namespace.run("bridge", "mdb", "add", "dev", "br100", "port", "swp3", "grp", GROUP, "permanent")
    switch.await_chip(
        "the group", lambda ask: any(row["mac"] == GROUP_MAC and THREE in row["ports"] for row in ask("mcast")["mcast"])
    )
    assert say(switch, ONE, bytes.fromhex(GROUP_MAC.replace(":", ""))) == {THREE}
    switch.namespace.run("bridge", "mdb", "del", "dev", "br100", "port", "swp3", "grp", GROUP, "permanent")
    switch.await_chip("no group", lambda ask: not any(row["mac"] == GROUP_MAC for row in ask("mcast")["mcast"]))


def test_nothing_is_doubled_in_a_flood(switch):
    lab = switch.lab
    marker = lab.marker()
    frames = [
        ethernet(BROADCAST, lab.mac(ONE), ETHERTYPE_EXPERIMENT, (marker + number.to_bytes(4, "big")).ljust(46, b"."))
        for number in range(3000)
    ]
    arrived = {TWO: [], THREE: []}
    for first in range(0, len(frames), 200):
        for frame in frames[first : first + 200]:
            switch.hosts[ONE].send(frame)
        for port, some in lab.arrivals(marker).items():
            arrived.setdefault(port, []).extend(some)
    time.sleep(1.2)  # longer than the daemon remembers a frame
    assert not lab.arrivals(marker)
    assert arrived == {TWO: frames, THREE: frames}
