"""The picture of a lab: its nodes and cables as SVG, drawn by Graphviz.

Devices stand in a column with a cell for each cabled port, on their left the cables between devices, on their right
their hosts. What is not as it should be is told in words and by the line, colour only adds to it.
"""

import dataclasses
import html
import re
import subprocess

from ..problem import LabError
from .model import End

DRAWING_SECONDS = 60
LONGEST_TEXT = 60
_ADDRESS = re.compile(r"\bip\b.*\baddr\w*\s+add\s+(\S+)\s+dev\s+\S+")

_HEAD = """graph lab {
graph [fontname="Helvetica", fontsize=12, rankdir=LR, nodesep=0.12, ranksep=0.9]
node [shape=box, style="rounded,filled", color="#5a6b7b", fontname="Helvetica", fontsize=11, height=0.25, margin="0.02"]
edge [color="#5a6b7b", fontname="Helvetica"]
"""
_DEVICE_FILL, _HOST_FILL, _FAULT_FILL = "#eaf2fb", "#eaf7ec", "#fbe3e0"
_CELL_FILL, _NO_LINK_FILL, _BAD_FILL = "white", "#e4e4e4", "#fff4d6"
_NO_LINK, _BAD = 'style=dashed, color="#8a8a8a"', 'penwidth=2.5, color="#b36b00"'


@dataclasses.dataclass(frozen=True)
class EndState:
    """How the end of a cable at a device is now. `conditions` are those of a Cable, at present."""

    is_up: bool = True
    is_pulled: bool = False
    conditions: dict[str, str] = dataclasses.field(default_factory=dict)

    @property
    def words(self):
        """What is not as it should be; nothing is told of an ordinary cable."""
        link = "pulled" if self.is_pulled else "" if self.is_up else "down"
        return ", ".join(filter(None, (link, *(f"{name} {value}" for name, value in self.conditions.items()))))


@dataclasses.dataclass(frozen=True)
class Live:
    """How a lab is now. `faults` says of nodes what happened to them: {"sw1": "ended with status 1"}."""

    ends: dict[End, EndState] = dataclasses.field(default_factory=dict)
    faults: dict[str, str] = dataclasses.field(default_factory=dict)


def svg(topology, live=None):
    """The picture of a topology, or of a lab that runs, as SVG. LabError without Graphviz."""
    return _drawn(dot_text(topology, live or _as_written(topology)))


def dot_text(topology, live):
    """The same as text for Graphviz."""
    picture = _Picture(topology, live)
    devices = [name for name, node in topology.nodes.items() if node.is_device]
    column = " -- ".join(map(_quoted, devices))
    return "\n".join(
        (
            f"{_HEAD}label={_quoted(topology.name)}",
            # Invisible edges within a column keep the order of the file.
            f"{{ rank=same; edge [style=invis]; {column} }}" if devices else "",
            *(picture.node(node) for node in topology.nodes.values()),
            *(picture.cable(cable) for cable in topology.cables),
            "}\n",
        )
    )


def _as_written(topology):
    """All runs; cables are as bad as the file says."""
    return Live({_device_end(topology, cable): EndState(conditions=cable.conditions) for cable in topology.cables})


def _device_end(topology, cable):
    """The end whose state is told: the first one at a device."""
    return next((end for end in cable.ends if topology.nodes[end.node].is_device), cable.ends[0])


class _Picture:
    """Nodes and cables as lines for Graphviz."""

    def __init__(self, topology, live):
        self._topology, self._live = topology, live
        self._rank = {name: (not node.is_device, at) for at, (name, node) in enumerate(topology.nodes.items())}
        self._sides = {name: ([], []) for name in topology.nodes}
        for cable in topology.cables:
            for end, side in self._sided(cable):
                self._sides[end.node][side].append(end)

    def _is_device(self, end):
        return self._topology.nodes[end.node].is_device

    def _sided(self, cable):
        """The ends in the order of their nodes in the picture, each with the side of its node: 0 left, 1 right."""
        first, second = sorted(cable.ends, key=lambda end: self._rank[end.node])
        return (first, 0 if self._is_device(second) else 1), (second, 0)

    def _has_cells(self, name):
        """A host with one cable needs none."""
        return self._topology.nodes[name].is_device or sum(map(len, self._sides[name])) > 1

    def node(self, node):
        fault = self._live.faults.get(node.name)
        fill = _FAULT_FILL if fault else _DEVICE_FILL if node.is_device else _HOST_FILL
        addresses = [match[1] for match in map(_ADDRESS.search, node.commands) if match]
        words = "  ".join((_markup(node.name), *(_markup(address, 9) for address in addresses)))
        left, right = (self._cells(ends) if self._has_cells(node.name) else "" for ends in self._sides[node.name])
        rows = f"<tr><td>{left}</td><td>{words}</td><td>{right}</td></tr>"
        if fault:
            rows += f'<tr><td colspan="3"><b>{_markup(fault, 9)}</b></td></tr>'
        label = _table(0, 4, rows)
        border = ', style="rounded,filled,dashed", penwidth=2' if fault else ""
        return f'{_quoted(node.name)} [fillcolor="{fill}", label=<{label}>{border}]'

    def _cells(self, ends):
        return _table(2, 2, "".join(map(self._cell, sorted(ends, key=_number)))) if ends else ""

    def _cell(self, end):
        state = self._live.ends.get(end, EndState())
        name = end.interface.removeprefix("eth") if self._is_device(end) else end.interface
        text = _markup(f"{name} {state.words}" if state.words else name, 9)
        fill = _NO_LINK_FILL if state.is_pulled or not state.is_up else _BAD_FILL if state.conditions else _CELL_FILL
        return f'<tr><td port="{html.escape(end.interface)}" border="1" width="22" bgcolor="{fill}">{text}</td></tr>'

    def cable(self, cable):
        places = (self._place(end, side) for end, side in self._sided(cable))
        states = [self._live.ends.get(end, EndState()) for end in cable.ends]
        style = (
            _NO_LINK
            if any(state.is_pulled or not state.is_up for state in states)
            else _BAD if any(state.conditions for state in states) else ""
        )
        return f"{' -- '.join(places)} [{style}]"

    def _place(self, end, side):
        port = f":{_quoted(end.interface)}" if self._has_cells(end.node) else ""
        return f"{_quoted(end.node)}{port}:{'we'[side]}"


def _number(end):
    return [int(part) if part.isdigit() else part for part in re.split(r"(\d+)", end.interface)]


def _table(spacing, padding, rows):
    return f'<table border="0" cellborder="0" cellspacing="{spacing}" cellpadding="{padding}">{rows}</table>'


def _markup(text, size=None):
    shown = text if len(text) <= LONGEST_TEXT else f"{text[:LONGEST_TEXT]}..."
    safe = html.escape("".join(letter if letter.isprintable() else "?" for letter in shown))
    return f'<font point-size="{size}">{safe}</font>' if size else safe


def _quoted(text):
    return f'"{text}"'


def _drawn(text):
    try:
        done = subprocess.run(
            ["dot", "-Tsvg"], input=text, capture_output=True, encoding="utf-8", timeout=DRAWING_SECONDS, check=False
        )
    except FileNotFoundError:
        raise LabError("The picture is drawn by Graphviz, which is missing: apt-get install graphviz.") from None
    except subprocess.TimeoutExpired:
        raise LabError(f"Graphviz has not drawn the picture within {DRAWING_SECONDS} s.") from None
    if done.returncode:
        raise LabError(f"Graphviz could not draw the picture: {done.stderr.strip()[-200:]}")
    return done.stdout
