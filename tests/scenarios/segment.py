"""Hosts in a tagged VLAN of their own; the learned addresses are deleted with the VLAN."""

from adp.lab.frames import BROADCAST, ETHERTYPE_EXPERIMENT, ethernet, vlan_tag
from adp.lab.process import poll_until

VLAN = 100
MISSING = -21
NO_LIMIT = 0xFFFFFFFF
DYNAMIC, STATIC, ALL = 0, 1, 2
SERVED_SECONDS = 20.0
# Frames of this many stations wait at the device's port at most: its socket's buffer may be the kernel's default.
BATCH = 200
RX_FRAMES = 1
# The MAC table's hash, as the virtual device documents it.
CAPACITY = 8192
BUCKETS, SLOTS = 1024, 8
TABLE_FULL, BUCKET_FULL = -20, -24


class Segment:
    """The VLAN, and frames between its hosts."""

    def __init__(self, lab, cpu, ports, vid=VLAN):
        self.lab, self.cpu, self.ports, self.vid = lab, cpu, set(ports), vid
        cpu.vlan(vid, ports)

    def frame(self, source, destination=BROADCAST, marker=b""):
        return ethernet(destination, source, ETHERTYPE_EXPERIMENT, marker.ljust(46, b"."), vlan_tag(self.vid))

    def say(self, port, source, destination=BROADCAST):
        """A host sends one frame; gives the ports that it left, once each and unchanged."""
        marker = self.lab.marker()
        frame = self.frame(source, destination, marker)
        self.lab.hosts[port].send(frame)
        arrived = self.lab.arrivals(marker)
        assert arrived == dict.fromkeys(arrived, [frame])
        return set(arrived)

    def others(self, port):
        return self.ports - {port}

    def station(self, port):
        """A new address that the switch has just learned behind the port."""
        address = self.lab.mac(port)
        assert self.say(port, address) == self.others(port)
        return address

    def crowd(self, port, stations, destination=None):
        """A frame from each of these stations, for the first of them: nobody but the switch gets to see it. Returns
        when the switch has served them all.
        """
        host = self.lab.hosts[port]
        for first in range(0, len(stations), BATCH):
            batch = stations[first : first + BATCH]
            wanted = self._received(port) + len(batch)
            for source in batch:
                host.send(self.frame(source, destination or stations[0]))
            poll_until(
                lambda goal=wanted: self._received(port) >= goal, SERVED_SECONDS, f"{len(batch)} frames of port {port}"
            )

    def _received(self, port):
        return self.cpu.call("adp_get_port_stat", port, RX_FRAMES)["outputs"]["value"]

    # What the library tells of addresses

    def entry(self, address):
        """The address's entry; None when there is none."""
        answer = self.cpu.call("adp_get_mac_addr", address.hex(), self.vid)
        assert answer["result"] in (0, MISSING)
        return answer["outputs"]["entry"] if answer["result"] == 0 else None

    def interface(self, address):
        """The interface where the address was learned; None when it is unknown."""
        answer = self.cpu.call("adp_get_intf_by_addr", address.hex(), self.vid)
        assert answer["result"] in (0, MISSING)
        return answer["outputs"]["intf"] if answer["result"] == 0 else None

    def learned(self, port):
        """Number of addresses learned on a port."""
        answer = self.cpu.call("adp_get_mac_learn_count_by_intf", port)
        assert answer["result"] == 0
        return answer["outputs"]["count"]


def in_a_row(count, first=0):
    """That many consecutive addresses that the bench uses nowhere else."""
    return [bytes.fromhex("02ac0000") + (first + number).to_bytes(2, "big") for number in range(count)]


def bucket(address, vid):
    """The bucket of the MAC table for the address."""
    return (sum(int.from_bytes(address[at : at + 2], "big") for at in (0, 2, 4)) + vid) % BUCKETS


def colon_form(address):
    return ":".join(f"{byte:02x}" for byte in address)
