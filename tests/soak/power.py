"""Whether a device is on. What a call may answer depends on that, so managers ask for it around each call."""

import contextlib
import threading

from adp.lab.problem import LabError

# The phases of a power cycle, in order. While the device falls and rises, a call may reach it or not.
UP, FALLING, DOWN, RISING = range(4)
PHASES = 4
CALL_SECONDS = 30.0


def phase(moment):
    return moment % PHASES


def cycle(moment):
    """How often the device has been off by then."""
    return moment // PHASES


class Power:
    """The power of one device. A moment is a number that grows with every change; calls are made within `call()`."""

    def __init__(self):
        self.moment = UP
        self._under_way = {}
        self._changed = threading.Condition()

    @contextlib.contextmanager
    def call(self):
        """Stands around a call; gives the moment at which it begins."""
        with self._changed:
            began = self.moment
            self._under_way[began] = self._under_way.get(began, 0) + 1
        try:
            yield began
        finally:
            with self._changed:
                self._under_way[began] -= 1
                self._changed.notify_all()

    def advance(self):
        """The next phase begins."""
        with self._changed:
            self.moment += 1

    def await_earlier_calls(self):
        """Waits until no call of an earlier phase is under way. Managers change nothing while the device rises, so no
        change that was meant for the old device can then reach the new one.
        """
        with self._changed:
            earlier = [moment for moment in self._under_way if moment < self.moment]
            if not self._changed.wait_for(lambda: not any(self._under_way[at] for at in earlier), CALL_SECONDS):
                raise LabError(f"Calls did not return within {CALL_SECONDS:g} seconds after the device was off.")
