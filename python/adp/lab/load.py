"""Load: many flows from a host on one device to a host on another, every frame accounted for.

Each frame carries its flow and its number within the load, so it is known of every frame whether it arrived, how often,
and in which order. Sending and receiving alternate in one thread, so that no receive buffer overflows.
"""

import struct
import time
from typing import NamedTuple

from .frames import ETHERTYPE_EXPERIMENT, ethernet

STAMP = struct.Struct("!HI")
HEADER_BYTES = 14
FRAME_BYTES = 64
BURST_FRAMES = 8
BURST_PAUSE = 0.002


class Tally(NamedTuple):
    """Counts of a range of the load's frames."""

    sent: int
    delivered: int
    lost: int


class Astray(NamedTuple):
    """How many frames returned to their sender, and how many reached other hosts."""

    returned: int
    elsewhere: int


NOWHERE_ELSE = Astray(0, 0)


class Load:
    """Flows between pairs of stations, one behind `sender` and one behind `receiver`; flow i is `stations[i]`."""

    def __init__(self, sender, receiver, marker, stations):
        self._sender = sender
        self._receiver = receiver
        self._marker = marker
        self._stations = tuple(stations)
        self._arrived = {}
        self._in_order = [0] * len(self._stations)
        self._overtaken = []
        self.sent = 0

    @property
    def marker(self):
        """The bytes that all of its frames contain."""
        return self._marker

    def is_receiver(self, host):
        """Whether its frames go to this host."""
        return host is self._receiver

    def is_sender(self, host):
        """Whether its frames come from this host."""
        return host is self._sender

    def introduce(self):
        """Each of the receiver's stations sends a frame to its partner, so that all switches learn the way. They learn
        the other side from the first frames of the flows.
        """
        for source, destination in self._stations:
            self._receiver.send(self._frame(source, destination, b"an introduction"))

    def burst(self, frames=BURST_FRAMES):
        """Sends the next frames, each of another flow."""
        for _ in range(frames):
            flow = self.sent % len(self._stations)
            source, destination = self._stations[flow]
            stamp = STAMP.pack(flow, self.sent)
            self._sender.send(self._frame(destination, source, self._marker + stamp))
            self.sent += 1

    def collect(self, frames):
        """Accounts for frames that arrived at the receiver."""
        start = HEADER_BYTES + len(self._marker)
        for frame in frames:
            if frame[HEADER_BYTES:start] != self._marker:
                continue
            flow, number = STAMP.unpack_from(frame, start)
            self._arrived[number] = self._arrived.get(number, 0) + 1
            if number + 1 <= self._in_order[flow]:
                self._overtaken.append(number)
            self._in_order[flow] = max(self._in_order[flow], number + 1)

    def lost(self, first=0, end=None):
        """Numbers of the frames, from `first` to before `end`, that have not arrived."""
        return [number for number in range(first, self.sent if end is None else end) if number not in self._arrived]

    def tally(self, first=0, end=None):
        """Counts of the frames from `first` to before `end`."""
        end = self.sent if end is None else end
        lost = len(self.lost(first, end))
        return Tally(end - first, end - first - lost, lost)

    def repeated(self):
        """Numbers of the frames that arrived more than once."""
        return sorted(number for number, times in self._arrived.items() if times > 1)

    def overtaken(self, first=0):
        """Numbers of the frames, `first` and later, that arrived after a later frame of their flow, or again."""
        return [number for number in self._overtaken if number >= first]

    @staticmethod
    def _frame(destination, source, payload):
        frame = ethernet(destination, source, ETHERTYPE_EXPERIMENT, payload)
        return frame.ljust(FRAME_BYTES, b".")


class Traffic:
    """The loads of a bench of several devices, a Pair for instance, which are sent together."""

    def __init__(self, bench, loads):
        self._bench = bench
        self.loads = tuple(loads)
        self._returned = 0
        self._elsewhere = 0

    def run_for(self, seconds):
        """Sends and receives for so many seconds."""
        deadline = time.monotonic() + seconds
        self.run_until(lambda: time.monotonic() >= deadline, seconds + 1.0)

    def run_until(self, condition, seconds):
        """Whether the condition came true in time. Frames are sent until then, at least one burst."""
        deadline = time.monotonic() + seconds
        while True:
            for load in self.loads:
                load.burst()
            for lab in self._bench.labs:
                for host in lab.hosts.values():
                    self._account(host, host.nic.waiting())
            if condition():
                return True
            if time.monotonic() >= deadline:
                return False
            time.sleep(BURST_PAUSE)

    def numbers(self):
        """The number that each load's next frame gets."""
        return {load: load.sent for load in self.loads}

    def settle(self):
        """Waits until every frame has arrived or is lost. Gives the frames that arrived at other hosts than their
        receiver since the last call.
        """
        for lab, seen in zip(self._bench.labs, self._bench.arrivals(b""), strict=True):
            for port, frames in seen.items():
                self._account(lab.hosts[port], frames)
        astray = Astray(self._returned, self._elsewhere)
        self._returned = self._elsewhere = 0
        return astray

    def _account(self, host, frames):
        for load in self.loads:
            mine = [frame for frame in frames if load.marker in frame]
            if load.is_receiver(host):
                load.collect(mine)
            elif load.is_sender(host):
                self._returned += len(mine)
            else:
                self._elsewhere += len(mine)
