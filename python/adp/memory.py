"""Python's values in C's memory and back, by the C type: checked numbers, bytes, sets of ports, lists and records."""

from __future__ import annotations

import ctypes
import operator
from collections.abc import Sequence
from typing import Any, ClassVar

from .ports import PortSet

PORTS_WORDS = 8
# A set as two words, which some calls have in place of eight.
FEW_PORTS_WORDS = 2


class Ports(ctypes.Array[ctypes.c_uint32]):
    """A set of 256 ports."""

    _type_ = ctypes.c_uint32
    _length_ = PORTS_WORDS


class FewPorts(ctypes.Array[ctypes.c_uint32]):
    """A set of 64 ports."""

    _type_ = ctypes.c_uint32
    _length_ = FEW_PORTS_WORDS


class Record:
    """A struct of the headers: a dataclass with the fields of its LAYOUT, all 0 unless they are given."""

    LAYOUT: ClassVar[type[ctypes.Structure]]


# Filled by the generated module of records: the class of each layout.
RECORDS: dict[type[ctypes.Structure], type[Record]] = {}


def number(where: str, value: object, kind: Any) -> int:
    """A number that a C type can hold; OverflowError if it cannot, TypeError if it is none."""
    try:
        found = operator.index(value)  # type: ignore[arg-type]  # this is the check
    except TypeError:
        raise TypeError(f"{where}: {value!r} is not a number") from None
    bits = 8 * ctypes.sizeof(kind)
    least = -(1 << bits - 1) if kind(-1).value < 0 else 0
    if not least <= found < least + (1 << bits):
        raise OverflowError(f"{where}: {found} is not within {least} to {least + (1 << bits) - 1}")
    return found


def stored(where: str, value: object, kind: Any) -> Any:
    """C's form of a value: what a field, an element or a parameter of this C type takes."""
    if issubclass(kind, (Ports, FewPorts)):
        if not isinstance(value, PortSet):
            raise TypeError(f"{where}: {value!r} is not a PortSet")
        return kind(*value.words(kind._length_))
    if issubclass(kind, ctypes.Array):
        return _array(where, value, kind)
    if issubclass(kind, ctypes.Structure):
        return _structure(where, value, kind)
    return kind(number(where, value, kind))


def _array(where: str, value: object, kind: Any) -> Any:
    """Shorter values are filled up with zeros."""
    element, room = kind._type_, kind._length_
    if element is ctypes.c_uint8:
        if not isinstance(value, (bytes, bytearray, memoryview)):
            raise TypeError(f"{where}: {value!r} is not bytes")
        octets = bytes(value)
        _check_length(where, len(octets), room)
        return kind.from_buffer_copy(octets.ljust(room, b"\0"))
    if not isinstance(value, Sequence) or isinstance(value, (str, bytes, bytearray)):
        raise TypeError(f"{where}: {value!r} is not a sequence")
    _check_length(where, len(value), room)
    return kind(*(stored(f"{where}[{place}]", each, element) for place, each in enumerate(value)))


def _check_length(where: str, length: int, room: int) -> None:
    if length > room:
        raise ValueError(f"{where}: {length} elements, of {room} at most")


def _structure(where: str, value: object, kind: type[ctypes.Structure]) -> ctypes.Structure:
    if not isinstance(value, RECORDS[kind]):
        raise TypeError(f"{where}: {value!r} is not {RECORDS[kind].__name__}")
    made = kind()
    for name, field, *_ in kind._fields_:
        if hasattr(value, name):  # links of lists are C's alone
            setattr(made, name, stored(f"{where}.{name}", getattr(value, name), field))
    return made


def loaded(value: Any) -> Any:
    """Python's form of what is in C's memory."""
    if isinstance(value, (Ports, FewPorts)):
        return PortSet.from_words(value)
    if isinstance(value, ctypes.Array):
        return bytes(value) if value._type_ is ctypes.c_uint8 else [loaded(each) for each in value]
    if isinstance(value, ctypes.Structure):
        return record(value)
    return value.value if isinstance(value, ctypes._SimpleCData) else value


def record(value: ctypes.Structure) -> Record:
    """The record of a struct."""
    kind = RECORDS[type(value)]
    names = [name for name, *_ in value._fields_ if name in kind.__dataclass_fields__]  # type: ignore[attr-defined]
    return kind(**{name: loaded(getattr(value, name)) for name in names})
