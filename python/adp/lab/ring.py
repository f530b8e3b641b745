"""Three devices cabled in a ring, each with a host, and the example program ring_protection on some of them.

    with Ring() as ring:
        ring.labs[0].hosts[HOST].send(frame)
        ring.arrivals(marker)                # ({}, {HOST: [frame]}, {HOST: [frame]})

The ring is closed as soon as it is there, and frames run around in it until somebody blocks a port: do so before any
host speaks.
"""

import contextlib
import os
import signal
import subprocess

from .bench import Lab
from .builds import Build
from .cable import End, arrivals, await_links, lay_cable
from .process import LineReader, stop

DEVICES = 3
HOST = 1
# Each device's cable to the one before it, and to the one after it.
BEFORE, BEHIND = 2, 3
RING_PORTS = (BEFORE, BEHIND)
LINE_SECONDS = 20.0


class Ring:
    """`labs[0]` to `labs[2]`; the port BEHIND of each is cabled to the port BEFORE of the next, the last one's to the
    first.
    """

    def __init__(self, device_build="host"):
        self._stack = contextlib.ExitStack()
        self.labs = tuple(Lab(device_build, {HOST}, HOST + len(RING_PORTS), f"ring {at}") for at in range(DEVICES))

    def __enter__(self):
        with self._stack as stack:
            for lab in self.labs:
                stack.enter_context(lab)
            for at, lab in enumerate(self.labs):
                lay_cable(End(lab, BEHIND), End(self.labs[(at + 1) % DEVICES], BEFORE))
            self.await_cables()
            self._stack = stack.pop_all()
        return self

    def __exit__(self, *problem):
        return self._stack.__exit__(*problem)

    @property
    def hosts(self):
        """Each device's host."""
        return [lab.hosts[HOST] for lab in self.labs]

    def mac(self):
        """A unicast address that no other frame of this bench has used. One lab makes all of them."""
        return self.labs[0].mac()

    def pull(self, at):
        """Pulls the cable behind a device, at that device."""
        self.labs[at].device.control("pull", BEHIND)

    def plug(self, at):
        """Plugs the cable behind a device in again."""
        self.labs[at].device.control("plug", BEHIND)

    def await_cables(self, without=None):
        """Waits until all devices see a link on all cables but the one behind this device."""
        lost = set() if without is None else {(without, BEHIND), ((without + 1) % DEVICES, BEFORE)}
        for at, lab in enumerate(self.labs):
            await_links(lab, set(RING_PORTS), {port for port in RING_PORTS if (at, port) not in lost})

    def arrivals(self, marker):
        """The frames at the hosts of each device, as one answer of Lab.arrivals() for each."""
        return arrivals(self.labs, marker)

    def frames_on_cables(self):
        """How many frames all devices together have received on the ring's cables."""
        rows = (row for lab in self.labs for row in lab.device.control("ports")["ports"])
        return sum(row["rx_frames"] for row in rows if row["port"] in RING_PORTS)


class RingProgram:
    """A running ring_protection, which prints a line for each change."""

    def __init__(self, device, build, role):
        self._process = device.popen(
            Build(build).command("ring_protection", role, *RING_PORTS),
            stdin=subprocess.PIPE,
            stdout=subprocess.PIPE,
            stderr=subprocess.STDOUT,
        )
        self._lines = LineReader(self._process.stdout)
        self._name = f"ring_protection on {device.name}"

    def line(self):
        """Its next line."""
        return self._lines.line(LINE_SECONDS, self._name)

    def has_line(self):
        """Whether line() returns at once."""
        return self._lines.has_line()

    def end(self):
        """Lets the program end; gives its last line and its exit status."""
        self._process.stdin.close()
        return self.line(), self.wait()

    def wait(self):
        """Waits for the program's end; gives its exit status."""
        return self._process.wait(LINE_SECONDS)

    def kill_watcher(self):
        """Kills the second process, which is the program's only child."""
        pid = self._process.pid
        with open(f"/proc/{pid}/task/{pid}/children", encoding="ascii") as children:
            (watcher,) = children.read().split()
        os.kill(int(watcher), signal.SIGKILL)

    def close(self):
        stop(self._process)
