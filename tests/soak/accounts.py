"""Exact accounts of the frames of an overload: on each hop, what was given equals what arrived and every named loss.

The hops are a host's cable, the switch, the cables between the switches, and a host's socket. The talkers rest before
and after, so no frame is under way while the counters are read.
"""

from typing import NamedTuple

from adp.lab import LabError
from adp.lab.device import host_interface
from adp.lab.process import poll_until
from fabric import CABLES, SIDES, hosts_of

NET_DEVICES = "/proc/thread-self/net/dev"
RECEIVED, SENT, SEND_DROPS = 2, 10, 12  # columns: packets received, packets sent, dropped when sent
SETTLE_SECONDS, SETTLE_PAUSE = 30.0, 0.2


class Carried(NamedTuple):
    """What the kernel says of an interface."""

    received: int
    sent: int
    dropped: int


def read_carried(namespace):
    """The interfaces of a namespace by name."""
    with namespace.entered(), open(NET_DEVICES, encoding="ascii") as lines:
        rows = [line.replace(":", " ").split() for line in lines][2:]
    return {row[0]: Carried(int(row[RECEIVED]), int(row[SENT]), int(row[SEND_DROPS])) for row in rows}



def flat(values, path=""):
    """Every number in an answer, by the way to it."""
    if isinstance(values, dict):
        return {key: number for name, each in values.items() for key, number in flat(each, f"{path} {name}").items()}
    return {path.strip(): values} if isinstance(values, int) else {}


class Reading:
    """All counters at one moment."""

    def __init__(self, fabric):
        self.numbers = {}
        fabric.stations.ask()
        for station in fabric.stations.all:
            self._add(f"host {station.number}", {name: station.counts[name] for name in ("sent", "taken", "overrun")})
            self._add_interfaces(f"host {station.number}", station.host.namespace)
        for side in SIDES:
            device = fabric.device(side)
            self._add_interfaces(f"device {side}", device.namespace)
            for row in device.ask("counters")["counters"]:
                self._add(f"device {side} port {row['port']}", row)
            addresses = device.ask("macs", last=0)
            self._add(f"device {side} addresses", {name: addresses[name] for name in ("learned", "moved", "aged", "refused")})
            for row in device.ask("queues")["ports"]:
                lost = {name: sum(queue[name] for queue in row["queues"]) for name in ("dropped", "flushed")}
                self._add(f"device {side} port {row['port']} queues", lost)

    def _add(self, place, values):
        self.numbers.update(flat(values, place))

    def _add_interfaces(self, place, namespace):
        for name, carried in read_carried(namespace).items():
            self._add(f"{place} {name}", carried._asdict())

    def since(self, earlier):
        return {name: number - earlier.numbers[name] for name, number in self.numbers.items()}


def settled_reading(fabric):
    """A reading after which nothing moves: the devices have taken all frames out of their rings."""
    readings = [Reading(fabric)]

    def is_settled():
        readings.append(Reading(fabric))
        return readings[-1].numbers == readings[-2].numbers

    poll_until(is_settled, SETTLE_SECONDS, "The end of all counts", SETTLE_PAUSE)
    return readings[-1]


class Accounts:
    """The accounts of one overload, from the readings before and after it."""

    def __init__(self, fabric, before, after):
        self._fabric = fabric
        self._change = after.since(before)
        self.sent = sum(self._change[f"host {station.number} sent"] for station in fabric.stations.all)
        self.taken = sum(self._change[f"host {station.number} taken"] for station in fabric.stations.all)
        self.losses = {}

    def check(self):
        """Goes over all hops. The losses that they name explain every frame that no host has taken."""
        for station in self._fabric.stations.all:
            self._check_cable(f"host {station.number}", host_interface(station.host.port), "sent", 0)
        for side in SIDES:
            self._check_switch(side)
            for port in hosts_of(side) | {cable[side] for cable in CABLES}:
                self._check_arrival(side, port)
                place = f"device {side} port {port}"
                self._check_cable(f"device {side}", f"port{port}", f"port {port} tx_frames", self._change[f"{place} tx_lost"])
        for station in self._fabric.stations.all:
            self._check_host(station)
        if self.sent != self.taken + sum(self.losses.values()):
            raise LabError(f"Of {self.sent} frames {self.taken} have arrived, and {self.losses} is not the rest.")

    def _lose(self, name, count):
        if count < 0:
            raise LabError(f"Under overload {count} frames were lost: {name}.")
        if count:
            self.losses[name] = self.losses.get(name, 0) + count

    def _check_cable(self, place, interface, given_name, refused):
        """What was given to an interface was sent by it, or it has said that it dropped it."""
        given = self._change[f"{place} {given_name}"] - refused
        self._lose("refused by an interface", refused)
        missing = given - self._change[f"{place} {interface} sent"]
        if not 0 <= missing <= self._change[f"{place} {interface} dropped"]:
            raise LabError(f"Under overload {given} frames were given to {interface} of {place}, and {missing} of "
                           "them are neither sent nor dropped.")  # fmt: skip
        self._lose("dropped by a cable", missing)

    def _check_arrival(self, side, port):
        """What the port's interface has received, the device has received or says that it lost."""
        place = f"device {side} port {port}"
        arrived = self._change[f"device {side} port{port} received"]
        lost = self._change[f"{place} rx_lost"]
        missing = arrived - self._change[f"{place} rx_frames"] - lost
        if missing:
            raise LabError(f"Under overload {missing} of {arrived} frames that arrived at {place} are in no counter.")
        self._lose("receive ring full", lost)

    def _check_switch(self, side):
        """All frames are for one known station: the switch sends each once, or drops it for a reason."""
        start = f"device {side} port "
        total = {"rx_frames": 0, "tx_frames": 0}
        reasons = 0
        for name, count in self._change.items():
            if not name.startswith(start):
                continue
            counter = name.split(maxsplit=4)[4]
            if counter in total:
                total[counter] += count
            elif counter.startswith(("drops ", "queues ", "tx_too_long")):
                self._lose(counter, count)
                reasons += count
        if total["rx_frames"] != total["tx_frames"] + reasons:
            changes = ", ".join(f"{name.removeprefix(start)} {count}" for name, count in sorted(self._change.items())
                                if count and name.startswith(f"device {side} "))  # fmt: skip
            raise LabError(f"Under overload the {self._fabric.device(side).name} received {total['rx_frames']} frames, "
                           f"sent {total['tx_frames']} and dropped {reasons}. Its counts: {changes}.")  # fmt: skip

    def _check_host(self, station):
        place = f"host {station.number}"
        arrived = self._change[f"{place} {host_interface(station.host.port)} received"]
        overrun = self._change[f"{place} overrun"]
        if arrived != self._change[f"{place} taken"] + overrun:
            raise LabError(f"Under overload {arrived} frames reached {place}, which has taken "
                           f"{self._change[f'{place} taken']} and lost {overrun}.")  # fmt: skip
        self._lose("host too slow", overrun)
