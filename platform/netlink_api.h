/**
 * @file netlink_api.h
 * The calls of libnetlink_api, the closed driver library of the switch chip, that the adaptation layer makes.
 *
 * This header is the only place of these declarations: the library compiles against it, and the recording driver, the
 * remote driver and the call trace are generated from it.
 *
 * For every call, unless its own comment says otherwise:
 * - The result is 0 for success; any other number, mostly a negative one, is a failure.
 * - `unit` is the switch chip, always 0; `zero` is an argument that is always 0; `port` is a physical port of the chip,
 *   -1 when an interface has none; `trunk` is a trunk id (0..7); `vid` is a VLAN id (IEEE 802.1Q), of which the library
 *   passes the low 16 bits.
 * - `key` is a MAC address in network order followed by two zero bytes.
 * - Units and codes are the driver's. "Passed through" marks an argument that the library takes from its caller unseen;
 *   `option` is such an argument whose meaning is not known here.
 *
 * Not all calls begin with unit and zero: the driver library fixes the order of each call's arguments.
 */
#pragma once

#include <adp/types.h>

ADP_BEGIN_DECLS

#define NETLINK_MAC_BYTES 6            /**< a MAC address */
#define NETLINK_MAC_KEY_BYTES 8        /**< a MAC address and two zero bytes */
#define NETLINK_QUEUES 8               /**< egress queues of a port, hence weights of its scheduler */
#define NETLINK_QUALIFIER_BYTES 64     /**< data or mask of a field qualifier that is passed by address */
#define NETLINK_ACTION_PARAM_BYTES 256 /**< parameter of a field action */

#define NETLINK_L2_STATIC 0x8u       /**< adp_l2_entry_t flag on add: the entry is static */
#define NETLINK_L2_TO_TRUNK 0x1u     /**< adp_l2_entry_t flag on add: the destination is a trunk */
#define NETLINK_L2_FOUND_TRUNK 0x80u /**< adp_l2_entry_t flag on look-up: the destination is a trunk */

#define NETLINK_LIMIT_SYSTEM 0x1u /**< netlink_learn_limit_t flag: the limit holds for the whole chip */
#define NETLINK_LIMIT_VLAN 0x2u   /**< netlink_learn_limit_t flag: for a VLAN */
#define NETLINK_LIMIT_PORT 0x4u   /**< netlink_learn_limit_t flag: for a port */
#define NETLINK_LIMIT_TRUNK 0x8u  /**< netlink_learn_limit_t flag: for a trunk */

/** A limit on the number of learned MAC addresses, 24 bytes. */
typedef struct {
    uint32_t flags; /**< scope: one of the NETLINK_LIMIT_ flags; 0 names none */
    uint16_t vid;   /**< VLAN id, for the VLAN scope */
    uint16_t pad;   /**< 0 */
    int32_t port;   /**< physical port, for the port scope */
    int32_t trunk;  /**< trunk id, for the trunk scope */
    uint32_t zero;  /**< 0 */
    uint32_t limit; /**< number of addresses */
} netlink_learn_limit_t;

/** A multicast group's entry, 88 bytes. */
typedef struct {
    uint8_t mac[NETLINK_MAC_BYTES]; /**< group MAC address, network order */
    uint16_t vid;                   /**< VLAN id */
    uint32_t flags;                 /**< the driver's */
    adp_ports_t ports;              /**< member ports; which numbering a call expects is said there */
    uint32_t reserved44[8];         /**< the driver's */
    uint32_t index;                 /**< multicast group index, from look-ups */
    uint32_t reserved80[2];         /**< the driver's */
} netlink_mcast_entry_t;

/*
 * Ports
 */

/** Sets a port's speed in Mb/s; mode is passed through (2 on 10-gigabit ports). */
int32_t user_port_speed_set(uint32_t unit, uint32_t zero, int32_t port, uint32_t speed, uint32_t mode);

/** Reads a port's speed in Mb/s. */
int32_t user_port_speed_get(uint32_t unit, uint32_t zero, int32_t port, uint32_t *speed);

/** Reads a port's highest speed in Mb/s. The library sets speed in one way for 1000, in another for 10000. */
int32_t user_port_speed_max(uint32_t unit, uint32_t zero, int32_t port, uint32_t *speed);

/** Sets a port's duplex: 0 half, 1 full, any other value automatic; mode is passed through. */
int32_t user_port_duplex_set(uint32_t unit, uint32_t zero, int32_t port, uint32_t duplex, uint32_t mode);

/** Reads a port's duplex: 0 half, 1 full. */
int32_t user_port_duplex_get(uint32_t unit, uint32_t zero, int32_t port, uint32_t *duplex);

/** Turns auto-negotiation (IEEE 802.3 clause 28) off (0) or on. */
int32_t user_port_autoneg_set(uint32_t unit, uint32_t zero, int32_t port, uint32_t enable);

/** Reads whether auto-negotiation is on. */
int32_t user_port_autoneg_get(uint32_t unit, uint32_t zero, int32_t port, uint32_t *enable);

/** Writes the abilities a port advertises: bits 31..26 speeds with duplex from 10 half to 1000 full, 25..24 pause. */
int32_t user_port_ability_advert_set(uint32_t unit, uint32_t zero, int32_t port, uint32_t abilities);

/** Reads the abilities a port advertises. */
int32_t user_port_ability_advert_get(uint32_t unit, uint32_t zero, int32_t port, uint32_t *abilities);

/** Sets a port's administrative state: 0 disabled, otherwise enabled. */
int32_t user_port_enable_set(uint32_t unit, uint32_t zero, int32_t port, uint32_t enable);

/** Reads a port's administrative state. */
int32_t user_port_enable_get(uint32_t unit, uint32_t zero, int32_t port, uint32_t *enable);

/** Sets a port's loopback mode. */
int32_t user_port_loopback_set(uint32_t unit, uint32_t zero, int32_t port, uint32_t mode);

/** Reads a port's loopback mode. */
int32_t user_port_loopback_get(uint32_t unit, uint32_t zero, int32_t port, uint32_t *mode);

/** Sets flow control by pause frames (IEEE 802.3 annex 31B), transmit and receive apart: 0 off, otherwise on. */
int32_t user_port_pause_set(uint32_t unit, uint32_t zero, int32_t port, uint32_t transmit, uint32_t receive);

/** Reads the configured flow control of a port. */
int32_t user_port_pause_get(uint32_t unit, uint32_t zero, int32_t port, uint32_t *enable);

/** Reads the flow control in force on a port, after negotiation. */
int32_t user_port_pause_get_stat(uint32_t unit, uint32_t zero, int32_t port, uint32_t *status);

/** Turns jumbo frames off (0) or on for a port. */
int32_t user_port_jumboframe_set(uint32_t unit, uint32_t zero, int32_t port, uint32_t enable);

/** Reads a port's jumbo frame setting. */
int32_t user_port_jumboframe_get(uint32_t unit, uint32_t zero, int32_t port, uint32_t *enable);

/** Sets a copper port's crossover mode (MDI, MDI-X or automatic). */
int32_t user_port_mdix_set(uint32_t unit, uint32_t zero, int32_t port, uint32_t mode);

/** Reads a copper port's crossover mode. */
int32_t user_port_mdix_get(uint32_t unit, uint32_t zero, int32_t port, uint32_t *mode);

/** Reads which medium a port uses, copper or fibre. */
int32_t user_port_link_medium_get(uint32_t unit, uint32_t zero, int32_t port, uint32_t *medium);

/** Reads a port's link status: 0 down, 1 up. */
int32_t user_port_link_status_get(uint32_t unit, uint32_t zero, int32_t port, uint32_t *status);

/** Reads a port's link status as its fibre side sees it: 0 down, otherwise up. */
int32_t user_fiberport_link_status_get(uint32_t unit, uint32_t zero, int32_t port, uint32_t *status);

/** Sets a port's MAC address learning mode; 802.1X uses the modes 0, 5 and 8. */
int32_t user_port_learn_set(uint32_t unit, uint32_t zero, int32_t port, int32_t mode);

/** Reads a port's MAC address learning mode. */
int32_t user_port_learn_get(uint32_t unit, uint32_t zero, int32_t port, uint32_t *mode);

/** Turns Energy-Efficient Ethernet (IEEE 802.3 clause 78) off (0) or on for a port. */
int32_t user_eee_portEnable_set(uint32_t unit, uint32_t zero, int32_t port, uint32_t enable);

/** Reads whether Energy-Efficient Ethernet is on for a port. */
int32_t user_eee_portEnable_get(uint32_t unit, uint32_t zero, int32_t port, uint32_t *enable);

/** Diagnoses the cable on a copper port, pair by pair. */
int32_t User_port_cablediag(uint32_t unit, uint32_t zero, int32_t port, adp_cable_diag_t *result);

/** Sets the physical ports to which a port may forward: a set, by value; module is 0. */
int32_t user_port_egress_set(uint32_t unit, uint32_t zero, int32_t port, uint32_t module, adp_port_set_t egress);

/** Reads the set of physical ports to which a port may forward; module is 0. */
int32_t user_port_egress_get(uint32_t unit, uint32_t zero, int32_t port, uint32_t module, adp_ports_t egress);

/*
 * Trunks (link aggregation, IEEE 802.1AX)
 */

/** Initialises trunking. */
int32_t user_trunk_init(uint32_t unit, uint32_t zero);

/** Creates the trunk with the given id, without ports. */
int32_t user_trunk_create_id(uint32_t unit, uint32_t zero, int32_t trunk);

/** Destroys a trunk. */
int32_t user_trunk_destroy(uint32_t unit, uint32_t zero, int32_t trunk);

/** Sets a trunk's ports: the record's first count port bytes, in hash order. */
int32_t user_trunk_set(uint32_t unit, uint32_t zero, int32_t trunk, adp_agg_record_t record);

/** Hands a group's membership record to the kernel driver, for its own frame path. */
int32_t user_trunk_send_data_to_kernel(uint32_t unit, uint32_t zero, int32_t trunk, adp_agg_record_t record);

/** Sets by which fields of a frame its port in a trunk is chosen. */
int32_t user_trunk_loadbalance_set(uint32_t unit, uint32_t zero, int32_t trunk, uint32_t mode);

/** Turns the trap that sends LACP frames to the CPU off (0) or on; option is passed through. */
int32_t user_trunk_trap_lacp(uint32_t unit, uint32_t zero, uint32_t enable, adp_word_t option);

/*
 * Addresses: single entries of the L2 table
 */

/** Adds an entry for entry.mac in entry.vid, towards entry.port or, with NETLINK_L2_TO_TRUNK, entry.trunk. */
int32_t user_mac_addr_add(uint32_t unit, adp_l2_entry_t entry);

/** Deletes the entry of an address in a VLAN; option is passed through. */
int32_t user_mac_addr_delete(uint32_t unit, const uint8_t key[NETLINK_MAC_KEY_BYTES], uint32_t vid, adp_word_t option);

/** Looks up an address in a VLAN; a failure leaves the entry as it was. */
int32_t user_mac_addr_get(uint32_t unit, const uint8_t key[NETLINK_MAC_KEY_BYTES], uint32_t vid, adp_l2_entry_t *entry);

/** Adds a multicast entry: entry.mac in entry.vid goes to the physical ports of entry.ports. */
int32_t user_mac_mcast_addr_add(uint32_t unit, adp_l2_entry_t entry);

/** Deletes a multicast entry; option is passed through. */
int32_t user_mac_mcast_addr_delete(uint32_t unit, const uint8_t key[NETLINK_MAC_KEY_BYTES], uint32_t vid,
                                   adp_word_t option);

/** Looks up a multicast entry; a failure leaves the entry as it was. */
int32_t user_mac_mcast_addr_get(uint32_t unit, const uint8_t key[NETLINK_MAC_KEY_BYTES], uint32_t vid,
                                adp_l2_entry_t *entry);

/**
 * Finds the first valid entry of the L2 table at or after a table index; the entry's own index is its place. Index and
 * option are passed through. The call fails when no further entry is valid.
 */
int32_t user_netlink_mac_nextValidAddr_get(uint32_t unit, adp_word_t index, adp_l2_entry_t *entry, adp_word_t option);

/*
 * Address deletion: entries of the L2 table that a key picks
 */

/** Deletes all entries of a learn type, a byte. */
int32_t user_l2_addr_del_all_addr_by_lrntype(uint32_t unit, uint32_t zero, uint32_t learn_type);

/** Deletes a VLAN's dynamic entries, with all = 1 its static ones too. */
int32_t user_l2_addr_delete_by_vlan(uint32_t unit, uint32_t zero, uint32_t vid, uint32_t all);

/** Deletes a VLAN's static entries; flags is 0. */
int32_t user_l2_addr_delete_static_by_vlan(uint32_t unit, uint32_t zero, uint32_t vid, uint32_t flags);

/** Deletes an address's dynamic entries in every VLAN, with all = 1 its static ones too. */
int32_t user_l2_addr_delete_by_mac(uint32_t unit, uint32_t zero, const uint8_t key[NETLINK_MAC_KEY_BYTES],
                                   uint32_t all);

/** Deletes an address's static entries in every VLAN; flags is 0. */
int32_t user_l2_addr_delete_static_by_mac(uint32_t unit, uint32_t zero, const uint8_t key[NETLINK_MAC_KEY_BYTES],
                                          uint32_t flags);

/** Deletes a port's dynamic entries, with all = 1 its static ones too; module is -1 (any). */
int32_t user_l2_addr_delete_by_port(uint32_t unit, uint32_t zero, int32_t module, int32_t port, uint32_t all);

/** Deletes a port's static entries; module is -1 (any). */
int32_t user_l2_addr_delete_static_by_port(uint32_t unit, uint32_t zero, int32_t module, int32_t port);

/** Deletes the dynamic entries of a VLAN on a port, with all = 1 the static ones too; module is -1 (any). */
int32_t user_l2_addr_delete_by_vlan_port(uint32_t unit, uint32_t zero, uint32_t vid, int32_t module, int32_t port,
                                         uint32_t all);

/** Deletes the static entries of a VLAN on a port. */
int32_t user_l2_addr_delete_static_by_vlan_port(uint32_t unit, uint32_t zero, uint32_t vid, int32_t port);

/** Deletes the dynamic entries of a VLAN on a trunk, with all = 1 the static ones too. */
int32_t user_l2_addr_delete_by_vlan_trunk(uint32_t unit, uint32_t zero, uint32_t vid, int32_t trunk, uint32_t all);

/**
 * Deletes an address's dynamic entries on a port; option is passed through. The misspelt name is the driver library's.
 */
int32_t user_l2_addr_delete_dynaic_by_mac_port(uint32_t unit, uint32_t zero, const uint8_t key[NETLINK_MAC_KEY_BYTES],
                                               int32_t port, adp_word_t option);

/** Deletes an address's static entries on a port; option is passed through. */
int32_t user_l2_addr_delete_static_by_mac_port(uint32_t unit, uint32_t zero, const uint8_t key[NETLINK_MAC_KEY_BYTES],
                                               int32_t port, adp_word_t option);

/** Deletes an address's entries on a port, dynamic and static. */
int32_t user_l2_addr_delete_all_by_mac_port(uint32_t unit, uint32_t zero, const uint8_t key[NETLINK_MAC_KEY_BYTES],
                                            int32_t port);

/** Deletes an address's dynamic entry in a VLAN on the trunk that a port belongs to. */
int32_t user_l2_addr_delete_trunk_dynamic_by_port_mac_vlan(uint32_t unit, uint32_t zero,
                                                           const uint8_t key[NETLINK_MAC_KEY_BYTES], int32_t port,
                                                           uint32_t vid);

/** Deletes an address's static entry in a VLAN on the trunk that a port belongs to. */
int32_t user_l2_addr_delete_trunk_static_by_port_mac_vlan(uint32_t unit, uint32_t zero,
                                                          const uint8_t key[NETLINK_MAC_KEY_BYTES], int32_t port,
                                                          uint32_t vid);

/** Deletes an address's entry in a VLAN on a port or its trunk, whatever its kind. */
int32_t user_l2_addr_delete_all_dynamic_by_port_mac_vlan(uint32_t unit, uint32_t zero,
                                                         const uint8_t key[NETLINK_MAC_KEY_BYTES], int32_t port,
                                                         uint32_t vid);

/*
 * Address limits: on learning, and the addresses that they refused
 */

/** Forgets the addresses that violated a port's learning limit. No unit. */
int32_t user_mac_violate_del_by_port(int32_t port);

/** Reads how many addresses violated a port's learning limit. No unit. */
int32_t user_mac_violate_count_get_by_port(int32_t port, uint32_t *count);

/** Reads how many addresses are learned on a port. No unit. */
int32_t user_mac_learn_count_get_by_port(int32_t port, uint32_t *count);

/** Sets a limit on learned addresses; the record's flags name the scope. */
int32_t user_mac_learn_limit_set(uint32_t unit, netlink_learn_limit_t limit);

/** Reads a limit on learned addresses: the record's scope goes in, its limit comes out. */
int32_t user_mac_learn_limit_get(uint32_t unit, ADP_INOUT netlink_learn_limit_t *limit);

/*
 * Address table: ageing, display and size of the L2 table, and the reserved addresses
 */

/** Sets the ageing time of dynamic entries in seconds. */
int32_t user_mac_age_time_set(uint32_t unit, uint32_t seconds);

/** Reads the ageing time of dynamic entries in seconds. */
int32_t user_mac_age_time_get(uint32_t unit, uint32_t *seconds);

/**
 * Shows the MAC address table on the device's console. All but the unit is passed through; vid may be 0 for all VLANs.
 */
int32_t user_mac_table_show(uint32_t unit, adp_word_t vid, adp_word_t option, adp_word_t option2);

/**
 * Shows the multicast entries on the device's console. All but the unit is passed through; vid may be 0 for all VLANs.
 */
int32_t user_mac_mcast_table_show(uint32_t unit, adp_word_t vid, adp_word_t option, adp_word_t option2);

/** Reads the L2 table in bulk. No unit: all four arguments are passed through, and their meaning is not known here. */
int32_t user_l2_mactable_fread(adp_word_t first, adp_word_t second, adp_word_t third, adp_word_t fourth);

/** Reads the number of entries that the L2 table can hold. */
int32_t user_l2_cache_size_get(uint32_t unit, uint32_t zero, uint32_t *size);

/** Reads a reserved address (index 0..63) that goes to the CPU; 00:00:00:00:00:00 is a free entry. */
int32_t user_l2_bpdu_get(uint32_t unit, uint32_t zero, uint32_t index, uint8_t mac[NETLINK_MAC_BYTES]);

/** Writes a reserved address (index 0..63) that goes to the CPU; 00:00:00:00:00:00 frees the entry. */
int32_t user_l2_bpdu_set(uint32_t unit, uint32_t zero, uint32_t index, const uint8_t mac[NETLINK_MAC_BYTES]);

/*
 * Groups: multicast entries of the L2 table
 */

/** Initialises the multicast groups. */
int32_t User_mcast_init(uint32_t unit, uint32_t zero);

/** Prepares a group's entry: the address and the VLAN are set, everything else is cleared. No zero. */
int32_t User_mcast_addr_t_init(uint32_t unit, netlink_mcast_entry_t *entry, const uint8_t key[NETLINK_MAC_KEY_BYTES],
                               uint32_t vid);

/** Creates a group; the ports are front-port numbers. */
int32_t User_mcast_addr_add(uint32_t unit, uint32_t zero, const netlink_mcast_entry_t *entry);

/** Deletes a group. */
int32_t User_mcast_addr_remove(uint32_t unit, uint32_t zero, const uint8_t key[NETLINK_MAC_KEY_BYTES], uint32_t vid);

/** Looks up a group; the ports are physical. A failure leaves the entry as it was. */
int32_t User_mcast_port_get(uint32_t unit, uint32_t zero, const uint8_t key[NETLINK_MAC_KEY_BYTES], uint32_t vid,
                            netlink_mcast_entry_t *entry);

/** Adds ports to a group; they are physical. */
int32_t User_mcast_port_add(uint32_t unit, uint32_t zero, const netlink_mcast_entry_t *entry);

/** Removes ports from a group; they are front-port numbers and name those that leave. */
int32_t User_mcast_port_remove(uint32_t unit, uint32_t zero, const netlink_mcast_entry_t *entry);

/** Asks whether VLANs from vid to last_vid have multicast entries; last_vid has 16 bits, and 0 stands for one VLAN. */
int32_t user_is_mcast_addr_exist_by_vlan(uint32_t unit, uint32_t vid, uint32_t last_vid, adp_word_t option);

/** Asks whether a VLAN has multicast entries. All but the unit is passed through. */
int32_t user_is_mcast_addr_exist_vlan_is(uint32_t unit, adp_word_t vid, adp_word_t option, adp_word_t option2);

/*
 * Group rules: what chip and ports do with multicast frames
 */

/** Initialises IGMP snooping (RFC 4541). */
int32_t user_igmp_snooping_init(uint32_t unit, uint32_t zero);

/** Turns forwarding by L2 multicast entries off (0) or on for a port. The port comes second, the zero third. */
int32_t User_switch_port_control_l2mc_enable(uint32_t unit, int32_t port, uint32_t zero, uint32_t enable);

/** Reads whether a port forwards by L2 multicast entries. The port comes second, the zero third. */
int32_t User_switch_port_control_l2mc_get(uint32_t unit, int32_t port, uint32_t zero, uint32_t *enable);

/** Turns forwarding by IPv4 multicast entries off (0) or on for a port. The port comes second, the zero third. */
int32_t User_switch_port_control_ipmc_set(uint32_t unit, int32_t port, uint32_t zero, uint32_t enable);

/** Reads whether a port forwards by IPv4 multicast entries. The port comes second, the zero third. */
int32_t User_switch_port_control_ipmc_get(uint32_t unit, int32_t port, uint32_t zero, uint32_t *enable);

/** Turns IPv4 multicast forwarding off (0) or on (1) for the whole chip. */
int32_t User_switch_ipmc_set(uint32_t unit, uint32_t zero, uint32_t enable);

/** Sets the IPv6 multicast forwarding mode of the whole chip. */
int32_t User_switch_ip6mc_mode_set(uint32_t unit, uint32_t zero, uint32_t mode);

/** Sets what happens to IPv4 multicast frames of unknown groups that a port receives. */
int32_t User_switch_ipmc_lookup_miss_action(uint32_t unit, uint32_t zero, int32_t port, uint32_t action);

/** Sets what happens to IPv6 multicast frames of unknown groups that a port receives. */
int32_t User_switch_ip6mc_lookup_miss_action(uint32_t unit, uint32_t zero, int32_t port, uint32_t action);

/*
 * Switch controls, traps and protections
 */

/** Writes a control of the whole chip by number. */
int32_t user_switch_control_set(uint32_t unit, uint32_t zero, uint32_t control, uint32_t value);

/** Reads a control of the whole chip. */
int32_t user_switch_control_get(uint32_t unit, uint32_t zero, uint32_t control, uint32_t *value);

/**
 * Turns the trap that sends frames for the switch's own MAC address to the CPU off (0) or on; option is passed through.
 */
int32_t user_selfmac_trap_to_cpu(uint32_t unit, uint32_t zero, uint32_t enable, adp_word_t option);

/**
 * Turns the trap that sends Ethernet OAM frames (IEEE 802.3 clause 57) to the CPU off (0) or on; option is passed
 * through.
 */
int32_t user_eoam_trap_set(uint32_t unit, uint32_t zero, uint32_t enable, adp_word_t option);

/** Initialises the handling of LLDP frames (IEEE 802.1AB). */
int32_t user_lldp_init(uint32_t unit, uint32_t zero);

/** Initialises the protection against denial-of-service attacks. */
int32_t user_dos_attack_prevent_init(uint32_t unit, uint32_t zero);

/*
 * Fields: entries and actions of the field processor. These calls begin with a handle, always 0, and then the unit.
 */

/** Initialises the field processor. Begins with unit and zero. */
int32_t user_field_init(uint32_t unit, uint32_t zero);

/** Creates the entry with the given number in a group. */
int32_t user_field_entry_create_id(int32_t handle, uint32_t unit, int32_t group, uint32_t entry);

/** Sets an entry's priority. */
int32_t user_field_entry_prio_set(int32_t handle, uint32_t unit, uint32_t entry, int32_t priority);

/** Joins an entry and the next one into a rule of double width. */
int32_t user_field_set_double_entry(int32_t handle, uint32_t unit, uint32_t entry);

/** Chooses the qualifier template of an entry. The misspelt name is the driver library's. */
int32_t user_field_set_select_tempate_idx(int32_t handle, uint32_t unit, uint32_t entry, uint32_t index);

/** Writes an entry into the hardware. */
int32_t user_field_entry_install(int32_t handle, uint32_t unit, uint32_t entry);

/** Removes an entry from the hardware and frees it. */
int32_t user_field_entry_destroy(int32_t handle, uint32_t unit, uint32_t entry);

/** Adds an action of a type to an entry, with its two parameter blocks. */
int32_t user_field_action_add(int32_t handle, uint32_t unit, uint32_t entry, uint32_t type,
                              const uint8_t param[NETLINK_ACTION_PARAM_BYTES],
                              const uint8_t param2[NETLINK_ACTION_PARAM_BYTES]);

/** Removes all actions of an entry. */
int32_t user_field_action_remove_all(int32_t handle, uint32_t unit, uint32_t entry);

/*
 * Field conditions: what the entries of the field processor match
 */

/** Removes all qualifiers of an entry. */
int32_t user_field_qualify_clear(int32_t handle, uint32_t unit, uint32_t entry);

/** Matches the IPv6 source address: 16 bytes at the start of data and mask. */
int32_t user_field_qualify_SrcIp6(int32_t handle, uint32_t unit, uint32_t entry,
                                  const uint8_t data[NETLINK_QUALIFIER_BYTES],
                                  const uint8_t mask[NETLINK_QUALIFIER_BYTES]);

/** Matches the IPv6 destination address: 16 bytes at the start of data and mask. */
int32_t user_field_qualify_DstIp6(int32_t handle, uint32_t unit, uint32_t entry,
                                  const uint8_t data[NETLINK_QUALIFIER_BYTES],
                                  const uint8_t mask[NETLINK_QUALIFIER_BYTES]);

/** Matches the source MAC address: 6 bytes at the start of data and mask. */
int32_t user_field_qualify_SrcMac(int32_t handle, uint32_t unit, uint32_t entry,
                                  const uint8_t data[NETLINK_QUALIFIER_BYTES],
                                  const uint8_t mask[NETLINK_QUALIFIER_BYTES]);

/** Matches the destination MAC address: 6 bytes at the start of data and mask. */
int32_t user_field_qualify_DstMac(int32_t handle, uint32_t unit, uint32_t entry,
                                  const uint8_t data[NETLINK_QUALIFIER_BYTES],
                                  const uint8_t mask[NETLINK_QUALIFIER_BYTES]);

/** Matches the IPv4 source address. */
int32_t user_field_qualify_SrcIp(int32_t handle, uint32_t unit, uint32_t entry, uint32_t data, uint32_t mask);

/** Matches the IPv4 destination address. */
int32_t user_field_qualify_DstIp(int32_t handle, uint32_t unit, uint32_t entry, uint32_t data, uint32_t mask);

/** Matches the physical ingress port: the frame's port is one of the set's, both sets by value. */
int32_t user_field_qualify_InPorts(int32_t handle, uint32_t unit, uint32_t entry, adp_port_set_t data,
                                   adp_port_set_t mask);

/** Matches the outer VLAN id. */
int32_t user_field_qualify_OuterVlanId(int32_t handle, uint32_t unit, uint32_t entry, uint32_t data, uint32_t mask);

/** Matches the outer tag's priority. */
int32_t user_field_qualify_OuterVlanPri(int32_t handle, uint32_t unit, uint32_t entry, uint32_t data, uint32_t mask);

/** Matches the inner tag's format. */
int32_t user_field_qualify_InnerVlan(int32_t handle, uint32_t unit, uint32_t entry, uint32_t data, uint32_t mask);

/** Matches the inner VLAN id. */
int32_t user_field_qualify_InnerVlanId(int32_t handle, uint32_t unit, uint32_t entry, uint32_t data, uint32_t mask);

/** Matches the inner tag's priority. */
int32_t user_field_qualify_InnerVlanPri(int32_t handle, uint32_t unit, uint32_t entry, uint32_t data, uint32_t mask);

/** Matches the TCP or UDP source port. */
int32_t user_field_qualify_L4SrcPort(int32_t handle, uint32_t unit, uint32_t entry, uint32_t data, uint32_t mask);

/** Matches the TCP or UDP destination port. */
int32_t user_field_qualify_L4DstPort(int32_t handle, uint32_t unit, uint32_t entry, uint32_t data, uint32_t mask);

/** Matches the EtherType behind the tags. */
int32_t user_field_qualify_EtherType(int32_t handle, uint32_t unit, uint32_t entry, uint32_t data, uint32_t mask);

/** Matches the IP protocol number. */
int32_t user_field_qualify_IpProtocol(int32_t handle, uint32_t unit, uint32_t entry, uint32_t data, uint32_t mask);

/** Matches the IPv4 DSCP (RFC 2474), as the whole byte of the header that holds it. */
int32_t user_field_qualify_DSCP(int32_t handle, uint32_t unit, uint32_t entry, uint32_t data, uint32_t mask);

/** Matches the IPv6 traffic class byte. */
int32_t user_field_qualify_Ip6TrafficClass(int32_t handle, uint32_t unit, uint32_t entry, uint32_t data, uint32_t mask);

/** Matches the kind of IP packet (5 IPv4, 10 IPv6 among others); no mask. */
int32_t user_field_qualify_iptype(int32_t handle, uint32_t unit, uint32_t entry, uint32_t data);

/** Matches the frame's encapsulation; no mask. */
int32_t user_field_qualify_FrameType(int32_t handle, uint32_t unit, uint32_t entry, uint32_t data);

/*
 * Field meters, counters, and what happens without a match
 */

/** Sets a meter's rate. Begins with the unit and has no handle. */
int32_t user_field_meter_entry_set(uint32_t unit, uint32_t rate, uint32_t meter);

/** Removes the meter of an entry. */
int32_t user_field_meter_destroy(int32_t handle, uint32_t unit, uint32_t entry);

/** Makes meters leave out the gap between frames. No arguments. */
int32_t user_field_meter_ifg_exclude_init(void);

/** Reads one value of a counter: its frames or its octets, by type. */
int32_t user_field_get_statistics(int32_t handle, uint32_t unit, int32_t counter, int32_t type, int32_t *count);

/** Clears one value of a counter: its frames or its octets, by type. */
int32_t user_field_clear_statistics(int32_t handle, uint32_t unit, int32_t counter, int32_t type);

/** Sets what happens to a port's frames that match no rule. */
int32_t user_field_lookupMissAct_set(int32_t handle, uint32_t unit, int32_t port, uint32_t action);

/*
 * Rates: storm control, ingress limit, egress shaper
 */

/** Limits a port's storm traffic of one type to a rate with a burst. */
int32_t user_rate_bandwidth_set(uint32_t unit, uint32_t zero, int32_t port, uint32_t type, uint32_t rate,
                                uint32_t burst);

/** Reads a port's storm limit of one type. */
int32_t user_rate_bandwidth_get(uint32_t unit, uint32_t zero, int32_t port, uint32_t type, uint32_t *rate,
                                uint32_t *burst);

/** Selects whether a port's storm limit counts traffic of a type (1) or not (0). */
int32_t user_rate_stormsel_set(uint32_t unit, uint32_t zero, int32_t port, uint32_t type, uint32_t selected);

/** Reads whether a port's storm limit counts one type of traffic. */
int32_t user_rate_stormsel_get(uint32_t unit, uint32_t zero, int32_t port, uint32_t type, uint32_t *selected);

/** Turns a port's storm control of one type off (0) or on. */
int32_t user_rate_stormControlEnable_set(uint32_t unit, uint32_t zero, int32_t port, uint32_t type, uint32_t enable);

/**
 * Reads whether a port's storm limit was exceeded. The storm code is the management software's (adp/storm.h), not the
 * driver's type.
 */
int32_t user_rate_stormExceedFlag_get(uint32_t unit, uint32_t zero, int32_t port, uint32_t storm_code, uint32_t *flag);

/** Clears a port's storm-exceeded flags. */
int32_t user_rate_stormExceedFlag_reset(uint32_t unit, uint32_t zero, int32_t port);

/** Sets how storm limits count. The storm code arrives cut to 8 bits. */
int32_t user_rate_stormCountMode_set(uint32_t unit, uint32_t zero, uint32_t storm_code, uint32_t mode);

/** Reads how storm limits count. The storm code is passed through whole. */
int32_t user_rate_stormCountMode_get(uint32_t unit, uint32_t zero, uint32_t storm_code, uint32_t *mode);

/** Limits what a port receives to a rate with a burst. */
int32_t user_port_ingress_rate_set(uint32_t unit, uint32_t zero, int32_t port, uint32_t rate, uint32_t burst);

/** Reads a port's ingress limit. */
int32_t user_port_ingress_rate_get(uint32_t unit, uint32_t zero, int32_t port, uint32_t *rate, uint32_t *burst);

/** Shapes what a port sends to a rate with a burst. */
int32_t user_port_egress_rate_set(uint32_t unit, uint32_t zero, int32_t port, uint32_t rate, uint32_t burst);

/** Reads a port's egress shaper. */
int32_t user_port_egress_rate_get(uint32_t unit, uint32_t zero, int32_t port, uint32_t *rate, uint32_t *burst);

/*
 * Queues: their number, the queue of a priority, schedulers, and what start-up sets of them and of priorities
 */

/** Sets the number of egress queues (classes of service) of the chip. */
int32_t user_cosq_config_set(uint32_t unit, uint32_t zero, uint32_t queues);

/** Sets the queue of an 802.1p priority. */
int32_t user_cosq_mapping_set(uint32_t unit, uint32_t zero, uint32_t priority, uint32_t queue);

/** Reads the queue of an 802.1p priority. */
int32_t user_cosq_mapping_get(uint32_t unit, uint32_t zero, uint32_t priority, uint32_t *queue);

/** Sets the queue of a priority on one port. */
int32_t user_cosq_port_mapping_set(uint32_t unit, uint32_t zero, int32_t port, uint32_t priority, uint32_t queue);

/** Reads the queue of a priority on one port. */
int32_t user_cosq_port_mapping_get(uint32_t unit, uint32_t zero, int32_t port, uint32_t priority, uint32_t *queue);

/** Sets the scheduler of the ports in a mask (bit n is front port n): mode, weights from queue 0 up, delay. */
int32_t user_cosq_port_sched_set(uint32_t unit, uint32_t zero, uint32_t port_mask, uint32_t mode,
                                 const uint32_t weights[NETLINK_QUEUES], uint32_t delay);

/** Reads the scheduler of the ports in a mask (bit n is front port n). */
int32_t user_cosq_port_sched_get(uint32_t unit, uint32_t zero, uint32_t port_mask, uint32_t *mode,
                                 uint32_t weights[NETLINK_QUEUES], uint32_t *delay);

/** Sets the weight of a port's queue. No unit: all four arguments are passed through. */
int32_t user_qos_schedule_set(uint32_t port, uint32_t queue, uint32_t weight, uint32_t flags);

/** Reads the weight of a port's queue. No unit: all four arguments are passed through. */
int32_t user_qos_schedule_get(uint32_t port, uint32_t queue, uint32_t *weight, uint32_t flags);

/** Initialises the source of a frame's default class of service: its port. No arguments. */
int32_t user_qos_default_cos_src_init(void);

/** Initialises the source of the inner tag's remark. No arguments. */
int32_t user_qos_remark_inner_tag_src_init(void);

/** Sets up the groups of trusted priority sources. No arguments. */
int32_t user_qos_trust_sel_group_init(void);

/** Sets the weights of the CPU port's queues. No arguments. */
int32_t user_qos_cpu_weight_init(void);

/** Sets the queue of a priority. All four arguments are passed through whole. */
int32_t user_qos_pri_queue_map_set(adp_word_t unit, adp_word_t zero, adp_word_t priority, adp_word_t queue);

/** Reads the queue of a priority. All four arguments are passed through whole. */
int32_t user_qos_pri_queue_map_get(adp_word_t unit, adp_word_t zero, adp_word_t priority, uint32_t *queue);

/*
 * Priorities: where they come from and how they are mapped
 */

/** Sets the priority of a DSCP. All four arguments are passed through whole. */
int32_t user_qos_dscp_map_set(adp_word_t unit, adp_word_t zero, adp_word_t dscp, adp_word_t priority);

/** Reads the priority of a DSCP. All four arguments are passed through whole. */
int32_t user_qos_dscp_map_get(adp_word_t unit, adp_word_t zero, adp_word_t dscp, uint32_t *priority);

/** Remaps a priority in the tags of frames that a port receives. All but the unit is passed through. */
int32_t user_qos_pri_remap_set(uint32_t unit, adp_word_t port, adp_word_t priority, adp_word_t new_priority,
                               adp_word_t option, adp_word_t option2, adp_word_t option3, adp_word_t option4);

/** Sets a port's class of service. No unit. */
int32_t user_qos_port_cos_set(int32_t port, uint32_t cos);

/** Reads a port's class of service. No unit. */
int32_t user_qos_port_cos_get(int32_t port, uint32_t *cos);

/**
 * Sets a row of a DSCP map: the DSCP that the frame leaves with, and its priority. Port -1 is every port; dscp and
 * mapped of -1 are the power-on row of every DSCP.
 */
int32_t user_port_dscp_map_set(uint32_t unit, uint32_t zero, int32_t port, int32_t dscp, int32_t mapped,
                               uint32_t priority);

/** Reads a row of a DSCP map, a byte each; port -1 is the row of every port. */
int32_t user_port_dscp_map_get(uint32_t unit, uint32_t zero, int32_t port, int32_t dscp, uint8_t *mapped,
                               uint8_t *priority);

/** Sets which priority of a frame a port trusts. */
int32_t user_port_dscp_map_mode_set(uint32_t unit, uint32_t zero, int32_t port, uint32_t mode);

/** Reads which priority of a frame a port trusts. */
int32_t user_port_dscp_map_mode_get(uint32_t unit, uint32_t zero, int32_t port, uint32_t *mode);

/** Sets the priority of frames that a port receives untagged. */
int32_t user_port_untagged_priority_set(uint32_t unit, uint32_t zero, int32_t port, uint32_t priority);

/** Reads the priority of frames that a port receives untagged. */
int32_t user_port_untagged_priority_get(uint32_t unit, uint32_t zero, int32_t port, uint32_t *priority);

/*
 * Spanning tree (IEEE 802.1Q clause 13)
 */

/** Initialises the spanning-tree groups and turns the trap that sends BPDUs to the CPU on. */
int32_t user_stg_init(uint32_t unit, uint32_t zero);

/** Creates the group with the given id. */
int32_t user_stg_create_id(uint32_t unit, uint32_t zero, int32_t stg);

/** Destroys a group; its VLANs fall back to the default group. */
int32_t user_stg_destroy(uint32_t unit, uint32_t zero, int32_t stg);

/** Moves a VLAN into a group. */
int32_t user_stg_vlan_add(uint32_t unit, uint32_t zero, int32_t stg, uint32_t vid);

/** Moves a VLAN out of a group, back to the default group. */
int32_t user_stg_vlan_remove(uint32_t unit, uint32_t zero, int32_t stg, uint32_t vid);

/** Sets a port's spanning-tree state in a group. */
int32_t user_stg_stp_set(uint32_t unit, uint32_t zero, int32_t stg, int32_t port, uint32_t state);

/** Reads a port's spanning-tree state in a group. */
int32_t user_stg_stp_get(uint32_t unit, uint32_t zero, int32_t stg, int32_t port, uint32_t *state);

/** Reads the default group. */
int32_t user_stg_default_get(uint32_t unit, uint32_t zero, uint32_t *stg);

/** Reads how many groups the chip supports. */
int32_t user_stg_max_support_count_get(uint32_t unit, uint32_t zero, uint32_t *count);

/** Reads how many groups exist. */
int32_t user_stg_stg_count_get(uint32_t unit, uint32_t zero, uint32_t *count);

/** Reads how many VLANs a group has. */
int32_t user_stg_vlan_count_get(uint32_t unit, uint32_t zero, int32_t stg, uint32_t *count);

/*
 * Spanning-tree lists: groups and their VLANs
 */

/** Reads one chunk of the group ids: those from place chunk_index * chunk_size on, at most chunk_size. */
int32_t user_stg_each_time_list(uint32_t unit, uint32_t zero, ADP_COUNT(chunk_size) int32_t *groups,
                                uint32_t chunk_index, uint32_t chunk_size);

/** Reads one chunk of a group's VLAN ids: those from place chunk_index * chunk_size on, at most chunk_size. */
int32_t user_stg_vlan_each_time_list(uint32_t unit, uint32_t zero, int32_t stg, ADP_COUNT(chunk_size) uint16_t *vids,
                                     uint32_t chunk_index, uint32_t chunk_size);

/** Makes a list of the groups: a handle and a count, to be freed with user_stg_list_destroy(). */
int32_t user_stg_list(uint32_t unit, uint32_t zero, adp_word_t *list, int32_t *count);

/** Frees a list of groups. */
int32_t user_stg_list_destroy(uint32_t unit, uint32_t zero, adp_word_t list, int32_t count);

/** Makes a list of a group's VLANs: a handle and a count, to be freed with user_stg_vlan_list_destroy(). */
int32_t user_stg_vlan_list(uint32_t unit, uint32_t zero, int32_t stg, adp_word_t *list, int32_t *count);

/** Frees a list of VLANs. */
int32_t user_stg_vlan_list_destroy(uint32_t unit, uint32_t zero, adp_word_t list, int32_t count);

/*
 * VLANs (IEEE 802.1Q). Port sets are physical; a null set is an empty one.
 */

/** Creates a VLAN. */
int32_t user_vlan_create(uint32_t unit, uint32_t zero, uint32_t vid);

/** Creates the VLANs from a first to a last id. */
int32_t user_vlan_createEx(uint32_t unit, uint32_t zero, uint32_t first_vid, uint32_t last_vid);

/** Destroys a VLAN. */
int32_t user_vlan_destroy(uint32_t unit, uint32_t zero, uint32_t vid);

/** Destroys the VLANs from a first to a last id. */
int32_t user_vlan_destroyEx(uint32_t unit, uint32_t zero, uint32_t first_vid, uint32_t last_vid);

/** Adds ports to a VLAN; those in untagged send its frames without a tag. */
int32_t user_vlan_port_add(uint32_t unit, uint32_t zero, uint32_t vid, const adp_ports_t ports,
                           const adp_ports_t untagged);

/** Adds ports to the VLANs from a first to a last id; those in untagged send their frames without tag. */
int32_t user_vlan_port_addEx(uint32_t unit, uint32_t zero, uint32_t first_vid, uint32_t last_vid,
                             const adp_ports_t ports, const adp_ports_t untagged);

/** Removes ports from a VLAN. */
int32_t user_vlan_port_remove(uint32_t unit, uint32_t zero, uint32_t vid, const adp_ports_t ports);

/** Removes ports from the VLANs from a first to a last id. */
int32_t user_vlan_port_removeEx(uint32_t unit, uint32_t zero, uint32_t first_vid, uint32_t last_vid,
                                const adp_ports_t ports);

/** Sets a VLAN's member ports, and which of them are untagged. */
int32_t user_vlan_port_set(uint32_t unit, uint32_t zero, uint32_t vid, const adp_ports_t members,
                           const adp_ports_t untagged);

/** Reads a VLAN's member ports and its untagged ports; a failure leaves both sets as they were. */
int32_t user_vlan_port_get(uint32_t unit, uint32_t zero, uint32_t vid, ADP_INOUT adp_ports_t members,
                           ADP_INOUT adp_ports_t untagged);

/** Sets the chip's default VLAN. */
int32_t user_vlan_default_set(uint32_t unit, uint32_t zero, uint32_t vid);

/** Reads the chip's default VLAN. */
int32_t user_vlan_default_get(uint32_t unit, uint32_t zero, uint32_t *vid);

/** Sets a port's VLAN for untagged frames (PVID). */
int32_t user_port_untagged_vlan_set(uint32_t unit, uint32_t zero, int32_t port, uint32_t vid);

/** Reads a port's VLAN for untagged frames (PVID). */
int32_t user_port_untagged_vlan_get(uint32_t unit, uint32_t zero, int32_t port, uint32_t *vid);

/** Writes one of a port's VLAN controls by number. */
int32_t user_vlan_control_port_set(uint32_t unit, uint32_t zero, int32_t port, uint32_t control, int32_t value);

/** Reads one of a port's VLAN controls. */
int32_t user_vlan_control_port_get(uint32_t unit, uint32_t zero, int32_t port, uint32_t control, uint32_t *value);

/*
 * Translations: of VLAN ids, and VLANs by subnet
 */

/** Adds an ingress translation of a VLAN id. Kind, port, action and priority are passed through. */
int32_t user_vlan_translate_add(uint32_t unit, uint32_t zero, adp_word_t kind, adp_word_t port, adp_word_t action,
                                uint32_t old_vid, uint32_t new_vid, adp_word_t priority);

/** Deletes an ingress translation. */
int32_t user_vlan_translate_delete(uint32_t unit, uint32_t zero, adp_word_t kind, adp_word_t port, uint32_t old_vid);

/** Deletes every ingress translation. */
int32_t user_vlan_translate_delete_all(uint32_t unit, uint32_t zero);

/** Reads an ingress translation. */
int32_t user_vlan_translate_get(uint32_t unit, uint32_t zero, adp_word_t port, uint32_t old_vid, uint32_t *new_vid,
                                uint32_t *priority);

/** Adds an egress translation of a VLAN id. Kind, port and priority are passed through. */
int32_t user_vlan_translate_egress_add(uint32_t unit, uint32_t zero, adp_word_t kind, adp_word_t port, uint32_t old_vid,
                                       uint32_t new_vid, adp_word_t priority);

/** Deletes an egress translation. */
int32_t user_vlan_translate_egress_delete(uint32_t unit, uint32_t zero, adp_word_t kind, adp_word_t port,
                                          uint32_t old_vid);

/** Deletes every egress translation. */
int32_t user_vlan_translate_egress_delete_all(uint32_t unit, uint32_t zero);

/** Reads an egress translation. */
int32_t user_vlan_translate_egress_get(uint32_t unit, uint32_t zero, adp_word_t port, uint32_t old_vid,
                                       uint32_t *new_vid, uint32_t *priority);

/** Puts the untagged frames of an IPv4 subnet into a VLAN. All but the VLAN id is passed through. */
int32_t user_vlan_ip4_add(uint32_t unit, uint32_t zero, adp_word_t port, adp_word_t address, adp_word_t mask,
                          uint32_t vid, adp_word_t priority, adp_word_t flags);

/** Deletes a subnet's entry. */
int32_t user_vlan_ip4_delete(uint32_t unit, uint32_t zero, adp_word_t port, adp_word_t address, adp_word_t mask);

/** Deletes every subnet's entry. */
int32_t user_vlan_ip4_delete_all(uint32_t unit, uint32_t zero);

/*
 * Double tags: entries, and the mode and the tag of each port
 */

/**
 * Adds a double-tag entry: a port's frames of one VLAN get a second tag. Kind, action and priority are passed through.
 */
int32_t user_vlan_dtag_add(uint32_t unit, uint32_t zero, adp_word_t kind, int32_t port, adp_word_t action,
                           uint32_t inner_vid, uint32_t outer_vid, adp_word_t priority);

/** Deletes a double-tag entry. */
int32_t user_vlan_dtag_delete(uint32_t unit, uint32_t zero, adp_word_t kind, int32_t port, uint32_t inner_vid);

/** Deletes every double-tag entry. */
int32_t user_vlan_dtag_delete_all(uint32_t unit, uint32_t zero);

/** Reads a double-tag entry. */
int32_t user_vlan_dtag_get(uint32_t unit, uint32_t zero, int32_t port, uint32_t inner_vid, uint32_t *outer_vid,
                           uint32_t *priority);

/** Sets a port's double-tag mode (16 bits). */
int32_t user_port_dtag_mode_set(uint32_t unit, uint32_t zero, int32_t port, uint32_t mode);

/** Reads a port's double-tag mode. */
int32_t user_port_dtag_mode_get(uint32_t unit, uint32_t zero, int32_t port, uint32_t *mode);

/** Sets a port's outer tag protocol identifier (16 bits); option is passed through. */
int32_t user_port_tpid_set(uint32_t unit, uint32_t zero, int32_t port, uint32_t tpid, adp_word_t option);

/** Reads a port's outer tag protocol identifier. */
int32_t user_port_tpid_get(uint32_t unit, uint32_t zero, int32_t port, uint32_t *tpid);

/*
 * Mirroring. Sessions count from 0.
 */

/** Initialises mirroring. */
int32_t user_mirror_init(uint32_t unit, uint32_t zero);

/** Mirrors a port to another in a session; mode 0 stops, 2, 4 and 6 choose the directions. */
int32_t user_mirror_port_set(uint32_t unit, uint32_t zero, int32_t port, uint32_t session, int32_t destination,
                             uint32_t mode);

/** Sets the port to which a session copies the frames that a rule selects. */
int32_t user_set_flow_mirror(uint32_t unit, uint32_t zero, uint32_t session, int32_t port);

/** Disables a session, or with 0 enables it; disable is passed through. */
int32_t user_set_mirror_disable(uint32_t unit, uint32_t zero, uint32_t session, adp_word_t disable);

/** Asks what user_set_mirror_disable() with the same arguments would give. */
int32_t user_check_set_mirror_disable(uint32_t unit, uint32_t zero, uint32_t session, adp_word_t disable);

/*
 * Statistics
 */

/** Reads one of a port's counters by the statistics numbering. */
int32_t user_stat_port_get(uint32_t unit, uint32_t zero, int32_t port, uint32_t selector, uint64_t *value);

/** Reads one of a port's packet counters by type. */
int32_t user_port_packetstat_get(uint32_t unit, uint32_t zero, int32_t port, uint32_t type, uint64_t *value);

/** Clears all of a port's packet counters. */
int32_t user_port_packetstat_clear(uint32_t unit, uint32_t zero, int32_t port);

/*
 * Registers
 */

/** Reads a 32-bit register of the chip. */
int32_t user_pci_read(uint32_t unit, uint32_t zero, uint32_t address, uint32_t *value);

/** Writes a 32-bit register of the chip; the value is passed by address. */
int32_t user_pci_write(uint32_t unit, uint32_t zero, uint32_t address, const uint32_t *value);

ADP_END_DECLS
