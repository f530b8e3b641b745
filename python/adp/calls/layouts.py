"""The structs of the headers as they are in C's memory.

This file is written by script/reference from the headers.
"""  # noqa: F401

from __future__ import annotations

import ctypes
from ctypes import c_int16, c_int32, c_size_t, c_uint8, c_uint16, c_uint32, c_uint64, c_void_p

from ..memory import Ports

class PortSet(ctypes.Structure):
    """adp_port_set_t"""

    _fields_ = [
        ("word", Ports),
    ]


class ListLink(ctypes.Structure):
    """adp_list_link_t"""

    _fields_ = [
        ("next", c_void_p),
        ("prev", c_void_p),
    ]


class AggRecord(ctypes.Structure):
    """adp_agg_record_t"""

    _fields_ = [
        ("count", c_int32),
        ("in_use", c_uint8),
        ("ports", c_uint8 * 11),
    ]


class L2Entry(ctypes.Structure):
    """adp_l2_entry_t"""

    _fields_ = [
        ("flags", c_uint32),
        ("mac", c_uint8 * 6),
        ("vid", c_uint16),
        ("port", c_int32),
        ("reserved16", c_int32),
        ("trunk", c_int32),
        ("reserved24", c_uint32 * 2),
        ("index", c_uint32),
        ("ports", Ports),
        ("reserved68", c_uint32 * 5),
    ]


class CableDiag(ctypes.Structure):
    """adp_cable_diag_t"""

    _fields_ = [
        ("state", c_uint32 * 4),
        ("length", c_uint32 * 4),
    ]


class AggEvent(ctypes.Structure):
    """adp_agg_event_t"""

    _fields_ = [
        ("word", c_uint32 * 24),
    ]


class FpInfo(ctypes.Structure):
    """FpInfo"""

    _fields_ = [
        ("submodule_type", c_int32),
        ("group", c_int32),
        ("entries", c_int32),
        ("meter_base", c_int32),
        ("meter_rate", c_int32),
        ("prio_base", c_int32),
    ]


class FpQualify(ctypes.Structure):
    """FpQualify"""

    _fields_ = [
        ("type", c_uint32),
        ("data", c_uint8 * 64),
        ("mask", c_uint8 * 64),
    ]


class FpAction(ctypes.Structure):
    """FpAction"""

    _fields_ = [
        ("type", c_uint32),
        ("param", c_uint8 * 256),
        ("param2", c_uint8 * 256),
    ]


class FpEntity(ctypes.Structure):
    """FpEntity"""

    _fields_ = [
        ("submodule_type", c_uint32),
        ("unit", c_uint32),
        ("entity_id", c_uint32),
        ("true_entry", c_uint32),
        ("priority", c_uint32),
        ("qualify_num", c_int32),
        ("action_num", c_int32),
        ("qualifies", FpQualify * 16),
        ("actions", FpAction * 8),
    ]


class FpListNode(ctypes.Structure):
    """FpListNode"""

    _fields_ = [
        ("link", ListLink),
        ("entity", FpEntity),
    ]


class FpPortBitmap(ctypes.Structure):
    """FpPortBitmap"""

    _fields_ = [
        ("word", c_uint32 * 2),
    ]


class RemarkRule(ctypes.Structure):
    """RemarkRule"""

    _fields_ = [
        ("rule_id", c_uint16),
        ("unused2", c_uint16),
        ("unused4", c_uint32),
        ("port_bitmap", c_uint32 * 2),
        ("remark_kind", c_uint8),
        ("unused17", c_uint8),
        ("remark_value", c_uint8),
        ("unused19", c_uint8),
        ("rule_form", c_uint8),
        ("match_field", c_uint8),
        ("unused22", c_uint8 * 2),
        ("match_value", c_uint8 * 8),
    ]


class TxFrame(ctypes.Structure):
    """adp_tx_frame_t"""

    _fields_ = [
        ("frame", c_void_p),
        ("length", c_uint32),
        ("source", c_uint32),
    ]


class TxDest(ctypes.Structure):
    """adp_tx_dest_t"""

    _fields_ = [
        ("link", ListLink),
        ("intf", c_uint32),
    ]


class RxFrame(ctypes.Structure):
    """adp_rx_frame_t"""

    _fields_ = [
        ("reserved1", c_uint32),
        ("reserved2", c_uint32),
        ("frame", c_void_p),
        ("length", c_uint32),
        ("ethernet_header", c_void_p),
        ("udp_header", c_void_p),
        ("ipv4_header", c_void_p),
        ("ipv6_header", c_void_p),
        ("vlan_tag", c_void_p),
        ("l4_header", c_void_p),
        ("intf", c_uint32),
        ("phy", c_int32),
    ]


class PortRow(ctypes.Structure):
    """adp_port_row_t"""

    _fields_ = [
        ("word1", c_uint32),
        ("word2", c_uint32),
        ("phy", c_uint32),
        ("attributes", c_uint32),
    ]


class LinkData(ctypes.Structure):
    """adp_link_data_t"""

    _fields_ = [
        ("unit", c_uint16),
        ("port", c_uint16),
        ("intf", c_uint16),
        ("status", c_uint16),
    ]


class Dot1pMapEntry(ctypes.Structure):
    """adp_dot1p_map_entry_t"""

    _fields_ = [
        ("queue", c_uint32),
        ("unused", c_uint32),
    ]


class DscpMapEntry(ctypes.Structure):
    """adp_dscp_map_entry_t"""

    _fields_ = [
        ("mapped", c_uint8),
        ("priority", c_uint8),
        ("unused", c_uint8),
    ]


class QueueWeights(ctypes.Structure):
    """adp_queue_weights_t"""

    _fields_ = [
        ("weight", c_uint32 * 8),
    ]


AggEventCb = ctypes.CFUNCTYPE(c_int32, ctypes.POINTER(AggEvent))


LinkEventCb = ctypes.CFUNCTYPE(c_int32, c_uint32, c_uint32, c_uint32)
