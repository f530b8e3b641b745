"""The example program igmp_snooping on the bench. It prints a line for each change of a group's listeners."""

import subprocess

from .builds import Build
from .problem import LabError
from .process import LineReader, stop

LINE_SECONDS = 10.0
# Lines about other groups come in between, above all with IPv6.
MOST_LINES = 1000


# Hosts have so long to answer each query of the start, and a router is known as long: seconds.
RESPONSE_TIME, ROUTER_AGE = 0.1, 255


class SnoopingProgram:
    """A running igmp_snooping; the ports, if any, are aggregation group 1."""

    def __init__(self, device, build, ports=(), response_time=RESPONSE_TIME, router_age=ROUTER_AGE):
        options = ("--response-time", response_time, "--router-age", router_age)
        self._process = device.popen(
            Build(build).command("igmp_snooping", *options, *ports),
            stdin=subprocess.PIPE,
            stdout=subprocess.PIPE,
            stderr=subprocess.STDOUT,
        )
        self._lines = LineReader(self._process.stdout)
        self.await_line("ready")

    def await_dropping(self):
        """Waits until all hosts had their time to answer; from then on groups without listeners are dropped."""
        self.await_line("groups without listeners are dropped")

    def await_line(self, wanted):
        """Skips the lines before this one."""
        seen = []
        while len(seen) < MOST_LINES:
            try:
                seen.append(self._lines.line(LINE_SECONDS, "igmp_snooping"))
            except LabError as problem:
                raise LabError(f"{problem} Instead of '{wanted}' it said: {seen}") from None
            if seen[-1] == wanted:
                return
        raise LabError(f"igmp_snooping does not say '{wanted}', but: {seen}")

    def await_change(self, vid, address, listener, joins):
        """Waits until "port 5" or "group 1" has joined a group, or has left it."""
        self.await_line(f"VLAN {vid}, {address}: {listener} {'joined' if joins else 'left'}")

    def await_router(self, vid, ip_version, place, is_there=True):
        """Waits until a router was heard behind "port 5" or "group 1", or was not heard for its age."""
        self.await_line(f"VLAN {vid}, IPv{ip_version} router: {place} {'found' if is_there else 'aged out'}")

    def is_alive(self):
        """Whether the program runs."""
        return self._process.poll() is None

    def end(self):
        """Lets the program clean up, unless it has ended already; gives its exit status."""
        if not self._process.stdin.closed:
            self._process.stdin.close()
            self.await_line("ended")
        return self._process.wait(LINE_SECONDS)

    def close(self):
        stop(self._process)
