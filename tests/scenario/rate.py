"""How fast a flow gets through, judged by the device's own count of frames and its own clock."""

import time

from crossing import SENDER

TOLERANCE = 0.05
SECONDS = 1.2
BURST_FRAMES = 4
BURST_PAUSE = 0.004
MORE_THAN_A_BUCKET = 80


def empty_the_bucket(crossing, packet):
    """Frames arrive faster than the bucket fills, until it has no room for another."""
    marker = crossing.send(*[(SENDER, packet)] * MORE_THAN_A_BUCKET)
    crossing.lab.arrivals(marker)


def overload(crossing, packet):
    """Sends for a while, several times what any of the rates lets pass."""
    frame = packet.build(crossing.lab.marker())
    deadline = time.monotonic() + SECONDS
    while time.monotonic() < deadline:
        for _ in range(BURST_FRAMES):
            crossing.lab.hosts[SENDER].send(frame)
        time.sleep(BURST_PAUSE)


def frame_rate(crossing, reading, packet):
    """Frames a second of an overloading flow; `reading` gives (frames passed, time) as the device took them together."""
    empty_the_bucket(crossing, packet)
    passed_before, began = reading()
    overload(crossing, packet)
    empty_the_bucket(crossing, packet)
    passed, ended = reading()
    return (passed - passed_before) / (ended - began)
