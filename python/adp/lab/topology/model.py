"""What a topology file says, checked: nodes, and cables between them.

A node of the kind `adp` is a device; the interface `eth3` of one is its user port 3. A node of the kind `linux` is a
host.
"""

import dataclasses
import pathlib

DEVICE_KIND, HOST_KIND = "adp", "linux"


@dataclasses.dataclass(frozen=True)
class End:
    """Where a cable ends: at an interface of a node."""

    node: str
    interface: str

    def __str__(self):
        return f"{self.node}:{self.interface}"


@dataclasses.dataclass(frozen=True)
class Cable:
    """A cable. `conditions` has the options of `vdevctl cable` without their hyphens: {"loss": "5%", "seed": "7"}."""

    ends: tuple[End, End]
    conditions: dict[str, str]
    line: int


@dataclasses.dataclass(frozen=True)
class Node:
    """A device or a host. `commands` are run one after the other once the lab's cables are there; `programs` then go on
    running, {name: command}, their output kept. `startup` is a file with lines for adpsh, run on the device once the
    cables are there, before the commands.
    """

    name: str
    kind: str
    commands: tuple[str, ...] = ()
    programs: dict[str, str] = dataclasses.field(default_factory=dict)
    environment: dict[str, str] = dataclasses.field(default_factory=dict)
    user_ports: int = 26
    configuration: pathlib.Path | None = None  # the device's own file, as `vdeviced --config` takes it
    startup: pathlib.Path | None = None
    line: int = 0

    @property
    def is_device(self):
        return self.kind == DEVICE_KIND


@dataclasses.dataclass(frozen=True)
class Topology:
    """A lab's nodes by name, and its cables. Relative paths and programs start from `folder`."""

    name: str
    nodes: dict[str, Node]
    cables: tuple[Cable, ...]
    folder: pathlib.Path
