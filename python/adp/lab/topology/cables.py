"""The cables of a topology file: between two interfaces of its nodes, each used once."""

import re

from . import keys
from .conditions import conditions_of
from .document import or_similar, quoted
from .layers import check_keys, vars_of
from .model import Cable, End

MOST_CABLES = 10_000
CABLE_TYPE = "veth"
_PORT = re.compile(r"eth([1-9][0-9]?)")
# A name that the kernel takes for an interface.
_INTERFACE = re.compile(r"[A-Za-z0-9][A-Za-z0-9_.-]{0,14}")
# Node names with which containerlab means the machine and its networks.
_MACHINE = ("host", "mgmt-net", "macvlan", "dummy")


def cables_of(links, nodes):
    used = {}
    return tuple(_cable(link, nodes, used) for link in (links.items(MOST_CABLES) if links else ()))


def _cable(link, nodes, used):
    entries = check_keys(link, keys.LINK)
    if "type" in entries and entries["type"].text() != CABLE_TYPE:
        entries["type"].fail(f"A cable is of the type {CABLE_TYPE}: it ends at nodes alone, not at the machine.")
    if "endpoints" not in entries:
        link.fail("A cable needs the key 'endpoints', a list of two ends.")
    given = entries["endpoints"].items()
    if len(given) != 2:
        link.fail(f"A cable has two ends, and this one has {len(given)}.")
    ends = tuple(_end(value, nodes, used) for value in given)
    ours = vars_of(entries.get("vars"), keys.LINK_VARS)
    if ours and not any(nodes[end.node].is_device for end in ends):
        link.fail("Only a cable at a device can be a bad one, and this one joins two hosts.")
    return Cable(ends, conditions_of(ours), link.line)


def _end(value, nodes, used):
    """An end that no cable has yet. `used` tells in which line each is."""
    end = _end_of_text(value) if not value.is_mapping else _end_of_keys(value)
    _check_end(value, end, nodes)
    if end in used:
        value.fail(f"The interface {end} is in use by the cable in line {used[end]}.")
    used[end] = value.line
    return end


def _end_of_text(value):
    node, colon, interface = value.line_of_text().partition(":")
    if not colon or not node or not interface:
        value.fail(f"{quoted(value.text())} should be a node and its interface: sw1:eth1.")
    return End(node, interface)


def _end_of_keys(value):
    entries = check_keys(value, keys.ENDPOINT)
    for key in ("node", "interface"):
        if key not in entries:
            value.fail(f"An end of a cable needs the key {quoted(key)}.")
    return End(entries["node"].line_of_text(), entries["interface"].line_of_text())


def _check_end(value, end, nodes):
    node = nodes.get(end.node)
    if node is None and end.node in _MACHINE:
        value.fail(f"A cable ends at nodes alone, not at the machine: there is no node {quoted(end.node)}.")
    if node is None:
        value.fail(f"A cable to nowhere: there is no node {quoted(end.node)}.{or_similar(end.node, nodes)}")
    if node.is_device:
        port = _PORT.fullmatch(end.interface)
        if not port or int(port[1]) > node.user_ports:
            value.fail(
                f"The device {quoted(end.node)} has no interface {quoted(end.interface)}: its user ports are eth1 to "
                f"eth{node.user_ports}."
            )
    elif not _INTERFACE.fullmatch(end.interface) or end.interface == "lo":
        value.fail(f"{quoted(end.interface)} cannot be the name of a host's interface.")
