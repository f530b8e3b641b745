"""The structs of the headers as dataclasses.

This file is written by script/reference from the headers.
"""

from __future__ import annotations

import ctypes
from dataclasses import dataclass, field
from typing import ClassVar

from ..memory import RECORDS, Record
from ..ports import PortSet
from . import layouts

__all__ = [
    "AggRecord",
    "L2Entry",
    "CableDiag",
    "AggEvent",
    "FpInfo",
    "FpQualify",
    "FpAction",
    "FpEntity",
    "FpListNode",
    "FpPortBitmap",
    "RemarkRule",
    "PortRow",
    "LinkData",
    "Dot1pMapEntry",
    "DscpMapEntry",
    "QueueWeights",
]

@dataclass
class AggRecord(Record):
    """One group's record: the trunk record that the driver takes by value, and the rows of agg_info. 16 bytes."""

    LAYOUT: ClassVar[type[ctypes.Structure]] = layouts.AggRecord

    count: int = 0
    """number of valid member port bytes"""
    in_use: int = 0
    """1 after creation; nothing reads it back"""
    ports: bytes = bytes(11)
    """physical port numbers in the order in which members joined"""


@dataclass
class L2Entry(Record):
    """The driver's L2 (MAC address) table entry, 88 bytes, passed by value on an add."""

    LAYOUT: ClassVar[type[ctypes.Structure]] = layouts.L2Entry

    flags: int = 0
    """0x8 static, 0x1 to a trunk (on add); 0x80 to a trunk (on look-up)"""
    mac: bytes = bytes(6)
    """MAC address, network order"""
    vid: int = 0
    """VLAN id, IEEE 802.1Q"""
    port: int = 0
    """physical port"""
    reserved16: int = 0
    """0 on add"""
    trunk: int = 0
    """trunk id, valid when the entry points at a trunk"""
    reserved24: list[int] = field(default_factory=lambda: [0] * 2)
    """0 on add"""
    index: int = 0
    """L2 table index, from look-ups"""
    ports: PortSet = PortSet()
    """multicast entries: physical ports"""
    reserved68: list[int] = field(default_factory=lambda: [0] * 5)
    """0 on add"""


@dataclass
class CableDiag(Record):
    """The driver's result of a cable diagnosis, an element for each wire pair. 32 bytes."""

    LAYOUT: ClassVar[type[ctypes.Structure]] = layouts.CableDiag

    state: list[int] = field(default_factory=lambda: [0] * 4)
    """the pair's condition, enum adp_cable_pair"""
    length: list[int] = field(default_factory=lambda: [0] * 4)
    """length up to the far end or the fault, in metres"""


@dataclass
class AggEvent(Record):
    """Aggregation event: all words are 0 but word 16 + trunk id, which holds the aggregation interface."""

    LAYOUT: ClassVar[type[ctypes.Structure]] = layouts.AggEvent

    word: list[int] = field(default_factory=lambda: [0] * 24)
    """all words of the event"""


@dataclass
class FpInfo(Record):
    """A submodule: which slice of the field processor a feature owns. 24 bytes."""

    LAYOUT: ClassVar[type[ctypes.Structure]] = layouts.FpInfo

    submodule_type: int = 0
    """the row's key"""
    group: int = 0
    """field group 1..9, 0 for none"""
    entries: int = 0
    """number of entities meant for it; nothing checks it"""
    meter_base: int = 0
    """added to the meter index of a meter action, -1 without meters"""
    meter_rate: int = 0
    """rate of a meter action that gives 0, -1 without meters"""
    prio_base: int = 0
    """its place in the group: added to entity numbers and priorities"""


@dataclass
class FpQualify(Record):
    """One condition of a rule."""

    LAYOUT: ClassVar[type[ctypes.Structure]] = layouts.FpQualify

    type: int = 0
    """enum adp_fp_qualifier"""
    data: bytes = bytes(64)
    """what is matched"""
    mask: bytes = bytes(64)
    """the bits that count"""


@dataclass
class FpAction(Record):
    """One action of a rule."""

    LAYOUT: ClassVar[type[ctypes.Structure]] = layouts.FpAction

    type: int = 0
    """enum adp_fp_action, or another code of the driver"""
    param: bytes = bytes(256)
    """a scalar is its first 32-bit word in host byte order"""
    param2: bytes = bytes(256)
    """likewise"""


@dataclass
class FpEntity(Record):
    """A rule record. The caller clears the whole record before filling it."""

    LAYOUT: ClassVar[type[ctypes.Structure]] = layouts.FpEntity

    submodule_type: int = 0
    """key into g_stFpInfo"""
    unit: int = 0
    """unit of the driver calls of installation, 0"""
    entity_id: int = 0
    """number inside the submodule"""
    true_entry: int = 0
    """hardware entry number; filled in by installation"""
    priority: int = 0
    """added to the submodule's prio_base"""
    qualify_num: int = 0
    """used qualifiers"""
    action_num: int = 0
    """used actions"""
    qualifies: list[FpQualify] = field(default_factory=lambda: [FpQualify() for _ in range(16)])
    """the first qualify_num are used"""
    actions: list[FpAction] = field(default_factory=lambda: [FpAction() for _ in range(8)])
    """the first action_num are used"""


@dataclass
class FpListNode(Record):
    """An installed rule in acl_fp_list_head: its link and its record as installed."""

    LAYOUT: ClassVar[type[ctypes.Structure]] = layouts.FpListNode

    entity: FpEntity = field(default_factory=FpEntity)
    """the rule, with its hardware entry number"""


@dataclass
class FpPortBitmap(Record):
    """A bitmap of interfaces 0..63, passed by value: bit n of word n / 32 stands for interface n."""

    LAYOUT: ClassVar[type[ctypes.Structure]] = layouts.FpPortBitmap

    word: list[int] = field(default_factory=lambda: [0] * 2)
    """bit n of word n / 32 for interface n"""


@dataclass
class RemarkRule(Record):
    """A request for a remark rule, 32 bytes."""

    LAYOUT: ClassVar[type[ctypes.Structure]] = layouts.RemarkRule

    rule_id: int = 0
    """entity number and priority of the rule"""
    unused2: int = 0
    """not read"""
    unused4: int = 0
    """not read"""
    port_bitmap: list[int] = field(default_factory=lambda: [0] * 2)
    """a 64-bit number, the more significant word first: bit k stands for interface k + 1"""
    remark_kind: int = 0
    """enum adp_remark_kind"""
    unused17: int = 0
    """not read"""
    remark_value: int = 0
    """the value that matching packets get"""
    unused19: int = 0
    """not read"""
    rule_form: int = 0
    """enum adp_remark_form"""
    match_field: int = 0
    """enum adp_remark_field, read in form 1"""
    unused22: bytes = bytes(2)
    """not read"""
    match_value: bytes = bytes(8)
    """6 bytes of a MAC address, or the bytes of one 32-bit word in host byte order"""


@dataclass
class PortRow(Record):
    """A row of the port map, 16 bytes. Row 0 belongs to the CPU port."""

    LAYOUT: ClassVar[type[ctypes.Structure]] = layouts.PortRow

    word1: int = 0
    """first caller word: stored, never read by the library"""
    word2: int = 0
    """second caller word: stored, never read by the library"""
    phy: int = 0
    """physical port number of the chip port behind this row"""
    attributes: int = 0
    """caller-defined, returned unchanged by adp_intf_port_attributes()"""


@dataclass
class LinkData(Record):
    """An interface's last link change as adp_link_event_fast_send_unicast_msg() recorded it, each number cut to 16
    bits.
    """

    LAYOUT: ClassVar[type[ctypes.Structure]] = layouts.LinkData

    unit: int = 0
    """unit of the driver"""
    port: int = 0
    """physical port"""
    intf: int = 0
    """interface number"""
    status: int = 0
    """link status"""


@dataclass
class Dot1pMapEntry(Record):
    """A row of an 802.1p map, by priority."""

    LAYOUT: ClassVar[type[ctypes.Structure]] = layouts.Dot1pMapEntry

    queue: int = 0
    """queue of the priority"""
    unused: int = 0
    """not read, not written"""


@dataclass
class DscpMapEntry(Record):
    """A row of a DSCP map, by DSCP."""

    LAYOUT: ClassVar[type[ctypes.Structure]] = layouts.DscpMapEntry

    mapped: int = 0
    """DSCP that the frame leaves with"""
    priority: int = 0
    """priority 0..7"""
    unused: int = 0
    """not read, not written"""


@dataclass
class QueueWeights(Record):
    """A weight for each queue, from queue 0 on. Passed by value."""

    LAYOUT: ClassVar[type[ctypes.Structure]] = layouts.QueueWeights

    weight: list[int] = field(default_factory=lambda: [0] * 8)
    """0..127 on the virtual device"""


for each in (AggRecord, L2Entry, CableDiag, AggEvent, FpInfo, FpQualify, FpAction, FpEntity, FpListNode, FpPortBitmap, RemarkRule, PortRow, LinkData, Dot1pMapEntry, DscpMapEntry, QueueWeights):
    RECORDS[each.LAYOUT] = each  # type: ignore[attr-defined]  # as all records
