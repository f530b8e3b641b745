"""What the calls raise."""

from __future__ import annotations

from .calls.results import RESULTS

LEAST_LIBRARY_STATUS = -1  # below are the virtual device's


class Error(Exception):
    """A call of libadp gave a status other than ADP_OK. What was wrong with it is in docs/reference/results.md."""

    def __init__(self, call: str, status: int, outputs: object = None) -> None:
        """outputs is what the call would have returned: its contract says what a failure leaves in it."""
        super().__init__(call, status, outputs)
        self.call = call
        self.status = status
        self.outputs = outputs
        self.name, self.meaning = RESULTS.get(status, ("", "unknown result"))

    def __str__(self) -> str:
        owner = " of the virtual device" if self.name and self.status < LEAST_LIBRARY_STATUS else ""
        name = f"{self.name}{owner}: " if self.name else ""
        return f"{self.call} gave {self.status} ({name}{self.meaning})"


class LibraryError(Exception):
    """libadp, or a library that it needs, cannot be loaded."""
