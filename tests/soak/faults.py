"""What goes wrong around a device in the course of weeks, each as a function of the fabric, a side and a random source.
None of it may disturb anything but those who cause it; the run goes on and notices if it does.
"""

import contextlib
import json
import os
import resource
import signal
import socket
import subprocess
import time

from adp.lab import LabError
from adp.lab.device import host_interface
from adp.lab.frames import ETHERTYPE_EXPERIMENT, ethernet, vlan_tag
from adp.lab.nic import Nic
from adp.lab.process import poll_until
from health import descriptors

SECONDS = 1.0
CLIENTS = 40
ANSWERS = ("macs", "log", "fields", "queues", "watch")
REFUSAL_SECONDS = 10.0
# Of a processor, while a device without descriptors waits.
MOST_LOAD = 0.5
# Of each device: without a host, a cable to the other device or a manager.
SPARE_PORTS = (14, 4)
# Calls wait no longer than five seconds.
FLAPS, STILL_SECONDS = 25, 2.0
STATION, NOBODY = bytes.fromhex("02adfffffff0"), bytes.fromhex("02adfffffff1")
MISSING_VLAN = 4000  # or the frame would reach hosts of a device that has just been switched on
KILL_SECONDS = 0.05


@contextlib.contextmanager
def connections(device, name, count):
    """Connections to one of the device's sockets that do not wait for anything."""
    with contextlib.ExitStack() as stack:
        opened = []
        for _ in range(count):
            opened.append(stack.enter_context(socket.socket(socket.AF_UNIX)))
            opened[-1].setblocking(False)
            with contextlib.suppress(OSError):
                opened[-1].connect(os.path.join(device.run_dir, name))
        yield opened


def send_all(opened, data):
    for connection in opened:
        with contextlib.suppress(OSError):
            connection.send(data)


def second_daemon(fabric, side, _random):
    """Another daemon is started on the run folder of one that runs."""
    device = fabric.device(side)
    other = device.popen(device.command(), stdout=subprocess.DEVNULL, stderr=subprocess.PIPE, text=True)
    said = other.communicate(timeout=REFUSAL_SECONDS)[1]
    if other.returncode != 1 or not said.startswith("vdeviced: "):
        raise LabError(f"A second vdeviced on the {device.name} ended with {other.returncode} and said: {said}")
    device.ask("version")


def control_storm(fabric, side, random):
    """Many clients ask for much and read nothing."""
    device = fabric.device(side)
    with connections(device, "control", CLIENTS) as clients:
        until = time.monotonic() + SECONDS
        while time.monotonic() < until:
            send_all(clients, json.dumps({"command": random.choice(ANSWERS)}).encode() + b"\n")
            time.sleep(SECONDS / 100)


def nonsense(fabric, side, random):
    """Clients send what is no request, and half of one."""
    device = fabric.device(side)
    for name in ("control", "driver"):
        with connections(device, name, CLIENTS) as clients:
            for _ in range(10):
                send_all(clients, random.choice((random.randbytes(4096), b"[" * 4096, b'{"command":\x1b\n', b"\n" * 64)))


def half_handshakes(fabric, side, _random):
    """Clients connect to the driver's socket and say nothing more."""
    with connections(fabric.device(side), "driver", CLIENTS) as clients:
        send_all(clients[: CLIENTS // 2], b"ad")
        time.sleep(SECONDS)


def processor_seconds(pid):
    with open(f"/proc/{pid}/stat", encoding="ascii") as line:
        user, system = line.read().rsplit(")", 1)[1].split()[11:13]
    return (int(user) + int(system)) / os.sysconf("SC_CLK_TCK")


def no_descriptors(fabric, side, _random):
    """The daemon may open no more descriptors while clients connect: it must wait, not spin. The talkers rest, so that
    the processor time is not that of their frames.
    """
    device = fabric.device(side)
    fabric.stations.pause()
    limits = resource.prlimit(device.pid, resource.RLIMIT_NOFILE)
    resource.prlimit(device.pid, resource.RLIMIT_NOFILE, (descriptors(device.pid), limits[1]))
    try:
        with connections(device, "driver", CLIENTS), connections(device, "control", CLIENTS):
            began = processor_seconds(device.pid)
            time.sleep(SECONDS)
            used = processor_seconds(device.pid) - began
    finally:
        resource.prlimit(device.pid, resource.RLIMIT_NOFILE, limits)
    if used > MOST_LOAD * SECONDS:
        raise LabError(f"The {device.name} spent {used:g} s of {SECONDS:g} s while it had no descriptors.")
    poll_until(lambda: device.ask("version"), REFUSAL_SECONDS, "An answer after the descriptors had returned")
    fabric.stations.go_on()


def unseen_links(fabric, side, _random):
    """While the daemon stands still, more links change than it is told of, and a port's interface is made anew."""
    device = fabric.device(side)
    spare = SPARE_PORTS[side]
    port, host = f"port{spare}", host_interface(spare)
    flap = [f"link set {host} {state}" for _ in range(FLAPS) for state in ("up", "down")]
    with device.standing_still(STILL_SECONDS):
        until = time.monotonic() + STILL_SECONDS / 2
        device.namespace.ip(f"link delete {port}", f"link add {port} type veth peer name {host}")
        while time.monotonic() < until:
            device.namespace.ip(*flap)
        device.namespace.ip(f"link set {host} up")
    before = {}
    poll_until(lambda: device.links() >= {spare}, REFUSAL_SECONDS, f"A link on {port} of the {device.name}")
    with contextlib.closing(Nic(device.namespace, host)) as nic:

        def has_passed():
            nic.send(ethernet(NOBODY, STATION, ETHERTYPE_EXPERIMENT, b"".ljust(46, b"."), vlan_tag(MISSING_VLAN)))
            row = next(row for row in device.ask("counters")["counters"] if row["port"] == spare)
            return row["rx_frames"] > before.setdefault("frames", row["rx_frames"])

        poll_until(has_passed, REFUSAL_SECONDS, f"A frame through {port} of the {device.name}, which was made anew")


def killed_in_start(device, random):
    """A daemon is started and killed, wherever it is by then."""
    daemon = device.popen(device.command(), stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
    time.sleep(random.uniform(0, KILL_SECONDS))
    daemon.send_signal(signal.SIGKILL)
    daemon.wait(REFUSAL_SECONDS)


FAULTS = (second_daemon, control_storm, nonsense, half_handshakes, no_descriptors, unseen_links)
