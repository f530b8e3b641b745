"""The calls of adp/mac.h.

This file is written by script/reference from the headers.
"""

from __future__ import annotations

from ctypes import c_size_t, c_uint32, c_uint64, c_uint8
from typing import NamedTuple

from ..call import Call, Status
from ..parameters import In, Out, Value
from . import layouts, records

__all__ = [
    "add_mac_addr",
    "filter_mac_addr",
    "add_mac_mcast_addr",
    "get_mac_addr",
    "get_mac_mcast_addr",
    "get_intf_by_addr",
    "get_intf_flags_by_addr",
    "get_l2_index_by_addr",
    "get_nextvalid_mac_addr",
    "del_mac_addr",
    "del_mac_mcast_addr",
    "del_mac_by_lrntype",
    "del_mac_addr_by_vlan",
    "del_mac_addr_by_mac",
    "del_mac_addr_by_intf",
    "del_mac_addr_by_vlan_intf",
    "del_mac_addr_by_intf_mac",
    "del_mac_addr_by_trunkid_mac_vlan",
    "del_port_violate_mac_addr_by_intf",
    "set_mac_limit",
    "get_mac_limit",
    "set_mac_age_time",
    "get_mac_age_time",
    "traverse_mac_table",
    "traverse_mac_mcast_table",
    "get_mac_learn_count_by_intf",
    "get_mac_violate_count_by_intf",
    "l2_mactable_fread",
    "is_mcast_addr_exist_by_vlan",
    "is_mcast_addr_exist_by_vlan_ex",
    "GetIntfFlagsByAddrResult",
]

_add_mac_addr: Call[None] = Call(
    "adp_add_mac_addr",
    Status,
    In("mac", c_uint8 * 6),
    Value("intf", c_uint32),
    Value("vid", c_uint32),
    Value("is_static", c_uint32),
)


def add_mac_addr(mac: bytes, intf: int, vid: int, is_static: int) -> None:
    """Adds an entry for a MAC address.

    mac: MAC address
    intf: user port or aggregation interface
    vid: VLAN id, low 16 bits used
    is_static: 1 in the low byte for a static entry
    status: the driver's result; without a driver call 201 for another type, -1 for a group outside 1..8
    """
    _add_mac_addr(mac, intf, vid, is_static)


_filter_mac_addr: Call[None] = Call(
    "adp_filter_mac_addr",
    Status,
    Value("intf", c_uint32),
    In("mac", c_uint8 * 6),
    Value("vid", c_uint32),
    Value("flags", c_uint32),
)


def filter_mac_addr(intf: int, mac: bytes, vid: int, flags: int) -> None:
    """Adds an entry for a MAC address with flags that the caller gives, for instance to filter the address.

    intf: user port or aggregation interface; the group's number is not checked
    mac: MAC address
    vid: VLAN id, low 16 bits used
    flags: the driver's flags, low byte used: ADP_MAC_FLAG_...
    status: the driver's result; 201 without a driver call for another type
    """
    _filter_mac_addr(intf, mac, vid, flags)


_add_mac_mcast_addr: Call[None] = Call(
    "adp_add_mac_mcast_addr",
    Status,
    In("mac", c_uint8 * 6),
    Value("ports", c_uint64),
    Value("vid", c_uint32),
    Value("kind", c_uint32),
)


def add_mac_mcast_addr(mac: bytes, ports: int, vid: int, kind: int) -> None:
    """Adds a multicast entry: frames to the address in the VLAN go to the ports of a bitmap.

    mac: group MAC address
    ports: bit n for user port n
    vid: VLAN id, low 16 bits used
    kind: 1 in the low byte; every other kind is refused
    status: the driver's result; -1 without a driver call for another kind
    """
    _add_mac_mcast_addr(mac, ports, vid, kind)


_get_mac_addr: Call[records.L2Entry] = Call(
    "adp_get_mac_addr",
    Status,
    In("mac", c_uint8 * 6),
    Value("vid", c_uint32),
    Out("entry", layouts.L2Entry),
)


def get_mac_addr(mac: bytes, vid: int) -> records.L2Entry:
    """Reads an address's entry.

    mac: MAC address
    vid: VLAN id, low 16 bits used
    entry: the entry
    status: the driver's result
    """
    return _get_mac_addr(mac, vid)


_get_mac_mcast_addr: Call[records.L2Entry] = Call(
    "adp_get_mac_mcast_addr",
    Status,
    In("mac", c_uint8 * 6),
    Value("vid", c_uint32),
    Out("entry", layouts.L2Entry),
)


def get_mac_mcast_addr(mac: bytes, vid: int) -> records.L2Entry:
    """Reads a multicast entry; its ports stay physical.

    mac: group MAC address
    vid: VLAN id, low 16 bits used
    entry: the entry
    status: the driver's result
    """
    return _get_mac_mcast_addr(mac, vid)


_get_intf_by_addr: Call[int] = Call(
    "adp_get_intf_by_addr",
    Status,
    In("mac", c_uint8 * 6),
    Value("vid", c_uint32),
    Out("intf", c_uint32),
)


def get_intf_by_addr(mac: bytes, vid: int) -> int:
    """Finds the interface behind which an address is.

    mac: MAC address
    vid: VLAN id, low 16 bits used
    intf: the trunk's aggregation interface, or the user port; -1 for a port without a map row
    status: the driver's result
    """
    return _get_intf_by_addr(mac, vid)


class GetIntfFlagsByAddrResult(NamedTuple):
    """What get_intf_flags_by_addr() gives."""

    intf: int
    flags: int


_get_intf_flags_by_addr: Call[GetIntfFlagsByAddrResult] = Call(
    "adp_get_intf_flags_by_addr",
    Status,
    In("mac", c_uint8 * 6),
    Value("vid", c_uint32),
    Out("intf", c_uint32),
    Out("flags", c_uint32),
    several=GetIntfFlagsByAddrResult,
)


def get_intf_flags_by_addr(mac: bytes, vid: int) -> GetIntfFlagsByAddrResult:
    """Finds the interface behind which an address is, and the flags of its entry.

    mac: MAC address
    vid: VLAN id, low 16 bits used
    intf: the trunk's aggregation interface, or the user port
    flags: the entry's flags: bits of ADP_MAC_FLAG_..., and ADP_MAC_FOUND_TRUNK
    status: the driver's result
    """
    return _get_intf_flags_by_addr(mac, vid)


_get_l2_index_by_addr: Call[int] = Call(
    "adp_get_l2_index_by_addr",
    Status,
    In("mac", c_uint8 * 6),
    Value("vid", c_uint32),
    Out("index", c_uint32),
)


def get_l2_index_by_addr(mac: bytes, vid: int) -> int:
    """Finds an address's place in the L2 table.

    mac: MAC address
    vid: VLAN id, low 16 bits used
    index: L2 table index, 0 after a failure
    status: the driver's result
    """
    return _get_l2_index_by_addr(mac, vid)


_get_nextvalid_mac_addr: Call[records.L2Entry] = Call(
    "adp_get_nextvalid_mac_addr",
    Status,
    Value("index", c_size_t),
    Out("entry", layouts.L2Entry),
    Value("unused", c_size_t),
    Value("option", c_size_t),
)


def get_nextvalid_mac_addr(index: int, unused: int, option: int) -> records.L2Entry:
    """Finds the next valid entry of the L2 table.

    index: passed through; on the virtual device the table index at which the search starts, 0..8191
    entry: written by the driver; on the virtual device the first valid entry at or after the index
    unused: not used
    option: passed through; ignored by the virtual device
    status: the driver's result
    """
    return _get_nextvalid_mac_addr(index, unused, option)


_del_mac_addr: Call[None] = Call(
    "adp_del_mac_addr",
    Status,
    In("mac", c_uint8 * 6),
    Value("vid", c_uint32),
    Value("unused", c_uint32),
    Value("option", c_size_t),
)


def del_mac_addr(mac: bytes, vid: int, unused: int, option: int) -> None:
    """Deletes an address's entry from a VLAN.

    mac: MAC address
    vid: VLAN id, low 16 bits used
    unused: not used
    option: passed through; ignored by the virtual device
    status: the driver's result
    """
    _del_mac_addr(mac, vid, unused, option)


_del_mac_mcast_addr: Call[None] = Call(
    "adp_del_mac_mcast_addr",
    Status,
    In("mac", c_uint8 * 6),
    Value("vid", c_uint32),
    Value("unused", c_uint32),
    Value("option", c_size_t),
)


def del_mac_mcast_addr(mac: bytes, vid: int, unused: int, option: int) -> None:
    """Deletes a multicast entry from a VLAN.

    mac: group MAC address
    vid: VLAN id, low 16 bits used
    unused: not used
    option: passed through; ignored by the virtual device
    status: the driver's result
    """
    _del_mac_mcast_addr(mac, vid, unused, option)


_del_mac_by_lrntype: Call[None] = Call("adp_del_mac_by_lrntype", Status, Value("learn_type", c_uint32))


def del_mac_by_lrntype(learn_type: int) -> None:
    """Deletes the entries of a learn type.

    learn_type: the driver's learn type, low byte used; MacMode on the virtual device
    status: the driver's result
    """
    _del_mac_by_lrntype(learn_type)


_del_mac_addr_by_vlan: Call[None] = Call(
    "adp_del_mac_addr_by_vlan",
    Status,
    Value("vid", c_uint32),
    Value("mode", c_uint32),
)


def del_mac_addr_by_vlan(vid: int, mode: int) -> None:
    """Deletes a VLAN's entries.

    vid: VLAN id, low 16 bits used
    mode: MacMode, low byte used
    status: the driver's result; 101 without a driver call for another mode
    """
    _del_mac_addr_by_vlan(vid, mode)


_del_mac_addr_by_mac: Call[None] = Call(
    "adp_del_mac_addr_by_mac",
    Status,
    In("mac", c_uint8 * 6),
    Value("mode", c_uint32),
)


def del_mac_addr_by_mac(mac: bytes, mode: int) -> None:
    """Deletes an address's entries in all VLANs.

    mac: MAC address
    mode: MacMode, low byte used
    status: the driver's result; 101 without a driver call for another mode
    """
    _del_mac_addr_by_mac(mac, mode)


_del_mac_addr_by_intf: Call[None] = Call(
    "adp_del_mac_addr_by_intf",
    Status,
    Value("intf", c_uint32),
    Value("mode", c_uint32),
)


def del_mac_addr_by_intf(intf: int, mode: int) -> None:
    """Deletes an interface's entries.

    intf: user port or aggregation interface
    mode: MacMode, low byte used
    status: the driver's result, for a group that of the last member; 201 for another type, whatever the mode; -1 for a
        group without members or outside 1..8; 101 for another mode. The last three make no driver call.
    """
    _del_mac_addr_by_intf(intf, mode)


_del_mac_addr_by_vlan_intf: Call[None] = Call(
    "adp_del_mac_addr_by_vlan_intf",
    Status,
    Value("vid", c_uint32),
    Value("intf", c_uint32),
    Value("mode", c_uint32),
)


def del_mac_addr_by_vlan_intf(vid: int, intf: int, mode: int) -> None:
    """Deletes an interface's entries in a VLAN.

    vid: VLAN id, low 16 bits used
    intf: user port or aggregation interface; the group's number is not checked
    mode: MacMode, low byte used
    status: the driver's result; -1 for an aggregation interface in mode 1, whatever the driver's result; 201 for
        another type, else 101 for another mode, both without a driver call
    """
    _del_mac_addr_by_vlan_intf(vid, intf, mode)


_del_mac_addr_by_intf_mac: Call[None] = Call(
    "adp_del_mac_addr_by_intf_mac",
    Status,
    Value("intf", c_uint32),
    In("mac", c_uint8 * 6),
    Value("mode", c_uint32),
    Value("option", c_size_t),
)


def del_mac_addr_by_intf_mac(intf: int, mac: bytes, mode: int, option: int) -> None:
    """Deletes an address's entries on a user port.

    intf: user port
    mac: MAC address
    mode: MacMode, low byte used
    option: passed through; ignored by the virtual device
    status: the driver's result; without a driver call -1 for an aggregation interface, 201 for another type, 101 for
        another mode
    """
    _del_mac_addr_by_intf_mac(intf, mac, mode, option)


_del_mac_addr_by_trunkid_mac_vlan: Call[None] = Call(
    "adp_del_mac_addr_by_trunkid_mac_vlan",
    Status,
    Value("intf", c_uint32),
    In("mac", c_uint8 * 6),
    Value("mode", c_uint32),
    Value("vid", c_uint32),
)


def del_mac_addr_by_trunkid_mac_vlan(intf: int, mac: bytes, mode: int, vid: int) -> None:
    """Deletes an address's entry in a VLAN from the trunk that a port belongs to.

    intf: user port
    mac: MAC address
    mode: MacMode, low byte used
    vid: VLAN id, low 16 bits used
    status: the driver's result; 101 without a driver call for another mode
    """
    _del_mac_addr_by_trunkid_mac_vlan(intf, mac, mode, vid)


_del_port_violate_mac_addr_by_intf: Call[None] = Call(
    "adp_del_port_violate_mac_addr_by_intf",
    Status,
    Value("intf", c_uint32),
)


def del_port_violate_mac_addr_by_intf(intf: int) -> None:
    """Forgets the addresses that violated a user port's learning limit.

    intf: user port
    status: the driver's result
    """
    _del_port_violate_mac_addr_by_intf(intf)


_set_mac_limit: Call[None] = Call(
    "adp_set_mac_limit",
    Status,
    Value("limit", c_uint32),
    Value("vid_or_intf", c_uint32),
    Value("scope", c_uint32),
)


def set_mac_limit(limit: int, vid_or_intf: int, scope: int) -> None:
    """Limits the number of learned addresses.

    limit: number of addresses; ADP_MAC_NO_LIMIT is none on the virtual device
    vid_or_intf: for scope 0 a VLAN id, low 16 bits used; for scope 1 an interface; for scope 2 not used
    scope: MacScope
    status: the driver's result; 101 without a driver call for another scope
    """
    _set_mac_limit(limit, vid_or_intf, scope)


_get_mac_limit: Call[int] = Call(
    "adp_get_mac_limit",
    Status,
    Out("limit", c_uint32),
    Value("vid_or_intf", c_uint32),
    Value("scope", c_uint32),
)


def get_mac_limit(vid_or_intf: int, scope: int) -> int:
    """Reads a limit on the number of learned addresses.

    limit: number of addresses; ADP_MAC_NO_LIMIT is none on the virtual device
    vid_or_intf: as in adp_set_mac_limit()
    scope: MacScope
    status: the driver's result; 101 without a driver call or output for another scope
    """
    return _get_mac_limit(vid_or_intf, scope)


_set_mac_age_time: Call[None] = Call("adp_set_mac_age_time", Status, Value("seconds", c_uint32))


def set_mac_age_time(seconds: int) -> None:
    """Sets the ageing time.

    seconds: seconds until an address that sends no frame is forgotten (IEEE 802.1Q, ageing time); 0 turns ageing off on
        the virtual device
    status: the driver's result
    """
    _set_mac_age_time(seconds)


_get_mac_age_time: Call[int] = Call("adp_get_mac_age_time", Status, Out("seconds", c_uint32))


def get_mac_age_time() -> int:
    """Reads the ageing time.

    seconds: seconds, written by the driver
    status: the driver's result
    """
    return _get_mac_age_time()


_traverse_mac_table: Call[None] = Call(
    "adp_traverse_mac_table",
    Status,
    Value("vid", c_size_t),
    Value("unused", c_size_t),
    Value("option", c_size_t),
    Value("option2", c_size_t),
)


def traverse_mac_table(vid: int, unused: int, option: int, option2: int) -> None:
    """Has the driver show the MAC address table.

    vid: passed through, whole; on the virtual device a VLAN id, or 0 for all VLANs
    unused: not used
    option: passed through; ignored by the virtual device
    option2: passed through; ignored by the virtual device
    status: the driver's result
    """
    _traverse_mac_table(vid, unused, option, option2)


_traverse_mac_mcast_table: Call[None] = Call(
    "adp_traverse_mac_mcast_table",
    Status,
    Value("vid", c_size_t),
    Value("unused", c_size_t),
    Value("option", c_size_t),
    Value("option2", c_size_t),
)


def traverse_mac_mcast_table(vid: int, unused: int, option: int, option2: int) -> None:
    """Has the driver show the multicast entries.

    vid: passed through, whole; on the virtual device a VLAN id, or 0 for all VLANs
    unused: not used
    option: passed through; ignored by the virtual device
    option2: passed through; ignored by the virtual device
    status: the driver's result
    """
    _traverse_mac_mcast_table(vid, unused, option, option2)


_get_mac_learn_count_by_intf: Call[int] = Call(
    "adp_get_mac_learn_count_by_intf",
    Status,
    Value("intf", c_uint32),
    Out("count", c_uint32),
)


def get_mac_learn_count_by_intf(intf: int) -> int:
    """Reads how many addresses are learned on a user port.

    intf: user port
    count: written by the driver: number of addresses
    status: the driver's result
    """
    return _get_mac_learn_count_by_intf(intf)


_get_mac_violate_count_by_intf: Call[int] = Call(
    "adp_get_mac_violate_count_by_intf",
    Status,
    Value("intf", c_uint32),
    Out("count", c_uint32),
)


def get_mac_violate_count_by_intf(intf: int) -> int:
    """Reads how many addresses violated a user port's learning limit.

    intf: user port
    count: written by the driver: number of addresses
    status: the driver's result
    """
    return _get_mac_violate_count_by_intf(intf)


_l2_mactable_fread: Call[None] = Call(
    "adp_l2_mactable_fread",
    Status,
    Value("first", c_size_t),
    Value("second", c_size_t),
    Value("third", c_size_t),
    Value("fourth", c_size_t),
)


def l2_mactable_fread(first: int, second: int, third: int, fourth: int) -> None:
    """Reads the L2 table in bulk.

    first: passed through; the virtual device refuses the call
    second: passed through; the virtual device refuses the call
    third: passed through; the virtual device refuses the call
    fourth: passed through; the virtual device refuses the call
    status: the driver's result
    """
    _l2_mactable_fread(first, second, third, fourth)


_is_mcast_addr_exist_by_vlan: Call[None] = Call(
    "adp_is_mcast_addr_exist_by_vlan",
    Status,
    Value("vid", c_uint32),
    Value("last_vid", c_uint32),
    Value("unused", c_size_t),
    Value("option", c_size_t),
)


def is_mcast_addr_exist_by_vlan(vid: int, last_vid: int, unused: int, option: int) -> None:
    """Asks whether VLANs have multicast entries.

    vid: VLAN id, low 16 bits used
    last_vid: passed through, low 16 bits used; on the virtual device the last VLAN id of a range, or 0 for one VLAN
    unused: not used
    option: passed through; ignored by the virtual device
    status: the driver's result
    """
    _is_mcast_addr_exist_by_vlan(vid, last_vid, unused, option)


_is_mcast_addr_exist_by_vlan_ex: Call[None] = Call(
    "adp_is_mcast_addr_exist_by_vlan_ex",
    Status,
    Value("vid", c_size_t),
    Value("unused", c_size_t),
    Value("option", c_size_t),
    Value("option2", c_size_t),
)


def is_mcast_addr_exist_by_vlan_ex(vid: int, unused: int, option: int, option2: int) -> None:
    """Asks whether a VLAN has multicast entries.

    vid: passed through, whole; on the virtual device a VLAN id, 0 is refused
    unused: not used
    option: passed through; ignored by the virtual device
    option2: passed through; ignored by the virtual device
    status: the driver's result
    """
    _is_mcast_addr_exist_by_vlan_ex(vid, unused, option, option2)
