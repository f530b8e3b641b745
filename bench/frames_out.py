"""Frames from the CPU to the switch: the library's calls beside the bare system calls of a frame that is ready."""

import collections
import contextlib
import re
import statistics
import subprocess
import tempfile

from bench.bars import plot_bars
from bench.isolated import measure_in_namespaces
from bench.problem import BenchError
from adp.lab import Build
from adp.lab.builds import EMULATOR
from adp.lab.netns import NetNamespace
from adp.lab.process import poll_until, tied

NAME = "frames_out"
TITLE = "Frames out: __adp_transmit_frame and adp_transmit_frame beside bare system calls"
TARGETS = {"host": ["bench_frames_out"], "mips": ["bench_frames_out"]}
PROGRAM = "bench_frames_out"
SINGLE = "adp_transmit_frame"
WAYS = ("mode 0, list", "mode 0, flood", "mode 0, flood in VLAN", "mode 1", "mode 2", "mode 3", "mode 4", SINGLE)
SIZES = (64, 512, 1514)
MTU = 9300
# Short blocks: most are not interrupted, so their median is not affected by interruptions.
FRAMES, BLOCKS, QUICK_BLOCKS = 50, 1001, 201
SINGLE_FRAMES, SINGLE_BLOCKS, QUICK_SINGLE_BLOCKS = 1, 61, 21
TRACED_FRAMES = 10
PROGRAM_SECONDS = 120.0
LINK_SECONDS = 10.0
MICROSECOND = 1000
CALL = re.compile(r"(?:\d+ )?\s*(\w+)\(")
NOTES = [
    "The bare loop makes the same system calls with the frame, its tag included, ready in memory. 'rate' is the "
    "library's over the bare loop's in the processor's time: the median over many short blocks that take turns.",
    "adp_transmit_frame waits: the kernel takes some milliseconds, mostly idle, to close a packet socket.",
    "System calls and allocations are those of one frame of 64 bytes. The device's service that knows a VLAN's members "
    "is answered within the process.",
]


def measure(options):
    return measure_in_namespaces(__name__, options)


def measure_inside(options):
    with wire() as namespace:
        bench = Bench(namespace)
        counted = {build: {way: bench.count(build, way) for way in WAYS} for build in options.builds}
        rated = {}
        if "host" in options.builds and not options.counts_only:
            rated = {(way, size): bench.rate(way, size, options.quick) for way in WAYS for size in SIZES}
    counts = {
        f"{build}.{way}.{what}": number
        for build, ways in counted.items()
        for way, (calls, taken, _) in ways.items()
        for what, number in (("system calls", sum(calls.values())), ("allocations", taken))
    }
    tables = [count_table(build, ways) for build, ways in counted.items()]
    return {"tables": tables + ([rate_table(rated)] if rated else []), "counts": counts, "notes": NOTES}


def plot(result, path):
    rows = [row for table in result["tables"] for row in table["rows"] if table["columns"][1] == "bytes"]
    series = {f"{size} bytes": [row[2] for row in rows if row[1] == size] for size in SIZES}
    labels = [way.replace(", ", "\n").replace("_frame", "\n_frame") for way in WAYS]
    plot_bars(path, labels, series, "rate over that of the bare system calls")


@contextlib.contextmanager
def wire():
    """A namespace whose "eth0" leads to a switch that does not listen."""
    with contextlib.closing(NetNamespace("frames out")) as namespace:
        ends = ("eth0", "cpu0")
        made = f"link add {ends[0]} mtu {MTU} type veth peer name {ends[1]} mtu {MTU}"
        namespace.ip(made, *(f"link set {name} up" for name in ends))
        for name in ends:
            poll_until(lambda: namespace.is_operational(name), LINK_SECONDS, f"A link on {name}")
        yield namespace


class Bench:
    """Runs the program on the wire."""

    def __init__(self, namespace):
        self._namespace = namespace

    def _run(self, command):
        with self._namespace.entered():
            done = subprocess.run(tied(command), capture_output=True, text=True, timeout=PROGRAM_SECONDS)
        if done.returncode != 0:
            raise BenchError(f"{PROGRAM} failed: {done.stderr.strip()}")
        *lines, last = done.stdout.splitlines()
        return [tuple(map(int, line.split())) for line in lines], int(last.split()[1])

    def rate(self, way, size, quick):
        """(the library's rate over the bare one's, microseconds of the processor for a frame by the library and bare,
        microseconds that pass meanwhile)
        """
        is_single = way == SINGLE
        frames = SINGLE_FRAMES if is_single else FRAMES
        blocks = ((QUICK_SINGLE_BLOCKS, SINGLE_BLOCKS) if is_single else (QUICK_BLOCKS, BLOCKS))[not quick]
        times, _ = self._run(Build("host").command(PROGRAM, way, size, frames, blocks))
        ratio = statistics.median(bare / library for library, bare, *_ in times)
        return ratio, *(statistics.median(column) / frames / MICROSECOND for column in zip(*times))

    def count(self, build, way):
        """(the library's system calls, its allocations, the bare loop's system calls), for each frame."""
        with tempfile.NamedTemporaryFile("r", encoding="utf-8", errors="replace") as trace:
            program = Build(build)
            command = program.command(PROGRAM, way, SIZES[0], TRACED_FRAMES, 0)
            if program.folder.name == "host":
                command = ["strace", "-f", "-o", trace.name, *command]
            else:
                command = [*EMULATOR, "-strace", "-D", trace.name, *command[len(EMULATOR) :]]
            _, taken = self._run(command)
            library, bare = parts_of(trace.read().splitlines())
        return per_frame(library), taken // TRACED_FRAMES, per_frame(bare)


def parts_of(lines):
    """Names of the system calls between the first mark and the second, and between the second and the third."""
    parts = [[]]
    for line in lines:
        found = CALL.match(line)
        if found and found[1] == "write" and re.search(r"write\((-1|0xffffffff|4294967295),", line):
            parts.append([])
        elif found:
            parts[-1].append(found[1])
    if len(parts) != 4:
        raise BenchError(f"The trace of system calls has {len(parts) - 1} marks instead of 3.")
    return parts[1], parts[2]


def per_frame(calls):
    counts = collections.Counter(calls)
    if any(count % TRACED_FRAMES for count in counts.values()):
        raise BenchError(f"Not every frame takes the same system calls: {dict(counts)}")
    return {name: count // TRACED_FRAMES for name, count in counts.items()}


def count_table(build, ways):
    rows = [[way, sum(calls.values()), sum(bare.values()), taken,
             ", ".join(f"{count} {name}" if count > 1 else name for name, count in calls.items())]
            for way, (calls, taken, bare) in ways.items()]  # fmt: skip
    columns = ["way", "system calls", "bare", "allocations", "which"]
    return {"title": f"System calls and allocations for a frame ({build})", "columns": columns, "rows": rows}


def rate_table(rated):
    rows = [[way, size, *figures] for (way, size), figures in rated.items()]
    columns = ["way", "bytes", "rate", "library us", "bare us", "library passed us", "bare passed us"]
    return {"title": "Rate over that of the bare system calls (host)", "columns": columns, "rows": rows}
