"""The calls of adp/vlan.h.

This file is written by script/reference from the headers.
"""

from __future__ import annotations

from ctypes import c_size_t, c_uint32
from typing import NamedTuple

from ..call import Call, Status
from ..memory import Ports
from ..parameters import In, InOut, Out, PortsWord, Value
from ..ports import PortSet

__all__ = [
    "vlan_create",
    "vlan_destroy",
    "vlan_createEx",
    "vlan_destroyEx",
    "vlan_port_add",
    "vlan_port_addEx",
    "vlan_port_remove",
    "vlan_port_removeEx",
    "vlan_default_set",
    "vlan_default_get",
    "vlan_port_set",
    "vlan_port_get",
    "intf_pivd_set",
    "intf_pivd_get",
    "VlanPortGetResult",
]

_vlan_create: Call[None] = Call("adp_vlan_create", Status, Value("vid", c_uint32))


def vlan_create(vid: int) -> None:
    """Creates a VLAN.

    vid: VLAN id, low 16 bits used
    status: the driver's result
    """
    _vlan_create(vid)


_vlan_destroy: Call[None] = Call("adp_vlan_destroy", Status, Value("vid", c_uint32))


def vlan_destroy(vid: int) -> None:
    """Destroys a VLAN.

    vid: VLAN id, low 16 bits used
    status: the driver's result
    """
    _vlan_destroy(vid)


_vlan_createEx: Call[None] = Call(
    "adp_vlan_createEx",
    Status,
    Value("first_vid", c_uint32),
    Value("last_vid", c_uint32),
)


def vlan_createEx(first_vid: int, last_vid: int) -> None:
    """Creates the VLANs that a pair of ids names: what the pair means is the driver's, a range on the virtual device.

    first_vid: VLAN id, low 16 bits used
    last_vid: VLAN id, low 16 bits used
    status: the driver's result
    """
    _vlan_createEx(first_vid, last_vid)


_vlan_destroyEx: Call[None] = Call(
    "adp_vlan_destroyEx",
    Status,
    Value("first_vid", c_uint32),
    Value("last_vid", c_uint32),
)


def vlan_destroyEx(first_vid: int, last_vid: int) -> None:
    """Destroys the VLANs that a pair of ids names.

    first_vid: VLAN id, low 16 bits used
    last_vid: VLAN id, low 16 bits used
    status: the driver's result
    """
    _vlan_destroyEx(first_vid, last_vid)


_vlan_port_add: Call[None] = Call(
    "adp_vlan_port_add",
    Status,
    Value("vid", c_uint32),
    PortsWord("ports", c_size_t),
    PortsWord("untagged", c_size_t),
)


def vlan_port_add(vid: int, ports: PortSet | None, untagged: PortSet | None) -> None:
    """Adds ports to a VLAN.

    vid: VLAN id, low 16 bits used
    ports: address of a 256-bit set of physical ports, 0 for the empty set
    untagged: the ports among these that send the VLAN untagged, address of a set in the same form
    status: the driver's result
    """
    _vlan_port_add(vid, ports, untagged)


_vlan_port_addEx: Call[None] = Call(
    "adp_vlan_port_addEx",
    Status,
    Value("first_vid", c_uint32),
    Value("last_vid", c_uint32),
    PortsWord("ports", c_size_t),
    PortsWord("untagged", c_size_t),
)


def vlan_port_addEx(first_vid: int, last_vid: int, ports: PortSet | None, untagged: PortSet | None) -> None:
    """Adds ports to the VLANs that a pair of ids names.

    first_vid: VLAN id, low 16 bits used
    last_vid: VLAN id, low 16 bits used
    ports: as in adp_vlan_port_add()
    untagged: as in adp_vlan_port_add()
    status: the driver's result
    """
    _vlan_port_addEx(first_vid, last_vid, ports, untagged)


_vlan_port_remove: Call[None] = Call(
    "adp_vlan_port_remove",
    Status,
    Value("vid", c_uint32),
    PortsWord("ports", c_size_t),
)


def vlan_port_remove(vid: int, ports: PortSet | None) -> None:
    """Removes ports from a VLAN.

    vid: VLAN id, low 16 bits used
    ports: as in adp_vlan_port_add()
    status: the driver's result
    """
    _vlan_port_remove(vid, ports)


_vlan_port_removeEx: Call[None] = Call(
    "adp_vlan_port_removeEx",
    Status,
    Value("first_vid", c_uint32),
    Value("last_vid", c_uint32),
    PortsWord("ports", c_size_t),
)


def vlan_port_removeEx(first_vid: int, last_vid: int, ports: PortSet | None) -> None:
    """Removes ports from the VLANs that a pair of ids names.

    first_vid: VLAN id, low 16 bits used
    last_vid: VLAN id, low 16 bits used
    ports: as in adp_vlan_port_add()
    status: the driver's result
    """
    _vlan_port_removeEx(first_vid, last_vid, ports)


_vlan_default_set: Call[None] = Call("adp_vlan_default_set", Status, Value("vid", c_uint32))


def vlan_default_set(vid: int) -> None:
    """Sets the system's default VLAN.

    vid: VLAN id, low 16 bits used
    status: the driver's result
    """
    _vlan_default_set(vid)


_vlan_default_get: Call[int] = Call("adp_vlan_default_get", Status, Out("vid", c_uint32))


def vlan_default_get() -> int:
    """Reads the system's default VLAN.

    vid: written by the driver: VLAN id
    status: the driver's result
    """
    return _vlan_default_get()


_vlan_port_set: Call[None] = Call(
    "adp_vlan_port_set",
    Status,
    Value("vid", c_uint32),
    In("members", Ports),
    In("untagged", Ports),
)


def vlan_port_set(vid: int, members: PortSet, untagged: PortSet) -> None:
    """Sets a VLAN's member and untagged ports, given as sets of interface numbers.

    vid: VLAN id, low 16 bits used
    members: 256-bit set of member interfaces, bit n of word n / 32 for interface n
    untagged: 256-bit set of the interfaces that send the VLAN untagged
    status: the driver's result
    """
    _vlan_port_set(vid, members, untagged)


class VlanPortGetResult(NamedTuple):
    """What vlan_port_get() gives."""

    members: PortSet
    untagged: PortSet


_vlan_port_get: Call[VlanPortGetResult] = Call(
    "adp_vlan_port_get",
    Status,
    Value("vid", c_uint32),
    InOut("members", Ports),
    InOut("untagged", Ports),
    several=VlanPortGetResult,
)


def vlan_port_get(vid: int, members: PortSet | None = None, untagged: PortSet | None = None) -> VlanPortGetResult:
    """Reads a VLAN's member and untagged ports as sets of interface numbers.

    vid: VLAN id, low 16 bits used
    members: 256-bit set of member interfaces
    untagged: 256-bit set of untagged interfaces
    status: the driver's result
    """
    return _vlan_port_get(vid, members, untagged)


_intf_pivd_set: Call[None] = Call("adp_intf_pivd_set", Status, Value("intf", c_uint32), Value("vid", c_uint32))


def intf_pivd_set(intf: int, vid: int) -> None:
    """Sets an interface's port VLAN id (PVID).

    intf: user port or aggregation interface
    vid: VLAN id, low 16 bits used
    status: user port: the driver's result; group: 0, 102 at the first failure; 201 for another type, -1 for a group
        outside 1..8
    """
    _intf_pivd_set(intf, vid)


_intf_pivd_get: Call[int] = Call("adp_intf_pivd_get", Status, Value("intf", c_uint32), Out("vid", c_uint32))


def intf_pivd_get(intf: int) -> int:
    """Reads an interface's port VLAN id (PVID).

    intf: user port or aggregation interface
    vid: written by the driver: VLAN id
    status: 0; 102 when the driver call failed; 203 for a group with neither; 201 for another type, -1 for a group
        outside 1..8
    """
    return _intf_pivd_get(intf)
