"""The calls of adp/port.h.

This file is written by script/reference from the headers.
"""

from __future__ import annotations

from ctypes import c_int32, c_uint32, c_uint64

from ..call import Call, Status
from ..memory import FewPorts
from ..parameters import InOut, Out, Value
from ..ports import PortSet
from . import layouts, records

__all__ = [
    "set_max_phy_port_num",
    "get_max_phy_port_num",
    "add_cpu_port",
    "add_phy_port",
    "intf_2_phy_id",
    "phy_2_intf_id",
    "phy_2_intf_id_ex",
    "intf_2_slot_id",
    "intf_port_attributes",
    "get_phy_port",
    "del_phy_port",
    "api_xlate_port_pbmp_a2p",
    "api_xlate_port_pbmp_p2a",
    "set_phy_port_attr",
    "get_phy_port_attr",
    "intf_learn_set",
    "intf_learn_get",
    "intf_cablediag",
    "intf_eee_set",
    "intf_eee_get",
    "intf_stat_get",
    "intf_combo_port_copper_or_fiber_check",
    "set_port_last_change",
    "get_port_last_change",
    "link_event_handle_cb",
    "link_event_fast_send_unicast_msg",
    "link_event_fast_send_unicast_msg_ex",
]

_set_max_phy_port_num: Call[None] = Call("adp_set_max_phy_port_num", Status, Value("port_count", c_uint32))


def set_max_phy_port_num(port_count: int) -> None:
    """Creates the port map and the port-to-group map, both cleared.

    port_count: number of user ports; it is stored first, and stays even when an allocation fails
    status: 0; -1 when either allocation failed (a size that overflows counts as failed): that table is null, the other
        one exists
    """
    _set_max_phy_port_num(port_count)


_get_max_phy_port_num: Call[int] = Call("adp_get_max_phy_port_num", Status, Out("port_count", c_uint32))


def get_max_phy_port_num() -> int:
    """Reads the number of user ports.

    port_count: number of user ports, adp_max_phy_port_num
    status: 0
    """
    return _get_max_phy_port_num()


_add_cpu_port: Call[None] = Call(
    "adp_add_cpu_port",
    Status,
    Value("unused", c_uint32),
    Value("word1", c_uint32),
    Value("word2", c_uint32),
    Value("phy", c_uint32),
    Value("attributes", c_uint32),
)


def add_cpu_port(unused: int, word1: int, word2: int, phy: int, attributes: int) -> None:
    """Fills the CPU port's row, row 0.

    unused: not used
    word1: stored for the caller
    word2: stored for the caller
    phy: physical port number of the CPU port
    attributes: caller-defined attribute word
    status: 0; -1 with nothing changed when the map does not exist
    """
    _add_cpu_port(unused, word1, word2, phy, attributes)


_add_phy_port: Call[None] = Call(
    "adp_add_phy_port",
    Status,
    Value("index", c_uint32),
    Value("word1", c_uint32),
    Value("word2", c_uint32),
    Value("phy", c_uint32),
    Value("attributes", c_uint32),
)


def add_phy_port(index: int, word1: int, word2: int, phy: int, attributes: int) -> None:
    """Fills one row of the port map.

    index: row, 1..adp_max_phy_port_num (row 0 is accepted and is the CPU port's)
    word1: stored for the caller
    word2: stored for the caller
    phy: physical port number
    attributes: caller-defined attribute word
    status: 0; -1 with nothing changed when the row is beyond the map or the map does not exist
    """
    _add_phy_port(index, word1, word2, phy, attributes)


_intf_2_phy_id: Call[int] = Call("adp_intf_2_phy_id", c_int32, Value("intf", c_uint32))


def intf_2_phy_id(intf: int) -> int:
    """Translates an interface number to its physical port.

    intf: 0 (the CPU port) or a user port, 1..adp_max_phy_port_num
    result: the row's physical port; -1 when intf, taken whole and unsigned, exceeds adp_max_phy_port_num, when its type
        bits are not 0, or when the map does not exist
    """
    return _intf_2_phy_id(intf)


_phy_2_intf_id: Call[int] = Call("adp_phy_2_intf_id", c_int32, Value("phy", c_uint32))


def phy_2_intf_id(phy: int) -> int:
    """Finds the interface of a physical port.

    phy: physical port number
    result: the lowest row whose physical port equals phy, so the CPU port's row 0 wins a tie; -1 (all ones) when there
        is none or the map does not exist
    """
    return _phy_2_intf_id(phy)


_phy_2_intf_id_ex: Call[int] = Call("adp_phy_2_intf_id_ex", c_int32, Value("unused", c_uint32), Value("phy", c_uint32))


def phy_2_intf_id_ex(unused: int, phy: int) -> int:
    """Finds the interface of a physical port of a unit; as adp_phy_2_intf_id(), because there is one unit.

    unused: not used
    phy: physical port number
    result: as adp_phy_2_intf_id()
    """
    return _phy_2_intf_id_ex(unused, phy)


_intf_2_slot_id: Call[int] = Call("adp_intf_2_slot_id", c_int32, Value("intf", c_uint32))


def intf_2_slot_id(intf: int) -> int:
    """Gives an interface's slot: this is a single-slot system.

    intf: any interface number
    result: always 0
    """
    return _intf_2_slot_id(intf)


_intf_port_attributes: Call[int] = Call("adp_intf_port_attributes", c_uint32, Value("intf", c_uint32))


def intf_port_attributes(intf: int) -> int:
    """Gives an interface's attribute word.

    intf: 0..adp_max_phy_port_num; the type bits are not checked apart
    result: the attribute word given for the row; 0 when intf, taken whole and unsigned, exceeds the maximum or the map
        does not exist
    """
    return _intf_port_attributes(intf)


_get_phy_port: Call[None] = Call("adp_get_phy_port", Status)


def get_phy_port() -> None:
    """Does nothing.

    status: 0
    """
    _get_phy_port()


_del_phy_port: Call[None] = Call("adp_del_phy_port", Status)


def del_phy_port() -> None:
    """Does nothing: rows are never removed.

    status: 0
    """
    _del_phy_port()


_api_xlate_port_pbmp_a2p: Call[PortSet] = Call("adp_api_xlate_port_pbmp_a2p", Status, InOut("bitmap", FewPorts))


def api_xlate_port_pbmp_a2p(bitmap: PortSet | None = None) -> PortSet:
    """Turns a bitmap of physical ports into a bitmap of interface numbers, in place.

    bitmap: two words, bit n of word n / 32 for number n
    status: 0
    """
    return _api_xlate_port_pbmp_a2p(bitmap)


_api_xlate_port_pbmp_p2a: Call[PortSet] = Call("adp_api_xlate_port_pbmp_p2a", Status, InOut("bitmap", FewPorts))


def api_xlate_port_pbmp_p2a(bitmap: PortSet | None = None) -> PortSet:
    """Turns a bitmap of interface numbers into a bitmap of physical ports, in place.

    bitmap: two words, bit n of word n / 32 for number n
    status: 0
    """
    return _api_xlate_port_pbmp_p2a(bitmap)


_set_phy_port_attr: Call[None] = Call(
    "adp_set_phy_port_attr",
    Status,
    Value("intf", c_uint32),
    Value("selector", c_uint32),
    Value("value", c_uint32),
    Value("mode", c_uint32),
)


def set_phy_port_attr(intf: int, selector: int, value: int, mode: int) -> None:
    """Sets an attribute of an interface.

    intf: user port or aggregation interface
    selector: PortAttr, 0..12
    value: the attribute, see the selector
    mode: passed through by selector 0 with a maximum of 1000 and by selector 1: 0, or another mode of the driver; with
        selector 1 mode 2 turns auto-negotiation on
    status: 0; 101 for a selector of 13 or more, which is checked first; 201 for another interface type; 102 when a
        driver call failed; the driver's own result for selectors 4 and 9; -1 for a group outside 1..8 when its members
        are needed
    """
    _set_phy_port_attr(intf, selector, value, mode)


_get_phy_port_attr: Call[int] = Call(
    "adp_get_phy_port_attr",
    Status,
    Value("intf", c_uint32),
    Value("selector", c_uint32),
    Out("value", c_uint32),
)


def get_phy_port_attr(intf: int, selector: int) -> int:
    """Reads an attribute of an interface.

    intf: user port or aggregation interface
    selector: PortAttr, 0..14; 7 and 8 return 0 and leave the output as it was
    value: the attribute, see the selector; on a group selectors 11 and 14 clear it first
    status: 0; 101 for a selector of 15 or more, which is checked first; 201 for another interface type; 203 for an
        aggregation interface with neither a management interface nor a configured member; 102 when a driver call
        failed; -1 for a group outside 1..8
    """
    return _get_phy_port_attr(intf, selector)


_intf_learn_set: Call[None] = Call("adp_intf_learn_set", Status, Value("intf", c_uint32), Value("mode", c_int32))


def intf_learn_set(intf: int, mode: int) -> None:
    """Sets an interface's address learning.

    intf: user port or aggregation interface
    mode: LearnMode
    status: user port: the driver's result; group: 0, 102 at the first failure; 201 for another type, -1 for a group
        outside 1..8
    """
    _intf_learn_set(intf, mode)


_intf_learn_get: Call[int] = Call("adp_intf_learn_get", Status, Value("intf", c_uint32), Out("mode", c_uint32))


def intf_learn_get(intf: int) -> int:
    """Reads an interface's address learning.

    intf: user port or aggregation interface
    mode: written by the driver, LearnMode
    status: the driver's result; 201 for another type, -1 for a group outside 1..8
    """
    return _intf_learn_get(intf)


_intf_cablediag: Call[records.CableDiag] = Call(
    "adp_intf_cablediag",
    Status,
    Value("intf", c_uint32),
    Out("result", layouts.CableDiag),
)


def intf_cablediag(intf: int) -> records.CableDiag:
    """Runs the cable diagnosis of an interface.

    intf: user port or aggregation interface
    result: written by the driver: adp_cable_diag_t, for each wire pair its condition, CablePair, and its length
    status: the driver's result; 201 for another type, -1 for a group outside 1..8
    """
    return _intf_cablediag(intf)


_intf_eee_set: Call[None] = Call("adp_intf_eee_set", Status, Value("intf", c_uint32), Value("enable", c_uint32))


def intf_eee_set(intf: int, enable: int) -> None:
    """Sets energy-efficient Ethernet (IEEE 802.3az).

    intf: user port or aggregation interface
    enable: 0 off, non-zero on
    status: the driver's result; 201 for another type, -1 for a group outside 1..8
    """
    _intf_eee_set(intf, enable)


_intf_eee_get: Call[int] = Call("adp_intf_eee_get", Status, Value("intf", c_uint32), Out("enable", c_uint32))


def intf_eee_get(intf: int) -> int:
    """Reads energy-efficient Ethernet (IEEE 802.3az).

    intf: user port or aggregation interface
    enable: written by the driver: 0 off, non-zero on
    status: the driver's result; 201 for another type, -1 for a group outside 1..8
    """
    return _intf_eee_get(intf)


_intf_stat_get: Call[int] = Call(
    "adp_intf_stat_get",
    Status,
    Value("intf", c_uint32),
    Value("selector", c_uint32),
    Out("value", c_uint64),
)


def intf_stat_get(intf: int, selector: int) -> int:
    """Reads a counter of a port.

    intf: user port; any other interface is passed on as physical port -1
    selector: Counter
    value: written by the driver: the counter, 64 bits
    status: the driver's result
    """
    return _intf_stat_get(intf, selector)


_intf_combo_port_copper_or_fiber_check: Call[None] = Call(
    "adp_intf_combo_port_copper_or_fiber_check",
    Status,
    Value("intf", c_uint32),
)


def intf_combo_port_copper_or_fiber_check(intf: int) -> None:
    """Checks whether a combo port uses its copper side, by what it advertises.

    intf: user port
    status: 0 when auto-negotiation is on and a 10 or 100 Mb/s ability is advertised (copper), otherwise -1 (fibre); 201
        without a driver call for another interface type
    """
    _intf_combo_port_copper_or_fiber_check(intf)


_set_port_last_change: Call[None] = Call("adp_set_port_last_change", Status, Value("intf", c_uint32))


def set_port_last_change(intf: int) -> None:
    """Stamps an interface's last link change with the current time.

    intf: user port (an index outside 1..26 changes nothing) or aggregation interface
    status: 0; 201 for another type, -1 for a group outside 1..8
    """
    _set_port_last_change(intf)


_get_port_last_change: Call[int] = Call(
    "adp_get_port_last_change",
    Status,
    Value("intf", c_int32),
    Out("seconds", c_uint32),
)


def get_port_last_change(intf: int) -> int:
    """Reads when an interface's link changed last.

    intf: user port or aggregation interface
    seconds: seconds since the epoch; 0 when never stamped, for an index outside 1..26, and for any result but 0
    status: 0; 203 for an aggregation interface with neither a management interface nor a configured member, 201 for
        another type, -1 for a group outside 1..8
    """
    return _get_port_last_change(intf)


_link_event_handle_cb: Call[int] = Call(
    "adp_link_event_handle_cb",
    c_int32,
    Value("unit", c_uint32),
    Value("port", c_uint32),
    Value("status", c_int32),
)


def link_event_handle_cb(unit: int, port: int, status: int) -> int:
    """Forwards a link change to the device's link-event sink, link_event_handle_cb(intf, status).

    unit: not used
    port: physical port
    status: link status, passed on: 0 down, 1 up
    result: the sink's result, or 0 for a dropped change
    """
    return _link_event_handle_cb(unit, port, status)


_link_event_fast_send_unicast_msg: Call[int] = Call(
    "adp_link_event_fast_send_unicast_msg",
    c_int32,
    Value("unit", c_uint32),
    Value("port", c_uint32),
    Value("status", c_int32),
)


def link_event_fast_send_unicast_msg(unit: int, port: int, status: int) -> int:
    """Records a link change in g_intf_link_data and posts it to the ring-protection queue (ITU-T G.8032).

    unit: recorded, low 16 bits used
    port: physical port
    status: link status, low 16 bits used: 0 down, 1 up
    result: the queue's positive result; after a failure, which is printed on standard error, the number of characters
        printed; -1 with nothing recorded or sent for a port without a record
    """
    return _link_event_fast_send_unicast_msg(unit, port, status)


_link_event_fast_send_unicast_msg_ex: Call[int] = Call(
    "adp_link_event_fast_send_unicast_msg_ex",
    c_int32,
    Value("intf", c_int32),
    Value("status", c_int32),
)


def link_event_fast_send_unicast_msg_ex(intf: int, status: int) -> int:
    """adp_link_event_fast_send_unicast_msg() for an interface: unit 0 and its physical port.

    intf: user port
    status: link status, low 16 bits used: 0 down, 1 up
    result: as adp_link_event_fast_send_unicast_msg()
    """
    return _link_event_fast_send_unicast_msg_ex(intf, status)
