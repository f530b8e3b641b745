"""Ends of cables by name: sw1:3, sw1:eth3 or h1:eth1."""

import re

from ..problem import LabError
from ..topology import End
from .cabling import port_of
from .show import end_name
from .words import did_you_mean, listed

PORT = re.compile(r"(?:eth)?([1-9][0-9]*)")


def _cables_of(record, node):
    return {end.interface: cable for cable in record.topology.cables for end in cable.ends if end.node == node}


def end_of(record, text):
    """An end that the words mean; it need not have a cable if it is a device's."""
    name, colon, interface = text.partition(":")
    node = record.node(name)
    if not colon or not interface:
        example = f"{name}:1" if node.is_device else f"{name}:eth1"
        raise LabError(f"'{text}' should be a node and its {'port' if node.is_device else 'interface'}: {example}.")
    if node.is_device:
        port = PORT.fullmatch(interface)
        if not port or int(port[1]) > node.user_ports:
            raise LabError(f"The device {name} has no port '{interface}': its user ports are 1 to {node.user_ports}.")
        return End(name, f"eth{port[1]}")
    known = _cables_of(record, name)
    if interface not in known:
        has = f"It has {listed(list(known))}." if known else "It has no cable."
        raise LabError(f"The host {name} has no interface '{interface}'.{did_you_mean(interface, known)} {has}")
    return End(name, interface)


def device_end(record, text):
    """(device, user port) of the cable whose end the words mean: devices hold the cables."""
    end = end_of(record, text)
    cable = _cables_of(record, end.node).get(end.interface)
    for candidate in (end, *(cable.ends if cable else ())):
        if record.topology.nodes[candidate.node].is_device:
            return candidate.node, port_of(candidate)
    ends = " and ".join(end_name(each, record.topology) for each in cable.ends)
    raise LabError(f"The cable between {ends} has no device at either end, and only devices pull or disturb cables.")
