"""The hosts of the soak test, each with a talker program in its namespace."""

import contextlib
import json
import pathlib
import subprocess
import sys

from adp.lab import LabError
from adp.lab.process import LineReader, poll_until, stop

TALKER = pathlib.Path(__file__).parent / "talker.py"
ANSWER_SECONDS = 20.0
FLOW_SECONDS = 30.0
FLOW_PAUSE = 0.2
# No frame is under way any more when so many readings are equal.
STEADY_READINGS = 3
# A talker ends by itself this long after the test.
SPARE_SECONDS = 300
# An intruder sends this share of the other hosts' rate.
INTRUDER_SHARE = 0.1


class Station:
    """A host and its talker. It receives the VLAN `vid`, 0 for none, and sends in the VLANs `speaks`."""

    def __init__(self, lab, port, number, vid, speaks):
        self.host = lab.hosts[port]
        self.number, self.vid, self.speaks = number, vid, speaks
        self.mac = bytes([0x02, 0xAD, 0x00, 0x10, 0x00, number])
        self._process = None
        self.counts = {}

    def start(self, partners, rate, seconds, seed):
        settings = {
            "number": self.number, "mac": self.mac.hex(), "vid": self.vid, "speaks": self.speaks, "rate": rate,
            "partners": {each.number: each.mac.hex() for each in partners},
            "seconds": seconds + SPARE_SECONDS, "seed": f"{seed} {self.number}",
        }  # fmt: skip
        command = [sys.executable, "-B", TALKER, self.host.nic.interface, json.dumps(settings)]
        self._process = self.host.device.popen(
            command, self.host.namespace, stdin=subprocess.PIPE, stdout=subprocess.PIPE
        )
        self._lines = LineReader(self._process.stdout)

    def ask(self, word="counts"):
        """The counts so far, after the talker has done what the word says."""
        try:
            self._process.stdin.write(word.encode() + b"\n")
            self._process.stdin.flush()
        except BrokenPipeError:
            raise LabError(f"The talker of host {self.number} has died.") from None
        self.counts = json.loads(self._lines.line(ANSWER_SECONDS, f"The talker of host {self.number}"))
        return self.counts

    def close(self):
        if self._process:
            stop(self._process)


class Stations:
    """All talkers. Those of a VLAN send to each other; those of none, the intruders, send into all VLANs."""

    def __init__(self, stations):
        self.all = list(stations)
        self.insiders = [each for each in self.all if each.vid]

    def partners(self, station):
        return [each for each in self.insiders if each is not station and each.vid in station.speaks]

    def start(self, rate, seconds, seed):
        for each in self.all:
            own_rate = rate if each.vid else max(1, rate * INTRUDER_SHARE)
            each.start(self.partners(each), own_rate, seconds, seed)

    def ask(self, word="counts"):
        for each in self.all:
            each.ask(word)
        self.check()

    def check(self):
        """No frame was misplaced, repeated or changed."""
        complaints = [text for each in self.all for text in each.counts["complaints"]]
        if complaints:
            raise LabError(f"Hosts report {len(complaints)} wrong frames, for example: {complaints[0]}")

    def total(self, name):
        return sum(each.counts.get(name, 0) for each in self.all)

    def received(self):
        return sum(sum(each.counts.get("received", {}).values()) for each in self.all)

    def await_flow(self, when):
        """Waits until every host has received another frame from every other host of its VLAN."""
        self.ask()
        before = {each: dict(each.counts["received"]) for each in self.insiders}

        def silent():
            self.ask()
            return [
                f"{sender} to {each.number}"
                for each in self.insiders
                for sender, count in each.counts["received"].items()
                if count == before[each][sender]
            ]

        try:
            poll_until(lambda: not silent(), FLOW_SECONDS, "It", FLOW_PAUSE)
        except LabError:
            raise LabError(f"{when}, nothing arrives from these hosts: {', '.join(silent())}.") from None

    def pause(self):
        """Stops all talkers, and waits until no more frames arrive."""
        self.ask("pause")
        self._settle()

    def go_on(self):
        self.ask("go")

    def flood(self, frames):
        """Each talker sends so many frames as fast as it can."""
        self.ask(f"flood {frames}")

    def await_end_of_flood(self):
        poll_until(lambda: not self._flooding(), FLOW_SECONDS, "The end of the flood", FLOW_PAUSE)
        self._settle()

    def _flooding(self):
        self.ask()
        return self.total("to_flood")

    def _settle(self):
        counted = list(range(-STEADY_READINGS, 0))

        def settled():
            self.ask()
            counted.append(self.total("taken"))
            return len(set(counted[-STEADY_READINGS:])) == 1

        poll_until(settled, FLOW_SECONDS, "The end of all frames", FLOW_PAUSE)

    def close(self):
        for each in self.all:
            with contextlib.suppress(LabError):
                each.close()
