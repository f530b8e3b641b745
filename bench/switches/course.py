"""The course of a measurement: the switches take turns on one bed, each turn over all points.

    PYTHONPATH=.:vdevice python3 -m adp.lab.isolate python3 -m bench.switches.course [--quick] [--rounds N]
        [--seconds S] [--no-trains] [--device BUILD] [--switches NAME,...] [--output FILE]

BUILD names the build of the virtual device: a folder in build/, or the path of any build folder.
"""

import argparse
import contextlib
import json
import sys
import time
from typing import NamedTuple

from bench.isolated import come_first
from bench.problem import BenchError
from adp.lab import LabError
from adp.lab.process import poll_until

from .bed import RECEIVER, SENDER, WITNESS, Bed
from .bridge import Bridge, NoSwitch
from .cores import Cores, helper_of, seconds_of
from .device import VirtualDevice
from .ovs import OpenVSwitch
from .rules import rules
from .traffic import FIRST_STATION, HEADER_BYTES, SENDING_STATION, Traffic

SIZES = (64, 1514)
FLOWS = (1, 256)
STATIONS = (1, 8000)
RULES = (0, 900)
WARM_SECONDS = 0.15
SPARE_SECONDS = 2.0
LEARN_SECONDS = 10.0
LEARN_ATTEMPTS = 5
SWITCHES = {
    "device": lambda bed, options: VirtualDevice(bed, options.device),
    "bridge": lambda bed, _: Bridge(bed),
    "ovs": lambda bed, _: OpenVSwitch(bed),
    "none": lambda bed, _: NoSwitch(bed),
}


class Point(NamedTuple):
    """What the stream is like, and what the switch has to look through."""

    rules: int
    stations: int
    flows: int
    size: int


class Sample(NamedTuple):
    """Readings at one moment."""

    time: float
    sent: int
    received: int
    astray: int
    switch_seconds: float
    stream_seconds: float


class Turn:
    """One switch in use."""

    def __init__(self, bed, traffic, switch, cores, seconds):
        self._bed, self._traffic, self._switch, self._seconds = bed, traffic, switch, seconds
        self._processes = [*switch.processes(), *helper_of(cores.switch)] if switch.processes() else []
        self._stream_helper = helper_of(cores.stream)
        self._stations, self._rules = 0, 0

    def prepare(self, point):
        """The addresses and rules that go with a point, and proof that frames still pass with them."""
        if (point.stations, point.rules) == (self._stations, self._rules):
            return
        if point.stations != self._stations:
            self._learn(point.stations)
        if point.rules > self._rules:
            self._switch.add_rules(rules(point.rules))
        elif point.rules < self._rules:
            self._switch.delete_rules(rules(self._rules))
        self._stations, self._rules = point.stations, point.rules
        self._check()

    def _learn(self, stations):
        """Has the switch learn these addresses and the sender's, and nothing more."""
        for _ in range(LEARN_ATTEMPTS):
            self._traffic.introduce(stations)
            with contextlib.suppress(LabError):
                poll_until(lambda: self._switch.addresses() >= stations + 1, LEARN_SECONDS, "Learning")
                break
        if (found := self._switch.addresses()) != stations + 1:
            raise BenchError(f"The {self._switch.name} has learned {found} addresses and not {stations + 1}.")

    def _check(self):
        """A frame that crosses the switch comes out as it went in."""
        with self._bed.nic(RECEIVER) as nic, self._traffic.stream(1, 1, SIZES[0], SPARE_SECONDS):
            arrived = nic.receive(FIRST_STATION, SPARE_SECONDS)
        header = FIRST_STATION + FIRST_STATION[:2] + SENDING_STATION.to_bytes(4) + b"\x08\x00"
        if not arrived or len(arrived) != SIZES[0] or arrived[:HEADER_BYTES] != header:
            raise BenchError(f"The {self._switch.name} does not pass the stream as it is: {arrived and arrived.hex()}")

    def measure(self, point):
        longest = WARM_SECONDS + self._seconds + SPARE_SECONDS
        with self._traffic.stream(point.flows, point.stations, point.size, longest) as process:
            time.sleep(WARM_SECONDS)
            before = self._sample(process)
            time.sleep(self._seconds)
            after = self._sample(process)
        spent = Sample(*(late - early for early, late in zip(before, after)))
        if not spent.received and self._switch.passes_frames:
            raise BenchError(f"The {self._switch.name} passes no frames.")
        if spent.astray:
            raise BenchError(f"The {self._switch.name} has sent {spent.astray} frames to where they do not belong.")
        return spent

    def _sample(self, process):
        sent, _ = self._bed.frames(SENDER)
        _, received = self._bed.frames(RECEIVER)
        _, astray = self._bed.frames(WITNESS)
        stream = [process.pid, *self._stream_helper]
        return Sample(time.monotonic(), sent, received, astray, seconds_of(self._processes), seconds_of(stream))


def points(switch, sizes):
    """In an order in which the switch never has to forget an address."""
    made = RULES if switch.takes_rules else RULES[:1]
    for stations, counts in zip(STATIONS, (made, reversed(made))):
        for count in counts:
            yield from (Point(count, stations, flows, size) for flows in FLOWS for size in sizes)


def row_of(switch, point, number, spent):
    received = spent.received / spent.time
    row = {"switch": switch, "round": number, **point._asdict(), "offered": spent.sent / spent.time,
           "arrived": received, "stream_core": spent.stream_seconds / spent.time}  # fmt: skip
    if spent.switch_seconds:
        row |= {"switch_core": spent.switch_seconds / spent.time, "per_core": spent.received / spent.switch_seconds}
    return row


def take_turn(bed, traffic, cores, name, number, options):
    """Rows of all points of one switch."""
    with cores.starting_on(cores.switch):
        switch = SWITCHES[name](bed, options)
    with contextlib.closing(switch):
        bed.raise_links()
        turn = Turn(bed, traffic, switch, cores, options.seconds)
        for point in points(switch, options.sizes):
            if switch.passes_frames:
                turn.prepare(point)
            yield row_of(name, point, number, turn.measure(point)) | {"train": traffic.train}


def parse_options(words=None):
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--quick", action="store_true", help="one short round of the small frames")
    parser.add_argument("--rounds", type=int, default=3)
    parser.add_argument("--seconds", type=float, default=1.0, help="at each point")
    parser.add_argument("--device", default="host", help="build folder of the virtual device")
    parser.add_argument("--switches", default=",".join(SWITCHES))
    parser.add_argument("--no-trains", dest="trains", action="store_false", help="a flow's frames one at a time")
    parser.add_argument("--output", help="file for the rows, instead of standard output")
    options = parser.parse_args(words)
    options.switches = options.switches.split(",")
    options.sizes = SIZES[:1] if options.quick else SIZES
    if options.quick:
        options.rounds, options.seconds = 1, min(options.seconds, 0.4)
    return options


def run(options):
    cores, rows = Cores(), []
    with contextlib.closing(Bed()) as bed:
        traffic = Traffic(bed, cores)
        bed.raise_links()
        if options.trains:
            traffic.use_trains()
        for number in range(options.rounds):
            for name in options.switches:
                print(f"round {number + 1} of {options.rounds}: {name}", file=sys.stderr, flush=True)
                rows += take_turn(bed, traffic, cores, name, number, options)
    return rows


def main():
    options = parse_options()
    come_first()
    text = json.dumps({"rows": run(options)}, indent=1)
    if options.output:
        with open(options.output, "w", encoding="utf-8") as file:
            file.write(text + "\n")
    else:
        print(text)


if __name__ == "__main__":
    try:
        main()
    except (BenchError, LabError) as problem:
        sys.exit(f"bench.switches: {problem}")
