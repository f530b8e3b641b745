"""Reads a topology file: containerlab's format, as far as it has a meaning for devices, hosts and cables.

A file is read as a whole or refused with a sentence about the first fault, never in part.
"""

import pathlib
import re
import shlex

from . import keys
from .cables import cables_of
from .document import or_similar, quoted, read_document
from .layers import Layers, check_keys
from .model import DEVICE_KIND, HOST_KIND, Node, Topology
from .names import name_of

KINDS = (DEVICE_KIND, HOST_KIND)
DEVICE_IMAGE = re.compile(r"(?:.*/)?adp(?:[:@].*)?")
MOST_NODES = 1000
MOST_USER_PORTS = 31
# Where the image looks for its files; to bind a file there means the same here.
CONFIGURATION, STARTUP, SWITCHD = (f"/etc/adp/{name}" for name in ("vdeviced.toml", "startup.adpsh", "switchd.toml"))
SWITCHD_PROGRAM = "adp-switchd"
# With it the image runs a command on the device's CPU, where all commands of a device run here.
ON_CPU = "on-cpu "
VARIABLE = re.compile(r"[A-Za-z_][A-Za-z0-9_]*")
DEFAULT = pathlib.Path(__file__).with_name("default.clab.yml")


def read_topology(path):
    """The topology in a file; TopologyError with a sentence that names file and line."""
    document = read_document(path)
    top = check_keys(document, keys.TOP)
    for key in ("name", "topology"):
        if key not in top:
            document.fail(f"The key {quoted(key)} is missing.")
    folder = pathlib.Path(path).resolve().parent
    topology = check_keys(top["topology"], keys.TOPOLOGY)
    nodes = _nodes(topology, top["topology"], folder)
    return Topology(name_of(top["name"]), nodes, cables_of(topology.get("links"), nodes), folder)


def default_topology():
    """One device with four hosts."""
    return read_topology(DEFAULT)


def _nodes(topology, place, folder):
    found = topology["nodes"].entries("node", MOST_NODES) if "nodes" in topology else {}
    if not found:
        place.fail("There are no nodes.")
    layers = Layers(topology)
    for kind, value in (topology["kinds"].entries("kind") if "kinds" in topology else {}).items():
        _check_kind(value, kind)
    return {name: _node(name_of(value, name), value, layers.of(value), folder) for name, value in found.items()}


def _node(name, value, layers, folder):
    kind = _kind(value, layers)
    node = _Reader(kind, layers, folder)
    ours = layers.ours()
    for key in ("user-ports", "configuration"):
        if key in ours and kind != DEVICE_KIND:
            ours[key].fail(f"{ours[key].what} is for devices, and the node {quoted(name)} is a host.")
    files = node.bound_files()
    if CONFIGURATION in files and "configuration" in ours:
        ours["configuration"].fail(f"The node {quoted(name)} has a file bound to {CONFIGURATION} already.")
    return Node(
        name,
        kind,
        commands=node.commands(),
        programs=node.programs(ours.get("programs"), files.get(SWITCHD)),
        environment=node.environment(),
        user_ports=_user_ports(ours.get("user-ports")),
        configuration=files.get(CONFIGURATION) or node.file(ours.get("configuration")),
        startup=files.get(STARTUP),
        line=value.line,
    )


def _kind(value, layers):
    """A device or a host. containerlab knows only its own kinds, so there a device is known by its image."""
    given = layers.nearest("kind")
    if given is None:
        value.fail(f"{value.what} has no kind: {DEVICE_KIND} is a device, {HOST_KIND} a host.")
    kind = given.text()
    _check_kind(given, kind)
    image = layers.nearest("image")
    return DEVICE_KIND if image and DEVICE_IMAGE.fullmatch(image.line_of_text()) else kind


def _check_kind(value, kind):
    if kind not in KINDS:
        value.fail(f"There is no kind {quoted(kind)} here: {DEVICE_KIND} is a device, {HOST_KIND} a host.")


def _user_ports(value):
    if value is None:
        return Node.user_ports
    text = value.text()
    if not re.fullmatch(r"[0-9]{1,2}", text) or not 1 <= int(text) <= MOST_USER_PORTS:
        value.fail(f"{value.what} should be a number from 1 to {MOST_USER_PORTS}.")
    return int(text)


class _Reader:
    """What a node's keys say."""

    def __init__(self, kind, layers, folder):
        self._kind, self._layers, self._folder = kind, layers, folder

    def commands(self):
        given = (command.line_of_text() for command in self._layers.items("exec"))
        return tuple(text.removeprefix(ON_CPU) if self._kind == DEVICE_KIND else text for text in given)

    def programs(self, value, switchd):
        """Those of the file, and adp-switchd if it has a configuration."""
        given = value.entries("program") if value else {}
        found = {SWITCHD_PROGRAM: f"{SWITCHD_PROGRAM} --config {shlex.quote(str(switchd))}"} if switchd else {}
        for name, program in given.items():
            if name in found:
                program.fail(f"The file bound to {SWITCHD} has a program {quoted(name)} started already.")
            found[name_of(program, name)] = program.line_of_text()
        return found

    def environment(self):
        variables = self._layers.merged("env", "variable")
        for name, value in variables.items():
            if not VARIABLE.fullmatch(name):
                value.fail(f"{quoted(name)} cannot be the name of a variable.")
        return {name: "" if value.is_null else value.line_of_text() for name, value in variables.items()}

    def bound_files(self):
        """The files bound to the places where a device looks for its own."""
        files, known = {}, (CONFIGURATION, STARTUP, SWITCHD)
        for bind in self._layers.items("binds"):
            if self._kind != DEVICE_KIND:
                bind.fail("'binds' has no meaning for a host: hosts see the machine's files.")
            source, _, target = bind.line_of_text().partition(":")
            target = target.removesuffix(":ro")
            if target not in known:
                bind.fail(
                    f"No file can be bound to {quoted(target)}: a device sees the machine's files, and looks for its "
                    f"own in {', '.join(known)}.{or_similar(target, known)}"
                )
            files[target] = self._existing(bind, source)
        return files

    def file(self, value):
        return None if value is None else self._existing(value, value.line_of_text())

    def _existing(self, value, name):
        path = self._folder / name
        try:
            is_there = bool(name) and path.is_file()
        except (OSError, ValueError):
            is_there = False
        if not is_there:
            value.fail(f"There is no file {quoted(name)}; relative paths start in the folder of the topology.")
        return path
