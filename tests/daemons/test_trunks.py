"""Bridges over ports with tags: Open vSwitch's access and trunk ports at the other end."""

import time

import pytest
from adp.lab.frames import BROADCAST, ETHERTYPE_EXPERIMENT, ethernet, vlan_tag
from adp.lab.nic import Nic
from adp.lab.openvswitch import OpenVSwitch
from adp.lab.process import poll_until

ONE, TWO, HYBRID, TRUNK = 1, 2, 4, 3
CONFIGURATION = 'interfaces = ["swp3.100", "swp3.200", "swp4.200"]\n'
LINK_SECONDS = 20.0
HEARD_SECONDS, PAUSE_SECONDS, QUIET_SECONDS = 3.0, 0.02, 0.3

pytestmark = [pytest.mark.needs("ovs-vswitchd"), pytest.mark.needs_chip]


class Network:
    """Hosts 1 and 2 in their VLANs, host 4 in both; behind the trunk "a100", "a200" without tags, "both" with them."""

    def __init__(self, switch):
        self.switch = switch
        switch.bridge("br100", ["swp1", "swp3.100", "swp4"])
        switch.bridge("br200", ["swp2", "swp3.200", "swp4.200"])
        neighbour = switch.neighbour({TRUNK}, "access switch")
        self.stations = {name: neighbour.station(name) for name in ("a100", "a200", "both")}
        self.stations.update({f"host {port}": host for port, host in switch.hosts.items()})
        self.cable = switch.add(Nic(neighbour.namespace, "host3"))
        ovs = switch.add(OpenVSwitch(neighbour.namespace))
        ovs.add_bridge("br0")
        for port in ("host3", "both"):
            ovs.add_port("br0", port, "trunks=100,200")
        ovs.add_port("br0", "a100", "tag=100")
        ovs.add_port("br0", "a200", "tag=200")

    def heard(self, sender, vid=0, stations=1):
        """{station: VLAN of the tag or 0} of a broadcast from a station with or without a tag; "cable" is the trunk
        itself, as the switch sends. Waits until so many have heard it, and then for those that should not.
        """
        lab = self.switch.lab
        marker = lab.marker()
        tag = vlan_tag(vid) if vid else b""
        self.stations[sender].send(ethernet(BROADCAST, lab.mac(), ETHERTYPE_EXPERIMENT, marker.ljust(46, b"."), tag))
        frames = {}
        deadline = time.monotonic() + HEARD_SECONDS
        while len(frames) < stations and time.monotonic() < deadline:
            time.sleep(PAUSE_SECONDS)
            self._collect(marker, frames)
        time.sleep(QUIET_SECONDS)
        self._collect(marker, frames)
        assert all(len(each) == 1 for each in frames.values()), "nobody has a frame twice"
        return {name: _vid_of(frame) for name, (frame,) in frames.items()}

    def _collect(self, marker, frames):
        nics = {name: station.nic for name, station in self.stations.items()}
        for name, nic in {**nics, "cable": self.cable}.items():
            mine = [frame for frame in nic.waiting() if marker in frame]
            if mine:
                frames.setdefault(name, []).extend(mine)


def _vid_of(frame):
    return int.from_bytes(frame[14:16], "big") & 0xFFF if frame[12:14] == b"\x81\x00" else 0


@pytest.fixture
def network(make_switch):
    made = Network(make_switch((ONE, TWO, HYBRID), CONFIGURATION))
    for sender, receiver in (("a100", "host 1"), ("host 2", "a200")):
        what = f"A frame from {sender} to {receiver}"
        poll_until(lambda s=sender, r=receiver: r in made.heard(s), LINK_SECONDS, what)
    return made


# Sender, the tag that it sends; who hears it, with which tag.
WAYS = [
    ("host 1", 0, {"a100": 0, "both": 100, "host 4": 0, "cable": 100}),
    ("host 2", 0, {"a200": 0, "both": 200, "host 4": 200, "cable": 200}),
    ("host 4", 0, {"host 1": 0, "a100": 0, "both": 100, "cable": 100}),
    ("host 4", 200, {"host 2": 0, "a200": 0, "both": 200, "cable": 200}),
    ("a100", 0, {"host 1": 0, "host 4": 0, "both": 100}),
    ("a200", 0, {"host 2": 0, "host 4": 200, "both": 200}),
    ("both", 100, {"host 1": 0, "host 4": 0, "a100": 0}),
    ("both", 200, {"host 2": 0, "host 4": 200, "a200": 0}),
    ("host 1", 200, {}),
    ("host 2", 100, {}),
    ("host 4", 300, {}),
]


def test_frames_have_the_tags_of_their_ports_and_stay_in_their_vlan(network):
    for sender, vid, heard in WAYS:
        assert network.heard(sender, vid, len(heard)) == heard, f"{sender} sent with tag {vid or 'none'}"
