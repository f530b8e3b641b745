"""The calls of adp/storm.h.

This file is written by script/reference from the headers.
"""

from __future__ import annotations

from ctypes import c_uint32
from typing import NamedTuple

from ..call import Call, Status
from ..parameters import Out, Value

__all__ = [
    "set_storm_control",
    "get_storm_control",
    "set_storm_seltype",
    "get_storm_seltype",
    "set_stormcontrol_enable",
    "get_storm_exceed_flag",
    "reset_storm_exceed_flag",
    "set_storm_counting_mode",
    "get_storm_counting_mode",
    "set_ingress_limit",
    "get_ingress_limit",
    "GetStormControlResult",
    "GetIngressLimitResult",
]

_set_storm_control: Call[None] = Call(
    "adp_set_storm_control",
    Status,
    Value("dev_id", c_uint32),
    Value("intf", c_uint32),
    Value("storm_code", c_uint32),
    Value("rate", c_uint32),
    Value("burst", c_uint32),
)


def set_storm_control(dev_id: int, intf: int, storm_code: int, rate: int, burst: int) -> None:
    """Limits an interface's frames of a storm type.

    dev_id: 1 for nothing
    intf: user port or aggregation interface
    storm_code: StormCode, low byte used
    rate: in the driver's unit; 0 is no limit on the virtual device
    burst: in the driver's unit; 0 lets the virtual device choose
    status: 0; 102 at the first failure; 201 for another type, -1 for a group outside 1..8
    """
    _set_storm_control(dev_id, intf, storm_code, rate, burst)


class GetStormControlResult(NamedTuple):
    """What get_storm_control() gives."""

    rate: int
    burst: int


_get_storm_control: Call[GetStormControlResult] = Call(
    "adp_get_storm_control",
    Status,
    Value("dev_id", c_uint32),
    Value("intf", c_uint32),
    Value("storm_code", c_uint32),
    Out("rate", c_uint32),
    Out("burst", c_uint32),
    several=GetStormControlResult,
)


def get_storm_control(dev_id: int, intf: int, storm_code: int) -> GetStormControlResult:
    """Reads an interface's limit of a storm type.

    dev_id: 1 for nothing
    intf: user port or aggregation interface
    storm_code: StormCode, low byte used
    rate: written by the driver, in the driver's unit; 0 is no limit on the virtual device
    burst: written by the driver, in the driver's unit
    status: 0; 102 when the driver call failed; 201 for another type, -1 for a group outside 1..8
    """
    return _get_storm_control(dev_id, intf, storm_code)


_set_storm_seltype: Call[None] = Call(
    "adp_set_storm_seltype",
    Status,
    Value("dev_id", c_uint32),
    Value("intf", c_uint32),
    Value("storm_code", c_uint32),
    Value("selected", c_uint32),
)


def set_storm_seltype(dev_id: int, intf: int, storm_code: int, selected: int) -> None:
    """Selects whether a user port's limit counts frames of a storm type.

    dev_id: 1 for nothing
    intf: user port
    storm_code: StormCode, low byte used
    selected: passed through; on the virtual device 1 counted, 0 not
    status: 0; 102 when the driver call failed, and without one for an aggregation interface; 201 for another type
    """
    _set_storm_seltype(dev_id, intf, storm_code, selected)


_get_storm_seltype: Call[int] = Call(
    "adp_get_storm_seltype",
    Status,
    Value("dev_id", c_uint32),
    Value("intf", c_uint32),
    Value("storm_code", c_uint32),
    Out("selected", c_uint32),
)


def get_storm_seltype(dev_id: int, intf: int, storm_code: int) -> int:
    """Reads whether a user port's limit counts frames of a storm type.

    dev_id: 1 for nothing
    intf: user port
    storm_code: StormCode, low byte used
    selected: written by the driver; on the virtual device 1 counted, 0 not
    status: 0; 102 when the driver call failed, and without one for an aggregation interface; 201 for another type
    """
    return _get_storm_seltype(dev_id, intf, storm_code)


_set_stormcontrol_enable: Call[None] = Call(
    "adp_set_stormcontrol_enable",
    Status,
    Value("dev_id", c_uint32),
    Value("intf", c_uint32),
    Value("storm_code", c_uint32),
    Value("enable", c_uint32),
)


def set_stormcontrol_enable(dev_id: int, intf: int, storm_code: int, enable: int) -> None:
    """Turns a user port's storm control of a type on or off.

    dev_id: 1 for nothing
    intf: user port
    storm_code: StormCode, low byte used
    enable: 0 off, otherwise on
    status: 0; 102 when the driver call failed, and without one for an aggregation interface; 201 for another type
    """
    _set_stormcontrol_enable(dev_id, intf, storm_code, enable)


_get_storm_exceed_flag: Call[int] = Call(
    "adp_get_storm_exceed_flag",
    Status,
    Value("dev_id", c_uint32),
    Value("intf", c_uint32),
    Value("storm_code", c_uint32),
    Out("flag", c_uint32),
)


def get_storm_exceed_flag(dev_id: int, intf: int, storm_code: int) -> int:
    """Reads whether a user port's limit was exceeded.

    dev_id: 1 for nothing
    intf: user port
    storm_code: StormCode, low byte used
    flag: written by the driver; 1 exceeded on the virtual device
    status: 0; 102 when the driver call failed, and without one for an aggregation interface; 201 for another type
    """
    return _get_storm_exceed_flag(dev_id, intf, storm_code)


_reset_storm_exceed_flag: Call[None] = Call(
    "adp_reset_storm_exceed_flag",
    Status,
    Value("dev_id", c_uint32),
    Value("intf", c_uint32),
)


def reset_storm_exceed_flag(dev_id: int, intf: int) -> None:
    """Clears an interface's exceeded flags.

    dev_id: 1 for nothing
    intf: user port or aggregation interface
    status: 0; 102 at the first failure; 201 for another type, -1 for a group outside 1..8
    """
    _reset_storm_exceed_flag(dev_id, intf)


_set_storm_counting_mode: Call[None] = Call(
    "adp_set_storm_counting_mode",
    Status,
    Value("dev_id", c_uint32),
    Value("storm_code", c_uint32),
    Value("unused", c_uint32),
    Value("mode", c_uint32),
)


def set_storm_counting_mode(dev_id: int, storm_code: int, unused: int, mode: int) -> None:
    """Sets how storm limits count, for all ports.

    dev_id: 1 for nothing
    storm_code: passed through, low byte used; StormCode, or 0 for all types on the virtual device
    unused: not used
    mode: passed through; StormCounting
    status: 0; 102 when the driver call failed
    """
    _set_storm_counting_mode(dev_id, storm_code, unused, mode)


_get_storm_counting_mode: Call[int] = Call(
    "adp_get_storm_counting_mode",
    Status,
    Value("dev_id", c_uint32),
    Value("storm_code", c_uint32),
    Value("unused", c_uint32),
    Out("mode", c_uint32),
)


def get_storm_counting_mode(dev_id: int, storm_code: int, unused: int) -> int:
    """Reads how storm limits count.

    dev_id: 1 for nothing
    storm_code: passed through whole; StormCode, or 0 for all types on the virtual device
    unused: not used
    mode: written by the driver, StormCounting
    status: 0; 102 when the driver call failed
    """
    return _get_storm_counting_mode(dev_id, storm_code, unused)


_set_ingress_limit: Call[None] = Call(
    "adp_set_ingress_limit",
    Status,
    Value("dev_id", c_uint32),
    Value("intf", c_uint32),
    Value("rate", c_uint32),
    Value("burst", c_uint32),
)


def set_ingress_limit(dev_id: int, intf: int, rate: int, burst: int) -> None:
    """Limits what a user port receives.

    dev_id: 1 for nothing
    intf: user port
    rate: in the driver's unit; kilobits per second on the virtual device, where 0 is no limit
    burst: in the driver's unit; kilobits on the virtual device, which chooses for 0
    status: 0; 102 when the driver call failed, and without one for an aggregation interface; 201 for another type
    """
    _set_ingress_limit(dev_id, intf, rate, burst)


class GetIngressLimitResult(NamedTuple):
    """What get_ingress_limit() gives."""

    rate: int
    burst: int


_get_ingress_limit: Call[GetIngressLimitResult] = Call(
    "adp_get_ingress_limit",
    Status,
    Value("dev_id", c_uint32),
    Value("intf", c_uint32),
    Out("rate", c_uint32),
    Out("burst", c_uint32),
    several=GetIngressLimitResult,
)


def get_ingress_limit(dev_id: int, intf: int) -> GetIngressLimitResult:
    """Reads a user port's ingress limit.

    dev_id: 1 for nothing
    intf: user port
    rate: written by the driver, in its unit; kilobits per second on the virtual device, where 0 is no limit
    burst: written by the driver, in its unit; kilobits on the virtual device
    status: 0; 102 when the driver call failed, and without one for an aggregation interface; 201 for another type
    """
    return _get_ingress_limit(dev_id, intf)
