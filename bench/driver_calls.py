"""Driver calls through the remote driver, beside messages of the same sizes without anything around them."""

import contextlib
import os
import re
import statistics
import subprocess
import tempfile
import time

from bench.bars import plot_bars
from bench.isolated import measure_in_namespaces
from bench.problem import BenchError
from bench.switches.cores import Cores, seconds_of
from adp.lab import Build
from adp.lab.device import Device
from adp.lab.process import poll_until, stop, tied

NAME = "driver_calls"
TITLE = "Driver calls through the remote driver, beside bare messages over a Unix socket"
PROGRAMS = ("bench_driver_calls", "bench_ping_pong")
TARGETS = {"host": [*PROGRAMS, "vdeviced", "vdevctl"]}
KINDS = {
    "get": "user_port_enable_get",
    "set": "user_port_untagged_priority_set",
    "bitmaps": "user_vlan_port_get",
    "list": "user_stg_vlan_each_time_list, 64 elements",
}
CLIENTS = (1, 8)
ROUNDS, SECONDS = 5, 1.0
QUICK_ROUNDS, QUICK_SECONDS = 1, 0.3
MICROSECONDS = 1e6
SPARE_SECONDS = 30.0
BYTES_SENT = re.compile(r"(?:\d+ )?\s*send(?:to|msg)?\(.*= (\d+)$")
BYTES_RECEIVED = re.compile(r"(?:\d+ )?\s*recv(?:from|msg)?\(.*= (\d+)$")
MARK = re.compile(r"write\(-1,")
MARKS = 3
NOTES = [
    "A client makes one call after the other and waits for each answer. The bare messages have the same sizes, go back "
    "and forth over a Unix socket of the same kind, and nobody looks into them; both take turns in one run.",
    "The server, vdeviced or the bare one, has one core to itself, the clients share the other.",
]


def measure(options):
    return measure_in_namespaces(__name__, options)


def measure_inside(options):
    with contextlib.closing(Device(Build("host"), user_ports=1)) as device:
        sizes = {kind: sizes_of(device, kind) for kind in KINDS}
        counts = {f"host.{kind}.{part} bytes": size for kind, pair in sizes.items()
                  for part, size in zip(("request", "reply"), pair)}  # fmt: skip
        rows = [] if options.counts_only else rates(device, sizes, options.quick)
    columns = ["call", "clients", "request", "reply", "calls/s", "bare/s", "ratio", "vdeviced us", "bare us"]
    titles = [f"{kind}: {name}" for kind, name in KINDS.items()]
    table = {"title": f"Calls in a second ({'; '.join(titles)})", "columns": columns, "rows": rows}
    return {"tables": [table] if rows else [], "counts": counts, "notes": NOTES}


def plot(result, path):
    rows = [row for table in result["tables"] for row in table["rows"]]
    labels = [f"{kind}\n{clients} clients" for kind, clients, *_ in rows]
    series = {"driver calls": [row[4] for row in rows], "bare messages": [row[5] for row in rows]}
    plot_bars(path, labels, series, "in a second")


def sizes_of(device, kind):
    """(bytes of a request, bytes of its answer)"""
    with tempfile.NamedTemporaryFile("r", encoding="utf-8", errors="replace") as trace:
        command = ["strace", "-f", "-o", trace.name, *Build("host").command(PROGRAMS[0], kind)]
        done = device.popen(command, stdout=subprocess.DEVNULL).wait(SPARE_SECONDS)
        parts = [[]]
        for line in trace.read().splitlines():
            parts[-1].append(line)
            if MARK.search(line):
                parts.append([])
    if done != 0 or len(parts) != MARKS + 1:
        raise BenchError(f"The call {KINDS[kind]} fails.")
    return tuple(sum(int(found[1]) for line in parts[MARKS - 1] if (found := pattern.match(line)))
                 for pattern in (BYTES_SENT, BYTES_RECEIVED))  # fmt: skip


def rates(device, sizes, quick):
    rounds, seconds = (QUICK_ROUNDS, QUICK_SECONDS) if quick else (ROUNDS, SECONDS)
    cores = Cores()
    os.sched_setaffinity(device.pid, {cores.switch})
    rows = []
    for kind, pair in sizes.items():
        with ping_pong(cores, *pair) as (path, server):
            for clients in CLIENTS:
                through_driver = [PROGRAMS[0], kind, seconds]
                bare = [PROGRAMS[1], "ask", path, *pair, seconds]
                turns = [(crowd(device, cores, device.pid, clients, through_driver),
                          crowd(device, cores, server, clients, bare)) for _ in range(rounds)]  # fmt: skip
                rows.append([kind, clients, *pair, *figures(turns)])
    return rows


def figures(turns):
    """Medians: calls in a second, bare messages in a second, their ratio, and microseconds of either server."""
    (calls, work), (bare, bare_work) = ([statistics.median(column) for column in zip(*side)] for side in zip(*turns))
    ratio = statistics.median(ours[0] / theirs[0] for ours, theirs in turns)
    return round(calls), round(bare), ratio, work, bare_work


@contextlib.contextmanager
def ping_pong(cores, request, reply):
    """(path, process id) of a server of bare messages."""
    with tempfile.TemporaryDirectory() as folder:
        path = os.path.join(folder, "socket")
        with cores.starting_on(cores.switch):
            server = subprocess.Popen(tied(Build("host").command(PROGRAMS[1], "serve", path, request, reply)))
        try:
            poll_until(lambda: os.path.exists(path), SPARE_SECONDS, "The start of the bare server")
            yield path, server.pid
        finally:
            stop(server)


def crowd(device, cores, server, clients, words):
    """(calls of all clients in a second, microseconds that the server has worked for each)"""
    command = Build("host").command(*words)
    before, began = seconds_of([server]), time.monotonic()
    with cores.starting_on(cores.stream):
        running = [device.popen(command, stdout=subprocess.PIPE, text=True) for _ in range(clients)]
    counted = [int(process.communicate(timeout=SPARE_SECONDS)[0] or 0) for process in running]
    passed, worked = time.monotonic() - began, seconds_of([server]) - before
    if not all(counted):
        raise BenchError(f"A client of '{' '.join(map(str, words))}' got no right answer.")
    return sum(counted) / passed, worked / sum(counted) * MICROSECONDS
