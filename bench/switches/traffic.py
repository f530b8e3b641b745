"""Stations that introduce themselves to a switch, and the stream from one of them to the others."""

import contextlib
import subprocess

from bench.problem import BenchError
from adp.lab import Build
from adp.lab.process import stop, tied

from .bed import RECEIVER, SENDER, far_end

# The receiving stations are numbered from 0. The virtual device's table has buckets for addresses in a row; where 8000
# of them leave room for one more, the sender's number puts it.
SENDING_STATION = 66436
INTRODUCTION_SECONDS = 60.0
HEADER_BYTES = 14
# A kernel that takes trains of frames apart makes the sender twice as fast; flows take turns train by train.
TRAIN = 8
TRIAL_SECONDS = 0.01
FIRST_STATION = bytes.fromhex("02be00000000")


class Traffic:
    """Frames in and out of the bed's hosts."""

    def __init__(self, bed, cores):
        self._bed, self._cores = bed, cores
        self.train = 1

    def use_trains(self):
        """Sends trains from now on if this kernel can; the sender's interface must be up."""
        words = self._command(SENDER, "stream", "--train", TRAIN, "--seconds", TRIAL_SECONDS)
        with self._bed.hosts[SENDER].entered():
            done = subprocess.run(words, capture_output=True, text=True, timeout=INTRODUCTION_SECONDS)
        self.train = TRAIN if done.returncode == 0 and int(done.stdout) > 0 else 1

    def _command(self, port, *words):
        return tied(Build("host").command("bench_traffic", far_end(port), *words))

    def introduce(self, stations):
        """Each station on either side sends a frame to one that the switch knows, the very first excepted."""
        for port, first, count, to in ((RECEIVER, 0, stations, SENDING_STATION), (SENDER, SENDING_STATION, 1, 0)):
            words = self._command(port, "--first", first, "--stations", count, "introduce", "--to", to)
            with self._bed.hosts[port].entered(), self._cores.starting_on(self._cores.stream):
                done = subprocess.run(words, capture_output=True, text=True, timeout=INTRODUCTION_SECONDS)
            if done.returncode != 0 or int(done.stdout) != count:
                raise BenchError(f"{count} stations could not introduce themselves: {done.stdout} {done.stderr}")

    @contextlib.contextmanager
    def stream(self, flows, stations, size, seconds):
        """The stream's process while frames go from the sender to the receivers, for so long at most."""
        words = self._command(SENDER, "--first", SENDING_STATION, "--stations", stations, "stream", "--flows", flows,
                              "--size", size, "--train", self.train, "--seconds", seconds)  # fmt: skip
        with self._bed.hosts[SENDER].entered(), self._cores.starting_on(self._cores.stream):
            process = subprocess.Popen(words, stdout=subprocess.PIPE)
        try:
            yield process
            if process.poll() is not None:
                raise BenchError("The stream of frames has ended before its time.")
        finally:
            stop(process)
