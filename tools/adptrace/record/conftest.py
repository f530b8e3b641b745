"""The command, as the tests run it: a program of the build, recorded, and what stands in the recording."""

import json
import os
import pathlib
import signal
import subprocess
from typing import NamedTuple

import pytest

SECONDS = 60
BUILD = pathlib.Path(os.environ["ADP_BUILD"])
EMULATOR = os.environ.get("ADP_EMULATOR", "").split()
PROGRAM = "adptrace_test_program"
# A map that is made again leaves the old one behind, and a crash shall be one.
os.environ["ASAN_OPTIONS"] = "detect_leaks=0:handle_segv=0"


def command_of(program, *arguments):
    """The command line of a program of the build, under the emulator if it is the target's."""
    return [*EMULATOR, str(BUILD / program), *map(str, arguments)]


class Run(NamedTuple):
    """A recorded run."""

    status: int
    output: str
    errors: str
    path: pathlib.Path

    @property
    def text(self):
        return self.path.read_text(encoding="ascii")

    @property
    def lines(self):
        """Each line as an object; every one is whole."""
        assert self.text.endswith("\n")
        return [json.loads(line) for line in self.text.splitlines()]

    def of_kind(self, kind):
        return [line for line in self.lines if next(iter(line)) == kind]

    @property
    def calls(self):
        return [line["call"] for line in self.of_kind("begin")]


class Recorder:
    """adptrace record, in a folder of its own."""

    def __init__(self, folder):
        self.folder = folder
        self.path = folder / "recording"

    def start(self, options, command, **more):
        line = command_of("adptrace", "record", "-o", self.path, *options, "--", *command)
        return subprocess.Popen(line, cwd=self.folder, stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True, **more)

    def finish(self, process):
        output, errors = process.communicate(timeout=SECONDS)
        return Run(process.returncode, output, errors, self.path)

    def command(self, *command, options=(), **more):
        """Records any command."""
        return self.finish(self.start(options, command, **more))

    def program(self, what, *options, **more):
        """Records the test program."""
        return self.command(*command_of(PROGRAM, what), options=options, **more)


@pytest.fixture
def recorder(tmp_path):
    return Recorder(tmp_path)


@pytest.fixture
def restored_signals():
    """Python ignores some signals, and its children inherit that."""
    return {"preexec_fn": lambda: signal.signal(signal.SIGXFSZ, signal.SIG_DFL)}
