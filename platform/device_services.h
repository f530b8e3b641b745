/**
 * @file device_services.h
 * The services that the adaptation layer imports from the device besides the driver: the logging, event-queue, VLAN and
 * MAC-table libraries, and the device's link-event sink. The process that loads the library provides them.
 *
 * The result of a call is 0 for success unless its own comment says otherwise. `intf` is a logical interface number,
 * `vid` a VLAN id (IEEE 802.1Q).
 */
#pragma once

#include <adp/types.h>

ADP_BEGIN_DECLS

#define DEVICE_MESSAGE_WORDS 8       /**< words of an event-queue message */
#define DEVICE_WAIT_FOREVER (-1)     /**< time-out argument of equeue_send_ucast that the library passes */
#define DEVICE_VLAN_RECORD_BYTES 64  /**< a VLAN's record */
#define DEVICE_VLAN_MEMBERS_OFFSET 8 /**< where in the record the member bitmap begins */

/*
 * Logging
 */

/** Writes a message as printf formats it. Module and word are the module's number and name. */
int32_t Log_logging_func(int32_t level, int32_t module, const char *word, const char *format, ...);

/** Whether tracing is on: 0 off, otherwise messages also go to sys_trace_add_log(). */
int32_t sys_trace_get(void);

/** Adds a message to the trace; prefix names its place as "function():line". */
int32_t sys_trace_add_log(const char *prefix, const char *message);

/*
 * Events
 */

/** The ring-protection process's queue: a word that equeue_send_ucast() takes by value. */
extern uintptr_t erps_event_queue;

/**
 * Sends a message of eight words to one queue; -1 waits without limit. A positive result is success. The last word of a
 * link-event message is the address of the interface's record: four 16-bit numbers, in the order unit, physical port,
 * interface, link status.
 */
int32_t equeue_send_ucast(uintptr_t queue, const uintptr_t message[DEVICE_MESSAGE_WORDS], int32_t timeout);

/** Records an interface's link change: status 0 is down, otherwise up. */
int32_t link_event_handle_cb(uint32_t intf, int32_t status);

/*
 * VLANs and groups
 */

/**
 * Reads a VLAN's record. Its member bitmap is a 64-bit number in two 32-bit words in host byte order, the more
 * significant first, at DEVICE_VLAN_MEMBERS_OFFSET: bit i stands for user port i (1..26), bit 26 + g for aggregation
 * group g (1..8). The rest of the record is the VLAN library's. The call fails when the VLAN does not exist.
 */
int32_t get_vlan_info(uint32_t vid, uint8_t record[DEVICE_VLAN_RECORD_BYTES]);

/** Reads the aggregation interface that an interface belongs to, 0 for none. */
int32_t get_group_by_interface(uint32_t intf, uint32_t *group);

/*
 * MAC table. Addresses are texts as onu_mac2str makes them.
 */

/** The text of a MAC address, valid until the next call; null when it cannot be made. */
const char *onu_mac2str(const uint8_t mac[6]);

/** Adds a static entry for an address in a VLAN towards an interface; the library passes flag 1. */
int32_t add_mac_static_addr(const char *mac, uint32_t intf, uint32_t vid, uint32_t flag);

/** Deletes an address from a VLAN; the library passes flag 1. */
int32_t del_mac_addr(const char *mac, uint32_t vid, uint32_t flag);

/** Clears an interface's addresses; the library passes scope 7 and kind 3. */
int32_t set_mac_tbl_clear_by_port(uint32_t intf, uint32_t scope, uint32_t kind);

ADP_END_DECLS
