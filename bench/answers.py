"""How long the virtual device takes to answer a driver call while others ask for much, and to start."""

import contextlib
import ctypes
import os
import statistics
import subprocess
import sys
import tempfile
import time
from typing import NamedTuple

from adp.lab import Build
from adp.lab.device import Device, host_interface
from adp.lab.nic import Nic
from adp.lab.process import poll_until, stop, tied

from bench.bars import plot_bars
from bench.isolated import measure_in_namespaces
from bench.problem import BenchError

NAME = "answers"
TITLE = "The virtual device's answers to driver calls, and its start"
TARGETS = {"host": ["vdeviced", "vdevctl", "netlink_api"]}
HAS_COUNTS = False
CALLS, QUICK_CALLS = 2000, 300
STARTS, QUICK_STARTS = 7, 3
PAUSE_SECONDS = 0.001
LOAD_SECONDS = 60.0
FILL_SECONDS = 20.0
READY_SECONDS = 20.0
CLIENTS = 29
ADDRESSES = 8000
USER_PORTS = 26
MILLI = 1000
LIBRARY = "libnetlink_api.so"
NOTES = [
    f"A call reads a port's state, again a millisecond after each answer. The device knows {ADDRESSES} addresses; "
    f"{CLIENTS} control clients do all the time what stands in the row.",
    "'ip' is the time in which the command ip makes the same interfaces and nothing else.",
]


class Load(NamedTuple):
    """What the control clients do."""

    title: str
    request: bytes
    reads: bool


LOADS = (
    Load("nothing", b"", True),
    Load("ask for the ports", b'{"command": "ports"}\n', True),
    Load("ask for the addresses", b'{"command": "macs", "form": "text"}\n', True),
    Load("ask for the addresses and do not read", b'{"command": "macs"}\n' * 20, False),
    Load("send 64 KB of lists", b'{"command": "ports", "x": [' + b"[]," * 20000 + b"[]]}\n", True),
    Load("send 64 KB of numbers", b'{"command": "ports", "x": [' + b"1," * 32000 + b"1]}\n", True),
)


def run_load(run_dir, number):
    """Control clients in one process: each asks again as soon as it has its answer."""
    import selectors
    import socket

    load, waiting = LOADS[number], selectors.DefaultSelector()
    for _ in range(CLIENTS if load.request else 0):
        client = socket.socket(socket.AF_UNIX)
        client.connect(os.path.join(run_dir, "control"))
        client.sendall(load.request)
        if load.reads:
            waiting.register(client, selectors.EVENT_READ)
    print("ready", flush=True)
    end = time.monotonic() + LOAD_SECONDS
    while time.monotonic() < end:
        for key, _ in waiting.select(0.1) if load.reads and load.request else []:
            if key.fileobj.recv(1 << 20).endswith(b"\n"):
                key.fileobj.sendall(load.request)
        if not (load.reads and load.request):
            time.sleep(0.1)


@contextlib.contextmanager
def loaded(run_dir, number):
    command = tied([sys.executable, "-B", "-m", "bench.answers", run_dir, number])
    with subprocess.Popen(list(map(str, command)), stdout=subprocess.PIPE, text=True) as process:
        try:
            if process.stdout.readline() != "ready\n":
                raise BenchError("The control clients could not start.")
            yield
        finally:
            process.kill()


def learn(device):
    """Fills the device's table from the first host."""
    device.namespace.ip(f"link set {host_interface(1)} up")
    device.await_links([1])
    host = Nic(device.namespace, host_interface(1))
    for number in range(ADDRESSES):
        host.send(b"\xff" * 6 + b"\x02\x00\x00\x00" + number.to_bytes(2, "big") + b"\x08\x00" + bytes(46))
        if number % 100 == 0:
            time.sleep(PAUSE_SECONDS)
    poll_until(lambda: len(device.ask("macs")["macs"]) > ADDRESSES * 9 // 10, FILL_SECONDS, "A table full of addresses")


def caller(device):
    """A driver call, as a program on the device makes it."""
    os.environ["VDEVICE_DIR"] = device.run_dir
    library = ctypes.CDLL(str(Build("host").folder / LIBRARY))
    enabled = ctypes.c_int()

    def call():
        if library.user_port_enable_get(0, 0, device.physical(1), ctypes.byref(enabled)) != 0:
            raise BenchError("The device does not answer a driver call.")

    return call


def latencies(call, count):
    """Milliseconds, sorted."""
    times = []
    for _ in range(count):
        begin = time.perf_counter()
        call()
        times.append((time.perf_counter() - begin) * MILLI)
        time.sleep(PAUSE_SECONDS)
    return sorted(times)


def answer_rows(calls):
    with contextlib.closing(Device(Build("host"), USER_PORTS)) as device:
        learn(device)
        call, rows = caller(device), []
        for number, load in enumerate(LOADS):
            with loaded(device.run_dir, number):
                times = latencies(call, calls)
            rows.append([load.title, statistics.median(times), times[len(times) * 99 // 100], times[-1]])
    return rows


def start_milliseconds(folder, *options):
    """(until it is ready, until it has ended)"""
    command = [str(Build("host").folder / "vdeviced"), "--run-dir", folder, *options]
    begin = time.perf_counter()
    with subprocess.Popen(tied(command), stdout=subprocess.PIPE, text=True) as daemon:
        if daemon.stdout.readline() != "vdeviced: ready\n":
            raise BenchError("The device does not start.")
        ready = time.perf_counter()
        stop(daemon)
    return (ready - begin) * MILLI, (time.perf_counter() - ready) * MILLI


def ip(text):
    begin = time.perf_counter()
    subprocess.run(["ip", "-batch", "-"], input=text, text=True, check=True)
    return (time.perf_counter() - begin) * MILLI


def start_rows(starts):
    sides = [("cpu0", "eth0"), *((f"port{i}", f"host{i}") for i in range(1, USER_PORTS + 1))]
    pairs = "".join(f"link add {near} mtu 9300 type veth peer name {far} mtu 9300\n" for near, far in sides)
    with tempfile.TemporaryDirectory() as folder:
        rounds = []
        for _ in range(starts):
            made = start_milliseconds(folder, "--create-interfaces")
            alone = ip(pairs)
            there = start_milliseconds(folder)
            ip("".join(f"link del {near}\n" for near, _ in sides))
            rounds.append([*made, *there, alone])
    made, made_end, there, there_end, alone = map(statistics.median, zip(*rounds))
    return [["makes its interfaces", made, made_end, alone], ["finds its interfaces", there, there_end, None]]


def measure(options):
    return measure_in_namespaces(__name__, options)


def measure_inside(options):
    calls, starts = (QUICK_CALLS, QUICK_STARTS) if options.quick else (CALLS, STARTS)
    answers = {
        "title": "Milliseconds until a driver call is answered",
        "columns": ["control clients", "median", "99th percentile", "longest"],
        "rows": answer_rows(calls),
    }
    start = {
        "title": f"Milliseconds of a device of {USER_PORTS} ports",
        "columns": ["device", "until ready", "until ended", "ip"],
        "rows": start_rows(starts),
    }
    return {"tables": [answers, start], "notes": NOTES}


def plot(result, path):
    [answers, _] = result["tables"]
    labels = [row[0].replace(" and ", "\nand ") for row in answers["rows"]]
    plot_bars(path, labels, {"99th percentile": [row[2] for row in answers["rows"]]}, "milliseconds")


if __name__ == "__main__":
    run_load(sys.argv[1], int(sys.argv[2]))
