"""Which process runs on which core, and the processor time that it has used."""

import contextlib
import os
import pathlib

from bench.problem import BenchError

NANOSECONDS = 1e9


class Cores:
    """One core for the device, another one for the sender."""

    def __init__(self):
        cores = sorted(os.sched_getaffinity(0))
        if len(cores) < 2:
            raise BenchError("This benchmark needs two cores, one for the device and one for the sender.")
        self.sender, self.device = cores[0], cores[-1]

    @staticmethod
    @contextlib.contextmanager
    def starting_on(core):
        """Processes that are started inside stay on the core."""
        before = os.sched_getaffinity(0)
        os.sched_setaffinity(0, {core})
        try:
            yield
        finally:
            os.sched_setaffinity(0, before)


def seconds_of(pids):
    """Processor seconds of all threads of these processes. Threads that have ended are not counted."""
    total = 0
    for pid in pids:
        for thread in pathlib.Path(f"/proc/{pid}/task").iterdir():
            with contextlib.suppress(FileNotFoundError, ProcessLookupError):
                total += int((thread / "schedstat").read_text(encoding="ascii").split()[0])
    return total / NANOSECONDS


def softirq_threads(core):
    """[process id] of the core's ksoftirqd, the kernel's thread that handles frames when there are many."""
    for folder in pathlib.Path("/proc").glob("[0-9]*"):
        with contextlib.suppress(FileNotFoundError, ProcessLookupError):
            if (folder / "comm").read_text(encoding="ascii").strip() == f"ksoftirqd/{core}":
                return [int(folder.name)]
    return []
