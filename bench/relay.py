"""Frames between the switch's CPU port and the kernel: adp-switchd's code beside two system calls a frame."""

import contextlib
import statistics
import subprocess

from adp.lab import Build
from adp.lab.netns import NetNamespace
from adp.lab.process import tied
from bench.bars import plot_bars
from bench.isolated import measure_in_namespaces
from bench.problem import BenchError

NAME = "relay"
TITLE = "adp-switchd: frames between the CPU port and the interfaces"
TARGETS = {"host": ["bench_relay"]}
HAS_COUNTS = False
PROGRAM = "bench_relay"
SIZES = (64, 512, 1514)
FRAMES, BLOCKS, QUICK_BLOCKS = 50, 1001, 201
PROGRAM_SECONDS = 120.0
MICROSECOND = 1000
WAYS = ("kernel to chip", "chip to kernel")
NOTES = [
    "The bare loop reads a frame from the TAP interface and sends one that is ready on eth0, or the other way. 'rate' is "
    "the relay's over the bare loop's in the processor's time: the median over many short blocks that take turns.",
]


def measure(options):
    return measure_in_namespaces(__name__, options)


def measure_inside(options):
    blocks = QUICK_BLOCKS if options.quick else BLOCKS
    rows = [row for size in SIZES for row in rows_of(size, times_of(size, blocks))]
    columns = ["way", "bytes", "rate", "relay us", "bare us"]
    table = {"title": "Rate over that of two system calls a frame (host)", "columns": columns, "rows": rows}
    return {"tables": [table], "counts": {}, "notes": NOTES}


def times_of(size, blocks):
    """A line for each block: nanoseconds of the relay and of the bare loop, for each way."""
    with contextlib.closing(NetNamespace("relay")) as namespace, namespace.entered():
        command = tied(Build("host").command(PROGRAM, size, FRAMES, blocks))
        done = subprocess.run(command, capture_output=True, text=True, timeout=PROGRAM_SECONDS)
    if done.returncode != 0:
        raise BenchError(f"{PROGRAM} failed: {done.stderr.strip()}")
    return [tuple(map(int, line.split())) for line in done.stdout.splitlines()]


def rows_of(size, times):
    for number, way in enumerate(WAYS):
        relay, bare = ([line[2 * number + at] for line in times] for at in (0, 1))
        rate = statistics.median(theirs / ours for ours, theirs in zip(relay, bare))
        yield [way, size, rate, *(statistics.median(each) / FRAMES / MICROSECOND for each in (relay, bare))]


def plot(result, path):
    rows = result["tables"][0]["rows"]
    series = {f"{size} bytes": [row[2] for row in rows if row[1] == size] for size in SIZES}
    plot_bars(path, list(WAYS), series, "rate over that of two system calls a frame")
