"""A shaped port: what its eight queues send, by the device's counters and clock."""

from typing import NamedTuple

from crossing import NEIGHBOUR, RECEIVER, SENDER
from adp.lab.process import poll_until
from adp.testing.cpu import SETTLE_SECONDS
from adp.testing.packet import Packet

STRICT, ROUND_ROBIN, WEIGHTED = 0, 1, 2
QUEUES = range(8)
QUEUE_OCTETS = 65536
FRAME = 500
FITTING = QUEUE_OCTETS // FRAME
CHECK_SEQUENCE = 4
BITS, KILO = 8, 1000
SILENCE_SECONDS = 0.05


class Reading(NamedTuple):
    """Of all queues at one time: frames and octets that have left, frames that wait, frames dropped."""

    time: float
    frames: list
    octets: list
    waiting: list
    dropped: list

    def kilobits_since(self, other):
        """By queue, as a shaper counts."""
        return [
            (octets - before + (frames - frames_before) * CHECK_SEQUENCE) * BITS / KILO
            for octets, before, frames, frames_before in zip(self.octets, other.octets, self.frames, other.frames)
        ]

    def rate_since(self, other):
        return sum(self.kilobits_since(other)) / (self.time - other.time)


class Bottleneck:
    """The receiver's port; tidy() removes its shaper and scheduling."""

    def __init__(self, crossing):
        self.crossing, self.cpu, self.lab = crossing, crossing.cpu, crossing.lab
        self.number = self.lab.device.physical(RECEIVER)

    def shape(self, rate, burst=0):
        assert self.cpu.result("adp_set_port_egress_shaper", RECEIVER, rate, burst) == 0

    def schedule(self, mode):
        return self.cpu.result("adp_set_port_queue_sch_mode", RECEIVER, mode)

    def weigh(self, queue, weight):
        assert self.cpu.result("adp_cosq_sched_set", self.number, queue, weight, 0) == 0

    def row(self, port=RECEIVER):
        return next(row for row in self.lab.device.control("queues")["ports"] if row["port"] == port)

    def weights(self):
        return [queue["weight"] for queue in self.row()["queues"]]

    def read(self):
        answer = self.lab.device.control("queues")
        queues = next(row for row in answer["ports"] if row["port"] == RECEIVER)["queues"]
        columns = ("frames", "octets", "waiting_frames", "dropped")
        return Reading(answer["time"], *([queue[name] for queue in queues] for name in columns))

    @staticmethod
    def frame(priority, marker=b"", octets=FRAME):
        """A frame of this length that the receiver gets tagged."""
        packet = Packet(priority=priority)
        return packet.but(padding=octets - len(packet.build(marker))).build(marker)

    def offer(self, *priorities, frames=FITTING, marker=b""):
        """Sends frames of these priorities in turn, by default as many of each as fit into a queue."""
        made = [self.frame(priority, marker) for priority in priorities]
        for _ in range(frames):
            for frame in made:
                self.lab.hosts[SENDER].send(frame)

    def fill(self, *priorities, frames=FITTING, marker=b""):
        """The same, and waits until the device has them."""
        wanted = self._received() + len(priorities) * frames
        self.offer(*priorities, frames=frames, marker=marker)
        poll_until(lambda: self._received() >= wanted, SETTLE_SECONDS, "All frames on the device")

    def _received(self):
        counters = self.lab.device.control("counters")["counters"]
        return next(row["rx_frames"] for row in counters if row["port"] == SENDER)

    def tidy(self):
        self.shape(0)
        assert self.schedule(STRICT) == 0
        for queue in QUEUES:
            self.weigh(queue, 1)
        # What nobody has read would keep the hosts' sockets full, and the next test's frames out of them.
        for port in (RECEIVER, NEIGHBOUR):
            while self.lab.hosts[port].receive(b"", SILENCE_SECONDS) is not None:
                pass
        self.lab.arrivals(self.lab.marker())
