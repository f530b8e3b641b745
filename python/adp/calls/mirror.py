"""The calls of adp/mirror.h.

This file is written by script/reference from the headers.
"""

from __future__ import annotations

from ctypes import c_size_t, c_uint32

from ..call import Call, Status
from ..parameters import Value

__all__ = [
    "add_port_mirror",
    "del_port_mirror",
    "set_flow_mirror",
    "set_mirror_disable",
    "check_set_mirror_disable",
]

_add_port_mirror: Call[None] = Call(
    "adp_add_port_mirror",
    Status,
    Value("source", c_uint32),
    Value("destination", c_uint32),
    Value("directions", c_uint32),
    Value("session", c_uint32),
)


def add_port_mirror(source: int, destination: int, directions: int, session: int) -> None:
    """Copies a port's frames to another port.

    source: user port whose frames are copied
    destination: user port that sends the copies
    directions: ADP_MIRROR_... flags; other bits are ignored
    session: mirror session, from 1; 1..4 on the virtual device
    status: the driver's result; 0 without a driver call when there is no direction flag
    """
    _add_port_mirror(source, destination, directions, session)


_del_port_mirror: Call[None] = Call(
    "adp_del_port_mirror",
    Status,
    Value("source", c_uint32),
    Value("destination", c_uint32),
    Value("unused", c_uint32),
    Value("session", c_uint32),
)


def del_port_mirror(source: int, destination: int, unused: int, session: int) -> None:
    """Stops copying a port's frames.

    source: user port whose frames are copied
    destination: user port that sends the copies
    unused: not used
    session: mirror session, from 1; 1..4 on the virtual device
    status: the driver's result
    """
    _del_port_mirror(source, destination, unused, session)


_set_flow_mirror: Call[None] = Call("adp_set_flow_mirror", Status, Value("intf", c_uint32), Value("session", c_uint32))


def set_flow_mirror(intf: int, session: int) -> None:
    """Sets the port to which a session copies the frames that field-processor rules select.

    intf: user port that sends the copies
    session: mirror session, from 1; 1..4 on the virtual device
    status: the driver's result
    """
    _set_flow_mirror(intf, session)


_set_mirror_disable: Call[None] = Call(
    "adp_set_mirror_disable",
    Status,
    Value("session", c_uint32),
    Value("unused2", c_uint32),
    Value("unused3", c_uint32),
    Value("disable", c_size_t),
)


def set_mirror_disable(session: int, unused2: int, unused3: int, disable: int) -> None:
    """Disables or enables a session.

    session: mirror session, from 1; 1..4 on the virtual device
    unused2: not used
    unused3: not used
    disable: passed through; on the virtual device 0 enables, any other value disables
    status: the driver's result
    """
    _set_mirror_disable(session, unused2, unused3, disable)


_check_set_mirror_disable: Call[None] = Call(
    "adp_check_set_mirror_disable",
    Status,
    Value("session", c_uint32),
    Value("unused2", c_uint32),
    Value("unused3", c_uint32),
    Value("disable", c_size_t),
)


def check_set_mirror_disable(session: int, unused2: int, unused3: int, disable: int) -> None:
    """Asks whether adp_set_mirror_disable() with the same arguments would succeed.

    session: mirror session, from 1; 1..4 on the virtual device
    unused2: not used
    unused3: not used
    disable: passed through; on the virtual device 0 enables, any other value disables
    status: the driver's result
    """
    _check_set_mirror_disable(session, unused2, unused3, disable)
