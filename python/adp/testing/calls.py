"""The calls of `adp`, made by adpsh in place of this process.

They take and give the same values, check them alike, and raise adp.Error for a status other than 0. A plain set can be
given for an adp.PortSet.
"""

import ctypes
import dataclasses
import difflib
import inspect
import json
import sys

import adp
from adp.calls import layouts
from adp.memory import RECORDS, FewPorts, Ports
from adp.parameters import Callback

PORTS = (Ports, FewPorts)


def text_of(value):
    """A value as adpsh reads it."""
    if value is None:
        return "null"
    if isinstance(value, (set, frozenset)):
        return "{" + ",".join(map(str, sorted(value))) + "}"
    if isinstance(value, (bytes, bytearray)):
        return value.hex() or "[]"
    if isinstance(value, str):
        return json.dumps(value, ensure_ascii=False)
    if dataclasses.is_dataclass(value):
        fields = {field.name: getattr(value, field.name) for field in dataclasses.fields(value)}
        if isinstance(value, adp.RxFrame):
            del fields["length"]  # which the call writes
        return "{" + " ".join(f"{name}={text_of(each)}" for name, each in fields.items() if each is not None) + "}"
    if isinstance(value, (list, tuple)):
        return "[" + ",".join(map(text_of, value)) + "]"
    return str(int(value))


def value_of(answer, kind):
    """What adpsh answers for this C type, as a value of `adp`."""
    if isinstance(answer, str):
        return bytes.fromhex(answer)
    if not isinstance(kind, type) or answer is None:
        return answer
    if issubclass(kind, PORTS):
        return adp.PortSet.from_words(answer)
    if issubclass(kind, ctypes.Array):
        return [value_of(each, kind._type_) for each in answer]
    if kind is layouts.RxFrame:
        return adp.RxFrame(**{**answer, "frame": bytes.fromhex(answer["frame"])})
    if issubclass(kind, ctypes.Structure) and kind in RECORDS:
        kinds = {name: field for name, field, *_ in kind._fields_}
        known = {field.name for field in dataclasses.fields(RECORDS[kind])}
        return RECORDS[kind](**{name: value_of(each, kinds[name]) for name, each in answer.items() if name in known})
    return answer


def with_port_sets(value):
    """Plain sets become what `adp` takes."""
    return adp.PortSet(value) if isinstance(value, (set, frozenset)) else value


class RemoteCall:
    """One call, with the parameters that `adp` knows of it."""

    def __init__(self, function):
        self.name = function.__name__
        self._signature = inspect.signature(function)
        self._call = vars(sys.modules[function.__module__])["_" + self.name]

    @property
    def parameters(self):
        """The parameters as `adp` knows them."""
        return self._call.parameters

    def values(self, *given, **named):
        """{parameter: value} of what is given, checked."""
        __tracebackhide__ = True  # a failed test shows its own line
        try:
            return self._checked(self._signature.bind(*given, **named))
        except (TypeError, ValueError, OverflowError) as problem:
            raise type(problem)(f"{self.name}: {problem}") from None

    def _checked(self, bound):
        bound.apply_defaults()
        values = {name: with_port_sets(value) for name, value in bound.arguments.items()}
        for parameter in self.parameters:
            if isinstance(parameter, Callback) and values[parameter.name] is not None:
                raise TypeError(f"{parameter.name}: adpsh cannot call a function of this process")
            parameter.argument(values)  # refuses what the call cannot take
        return values

    def make(self, shell, values):
        """Makes the call; gives what it returns."""
        __tracebackhide__ = True
        return self.outcome(shell.call(self.line(values)))

    def line(self, values):
        """The call as adpsh reads it."""
        words = [argument(parameter, values[parameter.name]) for parameter in self.parameters if parameter.given]
        return " ".join([self._call.name, *filter(None, words)])

    def outcome(self, answer):
        """What the call returns, from adpsh's answer."""
        __tracebackhide__ = True
        call = self._call
        outputs = [value_of(answer["outputs"].get(each.name), each.kind) for each in call.parameters if each.returned]
        try:
            return call.outcome(value_of(answer["result"], getattr(call.result, "_type_", call.result)), outputs)
        except adp.Error as error:
            raise error.with_traceback(None) from None


def argument(parameter, value):
    """An argument in a line; nothing for the zeros of what can be left out."""
    if value is None and parameter.returned:
        return None
    return f"{parameter.name}=" + ("none" if value is None and isinstance(parameter, Callback) else text_of(value))


def remote_call(name):
    """The call of this name; an AttributeError names those close to it."""
    __tracebackhide__ = True
    function = getattr(adp, name, None)
    if inspect.isfunction(function) and "_" + name in vars(sys.modules[function.__module__]):
        return RemoteCall(function)
    close = difflib.get_close_matches(name, dir(adp), 3)
    hint = f"; did you mean {' or '.join(close)}?" if close else ""
    raise AttributeError(f"libadp has no call '{name}'{hint}")
