"""adpsh on the device's CPU: a line in, a record out."""

import json
import os
import select
import subprocess
import tempfile

from .problem import LabError
from .process import LineReader, stop

ANSWER_SECONDS = 30.0
ERROR_BYTES = 1 << 14


class Shell:
    """A running `adpsh --json` of some build. `machine` starts it: anything with popen(), such as a Device."""

    reader = LineReader

    def __init__(self, machine, command, namespace=None):
        self._asked = ""
        self._errors = tempfile.TemporaryFile()
        self._process = machine.popen(
            command, namespace, stdin=subprocess.PIPE, stdout=subprocess.PIPE, stderr=self._errors
        )
        self._lines = self.reader(self._process.stdout)

    def ask(self, line, seconds=ANSWER_SECONDS):
        """Runs a line; gives its record, a result or an error."""
        self.begin(line)
        return self.finish(seconds)

    def begin(self, line):
        """Sends a line without waiting for its record."""
        self._asked = line
        try:
            self._process.stdin.write(line.encode() + b"\n")
            self._process.stdin.flush()
        except BrokenPipeError:
            raise LabError(f"adpsh has ended and cannot be asked '{line}'. {self._error_text()}") from None

    def has_answered(self, seconds):
        """Whether a record comes within this time; finish() takes it."""
        return bool(select.select([self._process.stdout], [], [], seconds)[0])

    def finish(self, seconds=ANSWER_SECONDS):
        """The record of the last line."""
        try:
            answer = self._lines.line(seconds, f"adpsh, asked '{self._asked}',")
        except LabError as problem:
            raise LabError(f"{problem} {self._error_text()}") from None
        try:
            return json.loads(answer)
        except (ValueError, RecursionError):
            raise LabError(f"adpsh, asked '{self._asked}', did not answer in JSON: {answer[:80]!r}") from None

    def call(self, line):
        """Runs a line; a record with an error is an error."""
        answer = self.ask(line)
        if "error" in answer:
            raise LabError(f"adpsh refused '{line}': {answer['error']}")
        return answer

    def result(self, line):
        """The status of one call."""
        answer = self.call(line)
        if "result" not in answer:
            raise LabError(f"adpsh has no result of '{line}'.")
        return answer["result"]

    @property
    def pid(self):
        """Process id of the shell, or of the emulator that runs it."""
        return self._process.pid

    def is_alive(self):
        return self._process.poll() is None

    def close(self):
        stop(self._process)
        self._errors.close()

    def _error_text(self):
        size = self._errors.seek(0, os.SEEK_END)
        self._errors.seek(max(0, size - ERROR_BYTES))
        text = printable(self._errors.read().decode(errors="replace").strip())
        return f"It wrote: {text}" if text else "It wrote no error."


def printable(text):
    """The text with a mark in place of what would change the terminal that it is shown on."""
    return "".join(one if one.isprintable() or one == "\n" else "\ufffd" for one in text)
