"""The parameters of a C call: what Python gives for each, the memory that is made of it, and what comes back.

The memory has exactly the extent that the header states. Everything is checked before the library is called.
"""

from __future__ import annotations

import ctypes
import threading
from collections.abc import Mapping
from typing import Any

from .memory import Ports, loaded, number, stored

MOST_ELEMENTS = 1 << 20
ALL_16_BITS = 0xFFFF


class Value:
    """A number or a record, passed by value. Also what all parameters have in common."""

    given = True  # by the caller
    returned = False  # to the caller
    by_address = False

    def __init__(self, name: str, kind: Any = None) -> None:
        self.name = name
        self.kind = kind

    @property
    def type(self) -> Any:
        """The C type of the argument."""
        return ctypes.POINTER(self.kind) if self.by_address else self.kind

    def argument(self, values: Mapping[str, Any]) -> Any:
        """The argument, made from what the caller gives."""
        return stored(self.name, values[self.name], self.kind)

    def outcome(self, arguments: Mapping[str, Any]) -> Any:
        """What the caller gets back, from the arguments after the call."""
        return loaded(arguments[self.name])


class In(Value):
    """The address of what the call reads; of an array all elements."""

    by_address = True

    def argument(self, values: Mapping[str, Any]) -> Any:
        made = super().argument(values)
        if issubclass(self.kind, ctypes.Array) and not issubclass(self.kind, Ports):
            length, wanted = len(values[self.name]), self.kind._length_
            if length != wanted:
                raise ValueError(f"{self.name}: {length} elements, not {wanted}")
        return made


class Out(Value):
    """The address of what the call writes."""

    given, returned, by_address = False, True, True

    def argument(self, values: Mapping[str, Any]) -> Any:
        return self.kind()


class InOut(Value):
    """The address of what the call reads and writes. None stands for zeros."""

    returned = by_address = True

    def argument(self, values: Mapping[str, Any]) -> Any:
        return self.kind() if values[self.name] is None else super().argument(values)


class Counted(Value):
    """The address of as many elements as the caller gives; a parameter Count counts them."""

    by_address = True

    def argument(self, values: Mapping[str, Any]) -> Any:
        given = values[self.name]
        length = len(given) if hasattr(given, "__len__") else 0  # what has no length is refused below
        return stored(self.name, given, self.kind * length)

    @property
    def type(self) -> Any:
        return ctypes.c_void_p


class CountedInOut(Counted):
    """Likewise, of what the call reads and writes."""

    returned = True


class Count(Value):
    """The number of elements of another argument."""

    given = False

    def __init__(self, name: str, kind: Any, counted: str, most: int = 0) -> None:
        super().__init__(name, kind)
        self.counted, self.most = counted, most

    def argument(self, values: Mapping[str, Any]) -> Any:
        length = len(values[self.counted])
        if self.most and length > self.most:
            raise ValueError(f"{self.counted}: {length} elements, of {self.most} at most")
        return self.kind(number(self.name, length, self.kind))


class Room(Value):
    """The address of room for as many elements as another argument says."""

    given, returned, by_address = False, True, True

    def __init__(self, name: str, kind: Any, room: str) -> None:
        super().__init__(name, kind)
        self.room = room

    @property
    def type(self) -> Any:
        return ctypes.c_void_p

    def argument(self, values: Mapping[str, Any]) -> Any:
        room = number(self.room, values[self.room], ctypes.c_uint32)
        if room > MOST_ELEMENTS:
            raise ValueError(f"{self.room}: room for {room} elements, of {MOST_ELEMENTS} at most")
        return (self.kind * room)()


class Text(Value):
    """A text that the call reads."""

    type = ctypes.c_char_p

    def argument(self, values: Mapping[str, Any]) -> Any:
        text = values[self.name]
        if not isinstance(text, str):
            raise TypeError(f"{self.name}: {text!r} is not a text")
        if "\0" in text:
            raise ValueError(f"{self.name}: a text ends before its first null character")
        return ctypes.c_char_p(text.encode(errors="surrogateescape"))


class PortsWord(Value):
    """A word that is the address of a set of ports, or null for None."""

    def argument(self, values: Mapping[str, Any]) -> Any:
        ports = values[self.name]
        if ports is None:
            return self.kind(0)
        made = stored(self.name, ports, Ports)
        word = self.kind(ctypes.addressof(made))
        word.memory = made  # lives as long as the argument
        return word


class Callback(Value):
    """A Python function that the library calls, or None. The library keeps one, which lives until it is replaced."""

    def __init__(self, name: str, kind: Any) -> None:
        super().__init__(name, kind)
        self._function: Any = None
        self._entry = kind(self._called)  # one for all times: the library may be in it while it is replaced

    def argument(self, values: Mapping[str, Any]) -> Any:
        function = values[self.name]
        if function is not None and not callable(function):
            raise TypeError(f"{self.name}: {function!r} cannot be called")
        self._function = function
        return self._entry if function is not None else self.kind()

    def _called(self, *values: Any) -> int:
        function = self._function
        if function is None:
            return 0
        try:
            result = function(*(loaded(value.contents if hasattr(value, "contents") else value) for value in values))
            return 0 if result is None else number(f"the result of {function!r}", result, ctypes.c_int32)
        except Exception as error:  # there is no caller in Python, and C would get any number
            hooked = threading.ExceptHookArgs((type(error), error, error.__traceback__, threading.current_thread()))
            threading.excepthook(hooked)
            return 0
