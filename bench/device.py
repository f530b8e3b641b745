"""The virtual device, port to port: frames for each second of a core, with many flows, addresses and rules."""

import contextlib
import statistics
import time
from typing import NamedTuple

from bench.bars import plot_bars
from bench.cores import Cores, seconds_of, softirq_threads
from bench.isolated import measure_in_namespaces
from bench.problem import BenchError
from bench.stream import RECEIVER, SENDER, WITNESS, Bed

NAME = "device"
TITLE = "The virtual device, port to port"
TARGETS = {"host": ["bench_traffic", "vdeviced", "vdevctl", "adpsh"]}
HAS_COUNTS = False
SIZES = (64, 1514)
WARM_SECONDS = 0.15
ROUNDS, SECONDS = 3, 1.0
QUICK_ROUNDS, QUICK_SECONDS = 1, 0.4
SPARE_SECONDS = 2.0
THOUSAND = 1000
NOTES = [
    "The device has one core to itself, the sender another one. 'per core' are the frames that arrive, for each second "
    "of processor time that the daemon and the kernel on its behalf have used; 'passed' and 'sent' are those of each "
    "second that passes. Where hardly more is sent than passed, the device could have done more.",
]


class Load(NamedTuple):
    """What the device has to look through."""

    flows: int
    addresses: int
    rules: int


# Each adds to the one before, so the device never has to forget anything.
LOADS = (Load(1, 1, 0), Load(256, 1, 0), Load(256, 8000, 0), Load(256, 8000, 900))


class Sample(NamedTuple):
    """Readings at one moment."""

    time: float
    sent: int
    received: int
    astray: int
    device_seconds: float


class Course:
    """One device on its way through all loads."""

    def __init__(self, bed, cores, seconds):
        self._bed, self._seconds = bed, seconds
        self._processes = [bed.device.pid, *softirq_threads(cores.device)]
        self._load = Load(0, 0, 0)

    def prepare(self, load):
        """Adds what this load has more than the one before."""
        if load.addresses > self._load.addresses:
            self._bed.learn(load.addresses)
        if load.rules > self._load.rules:
            self._bed.install(load.rules)
        self._load = load
        self._bed.check()

    def measure(self, size):
        """(frames for each second of a core, frames passed, frames sent), the latter two in a second."""
        longest = WARM_SECONDS + self._seconds + SPARE_SECONDS
        with self._bed.stream(self._load.flows, self._load.addresses, size, longest):
            time.sleep(WARM_SECONDS)
            before = self._sample()
            time.sleep(self._seconds)
            after = self._sample()
        return rates(Sample(*(late - early for early, late in zip(before, after))))

    def _sample(self):
        sent, _ = self._bed.frames(SENDER)
        _, received = self._bed.frames(RECEIVER)
        _, astray = self._bed.frames(WITNESS)
        return Sample(time.monotonic(), sent, received, astray, seconds_of(self._processes))


def rates(spent):
    if not spent.received:
        raise BenchError("The device passes no frames.")
    if spent.astray:
        raise BenchError(f"The device has sent {spent.astray} frames to the wrong port.")
    return spent.received / spent.device_seconds, spent.received / spent.time, spent.sent / spent.time


def measure(options):
    return measure_in_namespaces(__name__, options)


def measure_inside(options):
    rounds, seconds = (QUICK_ROUNDS, QUICK_SECONDS) if options.quick else (ROUNDS, SECONDS)
    cores, rows = Cores(), []
    with contextlib.closing(Bed(cores)) as bed:
        course = Course(bed, cores, seconds)
        for load in LOADS:
            course.prepare(load)
            for size in SIZES:
                medians = map(statistics.median, zip(*(course.measure(size) for _ in range(rounds))))
                rows.append([size, *load, *(round(rate / THOUSAND) for rate in medians)])
    table = {
        "title": "Thousands of frames",
        "columns": ["bytes", "flows", "addresses", "rules", "per core", "passed", "sent"],
        "rows": sorted(rows),
    }
    return {"tables": [table], "notes": NOTES}


def plot(result, path):
    [table] = result["tables"]
    labels = ["{} bytes\n{} flows\n{} addr.\n{} rules".format(*row) for row in table["rows"]]
    series = {"virtual device": [row[4] for row in table["rows"]]}
    plot_bars(path, labels, series, "thousand frames for each second of a core")
