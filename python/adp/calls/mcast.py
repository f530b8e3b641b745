"""The calls of adp/mcast.h.

This file is written by script/reference from the headers.
"""

from __future__ import annotations

from collections.abc import Sequence
from ctypes import c_uint16, c_uint32, c_uint8

from ..call import Call, Status
from ..parameters import Count, Counted, In, Out, Value

__all__ = [
    "create_igmpsn_group",
    "delete_igmpsn_group",
    "get_igmpsn_group",
    "add_igmpsn_member",
    "del_igmpsn_member",
    "set_vlan_igmp_pkt_action",
    "get_vlan_igmp_pkt_action",
    "control_port_l2mc_enable",
    "control_port_l2mc_get_status",
    "control_port_ipmc_get_status",
    "control_port_ipmc_set_enable",
    "control_ipmc_set_disable",
    "control_ipmc_set_enable",
    "control_ip6mc_mode_enable",
    "control_ipmc_lookup_miss_action",
    "control_ip6mc_lookup_miss_action",
]

_create_igmpsn_group: Call[None] = Call(
    "adp_create_igmpsn_group",
    Status,
    In("mac", c_uint8 * 6),
    Value("vid", c_uint32),
    Count("count", c_uint32, "members"),
    Counted("members", c_uint32),
)


def create_igmpsn_group(mac: bytes, vid: int, members: Sequence[int]) -> None:
    """Creates a group.

    mac: group MAC address
    vid: VLAN id, low 16 bits used
    members: user ports and aggregation interfaces
    status: User_mcast_addr_add()'s result; -1 without a driver call for a listed group outside 1..8
    """
    _create_igmpsn_group(mac, vid, members)


_delete_igmpsn_group: Call[None] = Call(
    "adp_delete_igmpsn_group",
    Status,
    In("mac", c_uint8 * 6),
    Value("vid", c_uint32),
)


def delete_igmpsn_group(mac: bytes, vid: int) -> None:
    """Deletes a group.

    mac: group MAC address
    vid: VLAN id, low 16 bits used
    status: the driver's result
    """
    _delete_igmpsn_group(mac, vid)


_get_igmpsn_group: Call[int] = Call(
    "adp_get_igmpsn_group",
    Status,
    In("mac", c_uint8 * 6),
    Value("vid", c_uint32),
    Out("index", c_uint32),
)


def get_igmpsn_group(mac: bytes, vid: int) -> int:
    """Reads a group's multicast group index.

    mac: group MAC address
    vid: VLAN id, low 16 bits used
    index: multicast group index, 0 after a failure
    status: the driver's result
    """
    return _get_igmpsn_group(mac, vid)


_add_igmpsn_member: Call[None] = Call(
    "adp_add_igmpsn_member",
    Status,
    In("mac", c_uint8 * 6),
    Value("vid", c_uint32),
    Count("count", c_uint32, "members"),
    Counted("members", c_uint32),
    In("shown_vid", c_uint16),
)


def add_igmpsn_member(mac: bytes, vid: int, members: Sequence[int], shown_vid: int) -> None:
    """Adds member ports to a group.

    mac: group MAC address
    vid: VLAN id, low 16 bits used
    members: user ports and aggregation interfaces
    shown_vid: VLAN id that the message shows; read only with VLAN 0
    status: User_mcast_port_add()'s result; 201 for a listed interface of another type, with the group read but not
        changed; -1 without a driver call for a listed group outside 1..8
    """
    _add_igmpsn_member(mac, vid, members, shown_vid)


_del_igmpsn_member: Call[None] = Call(
    "adp_del_igmpsn_member",
    Status,
    In("mac", c_uint8 * 6),
    Value("vid", c_uint32),
    Count("count", c_uint32, "members"),
    Counted("members", c_uint32),
)


def del_igmpsn_member(mac: bytes, vid: int, members: Sequence[int]) -> None:
    """Deletes member ports from a group.

    mac: group MAC address
    vid: VLAN id, low 16 bits used
    members: user ports and aggregation interfaces
    status: User_mcast_port_remove()'s result; -1 without a driver call for a listed group outside 1..8
    """
    _del_igmpsn_member(mac, vid, members)


_set_vlan_igmp_pkt_action: Call[None] = Call(
    "adp_set_vlan_igmp_pkt_action",
    Status,
    Value("control", c_uint32),
    Value("value", c_uint32),
)


def set_vlan_igmp_pkt_action(control: int, value: int) -> None:
    """Sets a control of the handling of IGMP packets.

    control: SwitchControl, or another number of the driver
    value: its new value, see the control
    status: the driver's result
    """
    _set_vlan_igmp_pkt_action(control, value)


_get_vlan_igmp_pkt_action: Call[int] = Call(
    "adp_get_vlan_igmp_pkt_action",
    Status,
    Value("control", c_uint32),
    Out("value", c_uint32),
)


def get_vlan_igmp_pkt_action(control: int) -> int:
    """Reads a control of the handling of IGMP packets.

    control: SwitchControl, or another number of the driver
    value: written by the driver: see the control
    status: the driver's result
    """
    return _get_vlan_igmp_pkt_action(control)


_control_port_l2mc_enable: Call[None] = Call(
    "adp_control_port_l2mc_enable",
    Status,
    Value("intf", c_uint32),
    Value("enable", c_uint32),
)


def control_port_l2mc_enable(intf: int, enable: int) -> None:
    """Turns forwarding by L2 multicast entries on or off for a port.

    intf: user port; any other interface is passed on as physical port -1
    enable: 0 off, otherwise on
    status: the driver's result
    """
    _control_port_l2mc_enable(intf, enable)


_control_port_l2mc_get_status: Call[int] = Call(
    "adp_control_port_l2mc_get_status",
    Status,
    Value("intf", c_uint32),
    Out("enable", c_uint32),
)


def control_port_l2mc_get_status(intf: int) -> int:
    """Reads whether a port forwards by L2 multicast entries.

    intf: user port; any other interface is passed on as physical port -1
    enable: written by the driver: 0 off, otherwise on
    status: the driver's result
    """
    return _control_port_l2mc_get_status(intf)


_control_port_ipmc_get_status: Call[int] = Call(
    "adp_control_port_ipmc_get_status",
    Status,
    Value("intf", c_uint32),
    Out("enable", c_uint32),
)


def control_port_ipmc_get_status(intf: int) -> int:
    """Reads whether a port forwards by IPv4 multicast entries.

    intf: user port; any other interface is passed on as physical port -1
    enable: written by the driver: 0 off, otherwise on
    status: the driver's result
    """
    return _control_port_ipmc_get_status(intf)


_control_port_ipmc_set_enable: Call[None] = Call(
    "adp_control_port_ipmc_set_enable",
    Status,
    Value("intf", c_uint32),
    Value("enable", c_uint32),
)


def control_port_ipmc_set_enable(intf: int, enable: int) -> None:
    """Turns forwarding by IPv4 multicast entries on or off for a port.

    intf: user port; any other interface is passed on as physical port -1
    enable: 0 off, otherwise on
    status: the driver's result
    """
    _control_port_ipmc_set_enable(intf, enable)


_control_ipmc_set_disable: Call[None] = Call("adp_control_ipmc_set_disable", Status)


def control_ipmc_set_disable() -> None:
    """Turns IPv4 multicast forwarding off.

    status: the driver's result
    """
    _control_ipmc_set_disable()


_control_ipmc_set_enable: Call[None] = Call("adp_control_ipmc_set_enable", Status)


def control_ipmc_set_enable() -> None:
    """Turns IPv4 multicast forwarding on.

    status: the driver's result
    """
    _control_ipmc_set_enable()


_control_ip6mc_mode_enable: Call[None] = Call("adp_control_ip6mc_mode_enable", Status, Value("mode", c_uint32))


def control_ip6mc_mode_enable(mode: int) -> None:
    """Sets the IPv6 multicast forwarding mode.

    mode: passed through; on the virtual device 0 off, any other value on
    status: the driver's result
    """
    _control_ip6mc_mode_enable(mode)


_control_ipmc_lookup_miss_action: Call[None] = Call(
    "adp_control_ipmc_lookup_miss_action",
    Status,
    Value("action", c_uint32),
)


def control_ipmc_lookup_miss_action(action: int) -> None:
    """Sets what happens to IPv4 multicast frames of unknown groups, on every user port.

    action: McastMiss
    status: 0
    """
    _control_ipmc_lookup_miss_action(action)


_control_ip6mc_lookup_miss_action: Call[None] = Call(
    "adp_control_ip6mc_lookup_miss_action",
    Status,
    Value("action", c_uint32),
)


def control_ip6mc_lookup_miss_action(action: int) -> None:
    """Sets what happens to IPv6 multicast frames of unknown groups, on every user port.

    action: McastMiss
    status: 0
    """
    _control_ip6mc_lookup_miss_action(action)
