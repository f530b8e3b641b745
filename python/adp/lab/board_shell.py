"""adpsh on a real board, reached by a command or a serial line. What the board says is bounded and not trusted."""

import collections
import contextlib
import subprocess
import sys
import time

from . import serial_line
from .problem import LabError
from .process import LineReader, tied
from .shell import ANSWER_SECONDS, Shell, printable

RECORD_START = '{"line":'
MOST_NOISE = 1 << 20
LINES_SHOWN = 5
CHARACTERS_SHOWN = 120
ERROR_CHARACTERS = 1000
MOST_ERROR_BYTES = 1 << 20
ATTEMPTS_SECONDS = (1.0, 2.0, 4.0, 8.0)
QUIT_SECONDS = 2.0
PAUSE_SECONDS = 0.2
# A terminal in its usual mode cuts longer lines.
LONGEST_TERMINAL_LINE = 4095


class ThisMachine:
    """Starts programs on the machine of the tester. They have no terminal, so none can ask for a password."""

    def popen(self, command, namespace=None, **options):
        assert namespace is None
        bounded = ["prlimit", f"--fsize={MOST_ERROR_BYTES}", "--", *command]
        return subprocess.Popen(tied(bounded), start_new_session=True, **options)


class RecordReader(LineReader):
    """Reads adpsh's records. Echoes, prompts and messages of the board's kernel come between them."""

    def line(self, seconds, what):
        deadline = time.monotonic() + seconds
        noise, skipped = collections.deque(maxlen=LINES_SHOWN), 0
        try:
            while True:
                line = self._line_before(deadline, seconds, what)
                _, start, rest = line.partition(RECORD_START)
                if start:
                    return start + rest
                noise.append(line)
                skipped += len(line) + 1
                if skipped > MOST_NOISE:
                    raise LabError(f"{what} wrote {skipped} characters, and no answer among them.")
        except LabError as problem:
            noise.append(self._rest())
            said = " | ".join(shown(line) for line in noise if line.strip())
            raise LabError(f"{problem} It said: {said}" if said else str(problem)) from None


def shown(text):
    """The end of a text of the board, printable."""
    return repr(text.strip()[-CHARACTERS_SHOWN:])[1:-1]


class BoardShell(Shell):
    """A running `adpsh --json` on a board. A call without an answer is its last: what came later would be taken for
    the answer of another one.
    """

    reader = RecordReader

    def __init__(self, command, start=None, longest_line=None):
        """`start` is the line that starts adpsh at a console."""
        self._longest_line = longest_line
        self._end = ""
        super().__init__(ThisMachine(), command)
        try:
            if start:
                self._leave_adpsh()
            self._await_adpsh([start] if start else [])
        except BaseException:
            self.close()
            raise

    def begin(self, line):
        self._check_running()
        if not line.isprintable() or len(line.encode()) > (self._longest_line or sys.maxsize):
            most = self._longest_line
            raise LabError(f"adpsh on a terminal takes one line of at most {most} bytes, not {line[:40]!r}.")
        super().begin(line)

    def finish(self, seconds=ANSWER_SECONDS):
        self._check_running()
        try:
            answer = super().finish(seconds)
        except LabError as problem:
            self._end = str(problem)
            raise
        if "error" in answer:
            answer["error"] = printable(str(answer["error"])[:ERROR_CHARACTERS])
        return answer

    def close(self):
        if not self._process.stdin.closed:
            # On a serial line the console remains, and its shell is to be the one that was there before.
            with contextlib.suppress(LabError, OSError):
                super().begin("quit")
                self._lines.line(QUIT_SECONDS, "adpsh")
        super().close()

    def _check_running(self):
        if self._end:
            raise LabError(f"adpsh on the board is no longer asked, since before: {self._end}")

    def _leave_adpsh(self):
        """A console that was left in the middle may have half a line, or be in adpsh still."""
        for line in ("", "quit"):
            super().begin(line)
            time.sleep(PAUSE_SECONDS)  # a program that ends can take the next line with it

    def _await_adpsh(self, start):
        """Input can be lost while adpsh starts, so it is asked again. The answer to the latest question counts."""
        for attempt, seconds in enumerate(ATTEMPTS_SECONDS):
            word = f"ready-{attempt}"
            try:
                for line in (*start, f"echo {word}"):
                    super().begin(line)
                while super().finish(seconds).get("echo") != word:
                    pass
                return
            except LabError as problem:
                if seconds == ATTEMPTS_SECONDS[-1] or not self.is_alive():
                    raise LabError(f"adpsh does not start on the board: {problem}") from None


def open_board_shell(board):
    """adpsh by the way that the board's file says."""
    if board.command:
        return BoardShell(board.command)
    device, speed = board.serial
    command = (sys.executable, serial_line.__file__, device, str(speed))
    return BoardShell(command, board.start, LONGEST_TERMINAL_LINE)
