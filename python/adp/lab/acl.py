"""The example program acl on the bench. Its list exists while it runs, and it prints its counts when asked."""

import re
import subprocess

from .builds import Build
from .problem import LabError
from .process import LineReader, stop

LINE_SECONDS = 30.0
ENTRY = re.compile(r"(\w+): entry (\d+)")
COUNT = re.compile(r"(\w+): (\d+) frames, (\d+) octets")
READY = re.compile(r"ready: (\d+) rules for port (\d+), .*")
DELETED = "deleted: the port is open"


class AclProgram:
    """A running acl. `entries` are the chip's entries by the names of their rules."""

    def __init__(self, device, build, port):
        self._process = device.popen(
            Build(build).command("acl", port), stdin=subprocess.PIPE, stdout=subprocess.PIPE, stderr=subprocess.STDOUT
        )
        self._lines = LineReader(self._process.stdout)
        self.entries = {}
        while entry := ENTRY.fullmatch(line := self._line()):
            self.entries[entry[1]] = int(entry[2])
        ready = READY.fullmatch(line)
        if not ready or int(ready[1]) != len(self.entries) or int(ready[2]) != port:
            raise LabError(f"acl said: {line}")

    def _line(self):
        return self._lines.line(LINE_SECONDS, "acl")

    def counts(self):
        """{rule: (frames, octets)} so far."""
        self._process.stdin.write(b"\n")
        self._process.stdin.flush()
        found = [COUNT.fullmatch(self._line()) for _ in self.entries]
        return {count[1]: (int(count[2]), int(count[3])) for count in found}

    def end(self):
        """Lets the program delete its list; gives whether it reports that, and ends with 0."""
        self._process.stdin.close()
        said = self._line()
        return said == DELETED and self._process.wait(LINE_SECONDS) == 0

    def close(self):
        stop(self._process)
