"""The rate at which a flow passes, by the device's counters and clock."""

import contextlib
import threading
import time
from typing import NamedTuple

from crossing import SENDER

TOLERANCE = 0.05
SECONDS = 1.2
BURST_FRAMES = 4
BURST_PAUSE = 0.004
POLL_PAUSE = 0.002
CLOSE = 0.01
STEADY_SECONDS = 20.0
MORE_THAN_A_BUCKET = 80


class Reading(NamedTuple):
    """Frames that a limit has passed and dropped, and the device's time."""

    passed: int
    dropped: int
    time: float


def reading(rows, when, **wanted):
    """The reading of the one row of a table that has these members."""
    row = next(row for row in rows if wanted.items() <= row.items())
    return Reading(row["passed"], row["dropped"], when)


@contextlib.contextmanager
def overload(crossing, packet):
    """A sender whose frames arrive several times as fast as any limit passes them."""
    marker = crossing.lab.marker()
    frame = packet.build(marker)
    ended = threading.Event()

    def send():
        while not ended.wait(BURST_PAUSE):
            for _ in range(BURST_FRAMES):
                crossing.lab.hosts[SENDER].send(frame)

    sender = threading.Thread(target=send)
    sender.start()
    try:
        yield
    finally:
        ended.set()
        sender.join()
        crossing.lab.arrivals(marker)


def reading_at_the_limit(read):
    """A reading just after a dropped frame, when the limit is used up."""
    deadline = time.monotonic() + STEADY_SECONDS
    before = read()
    while time.monotonic() < deadline:
        time.sleep(POLL_PAUSE)
        now = read()
        if now.dropped > before.dropped and now.time - before.time < CLOSE:
            return now
        before = now
    raise AssertionError(f"The limit was not reached within {STEADY_SECONDS} s.")


def frame_rate(crossing, read, packet):
    """Frames a second of a flow that is over a limit; `read` gives the limit's reading."""
    with overload(crossing, packet):
        first = reading_at_the_limit(read)
        time.sleep(SECONDS)
        last = reading_at_the_limit(read)
    return (last.passed - first.passed) / (last.time - first.time)
