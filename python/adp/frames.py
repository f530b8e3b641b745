"""Frames in the calls of the CPU's frame path: what is sent, what is received, where a frame goes.

Addresses within a received frame are offsets into it, None for none.
"""

from __future__ import annotations

import ctypes
import dataclasses
from collections.abc import Mapping
from typing import Any

from .calls import layouts
from .memory import loaded, stored
from .parameters import ALL_16_BITS, MOST_ELEMENTS, Value

# The library may look at the octets behind a tag that vlan_tag points to.
ROOM_BEHIND_FRAME = ALL_16_BITS + 8


@dataclasses.dataclass
class TxFrame:
    """A frame to send."""

    frame: bytes
    """the frame from its destination MAC address on, without a switch tag"""
    source: int = 0
    """interface that it came in on or that flooding leaves out, 0 for none"""


@dataclasses.dataclass
class RxFrame:
    """A received frame and what parsing found in it. Outputs are written only as far as the parse gets."""

    frame: bytes
    """the frame as received, with its switch tag; afterwards all of its memory, in which the tag was overwritten"""
    length: int = 0
    """of the frame without switch tag and VLAN tag: ten less than was received"""
    ethernet_header: int | None = None
    """the frame start"""
    udp_header: int | None = None
    """UDP over IPv4, or over IPv6 without extension headers"""
    ipv4_header: int | None = None
    ipv6_header: int | None = None
    vlan_tag: int | None = None
    """in for the VLAN check, out: the innermost 802.1Q tag, at its type 0x8100"""
    l4_header: int | None = None
    """what follows the IP header"""
    intf: int = 0
    """aggregation interface of the ingress port if it has one, else the user port"""
    phy: int = 0
    """ingress physical port"""
    reserved1: int = 0
    reserved2: int = 0


def _octets(where: str, frame: object, room: int = 0) -> Any:
    """A frame in memory, with room behind it."""
    length = len(frame) if hasattr(frame, "__len__") else 0
    if length > MOST_ELEMENTS:
        raise ValueError(f"{where}: {length} bytes, of {MOST_ELEMENTS} at most")
    stored(where, frame, ctypes.c_uint8 * length)
    return stored(where, frame, ctypes.c_uint8 * (length + room))


class TxFrameIn(Value):
    """The address of a frame to send."""

    by_address = True

    def argument(self, values: Mapping[str, Any]) -> Any:
        value = values[self.name]
        if not isinstance(value, TxFrame):
            raise TypeError(f"{self.name}: {value!r} is not TxFrame")
        made = self.kind()
        made.memory = _octets(f"{self.name}.frame", value.frame)
        made.frame = ctypes.addressof(made.memory)
        made.length = len(value.frame)
        made.source = stored(f"{self.name}.source", value.source, ctypes.c_uint32)
        return made


class RxFrameInOut(Value):
    """The address of a received frame's record."""

    by_address = returned = True
    POINTERS = [name for name, kind in layouts.RxFrame._fields_ if kind is ctypes.c_void_p and name != "frame"]
    NUMBERS = [name for name, kind in layouts.RxFrame._fields_ if kind is not ctypes.c_void_p and name != "length"]

    def argument(self, values: Mapping[str, Any]) -> Any:
        value = values[self.name]
        if not isinstance(value, RxFrame):
            raise TypeError(f"{self.name}: {value!r} is not RxFrame")
        made = self.kind()
        made.memory = _octets(f"{self.name}.frame", value.frame, ROOM_BEHIND_FRAME)
        made.frame = ctypes.addressof(made.memory)
        made.length = made.octets = len(value.frame)
        if made.length > ALL_16_BITS:
            raise ValueError(f"{self.name}.frame: {made.length} bytes, of {ALL_16_BITS} at most")
        kinds = dict(self.kind._fields_)
        for name in self.NUMBERS:
            setattr(made, name, stored(f"{self.name}.{name}", getattr(value, name), kinds[name]))
        for name in self.POINTERS:
            offset = getattr(value, name)
            if offset is not None:
                if stored(f"{self.name}.{name}", offset, ctypes.c_uint32).value > ALL_16_BITS:
                    raise ValueError(f"{self.name}.{name}: {offset} is not an offset into a frame")
                setattr(made, name, made.frame + offset)
        return made

    def outcome(self, arguments: Mapping[str, Any]) -> RxFrame:
        argument = arguments[self.name]
        found = {name: loaded(getattr(argument, name)) for name in self.NUMBERS}
        for name in self.POINTERS:
            address = getattr(argument, name)
            found[name] = None if address is None else address - argument.frame
        return RxFrame(bytes(argument.memory)[: argument.octets], argument.length, **found)


class DestinationsIn(Value):
    """The head of a list of interfaces, or null for None."""

    by_address = True

    def argument(self, values: Mapping[str, Any]) -> Any:
        value = values[self.name]
        if value is None:
            return None
        numbers = stored(self.name, value, ctypes.c_uint32 * len(value))
        head = self.kind()
        nodes = [layouts.TxDest(intf=each) for each in numbers]
        ring = [head, *(node.link for node in nodes)]
        for place, link in enumerate(ring):
            link.next = ctypes.addressof(ring[(place + 1) % len(ring)])
            link.prev = ctypes.addressof(ring[place - 1])
        head.memory = nodes, ring
        return head


class FrameStart(Value):
    """The address of a frame's start within another argument, which the call writes: an offset into it."""

    given, returned, by_address = False, True, True

    def __init__(self, name: str, frame: str) -> None:
        super().__init__(name, ctypes.c_void_p)
        self.frame = frame

    def argument(self, values: Mapping[str, Any]) -> Any:
        return self.kind()

    def outcome(self, arguments: Mapping[str, Any]) -> int | None:
        address = arguments[self.name].value
        return None if address is None else int(address) - ctypes.addressof(arguments[self.frame])
