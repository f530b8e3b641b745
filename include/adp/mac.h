/**
 * @file mac.h
 * The chip's MAC address (L2) table: adding, reading and deleting entries, learning limits and ageing.
 *
 * The library keeps no table of its own. User ports become physical ports and aggregation interfaces trunk ids (group
 * number minus 1); an interface that does not translate is passed on as physical port -1. VLAN ids are cut to their low
 * 16 bits. A MAC address goes to the driver as an 8-byte key: the address and two zero bytes. "The driver's result" is
 * its result unchanged. "Passed through" marks an argument whose meaning is the driver's, and so is its name. A call
 * that needs the tables of an aggregation group outside 1..8 returns -1 and makes no driver call; a call that needs
 * only the trunk id computes it and passes it on.
 *
 * Driver calls are written with all their arguments: not all begin with unit and 0.
 */
#pragma once

#include <adp/types.h>

ADP_BEGIN_DECLS

#define ADP_MAC_BYTES 6 /**< a MAC address, in network order */

#define ADP_MAC_FLAG_STATIC 0x8     /**< the entry is static; on the virtual device */
#define ADP_MAC_FLAG_DROP_TO 0x10   /**< frames to the address are dropped; on the virtual device */
#define ADP_MAC_FLAG_DROP_FROM 0x20 /**< frames from the address are dropped; on the virtual device */

#define ADP_MAC_FOUND_TRUNK 0x80     /**< flag of an entry that was looked up: it points to a trunk */
#define ADP_MAC_NO_LIMIT 0xFFFFFFFFu /**< limit on learned addresses: none; on the virtual device */

/** Which entries a delete call deletes: the low byte of its mode. Any other mode is refused with 101. */
enum adp_mac_mode {
    ADP_MAC_DYNAMIC = 0, /**< learned entries */
    ADP_MAC_STATIC = 1,  /**< static entries */
    ADP_MAC_ALL = 2      /**< both */
};

/** What a learning limit is for. Any other scope is refused with 101. */
enum adp_mac_scope {
    ADP_MAC_SCOPE_VLAN = 0,  /**< a VLAN */
    ADP_MAC_SCOPE_INTF = 1,  /**< a user port or an aggregation interface */
    ADP_MAC_SCOPE_SYSTEM = 2 /**< the whole chip */
};

/**
 * Adds an entry for a MAC address.
 *
 * Driver call: user_mac_addr_add(0, entry), the entry zero except for address, VLAN, destination and flags. For a user
 * port these are its physical port, and flags 0x8 for a static entry, otherwise 0; for an aggregation interface the
 * physical port of its management interface, its trunk id, and flags 0x9 for a static entry, otherwise 0x1.
 *
 * @param mac        MAC address
 * @param intf       user port or aggregation interface
 * @param vid        VLAN id, low 16 bits used
 * @param is_static  1 in the low byte for a static entry
 * @return the driver's result; without a driver call 201 for another type, -1 for a group outside 1..8
 */
adp_status_t adp_add_mac_addr(const uint8_t mac[ADP_MAC_BYTES], adp_intf_t intf, uint32_t vid, uint32_t is_static);

/**
 * Adds an entry for a MAC address with flags that the caller gives, for instance to filter the address. The order of
 * the arguments differs from adp_add_mac_addr().
 *
 * Driver call: user_mac_addr_add(0, entry), the entry zero except for address, VLAN, destination and flags. The
 * destination is the physical port of a user port; for an aggregation interface the trunk id alone, with flag 0x1
 * added.
 *
 * @param intf   user port or aggregation interface; the group's number is not checked
 * @param mac    MAC address
 * @param vid    VLAN id, low 16 bits used
 * @param flags  the driver's flags, low byte used: ADP_MAC_FLAG_...
 * @return the driver's result; 201 without a driver call for another type
 */
adp_status_t adp_filter_mac_addr(adp_intf_t intf, const uint8_t mac[ADP_MAC_BYTES], uint32_t vid, uint32_t flags);

/**
 * Adds a multicast entry: frames to the address in the VLAN go to the ports of a bitmap.
 *
 * The bitmap is translated to physical ports; ports that do not translate are dropped. Driver call:
 * user_mac_mcast_addr_add(0, entry), the entry zero except for address, VLAN and ports.
 *
 * @param mac    group MAC address
 * @param ports  bit n for user port n
 * @param vid    VLAN id, low 16 bits used
 * @param kind   1 in the low byte; every other kind is refused
 * @return the driver's result; -1 without a driver call for another kind
 */
adp_status_t adp_add_mac_mcast_addr(const uint8_t mac[ADP_MAC_BYTES], uint64_t ports, uint32_t vid, uint32_t kind);

/**
 * Reads an address's entry.
 *
 * Driver call: user_mac_addr_get(0, key, vid, entry). The output is written whatever the driver's result, from an entry
 * that was zeroed before; its port is then the number of the user port with that physical port, -1 when there is none.
 *
 * @param mac         MAC address
 * @param vid         VLAN id, low 16 bits used
 * @param[out] entry  the entry
 * @return the driver's result
 */
adp_status_t adp_get_mac_addr(const uint8_t mac[ADP_MAC_BYTES], uint32_t vid, adp_l2_entry_t *entry);

/**
 * Reads a multicast entry; its ports stay physical.
 *
 * Driver call: user_mac_mcast_addr_get(0, key, vid, entry). The output is written whatever the driver's result, from an
 * entry that was zeroed before.
 *
 * @param mac         group MAC address
 * @param vid         VLAN id, low 16 bits used
 * @param[out] entry  the entry
 * @return the driver's result
 */
adp_status_t adp_get_mac_mcast_addr(const uint8_t mac[ADP_MAC_BYTES], uint32_t vid, adp_l2_entry_t *entry);

/**
 * Finds the interface behind which an address is.
 *
 * Driver call: user_mac_addr_get(0, key, vid, entry), whose flag 0x80 means that the entry points to a trunk. The
 * output is written whatever the driver's result, from an entry that was zeroed before: after a failure that is the
 * user port with physical port 0.
 *
 * @param mac        MAC address
 * @param vid        VLAN id, low 16 bits used
 * @param[out] intf  the trunk's aggregation interface, or the user port; -1 for a port without a map row
 * @return the driver's result
 */
adp_status_t adp_get_intf_by_addr(const uint8_t mac[ADP_MAC_BYTES], uint32_t vid, adp_intf_t *intf);

/**
 * Finds the interface behind which an address is, and the flags of its entry. Otherwise as adp_get_intf_by_addr().
 *
 * @param mac         MAC address
 * @param vid         VLAN id, low 16 bits used
 * @param[out] intf   the trunk's aggregation interface, or the user port
 * @param[out] flags  the entry's flags: bits of ADP_MAC_FLAG_..., and ADP_MAC_FOUND_TRUNK
 * @return the driver's result
 */
adp_status_t adp_get_intf_flags_by_addr(const uint8_t mac[ADP_MAC_BYTES], uint32_t vid, adp_intf_t *intf,
                                        uint32_t *flags);

/**
 * Finds an address's place in the L2 table.
 *
 * Driver call: user_mac_addr_get(0, key, vid, entry). The output is written whatever the driver's result.
 *
 * @param mac         MAC address
 * @param vid         VLAN id, low 16 bits used
 * @param[out] index  L2 table index, 0 after a failure
 * @return the driver's result
 */
adp_status_t adp_get_l2_index_by_addr(const uint8_t mac[ADP_MAC_BYTES], uint32_t vid, uint32_t *index);

/**
 * Finds the next valid entry of the L2 table.
 *
 * Driver call: user_netlink_mac_nextValidAddr_get(0, index, entry, option).
 *
 * @param index       passed through; on the virtual device the table index at which the search starts, 0..8191
 * @param[out] entry  written by the driver; on the virtual device the first valid entry at or after the index
 * @param unused      not used
 * @param option      passed through; ignored by the virtual device
 * @return the driver's result
 */
adp_status_t adp_get_nextvalid_mac_addr(adp_word_t index, adp_l2_entry_t *entry, adp_word_t unused, adp_word_t option);

/**
 * Deletes an address's entry from a VLAN. Driver call: user_mac_addr_delete(0, key, vid, option).
 *
 * @param mac     MAC address
 * @param vid     VLAN id, low 16 bits used
 * @param unused  not used
 * @param option  passed through; ignored by the virtual device
 * @return the driver's result
 */
adp_status_t adp_del_mac_addr(const uint8_t mac[ADP_MAC_BYTES], uint32_t vid, uint32_t unused, adp_word_t option);

/**
 * Deletes a multicast entry from a VLAN. Driver call: user_mac_mcast_addr_delete(0, key, vid, option).
 *
 * @param mac     group MAC address
 * @param vid     VLAN id, low 16 bits used
 * @param unused  not used
 * @param option  passed through; ignored by the virtual device
 * @return the driver's result
 */
adp_status_t adp_del_mac_mcast_addr(const uint8_t mac[ADP_MAC_BYTES], uint32_t vid, uint32_t unused, adp_word_t option);

/**
 * Deletes the entries of a learn type. Driver call: user_l2_addr_del_all_addr_by_lrntype(0, 0, learn_type).
 *
 * @param learn_type  the driver's learn type, low byte used; enum adp_mac_mode on the virtual device
 * @return the driver's result
 */
adp_status_t adp_del_mac_by_lrntype(uint32_t learn_type);

/**
 * Deletes a VLAN's entries.
 *
 * Driver call by mode: user_l2_addr_delete_by_vlan(0, 0, vid, 0); user_l2_addr_delete_static_by_vlan(0, 0, vid, 0);
 * user_l2_addr_delete_by_vlan(0, 0, vid, 1).
 *
 * @param vid   VLAN id, low 16 bits used
 * @param mode  enum adp_mac_mode, low byte used
 * @return the driver's result; 101 without a driver call for another mode
 */
adp_status_t adp_del_mac_addr_by_vlan(uint32_t vid, uint32_t mode);

/**
 * Deletes an address's entries in all VLANs.
 *
 * Driver call by mode: user_l2_addr_delete_by_mac(0, 0, key, 0); user_l2_addr_delete_static_by_mac(0, 0, key, 0);
 * user_l2_addr_delete_by_mac(0, 0, key, 1).
 *
 * @param mac   MAC address
 * @param mode  enum adp_mac_mode, low byte used
 * @return the driver's result; 101 without a driver call for another mode
 */
adp_status_t adp_del_mac_addr_by_mac(const uint8_t mac[ADP_MAC_BYTES], uint32_t mode);

/**
 * Deletes an interface's entries.
 *
 * Driver call by mode: user_l2_addr_delete_by_port(0, 0, -1, port, 0); user_l2_addr_delete_static_by_port(0, 0, -1,
 * port); user_l2_addr_delete_by_port(0, 0, -1, port, 1). On an aggregation interface it is made for each active member
 * in list order, failures not stopping it; the trunk's own entries are not deleted.
 *
 * @param intf  user port or aggregation interface
 * @param mode  enum adp_mac_mode, low byte used
 * @return the driver's result, for a group that of the last member; 201 for another type, whatever the mode; -1 for a
 *         group without members or outside 1..8; 101 for another mode. The last three make no driver call.
 */
adp_status_t adp_del_mac_addr_by_intf(adp_intf_t intf, uint32_t mode);

/**
 * Deletes an interface's entries in a VLAN.
 *
 * Driver call by mode for a user port: user_l2_addr_delete_by_vlan_port(0, 0, vid, -1, port, 0);
 * user_l2_addr_delete_static_by_vlan_port(0, 0, vid, port); user_l2_addr_delete_by_vlan_port(0, 0, vid, -1, port, 1).
 * For an aggregation interface: user_l2_addr_delete_by_vlan_trunk(0, 0, vid, trunk, 0), with 1 in the other two modes.
 *
 * @param vid   VLAN id, low 16 bits used
 * @param intf  user port or aggregation interface; the group's number is not checked
 * @param mode  enum adp_mac_mode, low byte used
 * @return the driver's result; -1 for an aggregation interface in mode 1, whatever the driver's result; 201 for another
 *         type, else 101 for another mode, both without a driver call
 */
adp_status_t adp_del_mac_addr_by_vlan_intf(uint32_t vid, adp_intf_t intf, uint32_t mode);

/**
 * Deletes an address's entries on a user port.
 *
 * Driver call by mode: user_l2_addr_delete_dynaic_by_mac_port(0, 0, key, port, option);
 * user_l2_addr_delete_static_by_mac_port(0, 0, key, port, option); user_l2_addr_delete_all_by_mac_port(0, 0, key,
 * port).
 *
 * @param intf    user port
 * @param mac     MAC address
 * @param mode    enum adp_mac_mode, low byte used
 * @param option  passed through; ignored by the virtual device
 * @return the driver's result; without a driver call -1 for an aggregation interface, 201 for another type, 101 for
 *         another mode
 */
adp_status_t adp_del_mac_addr_by_intf_mac(adp_intf_t intf, const uint8_t mac[ADP_MAC_BYTES], uint32_t mode,
                                          adp_word_t option);

/**
 * Deletes an address's entry in a VLAN from the trunk that a port belongs to. The interface is translated as a user
 * port.
 *
 * Driver call by mode: user_l2_addr_delete_trunk_dynamic_by_port_mac_vlan(0, 0, key, port, vid);
 * user_l2_addr_delete_trunk_static_by_port_mac_vlan(0, 0, key, port, vid);
 * user_l2_addr_delete_all_dynamic_by_port_mac_vlan(0, 0, key, port, vid).
 *
 * @param intf  user port
 * @param mac   MAC address
 * @param mode  enum adp_mac_mode, low byte used
 * @param vid   VLAN id, low 16 bits used
 * @return the driver's result; 101 without a driver call for another mode
 */
adp_status_t adp_del_mac_addr_by_trunkid_mac_vlan(adp_intf_t intf, const uint8_t mac[ADP_MAC_BYTES], uint32_t mode,
                                                  uint32_t vid);

/**
 * Forgets the addresses that violated a user port's learning limit. Driver call: user_mac_violate_del_by_port(port).
 *
 * @param intf  user port
 * @return the driver's result
 */
adp_status_t adp_del_port_violate_mac_addr_by_intf(adp_intf_t intf);

/**
 * Limits the number of learned addresses.
 *
 * Driver call: user_mac_learn_limit_set(0, record), the record zero except for the limit and the scope: for a VLAN
 * flags 0x2 and the VLAN id; for a user port 0x4 and the physical port, for an aggregation interface 0x8 and the trunk
 * id, for another type no flag; for the system 0x1.
 *
 * @param limit        number of addresses; ADP_MAC_NO_LIMIT is none on the virtual device
 * @param vid_or_intf  for scope 0 a VLAN id, low 16 bits used; for scope 1 an interface; for scope 2 not used
 * @param scope        enum adp_mac_scope
 * @return the driver's result; 101 without a driver call for another scope
 */
adp_status_t adp_set_mac_limit(uint32_t limit, uint32_t vid_or_intf, uint32_t scope);

/**
 * Reads a limit on the number of learned addresses.
 *
 * Driver call: user_mac_learn_limit_get(0, record), the record as in adp_set_mac_limit() with limit 0. The output is
 * written whatever the driver's result.
 *
 * @param[out] limit   number of addresses; ADP_MAC_NO_LIMIT is none on the virtual device
 * @param vid_or_intf  as in adp_set_mac_limit()
 * @param scope        enum adp_mac_scope
 * @return the driver's result; 101 without a driver call or output for another scope
 */
adp_status_t adp_get_mac_limit(uint32_t *limit, uint32_t vid_or_intf, uint32_t scope);

/**
 * Sets the ageing time. Driver call: user_mac_age_time_set(0, seconds).
 *
 * @param seconds  seconds until an address that sends no frame is forgotten (IEEE 802.1Q, ageing time); 0 turns ageing
 *                 off on the virtual device
 * @return the driver's result
 */
adp_status_t adp_set_mac_age_time(uint32_t seconds);

/**
 * Reads the ageing time. Driver call: user_mac_age_time_get(0, seconds).
 *
 * @param[out] seconds  seconds, written by the driver
 * @return the driver's result
 */
adp_status_t adp_get_mac_age_time(uint32_t *seconds);

/**
 * Has the driver show the MAC address table. Driver call: user_mac_table_show(0, vid, option, option2).
 *
 * @param vid      passed through, whole; on the virtual device a VLAN id, or 0 for all VLANs
 * @param unused   not used
 * @param option   passed through; ignored by the virtual device
 * @param option2  passed through; ignored by the virtual device
 * @return the driver's result
 */
adp_status_t adp_traverse_mac_table(adp_word_t vid, adp_word_t unused, adp_word_t option, adp_word_t option2);

/**
 * Has the driver show the multicast entries. Driver call: user_mac_mcast_table_show(0, vid, option, option2).
 *
 * @param vid      passed through, whole; on the virtual device a VLAN id, or 0 for all VLANs
 * @param unused   not used
 * @param option   passed through; ignored by the virtual device
 * @param option2  passed through; ignored by the virtual device
 * @return the driver's result
 */
adp_status_t adp_traverse_mac_mcast_table(adp_word_t vid, adp_word_t unused, adp_word_t option, adp_word_t option2);

/**
 * Reads how many addresses are learned on a user port. Driver call: user_mac_learn_count_get_by_port(port, count).
 *
 * @param intf        user port
 * @param[out] count  written by the driver: number of addresses
 * @return the driver's result
 */
adp_status_t adp_get_mac_learn_count_by_intf(adp_intf_t intf, uint32_t *count);

/**
 * Reads how many addresses violated a user port's learning limit. Driver call: user_mac_violate_count_get_by_port(port,
 * count).
 *
 * @param intf        user port
 * @param[out] count  written by the driver: number of addresses
 * @return the driver's result
 */
adp_status_t adp_get_mac_violate_count_by_intf(adp_intf_t intf, uint32_t *count);

/**
 * Reads the L2 table in bulk. The driver alone knows what the four words are; the virtual device refuses the call.
 *
 * Driver call: user_l2_mactable_fread(first, second, third, fourth).
 *
 * @param first   passed through; the virtual device refuses the call
 * @param second  passed through; the virtual device refuses the call
 * @param third   passed through; the virtual device refuses the call
 * @param fourth  passed through; the virtual device refuses the call
 * @return the driver's result
 */
adp_status_t adp_l2_mactable_fread(adp_word_t first, adp_word_t second, adp_word_t third, adp_word_t fourth);

/**
 * Asks whether VLANs have multicast entries.
 *
 * Driver call: user_is_mcast_addr_exist_by_vlan(0, vid, last_vid, option).
 *
 * @param vid       VLAN id, low 16 bits used
 * @param last_vid  passed through, low 16 bits used; on the virtual device the last VLAN id of a range, or 0 for one
 *                  VLAN
 * @param unused    not used
 * @param option    passed through; ignored by the virtual device
 * @return the driver's result
 */
adp_status_t adp_is_mcast_addr_exist_by_vlan(uint32_t vid, uint32_t last_vid, adp_word_t unused, adp_word_t option);

/**
 * Asks whether a VLAN has multicast entries. Driver call: user_is_mcast_addr_exist_vlan_is(0, vid, option, option2).
 *
 * @param vid      passed through, whole; on the virtual device a VLAN id, 0 is refused
 * @param unused   not used
 * @param option   passed through; ignored by the virtual device
 * @param option2  passed through; ignored by the virtual device
 * @return the driver's result
 */
adp_status_t adp_is_mcast_addr_exist_by_vlan_ex(adp_word_t vid, adp_word_t unused, adp_word_t option,
                                                adp_word_t option2);

ADP_END_DECLS
