"""The priority and the egress queue of frames, and the library's calls that set them."""

from collections import Counter

from crossing import PORTS, SENDER, VLAN
from adp.lab.bench import BARRIERS

TRUST_PORT, TRUST_TAG, TRUST_DSCP, TRUST_BOTH = range(4)
PRIORITIES = range(8)
DSCPS = range(64)
DOT1P_MAP, DSCP_MAP, NO_MAP = range(3)
CHIPS_QUEUE = 0xFFFFFFFF


def usual_row(dscp):
    """(mapped, priority) of a DSCP by default."""
    return dscp, dscp // 8


class Priorities:
    """Three hosts in a tagged VLAN that is also that of untagged frames; tidy() leaves all maps as at power-on."""

    def __init__(self, lab, cpu, crossing):
        self.lab, self.cpu, self.crossing = lab, cpu, crossing
        cpu.set_pvid(SENDER, VLAN)
        self._own_queues = set()
        self._remapped = set()

    # What the device shows

    def shown(self):
        return self.lab.device.control("priorities")

    def port(self, number):
        return next(row for row in self.shown()["ports"] if row["port"] == number)

    def queues(self, send):
        """{port: queue} by which the ports of the VLAN send the one frame of `send`, which asks for arrivals once."""
        before = {row["port"]: row for row in self.shown()["ports"]}
        send()
        after = {row["port"]: row["tx_queues"] for row in self.shown()["ports"]}
        found = {}
        for port in PORTS:
            moved = Counter(dict(enumerate(after[port])))
            moved.subtract(dict(enumerate(before[port]["tx_queues"])))
            # The bench's own frames have no tag, and the CPU port's own priority is 0.
            moved[before[port]["queues"][0]] -= BARRIERS
            assert min(moved.values()) >= 0
            queues = list(moved.elements())
            assert len(queues) <= 1, f"port {port} sent {len(queues)} frames"
            found.update({port: queue for queue in queues})
        return found

    def queues_of(self, packet, arrives=None, sender=SENDER):
        """{port: queue} of a packet that arrives unchanged, or as given."""
        arrive = self.crossing.flooded((sender, arrives or packet))
        return self.queues(lambda: self.crossing.check([(sender, packet)], arrive))

    # The maps

    def create_dot1p_map(self, queues, kind=DOT1P_MAP):
        rows = ",".join(f"{{queue={queue}}}" for queue in queues)
        return self.cpu.result("adp_create_dot1p_map", kind, f"[{rows}]")

    def dot1p_map(self):
        """(status, queues) of adp_get_dot1p_map."""
        answer = self.cpu.call("adp_get_dot1p_map", DOT1P_MAP, f"[{','.join(['{queue=99}'] * len(PRIORITIES))}]")
        return answer["result"], [row["queue"] for row in answer["outputs"]["entries"]]

    def create_dscp_map(self, rows, kind=DSCP_MAP):
        text = ",".join(f"{{mapped={mapped} priority={priority}}}" for mapped, priority in rows)
        return self.cpu.result("adp_create_dscp_map", kind, f"[{text}]")

    def dscp_map(self):
        """(status, [(mapped, priority)]) of adp_get_dscp_map."""
        answer = self.cpu.call("adp_get_dscp_map", DSCP_MAP, f"[{','.join(['{mapped=99}'] * len(DSCPS))}]")
        return answer["result"], [(row["mapped"], row["priority"]) for row in answer["outputs"]["entries"]]

    def set_own_queue(self, port, priority, queue):
        self._own_queues.add((port, priority))
        return self.cpu.result("adp_cosq_port_mapping_set", port, priority, queue)

    def remap(self, port, priority, new_priority):
        self._remapped.add((port, priority))
        return self.cpu.result("adp_set_dot1p_pri_remap", self.lab.device.physical(port), priority, 0, new_priority,
                               0, 0, 0, 0)

    def trust(self, mode, port=SENDER):
        assert self.cpu.result("adp_set_port_pri_trust_mode", port, mode) == 0

    def read(self, call, *words, output):
        """(status, output) of a call that reads one word."""
        answer = self.cpu.call(call, *words, f"{output}=99")
        return answer["result"], answer["outputs"][output]

    def tidy(self):
        assert self.create_dot1p_map(PRIORITIES) == 0
        assert self.cpu.result("adp_delete_dscp_map", DSCP_MAP) == 0
        for port, priority in self._own_queues:
            assert self.cpu.result("adp_cosq_port_mapping_set", port, priority, CHIPS_QUEUE) == 0
        for port, priority in self._remapped:
            assert self.remap(port, priority, priority) == 0
        for port in PORTS:
            self.trust(TRUST_TAG, port)
            assert self.cpu.result("adp_set_port_cos_map", port, 0) == 0
