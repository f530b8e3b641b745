"""Asks a lab's background process to start a node again: by a file, a signal, and a file with the answer."""

import fcntl
import json
import os
import signal
import time

from ..problem import LabError
from ..process import poll_until
from . import record as records
from .keeper import ANSWER, REQUEST

TURN = "turn"  # who holds its lock may ask
SECONDS = 90.0


def restart(record, name):
    record.node(name)
    folder = record.folder.path
    number = time.monotonic_ns()

    def answer():
        try:
            found = json.loads((folder / ANSWER).read_text(encoding="utf-8"))
        except FileNotFoundError:
            if not folder.exists():
                raise LabError(f"The lab '{record.name}' has ended.") from None
            return None
        return found if found["number"] == number else None

    with open(folder / TURN, "a", encoding="utf-8") as turn:
        fcntl.flock(turn, fcntl.LOCK_EX)
        records.write(folder / REQUEST, {"number": number, "restart": name})
        os.kill(record.keeper, signal.SIGUSR1)
        problem = poll_until(answer, SECONDS, f"The restart of {name}")["problem"]
    if problem:
        raise LabError(problem)
