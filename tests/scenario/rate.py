"""How fast a flow gets through, judged by the device's own count of frames and its own clock."""

import contextlib
import threading
import time

from crossing import SENDER

TOLERANCE = 0.05
SECONDS = 1.2
BURST_FRAMES = 4
BURST_PAUSE = 0.004
MORE_THAN_A_BUCKET = 80


@contextlib.contextmanager
def overload(crossing, packet):
    """All the while frames arrive several times as fast as any of the limits lets them pass; its bucket is empty."""
    marker = crossing.send(*[(SENDER, packet)] * MORE_THAN_A_BUCKET)
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


def frame_rate(crossing, reading, packet):
    """Frames a second of an overloading flow; `reading` gives (frames passed, time) as the device took them together.

    The flow goes on while the readings are taken, so that however long that takes there is nothing in the bucket.
    """
    with overload(crossing, packet):
        passed_before, began = reading()
        time.sleep(SECONDS)
        passed, ended = reading()
    return (passed - passed_before) / (ended - began)
