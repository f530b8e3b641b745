"""Load on all ports of a device: the host at each port sends to the next one, and all count what arrives."""

import contextlib
import json
import os
import select
import signal
import time

from adp.lab.frames import ETHERTYPE_EXPERIMENT, ethernet
from adp.lab.process import LineReader

MARKER, INTRODUCTION = b"<panel load>", b"<introduction>"
BROADCAST = b"\xff" * 6
FRAME_BYTES, BURST_FRAMES = 64, 8
STEADY_SECONDS, LONGEST_SECONDS = 0.5, 300
SECONDS = 60


def station(port):
    return bytes([0x02, 0xAD, 0xFE, 0, 0, port])


class _Hosts:
    """What the process of a load does with the hosts of a lab."""

    def __init__(self, lab):
        self._nics = {port: host.nic for port, host in lab.hosts.items()}
        self.sent = dict.fromkeys(self._nics, 0)
        self.arrived = dict.fromkeys(self._nics, 0)
        ports = list(self._nics)
        following = dict(zip(ports, ports[1:] + ports[:1], strict=True))
        self._frames = {port: self._frame(station(following[port]), port, MARKER) for port in ports}
        self._introduce()

    @staticmethod
    def _frame(destination, port, payload):
        return ethernet(destination, station(port), ETHERTYPE_EXPERIMENT, payload).ljust(FRAME_BYTES, b".")

    def _introduce(self):
        """The device learns where everybody is, so that nothing of the load is flooded."""
        for port, nic in self._nics.items():
            nic.send(self._frame(BROADCAST, port, INTRODUCTION))
        missing = {port: len(self._nics) - 1 for port in self._nics}
        deadline = time.monotonic() + SECONDS
        while any(missing.values()) and time.monotonic() < deadline:
            for port, nic in self._nics.items():
                missing[port] -= sum(INTRODUCTION in frame for frame in nic.waiting())
            time.sleep(0.01)

    def send(self):
        for port, nic in self._nics.items():
            for _ in range(BURST_FRAMES):
                with contextlib.suppress(BlockingIOError):
                    nic.send(self._frames[port])
                    self.sent[port] += 1

    def take(self):
        """How many frames of the load have arrived since the last time."""
        new = 0
        for port, nic in self._nics.items():
            count = sum(MARKER in frame for frame in nic.waiting())
            self.arrived[port] += count
            new += count
        return new

    def settle(self):
        """Takes what is still under way."""
        steady = time.monotonic() + STEADY_SECONDS
        while time.monotonic() < steady:
            if self.take():
                steady = time.monotonic() + STEADY_SECONDS
            time.sleep(0.01)

    def run(self, stop, pause):
        while not select.select([stop], [], [], pause)[0]:
            self.send()
            self.take()
        self.settle()
        return {"sent": self.sent, "arrived": self.arrived}


class Load:
    """A load that goes on beside, in a process of its own, until it is ended."""

    def __init__(self, lab, pause):
        stop, self._stop = os.pipe()
        answer, child_answer = os.pipe()
        self._pid = os.fork()
        if self._pid == 0:
            os.close(self._stop)
            self._work(lab, stop, child_answer, pause)
        os.close(stop)
        os.close(child_answer)
        self._answer = os.fdopen(answer, "rb", buffering=0)

    @staticmethod
    def _work(lab, stop, answer, pause):
        try:
            signal.alarm(LONGEST_SECONDS)
            os.write(answer, json.dumps(_Hosts(lab).run(stop, pause)).encode() + b"\n")
        finally:
            os._exit(0)

    def end(self):
        """{"sent": {port: frames}, "arrived": {port: frames}}"""
        os.close(self._stop)
        self._stop = None
        found = json.loads(LineReader(self._answer).line(SECONDS, "The load"))
        return {what: {int(port): count for port, count in counts.items()} for what, counts in found.items()}

    def close(self):
        if self._stop is not None:
            os.close(self._stop)
        self._answer.close()
        os.waitpid(self._pid, 0)


@contextlib.contextmanager
def load_on(lab, pause=0.0):
    """A load on an adp.lab.Lab, with a pause in seconds between bursts."""
    load = Load(lab, pause)
    try:
        yield load
    finally:
        load.close()
