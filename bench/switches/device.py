"""The virtual device as a switch to be measured. Its rules are installed through the library."""

import contextlib

from bench.problem import BenchError
from lab import Build
from lab.device import Device
from lab.shell import Shell

from .bed import PORTS
from .rules import SENDER_PORT

WORD_BYTES = 4
ALL_ONES = 0xFFFFFFFF
PORT_SET_WORDS = 8
# Where the entries of a group begin; in the wide groups a rule takes two.
GROUP_BASES = {1: 1280, 2: 896, 3: 768, 4: 640, 5: 1024, 6: 512, 7: 384, 8: 256, 9: 0}
WIDE_GROUPS = (1, 5)
SOURCE, DESTINATION, IN_PORTS, UDP_PORT = 9, 10, 13, 28
DROP = 201


def places(table):
    """(submodule, entity) of all rules that there is room for, no two of them in the same entry."""
    taken = set()
    for row in table:
        width = 2 if row["group"] in WIDE_GROUPS else 1
        first = max(0, -row["prio_base"])
        for entity in range(first, first + row["entries"]):
            entry = GROUP_BASES[row["group"]] + width * (row["prio_base"] + entity)
            if entry not in taken:
                taken.update(range(entry, entry + width))
                yield row["submodule_type"], entity


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
            self._places = list(places(self._shell.call("show g_stFpInfo")["value"]))
        for (submodule, entity), rule in zip(self._places, rules):
            self._call(f"adp_fp_add_entity_rule {record(submodule, entity, rule)}")
        installed = [row for row in self._device.control("fields")["fields"] if row["installed"]]
        if len(installed) < len(rules):
            raise BenchError(f"{len(installed)} entries of {len(rules)} rules are installed.")

    def delete_rules(self, rules):
        for (submodule, entity), _ in zip(self._places, rules):
            self._call(f"adp_fp_delete_entity_rule {submodule} {entity} 0")

    def _call(self, line):
        if self._shell.result(line) != 0:
            raise BenchError(f"'{line}' failed.")

    def close(self):
        self._stack.close()


def record(submodule, entity, rule):
    """The rule as adpsh takes it; numbers are in this machine's byte order."""
    conditions = [qualifier(IN_PORTS, [1 << SENDER_PORT] + [0] * (PORT_SET_WORDS - 1))]
    for kind, value in ((DESTINATION, rule.destination), (SOURCE, rule.source), (UDP_PORT, rule.udp_port)):
        if value is not None:
            conditions.append(qualifier(kind, [value]))
    return (
        f"{{submodule_type={submodule} entity_id={entity} qualify_num={len(conditions)} action_num=1"
        f" qualifies=[{','.join(conditions)}] actions=[{{type={DROP} param=00 param2=00}}]}}"
    )


def qualifier(kind, words):
    data = b"".join(word.to_bytes(WORD_BYTES, "little") for word in words)
    return f"{{type={kind} data={data.hex()} mask={'ff' * len(data)}}}"
