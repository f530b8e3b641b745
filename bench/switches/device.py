"""The virtual device as a switch to be measured. Its rules are installed through the library."""

import contextlib
import sys

from bench.problem import BenchError
from adp.lab import Build
from adp.lab.device import Device
from adp.lab.rules import RuleText, distinct_places
from adp.lab.shell import Shell

from .bed import PORTS
from .rules import SENDER_PORT

SOURCE, DESTINATION, IN_PORTS, UDP_PORT = 9, 10, 13, 28
DROP = 201
TEXT = RuleText(sys.byteorder)


class VirtualDevice:
    """vdeviced of a build, which is a name in build/ or a folder."""

    name = "virtual device"
    takes_rules = True
    passes_frames = True

    def __init__(self, bed, build):
        self._stack = contextlib.ExitStack()
        device = Device(Build(build), len(PORTS), namespace=bed.namespace)
        self._device = self._stack.enter_context(contextlib.closing(device))
        self._shell = None
        self._places = []

    def processes(self):
        return [self._device.pid]

    def addresses(self):
        """How many addresses it has learned."""
        return len(self._device.control("macs")["macs"])

    def add_rules(self, rules):
        if not self._shell:
            command = Build("host").command("adpsh", "--json", "--keep-going")
            self._shell = self._stack.enter_context(contextlib.closing(Shell(self._device, command)))
            self._call("map")
            self._call("adp_fp_init")
            self._places = distinct_places(self._shell.call("show g_stFpInfo")["value"], len(rules))
        for place, rule in zip(self._places, rules, strict=True):
            self._call(f"adp_fp_add_entity_rule {record(place, rule)}")
        installed = [row for row in self._device.control("fields")["fields"] if row["installed"]]
        if len(installed) < len(rules):
            raise BenchError(f"{len(installed)} entries of {len(rules)} rules are installed.")

    def delete_rules(self, rules):
        for place, _ in zip(self._places, rules, strict=True):
            self._call(f"adp_fp_delete_entity_rule {place.submodule} {place.entity} 0")

    def _call(self, line):
        if self._shell.result(line) != 0:
            raise BenchError(f"'{line}' failed.")

    def close(self):
        self._stack.close()


def record(place, rule):
    conditions = [(IN_PORTS, {SENDER_PORT})]
    for kind, value in ((DESTINATION, rule.destination), (SOURCE, rule.source), (UDP_PORT, rule.udp_port)):
        conditions += [(kind, value)] if value is not None else []
    return TEXT.record(place.submodule, place.entity, conditions, [(DROP,)])
