/**
 * @file port.h
 * Ports: the map between logical interface numbers and the switch chip's physical ports, the ports' attributes, link
 * events and last-change times. Start-up, mirroring and I/O pins have headers of their own, which this one includes.
 *
 * Every call of the library uses the map. The caller sets it up first, in this order, and it is never torn down:
 * adp_set_max_phy_port_num(), then adp_add_cpu_port() and adp_add_phy_port() for every row. No call checks the order;
 * before the map exists the look-ups give "not found". Nothing here takes a lock: the map is written during start-up
 * and only read afterwards. The calls of the map make no driver call. Every driver call named here is made with unit 0
 * and a second argument 0, which the descriptions leave out, and 0 is its success.
 */
#pragma once

#include <adp/gpio.h>
#include <adp/mirror.h>
#include <adp/startup.h>
#include <adp/types.h>

ADP_BEGIN_DECLS

/** A row of the port map, 16 bytes. Row 0 belongs to the CPU port. */
typedef struct {
    uint32_t word1;      /**< first caller word: stored, never read by the library */
    uint32_t word2;      /**< second caller word: stored, never read by the library */
    uint32_t phy;        /**< physical port number of the chip port behind this row */
    uint32_t attributes; /**< caller-defined, returned unchanged by adp_intf_port_attributes() */
} adp_port_row_t;

/** Number of user ports as given to adp_set_max_phy_port_num(); valid map rows are 0..adp_max_phy_port_num. */
extern uint32_t adp_max_phy_port_num;
/** The port map: adp_max_phy_port_num + 1 rows, or null before it exists or after a failed allocation. */
extern adp_port_row_t *intf_to_phy_port;
/**
 * Aggregation interface that each user port belongs to, 0 for none: adp_max_phy_port_num + 1 words indexed like the
 * port map, or null.
 */
extern uint32_t *intf_map_trunk;

#define ADP_SNTP_CFG_WORDS 64 /**< words of sntp_cfg */

/** Storage for the device's programs; the library neither reads nor writes it. */
extern uint32_t ONU_ERR_CODE;
/** Storage for the device's programs, 256 bytes; the library neither reads nor writes it. */
extern uint32_t sntp_cfg[ADP_SNTP_CFG_WORDS];

/**
 * Creates the port map and the port-to-group map, both cleared.
 *
 * A second call replaces both tables and does not free the old ones.
 *
 * @param port_count  number of user ports; it is stored first, and stays even when an allocation fails
 * @return 0; -1 when either allocation failed (a size that overflows counts as failed): that table is null, the other
 *         one exists
 */
adp_status_t adp_set_max_phy_port_num(uint32_t port_count);

/**
 * Reads the number of user ports.
 *
 * @param[out] port_count  number of user ports, adp_max_phy_port_num
 * @return 0
 */
adp_status_t adp_get_max_phy_port_num(uint32_t *port_count);

/**
 * Fills the CPU port's row, row 0.
 *
 * @param unused      not used
 * @param word1       stored for the caller
 * @param word2       stored for the caller
 * @param phy         physical port number of the CPU port
 * @param attributes  caller-defined attribute word
 * @return 0; -1 with nothing changed when the map does not exist
 */
adp_status_t adp_add_cpu_port(uint32_t unused, uint32_t word1, uint32_t word2, uint32_t phy, uint32_t attributes);

/**
 * Fills one row of the port map.
 *
 * @param index       row, 1..adp_max_phy_port_num (row 0 is accepted and is the CPU port's)
 * @param word1       stored for the caller
 * @param word2       stored for the caller
 * @param phy         physical port number
 * @param attributes  caller-defined attribute word
 * @return 0; -1 with nothing changed when the row is beyond the map or the map does not exist
 */
adp_status_t adp_add_phy_port(uint32_t index, uint32_t word1, uint32_t word2, uint32_t phy, uint32_t attributes);

/**
 * Translates an interface number to its physical port.
 *
 * An aggregation interface is not expanded: it exceeds the maximum and gives -1.
 *
 * @param intf  0 (the CPU port) or a user port, 1..adp_max_phy_port_num
 * @return the row's physical port; -1 when intf, taken whole and unsigned, exceeds adp_max_phy_port_num, when its type
 *         bits are not 0, or when the map does not exist
 */
int32_t adp_intf_2_phy_id(adp_intf_t intf);

/**
 * Finds the interface of a physical port.
 *
 * @param phy  physical port number
 * @return the lowest row whose physical port equals phy, so the CPU port's row 0 wins a tie; -1 (all ones) when there
 *         is none or the map does not exist
 */
int32_t adp_phy_2_intf_id(uint32_t phy);

/**
 * Finds the interface of a physical port of a unit; as adp_phy_2_intf_id(), because there is one unit.
 *
 * @param unused  not used
 * @param phy     physical port number
 * @return as adp_phy_2_intf_id()
 */
int32_t adp_phy_2_intf_id_ex(uint32_t unused, uint32_t phy);

/**
 * Gives an interface's slot: this is a single-slot system.
 *
 * @param intf  any interface number
 * @return always 0
 */
int32_t adp_intf_2_slot_id(adp_intf_t intf);

/**
 * Gives an interface's attribute word.
 *
 * @param intf  0..adp_max_phy_port_num; the type bits are not checked apart
 * @return the attribute word given for the row; 0 when intf, taken whole and unsigned, exceeds the maximum or the map
 *         does not exist
 */
uint32_t adp_intf_port_attributes(adp_intf_t intf);

/** Does nothing. @return 0 */
adp_status_t adp_get_phy_port(void);

/** Does nothing: rows are never removed. @return 0 */
adp_status_t adp_del_phy_port(void);

/**
 * Turns a bitmap of physical ports into a bitmap of interface numbers, in place.
 *
 * Bits 0..26 are translated; bits 27..63 are always dropped. A port without a map row keeps its bit. A bit that would
 * land outside the two words is dropped.
 *
 * @param[in,out] bitmap  two words, bit n of word n / 32 for number n
 * @return 0
 */
adp_status_t adp_api_xlate_port_pbmp_a2p(ADP_INOUT uint32_t bitmap[2]);

/**
 * Turns a bitmap of interface numbers into a bitmap of physical ports, in place.
 *
 * Bits 0..26 are translated; bits 27..63 are always dropped. An interface above the maximum keeps its bit; bit 0
 * becomes the CPU port's. A bit that would land outside the two words is dropped.
 *
 * @param[in,out] bitmap  two words, bit n of word n / 32 for number n
 * @return 0
 */
adp_status_t adp_api_xlate_port_pbmp_p2a(ADP_INOUT uint32_t bitmap[2]);

/** A port's modes of address learning: the driver's codes, as the virtual device has them. */
enum adp_learn_mode {
    ADP_LEARN_CLOSED = 0, /**< frames from unknown addresses are dropped */
    ADP_LEARN_NORMAL = 1, /**< addresses are learned */
    ADP_LEARN_OFF = 4,    /**< addresses are not learned, frames go on */
    ADP_LEARN_OPEN = 5,   /**< as normal, for a port that 802.1X has opened */
    ADP_LEARN_PENDING = 8 /**< frames from unknown addresses go to the CPU alone */
};

/** A port's counters: the driver's selectors, as the virtual device has them. */
enum adp_counter {
    ADP_COUNTER_RX_OCTETS = 0,     /**< octets received */
    ADP_COUNTER_RX_FRAMES = 1,     /**< frames received */
    ADP_COUNTER_RX_UNICAST = 2,    /**< unicast frames received */
    ADP_COUNTER_RX_MULTICAST = 3,  /**< multicast frames received */
    ADP_COUNTER_RX_BROADCAST = 4,  /**< broadcast frames received */
    ADP_COUNTER_RX_DROPPED = 5,    /**< received frames dropped, for whatever reason */
    ADP_COUNTER_RX_TOO_LONG = 6,   /**< received frames dropped as too long */
    ADP_COUNTER_RX_RUNTS = 7,      /**< received frames dropped as runts */
    ADP_COUNTER_TX_OCTETS = 8,     /**< octets sent */
    ADP_COUNTER_TX_FRAMES = 9,     /**< frames sent */
    ADP_COUNTER_TX_UNICAST = 10,   /**< unicast frames sent */
    ADP_COUNTER_TX_MULTICAST = 11, /**< multicast frames sent */
    ADP_COUNTER_TX_BROADCAST = 12, /**< broadcast frames sent */
    ADP_COUNTER_TX_TOO_LONG = 13   /**< frames not sent as too long for the port */
};

/** A port's duplex. */
enum adp_duplex {
    ADP_DUPLEX_HALF = 0, /**< half duplex */
    ADP_DUPLEX_FULL = 1, /**< full duplex */
    ADP_DUPLEX_AUTO = 2  /**< as negotiated; so is every other number */
};

/** A port's loopback modes: the driver's codes, as the virtual device has them. */
enum adp_loopback {
    ADP_LOOPBACK_OFF = 0, /**< frames leave the port */
    ADP_LOOPBACK_MAC = 1, /**< what would leave comes in again, in the port's MAC */
    ADP_LOOPBACK_PHY = 2  /**< the same, at its line side */
};

/** A copper port's crossover: the driver's codes, as the virtual device has them. */
enum adp_mdix {
    ADP_MDIX_AUTO = 0, /**< chosen by the port */
    ADP_MDIX_MDI = 1,  /**< straight */
    ADP_MDIX_MDIX = 2  /**< crossed */
};

/** A port's medium: the driver's codes, as the virtual device has them. */
enum adp_medium {
    ADP_MEDIUM_COPPER = 1, /**< copper */
    ADP_MEDIUM_FIBRE = 2   /**< fibre */
};

/** The condition of a wire pair: the driver's codes, as the virtual device has them. */
enum adp_cable_pair {
    ADP_CABLE_PAIR_GOOD = 0, /**< without a fault */
    ADP_CABLE_PAIR_OPEN = 1  /**< open: no cable */
};

/** Selectors of adp_set_phy_port_attr() and adp_get_phy_port_attr(). */
enum adp_port_attr {
    ADP_ATTR_SPEED = 0,         /**< Mb/s: 10, 100, 1000, 10000 */
    ADP_ATTR_DUPLEX = 1,        /**< enum adp_duplex */
    ADP_ATTR_AUTONEG = 2,       /**< auto-negotiation (IEEE 802.3 clause 28): 0 off, non-zero on */
    ADP_ATTR_ADMIN_STATE = 3,   /**< administrative state: 0 off, non-zero on */
    ADP_ATTR_LOOPBACK = 4,      /**< enum adp_loopback */
    ADP_ATTR_PAUSE = 5,         /**< flow control (IEEE 802.3 annex 31B): 0 off, non-zero on */
    ADP_ATTR_JUMBO = 6,         /**< jumbo frames, the driver's value; on the virtual device 0 off, non-zero on */
    ADP_ATTR_ADVERT_DUPLEX = 7, /**< set only: advertised duplex, enum adp_duplex */
    ADP_ATTR_ADVERT_SPEED = 8,  /**< set only: advertised speed, Mb/s */
    ADP_ATTR_MDIX = 9,          /**< MDI/MDIX, enum adp_mdix */
    ADP_ATTR_MEDIUM = 10,       /**< get only: enum adp_medium */
    ADP_ATTR_LINK = 11,         /**< get: link status, 0 down, non-zero up; set: the protocol hold */
    ADP_ATTR_HOLD = 11,         /**< set only: protocol hold, 0 holds the port down, non-zero releases it */
    ADP_ATTR_MAX_SPEED = 12,    /**< get only: maximum speed, Mb/s */
    ADP_ATTR_PAUSE_STATUS = 13, /**< get only: flow control in force, 0 no, non-zero yes */
    ADP_ATTR_FIBRE_LINK = 14    /**< get only: fibre link status, 0 down, non-zero up */
};

/**
 * Sets an attribute of an interface.
 *
 * On an aggregation interface the attribute is set on each configured member in list order, where stated on each active
 * one. Empty slots are skipped, the first failing member ends the call with 102, members before it stay set, and a
 * group without members gives 0. Selectors 0, 7 and 8 depend on the interface's maximum speed. The driver calls per
 * port, in this order:
 *
 * - 0, maximum 1000: advert read; user_port_speed_set(value, mode); advert written with the speed's bits only; for
 *   value 1000 user_port_autoneg_set(1).
 * - 0, maximum 10000, active members: advert read; advert written without bit 27, and with bit 26 (for value 10000
 *   without); user_port_speed_set(value, 2); for value 1000 user_port_autoneg_set(1).
 * - 1: nothing for mode 2 with value 1; else advert read; advert written with the duplex's bits only;
 *   user_port_duplex_set(value, mode); for mode 2 user_port_autoneg_set(1).
 * - 2: for a non-zero value advert read, advert written with all bits added; user_port_autoneg_set(value).
 * - 3: user_port_enable_set(value); on a group half a second's sleep after each success.
 * - 4: user_port_loopback_set(value); the driver's own result is the call's, on a group too.
 * - 5: user_port_autoneg_get; advert read; with auto-negotiation on, advert written with both pause bits set or
 *   cleared, else user_port_pause_set(value, value).
 * - 6: user_port_jumboframe_set(value).
 * - 7, maximum 1000: advert read; advert written with the duplex's bits only; user_port_autoneg_set(1).
 * - 7, maximum 10000, active members: advert read; user_port_duplex_set(value, 0); advert written without bits 27 and
 *   26, for value 1 with bit 26; user_port_autoneg_set(1).
 * - 8, maximum 1000: advert read; advert written with the speed's bits only; user_port_autoneg_set(1).
 * - 8, maximum 10000, active members: advert read; user_port_speed_set(value, 2); advert written without bits 27 and
 *   26, for value 1000 with bit 26; for value 1000 user_port_autoneg_set(1).
 * - 9: user_port_mdix_set(value); the driver's own result is the call's, on a group too.
 * - 11: user_port_enable_set(value), with the sleeps of selector 3.
 * - 10, 12: none, returns 0.
 *
 * "Advert" is the advertisement word, read with user_port_ability_advert_get() and written with
 * user_port_ability_advert_set(). Its bits 31 to 26 are 10 half, 10 full, 100 half, 100 full, 1000 half and 1000 full,
 * bits 25 and 24 pause; the others stay as read. "All bits" are 31 to 28 and 26; of these a speed of 10 or 100 keeps
 * both its duplexes and 1000 bit 26; half duplex keeps 31 and 29, full 30, 28 and 26; any other speed or duplex keeps
 * all.
 *
 * Selectors 0, 7 and 8 first read the maximum speed as adp_get_phy_port_attr() does (failure: 102); with any other
 * maximum they do nothing and return 0. With a maximum of 10000, selectors 7 and 8 use two ports: they read the
 * advertisement and set duplex or speed on the number that they get (a user port's interface number, a member's
 * physical port), and write advertisement and auto-negotiation on that number translated once more.
 *
 * Each interface, user port or group, has a state of its own: free, held (selector 11 with 0) or disabled (selector 3
 * with 0). Enabling a held interface and releasing one that is not held do nothing and return 0. The state changes
 * before any driver call. Under selector 11 a driver failure is 0 on a user port and 102 on a group.
 *
 * @param intf      user port or aggregation interface
 * @param selector  enum adp_port_attr, 0..12
 * @param value     the attribute, see the selector
 * @param mode      passed through by selector 0 with a maximum of 1000 and by selector 1: 0, or another mode of the
 *                  driver; with selector 1 mode 2 turns auto-negotiation on
 * @return 0; 101 for a selector of 13 or more, which is checked first; 201 for another interface type; 102 when a
 *         driver call failed; the driver's own result for selectors 4 and 9; -1 for a group outside 1..8 when its
 *         members are needed
 */
adp_status_t adp_set_phy_port_attr(adp_intf_t intf, uint32_t selector, uint32_t value, uint32_t mode);

/**
 * Reads an attribute of an interface.
 *
 * An aggregation interface answers with its management interface, without one with its lowest configured member.
 * Selectors 11 and 14 differ: the first non-zero status among the active members in list order, 0 when there is none.
 * So does selector 12: the largest maximum speed of the configured members, 0 without members. Driver calls:
 * user_port_speed_get, _duplex_get, _autoneg_get, _enable_get, _loopback_get, _pause_get, _jumboframe_get for 0 to 6,
 * user_port_mdix_get, user_port_link_medium_get, user_port_link_status_get, user_port_speed_max,
 * user_port_pause_get_stat (on a group user_port_pause_get), user_fiberport_link_status_get for 9 to 14. Selector 3 of
 * a held interface writes 1 without a driver call.
 *
 * @param intf        user port or aggregation interface
 * @param selector    enum adp_port_attr, 0..14; 7 and 8 return 0 and leave the output as it was
 * @param[out] value  the attribute, see the selector; on a group selectors 11 and 14 clear it first
 * @return 0; 101 for a selector of 15 or more, which is checked first; 201 for another interface type; 203 for an
 *         aggregation interface with neither a management interface nor a configured member; 102 when a driver call
 *         failed; -1 for a group outside 1..8
 */
adp_status_t adp_get_phy_port_attr(adp_intf_t intf, uint32_t selector, uint32_t *value);

/**
 * Sets an interface's address learning.
 *
 * Driver call: user_port_learn_set(port, mode), on a group for each configured member.
 *
 * @param intf  user port or aggregation interface
 * @param mode  enum adp_learn_mode
 * @return user port: the driver's result; group: 0, 102 at the first failure; 201 for another type, -1 for a group
 *         outside 1..8
 */
adp_status_t adp_intf_learn_set(adp_intf_t intf, int32_t mode);

/**
 * Reads an interface's address learning.
 *
 * Driver call: user_port_learn_get(port, mode), on a group for its management interface.
 *
 * @param intf       user port or aggregation interface
 * @param[out] mode  written by the driver, enum adp_learn_mode
 * @return the driver's result; 201 for another type, -1 for a group outside 1..8
 */
adp_status_t adp_intf_learn_get(adp_intf_t intf, uint32_t *mode);

/**
 * Runs the cable diagnosis of an interface.
 *
 * Driver call: User_port_cablediag(port, result), on a group for its management interface.
 *
 * @param intf         user port or aggregation interface
 * @param[out] result  written by the driver: adp_cable_diag_t, for each wire pair its condition, enum adp_cable_pair,
 *                     and its length
 * @return the driver's result; 201 for another type, -1 for a group outside 1..8
 */
adp_status_t adp_intf_cablediag(adp_intf_t intf, ADP_TYPE(adp_cable_diag_t) void *result);

/**
 * Sets energy-efficient Ethernet (IEEE 802.3az).
 *
 * Driver call: user_eee_portEnable_set(port, enable), on a group for its management interface.
 *
 * @param intf    user port or aggregation interface
 * @param enable  0 off, non-zero on
 * @return the driver's result; 201 for another type, -1 for a group outside 1..8
 */
adp_status_t adp_intf_eee_set(adp_intf_t intf, uint32_t enable);

/**
 * Reads energy-efficient Ethernet (IEEE 802.3az).
 *
 * Driver call: user_eee_portEnable_get(port, enable), on a group for its management interface.
 *
 * @param intf         user port or aggregation interface
 * @param[out] enable  written by the driver: 0 off, non-zero on
 * @return the driver's result; 201 for another type, -1 for a group outside 1..8
 */
adp_status_t adp_intf_eee_get(adp_intf_t intf, uint32_t *enable);

/**
 * Reads a counter of a port.
 *
 * Driver call: user_stat_port_get(port, selector, value).
 *
 * @param intf        user port; any other interface is passed on as physical port -1
 * @param selector    enum adp_counter
 * @param[out] value  written by the driver: the counter, 64 bits
 * @return the driver's result
 */
adp_status_t adp_intf_stat_get(adp_intf_t intf, uint32_t selector, ADP_TYPE(uint64_t) void *value);

/**
 * Checks whether a combo port uses its copper side, by what it advertises.
 *
 * Driver calls: user_port_autoneg_get(port), then with auto-negotiation on user_port_ability_advert_get(port); their
 * results are not checked. An aggregation interface reaches the driver as port -1.
 *
 * @param intf  user port
 * @return 0 when auto-negotiation is on and a 10 or 100 Mb/s ability is advertised (copper), otherwise -1 (fibre); 201
 *         without a driver call for another interface type
 */
adp_status_t adp_intf_combo_port_copper_or_fiber_check(adp_intf_t intf);

/**
 * An interface's last link change as adp_link_event_fast_send_unicast_msg() recorded it, each number cut to 16 bits.
 */
typedef struct {
    uint16_t unit;   /**< unit of the driver */
    uint16_t port;   /**< physical port */
    uint16_t intf;   /**< interface number */
    uint16_t status; /**< link status */
} adp_link_data_t;

/** Link data by interface number, 0..26. */
extern adp_link_data_t g_intf_link_data[ADP_USER_PORTS + 1];

/**
 * Stamps an interface's last link change with the current time.
 *
 * On an aggregation interface every configured member among the user ports 1..26 is stamped; the time is read again for
 * each. No driver call.
 *
 * @param intf  user port (an index outside 1..26 changes nothing) or aggregation interface
 * @return 0; 201 for another type, -1 for a group outside 1..8
 */
adp_status_t adp_set_port_last_change(adp_intf_t intf);

/**
 * Reads when an interface's link changed last.
 *
 * An aggregation interface answers with its management interface, without one with its lowest configured member. No
 * driver call.
 *
 * @param intf          user port or aggregation interface
 * @param[out] seconds  seconds since the epoch; 0 when never stamped, for an index outside 1..26, and for any result
 *                      but 0
 * @return 0; 203 for an aggregation interface with neither a management interface nor a configured member, 201 for
 *         another type, -1 for a group outside 1..8
 */
adp_status_t adp_get_port_last_change(int32_t intf, uint32_t *seconds);

/**
 * Forwards a link change to the device's link-event sink, link_event_handle_cb(intf, status).
 *
 * The administrative state of the port's interface is read first, as adp_get_phy_port_attr() does; a change of
 * interface 25 or 26 is dropped while that state is 0.
 *
 * @param unit    not used
 * @param port    physical port
 * @param status  link status, passed on: 0 down, 1 up
 * @return the sink's result, or 0 for a dropped change
 */
int32_t adp_link_event_handle_cb(uint32_t unit, uint32_t port, int32_t status);

/**
 * Records a link change in g_intf_link_data and posts it to the ring-protection queue (ITU-T G.8032).
 *
 * Service call: equeue_send_ucast(erps_event_queue, message, -1). The message is eight words: 1, the sending thread's
 * id, 1, four zeros, and the address of the interface's record, which a later change of the same interface overwrites.
 * A port without a row among 0..26 is refused.
 *
 * @param unit    recorded, low 16 bits used
 * @param port    physical port
 * @param status  link status, low 16 bits used: 0 down, 1 up
 * @return the queue's positive result; after a failure, which is printed on standard error, the number of characters
 *         printed; -1 with nothing recorded or sent for a port without a record
 */
int32_t adp_link_event_fast_send_unicast_msg(uint32_t unit, uint32_t port, int32_t status);

/**
 * adp_link_event_fast_send_unicast_msg() for an interface: unit 0 and its physical port.
 *
 * @param intf    user port
 * @param status  link status, low 16 bits used: 0 down, 1 up
 * @return as adp_link_event_fast_send_unicast_msg()
 */
int32_t adp_link_event_fast_send_unicast_msg_ex(int32_t intf, int32_t status);

ADP_END_DECLS
