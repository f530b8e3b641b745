"""Two devices under load: frames between hosts of both, managers that set and read back, cables that are pulled and
plugged in, managers that are killed, and devices that are switched off and on.

Ends with a table of counts and the status 0, or with a sentence that says what went wrong, and 1. What happens when
follows from the seed, but how far everybody is by then does not: a seed brings about the same kind of day again, not
the same day.
"""

import argparse
import contextlib
import faulthandler
import itertools
import sys
import time
from random import Random

from fabric import CABLES, SIDES, VLANS, Fabric
from health import KIBIBYTE, Holdings, descriptors
from adp.lab import LabError
from adp.lab.frames import BROADCAST, ETHERTYPE_EXPERIMENT, ethernet, vlan_tag
from adp.lab.process import poll_until
from manager import Manager
from power import Power
from settings import Address, Group, Vlan, registers

# Each manager has ports without a cable to itself, two of them for a group, which starts with nobody's number.
MANAGED_PORTS = ((15, 16, 17, 18), (19, 20, 21, 22), (23, 24, 25, 26))
FIRST_GROUP = 2
FIRST_VLAN, VLANS_EACH = 1000, 6
ADDRESSES_EACH = 8
WARM_SHARE = 0.15
# Devices are switched off only at first, so that one is left to grow old.
CYCLES_SHARE = 0.6
SECONDS_PER_CYCLE = 25
SECONDS_PER_PROGRAM = 12
CABLE_SECONDS = (0.1, 0.8)
PLUG_SHARE = 0.4
FAILED_CALLS_WHILE_AWAY = 20
AWAY_SECONDS = 30.0
RELEASE_SECONDS = 10.0
# Every wait has a deadline of its own. Should one be forgotten, all ends this long after it should have.
HANG_SECONDS = 240
# Counts that are not 0 after a load.
BUSINESS = ("frames received", "values read back", "calls without a device", "managers killed in a call",
            "programs killed", "cables moved", "power cycles")  # fmt: skip


class Load:
    """The whole of it. `counts` is what came of it."""

    def __init__(self, fabric, options):
        self._fabric, self._options = fabric, options
        self._random = Random(options.seed)
        self._powers = [Power() for _ in SIDES]
        self._managers = [list(self._make_managers(side)) for side in SIDES]
        self._holdings = [None, None]
        self._warm_at = [0.0, 0.0]
        self._sides = itertools.cycle(SIDES)
        self.cable_changes = self.separations = self.program_kills = self.power_cycles = 0
        self.growth = 0

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
            yield Manager(name, lab, self._powers[side], settings, self._build(number), seed, is_mortal=number > 0)

    def _build(self, number):
        return self._options.builds[number % len(self._options.builds)]

    @property
    def managers(self):
        return [manager for managers in self._managers for manager in managers]

    def total(self, name):
        return sum(getattr(manager, name) for manager in self.managers)

    # The course of it

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
            self._calm_down()
        self._check_forwarding()
        self._check_descriptors()
        self._check_business()

    def _disturb(self, seconds):
        began = time.monotonic()
        for side in SIDES:
            self._begin_life(side)
        cycles = self._times(began + WARM_SHARE * seconds, began + CYCLES_SHARE * seconds, SECONDS_PER_CYCLE)
        programs = self._times(began, began + seconds, SECONDS_PER_PROGRAM)
        while (now := time.monotonic()) < began + seconds:
            if cycles and now >= cycles[0]:
                cycles.pop(0)
                self._switch_off_and_on(next(self._sides))
            elif programs and now >= programs[0]:
                programs.pop(0)
                self._replace_program(self._random.choice(SIDES))
            else:
                self._move_a_cable()
            self._note_holdings()
            self._check()
            time.sleep(self._random.uniform(*CABLE_SECONDS))

    def _times(self, first, last, seconds_each):
        """Moments in this stretch, at random, a number of them that goes with the length of the load."""
        count = max(1, round(self._options.seconds / seconds_each))
        return sorted(self._random.uniform(first, last) for _ in range(count))

    def _begin_life(self, side):
        self._holdings[side] = None
        self._warm_at[side] = time.monotonic() + WARM_SHARE * self._options.seconds

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
                raise LabError(f"The {device.name} has crashed or complained: {device.errors() or 'without a word'}")
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
        failed = [(manager, manager.failed_calls + FAILED_CALLS_WHILE_AWAY) for manager in self._managers[side]]
        poll_until(
            lambda: all(manager.failed_calls >= wanted or manager.problem for manager, wanted in failed),
            AWAY_SECONDS,
            f"{FAILED_CALLS_WHILE_AWAY} failed calls of each manager of the {device.name} while it is off",
        )
        self._fabric.check_is_away(side)
        power.advance()
        power.await_earlier_calls()
        device.restart()
        power.advance()
        self._begin_life(side)
        self._fabric.check_link_scan(side)
        self._fabric.end_program(side)
        self._fabric.build(side)
        self._fabric.await_cables()
        self.power_cycles += 1
        self._fabric.stations.await_flow(f"After the {device.name} was switched off and on")

    # The end of it

    def _calm_down(self):
        self._fabric.plug_all()
        self._fabric.stations.await_flow("In the end")
        for side in SIDES:
            self._judge_memory(side)
        for manager in self.managers:
            manager.end()
        for manager in self.managers:
            manager.await_end()
        self._check()
        self._fabric.stations.fall_silent()

    def _judge_memory(self, side):
        if self._holdings[side] and self._options.judges_memory:
            self.growth = max(self.growth, self._holdings[side].check_memory())

    def _check_forwarding(self):
        """Every host is heard by exactly those of its VLAN, then alone by whom it writes to; an intruder by nobody."""
        stations = self._fabric.stations
        for station in stations.all:
            station.host.nic.waiting()  # the bench's own ears, which nobody listened to, are full
        for station in stations.all:
            for vid in VLANS:
                hearers = stations.partners(station) if vid == station.vid else []
                self._check_reach(station, vid, BROADCAST, hearers)
        for station in stations.insiders:
            for partner in stations.partners(station):
                self._check_reach(station, station.vid, partner.mac, [partner])

    def _check_reach(self, station, vid, destination, hearers):
        pair = self._fabric.pair
        marker = pair.near.marker()
        frame = ethernet(destination, station.mac, ETHERTYPE_EXPERIMENT, marker.ljust(64, b"."), vlan_tag(vid))
        station.host.send(frame)
        wanted = [{each.host.port: [frame] for each in hearers if each.host.device is lab.device} for lab in pair.labs]
        arrived = pair.arrivals(marker)
        if list(arrived) != wanted:
            raise LabError(
                f"In the end a frame of host {station.number} in VLAN {vid} to {destination.hex(':')} arrives at the "
                f"ports {[sorted(side) for side in arrived]}, and not once at {[sorted(side) for side in wanted]}."
            )

    def _check_descriptors(self):
        """When all managers have gone, the devices hold what they held before the first one came."""
        fabric = self._fabric
        for side in SIDES:
            fabric.end_program(side)
            fabric.operators[side].close()
            device, wanted = fabric.device(side), fabric.fresh[side]
            with contextlib.suppress(LabError):
                poll_until(lambda device=device, wanted=wanted: descriptors(device.pid) == wanted, RELEASE_SECONDS, "")
            if descriptors(device.pid) != wanted:
                raise LabError(
                    f"The {device.name} has {descriptors(device.pid)} descriptors open when all managers have gone; "
                    f"before they came it had {wanted}."
                )
            status = device.end()
            if status != 0 or device.errors():
                raise LabError(f"The {device.name} ends with {status}. It wrote: {device.errors()}")

    def _check_business(self):
        """What has not happened was not tested."""
        idle = [name for name, count in self.summary() if name in BUSINESS and count == 0]
        if idle:
            raise LabError(f"The load was too short to be one, these counts are 0: {', '.join(idle)}.")

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
            ("most growth of a device", f"{self.growth // KIBIBYTE} KiB"),
        ]


def parse(words):
    parser = argparse.ArgumentParser(prog="script/soak", description="Two virtual devices under load.")
    parser.add_argument("seconds", nargs="?", type=int, default=600, help="how long, ten minutes by default")
    parser.add_argument("--seed", type=int, default=None, help="of a run that is to be repeated")
    parser.add_argument("--rate", type=int, default=1000, help="frames per second and host, 0 for all that it can")
    parser.add_argument("--builds", default="host", help="builds of the managers in turn, as in host,mips")
    parser.add_argument("--device", default="host", help="build of the devices")
    options = parser.parse_args(words)
    options.builds = options.builds.split(",")
    # Sanitizers keep memory that was given back, to see who uses it still.
    options.judges_memory = options.device != "asan"
    if options.seed is None:
        options.seed = Random().randrange(1 << 31)
    return options


def main(words):
    options = parse(words)
    print(f"Two devices under load for {options.seconds} seconds, seed {options.seed}.", flush=True)
    faulthandler.dump_traceback_later(options.seconds + HANG_SECONDS, exit=True)
    began = time.monotonic()
    try:
        with Fabric(options.device, options.builds[0]) as fabric:
            load = Load(fabric, options)
            try:
                load.run()
            finally:
                for name, count in load.summary():
                    print(f"  {name:28}{count:>14}")
    except LabError as problem:
        print(f"script/soak: FAILED after {time.monotonic() - began:.0f} s, seed {options.seed}: {problem}",
              file=sys.stderr)  # fmt: skip
        return 1
    print(f"Nothing was misplaced or left behind, in {time.monotonic() - began:.0f} seconds.")
    return 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
