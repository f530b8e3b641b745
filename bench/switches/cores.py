"""Who runs on which core, and how much of it he has used."""

import contextlib
import os
import pathlib

from bench.problem import BenchError

NANOSECONDS = 1e9


class Cores:
    """One core for the switch, another for the stream of frames."""

    def __init__(self):
        cores = sorted(os.sched_getaffinity(0))
        if len(cores) < 2:
            raise BenchError("The stream of frames needs a core beside the switch's, and there is only one.")
        self.stream, self.switch = cores[0], cores[-1]

    @staticmethod
    @contextlib.contextmanager
    def starting_on(core):
        """Processes that are started meanwhile stay on the core."""
        before = os.sched_getaffinity(0)
        os.sched_setaffinity(0, {core})
        try:
            yield
        finally:
            os.sched_setaffinity(0, before)


def seconds_of(pids):
    """Seconds of a core that these processes' threads have used. A thread that has ended meanwhile is not counted."""
    total = 0
    for pid in pids:
        for thread in pathlib.Path(f"/proc/{pid}/task").iterdir():
            with contextlib.suppress(FileNotFoundError, ProcessLookupError):
                total += int((thread / "schedstat").read_text(encoding="ascii").split()[0])
    return total / NANOSECONDS


def helper_of(core):
    """[process id] of the kernel's thread that takes over when there are more frames than fit between two tasks."""
    for folder in pathlib.Path("/proc").glob("[0-9]*"):
        with contextlib.suppress(FileNotFoundError, ProcessLookupError):
            if (folder / "comm").read_text(encoding="ascii").strip() == f"ksoftirqd/{core}":
                return [int(folder.name)]
    return []
