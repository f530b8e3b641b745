"""The calls of adp/vlan_tag.h.

This file is written by script/reference from the headers.
"""

from __future__ import annotations

from ctypes import c_size_t, c_uint32
from typing import NamedTuple

from ..call import Call, Status
from ..parameters import Out, Value

__all__ = [
    "vlan_translate_add",
    "vlan_translate_delete",
    "vlan_translate_delete_all",
    "vlan_translate_get",
    "vlan_translate_egress_add",
    "vlan_translate_egress_delete",
    "vlan_translate_egress_delete_all",
    "vlan_translate_egress_get",
    "vlan_ip4_add",
    "vlan_ip4_delete",
    "vlan_ip4_delete_all",
    "vlan_dtag_add",
    "vlan_dtag_delete",
    "vlan_dtag_delete_all",
    "vlan_dtag_get",
    "double_tag_set",
    "double_tag_get",
    "double_tag_tipd_set",
    "double_tag_tpid_get",
    "VlanTranslateGetResult",
    "VlanTranslateEgressGetResult",
    "VlanDtagGetResult",
]

_vlan_translate_add: Call[None] = Call(
    "adp_vlan_translate_add",
    Status,
    Value("kind", c_size_t),
    Value("port", c_size_t),
    Value("action", c_size_t),
    Value("old_vid", c_uint32),
    Value("new_vid", c_uint32),
    Value("priority", c_size_t),
)


def vlan_translate_add(kind: int, port: int, action: int, old_vid: int, new_vid: int, priority: int) -> None:
    """Adds an ingress translation: frames that a port receives in one VLAN enter another.

    kind: passed through: how the entry is found; 0 on the virtual device
    port: passed through; the physical port on the virtual device
    action: passed through: what becomes of the tag; 0 on the virtual device
    old_vid: VLAN id of the received tag, low 16 bits used
    new_vid: VLAN id that the frame gets, low 16 bits used
    priority: passed through: 802.1p priority that the frame gets, 0..7 or ADP_KEEP_PRIORITY on the virtual device
    status: the driver's result
    """
    _vlan_translate_add(kind, port, action, old_vid, new_vid, priority)


_vlan_translate_delete: Call[None] = Call(
    "adp_vlan_translate_delete",
    Status,
    Value("kind", c_size_t),
    Value("port", c_size_t),
    Value("old_vid", c_uint32),
)


def vlan_translate_delete(kind: int, port: int, old_vid: int) -> None:
    """Deletes an ingress translation.

    kind: passed through: how the entry is found; 0 on the virtual device
    port: passed through; the physical port on the virtual device
    old_vid: VLAN id of the received tag, low 16 bits used
    status: the driver's result
    """
    _vlan_translate_delete(kind, port, old_vid)


_vlan_translate_delete_all: Call[None] = Call("adp_vlan_translate_delete_all", Status)


def vlan_translate_delete_all() -> None:
    """Deletes every ingress translation.

    status: the driver's result
    """
    _vlan_translate_delete_all()


class VlanTranslateGetResult(NamedTuple):
    """What vlan_translate_get() gives."""

    new_vid: int
    priority: int


_vlan_translate_get: Call[VlanTranslateGetResult] = Call(
    "adp_vlan_translate_get",
    Status,
    Value("port", c_size_t),
    Value("old_vid", c_uint32),
    Out("new_vid", c_uint32),
    Out("priority", c_uint32),
    several=VlanTranslateGetResult,
)


def vlan_translate_get(port: int, old_vid: int) -> VlanTranslateGetResult:
    """Reads an ingress translation.

    port: passed through; the physical port on the virtual device
    old_vid: VLAN id of the received tag, low 16 bits used
    new_vid: written by the driver: VLAN id that the frame gets
    priority: written by the driver: 0..7, or ADP_KEEP_PRIORITY on the virtual device
    status: the driver's result
    """
    return _vlan_translate_get(port, old_vid)


_vlan_translate_egress_add: Call[None] = Call(
    "adp_vlan_translate_egress_add",
    Status,
    Value("kind", c_size_t),
    Value("port", c_size_t),
    Value("old_vid", c_uint32),
    Value("new_vid", c_uint32),
    Value("priority", c_size_t),
)


def vlan_translate_egress_add(kind: int, port: int, old_vid: int, new_vid: int, priority: int) -> None:
    """Adds an egress translation: frames of one VLAN leave a port in another.

    kind: passed through: how the entry is found; 0 on the virtual device
    port: passed through; the physical port on the virtual device
    old_vid: VLAN id inside the switch, low 16 bits used
    new_vid: VLAN id of the sent tag, low 16 bits used
    priority: passed through: 802.1p priority of the sent tag, 0..7 or ADP_KEEP_PRIORITY on the virtual device
    status: the driver's result
    """
    _vlan_translate_egress_add(kind, port, old_vid, new_vid, priority)


_vlan_translate_egress_delete: Call[None] = Call(
    "adp_vlan_translate_egress_delete",
    Status,
    Value("kind", c_size_t),
    Value("port", c_size_t),
    Value("old_vid", c_uint32),
)


def vlan_translate_egress_delete(kind: int, port: int, old_vid: int) -> None:
    """Deletes an egress translation.

    kind: passed through: how the entry is found; 0 on the virtual device
    port: passed through; the physical port on the virtual device
    old_vid: VLAN id inside the switch, low 16 bits used
    status: the driver's result
    """
    _vlan_translate_egress_delete(kind, port, old_vid)


_vlan_translate_egress_delete_all: Call[None] = Call("adp_vlan_translate_egress_delete_all", Status)


def vlan_translate_egress_delete_all() -> None:
    """Deletes every egress translation.

    status: the driver's result
    """
    _vlan_translate_egress_delete_all()


class VlanTranslateEgressGetResult(NamedTuple):
    """What vlan_translate_egress_get() gives."""

    new_vid: int
    priority: int


_vlan_translate_egress_get: Call[VlanTranslateEgressGetResult] = Call(
    "adp_vlan_translate_egress_get",
    Status,
    Value("port", c_size_t),
    Value("old_vid", c_uint32),
    Out("new_vid", c_uint32),
    Out("priority", c_uint32),
    several=VlanTranslateEgressGetResult,
)


def vlan_translate_egress_get(port: int, old_vid: int) -> VlanTranslateEgressGetResult:
    """Reads an egress translation.

    port: passed through; the physical port on the virtual device
    old_vid: VLAN id inside the switch, low 16 bits used
    new_vid: written by the driver: VLAN id of the sent tag
    priority: written by the driver: 0..7, or ADP_KEEP_PRIORITY on the virtual device
    status: the driver's result
    """
    return _vlan_translate_egress_get(port, old_vid)


_vlan_ip4_add: Call[None] = Call(
    "adp_vlan_ip4_add",
    Status,
    Value("port", c_size_t),
    Value("address", c_size_t),
    Value("mask", c_size_t),
    Value("vid", c_uint32),
    Value("priority", c_size_t),
    Value("flags", c_size_t),
)


def vlan_ip4_add(port: int, address: int, mask: int, vid: int, priority: int, flags: int) -> None:
    """Puts the untagged frames of an IPv4 subnet into a VLAN.

    port: passed through; the physical port on the virtual device
    address: passed through: the subnet's IPv4 address, a number on the virtual device: 0xC0000200 for 192.0.2.0
    mask: passed through: the subnet's mask, in the same form: 0xFFFFFF00 for 24 bits
    vid: VLAN id, low 16 bits used
    priority: passed through: 802.1p priority that the frame gets, 0..7 or ADP_KEEP_PRIORITY on the virtual device
    flags: passed through; 0 on the virtual device
    status: the driver's result
    """
    _vlan_ip4_add(port, address, mask, vid, priority, flags)


_vlan_ip4_delete: Call[None] = Call(
    "adp_vlan_ip4_delete",
    Status,
    Value("port", c_size_t),
    Value("address", c_size_t),
    Value("mask", c_size_t),
)


def vlan_ip4_delete(port: int, address: int, mask: int) -> None:
    """Deletes a subnet's entry.

    port: passed through; the physical port on the virtual device
    address: passed through: the subnet's IPv4 address, a number on the virtual device: 0xC0000200 for 192.0.2.0
    mask: passed through: the subnet's mask, in the same form: 0xFFFFFF00 for 24 bits
    status: the driver's result
    """
    _vlan_ip4_delete(port, address, mask)


_vlan_ip4_delete_all: Call[None] = Call("adp_vlan_ip4_delete_all", Status)


def vlan_ip4_delete_all() -> None:
    """Deletes every subnet's entry.

    status: the driver's result
    """
    _vlan_ip4_delete_all()


_vlan_dtag_add: Call[None] = Call(
    "adp_vlan_dtag_add",
    Status,
    Value("kind", c_size_t),
    Value("intf", c_uint32),
    Value("action", c_size_t),
    Value("inner_vid", c_uint32),
    Value("outer_vid", c_uint32),
    Value("priority", c_size_t),
)


def vlan_dtag_add(kind: int, intf: int, action: int, inner_vid: int, outer_vid: int, priority: int) -> None:
    """Adds a double-tag entry to an interface: frames with a customer's VLAN id get the service's tag in front.

    kind: passed through: how the entry is found; 0 on the virtual device
    intf: user port or aggregation interface
    action: passed through: what becomes of the tags; 0 on the virtual device
    inner_vid: the customer's VLAN id, low 16 bits used
    outer_vid: the service's VLAN id, low 16 bits used
    priority: passed through: 802.1p priority of the service's tag, 0..7 or ADP_KEEP_PRIORITY on the virtual device
    status: user port: the driver's result; group: 0, 102 at the first failure; 201 for another type, -1 for a group
        outside 1..8
    """
    _vlan_dtag_add(kind, intf, action, inner_vid, outer_vid, priority)


_vlan_dtag_delete: Call[None] = Call(
    "adp_vlan_dtag_delete",
    Status,
    Value("kind", c_size_t),
    Value("intf", c_uint32),
    Value("inner_vid", c_uint32),
)


def vlan_dtag_delete(kind: int, intf: int, inner_vid: int) -> None:
    """Deletes a double-tag entry from an interface.

    kind: passed through: how the entry is found; 0 on the virtual device
    intf: user port or aggregation interface
    inner_vid: the customer's VLAN id, low 16 bits used
    status: user port: the driver's result; group: 0, 102 at the first failure; 201 for another type, -1 for a group
        outside 1..8
    """
    _vlan_dtag_delete(kind, intf, inner_vid)


_vlan_dtag_delete_all: Call[None] = Call("adp_vlan_dtag_delete_all", Status)


def vlan_dtag_delete_all() -> None:
    """Deletes every double-tag entry.

    status: the driver's result
    """
    _vlan_dtag_delete_all()


class VlanDtagGetResult(NamedTuple):
    """What vlan_dtag_get() gives."""

    outer_vid: int
    priority: int


_vlan_dtag_get: Call[VlanDtagGetResult] = Call(
    "adp_vlan_dtag_get",
    Status,
    Value("intf", c_uint32),
    Value("inner_vid", c_uint32),
    Out("outer_vid", c_uint32),
    Out("priority", c_uint32),
    several=VlanDtagGetResult,
)


def vlan_dtag_get(intf: int, inner_vid: int) -> VlanDtagGetResult:
    """Reads a double-tag entry of an interface.

    intf: user port or aggregation interface
    inner_vid: the customer's VLAN id, low 16 bits used
    outer_vid: the service's VLAN id, written by the driver
    priority: written by the driver: 0..7, or ADP_KEEP_PRIORITY on the virtual device
    status: 0; 102 when the driver call failed; 201 for another type, -1 for a group outside 1..8
    """
    return _vlan_dtag_get(intf, inner_vid)


_double_tag_set: Call[None] = Call("adp_double_tag_set", Status, Value("intf", c_uint32), Value("mode", c_uint32))


def double_tag_set(intf: int, mode: int) -> None:
    """Sets an interface's double-tag mode.

    intf: user port or aggregation interface
    mode: DoubleTagMode, low 16 bits used
    status: user port: the driver's result; group: 0, 102 at the first failure; 201 for another type, -1 for a group
        outside 1..8
    """
    _double_tag_set(intf, mode)


_double_tag_get: Call[int] = Call("adp_double_tag_get", Status, Value("intf", c_uint32), Out("mode", c_uint32))


def double_tag_get(intf: int) -> int:
    """Reads an interface's double-tag mode.

    intf: user port or aggregation interface
    mode: written by the driver, DoubleTagMode
    status: 0; 102 when the driver call failed; 201 for another type, -1 for a group outside 1..8
    """
    return _double_tag_get(intf)


_double_tag_tipd_set: Call[None] = Call(
    "adp_double_tag_tipd_set",
    Status,
    Value("intf", c_uint32),
    Value("tpid", c_uint32),
    Value("option", c_size_t),
)


def double_tag_tipd_set(intf: int, tpid: int, option: int) -> None:
    """Sets an interface's tag protocol identifier (TPID).

    intf: user port or aggregation interface
    tpid: EtherType of the outer tag, low 16 bits used
    option: passed through; ignored by the virtual device
    status: user port: the driver's result; group: 0, 102 at the first failure; 201 for another type, -1 for a group
        outside 1..8
    """
    _double_tag_tipd_set(intf, tpid, option)


_double_tag_tpid_get: Call[int] = Call(
    "adp_double_tag_tpid_get",
    Status,
    Value("intf", c_uint32),
    Out("tpid", c_uint32),
)


def double_tag_tpid_get(intf: int) -> int:
    """Reads an interface's tag protocol identifier (TPID).

    intf: user port or aggregation interface
    tpid: EtherType of the outer tag, written by the driver
    status: 0; 102 when the driver call failed; 201 for another type, -1 for a group outside 1..8
    """
    return _double_tag_tpid_get(intf)
