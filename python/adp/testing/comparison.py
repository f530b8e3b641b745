"""Expected and received frames side by side, by port and field."""

from collections import Counter
from itertools import zip_longest

NAME_WIDTH, VALUE_WIDTH = 22, 34
MOST_PAIRS = 4


def are_arrivals(value):
    """Whether it is {port: frames}, as Lab.arrivals() gives it."""
    return isinstance(value, dict) and all(
        isinstance(port, int) and isinstance(frames, list) and all(isinstance(frame, bytes) for frame in frames)
        for port, frames in value.items()
    )


def decoded(frame):
    from scapy.all import Ether, Raw  # only here, since it takes half a second to load and only failures need it

    try:
        return Ether(frame)
    except Exception:  # a header that is cut short, or an option that is none, ends scapy in many ways
        return Raw(frame)


def fields_of(frame):
    """{(layer, field): (text, whether it is the usual value)} of a frame, in its order. No frame has no fields."""
    if frame is None:
        return {}
    names = Counter()
    fields = {}
    for layer in decoded(frame).iterpayloads():
        names[layer.name] += 1
        name = layer.name + (f" {names[layer.name]}" if names[layer.name] > 1 else "")
        for field in layer.fields_desc:
            value = layer.getfieldval(field.name)
            text = repr(value) if layer.name == "Raw" else field.i2repr(layer, value)
            fields[name, field.name] = (text, value == field.default)
    return fields


def _row(name, expected, received, mark=" "):
    cut = [text if len(text) <= VALUE_WIDTH else text[: VALUE_WIDTH - 3] + "..." for text in (expected, received)]
    return f"{mark} {name:<{NAME_WIDTH}} {cut[0]:<{VALUE_WIDTH}} | {cut[1]}".rstrip()


def _size(frame):
    return "nothing" if frame is None else f"{len(frame)} octets"


def pair_rows(place, expected, received, shown=()):
    """Two frames, either of which may be None. What both have, and is usual, is left out; so is what was shown before."""
    yield _row(place, _size(expected), _size(received))
    if (expected or received) in shown and not (expected and received):
        yield _row("", "  the frame above" if expected else "", "  the frame above" if received else "")
        return
    here, there = fields_of(expected), fields_of(received)
    absent = ("", True)
    for key in dict.fromkeys([*here, *there]):
        (left, is_left_usual), (right, is_right_usual) = here.get(key, absent), there.get(key, absent)
        differs = bool(here and there) and left != right
        if differs or not (is_left_usual and is_right_usual):
            yield _row("  " + " ".join(key), left, right, ">" if differs else " ")


def differing(expected, received):
    """(port, expected frame or None, received frame or None) of all frames that are only on one side."""
    for port in sorted({*expected, *received}):
        wanted, seen = Counter(expected.get(port, [])), Counter(received.get(port, []))
        for pair in zip_longest((wanted - seen).elements(), (seen - wanted).elements()):
            yield (port, *pair)


def comparison(expected, received, place="port"):
    """Lines of text: of each frame that did not arrive as expected, what was expected and what was received."""
    pairs = list(differing(expected, received))
    yield _row("", "expected", "received")
    shown = set()
    for port, wanted, seen in pairs[:MOST_PAIRS]:
        yield from pair_rows(f"{place} {port}", wanted, seen, shown)
        shown |= {wanted, seen}
    if len(pairs) > MOST_PAIRS:
        yield f"... and {len(pairs) - MOST_PAIRS} more frames"
    alike = sorted({*expected, *received} - {port for port, _, _ in pairs})
    for port in alike:
        order = "as expected" if expected.get(port) == received.get(port) else "in another order"
        yield _row(f"{place} {port}", order, order)


def port_comparison(expected, received):
    """The same for sets of ports, as a list."""
    rows = [_row("", "expected", "received")]
    for port in sorted(expected | received):
        wanted, seen = ("the frame" if port in side else "nothing" for side in (expected, received))
        rows.append(_row(f"port {port}", wanted, seen, " " if wanted == seen else ">"))
    return rows
