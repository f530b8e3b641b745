"""A ring in scenarios: which hosts a frame reaches, and streams while cables are moved."""

import threading
import time

from adp.lab.frames import BROADCAST, ETHERTYPE_EXPERIMENT, ethernet
from adp.lab.load import Load, Traffic
from adp.lab.ring import BEFORE, DEVICES, HOST, RING_PORTS

BLOCKING, FORWARDING = 1, 4
DYNAMIC = 0
OWNER, NEXT, LAST = range(DEVICES)
STEADY_SECONDS = 0.3
AROUND_SECONDS = 0.1
HANDLED_SECONDS = 20.0


class Protected:
    """The ring with a CPU at each device and the owner's port BEFORE blocked by hand."""

    def __init__(self, ring, cpus):
        self.ring, self.cpus = ring, cpus
        self.addresses = [ring.mac() for _ in ring.labs]

    def set_state(self, at, port, state):
        assert self.cpus[at].result("adp_set_port_erps_state", port, state) == 0

    def state(self, at, port):
        answer = self.cpus[at].call("adp_get_port_erps_state", port)
        assert answer["result"] == 0
        return answer["outputs"]["state"]

    def open(self):
        for at in range(DEVICES):
            for port in RING_PORTS:
                self.set_state(at, port, FORWARDING)

    def protect(self):
        """The state at the beginning of a test: one port blocked, no address learned."""
        self.set_state(OWNER, BEFORE, BLOCKING)
        self.forget()

    def forget(self):
        for cpu in self.cpus:
            assert cpu.result("adp_del_mac_by_lrntype", DYNAMIC) == 0

    def say(self, at, destination=BROADCAST):
        """The host behind a device sends one frame; gives the devices whose hosts it reached, once and unchanged."""
        marker = self.ring.labs[at].marker()
        frame = ethernet(destination, self.addresses[at], ETHERTYPE_EXPERIMENT, marker.ljust(46, b"."))
        self.ring.hosts[at].send(frame)
        arrived = self.ring.arrivals(marker)
        assert all(answer in ({}, {HOST: [frame]}) for answer in arrived)
        return {place for place, answer in enumerate(arrived) if answer}

    def check_everyone_reaches_everyone(self):
        """First with unknown addresses, then with those that the switches have learned."""
        for at in range(DEVICES):
            assert self.say(at) == set(range(DEVICES)) - {at}
        for at in range(DEVICES):
            for other in set(range(DEVICES)) - {at}:
                assert self.say(at, self.addresses[other]) == {other}


class Stream:
    """Numbered frames between the owner's host and the last device's, both ways."""

    def __init__(self, ring):
        hosts = ring.hosts[OWNER], ring.hosts[LAST]
        here, there = ring.mac(), ring.mac()
        marker = ring.labs[OWNER].marker
        self.loads = (Load(*hosts, marker(), [(here, there)]), Load(*reversed(hosts), marker(), [(there, here)]))
        self._traffic = Traffic(ring, self.loads)
        self.handled_seconds = 0.0
        for load in self.loads:
            load.introduce()
        self._traffic.settle()

    def is_one_outage(self):
        """Whether lost frames of the owner, if any, were consecutive, with frames received before and after."""
        lost = self.loads[0].lost()
        return not lost or lost == list(range(lost[0], lost[-1] + 1))

    def run(self):
        """Frames flow for a while, and none is lost."""
        first = self._traffic.numbers()
        self._traffic.run_for(STEADY_SECONDS)
        self._traffic.settle()
        for load in self.loads:
            assert load.sent > first[load]
            assert (load.lost(first[load]), load.repeated()) == ([], [])

    def change(self, hand, programs):
        """What the hand does to the cables, under load until all these programs have told of it. Gives what they told,
        and the frames lost of those sent meanwhile.
        """
        self._traffic.run_for(AROUND_SECONDS)
        first, begin = self._traffic.numbers(), time.monotonic()
        # In a thread, so that the frames go on while the hand moves.
        moving = threading.Thread(target=hand)
        moving.start()
        in_time = self._traffic.run_until(lambda: all(program.has_line() for program in programs), HANDLED_SECONDS)
        self.handled_seconds = time.monotonic() - begin
        moving.join()
        assert in_time, "the programs have not handled the change"
        self._traffic.settle()
        # Who has not changed a link learns the new direction from the next frames.
        for load in self.loads:
            load.burst()
            self._traffic.settle()
        tallies = [load.tally(first[load]) for load in self.loads]
        assert [load.repeated() for load in self.loads] == [[], []]
        return [program.line() for program in programs], tallies
