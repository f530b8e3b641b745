/**
 * @file stg.h
 * Spanning-tree groups (IEEE 802.1Q, multiple spanning trees) and ring ports (ITU-T G.8032): which group a VLAN belongs
 * to, and a port's state in a group.
 *
 * A group's number is the MST instance's. The library keeps one table, the group of each VLAN. It is written before the
 * driver call and not restored when the driver refuses. Every driver call is made with unit 0 and a second argument 0,
 * which the descriptions leave out. "The driver's result" is its result unchanged. Nothing takes a lock.
 *
 * "Reported" below means: printed on standard output, with the function's name and the source line; standard error is
 * named where it is used. The texts are fixed, although several name another operation than the one that failed.
 */
#pragma once

#include <adp/types.h>

ADP_BEGIN_DECLS

#define ADP_VLANS 4096           /**< VLAN ids 0..4095, rows of aiVlanStg */
#define ADP_STG_SUPPORTED 16     /**< groups that adp_get_max_support_stg() reports */
#define ADP_L2_CACHE_SIZE 8192   /**< size that adp_get_l2_cache_size() reports */
#define ADP_STG_STATE_RELEASED 4 /**< the port state that the library sets when VLANs leave a group */

/** A port's states in a group: the driver's codes, as the virtual device has them. */
enum adp_stg_state {
    ADP_STG_STATE_DISABLED = 0,  /**< frames are neither learned nor forwarded */
    ADP_STG_STATE_BLOCKING = 1,  /**< as disabled */
    ADP_STG_STATE_LISTENING = 2, /**< as disabled */
    ADP_STG_STATE_LEARNING = 3,  /**< frames are learned, not forwarded */
    ADP_STG_STATE_FORWARDING = 4 /**< frames are learned and forwarded */
};

/**
 * The group that each VLAN was last added to, 0 for none: what the three member calls did, not what the chip has. The
 * device's programs read it.
 */
extern int16_t aiVlanStg[ADP_VLANS];

/**
 * Creates the group of an MST instance. Driver call: user_stg_create_id(stg).
 *
 * @param stg  MST instance number; 0..15 on the virtual device
 * @return the driver's result
 */
adp_status_t adp_create_mstp_instance(int32_t stg);

/**
 * Destroys the group of an MST instance and clears its VLANs.
 *
 * Driver calls: user_stg_destroy(stg) and, unless that is negative, those of adp_del_msti_all_member().
 *
 * @param stg  MST instance number, 0 does nothing; 1..15 on the virtual device
 * @return user_stg_destroy()'s result; 0 for instance 0
 */
adp_status_t adp_delete_mstp_instance(int32_t stg);

/**
 * Moves a VLAN into a group.
 *
 * When the table has the VLAN in a group above 0, even the same one, adp_del_msti_member() for that group is called
 * first. Then the table gets the group, cut to 16 bits. Driver call: user_stg_vlan_add(stg, vid).
 *
 * @param stg  MST instance number; 0..15 on the virtual device
 * @param vid  VLAN id, low 16 bits used
 * @return user_stg_vlan_add()'s result; -1 without a driver call for a VLAN of 4096 or above
 */
adp_status_t adp_add_msti_member(int32_t stg, uint32_t vid);

/**
 * Removes a VLAN from a group.
 *
 * The VLAN's table entry becomes 0, whichever group it held. Driver calls: user_stg_stp_set(stg, port, 4) for each of
 * user ports 1 to 26, results ignored; user_stg_vlan_remove(stg, vid).
 *
 * @param stg  MST instance number; 0..15 on the virtual device
 * @param vid  VLAN id, low 16 bits used
 * @return user_stg_vlan_remove()'s result; -1 without a driver call for a VLAN of 4096 or above
 */
adp_status_t adp_del_msti_member(int32_t stg, uint32_t vid);

/**
 * Removes from a group every VLAN that the table has in it.
 *
 * Driver calls, results ignored: user_stg_vlan_remove(stg, vid) for each such VLAN in ascending order, whose table
 * entry becomes 0; then user_stg_stp_set(stg, port, 4) for each of user ports 1 to 26.
 *
 * @param stg  MST instance number; the table's entries are 16 bits wide and compared signed
 * @return 0
 */
adp_status_t adp_del_msti_all_member(int32_t stg);

/**
 * Sets a port's state in a group.
 *
 * Driver call: user_stg_stp_set(stg, port, state), on an aggregation interface for each active member in list order.
 * The first failure there prints "%s set tMstId %d tIntfId %d atMemList[%d] %d fail. \n" with instance, interface, the
 * member's place and the member.
 *
 * @param stg    MST instance number; 0..15 on the virtual device
 * @param intf   user port or aggregation interface
 * @param state  enum adp_stg_state
 * @return the driver's result, for a group that of the first member that failed (members before it keep the new state);
 *         0 for a group without members; -1 for a group of nine members or more or outside 1..8; -1 for another type
 */
adp_status_t adp_set_port_mstp_state(int32_t stg, adp_intf_t intf, uint32_t state);

/**
 * Reads a port's state in a group.
 *
 * Driver call: user_stg_stp_get(stg, port, state). A negative result is reported: "%s %d: get max support stg number
 * failed. ret=%d\n".
 *
 * @param stg         MST instance number; 0..15 on the virtual device
 * @param intf        user port; any other interface is passed on as physical port -1
 * @param[out] state  written by the driver, enum adp_stg_state
 * @return the driver's result
 */
adp_status_t adp_stg_stp_get(int32_t stg, adp_intf_t intf, uint32_t *state);

/**
 * Gives the number of groups that are supported: always 16, whatever the driver's count.
 *
 * Driver call: user_stg_max_support_count_get(count). A negative result is reported: "%s %d: get max support stg number
 * failed\n".
 *
 * @param[out] count  16; unchanged after a negative result
 * @return the driver's result
 */
adp_status_t adp_get_max_support_stg(uint32_t *count);

/**
 * Gives the number of entries that the L2 table can hold: always 8192, whatever the driver's number.
 *
 * Driver call: user_l2_cache_size_get(size). A failure is reported: "%s %d: get l2 cache size failed. ret=%d\n".
 *
 * @param[out] size  8192; unchanged after a failure
 * @return the driver's result
 */
adp_status_t adp_get_l2_cache_size(uint32_t *size);

/**
 * Gives the default group: always 0, whatever the driver's number.
 *
 * Driver call: user_stg_default_get(stg). A failure is reported: "%s %d: stg vlan list failed. ret=%d\n".
 *
 * @param[out] stg  0; after a failure the number that the driver wrote
 * @return the driver's result
 */
adp_status_t adp_stg_default_get(uint32_t *stg);

/**
 * Reads how many groups exist.
 *
 * Driver call: user_stg_stg_count_get(count). A negative result is reported: "%s %d fail.ret=%d\n".
 *
 * @return the count, or the driver's negative result
 */
int32_t adp_get_max_stg(void);

/**
 * Reads a chunk of the group numbers.
 *
 * Driver call: user_stg_each_time_list(groups, chunk_index, chunk_size). A negative result is reported: "%s %d
 * fail.ret=%d\n".
 *
 * @param[out] groups  written by the driver: group numbers, 0..15 on the virtual device, from place chunk_index *
 *                     chunk_size on
 * @param chunk_index  which chunk, 0 for the first
 * @param chunk_size   number of group numbers in a chunk
 * @return the driver's result
 */
adp_status_t adp_get_stg_each_time_list(ADP_COUNT(chunk_size) int32_t *groups, uint32_t chunk_index,
                                        uint32_t chunk_size);

/**
 * Reads a chunk of a group's VLANs.
 *
 * Driver call: user_stg_vlan_each_time_list(stg, vids, chunk_index, chunk_size). A negative result is reported: "%s %d
 * fail.stg %d ret=%d\n".
 *
 * @param stg          group number; 0..15 on the virtual device
 * @param[out] vids    VLAN ids from place chunk_index * chunk_size on
 * @param chunk_index  which chunk, 0 for the first
 * @param chunk_size   number of VLAN ids in a chunk
 * @return the driver's result
 */
adp_status_t adp_get_stg_vlan_each_time_list(int32_t stg, ADP_COUNT(chunk_size) uint16_t *vids, uint32_t chunk_index,
                                             uint32_t chunk_size);

/**
 * Reads how many VLANs a group has.
 *
 * Driver call: user_stg_vlan_count_get(stg, count). A negative result is reported: "%s %d fail.stg:%d ret=%d\n".
 *
 * @param stg  group number; 0..15 on the virtual device
 * @return the count, or the driver's negative result
 */
int32_t adp_get_stg_max_vlan(int32_t stg);

/**
 * Lists a group's VLANs.
 *
 * Calls in this order: adp_get_max_stg(); adp_get_stg_each_time_list() in chunks of 64, one chunk more than the full
 * ones; for the wanted group adp_get_stg_max_vlan() and adp_get_stg_vlan_each_time_list() in chunks of 1024, again one
 * more than the full ones. Each of these is copied to the caller before the next is read. A failed chunk counts as
 * zeros. Without groups "%s %d: get STG count failed! STG count=%d\n" is printed on standard error.
 *
 * @param stg        group number; 0..15 on the virtual device
 * @param[out] vids  VLAN ids, as many as the result says
 * @return the number of VLAN ids; 0 without groups, for a number that no group has, and when the chip reports more than
 *         64 groups or 4096 VLANs; the driver's negative result when the number of VLANs could not be read
 */
int32_t adp_get_stg_vlan_list(int32_t stg, uint16_t vids[ADP_VLANS]);

/**
 * Makes the driver create a list of a group's VLANs.
 *
 * Driver call: user_stg_vlan_list(stg, list, count). A failure is reported: "%s %d: stg vlan list failed. ret=%d\n".
 *
 * @param stg         group number; 0..15 on the virtual device
 * @param[out] list   written by the driver: its handle, to be given to adp_stg_vlan_list_destroy()
 * @param[out] count  written by the driver: number of VLANs in the list
 * @return the driver's result
 */
adp_status_t adp_stg_vlan_list(int32_t stg, adp_word_t *list, int32_t *count);

/**
 * Frees a list of VLANs.
 *
 * Driver call: user_stg_vlan_list_destroy(list, count). A failure is reported: "%s %d: stg vlan list destroy failed.
 * ret=%d\n".
 *
 * @param list   handle from adp_stg_vlan_list()
 * @param count  count from the same call
 * @return the driver's result
 */
adp_status_t adp_stg_vlan_list_destroy(adp_word_t list, int32_t count);

/**
 * Makes the driver create a list of the groups.
 *
 * Driver call: user_stg_list(list, count). A failure is reported: "%s %d: stg vlan list destroy failed. ret=%d\n".
 *
 * @param[out] list   written by the driver: its handle, to be given to adp_stg_list_destroy()
 * @param[out] count  written by the driver: number of groups in the list
 * @return the driver's result
 */
adp_status_t adp_stg_list(adp_word_t *list, int32_t *count);

/**
 * Frees a list of groups.
 *
 * Driver call: user_stg_list_destroy(list, count). A failure is reported: "%s %d: stg vlan list destroy failed.
 * ret=%d\n".
 *
 * @param list   handle from adp_stg_list()
 * @param count  count from the same call
 * @return the driver's result
 */
adp_status_t adp_stg_list_destroy(adp_word_t list, int32_t count);

/**
 * Sets a ring port's state: its state in group 0, and so for every VLAN that is in no other group.
 *
 * Driver call: user_stg_stp_set(0, port, state), on an aggregation interface for each active member.
 *
 * @param intf   user port or aggregation interface
 * @param state  enum adp_stg_state
 * @return user port: the driver's result; aggregation interface: 0, 102 at the first failure; 201 for another type, -1
 *         for a group outside 1..8
 */
adp_status_t adp_set_port_erps_state(adp_intf_t intf, uint32_t state);

/**
 * Reads a ring port's state.
 *
 * Driver call: user_stg_stp_get(0, port, state). A negative result is reported: "%s %d: get max support stg number
 * failed. ret=%d\n".
 *
 * @param intf        user port; any other interface is passed on as physical port -1
 * @param[out] state  written by the driver, enum adp_stg_state
 * @return the driver's result
 */
adp_status_t adp_get_port_erps_state(adp_intf_t intf, uint32_t *state);

ADP_END_DECLS
