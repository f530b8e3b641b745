"""What a failed test tells: expected and received side by side, what became of the frames, the drops, a capture."""

import pathlib
import re

import pytest
from adp.lab import Lab
from adp.lab.recording import Recording

from .comparison import are_arrivals, comparison, differing, port_comparison


class Failures:
    """Hooks of pytest. Each device that runs is recorded from the beginning of each test; the frames of those that fail
    are kept in the folder.
    """

    def __init__(self, folder):
        self._folder = folder
        self._recordings = {}
        self._forget()

    def _forget(self):
        self._comparison, self._astray = [], set()

    @pytest.hookimpl(tryfirst=True)
    def pytest_runtest_setup(self):
        self._forget()
        for lab in set(self._recordings) - set(Lab.running):
            self._recordings.pop(lab).close()
        for lab in Lab.running:
            lab.forget()
        for recording in self._recordings.values():
            recording.begin()
        self._record()

    @pytest.hookimpl(tryfirst=True)
    def pytest_runtest_call(self):
        self._record()

    def _record(self):
        """Begins with devices that are new."""
        for lab in Lab.running:
            if lab not in self._recordings and hasattr(lab.device, "connect"):  # which a board has not
                self._recordings[lab] = Recording(lab)

    def pytest_assertrepr_compare(self, op, left, right):
        """Both sides of an assertion about arrivals: what a helper received stands on the left."""
        if op != "==":
            return None
        self._forget()
        if is_set(left) and is_set(right) and left == last_ports():
            self._comparison = port_comparison(set(right), set(left))
        elif are_arrivals(left) and are_arrivals(right):
            self._compare(right, left, "port")
        elif is_series(left) and is_series(right) and len(left) == len(right):
            for at, (received, expected) in enumerate(zip(left, right), 1):
                self._compare(expected, received, f"device {at} port")
        # The rest is a section of the report, since pytest cuts this short.
        return ["The frames did not arrive as expected."] if self._comparison else None

    def expected_and_received(self):
        """The latest assertion about arrivals that failed."""
        return "\n".join(self._comparison)

    def _compare(self, expected, received, place):
        if received != expected:
            self._comparison += comparison(expected, received, place)
            self._astray |= {frame for _, *pair in differing(expected, received) for frame in pair if frame}

    @pytest.hookimpl(hookwrapper=True)
    def pytest_runtest_makereport(self, item):
        outcome = yield
        report = outcome.get_result()
        if not report.failed:
            return
        if self._comparison:
            report.sections.append(("expected and received", self.expected_and_received()))
        busy = [recording for recording in self._recordings.values() if recording.has_frames()]
        for at, recording in enumerate(busy, 1):
            device = recording.lab.device.name
            name = f"{item.name} {device}" if len(busy) == 1 else f"{item.name} {at} {device}"
            report.sections.append((f"what became of the frames: {device}", self._tell(recording, name)))
        self._forget()  # what fails while the test is cleared away has another reason

    def _tell(self, recording, name):
        markers = {lab.latest_marker for lab in self._recordings if lab.latest_marker}
        path = self._folder / (re.sub(r"[^\w.-]+", "-", name) + ".pcapng")
        lines = []
        try:
            lines += recording.report(sorted(markers), self._astray)
            self._folder.mkdir(parents=True, exist_ok=True)
            lines.append(f"All frames: {shortened(path)} ({recording.save(path)})")
        except Exception as problem:  # whatever it is, the other tests go on
            lines.append(f"The rest cannot be told: {problem!r}")
        return "\n".join(lines)

    def pytest_sessionfinish(self):
        for recording in self._recordings.values():
            recording.close()


def shortened(path):
    """The path from the working folder, if it is in there."""
    return path.relative_to(pathlib.Path.cwd()) if path.is_relative_to(pathlib.Path.cwd()) else path


def last_ports():
    """The ports where the frames arrived that were asked for last, if one device alone was asked."""
    asked = [lab.latest_arrivals for lab in Lab.running if lab.latest_arrivals is not None]
    return set(asked[0]) if len(asked) == 1 else None


def is_set(value):
    return isinstance(value, (set, frozenset))


def is_series(value):
    return isinstance(value, (list, tuple)) and value and all(map(are_arrivals, value))
