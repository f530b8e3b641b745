"""Three hosts in a tagged VLAN, each of whose frames reaches the other two unless a rule prevents it."""

VLAN, OTHER_VLAN = 100, 101
SENDER, NEIGHBOUR, RECEIVER = 5, 7, 22
PORTS = (SENDER, NEIGHBOUR, RECEIVER)


class Crossing:
    """The hosts; none of the destinations in their packets is known to the switch, so all frames are flooded."""

    def __init__(self, lab, cpu):
        self.lab, self.cpu = lab, cpu
        for vlan in (VLAN, OTHER_VLAN):
            cpu.vlan(vlan, PORTS)

    @staticmethod
    def flooded(*sends):
        """{port: packets} of (port, packet) pairs that no rule matches."""
        return {port: [packet for origin, packet in sends if origin != port] for port in PORTS}

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
        return self.check(sends, self.flooded(*sends))
