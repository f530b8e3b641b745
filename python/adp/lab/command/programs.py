"""Programs on a node that go on running: what they write is kept, and how they ended."""

import shlex
import shutil
import signal
import subprocess

from ..problem import LabError
from ..process import kill, stop

COMMAND_SECONDS = 60.0
TAIL_BYTES = 4096


def last_line(text):
    """The last line with something in it."""
    return next((line.strip() for line in reversed(text.splitlines()) if line.strip()), "")


def last_line_of_file(path):
    try:
        with open(path, "rb") as log:
            log.seek(max(0, log.seek(0, 2) - TAIL_BYTES))
            return last_line(log.read().decode(errors="replace"))
    except OSError:
        return ""


def how_it_ended(status):
    """An exit status as Popen gives it, in words."""
    if status >= 0:
        return f"ended with status {status}"
    try:
        return f"was ended by the signal {signal.Signals(-status).name}"
    except ValueError:
        return f"was ended by the signal {-status}"


def not_started(node, command, environment, problem):
    """The error for a program that the system has refused to start."""
    if shutil.which(command[0], path=environment["PATH"]) is None:
        return LabError(f"On {node}, there is no program '{command[0]}'.")
    return LabError(f"On {node}, '{command[0]}' cannot be started: {problem.strerror}.")


def split(command, where):
    """The words of a command line. As in containerlab, no shell reads it."""
    try:
        words = shlex.split(command)
    except ValueError as problem:
        raise LabError(f"{where}, the command '{command}' cannot be read: {problem}.") from None
    if not words:
        raise LabError(f"{where}, a command is empty.")
    return words


class Place:
    """Where programs of a node run: a namespace, an environment, and a folder."""

    def __init__(self, name, namespace, environment, folder):
        self.name = name
        self.namespace = namespace
        self.environment = environment
        self.folder = folder

    def popen(self, command, **options):
        try:
            with self.namespace.entered():
                return subprocess.Popen(command, env=self.environment, cwd=self.folder, **options)
        except OSError as problem:
            raise not_started(self.name, command, self.environment, problem) from None

    def run(self, command):
        """Runs a command to its end, which must be a success."""
        self.run_words(split(command, f"On {self.name}"), f"the command '{command}'")

    def run_words(self, words, what):
        process = self.popen(words, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.STDOUT)
        try:
            said, _ = process.communicate(timeout=COMMAND_SECONDS)
        except subprocess.TimeoutExpired:
            kill(process)
            raise LabError(
                f"On {self.name}, {what} has not ended within {COMMAND_SECONDS:g} seconds. What goes on running belongs "
                "under 'programs'."
            ) from None
        if process.returncode != 0:
            last = last_line(said.decode(errors="replace"))
            ending = f": {last}" if last else " and wrote nothing."
            raise LabError(f"On {self.name}, {what} {how_it_ended(process.returncode)}{ending}")


class Program:
    """A program that was started with its node."""

    def __init__(self, place, name, command, log):
        self._place = place
        self._command = split(command, f"On {place.name}")
        self.name = name
        self.log = log
        self.process = None

    def start(self):
        # Programs that run until their input ends go on with a pipe.
        streams = {"stdin": subprocess.PIPE, "stderr": subprocess.STDOUT}
        with open(self.log, "ab") as log:
            self.process = self._place.popen(self._command, stdout=log, start_new_session=True, **streams)

    def restart(self):
        stop(self.process)
        self.start()
