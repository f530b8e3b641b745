"""The calls of adp/l2.h.

This file is written by script/reference from the headers.
"""

from __future__ import annotations

from ctypes import c_int32, c_size_t, c_uint32

from ..call import Call, Status
from ..memory import FewPorts
from ..parameters import Out, Value
from ..ports import PortSet

__all__ = [
    "hal_set_port_isolate",
    "hal_get_port_isolate",
    "set_port_isolate",
    "get_port_isolatestatus",
    "switch_control_set",
    "switch_control_get",
    "selfmac_trap_tocpu",
    "hal_vlan_control_port_set",
    "hal_vlan_control_port_get",
]

_hal_set_port_isolate: Call[None] = Call(
    "hal_set_port_isolate",
    Status,
    Value("intf", c_uint32),
    Value("word0", c_uint32),
    Value("word1", c_uint32),
)


def hal_set_port_isolate(intf: int, word0: int, word1: int) -> None:
    """Sets the user ports that an interface may send to.

    intf: user port or aggregation interface
    word0: bit n for user port n
    word1: bit n for user port 32 + n
    status: 0; 102 at the first failure; 201 for another type, -1 for a group outside 1..8
    """
    _hal_set_port_isolate(intf, word0, word1)


_hal_get_port_isolate: Call[PortSet] = Call(
    "hal_get_port_isolate",
    Status,
    Value("intf", c_uint32),
    Out("bitmap", FewPorts),
)


def hal_get_port_isolate(intf: int) -> PortSet:
    """Reads the user ports that an interface may send to.

    intf: user port or aggregation interface
    bitmap: two words, bit n of word n / 32 for user port n; written even after a failure of the driver call, from a set
        cleared before it
    status: 0; 102 when the driver call failed; without writing 201 for another type; -1 with both words 0 for a group
        outside 1..8
    """
    return _hal_get_port_isolate(intf)


_set_port_isolate: Call[None] = Call(
    "adp_set_port_isolate",
    Status,
    Value("intf", c_uint32),
    Value("word0", c_uint32),
    Value("word1", c_uint32),
)


def set_port_isolate(intf: int, word0: int, word1: int) -> None:
    """The same as hal_set_port_isolate().

    intf: user port or aggregation interface
    word0: bit n for user port n
    word1: bit n for user port 32 + n
    status: as hal_set_port_isolate()
    """
    _set_port_isolate(intf, word0, word1)


_get_port_isolatestatus: Call[PortSet] = Call(
    "adp_get_port_isolatestatus",
    Status,
    Value("intf", c_uint32),
    Out("bitmap", FewPorts),
)


def get_port_isolatestatus(intf: int) -> PortSet:
    """The same as hal_get_port_isolate().

    intf: user port or aggregation interface
    bitmap: two words, bit n of word n / 32 for user port n
    status: as hal_get_port_isolate()
    """
    return _get_port_isolatestatus(intf)


_switch_control_set: Call[None] = Call(
    "adp_switch_control_set",
    Status,
    Value("control", c_uint32),
    Value("value", c_uint32),
)


def switch_control_set(control: int, value: int) -> None:
    """Writes a switch control.

    control: SwitchControl, or another number of the driver
    value: its new value, see the control
    status: 0; 102 when the driver call failed
    """
    _switch_control_set(control, value)


_switch_control_get: Call[int] = Call(
    "adp_switch_control_get",
    Status,
    Value("control", c_uint32),
    Out("value", c_uint32),
)


def switch_control_get(control: int) -> int:
    """Reads a switch control.

    control: SwitchControl, or another number of the driver
    value: written by the driver: see the control
    status: the driver's result
    """
    return _switch_control_get(control)


_selfmac_trap_tocpu: Call[None] = Call(
    "adp_selfmac_trap_tocpu",
    Status,
    Value("enable", c_uint32),
    Value("unused", c_uint32),
    Value("unused2", c_uint32),
    Value("option", c_size_t),
)


def selfmac_trap_tocpu(enable: int, unused: int, unused2: int, option: int) -> None:
    """Turns the trap that sends frames for the device's own MAC address to the CPU on or off.

    enable: passed through; 0 off, otherwise on
    unused: not used
    unused2: not used
    option: passed through; ignored by the virtual device
    status: the driver's result
    """
    _selfmac_trap_tocpu(enable, unused, unused2, option)


_hal_vlan_control_port_set: Call[None] = Call(
    "hal_vlan_control_port_set",
    Status,
    Value("intf", c_uint32),
    Value("control", c_uint32),
    Value("value", c_int32),
)


def hal_vlan_control_port_set(intf: int, control: int, value: int) -> None:
    """Writes a VLAN control of a user port.

    intf: user port
    control: the driver's control number; 0..31 on the virtual device
    value: its new value, passed through; any number on the virtual device
    status: 0; 102 when the driver call failed, and without one for an aggregation interface; 201 for another type
    """
    _hal_vlan_control_port_set(intf, control, value)


_hal_vlan_control_port_get: Call[int] = Call(
    "hal_vlan_control_port_get",
    Status,
    Value("intf", c_uint32),
    Value("control", c_uint32),
    Out("value", c_uint32),
)


def hal_vlan_control_port_get(intf: int, control: int) -> int:
    """Reads a VLAN control of a user port.

    intf: user port
    control: the driver's control number; 0..31 on the virtual device
    value: written by the driver; 0 at power-on on the virtual device
    status: 0; 102 when the driver call failed, and without one for an aggregation interface; 201 for another type
    """
    return _hal_vlan_control_port_get(intf, control)
