"""Whether a device is on, as its managers have to know it: what a call may answer depends on when it was made."""

import contextlib
import threading

from adp.lab.problem import LabError

# In this order, and again from the beginning with the next cycle. While it falls and rises nobody can say which calls
# get through.
UP, FALLING, DOWN, RISING = range(4)
PHASES = 4
CALL_SECONDS = 30.0


def phase(moment):
    return moment % PHASES


def cycle(moment):
    """How often the device has been off before."""
    return moment // PHASES


class Power:
    """One device's. A moment is a number that grows with every change; calls are made within `call()`."""

    def __init__(self):
        self.moment = UP
        self._under_way = {}
        self._changed = threading.Condition()

    @contextlib.contextmanager
    def call(self):
        """Around a call; gives the moment at which it begins."""
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
        """After this, nothing that was asked in an earlier phase is still under way. Where managers change nothing
        while the device rises, nothing can therefore reach it that belongs to the one before.
        """
        with self._changed:
            earlier = [moment for moment in self._under_way if moment < self.moment]
            if not self._changed.wait_for(lambda: not any(self._under_way[at] for at in earlier), CALL_SECONDS):
                raise LabError(f"Calls did not come back within {CALL_SECONDS:g} seconds of the device's going.")
