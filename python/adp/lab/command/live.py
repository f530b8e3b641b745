"""How the cables and programs of a lab are now, for its picture."""

import json
import subprocess

from ..builds import Build
from ..topology.graph import EndState, Live
from .cabling import port_of
from .programs import how_it_ended

SECONDS = 10.0


def _ask(record, name, subject):
    """The rows of a subject of a device that runs, by user port."""
    build = Build(record.data["build"])
    command = build.command("vdevctl", "--run-dir", record.nodes[name]["folder"], "--json", subject)
    done = subprocess.run(command, capture_output=True, text=True, timeout=SECONDS)
    return {row["port"]: row for row in json.loads(done.stdout)[subject]} if done.returncode == 0 else {}


def _end_state(port, cable):
    conditions = {name: str(value) for name, value in cable["conditions"].items() if name != "seed"} if cable else {}
    return EndState(port["up"], port["pulled"], conditions)


def _fault(node):
    """What has ended on a node, in words."""
    ended = {program: state["status"] for program, state in node["processes"].items() if state["status"] is not None}
    return ", ".join(f"{program} {how_it_ended(status)}" for program, status in ended.items())


def live(record):
    """What the picture tells of the lab."""
    ends = {}
    for name in (node.name for node in record.topology.nodes.values() if node.is_device):
        ports, cables = _ask(record, name, "ports"), _ask(record, name, "cables")
        for end in (end for cable in record.topology.cables for end in cable.ends if end.node == name):
            if port := ports.get(port_of(end)):
                ends[end] = _end_state(port, cables.get(port_of(end)))
    faults = {name: fault for name, node in record.nodes.items() if (fault := _fault(node))}
    return Live(ends, faults)
