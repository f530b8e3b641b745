"""The example program link_aggregation on the bench. It prints a line for each event."""

import re
import subprocess
from typing import NamedTuple

from .builds import Build
from .problem import LabError
from .process import LineReader, stop

READY_SECONDS = 30.0
LINE_SECONDS = 10.0
STATE = re.compile(r"(ready|port (\d+) (up|down)): group 1 is (up|down), (?:management port (\d+)|without .*)")
EVENT = re.compile(r"group 1 (went|is still) (up|down)")


class Handled(NamedTuple):
    """A link change that the program has handled: the port, its link, and the group afterwards."""

    port: int
    is_up: bool
    group_is_up: bool
    management_port: int


class GroupEvent(NamedTuple):
    """A call of the library's event callback: whether the group's state has changed, and the state."""

    is_change: bool
    is_up: bool


class AggregationProgram:
    """A running link_aggregation. Its events come in the order of its lines."""

    def __init__(self, device, build, ports):
        process = device.popen(
            Build(build).command("link_aggregation", *sorted(ports)),
            stdin=subprocess.PIPE,
            stdout=subprocess.PIPE,
            stderr=subprocess.STDOUT,
        )
        self._follow(process, f"link_aggregation on the {device.name}")

    def _follow(self, process, name):
        """Reads the program's lines from a process."""
        self._process = process
        self._lines = LineReader(process.stdout)
        self._name = name
        self.exit_status = None
        self.events = []
        self.at_start = self._read_until_ready()

    def _read_until_ready(self):
        for _ in range(100):
            event = self._next(READY_SECONDS)
            if isinstance(event, Handled):
                return event
            self.events.append(event)
        raise LabError(f"The {self._name} does not get ready.")

    def _next(self, seconds):
        line = self._lines.line(seconds, self._name)
        if state := STATE.fullmatch(line):
            _, port, link, group, management = state.groups()
            return Handled(int(port or 0), link == "up", group == "up", int(management or 0))
        if event := EVENT.fullmatch(line):
            return GroupEvent(event[1] == "went", event[2] == "up")
        raise LabError(f"{self._name} said: {line}")

    def poll(self):
        """Reads the events that are there without waiting for more."""
        while self._lines.has_line():
            self.events.append(self._next(LINE_SECONDS))
        return self.events

    def said(self):
        """The lines that are there, errors included: a program whose device was off prints some."""
        lines = []
        while self._lines.has_line():
            lines.append(self._lines.line(LINE_SECONDS, self._name))
        return lines

    def has_handled(self, port, is_up):
        """Whether the newest change of the port is this one."""
        mine = [event for event in self.poll() if isinstance(event, Handled) and event.port == port]
        return bool(mine) and mine[-1].is_up == is_up

    def take_events(self):
        """The events since the last call, oldest first."""
        taken, self.events = self.poll(), []
        return taken

    def kill(self):
        """Kills the program, so that it cannot clean up."""
        self._process.kill()
        self.close()

    def close(self):
        """Ends the program, unless it has ended."""
        self.exit_status = stop(self._process)
