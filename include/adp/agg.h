/**
 * @file agg.h
 * Link aggregation (IEEE 802.1AX): the tables of the eight groups and their accessors.
 *
 * A call on an aggregation interface takes the group number g (1..8) from the index bits of the interface number,
 * whatever the type bits. The trunk id, g - 1, indexes the tables and is the driver's trunk number. A group outside
 * 1..8 is refused with -1 and its outputs are zeroed. No accessor makes a driver call or takes a lock: the tables are
 * shared by all callers, who serialise management operations and link handling.
 */
#ifndef ADP_AGG_H
#define ADP_AGG_H

#include <adp/types.h>

ADP_BEGIN_DECLS

/** Aggregation event: all words are 0 but word 16 + trunk id, which holds the aggregation interface. */
typedef struct {
    uint32_t word[24];
} adp_agg_event_t;

/** Receiver of aggregation events. Its result is not used. */
typedef int32_t (*adp_agg_event_cb_t)(const adp_agg_event_t *event);

/** The groups' records, indexed by trunk id: each group's active members as physical ports. */
extern adp_agg_record_t agg_info[ADP_AGG_GROUPS];
/**
 * Each group's configured members, indexed by trunk id: bit n of the first word stands for user port n. The second
 * word is stored and cleared, but only tested for being 0.
 */
extern uint32_t agg_standby_members[ADP_AGG_GROUPS][2];
/** Each group's management interface (a user port), indexed by trunk id; 0 for none. */
extern uint32_t agg_manage_intf[ADP_AGG_GROUPS];
/** The registered receiver of aggregation events, null for none. */
extern adp_agg_event_cb_t agg_event_handle;

/**
 * Tells the aggregation interface that a user port belongs to.
 *
 * @param intf  user port; only the index bits count
 * @return the aggregation interface; 0 for none, beyond the map, or before the map exists
 */
adp_intf_t GET_INTF_MAPPING_AGGINTF(adp_intf_t intf);

/**
 * Computes a group's trunk id, (agg_intf & 0x0FFFFFFF) - 1. Plain arithmetic: nothing is refused.
 *
 * @param agg_intf       aggregation interface
 * @param[out] trunk_id  the driver's trunk number
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
 * Tells a group's management interface.
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
 * Tells whether a group is up.
 *
 * @param group       the group number, 1..8 (not the aggregation interface, unlike its neighbours)
 * @param[out] state  0 down, 1 up
 * @return 0; -1 for another number, with nothing written
 */
adp_status_t adp_get_agg_link_staus(uint32_t group, uint32_t *state);

/**
 * Tells whether a group is up; the same as adp_get_agg_link_staus().
 *
 * @param group       the group number, 1..8
 * @param[out] state  0 down, 1 up
 * @return 0; -1 for another number, with nothing written
 */
adp_status_t GET_AGG_LINK_STATUS(uint32_t group, uint32_t *state);

/**
 * Lists a group's active members, in the order in which they joined.
 *
 * @param agg_intf    aggregation interface
 * @param max         entries that the list has room for
 * @param[out] count  the record's member count, written before the room is looked at
 * @param[out] list   user-port interface of each member port; all ones for a port that no map row names
 * @return 0; -1 when max is smaller than the count, or the count is one that no record can hold (negative, or above
 *         ADP_AGG_MEMBER_BYTES): the list is untouched; -1 for a group outside 1..8: the count and the list's first
 *         entries (max, at most ADP_MEMBER_LIST_SLOTS of them) are 0
 */
adp_status_t adp_get_agg_group(adp_intf_t agg_intf, uint32_t max, uint32_t *count, ADP_COUNT(max) adp_intf_t *list);

/**
 * Lists a group's active members; adp_get_agg_group() with room for ADP_AGG_ACTIVE_MAX.
 *
 * @param agg_intf    aggregation interface
 * @param[out] count  the record's member count
 * @param[out] list   user-port interfaces
 * @return as adp_get_agg_group(): a group with nine or more members gives -1, its count written, the list untouched
 */
adp_status_t GET_AGG_GROUP(adp_intf_t agg_intf, uint32_t *count, ADP_COUNT(ADP_AGG_ACTIVE_MAX) adp_intf_t *list);

/**
 * Lists a group's configured members in ascending order; when none is configured (both words of the group's bitmap
 * are 0), its active members exactly as adp_get_agg_group() does.
 *
 * Only bits 0..26 of the first word are listed: a bitmap whose second word alone is set gives an empty list.
 *
 * @param agg_intf    aggregation interface
 * @param max         entries that the list has room for
 * @param[out] count  number of members listed
 * @param[out] list   user-port interfaces
 * @return 0; -1 when max is smaller than the number of active members, with nothing written, even if the answer would
 *         come from the bitmap; -1 when a member is found with max entries already listed: these are written, the
 *         count is not; -1 for a group outside 1..8, outputs zeroed as adp_get_agg_group() does
 */
adp_status_t adp_get_agg_config_group(adp_intf_t agg_intf, uint32_t max, uint32_t *count,
                                      ADP_COUNT(max) adp_intf_t *list);

/**
 * Lists a group's configured members; adp_get_agg_config_group() with room for ADP_MEMBER_LIST_SLOTS.
 *
 * @param agg_intf    aggregation interface
 * @param[out] count  number of members listed
 * @param[out] list   user-port interfaces
 * @return as adp_get_agg_config_group(); with 27 bits set the 26 slots are filled, the count is left and -1 returned
 */
adp_status_t GET_AGG_CONFIG_GROUP(adp_intf_t agg_intf, uint32_t *count,
                                  ADP_COUNT(ADP_MEMBER_LIST_SLOTS) adp_intf_t *list);

/**
 * Tells a group's active members as a bitmap of interface numbers.
 *
 * Members that no map row names (all ones) and interface 0 have no bit.
 *
 * @param agg_intf     aggregation interface
 * @param[out] bitmap  two words, bit n of word n / 32 for interface n
 * @return 0; -1 with the bitmap unchanged for a group with nine or more members; -1 for a group outside 1..8, with
 *         both words 0
 */
adp_status_t adp_get_agg_group_by_map(adp_intf_t agg_intf, uint32_t bitmap[2]);

ADP_END_DECLS

#endif
