"""A virtual device with three hosts, the addresses and rules that it is given, and the stream of frames through it."""

import contextlib
import pathlib
import subprocess
import sys

from adp.lab import Build
from adp.lab.device import Device, host_interface
from adp.lab.netns import NetNamespace
from adp.lab.nic import Nic
from adp.lab.process import poll_until, stop, tied
from adp.lab.rules import RuleText, distinct_places
from adp.lab.shell import Shell

from bench.problem import BenchError

SENDER, RECEIVER, WITNESS = PORTS = 1, 2, 3
LINK_SECONDS = 10.0
LEARN_SECONDS = 10.0
PROGRAM_SECONDS = 60.0
FRAME_SECONDS = 2.0
# Columns of /proc/net/dev.
RECEIVED_FRAMES, SENT_FRAMES = 1, 9

# Receiving stations are numbered from 0. The device's address table has buckets of consecutive addresses; with this
# number the sender's address fits into one beside 8000 others.
SENDING_STATION = 66436
STATION_0 = bytes.fromhex("02be00000000")
SMALL_BYTES = 64
# Frames of a flow in a row. A kernel that splits such trains itself makes the sender twice as fast.
TRAIN = 8
TRIAL_SECONDS = 0.01

# Qualifiers and the action of the rules, and networks and UDP ports that the stream does not use.
SOURCE, DESTINATION, IN_PORTS, UDP_PORT = 9, 10, 13, 28
DROP = 201
DESTINATIONS, SOURCES = 0x0A630000, 0x0A620000
FIRST_UDP_PORT = 20000
TEXT = RuleText(sys.byteorder)


def conditions_of(number):
    """Conditions of a rule that no frame of the stream meets. There are three kinds of them."""
    kinds = [
        [(DESTINATION, DESTINATIONS + number)],
        [(UDP_PORT, FIRST_UDP_PORT + number)],
        [(SOURCE, SOURCES + number), (UDP_PORT, FIRST_UDP_PORT + number)],
    ]
    return [(IN_PORTS, {SENDER}), *kinds[number % len(kinds)]]


def counts_of_interfaces():
    """{interface: the numbers of its row in /proc/net/dev} of the namespace that the thread is in."""
    _, _, *lines = pathlib.Path("/proc/thread-self/net/dev").read_text(encoding="ascii").splitlines()
    rows = (line.split(":") for line in lines)
    return {name.strip(): [int(number) for number in numbers.split()] for name, numbers in rows}


class Bed:
    """The device and its hosts. The hosts' kernels answer nothing, and no socket listens at the receiver."""

    def __init__(self, cores):
        self._cores = cores
        with contextlib.ExitStack() as stack:
            with cores.starting_on(cores.device):
                self.device = stack.enter_context(contextlib.closing(Device(Build("host"), len(PORTS))))
            self._hosts = {port: self._host(stack, port) for port in PORTS}
            self.device.await_links(PORTS)
            self._train = 1
            self._train = self._usable_train()
            self._stack = stack.pop_all()

    def _host(self, stack, port):
        host = stack.enter_context(contextlib.closing(NetNamespace(f"host {port}")))
        name = host_interface(port)
        self.device.namespace.ip(f"link set {name} netns {host.holder_pid}")
        host.ip(f"link set {name} arp off up")
        Nic(host, name).close()  # which switches its offloads off
        poll_until(lambda: host.is_operational(name), LINK_SECONDS, f"A link on {name}")
        return host

    def _usable_train(self):
        done = self._run(SENDER, "stream", "--train", TRAIN, "--seconds", TRIAL_SECONDS)
        return TRAIN if done.returncode == 0 and int(done.stdout) > 0 else 1

    def _command(self, port, *words):
        return tied(Build("host").command("bench_traffic", host_interface(port), *words))

    def _run(self, port, *words):
        with self._hosts[port].entered(), self._cores.starting_on(self._cores.sender):
            return subprocess.run(self._command(port, *words), capture_output=True, text=True, timeout=PROGRAM_SECONDS)

    def frames(self, port):
        """(sent, received) by a port's host so far."""
        with self._hosts[port].entered():
            counts = counts_of_interfaces()[host_interface(port)]
        return counts[SENT_FRAMES], counts[RECEIVED_FRAMES]

    def learn(self, addresses):
        """Has the device learn that many addresses at the receiver, and the sender's."""
        for port, first, count, to in ((RECEIVER, 0, addresses, SENDING_STATION), (SENDER, SENDING_STATION, 1, 0)):
            done = self._run(port, "--first", first, "--stations", count, "introduce", "--to", to)
            if done.returncode != 0 or int(done.stdout) != count:
                raise BenchError(f"{count} stations could not send their first frames: {done.stdout} {done.stderr}")
        poll_until(lambda: len(self.device.control("macs")["macs"]) == addresses + 1, LEARN_SECONDS,
                   f"The learning of exactly {addresses + 1} addresses")  # fmt: skip

    def install(self, rules):
        """Installs that many rules through the library. None of them matches a frame of the stream."""
        with contextlib.closing(Shell(self.device, Build("host").command("adpsh", "--json", "--keep-going"))) as shell:
            lines = ["map", "adp_fp_init"]
            places = distinct_places(shell.call("show g_stFpInfo")["value"], rules)
            for number, place in enumerate(places):
                record = TEXT.record(place.submodule, place.entity, conditions_of(number), [(DROP,)])
                lines.append(f"adp_fp_add_entity_rule {record}")
            failed = [line for line in lines if shell.result(line) != 0]
        installed = sum(row["installed"] for row in self.device.control("fields")["fields"])
        if failed or installed < rules:
            raise BenchError(f"{installed} entries of {rules} rules are installed; calls that failed: {failed[:3]}")

    @contextlib.contextmanager
    def stream(self, flows, addresses, size, seconds):
        """The process that sends frames from the sender to the receiver, for that long at most."""
        words = self._command(SENDER, "--first", SENDING_STATION, "--stations", addresses, "stream", "--flows", flows,
                              "--size", size, "--train", self._train, "--seconds", seconds)  # fmt: skip
        with self._hosts[SENDER].entered(), self._cores.starting_on(self._cores.sender):
            process = subprocess.Popen(words, stdout=subprocess.PIPE)
        try:
            yield process
            if process.poll() is not None:
                raise BenchError("The stream of frames has ended too early.")
        finally:
            stop(process)

    def check(self):
        """A frame that crosses the device leaves as it entered."""
        nic = Nic(self._hosts[RECEIVER], host_interface(RECEIVER))
        with contextlib.closing(nic), self.stream(1, 1, SMALL_BYTES, FRAME_SECONDS):
            frame = nic.receive(STATION_0, FRAME_SECONDS)
        header = STATION_0 + STATION_0[:2] + SENDING_STATION.to_bytes(4) + b"\x08\x00"
        if not frame or len(frame) != SMALL_BYTES or not frame.startswith(header):
            raise BenchError(f"The device changes the frames of the stream: {frame and frame.hex()}")

    def close(self):
        self._stack.close()
