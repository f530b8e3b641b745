"""A flow of numbered frames between stations, sent steadily while something is done to their way.

    with Flow(sender, [receiver], lab.marker(), [lab.mac()]) as flow:
        lab.device.control("pull", 3)
        ...
    flow.repeated(receiver)      # [] if no frame arrived twice
    flow.gap(receiver)           # the longest time for which nothing arrived, in seconds of sending
"""

import struct
import threading
import time

from .frames import BROADCAST, ETHERTYPE_EXPERIMENT, ethernet

INTERVAL_SECONDS = 0.002
NUMBER = struct.Struct("!I")
HEADER_BYTES = 14
FRAME_BYTES = 64
LATE_SECONDS, LATEST_SECONDS = 0.5, 5.0


class Flow:
    """Frames from a station to one address, all stations by default; from several source addresses, in turn. Nobody
    else may read the receivers meanwhile.
    """

    def __init__(self, sender, receivers, marker, sources, destination=BROADCAST, interval=INTERVAL_SECONDS):
        self._sender = sender
        self._marker = marker
        self._heads = [ethernet(destination, source, ETHERTYPE_EXPERIMENT, marker) for source in sources]
        self._interval = interval
        self._times = []  # when each frame was sent
        self._arrived = {receiver: {} for receiver in receivers}  # {number: how often}
        self._ending = threading.Event()
        self._problem = None
        self._thread = threading.Thread(target=self._run)

    def __enter__(self):
        for receiver in self._arrived:
            receiver.nic.waiting()
        self._thread.start()
        return self

    def __exit__(self, *problem):
        self._ending.set()
        self._thread.join()
        if self._problem and not any(problem):
            raise self._problem

    @property
    def sent(self):
        """How many frames have been sent."""
        return len(self._times)

    def has_arrived_since(self, receiver, number):
        """Whether a frame with this number or a later one has arrived."""
        return max(self._arrived[receiver], default=-1) >= number

    def sources_since(self, receiver, number):
        """How many of the source addresses have a frame with this number or a later one that has arrived."""
        return len({at % len(self._heads) for at in list(self._arrived[receiver]) if at >= number})

    def lost(self, receiver, first=0):
        """Numbers of the frames, from `first`, that have not arrived."""
        return [number for number in range(first, self.sent) if number not in self._arrived[receiver]]

    def repeated(self, receiver):
        """Numbers of the frames that have arrived more than once."""
        return sorted(number for number, times in self._arrived[receiver].items() if times > 1)

    def count(self, receiver):
        """How many frames have arrived, repeated ones included."""
        return sum(self._arrived[receiver].values())

    def gap(self, receiver, first=0):
        """The longest time between two frames that have arrived, or from `first` to the first of them, when sent."""
        arrived = sorted(number for number in self._arrived[receiver] if number >= first)
        numbers = [first, *arrived, self.sent - 1]
        times = [self._times[number] for number in numbers]
        return max(later - earlier for earlier, later in zip(times, times[1:], strict=False))

    def _run(self):
        try:
            while not self._ending.wait(self._interval):
                number = len(self._times)
                self._times.append(time.monotonic())
                head = self._heads[number % len(self._heads)]
                self._sender.send((head + NUMBER.pack(number)).ljust(FRAME_BYTES, b"."))
                self._collect()
            self._await_last()
        except OSError as problem:
            self._problem = problem

    def _await_last(self):
        """Waits for the last frame, and then for those behind it that should not come."""
        now = time.monotonic()
        latest, end = now + LATEST_SECONDS, now + LATE_SECONDS
        while time.monotonic() < min(end, latest):
            time.sleep(self._interval)
            self._collect()
            if any(self.sent - 1 not in arrived for arrived in self._arrived.values()):
                end = time.monotonic() + LATE_SECONDS

    def _collect(self):
        at = HEADER_BYTES + len(self._marker)
        for receiver, arrived in self._arrived.items():
            for frame in receiver.nic.waiting():
                # A frame with a tag is not counted: what it is compared with was sent without.
                if frame[HEADER_BYTES:at] == self._marker:
                    (number,) = NUMBER.unpack_from(frame, at)
                    arrived[number] = arrived.get(number, 0) + 1
