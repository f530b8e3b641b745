"""How long a killed adp-switchd needs until the switch has again what the kernel has."""

import contextlib
import json
import re
import statistics
import tempfile
import time

from adp.lab import Lab
from adp.lab.process import poll_until
from adp.lab.switch import SETTLE_SECONDS, Switch, chip_state

from bench.isolated import measure_in_namespaces
from bench.problem import BenchError

NAME = "resync"
TITLE = "adp-switchd: from the start after a kill until it is synced"
TARGETS = {"host": ["adp-switchd", "vdeviced", "vdevctl"]}
HAS_COUNTS = False
STARTS, QUICK_STARTS = 15, 3
MILLI = 1000
PAUSE_SECONDS, TRACE_SECONDS = 0.002, 10.0
USER_PORTS = 26
TRUNK = f"swp{USER_PORTS}"
VIDS = range(2, 102)
ADDRESSES_A_VLAN = 10
NEW_ADDRESS = "02:be:ff:00:00:00"
# A driver call is one message on a connection to the driver socket.
CONNECT = re.compile(r'connect\((\d+), .*sun_path="[^"]*/driver"')
MESSAGE = re.compile(r"sendto\((\d+), ")
TRACED = "trace=connect,sendto,sendmsg"
NOTES = [
    f"{USER_PORTS} ports, {len(VIDS)} bridges for VLANs whose tagged member is {TRUNK}, the other ports untagged in one of "
    f"them each, {len(VIDS) * ADDRESSES_A_VLAN} static addresses. The daemon is killed, an address is added or deleted, "
    "the daemon is started and asked by 'status state --json' until that says 'synced'; the chip must then have the change.",
    "The driver calls are those of one more start, under strace; each takes the daemon some tens of microseconds.",
]


def configuration():
    names = "".join(f'    "{TRUNK}.{vid}",\n' for vid in VIDS)
    return f"interfaces = [\n{names}]\n"


def bridge_lines():
    """For ip."""
    for vid in VIDS:
        yield from (f"link add br{vid} type bridge", f"link set {TRUNK}.{vid} master br{vid} up", f"link set br{vid} up")
    for port, vid in zip(range(1, USER_PORTS), VIDS):
        yield f"link set swp{port} master br{vid} up"
    yield f"link set {TRUNK} up"


def address_lines():
    """For bridge."""
    for vid in VIDS:
        for number in range(ADDRESSES_A_VLAN):
            yield f"fdb add 02:be:00:00:{vid:02x}:{number:02x} dev {TRUNK}.{vid} master static"


class Bed:
    """A switch of that size, whose daemon is killed and started again."""

    def __init__(self, stack):
        lab = stack.enter_context(Lab("host", (), USER_PORTS))
        self._switch = stack.enter_context(contextlib.closing(Switch(lab, configuration())))
        self._daemon = self._switch.switchd
        self._has_new = False
        self._switch.namespace.ip(*bridge_lines())
        with tempfile.NamedTemporaryFile("w") as batch:
            batch.write("\n".join(address_lines()) + "\n")
            batch.flush()
            self._switch.namespace.run("bridge", "-batch", batch.name)
        poll_until(lambda: len(self._addresses()) == len(VIDS) * ADDRESSES_A_VLAN, SETTLE_SECONDS, "All addresses in the chip")
        poll_until(self._is_synced, SETTLE_SECONDS, "The first sync")

    def _addresses(self):
        """Static ones in the chip on the port with the VLANs."""
        rows = self._switch.lab.device.control("macs")["macs"]
        return [row["mac"] for row in rows if row["static"] and row["mac"].startswith("02:be:")]

    def _is_synced(self):
        done = self._daemon.try_to_run(*self._daemon.command("status", "state", "--json"))
        return done.returncode == 0 and is_synced(done.stdout)

    def _state(self):
        """Of the chip, without the address that comes and goes."""
        state = chip_state(self._switch.lab.device)
        state["addresses"] = [row for row in state["addresses"] if row["mac"] != NEW_ADDRESS]
        return state

    def _change(self):
        """Adds an address in the kernel, or deletes it."""
        verb = "del" if self._has_new else "add"
        self._switch.namespace.run("bridge", "fdb", verb, NEW_ADDRESS, "dev", f"{TRUNK}.{VIDS[0]}", "master", "static")
        self._has_new = not self._has_new

    def seconds_to_sync(self, *before):
        """Kills the daemon and starts it again, with these words before its command line."""
        state = self._state()
        self._daemon.kill()
        self._change()
        begin = time.perf_counter()
        command = self._daemon.command("--config", self._daemon.configuration)
        self._daemon.start(*before, *command, own_run=False)
        poll_until(self._is_synced, SETTLE_SECONDS, "The sync", PAUSE_SECONDS)
        seconds = time.perf_counter() - begin
        if (NEW_ADDRESS in self._addresses()) != self._has_new:
            raise BenchError("adp-switchd says that it is synced, but the chip has not what the kernel has.")
        if self._state() != state:
            raise BenchError("The start has changed in the chip what has not changed in the kernel.")
        return seconds

    def driver_calls(self):
        """Of one start."""
        with tempfile.NamedTemporaryFile("r") as trace:
            # The tracer is the daemon's child, so the daemon is killed as ever.
            self.seconds_to_sync("strace", "-D", "-f", "-e", TRACED, "-o", trace.name)
            self._daemon.kill()
            ended = re.compile(r"\+\+\+ killed by SIGKILL")
            lines = poll_until(lambda: trace.seek(0) or ended.search(text := trace.read()) and text.splitlines(),
                               TRACE_SECONDS, "The end of the trace")  # fmt: skip
            self._daemon.restart()
        return calls_in(lines)


def is_synced(answer):
    """Of what 'status state --json' says."""
    return json.loads(answer)["state"]["synced"]


def calls_in(lines):
    """Driver calls in a trace of system calls."""
    connections, calls = set(), 0
    for line in lines:
        if found := CONNECT.search(line):
            connections.add(found[1])
        elif found := MESSAGE.search(line):
            calls += found[1] in connections
    if not calls:
        raise BenchError("The trace of system calls has no driver calls.")
    return calls


def row_of(seconds):
    """Number, least, median and most, in milliseconds."""
    return [len(seconds), *(round(of(seconds) * MILLI) for of in (min, statistics.median, max))]


def measure(options):
    return measure_in_namespaces(__name__, options)


def measure_inside(options):
    with contextlib.ExitStack() as stack:
        bed = Bed(stack)
        seconds = [bed.seconds_to_sync() for _ in range(QUICK_STARTS if options.quick else STARTS)]
        calls = bed.driver_calls()
    table = {
        "title": "Milliseconds until 'status' says synced",
        "columns": ["starts", "least", "median", "most", "driver calls"],
        "rows": [[*row_of(seconds), calls]],
    }
    return {"tables": [table], "notes": NOTES}
