"""The virtual device beside a bare forwarder: the same rings, sockets and system calls, and no chip."""

import contextlib
import math
import re
import signal
import statistics
import subprocess
import time
from typing import NamedTuple

from adp.lab import Build
from adp.lab.device import Device, host_interface
from adp.lab.netns import NetNamespace
from adp.lab.process import LineReader, poll_until, stop, tied

from bench.cores import Cores, seconds_of, softirq_threads
from bench.isolated import measure_in_namespaces
from bench.problem import BenchError
from bench.stream import (LEARN_SECONDS, LINK_SECONDS, PROGRAM_SECONDS, RECEIVED_FRAMES, SENDING_STATION, SENT_FRAMES,
                          TRAIN, TRIAL_SECONDS, counts_of_interfaces)  # fmt: skip

NAME = "forwarding"
TITLE = "The virtual device beside a bare forwarder"
TARGETS = {"host": ["bench_traffic", "bench_forwarder", "bench_cache_line", "vdeviced", "vdevctl"]}
HAS_COUNTS = False
USER_PORTS = 26
SENDER, RECEIVER = 1, 2
SIZE = 64
WARM_SECONDS, SECONDS, SPARE_SECONDS = 0.1, 0.3, 2.0
ROUNDS, QUICK_ROUNDS = 20, 3
# Long enough for some ten thousand frames under the profiler.
PROFILED_SECONDS = (0.3, 1.3)
DRAIN_SECONDS, DRAIN_PAUSE = 20.0, 0.3
LINE_CLASS = 4
READY_SECONDS = 20.0
NOTES = [
    "Frames that arrive for each second of processor time, of the process and of the kernel on its behalf; both have the "
    "same core, one after the other, and a sender on another core. A ratio is that of two measurements in a row; 'from' "
    "and 'to' are its quartiles. 'cache line' is what a line takes between the two cores just before, in nanoseconds, "
    "by powers of 4: it changes by itself on virtual machines, so only ratios of one class are put together.",
    "The instructions are those of the process itself, under the profiler; the kernel's are not counted.",
]


class Case(NamedTuple):
    name: str
    options: tuple
    receivers: tuple


EVERYBODY_ELSE = tuple(range(SENDER + 1, USER_PORTS + 1))
CASES = (Case("known unicast", (), (RECEIVER,)), Case("flood to 26 ports", ("--to-all",), EVERYBODY_ELSE))


class Forwarder:
    """The bare forwarder, with interfaces like those of a device."""

    def __init__(self, build, user_ports):
        self.namespace = NetNamespace("forwarder")
        command = tied(build.command("bench_forwarder", user_ports))
        with self.namespace.entered():
            self._process = subprocess.Popen(command, stdout=subprocess.PIPE)
        line = LineReader(self._process.stdout).line(READY_SECONDS, "bench_forwarder")
        if line != "bench_forwarder: ready":
            raise BenchError(f"bench_forwarder said {line!r}")

    @property
    def pid(self):
        return self._process.pid

    def close(self):
        stop(self._process)
        self.namespace.close()


class Side:
    """A process that forwards, and the hosts at its ports. Their kernels answer nothing."""

    def __init__(self, stack, cores, make):
        self._cores = cores
        with cores.starting_on(cores.device):
            self.switch = stack.enter_context(contextlib.closing(make(Build("host"), USER_PORTS)))
        self._hosts = stack.enter_context(contextlib.closing(NetNamespace("hosts")))
        names = [host_interface(port) for port in range(1, USER_PORTS + 1)]
        self.switch.namespace.ip(*(f"link set {name} netns {self._hosts.holder_pid}" for name in names))
        self._hosts.ip(*(f"link set {name} arp off up" for name in names))
        poll_until(lambda: all(map(self._hosts.is_operational, names)), LINK_SECONDS, "A link on every port")
        self._processes = [self.switch.pid, *softirq_threads(cores.device)]
        self.train = 1
        self.train = self._usable_train()

    def _usable_train(self):
        done = self._run(SENDER, "--first", SENDING_STATION, "stream", "--train", TRAIN, "--seconds", TRIAL_SECONDS)
        return TRAIN if done.returncode == 0 and int(done.stdout) > 0 else 1

    def _command(self, port, *words):
        return tied(Build("host").command("bench_traffic", host_interface(port), *words))

    def _run(self, port, *words):
        with self._hosts.entered(), self._cores.starting_on(self._cores.sender):
            return subprocess.run(self._command(port, *words), capture_output=True, text=True, timeout=PROGRAM_SECONDS)

    def introduce(self):
        """The receiving station and the sending one send their first frames."""
        for port, station, to in ((RECEIVER, 0, SENDING_STATION), (SENDER, SENDING_STATION, 0)):
            done = self._run(port, "--first", station, "introduce", "--to", to)
            if done.returncode != 0:
                raise BenchError(f"A station could not send its first frame: {done.stderr}")

    def _stream(self, case, seconds):
        return self._command(SENDER, "--first", SENDING_STATION, "stream", "--size", SIZE, "--train", self.train,
                             "--seconds", seconds, *case.options)  # fmt: skip

    def measure(self, case):
        """Frames that arrive for each second of processor time."""
        with self._hosts.entered(), self._cores.starting_on(self._cores.sender):
            words = self._stream(case, WARM_SECONDS + SECONDS + SPARE_SECONDS)
            stream = subprocess.Popen(words, stdout=subprocess.DEVNULL)
        try:
            time.sleep(WARM_SECONDS)
            before = self._sample()
            time.sleep(SECONDS)
            after = self._sample()
        finally:
            stop(stream)
        return frames_a_second(before, after, case)

    def pass_all(self, case, seconds):
        """The number of frames that have arrived when the last one has."""
        counts = [self._arrived()]
        with self._hosts.entered(), self._cores.starting_on(self._cores.sender):
            subprocess.run(self._stream(case, seconds), check=True, stdout=subprocess.DEVNULL, timeout=PROGRAM_SECONDS)

        def is_quiet():
            counts.append(self._arrived())
            return counts[-1] == counts[-2]

        poll_until(is_quiet, DRAIN_SECONDS, "The end of the stream", DRAIN_PAUSE)
        return counts[-1] - counts[0]

    def _arrived(self):
        return self._sample()[0][host_interface(RECEIVER)][RECEIVED_FRAMES]

    def _sample(self):
        with self._hosts.entered():
            return counts_of_interfaces(), seconds_of(self._processes)


def frames_a_second(before, after, case):
    """Between two readings of all interfaces' counts and of the processor time."""
    def arrived(port):
        name = host_interface(port)
        return after[0][name][RECEIVED_FRAMES] - before[0][name][RECEIVED_FRAMES]

    astray = [port for port in EVERYBODY_ELSE if port not in case.receivers and arrived(port)]
    if astray:
        raise BenchError(f"{case.name}: frames have been sent to the ports {astray}")
    counts = [arrived(port) for port in case.receivers]
    if not min(counts):
        raise BenchError(f"{case.name}: no frames arrive")
    return sum(counts) / len(counts) / (after[1] - before[1])


class Profiled(Build):
    """A build whose daemon runs under the profiler."""

    def command(self, program, *arguments):
        profiler = ["/usr/bin/valgrind", "--tool=callgrind", "--callgrind-out-file=/dev/null"]
        return [*(profiler if program == "vdeviced" else []), *super().command(program, *arguments)]


def start(stack, cores, make):
    """A side that knows the stations."""
    side = Side(stack, cores, make)
    side.introduce()
    return side


def start_device(stack, cores, build):
    side = start(stack, cores, lambda _, user_ports: Device(build, user_ports))
    poll_until(lambda: len(side.switch.control("macs")["macs"]) == 2, LEARN_SECONDS, "The learning of two addresses")
    return side


def profiled(cores, case, seconds):
    """(instructions of the daemon in its whole life, frames that it has passed)"""
    with contextlib.ExitStack() as stack:
        side = start_device(stack, cores, Profiled("host"))
        frames = side.pass_all(case, seconds)
        side.switch.end()
        collected = re.search(r"Collected : (\d+)", side.switch.errors())
    if not collected:
        raise BenchError("The profiler does not say what the device has cost.")
    return int(collected[1]), frames


def own_instructions(cores, case):
    """For a frame; what the daemon needs besides is the same in a short and in a long life."""
    (few, few_frames), (many, many_frames) = (profiled(cores, case, seconds) for seconds in PROFILED_SECONDS)
    if many_frames <= few_frames:
        raise BenchError("The profiled device passes too few frames.")
    return round((many - few) / (many_frames - few_frames))


def cache_line(cores):
    """Nanoseconds for a cache line from the sender's core to the device's."""
    words = Build("host").command("bench_cache_line", cores.sender, cores.device)
    return float(subprocess.run(words, capture_output=True, text=True, check=True, timeout=PROGRAM_SECONDS).stdout)


def class_of(nanoseconds):
    """The power of 4 that is not above it."""
    return LINE_CLASS ** int(math.log(max(nanoseconds, 1), LINE_CLASS))


class Pair(NamedTuple):
    """Two measurements in a row."""

    line: int
    device: float
    bare: float


def rows_of(case, pairs):
    """A row for each class of the cache line's cost."""
    rows = []
    for line in sorted({pair.line for pair in pairs}):
        alike = [pair for pair in pairs if pair.line == line]
        ratios = [pair.device / pair.bare for pair in alike]
        low, _, high = statistics.quantiles(ratios, n=4) if len(ratios) > 1 else ratios * 3
        thousands = (round(statistics.median(rates) / 1000) for rates in zip(*((p.device, p.bare) for p in alike)))
        rows.append([case.name, f"{line} to {LINE_CLASS * line}", len(alike), *thousands, statistics.median(ratios), low, high])
    return rows


def measure_pair(cores, case, device, bare, bare_first):
    line = class_of(cache_line(cores))
    order = (bare, device) if bare_first else (device, bare)
    rates = {side: side.measure(case) for side in order}
    return Pair(line, rates[device], rates[bare])


@contextlib.contextmanager
def stopped_follower(device, seconds=0.3):
    """A client follows the device's frames and reads nothing."""
    follower = device.switch.popen([device.switch.control_program, "follow"], stdout=subprocess.DEVNULL)
    time.sleep(seconds)
    follower.send_signal(signal.SIGSTOP)
    try:
        yield
    finally:
        follower.send_signal(signal.SIGCONT)
        stop(follower)


def followed_row(cores, case, device, rounds):
    """The device beside such a client and without."""
    ratios = []
    for _ in rounds:
        line = class_of(cache_line(cores))
        alone = device.measure(case)
        with stopped_follower(device):
            followed = device.measure(case)
        ratios += [followed / alone] if class_of(cache_line(cores)) == line else []
    if len(ratios) < 2:
        raise BenchError("The cost of a cache line changes too often.")
    low, middle, high = statistics.quantiles(ratios, n=4)
    return [case.name, len(ratios), middle, low, high]


def measure(options):
    return measure_in_namespaces(__name__, options)


def measure_inside(options):
    cores, rows, followed = Cores(), [], []
    with contextlib.ExitStack() as stack:
        device, bare = start_device(stack, cores, Build("host")), start(stack, cores, Forwarder)
        for case in CASES:
            rounds = range(QUICK_ROUNDS if options.quick else ROUNDS)
            rows += rows_of(case, [measure_pair(cores, case, device, bare, number % 2) for number in rounds])
            followed.append(followed_row(cores, case, device, rounds))
    columns = ["frames of 64 octets", "cache line", "pairs", "device", "bare", "ratio", "from", "to"]
    rates = {"title": "Thousands of frames", "columns": columns, "rows": rows}
    own = [[CASES[0].name, own_instructions(cores, CASES[0])]]
    counts = {"title": "The device's own instructions for a frame", "columns": ["frames", "instructions"], "rows": own}
    beside = {"title": "Beside a client that follows frames and reads nothing", "rows": followed,
              "columns": ["frames of 64 octets", "pairs", "ratio to without it", "from", "to"]}  # fmt: skip
    return {"tables": [rates, beside, counts], "notes": NOTES}
