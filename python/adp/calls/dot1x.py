"""The calls of adp/dot1x.h.

This file is written by script/reference from the headers.
"""

from __future__ import annotations

from ctypes import c_int32, c_uint32, c_uint8

from ..call import Call, Status
from ..parameters import In, Value

__all__ = [
    "set_port_dot1x_mode",
    "set_port_dot1x_authorized_state",
    "set_mac_dot1x_authorized_state",
]

_set_port_dot1x_mode: Call[None] = Call(
    "adp_set_port_dot1x_mode",
    Status,
    Value("intf", c_int32),
    Value("mode", c_uint32),
    Value("unused", c_uint32),
    Value("learn", c_uint32),
)


def set_port_dot1x_mode(intf: int, mode: int, unused: int, learn: int) -> None:
    """Sets a port's mode.

    intf: user port or aggregation interface
    mode: Dot1xMode, low byte used
    unused: not used
    learn: in mode 1 non-zero for learning mode 8, 0 for 5
    status: 0; 401 when the learning mode could not be set, and nothing is flushed; 402 when the flush failed: the new
        learning mode stays; 403 for another mode, with nothing changed
    """
    _set_port_dot1x_mode(intf, mode, unused, learn)


_set_port_dot1x_authorized_state: Call[None] = Call(
    "adp_set_port_dot1x_authorized_state",
    Status,
    Value("intf", c_int32),
    Value("state", c_uint32),
    Value("learn", c_uint32),
)


def set_port_dot1x_authorized_state(intf: int, state: int, learn: int) -> None:
    """Authorises a port (mode 1) or withdraws its authorisation (mode 0).

    intf: user port or aggregation interface
    state: 1 in the low byte for authorised
    learn: for an authorised port non-zero for learning mode 8, 0 for 5
    status: as adp_set_port_dot1x_mode()
    """
    _set_port_dot1x_authorized_state(intf, state, learn)


_set_mac_dot1x_authorized_state: Call[None] = Call(
    "adp_set_mac_dot1x_authorized_state",
    Status,
    Value("intf", c_uint32),
    Value("vid", c_uint32),
    In("mac", c_uint8 * 6),
    Value("authorised", c_uint32),
)


def set_mac_dot1x_authorized_state(intf: int, vid: int, mac: bytes, authorised: int) -> None:
    """Authorises a MAC address on a port, or withdraws its authorisation.

    intf: user port
    vid: VLAN id, low 16 bits used
    mac: MAC address
    authorised: 0 in the low byte withdraws the authorisation
    status: 0; 403 with nothing changed when the address has no text form; 405 when the static entry could not be added:
        the address is then deleted
    """
    _set_mac_dot1x_authorized_state(intf, vid, mac, authorised)
