"""The exported tables.

This file is written by script/reference from the headers.
"""

from __future__ import annotations

from ctypes import c_int16, c_uint32

from ..memory import FewPorts
from ..ports import PortSet
from ..tables import Handler, LinkedList, PortTable, Table, Variable
from . import layouts, records

__all__ = [
    "agg_info",
    "agg_standby_members",
    "agg_manage_intf",
    "agg_event_handle",
    "g_stFpInfo",
    "acl_fp_list_head",
    "link_event_handle",
    "max_phy_port_num",
    "intf_to_phy_port",
    "intf_map_trunk",
    "ONU_ERR_CODE",
    "sntp_cfg",
    "g_intf_link_data",
    "aiVlanStg",
]

agg_info = Table[records.AggRecord]("agg_info", layouts.AggRecord, 8)
"""The groups' records, indexed by trunk id: each group's active members as physical ports."""
agg_standby_members = Table[PortSet]("agg_standby_members", FewPorts, 8)
"""Each group's configured members, indexed by trunk id: bit n of the first word stands for user port n. The second word
is stored and cleared, and otherwise only compared with 0.
"""
agg_manage_intf = Table[int]("agg_manage_intf", c_uint32, 8)
"""Each group's management interface (a user port), indexed by trunk id; 0 for none."""
agg_event_handle = Handler("agg_event_handle", layouts.AggEventCb)
"""The registered receiver of aggregation events, null for none."""
g_stFpInfo = Table[records.FpInfo]("g_stFpInfo", layouts.FpInfo, 43)
"""The submodules. Nothing writes the table at run time. Group 8 has none, submodule 25 reserves no entry, submodule 24
overlaps 26 to 29, submodules 14 and 15 share a meter, and entity 9 is the first of submodules 42 and 43.
"""
acl_fp_list_head = LinkedList[records.FpEntity]("acl_fp_list_head", layouts.ListLink, layouts.FpListNode, "entity")
"""The installed rules, FpListNode by FpListNode in the order of installation; an empty list points to itself."""
link_event_handle = Handler("link_event_handle", layouts.LinkEventCb)
"""The registered receiver of link changes, null for none."""
max_phy_port_num = Variable[int]("adp_max_phy_port_num", c_uint32)
"""Number of user ports as given to adp_set_max_phy_port_num(); valid map rows are 0..adp_max_phy_port_num."""
intf_to_phy_port = PortTable[records.PortRow]("intf_to_phy_port", layouts.PortRow, max_phy_port_num)
"""The port map: adp_max_phy_port_num + 1 rows, or null before it exists or after a failed allocation."""
intf_map_trunk = PortTable[int]("intf_map_trunk", c_uint32, max_phy_port_num)
"""Aggregation interface that each user port belongs to, 0 for none: adp_max_phy_port_num + 1 words indexed like the
port map, or null.
"""
ONU_ERR_CODE = Variable[int]("ONU_ERR_CODE", c_uint32)
"""Storage for the device's programs; the library neither reads nor writes it."""
sntp_cfg = Table[int]("sntp_cfg", c_uint32, 64)
"""Storage for the device's programs, 256 bytes; the library neither reads nor writes it."""
g_intf_link_data = Table[records.LinkData]("g_intf_link_data", layouts.LinkData, 27)
"""Link data by interface number, 0..26."""
aiVlanStg = Table[int]("aiVlanStg", c_int16, 4096)
"""The group that each VLAN was last added to, 0 for none: what the three member calls did, not what the chip has. The
device's programs read it.
"""
