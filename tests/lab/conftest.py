"""adp-lab as its users start it, with a folder for the labs of a test; afterwards nothing of them may be left."""

import contextlib
import json
import os
import pathlib
import shutil
import signal
import subprocess
import sys
import tempfile
import time
import traceback
from typing import NamedTuple

import pytest
from adp.lab.command.main import main

COMMAND = [sys.executable, "-B", "-m", "adp.lab.command"]
CRASHED, SECONDS = 99, 60
SWITCH = """\
name: {name}
topology:
  nodes:
    sw1: {{kind: adp{device}}}
    h1: {{kind: linux, exec: ["ip address add 10.0.0.1/24 dev eth1"{host}]}}
    h2: {{kind: linux, exec: ["ip address add 10.0.0.2/24 dev eth1"]}}
  links:
    - endpoints: ["sw1:eth1", "h1:eth1"]
    - endpoints: ["sw1:eth2", "h2:eth1"]
"""


class Answer(NamedTuple):
    """What a command printed."""

    status: int
    said: str
    complaint: str


class Labs:
    """The labs in a folder."""

    def __init__(self):
        self.folder = pathlib.Path(tempfile.mkdtemp(prefix="labs-"))
        self.environment = {name: value for name, value in os.environ.items() if name != "ADP_LAB"}
        self.environment["ADP_LAB_DIR"] = str(self.folder)

    def popen(self, *words, **options):
        """Starts adp-lab as its users do."""
        pipes = {"stdin": subprocess.PIPE, "stdout": subprocess.PIPE, "stderr": subprocess.PIPE, "text": True}
        environment = {**self.environment, **options.pop("more", {})}
        return subprocess.Popen([*COMMAND, *map(str, words)], env=environment, **{**pipes, **options})

    def try_to(self, *words, text="", cwd=None, more=()):
        """Runs adp-lab with these words, in a copy of this process, which need not load the program again."""
        with contextlib.ExitStack() as stack:
            streams = [stack.enter_context(tempfile.TemporaryFile("w+")) for _ in range(3)]
            streams[0].write(text)
            streams[0].seek(0)
            process = os.fork()
            if process == 0:
                self._become(streams, {**self.environment, **dict(more)}, cwd, [str(word) for word in words])
            _, status = os.waitpid(process, 0)
            for stream in streams[1:]:
                stream.seek(0)
            return Answer(os.waitstatus_to_exitcode(status), streams[1].read(), streams[2].read())

    @staticmethod
    def _become(streams, environment, cwd, words):
        status = CRASHED
        try:
            for number, stream in enumerate(streams):
                os.dup2(stream.fileno(), number)
            sys.stdin, sys.stdout, sys.stderr = (os.fdopen(number, mode) for number, mode in enumerate("rww"))
            os.environ.clear()
            os.environ.update(environment)
            os.chdir(cwd or ".")
            signal.alarm(SECONDS)
            status = main(words)
        except SystemExit as end:
            status = end.code
        except BaseException:
            traceback.print_exc()
        finally:
            for stream in (sys.stdout, sys.stderr):
                stream.flush()
            os._exit(status or 0)

    def do(self, *words, **options):
        """The same, which must succeed; gives what it printed."""
        answer = self.try_to(*words, **options)
        assert answer.status == 0, answer
        return answer.said

    def refuse(self, *words, **options):
        """The same, which must fail with a sentence; gives it."""
        answer = self.try_to(*words, **options)
        assert (answer.status, answer.said) == (1, ""), answer
        assert answer.complaint.startswith("adp-lab: ") and answer.complaint.count("\n") == 1, answer
        return answer.complaint.removeprefix("adp-lab: ").rstrip("\n")

    def file(self, text, name="x.clab.yml"):
        path = self.folder.with_suffix(".files")
        path.mkdir(exist_ok=True)
        (path / name).write_text(text, encoding="utf-8")
        return path / name

    def switch(self, name="lab", device="", host=""):
        """A file with a switch and two hosts."""
        return self.file(SWITCH.format(name=name, device=device, host=host), f"{name}.clab.yml")

    def records(self):
        """{lab: what lab.json says}"""
        return {record["name"]: record for record in json.loads(self.do("ps", "--json"))}

    def pids(self):
        """The processes that have the labs' folder in their environment."""
        found = []
        for entry in filter(str.isdigit, os.listdir("/proc")):
            try:
                environment = pathlib.Path("/proc", entry, "environ").read_bytes()
            except OSError:
                continue
            if str(self.folder).encode() in environment:
                found.append(int(entry))
        return found

    def assert_nothing_is_left(self):
        # A process that has just been killed is no more than an entry for a moment.
        deadline = time.monotonic() + 5
        while (pids := self.pids()) and time.monotonic() < deadline:
            time.sleep(0.02)
        assert pids == []
        assert [entry.name for entry in self.folder.iterdir()] == []
        assert str(self.folder) not in pathlib.Path("/proc/mounts").read_text(encoding="utf-8")

    def close(self):
        try:
            self.do("down", "--all")
            self.assert_nothing_is_left()
        finally:
            shutil.rmtree(self.folder.with_suffix(".files"), ignore_errors=True)
            shutil.rmtree(self.folder, ignore_errors=True)


@pytest.fixture
def labs():
    made = Labs()
    yield made
    made.close()


@pytest.fixture(name="lab", scope="module")
def lab_that_stays():
    """The default lab, for tests that leave it as it was."""
    made = Labs()
    made.do("up")
    yield made
    made.close()
