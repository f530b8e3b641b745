"""Constants and enumerations of the headers.

This file is written by script/reference from the headers.
"""

from __future__ import annotations

import enum

__all__ = [
    "OK",
    "FAIL",
    "E_SELECTOR",
    "E_DRIVER",
    "E_INTF_TYPE",
    "E_NO_MEMBER",
    "E_DOT1X_LEARN",
    "E_DOT1X_FLUSH",
    "E_DOT1X_MODE",
    "E_DOT1X_STATIC",
    "E_SCHEDULING_MODE",
    "E_REMARK_KIND",
    "E_REMARK_FIELD",
    "E_REMARK_NO_SUBMODULE",
    "INTF_TYPE_SHIFT",
    "INTF_INDEX_MASK",
    "INTF_TYPE_USER_PORT",
    "INTF_TYPE_AGG",
    "AGG_GROUPS",
    "AGG_ACTIVE_MAX",
    "AGG_MEMBER_BYTES",
    "MEMBER_LIST_SLOTS",
    "USER_PORTS",
    "NO_VLAN",
    "CABLE_PAIRS",
    "FP_SUBMODULES",
    "FP_QUALIFIERS",
    "FP_ACTIONS",
    "FP_QUALIFIER_BYTES",
    "FP_ACTION_BYTES",
    "FP_SUBMODULE_REMARK",
    "FP_SUBMODULE_PHYSICAL",
    "MAC_BYTES",
    "MAC_FLAG_STATIC",
    "MAC_FLAG_DROP_TO",
    "MAC_FLAG_DROP_FROM",
    "MAC_FOUND_TRUNK",
    "MAC_NO_LIMIT",
    "MIRROR_INGRESS",
    "MIRROR_EGRESS",
    "SNTP_CFG_WORDS",
    "PRIORITIES",
    "DSCP_COUNT",
    "QUEUE_OF_CHIP",
    "DSCP_ALL",
    "DSCP_POWER_ON",
    "STORM_NO_DEVICE",
    "QUEUES",
    "VLANS",
    "STG_SUPPORTED",
    "L2_CACHE_SIZE",
    "STG_STATE_RELEASED",
    "KEEP_PRIORITY",
    "BalanceMode",
    "FpQualifier",
    "FpInnerTag",
    "FpIpType",
    "FpFrameType",
    "FpActionType",
    "FpValue",
    "FpMiss",
    "RemarkField",
    "RemarkForm",
    "RemarkKind",
    "Dot1xMode",
    "MacMode",
    "MacScope",
    "McastMiss",
    "SwitchControl",
    "TxMode",
    "TagOpcode",
    "LearnMode",
    "Counter",
    "Duplex",
    "Loopback",
    "Mdix",
    "Medium",
    "CablePair",
    "PortAttr",
    "MapType",
    "TrustMode",
    "StormCode",
    "StormCounting",
    "SchedulingMode",
    "StgState",
    "DoubleTagMode",
]

OK = 0
"""success"""
FAIL = -1
"""map, socket or frame-path failure, or a list too short: all bits set"""
E_SELECTOR = 101
"""selector, mode or map type out of range, or an unknown submodule"""
E_DRIVER = 102
"""a driver call failed, or the call does not fan out over a group"""
E_INTF_TYPE = 201
"""neither a user port nor an aggregation interface"""
E_NO_MEMBER = 203
"""a group with neither a management interface nor a configured member"""
E_DOT1X_LEARN = 401
"""the port's learning mode could not be set"""
E_DOT1X_FLUSH = 402
"""the port's address table could not be flushed"""
E_DOT1X_MODE = 403
"""bad 802.1X mode, or an address that cannot be formatted"""
E_DOT1X_STATIC = 405
"""the static entry could not be added"""
E_SCHEDULING_MODE = 501
"""a refused scheduling mode"""
E_REMARK_KIND = 502
"""remark kind neither 1 nor 2 (internal to the remark rules)"""
E_REMARK_FIELD = 503
"""match field 12 or more (internal to the remark rules)"""
E_REMARK_NO_SUBMODULE = 504
"""no table row for the remark submodule"""
INTF_TYPE_SHIFT = 28
"""place of the type"""
INTF_INDEX_MASK = 0xfffffff
"""bits of the index"""
INTF_TYPE_USER_PORT = 0
"""type of a user port"""
INTF_TYPE_AGG = 1
"""type of an aggregation interface"""
AGG_GROUPS = 8
"""aggregation groups, numbered 1..8 (IEEE 802.1AX aggregators)"""
AGG_ACTIVE_MAX = 8
"""members that GET_AGG_GROUP reports at most"""
AGG_MEMBER_BYTES = 11
"""member port bytes in a group's record"""
MEMBER_LIST_SLOTS = 26
"""slots of a member list that GET_AGG_CONFIG_GROUP fills"""
USER_PORTS = 26
"""user ports of the board; several tables have this size"""
NO_VLAN = 0xffffffff
CABLE_PAIRS = 4
"""wire pairs of a copper port"""
FP_SUBMODULES = 43
"""rows of g_stFpInfo"""
FP_QUALIFIERS = 16
"""qualifiers that a rule record holds"""
FP_ACTIONS = 8
"""actions that a rule record holds"""
FP_QUALIFIER_BYTES = 64
"""bytes of a qualifier's data, and of its mask"""
FP_ACTION_BYTES = 256
"""bytes of an action's parameter, and of its second one"""
FP_SUBMODULE_REMARK = 1
"""the submodule of remark rules"""
FP_SUBMODULE_PHYSICAL = 16
"""the submodule whose bitmaps are physical ports already"""
MAC_BYTES = 6
"""a MAC address, in network order"""
MAC_FLAG_STATIC = 8
"""the entry is static; on the virtual device"""
MAC_FLAG_DROP_TO = 16
"""frames to the address are dropped; on the virtual device"""
MAC_FLAG_DROP_FROM = 32
"""frames from the address are dropped; on the virtual device"""
MAC_FOUND_TRUNK = 128
"""flag of an entry that was looked up: it points to a trunk"""
MAC_NO_LIMIT = 0xffffffff
"""limit on learned addresses: none; on the virtual device"""
MIRROR_INGRESS = 1
"""direction flag: frames that the source port receives"""
MIRROR_EGRESS = 2
"""direction flag: frames that the source port sends"""
SNTP_CFG_WORDS = 64
"""words of sntp_cfg"""
PRIORITIES = 8
"""802.1p priorities 0..7"""
DSCP_COUNT = 64
"""DSCP values 0..63"""
QUEUE_OF_CHIP = 0xffffffff
"""queue: the chip's map holds for the port again; on the virtual device"""
DSCP_ALL = -1
"""dscp: every row; on the virtual device"""
DSCP_POWER_ON = -1
"""mapped: the row as at power-on; on the virtual device"""
STORM_NO_DEVICE = 1
"""device id for which nothing is done"""
QUEUES = 8
"""egress queues of a port"""
VLANS = 4096
"""VLAN ids 0..4095, rows of aiVlanStg"""
STG_SUPPORTED = 16
"""groups that adp_get_max_support_stg() reports"""
L2_CACHE_SIZE = 8192
"""size that adp_get_l2_cache_size() reports"""
STG_STATE_RELEASED = 4
"""the port state that the library sets when VLANs leave a group"""
KEEP_PRIORITY = 0xffffffff
"""priority of an entry on the virtual device: the frame's stays"""


class BalanceMode(enum.IntEnum):
    """enum adp_balance_mode"""

    DST_MAC = 1
    """the destination MAC address"""
    SRC_MAC = 2
    """the source MAC address"""
    SRC_DST_MAC = 3
    """both MAC addresses"""
    DST_IP = 4
    """the destination IP address and port"""
    SRC_IP = 5
    """the source IP address and port"""
    SRC_DST_IP = 6
    """both IP addresses and ports"""


class FpQualifier(enum.IntEnum):
    """enum adp_fp_qualifier"""

    SRC_IP6 = 0
    """IPv6 source address, 16 bytes (RFC 8200)"""
    DST_IP6 = 1
    """IPv6 destination address, 16 bytes"""
    SRC_MAC = 6
    """source MAC address, 6 bytes"""
    DST_MAC = 7
    """destination MAC address, 6 bytes"""
    SRC_IP = 9
    """IPv4 source address, a word (RFC 791)"""
    DST_IP = 10
    """IPv4 destination address, a word"""
    IN_PORTS = 13
    """ingress ports: a 256-bit bitmap of interfaces, translated on installation"""
    OUTER_VLAN_ID = 18
    """outer VLAN id (IEEE 802.1Q), low 16 bits used"""
    OUTER_VLAN_PRI = 19
    """outer tag's priority, low 8 bits used"""
    INNER_VLAN = 21
    """inner tag's format, enum adp_fp_inner_tag, low 16 bits used"""
    INNER_VLAN_ID = 22
    """inner VLAN id, low 16 bits used"""
    INNER_VLAN_PRI = 23
    """inner tag's priority, low 8 bits used"""
    L4_SRC_PORT = 27
    """TCP or UDP source port"""
    L4_DST_PORT = 28
    """TCP or UDP destination port"""
    ETHER_TYPE = 29
    """EtherType, low 16 bits used"""
    IP_PROTOCOL = 30
    """IP protocol number, low 8 bits used"""
    DSCP = 31
    """the IPv4 header's byte with the DSCP (RFC 2474), low 8 bits used"""
    IP_TYPE = 61
    """kind of IP packet, enum adp_fp_ip_type, no mask"""
    FRAME_TYPE = 89
    """the frame's encapsulation, enum adp_fp_frame_type, no mask"""
    IP6_TRAFFIC_CLASS = 332
    """IPv6 traffic class byte (RFC 8200), low 8 bits used"""


class FpInnerTag(enum.IntEnum):
    """enum adp_fp_inner_tag"""

    NONE = 0
    """there is no inner tag"""
    PRIORITY = 1
    """a tag with VLAN id 0"""
    VLAN = 2
    """a tag with another VLAN id"""


class FpIpType(enum.IntEnum):
    """enum adp_fp_ip_type"""

    ANY = 0
    """every frame"""
    NOT_IP = 1
    """neither IPv4 nor IPv6"""
    IP = 2
    """IPv4 or IPv6"""
    ARP = 3
    """ARP"""
    IP4 = 5
    """IPv4; remark rules use it"""
    IP6 = 10
    """IPv6; remark rules use it"""


class FpFrameType(enum.IntEnum):
    """enum adp_fp_frame_type"""

    ANY = 0
    """every frame"""
    ETHERNET_II = 1
    """Ethernet II"""
    LLC = 2
    """IEEE 802.3 with LLC"""
    SNAP = 3
    """IEEE 802.3 with LLC and SNAP"""


class FpActionType(enum.IntEnum):
    """enum adp_fp_action"""

    SET_DSCP = 1
    """parameter: the DSCP, 0..63, that IP packets get; remark rules use it"""
    SET_PRIORITY = 11
    """parameter: the priority, 0..7, that frames get; remark rules use it"""
    PORT = 30
    """to one port alone: parameter the interface, translated on installation"""
    PORTS = 33
    """to these alone: parameter a 256-bit bitmap of interfaces, translated likewise"""
    METER = 53
    """meter: parameter the rate, second parameter the index in the submodule"""
    PERMIT = 200
    """nothing, but other rules of the group do not act; no parameter"""
    DROP = 201
    """frames are dropped; no parameter"""
    COPY_TO_CPU = 202
    """the CPU gets frames as well; no parameter"""
    TO_CPU = 203
    """the CPU gets frames alone; no parameter"""
    SET_VLAN = 204
    """parameter: the VLAN, 1..4094, in which frames go on"""
    COUNT = 205
    """parameter: the counter, 0..255"""
    MIRROR = 206
    """parameter: the mirror session, 0..3, whose flow mirror gets a copy"""


class FpValue(enum.IntEnum):
    """enum adp_fp_value"""

    FRAMES = 0
    """frames"""
    OCTETS = 1
    """octets"""


class FpMiss(enum.IntEnum):
    """enum adp_fp_miss"""

    NONE = 0
    """nothing"""
    DROP = 1
    """they are dropped"""
    COPY_TO_CPU = 2
    """the CPU gets them as well"""
    TO_CPU = 3
    """the CPU gets them alone"""


class RemarkField(enum.IntEnum):
    """enum adp_remark_field"""

    DST_MAC = 0
    """destination MAC address"""
    SRC_MAC = 1
    """source MAC address"""
    INNER_VLAN_PRI = 2
    """inner tag's priority"""
    INNER_VLAN_ID = 3
    """inner VLAN id"""
    ETHER_TYPE = 4
    """EtherType"""
    DST_IP = 5
    """IPv4 destination address"""
    SRC_IP = 6
    """IPv4 source address"""
    IP_PROTOCOL = 7
    """IP protocol number"""
    DSCP = 8
    """DSCP of IPv4 packets, 0..63: shifted to its place in the header's byte"""
    TRAFFIC_CLASS = 9
    """DSCP of IPv6 packets, 0..63: shifted likewise"""
    L4_SRC_PORT = 10
    """TCP or UDP source port"""
    L4_DST_PORT = 11
    """TCP or UDP destination port"""


class RemarkForm(enum.IntEnum):
    """enum adp_remark_form"""

    FIELD = 1
    """ports and one field"""
    PORTS = 7
    """ports only"""


class RemarkKind(enum.IntEnum):
    """enum adp_remark_kind"""

    PRIORITY = 1
    """the priority, by ADP_FP_ACTION_SET_PRIORITY"""
    DSCP = 2
    """the DSCP, by ADP_FP_ACTION_SET_DSCP"""


class Dot1xMode(enum.IntEnum):
    """enum adp_dot1x_mode"""

    UNAUTHORIZED = 0
    """learning mode 8; learned addresses are flushed"""
    AUTHORIZED = 1
    """learning mode 5, or 8 with the learn flag; nothing is flushed"""
    BLOCKED = 2
    """learning mode 0; learned addresses are flushed"""


class MacMode(enum.IntEnum):
    """enum adp_mac_mode"""

    DYNAMIC = 0
    """learned entries"""
    STATIC = 1
    """static entries"""
    ALL = 2
    """both"""


class MacScope(enum.IntEnum):
    """enum adp_mac_scope"""

    VLAN = 0
    """a VLAN"""
    INTF = 1
    """a user port or an aggregation interface"""
    SYSTEM = 2
    """the whole chip"""


class McastMiss(enum.IntEnum):
    """enum adp_mcast_miss"""

    FLOOD = 0
    """they are flooded"""
    DROP = 1
    """they are dropped"""
    TO_CPU = 2
    """the CPU gets them"""


class SwitchControl(enum.IntEnum):
    """enum adp_switch_control"""

    MLD = 89
    """MLD messages go to the CPU: 0 off, otherwise on"""
    IGMP = 92
    """IGMP messages go to the CPU: 0 off, otherwise on"""
    MIRRORS = 125
    """frames are mirrored: 0 off, otherwise on"""
    HASH = 136
    """which end of a flow chooses a group's port: 0x50 source, 0x60 destination, 0x70 both"""
    LOCAL_GROUPS = 215
    """frames to 224.0.0.0/24 go to the CPU: 0 off, otherwise on"""


class TxMode(enum.IntEnum):
    """enum adp_tx_mode"""

    PORTS = 0
    """every port of the list, or without a list every port (of the VLAN)"""
    SWITCH = 1
    """let the switch forward the frame"""
    VLAN_PORT = 2
    """one port, a member of the VLAN"""
    ONE_PORT = 3
    """one port, a member of the VLAN when one is given"""
    VLAN_NOT_SOURCE = 4
    """as 2, passing over the source interface"""


class TagOpcode(enum.IntEnum):
    """enum adp_tag_opcode"""

    SWITCH = 1
    """the switch forwards the frame; the destination is not used"""
    PORT = 3
    """out of one port, its VLAN tag removed where the VLAN leaves untagged"""
    PORTS = 4
    """likewise out of the ports of a bitmap"""
    PORT_AS_IS = 5
    """out of one port as given"""
    PORT_RAW = 6
    """the same"""
    PORTS_RAW = 7
    """out of the ports of a bitmap as given"""


class LearnMode(enum.IntEnum):
    """enum adp_learn_mode"""

    CLOSED = 0
    """frames from unknown addresses are dropped"""
    NORMAL = 1
    """addresses are learned"""
    OFF = 4
    """addresses are not learned, frames go on"""
    OPEN = 5
    """as normal, for a port that 802.1X has opened"""
    PENDING = 8
    """frames from unknown addresses go to the CPU alone"""


class Counter(enum.IntEnum):
    """enum adp_counter"""

    RX_OCTETS = 0
    """octets received"""
    RX_FRAMES = 1
    """frames received"""
    RX_UNICAST = 2
    """unicast frames received"""
    RX_MULTICAST = 3
    """multicast frames received"""
    RX_BROADCAST = 4
    """broadcast frames received"""
    RX_DROPPED = 5
    """received frames dropped, for whatever reason"""
    RX_TOO_LONG = 6
    """received frames dropped as too long"""
    RX_RUNTS = 7
    """received frames dropped as runts"""
    TX_OCTETS = 8
    """octets sent"""
    TX_FRAMES = 9
    """frames sent"""
    TX_UNICAST = 10
    """unicast frames sent"""
    TX_MULTICAST = 11
    """multicast frames sent"""
    TX_BROADCAST = 12
    """broadcast frames sent"""
    TX_TOO_LONG = 13
    """frames not sent as too long for the port"""


class Duplex(enum.IntEnum):
    """enum adp_duplex"""

    HALF = 0
    """half duplex"""
    FULL = 1
    """full duplex"""
    AUTO = 2
    """as negotiated; so is every other number"""


class Loopback(enum.IntEnum):
    """enum adp_loopback"""

    OFF = 0
    """frames leave the port"""
    MAC = 1
    """what would leave comes in again, in the port's MAC"""
    PHY = 2
    """the same, at its line side"""


class Mdix(enum.IntEnum):
    """enum adp_mdix"""

    AUTO = 0
    """chosen by the port"""
    MDI = 1
    """straight"""
    MDIX = 2
    """crossed"""


class Medium(enum.IntEnum):
    """enum adp_medium"""

    COPPER = 1
    """copper"""
    FIBRE = 2
    """fibre"""


class CablePair(enum.IntEnum):
    """enum adp_cable_pair"""

    GOOD = 0
    """without a fault"""
    OPEN = 1
    """open: no cable"""


class PortAttr(enum.IntEnum):
    """enum adp_port_attr"""

    SPEED = 0
    """Mb/s: 10, 100, 1000, 10000"""
    DUPLEX = 1
    """enum adp_duplex"""
    AUTONEG = 2
    """auto-negotiation (IEEE 802.3 clause 28): 0 off, non-zero on"""
    ADMIN_STATE = 3
    """administrative state: 0 off, non-zero on"""
    LOOPBACK = 4
    """enum adp_loopback"""
    PAUSE = 5
    """flow control (IEEE 802.3 annex 31B): 0 off, non-zero on"""
    JUMBO = 6
    """jumbo frames, the driver's value; on the virtual device 0 off, non-zero on"""
    ADVERT_DUPLEX = 7
    """set only: advertised duplex, enum adp_duplex"""
    ADVERT_SPEED = 8
    """set only: advertised speed, Mb/s"""
    MDIX = 9
    """MDI/MDIX, enum adp_mdix"""
    MEDIUM = 10
    """get only: enum adp_medium"""
    LINK = 11
    """get: link status, 0 down, non-zero up; set: the protocol hold"""
    HOLD = 11
    """set only: protocol hold, 0 holds the port down, non-zero releases it"""
    MAX_SPEED = 12
    """get only: maximum speed, Mb/s"""
    PAUSE_STATUS = 13
    """get only: flow control in force, 0 no, non-zero yes"""
    FIBRE_LINK = 14
    """get only: fibre link status, 0 down, non-zero up"""


class MapType(enum.IntEnum):
    """enum adp_map_type"""

    DOT1P = 0
    """from the 802.1p priority"""
    DSCP = 1
    """from the DSCP"""
    NONE = 2
    """accepted, needs nothing on this chip"""


class TrustMode(enum.IntEnum):
    """enum adp_trust_mode"""

    PORT = 0
    """none: the port's own priority"""
    TAG = 1
    """the tag's"""
    DSCP = 2
    """the DSCP's"""
    DSCP_OR_TAG = 3
    """the DSCP's, for other frames than IP packets the tag's"""


class StormCode(enum.IntEnum):
    """enum adp_storm_code"""

    BROADCAST = 1
    """broadcast frames; the driver's type 3"""
    MULTICAST = 2
    """multicast frames; the driver's type 2"""
    UNKNOWN_UNICAST = 4
    """unicast frames to unknown addresses; the driver's type 4"""
    TOGETHER = 8
    """the three together; the driver's type 1"""


class StormCounting(enum.IntEnum):
    """enum adp_storm_counting"""

    OCTETS = 0
    """octets: rates are kilobits per second, bursts kilobits"""
    FRAMES = 1
    """frames: rates are frames per second, bursts frames"""


class SchedulingMode(enum.IntEnum):
    """enum adp_scheduling_mode"""

    STRICT = 0
    """the highest queue that has a frame"""
    ROUND_ROBIN = 1
    """a frame of each queue in turn"""
    WEIGHTED = 2
    """each queue in turn, by its weight"""


class StgState(enum.IntEnum):
    """enum adp_stg_state"""

    DISABLED = 0
    """frames are neither learned nor forwarded"""
    BLOCKING = 1
    """as disabled"""
    LISTENING = 2
    """as disabled"""
    LEARNING = 3
    """frames are learned, not forwarded"""
    FORWARDING = 4
    """frames are learned and forwarded"""


class DoubleTagMode(enum.IntEnum):
    """enum adp_double_tag_mode"""

    OFF = 0
    """one tag, which names the VLAN"""
    PROVIDER = 1
    """towards the provider: the outer tag is the service's"""
    CUSTOMER = 2
    """towards the customer: all tags are payload"""
