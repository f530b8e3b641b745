"""The calls of adp/agg.h.

This file is written by script/reference from the headers.
"""

from __future__ import annotations

from collections.abc import Callable, Sequence
from ctypes import c_int32, c_size_t, c_uint32, c_uint64
from typing import NamedTuple

from ..call import Call, Status
from ..memory import FewPorts
from ..parameters import Callback, Count, Counted, In, Out, Room, Text, Value
from ..ports import PortSet
from . import layouts, records

__all__ = [
    "GET_INTF_MAPPING_AGGINTF",
    "get_agg_group_drvid",
    "GET_AGG_CONFIG_MIN_INTF",
    "GET_AGG_MANAGE_INTF",
    "SET_AGG_MANAGE_INTF",
    "get_agg_link_staus",
    "GET_AGG_LINK_STATUS",
    "get_agg_group",
    "GET_AGG_GROUP",
    "get_agg_config_group",
    "GET_AGG_CONFIG_GROUP",
    "get_agg_group_by_map",
    "register_agg_event_cb",
    "create_agg_group",
    "delete_agg_group",
    "add_agg_member",
    "add_agg_member_by_map",
    "del_agg_member",
    "del_agg_member_by_map",
    "add_agg_standby_member",
    "del_agg_standby_member",
    "ANEW_SELECT_MANAGE_INTF",
    "set_agg_loadbalance",
    "adp_agg_event_handle",
    "agg_linkscan_handle",
    "get_port_stat",
    "clr_port_stat",
    "set_trap_lacp_packet",
    "set_trap_eoam_packet",
    "GetAggGroupResult",
    "GetAggConfigGroupResult",
]

_GET_INTF_MAPPING_AGGINTF: Call[int] = Call("GET_INTF_MAPPING_AGGINTF", c_uint32, Value("intf", c_uint32))


def GET_INTF_MAPPING_AGGINTF(intf: int) -> int:
    """Finds the aggregation interface that a user port belongs to.

    intf: user port; only the index bits are used
    result: the aggregation interface; 0 for none, beyond the map, or before the map exists
    """
    return _GET_INTF_MAPPING_AGGINTF(intf)


_get_agg_group_drvid: Call[int] = Call(
    "adp_get_agg_group_drvid",
    Status,
    Value("agg_intf", c_uint32),
    Out("trunk_id", c_uint32),
)


def get_agg_group_drvid(agg_intf: int) -> int:
    """Computes a group's trunk id, (agg_intf & 0x0FFFFFFF) - 1.

    agg_intf: aggregation interface
    trunk_id: the driver's trunk number, 0..7 for a group 1..8
    status: 0
    """
    return _get_agg_group_drvid(agg_intf)


_GET_AGG_CONFIG_MIN_INTF: Call[int] = Call(
    "GET_AGG_CONFIG_MIN_INTF",
    Status,
    Value("agg_intf", c_uint32),
    Out("intf", c_uint32),
)


def GET_AGG_CONFIG_MIN_INTF(agg_intf: int) -> int:
    """Finds a group's lowest configured member: the lowest n in 0..26 whose bit is set in the first word of the group's
    configured members.

    agg_intf: aggregation interface
    intf: the member's interface number; 0 when there is none
    status: 0; -1 for a group outside 1..8, with 0 written
    """
    return _GET_AGG_CONFIG_MIN_INTF(agg_intf)


_GET_AGG_MANAGE_INTF: Call[int] = Call(
    "GET_AGG_MANAGE_INTF",
    Status,
    Value("agg_intf", c_uint32),
    Out("intf", c_uint32),
)


def GET_AGG_MANAGE_INTF(agg_intf: int) -> int:
    """Reads a group's management interface.

    agg_intf: aggregation interface
    intf: a user port; 0 when there is none
    status: 0; -1 for a group outside 1..8, with 0 written
    """
    return _GET_AGG_MANAGE_INTF(agg_intf)


_SET_AGG_MANAGE_INTF: Call[None] = Call(
    "SET_AGG_MANAGE_INTF",
    Status,
    Value("agg_intf", c_uint32),
    Value("intf", c_uint32),
)


def SET_AGG_MANAGE_INTF(agg_intf: int, intf: int) -> None:
    """Stores a group's management interface.

    agg_intf: aggregation interface
    intf: a user port, or 0 for none; not checked
    status: 0; -1 for a group outside 1..8, with nothing changed
    """
    _SET_AGG_MANAGE_INTF(agg_intf, intf)


_get_agg_link_staus: Call[int] = Call(
    "adp_get_agg_link_staus",
    Status,
    Value("group", c_uint32),
    Out("state", c_uint32),
)


def get_agg_link_staus(group: int) -> int:
    """Reads whether a group is up.

    group: group number, 1..8; not an aggregation interface, unlike in the other calls
    state: 0 down, 1 up
    status: 0; -1 for another number, with nothing written
    """
    return _get_agg_link_staus(group)


_GET_AGG_LINK_STATUS: Call[int] = Call("GET_AGG_LINK_STATUS", Status, Value("group", c_uint32), Out("state", c_uint32))


def GET_AGG_LINK_STATUS(group: int) -> int:
    """The same as adp_get_agg_link_staus().

    group: group number, 1..8
    state: 0 down, 1 up
    status: as adp_get_agg_link_staus()
    """
    return _GET_AGG_LINK_STATUS(group)


class GetAggGroupResult(NamedTuple):
    """What get_agg_group() gives."""

    count: int  # type: ignore[assignment]  # not the tuple's
    members: list[int]


_get_agg_group: Call[GetAggGroupResult] = Call(
    "adp_get_agg_group",
    Status,
    Value("agg_intf", c_uint32),
    Value("max", c_uint32),
    Out("count", c_uint32),
    Room("members", c_uint32, "max"),
    several=GetAggGroupResult,
)


def get_agg_group(agg_intf: int, max: int) -> GetAggGroupResult:
    """Lists a group's active members, in the order in which they joined.

    agg_intf: aggregation interface
    max: entries that members has room for
    count: the record's member count, 0..11, written before max is compared
    members: user port of each member port; all ones for a port without a map row
    status: 0; -1 when max is smaller than the count, or the count is one that no record can hold (negative, or above
        ADP_AGG_MEMBER_BYTES): members is untouched; -1 for a group outside 1..8: count is 0, and so are the first
        entries of members (max, at most ADP_MEMBER_LIST_SLOTS of them)
    """
    return _get_agg_group(agg_intf, max)


_GET_AGG_GROUP: Call[GetAggGroupResult] = Call(
    "GET_AGG_GROUP",
    Status,
    Value("agg_intf", c_uint32),
    Out("count", c_uint32),
    Out("members", c_uint32 * 8),
    several=GetAggGroupResult,
)


def GET_AGG_GROUP(agg_intf: int) -> GetAggGroupResult:
    """Lists a group's active members; adp_get_agg_group() with room for ADP_AGG_ACTIVE_MAX.

    agg_intf: aggregation interface
    count: the record's member count, 0..11
    members: user ports
    status: as adp_get_agg_group(): a group with nine or more members gives -1, with count written and members untouched
    """
    return _GET_AGG_GROUP(agg_intf)


class GetAggConfigGroupResult(NamedTuple):
    """What get_agg_config_group() gives."""

    count: int  # type: ignore[assignment]  # not the tuple's
    members: list[int]


_get_agg_config_group: Call[GetAggConfigGroupResult] = Call(
    "adp_get_agg_config_group",
    Status,
    Value("agg_intf", c_uint32),
    Value("max", c_uint32),
    Out("count", c_uint32),
    Room("members", c_uint32, "max"),
    several=GetAggConfigGroupResult,
)


def get_agg_config_group(agg_intf: int, max: int) -> GetAggConfigGroupResult:
    """Lists a group's configured members in ascending order.

    agg_intf: aggregation interface
    max: entries that members has room for
    count: number of members listed
    members: user ports
    status: 0; -1 when max is smaller than the number of active members, with nothing written, even when the members are
        configured ones; -1 when there are more than max configured members: the first max are written, count is not; -1
        for a group outside 1..8, with outputs zeroed as in adp_get_agg_group()
    """
    return _get_agg_config_group(agg_intf, max)


_GET_AGG_CONFIG_GROUP: Call[GetAggConfigGroupResult] = Call(
    "GET_AGG_CONFIG_GROUP",
    Status,
    Value("agg_intf", c_uint32),
    Out("count", c_uint32),
    Out("members", c_uint32 * 26),
    several=GetAggConfigGroupResult,
)


def GET_AGG_CONFIG_GROUP(agg_intf: int) -> GetAggConfigGroupResult:
    """Lists a group's configured members; adp_get_agg_config_group() with room for ADP_MEMBER_LIST_SLOTS.

    agg_intf: aggregation interface
    count: number of members listed
    members: user ports
    status: as adp_get_agg_config_group(); with 27 bits set 26 entries are written, count is untouched and the result is
        -1
    """
    return _GET_AGG_CONFIG_GROUP(agg_intf)


_get_agg_group_by_map: Call[PortSet] = Call(
    "adp_get_agg_group_by_map",
    Status,
    Value("agg_intf", c_uint32),
    Out("bitmap", FewPorts),
)


def get_agg_group_by_map(agg_intf: int) -> PortSet:
    """Reads a group's active members as a bitmap of interface numbers.

    agg_intf: aggregation interface
    bitmap: two words, bit n of word n / 32 for interface n
    status: 0; -1 with the bitmap unchanged for a group with nine or more members; -1 for a group outside 1..8, with
        both words 0
    """
    return _get_agg_group_by_map(agg_intf)


_register_agg_event_cb: Call[None] = Call("adp_register_agg_event_cb", Status, Callback("callback", layouts.AggEventCb))


def register_agg_event_cb(callback: Callable[[records.AggEvent], int | None] | None) -> None:
    """Registers the receiver of aggregation events in agg_event_handle.

    callback: called with each event, null for none
    status: 0
    """
    _register_agg_event_cb(callback)


_create_agg_group: Call[None] = Call("adp_create_agg_group", Status, Value("agg_intf", c_uint32))


def create_agg_group(agg_intf: int) -> None:
    """Creates a group: an empty trunk in the chip, and cleared tables.

    agg_intf: aggregation interface
    status: 0; the driver's result, with nothing changed; -1 for a group outside 1..8
    """
    _create_agg_group(agg_intf)


_delete_agg_group: Call[None] = Call("adp_delete_agg_group", Status, Value("agg_intf", c_uint32))


def delete_agg_group(agg_intf: int) -> None:
    """Deletes a group: its trunk in the chip, and all of its tables.

    agg_intf: aggregation interface
    status: 0; the driver's result, with nothing changed; -1 for a group outside 1..8
    """
    _delete_agg_group(agg_intf)


_add_agg_member: Call[None] = Call(
    "adp_add_agg_member",
    Status,
    Value("agg_intf", c_uint32),
    Count("count", c_uint32, "members"),
    Counted("members", c_uint32),
)


def add_agg_member(agg_intf: int, members: Sequence[int]) -> None:
    """Adds members to a group.

    agg_intf: aggregation interface
    members: user ports
    status: 0; the driver's result, with the tables unchanged; -1 with nothing done for a group outside 1..8, an
        interface beyond the port map, or more than eleven members
    """
    _add_agg_member(agg_intf, members)


_add_agg_member_by_map: Call[None] = Call(
    "adp_add_agg_member_by_map",
    Status,
    Value("agg_intf", c_uint32),
    Value("word0", c_uint32),
    Value("word1", c_uint32),
)


def add_agg_member_by_map(agg_intf: int, word0: int, word1: int) -> None:
    """Adds the members in a bitmap of interface numbers.

    agg_intf: aggregation interface
    word0: bits 0..26 name the interfaces
    word1: names no interface: its bits are only compared with 0, and both words 0 return 0 at once
    status: as adp_add_agg_member()
    """
    _add_agg_member_by_map(agg_intf, word0, word1)


_del_agg_member: Call[None] = Call(
    "adp_del_agg_member",
    Status,
    Value("agg_intf", c_uint32),
    Count("count", c_uint32, "members"),
    Counted("members", c_uint32),
)


def del_agg_member(agg_intf: int, members: Sequence[int]) -> None:
    """Removes members from a group.

    agg_intf: aggregation interface
    members: user ports
    status: 0; the driver's result, with the tables unchanged; -1 with nothing done for a group outside 1..8 or an
        interface beyond the port map
    """
    _del_agg_member(agg_intf, members)


_del_agg_member_by_map: Call[None] = Call(
    "adp_del_agg_member_by_map",
    Status,
    Value("agg_intf", c_uint32),
    Value("word0", c_uint32),
    Value("word1", c_uint32),
)


def del_agg_member_by_map(agg_intf: int, word0: int, word1: int) -> None:
    """Removes the members in a bitmap of interface numbers.

    agg_intf: aggregation interface
    word0: bits 0..26 name the interfaces
    word1: names no interface: its bits are only compared with 0, and both words 0 return 0 at once
    status: as adp_del_agg_member()
    """
    _del_agg_member_by_map(agg_intf, word0, word1)


_add_agg_standby_member: Call[None] = Call(
    "adp_add_agg_standby_member",
    Status,
    Value("agg_intf", c_uint32),
    Value("word0", c_uint32),
    Value("word1", c_uint32),
)


def add_agg_standby_member(agg_intf: int, word0: int, word1: int) -> None:
    """Adds interfaces to a group's configured members.

    agg_intf: aggregation interface
    word0: bits to set in the first word
    word1: bits to set in the second word; both words 0 return 0 at once
    status: 0; -1 for a group outside 1..8
    """
    _add_agg_standby_member(agg_intf, word0, word1)


_del_agg_standby_member: Call[None] = Call(
    "adp_del_agg_standby_member",
    Status,
    Value("agg_intf", c_uint32),
    Value("word0", c_uint32),
    Value("word1", c_uint32),
)


def del_agg_standby_member(agg_intf: int, word0: int, word1: int) -> None:
    """Removes interfaces from a group's configured members.

    agg_intf: aggregation interface
    word0: bits to clear in the first word
    word1: bits to clear in the second word; both words 0 return 0 at once
    status: 0; -1 for a group outside 1..8
    """
    _del_agg_standby_member(agg_intf, word0, word1)


_ANEW_SELECT_MANAGE_INTF: Call[None] = Call("ANEW_SELECT_MANAGE_INTF", Status, Value("agg_intf", c_uint32))


def ANEW_SELECT_MANAGE_INTF(agg_intf: int) -> None:
    """Elects a group's management interface: the smallest member whose link attribute 14 is not 0, or, while all are
    down, the largest.

    agg_intf: aggregation interface
    status: 0; -1 for a group outside 1..8
    """
    _ANEW_SELECT_MANAGE_INTF(agg_intf)


_set_agg_loadbalance: Call[None] = Call(
    "adp_set_agg_loadbalance",
    Status,
    Value("agg_intf", c_uint32),
    Value("mode", c_uint32),
)


def set_agg_loadbalance(agg_intf: int, mode: int) -> None:
    """Sets a group's load balancing.

    agg_intf: aggregation interface
    mode: BalanceMode
    status: the second driver call's result
    """
    _set_agg_loadbalance(agg_intf, mode)


_adp_agg_event_handle: Call[int] = Call("adp_agg_event_handle", c_int32, Text("caller"), In("event", layouts.AggEvent))


def adp_agg_event_handle(caller: str, event: records.AggEvent) -> int:
    """Passes an event to the registered receiver.

    caller: name of the caller, not used
    event: the event
    result: the receiver's result; 0 when none is registered
    """
    return _adp_agg_event_handle(caller, event)


_agg_linkscan_handle: Call[int] = Call(
    "adp_agg_linkscan_handle",
    Status,
    Value("intf", c_uint32),
    Value("is_up", c_uint32),
    Out("changed", c_uint32),
)


def agg_linkscan_handle(intf: int, is_up: int) -> int:
    """Handles a link change of a user port that is a member of a group: the first group whose record has its port.

    intf: user port
    is_up: 0 down, otherwise up
    changed: 1 when the group as a whole went up or down, otherwise untouched; may be null
    status: the driver's result; 0 for a port in no group
    """
    return _agg_linkscan_handle(intf, is_up)


_get_port_stat: Call[int] = Call(
    "adp_get_port_stat",
    Status,
    Value("intf", c_uint32),
    Value("type", c_uint32),
    Out("value", c_uint64),
)


def get_port_stat(intf: int, type: int) -> int:
    """Reads a counter of a user port, or the sum over a group's active members (modulo 2^64).

    intf: user port or aggregation interface
    type: Counter
    value: the counter; for a group untouched after a failure, and 0 without members
    status: 0; 102 at the first failure; 201 for another type, -1 for a group outside 1..8
    """
    return _get_port_stat(intf, type)


_clr_port_stat: Call[None] = Call("adp_clr_port_stat", Status, Value("intf", c_uint32))


def clr_port_stat(intf: int) -> None:
    """Clears all counters of a user port or of a group's members.

    intf: user port or aggregation interface
    status: 0; 102 at the first failure; 201 for another type, -1 for a group outside 1..8
    """
    _clr_port_stat(intf)


_set_trap_lacp_packet: Call[None] = Call(
    "adp_set_trap_lacp_packet",
    Status,
    Value("enable", c_uint32),
    Value("unused", c_uint32),
    Value("unused2", c_uint32),
    Value("option", c_size_t),
)


def set_trap_lacp_packet(enable: int, unused: int, unused2: int, option: int) -> None:
    """Turns the trap that sends LACP frames (IEEE 802.1AX) to the CPU on or off.

    enable: passed through; 0 off, otherwise on
    unused: not used
    unused2: not used
    option: passed through; ignored by the virtual device
    status: the driver's result
    """
    _set_trap_lacp_packet(enable, unused, unused2, option)


_set_trap_eoam_packet: Call[None] = Call(
    "adp_set_trap_eoam_packet",
    Status,
    Value("enable", c_uint32),
    Value("unused", c_uint32),
    Value("unused2", c_uint32),
    Value("option", c_size_t),
)


def set_trap_eoam_packet(enable: int, unused: int, unused2: int, option: int) -> None:
    """Turns the trap that sends Ethernet OAM frames (IEEE 802.3 clause 57) to the CPU on or off.

    enable: passed through; 0 off, otherwise on
    unused: not used
    unused2: not used
    option: passed through; ignored by the virtual device
    status: the driver's result
    """
    _set_trap_eoam_packet(enable, unused, unused2, option)
