"""The calls of adp/priority.h.

This file is written by script/reference from the headers.
"""

from __future__ import annotations

from collections.abc import Sequence
from ctypes import c_int32, c_size_t, c_uint32, c_uint8
from typing import NamedTuple

from ..call import Call, Status
from ..parameters import In, InOut, Out, Value
from . import layouts, records

__all__ = [
    "create_dot1p_map",
    "get_dot1p_map",
    "delete_dot1p_map",
    "create_dscp_map",
    "get_dscp_map",
    "delete_dscp_map",
    "add_dot1p_assign",
    "del_dot1p_assign",
    "set_port_pri_trust_mode",
    "get_port_pri_trust_mode",
    "set_port_cos_map",
    "get_port_cos_map",
    "cosq_port_mapping_set",
    "cosq_port_mapping_get",
    "port_dscp_map_set",
    "port_dscp_map_get",
    "cosq_mapping_set",
    "cosq_mapping_get",
    "dscp_map_set",
    "dscp_map_get",
    "set_dot1p_pri_remap",
    "port_cos_map_set",
    "port_cos_map_get",
    "vlan_control_port_set",
    "vlan_control_port_get",
    "PortDscpMapGetResult",
]

_create_dot1p_map: Call[None] = Call(
    "adp_create_dot1p_map",
    Status,
    Value("map_type", c_uint32),
    In("entries", layouts.Dot1pMapEntry * 8),
)


def create_dot1p_map(map_type: int, entries: Sequence[records.Dot1pMapEntry]) -> None:
    """Writes the 802.1p map.

    map_type: MapType
    entries: the map
    status: 0, for type 2 without a driver call; 101 for any other type than 0 and 2; 102 when a driver call failed
    """
    _create_dot1p_map(map_type, entries)


_get_dot1p_map: Call[list[records.Dot1pMapEntry]] = Call(
    "adp_get_dot1p_map",
    Status,
    Value("map_type", c_uint32),
    InOut("entries", layouts.Dot1pMapEntry * 8),
)


def get_dot1p_map(map_type: int, entries: Sequence[records.Dot1pMapEntry] | None = None) -> list[records.Dot1pMapEntry]:
    """Reads the 802.1p map.

    map_type: MapType
    entries: the queues are written by the driver, the unused words left alone
    status: 0, for type 2 without a driver call; 101 for any other type than 0 and 2; 102 when a driver call failed
    """
    return _get_dot1p_map(map_type, entries)


_delete_dot1p_map: Call[None] = Call("adp_delete_dot1p_map", Status, Value("map_type", c_uint32))


def delete_dot1p_map(map_type: int) -> None:
    """Restores the default 802.1p map: priorities 0 and 1 to queue 0, 2 and 3 to 1, 4 and 5 to 2, 6 and 7 to 3.

    map_type: MapType
    status: 0, for type 2 without a driver call; 101 for any other type than 0 and 2; 102 when a driver call failed
    """
    _delete_dot1p_map(map_type)


_create_dscp_map: Call[None] = Call(
    "adp_create_dscp_map",
    Status,
    Value("map_type", c_uint32),
    In("entries", layouts.DscpMapEntry * 64),
)


def create_dscp_map(map_type: int, entries: Sequence[records.DscpMapEntry]) -> None:
    """Writes the DSCP map of all ports.

    map_type: MapType
    entries: the map
    status: 0, for type 2 without a driver call; 101 for any other type than 1 and 2; 102 when a driver call failed
    """
    _create_dscp_map(map_type, entries)


_get_dscp_map: Call[list[records.DscpMapEntry]] = Call(
    "adp_get_dscp_map",
    Status,
    Value("map_type", c_uint32),
    InOut("entries", layouts.DscpMapEntry * 64),
)


def get_dscp_map(map_type: int, entries: Sequence[records.DscpMapEntry] | None = None) -> list[records.DscpMapEntry]:
    """Reads the DSCP map.

    map_type: MapType
    entries: mapped and priority are written by the driver, the unused bytes left alone
    status: 0, for type 2 without a driver call; 101 for any other type than 1 and 2; 102 when a driver call failed
    """
    return _get_dscp_map(map_type, entries)


_delete_dscp_map: Call[None] = Call("adp_delete_dscp_map", Status, Value("map_type", c_uint32))


def delete_dscp_map(map_type: int) -> None:
    """Restores the default DSCP map.

    map_type: MapType
    status: 0, for type 2 without a driver call; 101 for any other type than 1 and 2; 102 when a driver call failed
    """
    _delete_dscp_map(map_type)


_add_dot1p_assign: Call[None] = Call(
    "adp_add_dot1p_assign",
    Status,
    Value("map_type", c_uint32),
    Value("intf", c_uint32),
    Value("unused3", c_uint32),
    Value("unused4", c_uint32),
    Value("unused5", c_uint32),
    Value("priority", c_uint32),
)


def add_dot1p_assign(map_type: int, intf: int, unused3: int, unused4: int, unused5: int, priority: int) -> None:
    """Assigns a priority to a user port's untagged frames.

    map_type: MapType
    intf: user port
    unused3: not used
    unused4: not used
    unused5: not used
    priority: 0..7, low byte used
    status: 0, for types 0 and 1 without a driver call; 101 for a type above 2; for type 2 102 when the driver call
        failed, and without one for an aggregation interface; 201 for another type
    """
    _add_dot1p_assign(map_type, intf, unused3, unused4, unused5, priority)


_del_dot1p_assign: Call[None] = Call(
    "adp_del_dot1p_assign",
    Status,
    Value("map_type", c_uint32),
    Value("intf", c_uint32),
    Value("unused3", c_uint32),
    Value("unused4", c_uint32),
    Value("unused5", c_uint32),
    Value("unused6", c_uint32),
)


def del_dot1p_assign(map_type: int, intf: int, unused3: int, unused4: int, unused5: int, unused6: int) -> None:
    """Sets the priority of a user port's untagged frames back to 0.

    map_type: MapType
    intf: user port
    unused3: not used
    unused4: not used
    unused5: not used
    unused6: not used
    status: 0, for all types but 2 without a driver call; for type 2 as adp_add_dot1p_assign()
    """
    _del_dot1p_assign(map_type, intf, unused3, unused4, unused5, unused6)


_set_port_pri_trust_mode: Call[None] = Call(
    "adp_set_port_pri_trust_mode",
    Status,
    Value("intf", c_uint32),
    Value("mode", c_uint32),
)


def set_port_pri_trust_mode(intf: int, mode: int) -> None:
    """Sets which priority of its frames a user port trusts.

    intf: user port
    mode: TrustMode
    status: 0; 102 when the driver call failed, and without one for an aggregation interface; 201 for another type
    """
    _set_port_pri_trust_mode(intf, mode)


_get_port_pri_trust_mode: Call[int] = Call(
    "adp_get_port_pri_trust_mode",
    Status,
    Value("intf", c_uint32),
    Out("mode", c_uint32),
)


def get_port_pri_trust_mode(intf: int) -> int:
    """Reads which priority of its frames a user port trusts.

    intf: user port
    mode: written by the driver, TrustMode
    status: 0; 102 when the driver call failed, and without one for an aggregation interface; 201 for another type
    """
    return _get_port_pri_trust_mode(intf)


_set_port_cos_map: Call[None] = Call(
    "adp_set_port_cos_map",
    Status,
    Value("intf", c_uint32),
    Value("priority", c_uint32),
)


def set_port_cos_map(intf: int, priority: int) -> None:
    """Sets the priority of a user port's untagged frames.

    intf: user port
    priority: 0..7
    status: 0; 102 when the driver call failed; 201 for an aggregation interface and for another type
    """
    _set_port_cos_map(intf, priority)


_get_port_cos_map: Call[int] = Call("adp_get_port_cos_map", Status, Value("intf", c_uint32), Out("priority", c_uint32))


def get_port_cos_map(intf: int) -> int:
    """Reads the priority of a user port's untagged frames.

    intf: user port
    priority: written by the driver, 0..7
    status: 0; 102 when the driver call failed; 201 for an aggregation interface and for another type
    """
    return _get_port_cos_map(intf)


_cosq_port_mapping_set: Call[None] = Call(
    "adp_cosq_port_mapping_set",
    Status,
    Value("intf", c_uint32),
    Value("priority", c_uint32),
    Value("queue", c_uint32),
)


def cosq_port_mapping_set(intf: int, priority: int, queue: int) -> None:
    """Sets the queue of a priority on a user port.

    intf: user port
    priority: passed through; 0..7 on the virtual device
    queue: passed through; on the virtual device 0..7, or ADP_QUEUE_OF_CHIP to follow the chip's map again
    status: 0; 102 when the driver call failed, and without one for an aggregation interface; 201 for another type
    """
    _cosq_port_mapping_set(intf, priority, queue)


_cosq_port_mapping_get: Call[int] = Call(
    "adp_cosq_port_mapping_get",
    Status,
    Value("intf", c_uint32),
    Value("priority", c_uint32),
    Out("queue", c_uint32),
)


def cosq_port_mapping_get(intf: int, priority: int) -> int:
    """Reads the queue of a priority on a user port.

    intf: user port
    priority: passed through; 0..7 on the virtual device
    queue: written by the driver; 0..7 on the virtual device
    status: 0; 102 when the driver call failed, and without one for an aggregation interface; 201 for another type
    """
    return _cosq_port_mapping_get(intf, priority)


_port_dscp_map_set: Call[None] = Call(
    "adp_port_dscp_map_set",
    Status,
    Value("unused", c_uint32),
    Value("dscp", c_int32),
    Value("mapped", c_int32),
    Value("priority", c_uint32),
)


def port_dscp_map_set(unused: int, dscp: int, mapped: int, priority: int) -> None:
    """Sets a row of the DSCP map of all ports.

    unused: not used
    dscp: passed through; on the virtual device 0..63, or ADP_DSCP_ALL for every row
    mapped: passed through: DSCP that the frame leaves with, 0..63; ADP_DSCP_POWER_ON for the power-on row on the
        virtual device
    priority: passed through; 0..7 on the virtual device
    status: the driver's result
    """
    _port_dscp_map_set(unused, dscp, mapped, priority)


class PortDscpMapGetResult(NamedTuple):
    """What port_dscp_map_get() gives."""

    mapped: int
    priority: int


_port_dscp_map_get: Call[PortDscpMapGetResult] = Call(
    "adp_port_dscp_map_get",
    Status,
    Value("unused", c_uint32),
    Value("dscp", c_int32),
    Out("mapped", c_uint8),
    Out("priority", c_uint8),
    several=PortDscpMapGetResult,
)


def port_dscp_map_get(unused: int, dscp: int) -> PortDscpMapGetResult:
    """Reads a row of the DSCP map of all ports.

    unused: not used
    dscp: passed through; 0..63 on the virtual device
    mapped: written by the driver: DSCP that the frame leaves with, 0..63
    priority: written by the driver, 0..7
    status: the driver's result
    """
    return _port_dscp_map_get(unused, dscp)


_cosq_mapping_set: Call[None] = Call(
    "adp_cosq_mapping_set",
    Status,
    Value("unit", c_size_t),
    Value("zero", c_size_t),
    Value("priority", c_size_t),
    Value("queue", c_size_t),
)


def cosq_mapping_set(unit: int, zero: int, priority: int, queue: int) -> None:
    """Sets the queue of a priority.

    unit: passed through; 0 on the virtual device
    zero: passed through; 0 on the virtual device
    priority: passed through; 0..7 on the virtual device
    queue: passed through; 0..7 on the virtual device
    status: the driver's result
    """
    _cosq_mapping_set(unit, zero, priority, queue)


_cosq_mapping_get: Call[int] = Call(
    "adp_cosq_mapping_get",
    Status,
    Value("unit", c_size_t),
    Value("zero", c_size_t),
    Value("priority", c_size_t),
    Out("queue", c_uint32),
)


def cosq_mapping_get(unit: int, zero: int, priority: int) -> int:
    """Reads the queue of a priority.

    unit: passed through; 0 on the virtual device
    zero: passed through; 0 on the virtual device
    priority: passed through; 0..7 on the virtual device
    queue: written by the driver; 0..7 on the virtual device
    status: the driver's result
    """
    return _cosq_mapping_get(unit, zero, priority)


_dscp_map_set: Call[None] = Call(
    "adp_dscp_map_set",
    Status,
    Value("unit", c_size_t),
    Value("zero", c_size_t),
    Value("dscp", c_size_t),
    Value("priority", c_size_t),
)


def dscp_map_set(unit: int, zero: int, dscp: int, priority: int) -> None:
    """Sets the priority of a DSCP.

    unit: passed through; 0 on the virtual device
    zero: passed through; 0 on the virtual device
    dscp: passed through; 0..63 on the virtual device
    priority: passed through; 0..7 on the virtual device
    status: the driver's result
    """
    _dscp_map_set(unit, zero, dscp, priority)


_dscp_map_get: Call[int] = Call(
    "adp_dscp_map_get",
    Status,
    Value("unit", c_size_t),
    Value("zero", c_size_t),
    Value("dscp", c_size_t),
    Out("priority", c_uint32),
)


def dscp_map_get(unit: int, zero: int, dscp: int) -> int:
    """Reads the priority of a DSCP.

    unit: passed through; 0 on the virtual device
    zero: passed through; 0 on the virtual device
    dscp: passed through; 0..63 on the virtual device
    priority: written by the driver, 0..7
    status: the driver's result
    """
    return _dscp_map_get(unit, zero, dscp)


_set_dot1p_pri_remap: Call[None] = Call(
    "adp_set_dot1p_pri_remap",
    Status,
    Value("port", c_size_t),
    Value("priority", c_size_t),
    Value("unused", c_size_t),
    Value("new_priority", c_size_t),
    Value("option", c_size_t),
    Value("option2", c_size_t),
    Value("option3", c_size_t),
    Value("option4", c_size_t),
)


def set_dot1p_pri_remap(
    port: int,
    priority: int,
    unused: int,
    new_priority: int,
    option: int,
    option2: int,
    option3: int,
    option4: int,
) -> None:
    """Remaps a priority in the tags of received frames.

    port: passed through; the physical port on the virtual device
    priority: passed through; the tag's priority, 0..7, on the virtual device
    unused: not used
    new_priority: passed through; 0..7 on the virtual device
    option: passed through; ignored by the virtual device
    option2: passed through; ignored by the virtual device
    option3: passed through; ignored by the virtual device
    option4: passed through; ignored by the virtual device
    status: the driver's result
    """
    _set_dot1p_pri_remap(port, priority, unused, new_priority, option, option2, option3, option4)


_port_cos_map_set: Call[None] = Call("adp_port_cos_map_set", Status, Value("intf", c_uint32), Value("cos", c_uint32))


def port_cos_map_set(intf: int, cos: int) -> None:
    """Sets a port's class of service.

    intf: user port; any other interface is passed on as physical port -1
    cos: passed through; on the virtual device the priority of untagged frames, 0..7
    status: the driver's result
    """
    _port_cos_map_set(intf, cos)


_port_cos_map_get: Call[int] = Call("adp_port_cos_map_get", Status, Value("intf", c_uint32), Out("cos", c_uint32))


def port_cos_map_get(intf: int) -> int:
    """Reads a port's class of service.

    intf: user port; any other interface is passed on as physical port -1
    cos: written by the driver; on the virtual device the priority of untagged frames, 0..7
    status: the driver's result
    """
    return _port_cos_map_get(intf)


_vlan_control_port_set: Call[None] = Call(
    "adp_vlan_control_port_set",
    Status,
    Value("intf", c_uint32),
    Value("control", c_uint32),
    Value("value", c_int32),
)


def vlan_control_port_set(intf: int, control: int, value: int) -> None:
    """The same as hal_vlan_control_port_set().

    intf: user port
    control: the driver's control number; 0..31 on the virtual device
    value: its new value, passed through; any number on the virtual device
    status: as hal_vlan_control_port_set()
    """
    _vlan_control_port_set(intf, control, value)


_vlan_control_port_get: Call[int] = Call(
    "adp_vlan_control_port_get",
    Status,
    Value("intf", c_uint32),
    Value("control", c_uint32),
    Out("value", c_uint32),
)


def vlan_control_port_get(intf: int, control: int) -> int:
    """The same as hal_vlan_control_port_get().

    intf: user port
    control: the driver's control number; 0..31 on the virtual device
    value: written by the driver; 0 at power-on on the virtual device
    status: as hal_vlan_control_port_get()
    """
    return _vlan_control_port_get(intf, control)
