"""Three hosts in a tagged VLAN, each of whose frames reaches the other two unless a rule prevents it."""

VLAN, OTHER_VLAN = 100, 101


class Crossing:
    """The hosts at these ports, by default the first three of the lab: `sender`, `neighbour` and `receiver`. No
    destination in their packets is known to the switch, so all frames are flooded.
    """

    def __init__(self, lab, cpu, ports=()):
        self.lab, self.cpu = lab, cpu
        self.ports = tuple(ports or sorted(lab.hosts)[:3])
        self.sender, self.neighbour, self.receiver = self.ports
        for vlan in (VLAN, OTHER_VLAN):
            cpu.vlan(vlan, self.ports)

    def flooded(self, *sends):
        """{port: packets} of (port, packet) pairs that no rule matches."""
        return {port: [packet for origin, packet in sends if origin != port] for port in self.ports}

    def send(self, *sends):
        """The hosts send (port, packet) pairs, as fast as they can; gives their marker."""
        marker = self.lab.marker()
        frames = {packet: packet.build(marker) for _, packet in sends}
        for port, packet in sends:
            self.lab.hosts[port].send(frames[packet])
        return marker

    def check(self, sends, arrive):
        """The hosts send (port, packet) pairs, and exactly these {port: packets} arrive. Gives their marker."""
        marker = self.send(*sends)
        wanted = {port: sorted(packet.build(marker) for packet in packets) for port, packets in arrive.items()}
        seen = {port: sorted(frames) for port, frames in self.lab.arrivals(marker).items()}
        assert seen == {port: frames for port, frames in wanted.items() if frames}
        return marker

    def check_flooded(self, *sends):
        """The same of packets that reach every host but the one that sends them."""
        return self.check(sends, self.flooded(*sends))
