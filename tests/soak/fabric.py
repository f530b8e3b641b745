"""The two devices as a network: an aggregation group between them, and VLANs of hosts on both.

Each device has two managers for that: the example program that keeps the group, which is ended or killed and started
again, and an operator, an adpsh that runs as long as the test, also while the device is off.
"""

import contextlib
import time

from health import settled_descriptors
from adp.lab import LabError, Pair
from adp.lab.aggregation import AggregationProgram
from adp.lab.process import poll_until
from settings import CALL_LOST, OK, TRUNK_MISSING, VLAN_MISSING, listed
from stations import Station, Stations

# The two sides use different ports, so that nothing works because numbers happen to be equal.
CABLES = ((1, 11), (2, 12), (3, 13), (4, 14))
# VLAN: the ports of its hosts on the near and on the far side. Intruders are in no VLAN.
VLANS = {101: ({5, 6}, {7, 8}), 102: ({7, 8}, {9, 10})}
INTRUDERS = (9, 6)
GROUP_VLAN = 100  # of the example program
GROUP = "agg1"
SIDES = (0, 1)
KEPT_COMMANDS = ("trunks", "vlans")
LINK_SECONDS = 20.0
SILENCE_SECONDS = 0.5
# The driver's link scan looks for a lost device five times a second.
SCAN_PAUSE = 0.3


def hosts_of(side):
    return {INTRUDERS[side]}.union(*(ports[side] for ports in VLANS.values()))


class Fabric:
    """Two devices that are on, without a group yet: see build()."""

    def __init__(self, device_build, build):
        self._build = build
        self._stack = contextlib.ExitStack()
        self.pair = Pair(hosts_of(0), hosts_of(1), CABLES, device_build)
        self.programs = [None, None]
        self.operators = []
        self.pulled = set()  # (side, cable's number)

    def __enter__(self):
        with self._stack as stack:
            stack.enter_context(self.pair)
            self.stations = Stations(self._make_stations())
            self.fresh = [settled_descriptors(lab.device.pid) for lab in self.labs]
            self._stack = stack.pop_all()
        return self

    def __exit__(self, *problem):
        return self._stack.__exit__(*problem)

    @property
    def labs(self):
        return self.pair.labs

    def device(self, side):
        return self.labs[side].device

    def _make_stations(self):
        places = [(side, port, vid) for vid, sides in VLANS.items() for side in SIDES for port in sorted(sides[side])]
        places += [(side, INTRUDERS[side], 0) for side in SIDES]
        for number, (side, port, vid) in enumerate(places, 1):
            yield Station(self.labs[side], port, number, vid, [vid] if vid else list(VLANS))

    # Management

    def start_operators(self):
        for lab in self.labs:
            self.operators.append(lab.shell(self._build))
            self.operators[-1].call("map")

    def _do(self, side, line, *results):
        result = self.operators[side].result(line)
        if result not in results:
            raise LabError(f"'{line}' on the {self.device(side).name} answers {result}.")

    def build(self, side):
        """Makes the device's part of the network, whatever exists of it. Without the group the cables are a loop, so
        the VLANs exist only while the group does.
        """
        for vid in (*VLANS, GROUP_VLAN):
            self._do(side, f"adp_vlan_destroy {vid}", OK, VLAN_MISSING)
        self._do(side, f"adp_delete_agg_group {GROUP}", OK, TRUNK_MISSING)
        ports = [cable[side] for cable in CABLES]
        self.programs[side] = AggregationProgram(self.device(side), self._build, ports)
        self._stack.callback(self.programs[side].close)
        for vid, hosts in VLANS.items():
            self._do(side, f"adp_vlan_create {vid}", OK)
            self._do(side, f"adp_vlan_port_set {vid} {listed(hosts[side] | set(ports))} {{}}", OK)

    def replace_program(self, side):
        """Kills the program; the chip keeps its tables, and another program takes over."""
        device = self.device(side)
        before = [device.ask(command) for command in KEPT_COMMANDS]
        self.programs[side].kill()
        after = [device.ask(command) for command in KEPT_COMMANDS]
        for earlier, later in zip(map(self._own, before), map(self._own, after), strict=True):
            if earlier != later:
                raise LabError(f"The {device.name} has lost settings with its program: {earlier}, then {later}.")
        self.build(side)

    @staticmethod
    def _own(answer):
        """The fabric's part of an answer. Managers change the rest meanwhile."""
        groups = [row for row in answer.get("trunks", ()) if row["group"] == 1]
        return groups + [row for row in answer.get("vlans", ()) if row["vid"] in (*VLANS, GROUP_VLAN)]

    def check_link_scan(self, side):
        """The program, which went on running while its device was off, is told of moved cables again. The device has no
        VLAN yet, so there is no loop.
        """
        port = CABLES[0][side]
        self.programs[side].said()

        def hears():
            self.pull(side, 0)
            self.plug(side, 0)
            return any(line.startswith(f"port {port} ") for line in self.programs[side].said())

        poll_until(hears, LINK_SECONDS, f"A line about a moved cable on the {self.device(side).name}", SCAN_PAUSE)

    def end_program(self, side):
        """Ends the program. It may complain that the device has lost its settings, but it must not crash."""
        self.programs[side].close()
        status = self.programs[side].exit_status
        if status not in (0, 1):
            raise LabError(f"link_aggregation on the {self.device(side).name} ended with {status}.")

    def check_is_off(self, side):
        """The operator's calls fail as their contracts say."""
        self._do(side, "adp_vlan_create 101", CALL_LOST)
        self._do(side, "adp_delete_agg_group agg8", CALL_LOST)

    # Cables

    def pull(self, side, number):
        self.device(side).control("pull", CABLES[number][side])
        self.pulled.add((side, number))

    def plug(self, side, number):
        self.device(side).control("plug", CABLES[number][side])
        self.pulled.discard((side, number))

    def plug_all(self):
        for side, number in sorted(self.pulled):
            self.plug(side, number)
        self.await_cables()

    def await_cables(self):
        """Waits until all cables are in, and the running programs have handled it."""
        self.pair.await_cables(range(len(CABLES)))
        for side in SIDES:
            wanted = {cable[side] for cable in CABLES}
            poll_until(
                lambda side=side, wanted=wanted: self._members(side) == wanted, LINK_SECONDS, "The group's return"
            )

    def await_silence(self):
        """Waits until the programs have said nothing for a while: they forget addresses when a cable has returned."""
        begin = time.monotonic()

        def is_silent():
            nonlocal begin
            if any(program.take_events() for program in self.programs if program):
                begin = time.monotonic()
            return time.monotonic() - begin >= SILENCE_SECONDS

        poll_until(is_silent, LINK_SECONDS, "The programs' silence")

    def _members(self, side):
        for program in filter(None, self.programs):
            program.take_events()  # or its pipe would become full
        rows = [row for row in self.device(side).ask("trunks")["trunks"] if row["group"] == 1]
        return set(rows[0]["members"]) if rows else None
