"""TCP between a host and the switch's own stack: through adp-switchd, and through a bare relay in its place."""

import contextlib
import statistics
from typing import NamedTuple

from adp.lab import Build, Lab
from adp.lab.device import CPU_INTERFACE, FIRST_PHYSICAL_PORT
from adp.lab.iperf import tcp_megabits
from adp.lab.offload import disable_offloads
from adp.lab.process import poll_until
from adp.lab.program import Program, installed
from adp.lab.switch import Switch

from bench.cores import seconds_of
from bench.isolated import measure_in_namespaces
from bench.stream import RECEIVED_FRAMES, SENT_FRAMES, counts_of_interfaces

NAME = "cpu_path"
TITLE = "adp-switchd: TCP between a host and the switch's own stack"
PROGRAM = "bench_bare_relay"
TARGETS = {"host": [PROGRAM, "adp-switchd", "vdeviced", "vdevctl"]}
HAS_COUNTS = False
ROUNDS, QUICK_ROUNDS = 10, 3
SECONDS = 1
REACH_SECONDS, PING_SECONDS = 10.0, 0.5
MICRO = 1e6
PORT = 1
BRIDGE, MEMBER, NETWORK = "br10", f"swp{PORT}", "10.10.0"
DIRECT_BRIDGE, DIRECT, DIRECT_NETWORK = "br20", "direct0", "10.20.0"
HOST_DIRECT = "direct1"
TAP = "bare0"
SWITCHD, BARE, ALONE = WAYS = "adp-switchd", "bare relay", "without the chip"
DIRECTIONS = {"host to switch": (), "switch to host": ("--reverse",)}
NOTES = [
    "iperf3 runs as fast as it can, in turns. The bare relay stands in adp-switchd's place between the chip and a TAP "
    "interface in the same bridge: it reads a frame, removes or adds the tag, and writes the frame. 'without the chip' "
    "is the same relay on a cable to the host, so the chip's own process has no part in it. A ratio is that of two "
    "measurements of a round; 'from' and 'to' are its quartiles.",
    "The processor time is that of the process and of the kernel on its behalf, for frames of both directions; what "
    "receives a frame runs in part within the system call that writes it.",
]


class Sample(NamedTuple):
    """One run of iperf3: Mbit/s, processor seconds of what passes the frames on, and their number."""

    megabits: float
    seconds: float
    frames: int

    @property
    def microseconds_a_frame(self):
        return self.seconds * MICRO / self.frames


class Bed:
    """The switch with a bridge to its port, and another bridge for a cable that does not pass the chip."""

    def __init__(self, stack):
        lab = stack.enter_context(Lab("host", {PORT}, PORT))
        self.switch = stack.enter_context(contextlib.closing(Switch(lab)))
        self._host = lab.hosts[PORT]
        for nic in (lab.device.cpu, self._host.nic):
            nic.close()  # each gets a copy of every frame
        namespace = self.switch.namespace
        self.switch.bridge(BRIDGE, [MEMBER], addresses=[f"{NETWORK}.1/24"])
        self._host.set_address(f"{NETWORK}.2/24")
        self._lay_cable(namespace, self._host.namespace)
        for bridge in (BRIDGE, DIRECT_BRIDGE):  # whose addresses would change with their members
            namespace.ip(f"link set {bridge} address {namespace.mac_of(bridge)}")

    @staticmethod
    def _lay_cable(near, far):
        # The relay's end of the cable must not answer for the bridge's address.
        near.ip(f"link add {DIRECT} type veth peer name {HOST_DIRECT} netns {far.holder_pid}", f"link set {DIRECT} arp off up",
                f"link add {DIRECT_BRIDGE} type bridge", f"link set {DIRECT_BRIDGE} up",
                f"address add {DIRECT_NETWORK}.1/24 dev {DIRECT_BRIDGE}")  # fmt: skip
        far.ip(f"link set {HOST_DIRECT} up", f"address add {DIRECT_NETWORK}.2/24 dev {HOST_DIRECT}")
        for namespace, interface in ((near, DIRECT), (far, HOST_DIRECT)):
            with namespace.entered():
                disable_offloads(interface)

    def measure(self, way):
        """{direction: Sample}"""
        if way == SWITCHD:
            return self._run(f"{NETWORK}.1", CPU_INTERFACE, self.switch.switchd.pid)
        with self._switchd_away():
            if way == BARE:
                return self._through_relay(BRIDGE, f"{NETWORK}.1", CPU_INTERFACE, FIRST_PHYSICAL_PORT + PORT - 1)
            return self._through_relay(DIRECT_BRIDGE, f"{DIRECT_NETWORK}.1", DIRECT)

    @contextlib.contextmanager
    def _switchd_away(self):
        """The daemon is killed, so the chip stays as it is; its interface is not in the bridge."""
        namespace = self.switch.namespace
        self.switch.switchd.kill()
        namespace.ip(f"link set {MEMBER} nomaster")
        try:
            yield
        finally:
            namespace.ip(f"link set {MEMBER} master {BRIDGE}")
            self.switch.switchd.restart()

    def _through_relay(self, bridge, address, interface, *port):
        namespace = self.switch.namespace
        with contextlib.closing(Program(namespace, PROGRAM)) as relay:
            relay.start(*Build("host").command(PROGRAM, interface, TAP, *port), own_run=False)
            relay.await_start(lambda: "ready" in relay.log())
            namespace.ip(f"link set {TAP} master {bridge}")
            return self._run(address, interface, relay.pid)

    def _run(self, address, interface, pid):
        poll_until(lambda: self._host.ping(address, PING_SECONDS), REACH_SECONDS, f"A ping to {address}")
        return {name: self._sample(address, interface, pid, options) for name, options in DIRECTIONS.items()}

    def _sample(self, address, interface, pid, options):
        before = self._frames(interface), seconds_of([pid])
        megabits = tcp_megabits(self._host.namespace, self.switch.namespace, address, SECONDS, *options)
        frames, seconds = self._frames(interface), seconds_of([pid])
        return Sample(megabits, seconds - before[1], frames - before[0])

    def _frames(self, interface):
        """That the interface has received and sent."""
        with self.switch.namespace.entered():
            counts = counts_of_interfaces()[interface]
        return counts[RECEIVED_FRAMES] + counts[SENT_FRAMES]


def rate_rows(direction, rounds):
    """adp-switchd beside each of the others, of rounds {way: {direction: Sample}}."""
    for other in (BARE, ALONE):
        ours, theirs = ([each[way][direction].megabits for each in rounds] for way in (SWITCHD, other))
        ratios = [our / their for our, their in zip(ours, theirs)]
        low, _, high = statistics.quantiles(ratios, n=4)
        rates = (round(statistics.median(each)) for each in (ours, theirs))
        yield [direction, other, len(rounds), *rates, statistics.median(ratios), low, high]


def time_row(direction, rounds):
    """The median of each way's processor time for a frame."""
    return [direction, *(statistics.median(each[way][direction].microseconds_a_frame for each in rounds) for way in WAYS)]


def measure(options):
    return measure_in_namespaces(__name__, options)


def measure_inside(options):
    installed("iperf3")
    rounds = []
    with contextlib.ExitStack() as stack:
        bed = Bed(stack)
        for number in range(QUICK_ROUNDS if options.quick else ROUNDS):
            order = WAYS if number % 2 == 0 else WAYS[::-1]
            rounds.append({way: bed.measure(way) for way in order})
    rates = {
        "title": "Mbit/s of TCP",
        "columns": ["TCP", "beside", "rounds", "adp-switchd", "other", "ratio", "from", "to"],
        "rows": [row for direction in DIRECTIONS for row in rate_rows(direction, rounds)],
    }
    times = {
        "title": "Microseconds of processor time for a frame",
        "columns": ["TCP", *WAYS],
        "rows": [time_row(direction, rounds) for direction in DIRECTIONS],
    }
    return {"tables": [rates, times], "notes": NOTES}
