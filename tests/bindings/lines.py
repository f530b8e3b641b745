"""Arguments of the bindings as adpsh writes them, and its JSON compared with what the bindings return."""
import dataclasses

from caller import HANDLER

import adp
from adp.memory import Record


def written(value):
    """An argument in a line of adpsh."""
    if value is None:
        return "null"
    if isinstance(value, adp.PortSet):
        return "{" + ", ".join(map(str, sorted(value))) + "}"
    if isinstance(value, bytes):
        return value.hex() if value else "[]"
    if isinstance(value, list):
        return "[" + ", ".join(map(written, value)) + "]"
    if isinstance(value, str):
        return "print" if value == HANDLER else f'"{value}"'
    if isinstance(value, adp.RxFrame):
        return f"{{frame={written(value.frame)} intf={value.intf} phy={value.phy}}}"
    if isinstance(value, (Record, adp.TxFrame)):
        fields = ((each.name, getattr(value, each.name)) for each in dataclasses.fields(value))
        return "{" + " ".join(f"{name}={written(each)}" for name, each in fields) + "}"
    return str(int(value))


def line(call, arguments):
    """All arguments by name; a callback's null has another word."""
    given = [each for each in call.parameters if each.given]
    words = [f"{each.name}={'none' if value is None and type(each).__name__ == 'Callback' else written(value)}"
             for each, value in zip(given, arguments)]
    return " ".join([call.name, *words])


def same(ours, theirs):
    """Whether a value of the bindings is what adpsh's JSON says."""
    if isinstance(ours, adp.PortSet):
        return ours == adp.PortSet.from_words(theirs)
    if isinstance(ours, bytes):
        return ours == (bytes.fromhex(theirs) if isinstance(theirs, str) else bytes(theirs))
    if isinstance(ours, list):
        return len(ours) == len(theirs) and all(map(same, ours, theirs))
    if dataclasses.is_dataclass(ours):
        fields = [each.name for each in dataclasses.fields(ours)]
        return all(same(getattr(ours, name), theirs[name]) for name in fields)
    return ours == theirs
