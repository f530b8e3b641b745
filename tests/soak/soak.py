"""The course of a run: what disturbs the two devices, when, and what is checked."""

import collections
import contextlib
import itertools
import time
from random import Random

from accounts import Accounts, settled_reading
from adp.lab import LabError
from adp.lab.process import poll_until
from fabric import CABLES, SIDES
from faults import FAULTS, killed_in_start
from final_checks import check_descriptors, check_forwarding
from health import KIBIBYTE, Holdings
from manager import Manager
from power import Power
from settings import Address, Group, Vlan, registers

# Each manager has four ports without a cable, two of them for a group of its own.
MANAGED_PORTS = ((15, 16, 17, 18), (19, 20, 21, 22), (23, 24, 25, 26))
FIRST_GROUP = 2
FIRST_VLAN, VLANS_EACH = 1000, 6
ADDRESSES_EACH = 8
# A device is warm after a minute, or in a short run after this share of it.
WARM_SECONDS, WARM_SHARE = 60, 0.15
# Devices are switched off in the first part only, so that both run for a long time afterwards.
CYCLES_SHARE = 0.6
SECONDS_PER_CYCLE = 25
SECONDS_PER_PROGRAM = 12
SECONDS_PER_OVERLOAD = 60
SECONDS_PER_FAULT = 5
CABLE_SECONDS = (0.1, 0.8)
PLUG_SHARE = 0.4
FAILED_CALLS_WHILE_OFF = 20
OFF_SECONDS = 30.0
# More than the receive rings of a device that stands still hold.
OVERLOAD_FRAMES, STILL_SECONDS = 10_000, 0.5
# Counts that are not 0 after a run.
NEVER_ZERO = ("frames received", "values read back", "calls without a device", "managers killed in a call",
              "programs killed", "cables moved", "power cycles", "frames of overloads")  # fmt: skip


class Soak:
    """One run. `summary()` has its counts, whatever comes of it."""

    def __init__(self, fabric, options):
        self._fabric, self._options = fabric, options
        self._random = Random(options.seed)
        self._powers = [Power() for _ in SIDES]
        self._managers = [list(self._make_managers(side)) for side in SIDES]
        self._holdings = [None, None]
        self._warm_at = [0.0, 0.0]
        self._sides = itertools.cycle(SIDES)
        self.cable_changes = self.separations = self.program_kills = self.power_cycles = 0
        self.growth = self.overload_frames = 0
        self.overload_losses, self.faults = collections.Counter(), collections.Counter()
        self._faults = []

    def _make_managers(self, side):
        lab = self._fabric.labs[side]
        for number, ports in enumerate(MANAGED_PORTS):
            settings = [setting for port in ports[:2] for setting in registers(port)]
            first = FIRST_VLAN + number * VLANS_EACH
            settings += [Vlan(vid, ports) for vid in range(first, first + VLANS_EACH)]
            macs = (bytes([0x02, 0xAD, 0x00, 0x20 + number, 0x00, low]) for low in range(ADDRESSES_EACH))
            settings += [Address(mac, ports[:2]) for mac in macs]
            settings.append(Group(FIRST_GROUP + number, ports[2:], lab.device))
            seed = f"{self._options.seed} {side} {number}"
            name = f"manager {number + 1} of the {lab.device.name}"
            yield Manager(name, lab, self._powers[side], settings, self._build(number), seed, is_killed=number > 0)

    def _build(self, number):
        return self._options.builds[number % len(self._options.builds)]

    @property
    def managers(self):
        return [manager for managers in self._managers for manager in managers]

    def total(self, name):
        return sum(getattr(manager, name) for manager in self.managers)

    # The course of a run

    def run(self):
        fabric, seconds = self._fabric, self._options.seconds
        fabric.start_operators()
        for side in SIDES:
            fabric.build(side)
        fabric.await_cables()
        fabric.stations.start(self._options.rate, seconds, self._options.seed)
        with contextlib.closing(fabric.stations):
            fabric.stations.await_flow("At the beginning")
            for manager in self.managers:
                manager.start()
            self._disturb(seconds)
            self._settle()
        check_forwarding(fabric)
        check_descriptors(fabric)
        self._check_counts()

    def _disturb(self, seconds):
        began = time.monotonic()
        for side in SIDES:
            self._begin_warming(side)
        plan = self._plan(began, seconds)
        while (now := time.monotonic()) < began + seconds:
            if plan and now >= plan[0][0]:
                plan.pop(0)[1]()
            else:
                self._move_a_cable()
            self._note_holdings()
            self._check()
            time.sleep(self._random.uniform(*CABLE_SECONDS))

    def _plan(self, began, seconds):
        """What happens besides cables that are moved: pairs of a moment and what is done then, in order."""
        warm, cool, end = (began + share * seconds for share in (WARM_SHARE, CYCLES_SHARE, 1.0))
        plan = []
        plan += self._times(warm, cool, SECONDS_PER_CYCLE, lambda: self._switch_off_and_on(next(self._sides)))
        plan += self._times(began, end, SECONDS_PER_PROGRAM, lambda: self._replace_program(self._random.choice(SIDES)))
        plan += self._times(began, end, SECONDS_PER_OVERLOAD, self._overload)
        plan += self._times(began, end, SECONDS_PER_FAULT, self._cause_a_fault)
        return sorted(plan, key=lambda each: each[0])

    def _times(self, first, last, seconds_each, action):
        """The action at random moments in this stretch, as often as the length of the run allows."""
        count = max(1, round(self._options.seconds / seconds_each))
        return [(self._random.uniform(first, last), action) for _ in range(count)]

    def _begin_warming(self, side):
        self._holdings[side] = None
        self._warm_at[side] = time.monotonic() + min(WARM_SECONDS, WARM_SHARE * self._options.seconds)

    def _note_holdings(self):
        for side, warm_at in enumerate(self._warm_at):
            if not self._holdings[side] and time.monotonic() >= warm_at:
                device = self._fabric.device(side)
                self._holdings[side] = Holdings(device.name, device.pid)

    def _check(self):
        for manager in self.managers:
            if manager.problem:
                raise LabError(f"{manager.name}: {manager.problem}")
        for side in SIDES:
            device = self._fabric.device(side)
            if not device.is_on() or device.errors():
                raise LabError(f"The {device.name} has crashed or written errors: {device.errors() or 'none'}")
        self._fabric.stations.ask()

    # Disturbances

    def _move_a_cable(self):
        pulled = self._fabric.pulled
        numbers = {number for _, number in pulled}
        if pulled and (len(numbers) == len(CABLES) or self._random.random() < PLUG_SHARE):
            self._fabric.plug(*self._random.choice(sorted(pulled)))
        else:
            free = sorted({(side, number) for side in SIDES for number in range(len(CABLES))} - pulled)
            self._fabric.pull(*self._random.choice(free))
        self.cable_changes += 1
        self.separations += len({number for _, number in pulled}) == len(CABLES)

    def _replace_program(self, side):
        self._fabric.plug_all()
        self._fabric.replace_program(side)
        self._fabric.await_cables()
        self.program_kills += 1
        self._fabric.stations.await_flow("With another program for the group")

    def _switch_off_and_on(self, side):
        self._judge_memory(side)
        self._fabric.plug_all()
        device, power = self._fabric.device(side), self._powers[side]
        power.advance()
        device.crash()
        power.advance()
        failed = [(manager, manager.failed_calls + FAILED_CALLS_WHILE_OFF) for manager in self._managers[side]]
        poll_until(
            lambda: all(manager.failed_calls >= wanted or manager.problem for manager, wanted in failed),
            OFF_SECONDS,
            f"{FAILED_CALLS_WHILE_OFF} failed calls of each manager of the {device.name} while it is off",
        )
        self._fabric.check_is_off(side)
        power.advance()
        power.await_earlier_calls()
        killed_in_start(device, self._random)
        device.restart()
        power.advance()
        self._begin_warming(side)
        self._fabric.check_link_scan(side)
        self._fabric.end_program(side)
        self._fabric.build(side)
        self._fabric.await_cables()
        self.power_cycles += 1
        self._fabric.stations.await_flow(f"After the {device.name} was switched off and on")

    def _cause_a_fault(self):
        """The next fault of a random order, so that each has its turn."""
        if not self._faults:
            self._faults = self._random.sample(FAULTS, len(FAULTS))
        fault, side = self._faults.pop(), self._random.choice(SIDES)
        self._fabric.plug_all()
        fault(self._fabric, side, self._random)
        self.faults[fault.__name__] += 1
        self._fabric.stations.await_flow(f"After {fault.__name__} on the {self._fabric.device(side).name}")

    def _overload(self):
        """Floods both devices, one of which stands still meanwhile, and accounts for every frame."""
        stations, device = self._fabric.stations, self._fabric.device(next(self._sides))
        self._fabric.plug_all()
        self._fabric.await_silence()
        stations.await_flow("Before an overload")
        stations.pause()
        before = settled_reading(self._fabric)
        with device.standing_still(STILL_SECONDS):
            stations.flood(OVERLOAD_FRAMES)
            time.sleep(STILL_SECONDS)
        stations.await_end_of_flood()
        accounts = Accounts(self._fabric, before, settled_reading(self._fabric))
        accounts.check()
        self.overload_frames += accounts.sent
        self.overload_losses.update(accounts.losses)
        stations.go_on()

    # Its end

    def _settle(self):
        self._fabric.plug_all()
        self._fabric.stations.await_flow("In the end")
        for side in SIDES:
            self._judge_memory(side)
        for manager in self.managers:
            manager.end()
        for manager in self.managers:
            manager.await_end()
        self._check()
        self._overload()

    def _judge_memory(self, side):
        if self._holdings[side] and self._options.judges_memory:
            self.growth = max(self.growth, self._holdings[side].check_memory())

    def _check_counts(self):
        """A count of 0 means that something was not tested."""
        zero = [name for name, count in self.summary() if name in NEVER_ZERO and count == 0]
        if zero:
            raise LabError(f"The run was too short, these counts are 0: {', '.join(zero)}.")

    def summary(self):
        stations = self._fabric.stations
        return [
            ("frames sent", stations.total("sent")),
            ("frames received", stations.received()),
            ("of these flooded", stations.total("flooded")),
            ("misplaced", stations.total("misplaced")),
            ("repeated", stations.total("repeated")),
            ("changed on their way", stations.total("spoilt")),
            ("calls of managers", self.total("calls")),
            ("values read back", self.total("values")),
            ("calls without a device", self.total("failed_calls")),
            ("managers killed in a call", self.total("kills")),
            ("programs killed", self.program_kills),
            ("cables moved", self.cable_changes),
            ("times without a cable", self.separations),
            ("power cycles", self.power_cycles),
            *((f"fault: {fault.__name__}", self.faults[fault.__name__]) for fault in FAULTS),
            ("frames of overloads", self.overload_frames),
            *((f"  {name}", count) for name, count in self.overload_losses.items()),
            ("most growth of a device", f"{self.growth // KIBIBYTE} KiB"),
        ]
