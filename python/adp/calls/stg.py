"""The calls of adp/stg.h.

This file is written by script/reference from the headers.
"""

from __future__ import annotations

from ctypes import c_int32, c_size_t, c_uint16, c_uint32
from typing import NamedTuple

from ..call import Call, Status
from ..parameters import Out, Room, Value

__all__ = [
    "create_mstp_instance",
    "delete_mstp_instance",
    "add_msti_member",
    "del_msti_member",
    "del_msti_all_member",
    "set_port_mstp_state",
    "stg_stp_get",
    "get_max_support_stg",
    "get_l2_cache_size",
    "stg_default_get",
    "get_max_stg",
    "get_stg_each_time_list",
    "get_stg_vlan_each_time_list",
    "get_stg_max_vlan",
    "get_stg_vlan_list",
    "stg_vlan_list",
    "stg_vlan_list_destroy",
    "stg_list",
    "stg_list_destroy",
    "set_port_erps_state",
    "get_port_erps_state",
    "GetStgVlanListResult",
    "StgVlanListResult",
    "StgListResult",
]

_create_mstp_instance: Call[None] = Call("adp_create_mstp_instance", Status, Value("stg", c_int32))


def create_mstp_instance(stg: int) -> None:
    """Creates the group of an MST instance.

    stg: MST instance number; 0..15 on the virtual device
    status: the driver's result
    """
    _create_mstp_instance(stg)


_delete_mstp_instance: Call[None] = Call("adp_delete_mstp_instance", Status, Value("stg", c_int32))


def delete_mstp_instance(stg: int) -> None:
    """Destroys the group of an MST instance and clears its VLANs.

    stg: MST instance number, 0 does nothing; 1..15 on the virtual device
    status: user_stg_destroy()'s result; 0 for instance 0
    """
    _delete_mstp_instance(stg)


_add_msti_member: Call[None] = Call("adp_add_msti_member", Status, Value("stg", c_int32), Value("vid", c_uint32))


def add_msti_member(stg: int, vid: int) -> None:
    """Moves a VLAN into a group.

    stg: MST instance number; 0..15 on the virtual device
    vid: VLAN id, low 16 bits used
    status: user_stg_vlan_add()'s result; -1 without a driver call for a VLAN of 4096 or above
    """
    _add_msti_member(stg, vid)


_del_msti_member: Call[None] = Call("adp_del_msti_member", Status, Value("stg", c_int32), Value("vid", c_uint32))


def del_msti_member(stg: int, vid: int) -> None:
    """Removes a VLAN from a group.

    stg: MST instance number; 0..15 on the virtual device
    vid: VLAN id, low 16 bits used
    status: user_stg_vlan_remove()'s result; -1 without a driver call for a VLAN of 4096 or above
    """
    _del_msti_member(stg, vid)


_del_msti_all_member: Call[None] = Call("adp_del_msti_all_member", Status, Value("stg", c_int32))


def del_msti_all_member(stg: int) -> None:
    """Removes from a group every VLAN that the table has in it.

    stg: MST instance number; the table's entries are 16 bits wide and compared signed
    status: 0
    """
    _del_msti_all_member(stg)


_set_port_mstp_state: Call[None] = Call(
    "adp_set_port_mstp_state",
    Status,
    Value("stg", c_int32),
    Value("intf", c_uint32),
    Value("state", c_uint32),
)


def set_port_mstp_state(stg: int, intf: int, state: int) -> None:
    """Sets a port's state in a group.

    stg: MST instance number; 0..15 on the virtual device
    intf: user port or aggregation interface
    state: StgState
    status: the driver's result, for a group that of the first member that failed (members before it keep the new
        state); 0 for a group without members; -1 for a group of nine members or more or outside 1..8; -1 for another
        type
    """
    _set_port_mstp_state(stg, intf, state)


_stg_stp_get: Call[int] = Call(
    "adp_stg_stp_get",
    Status,
    Value("stg", c_int32),
    Value("intf", c_uint32),
    Out("state", c_uint32),
)


def stg_stp_get(stg: int, intf: int) -> int:
    """Reads a port's state in a group.

    stg: MST instance number; 0..15 on the virtual device
    intf: user port; any other interface is passed on as physical port -1
    state: written by the driver, StgState
    status: the driver's result
    """
    return _stg_stp_get(stg, intf)


_get_max_support_stg: Call[int] = Call("adp_get_max_support_stg", Status, Out("count", c_uint32))


def get_max_support_stg() -> int:
    """Gives the number of groups that are supported: always 16, whatever the driver's count.

    count: 16; unchanged after a negative result
    status: the driver's result
    """
    return _get_max_support_stg()


_get_l2_cache_size: Call[int] = Call("adp_get_l2_cache_size", Status, Out("size", c_uint32))


def get_l2_cache_size() -> int:
    """Gives the number of entries that the L2 table can hold: always 8192, whatever the driver's number.

    size: 8192; unchanged after a failure
    status: the driver's result
    """
    return _get_l2_cache_size()


_stg_default_get: Call[int] = Call("adp_stg_default_get", Status, Out("stg", c_uint32))


def stg_default_get() -> int:
    """Gives the default group: always 0, whatever the driver's number.

    stg: 0; after a failure the number that the driver wrote
    status: the driver's result
    """
    return _stg_default_get()


_get_max_stg: Call[int] = Call("adp_get_max_stg", c_int32)


def get_max_stg() -> int:
    """Reads how many groups exist.

    result: the count, or the driver's negative result
    """
    return _get_max_stg()


_get_stg_each_time_list: Call[list[int]] = Call(
    "adp_get_stg_each_time_list",
    Status,
    Room("groups", c_int32, "chunk_size"),
    Value("chunk_index", c_uint32),
    Value("chunk_size", c_uint32),
)


def get_stg_each_time_list(chunk_index: int, chunk_size: int) -> list[int]:
    """Reads a chunk of the group numbers.

    groups: written by the driver: group numbers, 0..15 on the virtual device, from place chunk_index * chunk_size on
    chunk_index: which chunk, 0 for the first
    chunk_size: number of group numbers in a chunk
    status: the driver's result
    """
    return _get_stg_each_time_list(chunk_index, chunk_size)


_get_stg_vlan_each_time_list: Call[list[int]] = Call(
    "adp_get_stg_vlan_each_time_list",
    Status,
    Value("stg", c_int32),
    Room("vids", c_uint16, "chunk_size"),
    Value("chunk_index", c_uint32),
    Value("chunk_size", c_uint32),
)


def get_stg_vlan_each_time_list(stg: int, chunk_index: int, chunk_size: int) -> list[int]:
    """Reads a chunk of a group's VLANs.

    stg: group number; 0..15 on the virtual device
    vids: VLAN ids from place chunk_index * chunk_size on
    chunk_index: which chunk, 0 for the first
    chunk_size: number of VLAN ids in a chunk
    status: the driver's result
    """
    return _get_stg_vlan_each_time_list(stg, chunk_index, chunk_size)


_get_stg_max_vlan: Call[int] = Call("adp_get_stg_max_vlan", c_int32, Value("stg", c_int32))


def get_stg_max_vlan(stg: int) -> int:
    """Reads how many VLANs a group has.

    stg: group number; 0..15 on the virtual device
    result: the count, or the driver's negative result
    """
    return _get_stg_max_vlan(stg)


class GetStgVlanListResult(NamedTuple):
    """What get_stg_vlan_list() gives."""

    result: int
    vids: list[int]


_get_stg_vlan_list: Call[GetStgVlanListResult] = Call(
    "adp_get_stg_vlan_list",
    c_int32,
    Value("stg", c_int32),
    Out("vids", c_uint16 * 4096),
    several=GetStgVlanListResult,
)


def get_stg_vlan_list(stg: int) -> GetStgVlanListResult:
    """Lists a group's VLANs.

    stg: group number; 0..15 on the virtual device
    vids: VLAN ids, as many as the result says
    result: the number of VLAN ids; 0 without groups, for a number that no group has, and when the chip reports more
        than 64 groups or 4096 VLANs; the driver's negative result when the number of VLANs could not be read
    """
    return _get_stg_vlan_list(stg)


class StgVlanListResult(NamedTuple):
    """What stg_vlan_list() gives."""

    list: int
    count: int  # type: ignore[assignment]  # not the tuple's


_stg_vlan_list: Call[StgVlanListResult] = Call(
    "adp_stg_vlan_list",
    Status,
    Value("stg", c_int32),
    Out("list", c_size_t),
    Out("count", c_int32),
    several=StgVlanListResult,
)


def stg_vlan_list(stg: int) -> StgVlanListResult:
    """Makes the driver create a list of a group's VLANs.

    stg: group number; 0..15 on the virtual device
    list: written by the driver: its handle, to be given to adp_stg_vlan_list_destroy()
    count: written by the driver: number of VLANs in the list
    status: the driver's result
    """
    return _stg_vlan_list(stg)


_stg_vlan_list_destroy: Call[None] = Call(
    "adp_stg_vlan_list_destroy",
    Status,
    Value("list", c_size_t),
    Value("count", c_int32),
)


def stg_vlan_list_destroy(list: int, count: int) -> None:
    """Frees a list of VLANs.

    list: handle from adp_stg_vlan_list()
    count: count from the same call
    status: the driver's result
    """
    _stg_vlan_list_destroy(list, count)


class StgListResult(NamedTuple):
    """What stg_list() gives."""

    list: int
    count: int  # type: ignore[assignment]  # not the tuple's


_stg_list: Call[StgListResult] = Call(
    "adp_stg_list",
    Status,
    Out("list", c_size_t),
    Out("count", c_int32),
    several=StgListResult,
)


def stg_list() -> StgListResult:
    """Makes the driver create a list of the groups.

    list: written by the driver: its handle, to be given to adp_stg_list_destroy()
    count: written by the driver: number of groups in the list
    status: the driver's result
    """
    return _stg_list()


_stg_list_destroy: Call[None] = Call("adp_stg_list_destroy", Status, Value("list", c_size_t), Value("count", c_int32))


def stg_list_destroy(list: int, count: int) -> None:
    """Frees a list of groups.

    list: handle from adp_stg_list()
    count: count from the same call
    status: the driver's result
    """
    _stg_list_destroy(list, count)


_set_port_erps_state: Call[None] = Call(
    "adp_set_port_erps_state",
    Status,
    Value("intf", c_uint32),
    Value("state", c_uint32),
)


def set_port_erps_state(intf: int, state: int) -> None:
    """Sets a ring port's state: its state in group 0, and so for every VLAN that is in no other group.

    intf: user port or aggregation interface
    state: StgState
    status: user port: the driver's result; aggregation interface: 0, 102 at the first failure; 201 for another type, -1
        for a group outside 1..8
    """
    _set_port_erps_state(intf, state)


_get_port_erps_state: Call[int] = Call(
    "adp_get_port_erps_state",
    Status,
    Value("intf", c_uint32),
    Out("state", c_uint32),
)


def get_port_erps_state(intf: int) -> int:
    """Reads a ring port's state.

    intf: user port; any other interface is passed on as physical port -1
    state: written by the driver, StgState
    status: the driver's result
    """
    return _get_port_erps_state(intf)
