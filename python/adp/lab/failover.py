"""Two devices joined by an aggregation group, link_aggregation on each of them, and traffic both ways.

    with Pair({5, 6}, {7, 8}, CABLES) as pair, FourCables(pair, "mips") as joined:
        change = joined.change("pull", 2)
        change.lost_meanwhile(joined.forth)
"""

import contextlib
import threading
import time
from typing import NamedTuple

from .aggregation import AggregationProgram
from .load import Astray, Load, Traffic
from .problem import LabError

# (near port, far port). The two sides use different ports, so that nothing works because numbers happen to be equal.
CABLES = ((1, 11), (2, 12), (3, 13), (4, 14))
NEAR_HOST, NEAR_WITNESS = 5, 6
FAR_HOST, FAR_WITNESS = 7, 8
FLOWS = 64
AROUND_SECONDS = 0.1
HANDLED_SECONDS = 20.0

# (cable, the near side's management port afterwards), in this order; the far side's port is ten more. When another port
# loses its link the management port stays. When it loses its own, the smallest port with a link follows, or without
# any the largest. A port that comes back takes over if it is smaller.
PULLS = ((2, 1), (0, 2), (1, 4), (3, 4))
PLUGS = ((1, 2), (3, 2), (0, 1), (2, 1))
FAR_PORTS_ABOVE_NEAR = 10


class Change(NamedTuple):
    """A cable that was pulled or plugged in while frames flowed."""

    before: dict  # each load's next frame number before the change
    handled: dict  # ... and after both programs had handled it
    end: dict  # ... and at the end
    seconds: float  # until both had handled it
    astray: Astray  # frames that arrived at wrong hosts

    def meanwhile(self, load):
        """Tally of what was sent between the change and its handling."""
        return load.tally(self.before[load], self.handled[load])

    def afterwards(self, load):
        """Tally of what was sent after that."""
        return load.tally(self.handled[load], self.end[load])


class FourCables:
    """Runs link_aggregation of some build on both devices of a pair made with CABLES. Frames flow for `around` seconds
    before and after each change.
    """

    def __init__(self, pair, build, around=AROUND_SECONDS):
        self.pair = pair
        self._build = build
        self._around = around
        self._stack = contextlib.ExitStack()
        self.programs = []

    def __enter__(self):
        with self._stack as stack:
            for lab, ports in zip((self.pair.near, self.pair.far), zip(*CABLES, strict=True), strict=True):
                self.programs.append(stack.enter_context(contextlib.closing(self._start(lab, ports))))
            self._prepare_traffic()
            self._stack = stack.pop_all()
        return self

    def _start(self, lab, ports):
        return AggregationProgram(lab.device, self._build, ports)

    def __exit__(self, *problem):
        try:
            for _, far_port in CABLES:
                self.pair.far.device.control("plug", far_port)
            self.pair.await_cables(range(len(CABLES)))
        finally:
            self._stack.close()

    def _prepare_traffic(self):
        near, far = self.pair.near, self.pair.far
        stations = [(near.mac(NEAR_HOST), near.mac(FAR_HOST)) for _ in range(FLOWS)]
        hosts = near.hosts[NEAR_HOST], far.hosts[FAR_HOST]
        self.forth = Load(*hosts, near.marker(), stations)
        self.back = Load(*reversed(hosts), near.marker(), [(there, here) for here, there in stations])
        self.traffic = Traffic(self.pair, (self.forth, self.back))
        for load in self.traffic.loads:
            load.introduce()
        self.traffic.settle()

    def change(self, verb, number):
        """Pulls or plugs the far end of a cable. Frames flow until both programs have handled it, and on."""
        self.traffic.run_for(self._around)
        before, begin = self.traffic.numbers(), time.monotonic()
        hand = threading.Thread(target=self.pair.far.device.control, args=(verb, CABLES[number][1]))
        hand.start()
        in_time = self.traffic.run_until(lambda: self._have_handled(number, verb == "plug"), HANDLED_SECONDS)
        handled, seconds = self.traffic.numbers(), time.monotonic() - begin
        hand.join()
        if not in_time:
            raise LabError(f"The programs have not handled that cable {number} was {verb}ed.")
        self.traffic.run_for(self._around)
        astray = self.traffic.settle()
        return Change(before, handled, self.traffic.numbers(), seconds, astray)

    def _have_handled(self, number, is_up):
        pairs = zip(self.programs, CABLES[number], strict=True)
        return all([program.has_handled(port, is_up) for program, port in pairs])

    def announcements(self):
        """How often each device's log reports that the group went down, and up."""
        return [
            tuple(
                sum(line["text"] == f"interface aggregateport 1, changed state to {word}" for line in log)
                for word in ("down", "up")
            )
            for log in (lab.device.control("log")["log"] for lab in (self.pair.near, self.pair.far))
        ]

    def sent_by_members(self):
        """Frames that each member port has sent, for either side."""
        return [
            {row["port"]: row["tx_frames"] for row in lab.device.control("ports")["ports"] if row["port"] in ports}
            for lab, ports in zip((self.pair.near, self.pair.far), zip(*CABLES, strict=True), strict=True)
        ]
