"""The calls of adp/pkt.h.

This file is written by script/reference from the headers.
"""

from __future__ import annotations

from collections.abc import Callable, Sequence
from ctypes import c_int32, c_uint16, c_uint32, c_uint8
from typing import NamedTuple

from ..call import Call, Status
from ..frames import DestinationsIn, FrameStart, RxFrame, RxFrameInOut, TxFrame, TxFrameIn
from ..parameters import Callback, Count, Counted, CountedInOut, In, InOut, Out, Text, Value
from . import layouts

__all__ = [
    "get_nic_index",
    "pkt_init",
    "dump_packet",
    "transmit_frame",
    "transmit_frame_record",
    "bcmtag_dest_port_intf_2_phy",
    "receive_frame",
    "receive_frame_record",
    "check_port_vlan_ability",
    "linkscan_register",
    "linkscan_handle_cb",
    "ReceiveFrameResult",
]

_get_nic_index: Call[int] = Call("get_nic_index", c_int32, Text("name"))


def get_nic_index(name: str) -> int:
    """Looks up the index of a network interface.

    name: interface name; at most 16 characters are used
    result: the index, or -1
    """
    return _get_nic_index(name)


_pkt_init: Call[int] = Call("adp_pkt_init", c_int32)


def pkt_init() -> int:
    """Opens the socket that __adp_transmit_frame() sends on: a raw packet socket, kept until the process ends.

    result: the descriptor; after a failure, which is printed on standard output, the number of characters printed: a
        positive number, so that only later __adp_transmit_frame() calls fail
    """
    return _pkt_init()


_dump_packet: Call[int] = Call(
    "adp_dump_packet",
    c_int32,
    Text("title"),
    Counted("data", c_uint8),
    Count("length", c_int32, "data"),
)


def dump_packet(title: str, data: bytes) -> int:
    """Prints a hex dump on standard error: 16 bytes a row, each row opened by its number.

    title: printed in front of the length
    data: bytes to print
    result: result of the last write
    """
    return _dump_packet(title, data)


_transmit_frame: Call[None] = Call(
    "adp_transmit_frame",
    Status,
    Counted("frame", c_uint8),
    Count("length", c_uint32, "frame", 0xFFFF),
    Value("unused", c_uint32),
    Value("intf", c_uint32),
    Value("opcode", c_uint32),
)


def transmit_frame(frame: bytes, unused: int, intf: int, opcode: int) -> None:
    """Sends one frame to one interface, through a socket of its own that is opened and closed for it.

    frame: the frame from its destination MAC address on, at least 12 bytes
    unused: not used
    intf: destination: the low 25 bits of its physical port fill the destination field, all ones for an interface that
        does not translate
    opcode: the switch tag's opcode, TagOpcode, low three bits used
    status: 0; -1 for a null frame, a length below 12, no management interface, no memory, no socket, or an incomplete
        send
    """
    _transmit_frame(frame, unused, intf, opcode)


_transmit_frame_record: Call[None] = Call(
    "__adp_transmit_frame",
    Status,
    TxFrameIn("desc", layouts.TxFrame),
    DestinationsIn("destinations", layouts.ListLink),
    Value("vid", c_uint32),
    Value("mode", c_uint32),
)


def transmit_frame_record(desc: TxFrame, destinations: Sequence[int] | None, vid: int, mode: int) -> None:
    """Sends one frame to the ports that the mode, the list and the VLAN choose, on the socket of adp_pkt_init().

    desc: the frame, at least 12 bytes, its length and its source interface
    destinations: head of the list of adp_tx_dest_t nodes, or null
    vid: VLAN id, or ADP_NO_VLAN
    mode: TxMode, low 16 bits used
    status: 0; -1 for a null frame or one shorter than 12 bytes, a mode of 5 or more, any of the cases above, no memory,
        no socket, or an incomplete send
    """
    _transmit_frame_record(desc, destinations, vid, mode)


_bcmtag_dest_port_intf_2_phy: Call[bytes] = Call("adp_bcmtag_dest_port_intf_2_phy", None, InOut("tag", c_uint8 * 8))


def bcmtag_dest_port_intf_2_phy(tag: bytes | None = None) -> bytes:
    """Rewrites the destination of a switch tag from interface numbers to physical ports, in place.

    tag: words 1 and 2 of the switch tag, eight bytes
    """
    return _bcmtag_dest_port_intf_2_phy(tag)


class ReceiveFrameResult(NamedTuple):
    """What receive_frame() gives."""

    frame: bytes
    out_frame: int | None
    out_length: int
    out_flag: int
    out_intf: int


_receive_frame: Call[ReceiveFrameResult] = Call(
    "adp_receive_frame",
    Status,
    CountedInOut("frame", c_uint8),
    FrameStart("out_frame", "frame"),
    Count("length", c_uint32, "frame", 0xFFFF),
    Out("out_length", c_uint16),
    Out("out_flag", c_uint8),
    Out("out_intf", c_uint32),
    several=ReceiveFrameResult,
)


def receive_frame(frame: bytes) -> ReceiveFrameResult:
    """Finds the ingress interface of a received frame and strips its switch tag in place.

    frame: the frame as received; the bytes after the tag are moved over it
    out_frame: the frame start
    out_length: its length in bytes, six less
    out_flag: 0
    out_intf: user port of the ingress port, 0 for the CPU port's row; all ones for a port without a map row
    status: 0; -1 for a null frame or one shorter than 18 bytes, with nothing changed
    """
    return _receive_frame(frame)


_receive_frame_record: Call[RxFrame] = Call(
    "__adp_receive_frame",
    Status,
    RxFrameInOut("desc", layouts.RxFrame),
    Value("check_vlan", c_int32),
)


def receive_frame_record(desc: RxFrame, check_vlan: int) -> RxFrame:
    """Finds the ingress interface of a received frame, checks its VLAN on request, strips its switch tag in place and
    finds its VLAN tag and headers.

    desc: see adp_rx_frame_t
    check_vlan: 1: vlan_tag must point to the frame's 802.1Q tag, and the ingress interface must be a member of its
        VLAN, see check_port_vlan_ability(); any other value: no check
    status: 0; -1 for a frame shorter than 18 bytes (nothing written), a failed check, an untagged or too deeply tagged
        frame, or one that ends before a byte that has to be read (what was written until then stays)
    """
    return _receive_frame_record(desc, check_vlan)


_check_port_vlan_ability: Call[None] = Call(
    "check_port_vlan_ability",
    Status,
    Value("intf", c_uint32),
    Value("vid", c_int32),
)


def check_port_vlan_ability(intf: int, vid: int) -> None:
    """Checks whether an interface is a member of a VLAN.

    intf: user port or aggregation interface
    vid: VLAN id, passed on uncut
    status: 0 when it is a member; -1 when it is not, when the record cannot be fetched, and for an interface of another
        type
    """
    _check_port_vlan_ability(intf, vid)


_linkscan_register: Call[None] = Call("adp_linkscan_register", Status, Callback("handler", layouts.LinkEventCb))


def linkscan_register(handler: Callable[[int, int, int], int | None] | None) -> None:
    """Stores the receiver of link changes in link_event_handle.

    handler: called by linkscan_handle_cb(), null for none
    status: 0
    """
    _linkscan_register(handler)


_linkscan_handle_cb: Call[int] = Call(
    "linkscan_handle_cb",
    c_int32,
    Value("unit", c_uint32),
    Value("port", c_uint32),
    In("info", c_uint32 * 4),
)


def linkscan_handle_cb(unit: int, port: int, info: Sequence[int]) -> int:
    """The callback for the driver's link scan: forwards a change to link_event_handle.

    unit: passed through; 0 on the virtual device
    port: physical port, passed through
    info: the driver's port-information record; its fourth word is the link status, 0 down, 1 up on the virtual device
    result: the receiver's result; 0 when none is registered
    """
    return _linkscan_handle_cb(unit, port, info)
