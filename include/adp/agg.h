/**
 * @file agg.h
 * Link aggregation (IEEE 802.1AX): the tables of the eight groups and their accessors, creation and membership, the
 * election of each group's management interface, members' link changes, and port counters.
 *
 * A call on an aggregation interface takes the group number g (1..8) from the index bits of the interface number,
 * whatever the type bits. The trunk id, g - 1, indexes the tables and is the driver's trunk number. A group outside
 * 1..8 is refused with -1 and its outputs are zeroed. All callers share the tables and nothing takes a lock: callers
 * serialise management operations and link handling. The accessors make no driver call. Every driver call named here is
 * made with unit 0 and a second argument 0, which the descriptions leave out; 0 is its success.
 */
#pragma once

#include <adp/types.h>

ADP_BEGIN_DECLS

/** By what a group's port for a frame is chosen: the driver's codes, as the virtual device has them. */
enum adp_balance_mode {
    ADP_BALANCE_DST_MAC = 1,     /**< the destination MAC address */
    ADP_BALANCE_SRC_MAC = 2,     /**< the source MAC address */
    ADP_BALANCE_SRC_DST_MAC = 3, /**< both MAC addresses */
    ADP_BALANCE_DST_IP = 4,      /**< the destination IP address and port */
    ADP_BALANCE_SRC_IP = 5,      /**< the source IP address and port */
    ADP_BALANCE_SRC_DST_IP = 6   /**< both IP addresses and ports */
};

/** Aggregation event: all words are 0 but word 16 + trunk id, which holds the aggregation interface. */
typedef struct {
    uint32_t word[24]; /**< all words of the event */
} adp_agg_event_t;

/** Receiver of aggregation events. Its result is ignored. */
typedef int32_t (*adp_agg_event_cb_t)(const adp_agg_event_t *event);

/** The groups' records, indexed by trunk id: each group's active members as physical ports. */
extern adp_agg_record_t agg_info[ADP_AGG_GROUPS];
/**
 * Each group's configured members, indexed by trunk id: bit n of the first word stands for user port n. The second word
 * is stored and cleared, and otherwise only compared with 0.
 */
extern uint32_t agg_standby_members[ADP_AGG_GROUPS][2];
/** Each group's management interface (a user port), indexed by trunk id; 0 for none. */
extern uint32_t agg_manage_intf[ADP_AGG_GROUPS];
/** The registered receiver of aggregation events, null for none. */
extern adp_agg_event_cb_t agg_event_handle;

/**
 * Finds the aggregation interface that a user port belongs to.
 *
 * @param intf  user port; only the index bits are used
 * @return the aggregation interface; 0 for none, beyond the map, or before the map exists
 */
adp_intf_t GET_INTF_MAPPING_AGGINTF(adp_intf_t intf);

/**
 * Computes a group's trunk id, (agg_intf & 0x0FFFFFFF) - 1. Plain arithmetic: nothing is refused.
 *
 * @param agg_intf       aggregation interface
 * @param[out] trunk_id  the driver's trunk number, 0..7 for a group 1..8
 * @return 0
 */
adp_status_t adp_get_agg_group_drvid(adp_intf_t agg_intf, uint32_t *trunk_id);

/**
 * Finds a group's lowest configured member: the lowest n in 0..26 whose bit is set in the first word of the group's
 * configured members.
 *
 * @param agg_intf   aggregation interface
 * @param[out] intf  the member's interface number; 0 when there is none
 * @return 0; -1 for a group outside 1..8, with 0 written
 */
adp_status_t GET_AGG_CONFIG_MIN_INTF(adp_intf_t agg_intf, adp_intf_t *intf);

/**
 * Reads a group's management interface.
 *
 * @param agg_intf   aggregation interface
 * @param[out] intf  a user port; 0 when there is none
 * @return 0; -1 for a group outside 1..8, with 0 written
 */
adp_status_t GET_AGG_MANAGE_INTF(adp_intf_t agg_intf, adp_intf_t *intf);

/**
 * Stores a group's management interface.
 *
 * @param agg_intf  aggregation interface
 * @param intf      a user port, or 0 for none; not checked
 * @return 0; -1 for a group outside 1..8, with nothing changed
 */
adp_status_t SET_AGG_MANAGE_INTF(adp_intf_t agg_intf, adp_intf_t intf);

/**
 * Reads whether a group is up.
 *
 * @param group       group number, 1..8; not an aggregation interface, unlike in the other calls
 * @param[out] state  0 down, 1 up
 * @return 0; -1 for another number, with nothing written
 */
adp_status_t adp_get_agg_link_staus(uint32_t group, uint32_t *state);

/**
 * The same as adp_get_agg_link_staus().
 *
 * @param group       group number, 1..8
 * @param[out] state  0 down, 1 up
 * @return as adp_get_agg_link_staus()
 */
adp_status_t GET_AGG_LINK_STATUS(uint32_t group, uint32_t *state);

/**
 * Lists a group's active members, in the order in which they joined.
 *
 * @param agg_intf      aggregation interface
 * @param max           entries that members has room for
 * @param[out] count    the record's member count, 0..11, written before max is compared
 * @param[out] members  user port of each member port; all ones for a port without a map row
 * @return 0; -1 when max is smaller than the count, or the count is one that no record can hold (negative, or above
 *         ADP_AGG_MEMBER_BYTES): members is untouched; -1 for a group outside 1..8: count is 0, and so are the first
 *         entries of members (max, at most ADP_MEMBER_LIST_SLOTS of them)
 */
adp_status_t adp_get_agg_group(adp_intf_t agg_intf, uint32_t max, uint32_t *count, ADP_COUNT(max) adp_intf_t *members);

/**
 * Lists a group's active members; adp_get_agg_group() with room for ADP_AGG_ACTIVE_MAX.
 *
 * @param agg_intf      aggregation interface
 * @param[out] count    the record's member count, 0..11
 * @param[out] members  user ports
 * @return as adp_get_agg_group(): a group with nine or more members gives -1, with count written and members untouched
 */
adp_status_t GET_AGG_GROUP(adp_intf_t agg_intf, uint32_t *count, ADP_COUNT(ADP_AGG_ACTIVE_MAX) adp_intf_t *members);

/**
 * Lists a group's configured members in ascending order. When none is configured (both words of the group's bitmap are
 * 0), the call is adp_get_agg_group().
 *
 * Only bits 0..26 of the first word are listed: a bitmap whose second word alone is set gives an empty list.
 *
 * @param agg_intf      aggregation interface
 * @param max           entries that members has room for
 * @param[out] count    number of members listed
 * @param[out] members  user ports
 * @return 0; -1 when max is smaller than the number of active members, with nothing written, even when the members are
 *         configured ones; -1 when there are more than max configured members: the first max are written, count is not;
 *         -1 for a group outside 1..8, with outputs zeroed as in adp_get_agg_group()
 */
adp_status_t adp_get_agg_config_group(adp_intf_t agg_intf, uint32_t max, uint32_t *count,
                                      ADP_COUNT(max) adp_intf_t *members);

/**
 * Lists a group's configured members; adp_get_agg_config_group() with room for ADP_MEMBER_LIST_SLOTS.
 *
 * @param agg_intf      aggregation interface
 * @param[out] count    number of members listed
 * @param[out] members  user ports
 * @return as adp_get_agg_config_group(); with 27 bits set 26 entries are written, count is untouched and the result is
 *         -1
 */
adp_status_t GET_AGG_CONFIG_GROUP(adp_intf_t agg_intf, uint32_t *count,
                                  ADP_COUNT(ADP_MEMBER_LIST_SLOTS) adp_intf_t *members);

/**
 * Reads a group's active members as a bitmap of interface numbers.
 *
 * A member without a map row (all ones) and interface 0 set no bit.
 *
 * @param agg_intf     aggregation interface
 * @param[out] bitmap  two words, bit n of word n / 32 for interface n
 * @return 0; -1 with the bitmap unchanged for a group with nine or more members; -1 for a group outside 1..8, with both
 *         words 0
 */
adp_status_t adp_get_agg_group_by_map(adp_intf_t agg_intf, uint32_t bitmap[2]);

/**
 * Registers the receiver of aggregation events in agg_event_handle.
 *
 * @param callback  called with each event, null for none
 * @return 0
 */
adp_status_t adp_register_agg_event_cb(adp_agg_event_cb_t callback);

/**
 * Creates a group: an empty trunk in the chip, and cleared tables.
 *
 * Driver call: user_trunk_create_id(trunk id). On success the record is empty with its in-use byte 1, configured
 * members and management interface are cleared, and no user port maps to the group. The announced link state stays.
 *
 * @param agg_intf  aggregation interface
 * @return 0; the driver's result, with nothing changed; -1 for a group outside 1..8
 */
adp_status_t adp_create_agg_group(adp_intf_t agg_intf);

/**
 * Deletes a group: its trunk in the chip, and all of its tables.
 *
 * Driver call: user_trunk_destroy(trunk id). On success the tables are as after adp_create_agg_group(), except that the
 * in-use byte is 0.
 *
 * @param agg_intf  aggregation interface
 * @return 0; the driver's result, with nothing changed; -1 for a group outside 1..8
 */
adp_status_t adp_delete_agg_group(adp_intf_t agg_intf);

/**
 * Adds members to a group.
 *
 * A port that is a member already is skipped. The list itself may name a port twice, and an unmapped interface is
 * appended as port 255 each time.
 *
 * Driver calls: the link of each member of the new record is read as adp_get_phy_port_attr(member, 11) does;
 * user_trunk_set(trunk id, record) programs all members, those without link included; on success
 * user_trunk_send_data_to_kernel(trunk id, record).
 *
 * If at least one member is linked, the event is sent and a group that was down is announced as up (see
 * adp_agg_linkscan_handle()), whatever user_trunk_set() returned. On success the record is stored, then sent to the
 * kernel; the management interface is elected as ANEW_SELECT_MANAGE_INTF() does; the listed ports map to the group.
 *
 * @param agg_intf  aggregation interface
 * @param count     number of interfaces listed; 0 returns 0 at once
 * @param members   user ports
 * @return 0; the driver's result, with the tables unchanged; -1 with nothing done for a group outside 1..8, an
 *         interface beyond the port map, or more than eleven members
 */
adp_status_t adp_add_agg_member(adp_intf_t agg_intf, uint32_t count, ADP_COUNT(count) const adp_intf_t *members);

/**
 * Adds the members in a bitmap of interface numbers. Otherwise as adp_add_agg_member(), whose steps run even when none
 * of the bits 0..26 is set.
 *
 * @param agg_intf  aggregation interface
 * @param word0     bits 0..26 name the interfaces
 * @param word1     names no interface: its bits are only compared with 0, and both words 0 return 0 at once
 * @return as adp_add_agg_member()
 */
adp_status_t adp_add_agg_member_by_map(adp_intf_t agg_intf, uint32_t word0, uint32_t word1);

/**
 * Removes members from a group.
 *
 * Of the members that stay, those whose link reads 1 are programmed with user_trunk_set(trunk id, record). If there is
 * none, the trunk is destroyed (result ignored) and created again empty, and a group that was up is announced as down
 * (see adp_agg_linkscan_handle()). On success the record is stored with its in-use byte 0 and sent with
 * user_trunk_send_data_to_kernel(trunk id, record), the management interface is elected, and the listed ports map to no
 * group. A count of 0 programs and stores the members as they are, without an election.
 *
 * @param agg_intf  aggregation interface
 * @param count     number of interfaces listed
 * @param members   user ports
 * @return 0; the driver's result, with the tables unchanged; -1 with nothing done for a group outside 1..8 or an
 *         interface beyond the port map
 */
adp_status_t adp_del_agg_member(adp_intf_t agg_intf, uint32_t count, ADP_COUNT(count) const adp_intf_t *members);

/**
 * Removes the members in a bitmap of interface numbers. Otherwise as adp_del_agg_member(), with an election even when
 * none of the bits 0..26 is set.
 *
 * @param agg_intf  aggregation interface
 * @param word0     bits 0..26 name the interfaces
 * @param word1     names no interface: its bits are only compared with 0, and both words 0 return 0 at once
 * @return as adp_del_agg_member()
 */
adp_status_t adp_del_agg_member_by_map(adp_intf_t agg_intf, uint32_t word0, uint32_t word1);

/**
 * Adds interfaces to a group's configured members. No driver call, no election.
 *
 * @param agg_intf  aggregation interface
 * @param word0     bits to set in the first word
 * @param word1     bits to set in the second word; both words 0 return 0 at once
 * @return 0; -1 for a group outside 1..8
 */
adp_status_t adp_add_agg_standby_member(adp_intf_t agg_intf, uint32_t word0, uint32_t word1);

/**
 * Removes interfaces from a group's configured members. No driver call, no election.
 *
 * @param agg_intf  aggregation interface
 * @param word0     bits to clear in the first word
 * @param word1     bits to clear in the second word; both words 0 return 0 at once
 * @return 0; -1 for a group outside 1..8
 */
adp_status_t adp_del_agg_standby_member(adp_intf_t agg_intf, uint32_t word0, uint32_t word1);

/**
 * Elects a group's management interface: the smallest member whose link attribute 14 is not 0, or, while all are down,
 * the largest.
 *
 * The candidates are the active members, or the configured members when none is active. Without either the group has no
 * management interface. Driver calls: user_fiberport_link_status_get(port) for each in list order.
 *
 * @param agg_intf  aggregation interface
 * @return 0; -1 for a group outside 1..8
 */
adp_status_t ANEW_SELECT_MANAGE_INTF(adp_intf_t agg_intf);

/**
 * Sets a group's load balancing.
 *
 * Driver calls: user_switch_control_set(136, hash), its failure ignored, with hash 0x60 for modes 1 and 4, 0x50 for
 * modes 2 and 5, 0x70 for others; user_trunk_loadbalance_set(trunk id, mode). No table is used and no group is refused.
 *
 * @param agg_intf  aggregation interface
 * @param mode      enum adp_balance_mode
 * @return the second driver call's result
 */
adp_status_t adp_set_agg_loadbalance(adp_intf_t agg_intf, uint32_t mode);

/**
 * Passes an event to the registered receiver.
 *
 * @param caller  name of the caller, not used
 * @param event   the event
 * @return the receiver's result; 0 when none is registered
 */
int32_t adp_agg_event_handle(const char *caller, const adp_agg_event_t *event);

/**
 * Handles a link change of a user port that is a member of a group: the first group whose record has its port.
 *
 * Up: the trunk is programmed with all members as adp_add_agg_member() does, and a management interface with a higher
 * number is replaced by the port; without a management interface the group stays without. Down: the trunk is programmed
 * with the other members that are linked as adp_del_agg_member() does, and the management interface is elected anew if
 * it was the port. The group's record stays.
 *
 * A group that goes up or down is announced: if sys_trace_get() is not 0, sys_trace_add_log("worker():line", "interface
 * aggregateport g, changed state to up"); then Log_logging_func(5, 5, "UPDOWN", format, "aggregateport", g, "up"). The
 * event is sent through adp_agg_event_handle(): after an add whenever a member is linked, even when the group was up
 * already, after a removal only when the group went down.
 *
 * @param intf          user port
 * @param is_up         0 down, otherwise up
 * @param[out] changed  1 when the group as a whole went up or down, otherwise untouched; may be null
 * @return the driver's result; 0 for a port in no group
 */
adp_status_t adp_agg_linkscan_handle(adp_intf_t intf, uint32_t is_up, uint32_t *changed);

/**
 * Reads a counter of a user port, or the sum over a group's active members (modulo 2^64).
 *
 * Driver call: user_port_packetstat_get(port, type, value) for each port in list order.
 *
 * @param intf        user port or aggregation interface
 * @param type        enum adp_counter
 * @param[out] value  the counter; for a group untouched after a failure, and 0 without members
 * @return 0; 102 at the first failure; 201 for another type, -1 for a group outside 1..8
 */
adp_status_t adp_get_port_stat(adp_intf_t intf, uint32_t type, uint64_t *value);

/**
 * Clears all counters of a user port or of a group's members.
 *
 * Driver call: user_port_packetstat_clear(port), on a group for each active member.
 *
 * @param intf  user port or aggregation interface
 * @return 0; 102 at the first failure; 201 for another type, -1 for a group outside 1..8
 */
adp_status_t adp_clr_port_stat(adp_intf_t intf);

/**
 * Turns the trap that sends LACP frames (IEEE 802.1AX) to the CPU on or off.
 *
 * Driver call: user_trunk_trap_lacp(enable, option).
 *
 * @param enable   passed through; 0 off, otherwise on
 * @param unused   not used
 * @param unused2  not used
 * @param option   passed through; ignored by the virtual device
 * @return the driver's result
 */
adp_status_t adp_set_trap_lacp_packet(uint32_t enable, uint32_t unused, uint32_t unused2, adp_word_t option);

/**
 * Turns the trap that sends Ethernet OAM frames (IEEE 802.3 clause 57) to the CPU on or off.
 *
 * Driver call: user_eoam_trap_set(enable, option).
 *
 * @param enable   passed through; 0 off, otherwise on
 * @param unused   not used
 * @param unused2  not used
 * @param option   passed through; ignored by the virtual device
 * @return the driver's result
 */
adp_status_t adp_set_trap_eoam_packet(uint32_t enable, uint32_t unused, uint32_t unused2, adp_word_t option);

ADP_END_DECLS
