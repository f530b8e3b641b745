"""The calls of adp/qos.h.

This file is written by script/reference from the headers.
"""

from __future__ import annotations

from ctypes import c_uint32
from typing import NamedTuple

from ..call import Call, Status
from ..parameters import Out, Value
from . import layouts, records

__all__ = [
    "qos_init",
    "set_port_queue_sch_mode",
    "set_queue_weight_pri",
    "cosq_sched_set",
    "cosq_sched_get",
    "set_port_egress_shaper",
    "get_port_egress_shaper",
    "set_queue_drop_method",
    "set_queue_wred_drop_probability",
    "set_queue_shaper",
    "get_queue_shaper",
    "GetPortEgressShaperResult",
]

_qos_init: Call[None] = Call("adp_qos_init", Status)


def qos_init() -> None:
    """Initialises quality of service, once: eight queues and the driver's defaults.

    status: 0; 102 when the first one failed
    """
    _qos_init()


_set_port_queue_sch_mode: Call[None] = Call(
    "adp_set_port_queue_sch_mode",
    Status,
    Value("intf", c_uint32),
    Value("mode", c_uint32),
)


def set_port_queue_sch_mode(intf: int, mode: int) -> None:
    """Sets a user port's scheduling mode.

    intf: user port
    mode: SchedulingMode; 3 is refused
    status: 501 for mode 3, whatever the interface; 0; 102 when the driver call failed, and without one for an
        aggregation interface; 201 for another type
    """
    _set_port_queue_sch_mode(intf, mode)


_set_queue_weight_pri: Call[None] = Call(
    "adp_set_queue_weight_pri",
    Status,
    Value("intf", c_uint32),
    Value("queue", c_uint32),
    Value("is_mapping", c_uint32),
    Value("weights", layouts.QueueWeights),
)


def set_queue_weight_pri(intf: int, queue: int, is_mapping: int, weights: records.QueueWeights) -> None:
    """Maps a priority to a queue on a user port, or writes the port's queue weights.

    intf: user port
    queue: queue of a mapping, 0..7; otherwise not used
    is_mapping: low byte used: 0 writes the weights, otherwise the call maps a priority
    weights: a weight for each queue; of a mapping the first one is the priority
    status: 0; 102 when a driver call failed (nothing is written after a failed read), and without one for an
        aggregation interface; 201 for another type
    """
    _set_queue_weight_pri(intf, queue, is_mapping, weights)


_cosq_sched_set: Call[None] = Call(
    "adp_cosq_sched_set",
    Status,
    Value("port", c_uint32),
    Value("queue", c_uint32),
    Value("weight", c_uint32),
    Value("flags", c_uint32),
)


def cosq_sched_set(port: int, queue: int, weight: int, flags: int) -> None:
    """Sets the weight of a port's queue.

    port: passed through; the physical port on the virtual device
    queue: passed through; 0..7 on the virtual device
    weight: passed through; 0..127 on the virtual device
    flags: passed through; ignored by the virtual device
    status: 0
    """
    _cosq_sched_set(port, queue, weight, flags)


_cosq_sched_get: Call[int] = Call(
    "adp_cosq_sched_get",
    Status,
    Value("port", c_uint32),
    Value("queue", c_uint32),
    Out("weight", c_uint32),
    Value("flags", c_uint32),
)


def cosq_sched_get(port: int, queue: int, flags: int) -> int:
    """Reads the weight of a port's queue.

    port: passed through; the physical port on the virtual device
    queue: passed through; 0..7 on the virtual device
    weight: set to 0, then written by the driver; 0..127 on the virtual device
    flags: passed through; ignored by the virtual device
    status: 0
    """
    return _cosq_sched_get(port, queue, flags)


_set_port_egress_shaper: Call[None] = Call(
    "adp_set_port_egress_shaper",
    Status,
    Value("intf", c_uint32),
    Value("rate", c_uint32),
    Value("burst", c_uint32),
)


def set_port_egress_shaper(intf: int, rate: int, burst: int) -> None:
    """Shapes what a user port sends.

    intf: user port
    rate: in the driver's unit; kilobits per second on the virtual device, where 0 is no limit
    burst: in the driver's unit; kilobits on the virtual device, which chooses for 0
    status: 0; 102 when the driver call failed, and without one for an aggregation interface; 201 for another type
    """
    _set_port_egress_shaper(intf, rate, burst)


class GetPortEgressShaperResult(NamedTuple):
    """What get_port_egress_shaper() gives."""

    rate: int
    burst: int


_get_port_egress_shaper: Call[GetPortEgressShaperResult] = Call(
    "adp_get_port_egress_shaper",
    Status,
    Value("intf", c_uint32),
    Out("rate", c_uint32),
    Out("burst", c_uint32),
    several=GetPortEgressShaperResult,
)


def get_port_egress_shaper(intf: int) -> GetPortEgressShaperResult:
    """Reads a user port's shaper.

    intf: user port
    rate: written by the driver, in its unit; kilobits per second on the virtual device, where 0 is no limit
    burst: written by the driver, in its unit; kilobits on the virtual device
    status: 0; 102 when the driver call failed, and without one for an aggregation interface; 201 for another type
    """
    return _get_port_egress_shaper(intf)


_set_queue_drop_method: Call[None] = Call("adp_set_queue_drop_method", Status)


def set_queue_drop_method() -> None:
    """Does nothing: the library does not set the queues' drop method.

    status: 0
    """
    _set_queue_drop_method()


_set_queue_wred_drop_probability: Call[None] = Call("adp_set_queue_wred_drop_probability", Status)


def set_queue_wred_drop_probability() -> None:
    """Does nothing: the library does not set the queues' WRED drop probability.

    status: 0
    """
    _set_queue_wred_drop_probability()


_set_queue_shaper: Call[None] = Call("adp_set_queue_shaper", Status)


def set_queue_shaper() -> None:
    """Does nothing: the library does not shape single queues.

    status: 0
    """
    _set_queue_shaper()


_get_queue_shaper: Call[None] = Call("adp_get_queue_shaper", Status)


def get_queue_shaper() -> None:
    """Does nothing: the library does not shape single queues.

    status: 0
    """
    _get_queue_shaper()
