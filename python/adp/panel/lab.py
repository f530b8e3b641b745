"""A lab whose devices the panel shows: what lab.json says, and when that changes."""

import asyncio
import contextlib
import os
import shlex

from ..lab.builds import Build
from ..lab.command import record as records
from ..lab.command import run_folder
from ..lab.command.cabling import port_of
from ..lab.command.show import remarks_on
from ..lab.command.words import PROGRAM
from ..lab.problem import LabError
from .addresses import addresses_of
from .device import Device

LOOK_SECONDS = 0.5
ADDRESSES_SECONDS = 10.0


def _is_running(processes):
    return all(process["status"] is None for process in processes.values())


class Lab:
    """A lab that runs."""

    def __init__(self, name=None):
        """By name; without one the lab that adp-lab would mean."""
        self._folder = run_folder.find(name)
        self._record = records.read(self._folder)
        several = len(run_folder.folders()) > 1
        self._command = f"{PROGRAM} --lab {self.name}" if several else PROGRAM
        self._addresses = {}
        self._tasks = []

    @property
    def name(self):
        return self._folder.name

    def devices(self, recordings=()):
        """The lab's devices, for the panel."""
        build = Build(self._record.data["build"])
        found = []
        for name in (node.name for node in self._record.topology.nodes.values() if node.is_device):
            word = shlex.quote(name)
            commands = {
                "vdevctl": f"{self._command} vdevctl {word}",
                "adpsh": f"{self._command} adpsh {word}",
                "exec": f"{self._command} exec {word} --",
            }
            folder = self._record.nodes[name]["folder"]
            control = build.command("vdevctl", "--run-dir", folder)
            found.append(Device(name, folder, control, commands, recordings))
        return found

    def state(self):
        """What pages are told."""
        return {
            "name": self.name,
            "command": self._command,
            "nodes": [self._node(node) for node in self._record.topology.nodes.values()],
            "cables": [{"ends": [self._end(end) for end in cable.ends]} for cable in self._record.topology.cables],
        }

    def _node(self, node):
        return {
            "name": node.name,
            "kind": "adp" if node.is_device else "linux",
            "running": _is_running(self._record.nodes[node.name]["processes"]),
            "addresses": self._addresses.get(node.name, []),
            "remarks": remarks_on(self._record, node.name),
        }

    def _end(self, end):
        is_device = self._record.topology.nodes[end.node].is_device
        return {"node": end.node, "interface": end.interface, "port": port_of(end) if is_device else None}

    def start(self, on_change):
        """Looks from time to time whether lab.json or the addresses have changed."""
        if not self._tasks:
            self._tasks = [asyncio.create_task(look(on_change)) for look in (self._look, self._look_for_addresses)]

    def stop(self):
        for task in self._tasks:
            task.cancel()
        self._tasks = []

    async def _look(self, on_change):
        before = None
        while True:
            with contextlib.suppress(OSError, LabError, ValueError):
                found = self._folder.record_path.stat()
                if (now := (found.st_ino, found.st_mtime_ns)) != before:
                    self._record = records.read(self._folder)
                    before = now
                    on_change()
            await asyncio.sleep(LOOK_SECONDS)

    async def _look_for_addresses(self, on_change):
        while True:
            self._addresses = await addresses_of(self.name) or self._addresses
            on_change()
            await asyncio.sleep(ADDRESSES_SECONDS)

    async def ended(self):
        """Returns when the lab has ended."""
        loop = asyncio.get_running_loop()
        end = loop.create_future()
        try:
            keeper = os.pidfd_open(self._record.keeper)
        except ProcessLookupError:
            return
        loop.add_reader(keeper, lambda: end.done() or end.set_result(None))
        try:
            await end
        finally:
            loop.remove_reader(keeper)
            os.close(keeper)
