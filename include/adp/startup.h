/**
 * @file startup.h
 * Start-up of the switch's protocol features: reserved bridge addresses, field processor, trunks, spanning tree, LLDP,
 * mirroring, IGMP snooping, IPv6 and protection against denial of service.
 *
 * Driver calls are made with unit 0 and a second argument 0, which the descriptions leave out; 0 is their success. A
 * failing step does not undo the steps before it. Messages go to standard output unless standard error is named.
 *
 * The driver's table of reserved addresses has 64 entries, 0..63; a free one holds 00:00:00:00:00:00. Frames to an
 * address in it go to the CPU. The block of addresses is 01:80:C2:00:00:00 to 01:80:C2:00:00:0F (IEEE 802.1Q, reserved
 * addresses).
 */
#pragma once

#include <adp/types.h>

ADP_BEGIN_DECLS

/**
 * Initialises all features, once, before other calls.
 *
 * From then on the CPU's programs alone get BPDUs, IGMP and MLD: see adp_stg_init() for what happens without one.
 *
 * In this order: l2_user_entry_init(), adp_fp_init(), adp_trunk_init(), adp_stg_init(), adp_lldp_init(),
 * adp_mirror_init(), adp_igmp_init(), ipv6_user_init(), adp_dos_attack_init(). The first negative result ends the call
 * with a message: "%s ERROR\n" with the function's name for the first step; as a line each for the others "switch fp
 * init fail ", "switch trunk init fail ", "switch stg init fail ", "switch lldp init fail", "switch mirror init fail ",
 * "switch igmp init fail ", no message for IPv6, "switch dos init fail ".
 *
 * @return the failing step's result, otherwise that of adp_dos_attack_init()
 */
adp_status_t adp_modules_init(void);

/**
 * Rewrites the reserved addresses: l2_user_entry_del_all_bpdu(), then l2_user_entry_add_all_bpdu().
 *
 * The removal clears one address only, so each further call adds fifteen more entries.
 *
 * @return 0; -1 when either failed, after "%s l2_user_entry_del_all_bpdu ERROR!\n" or "%s l2_user_entry_add_all_bpdu
 *         ERROR!\n"
 */
adp_status_t l2_user_entry_init(void);

/**
 * Clears every entry that holds 01:80:C2:00:00:00. The other fifteen addresses stay.
 *
 * Driver calls for entries 0 to 63: user_l2_bpdu_get(entry, mac), and user_l2_bpdu_set(entry, zero) where the entry
 * holds that address. An entry that cannot be read is skipped.
 *
 * @return 0; -1 at the first write that fails, after "%s %d ret = %d  i = %d ERROR\n"; later entries stay as they were
 */
adp_status_t l2_user_entry_del_all_bpdu(void);

/**
 * Writes the sixteen reserved addresses into free entries, both in ascending order.
 *
 * Driver calls for each entry from 0 until all addresses are written: user_l2_bpdu_get(entry, mac), and
 * user_l2_bpdu_set(entry, address) where the entry is free or cannot be read.
 *
 * @return 0, also when there are fewer than sixteen free entries; -1 at the first write that fails, after "%s %d i = %d
 *         ERROR\n"
 */
adp_status_t l2_user_entry_add_all_bpdu(void);

/**
 * Initialises trunks. Driver call: user_trunk_init().
 *
 * @return the driver's result
 */
adp_status_t adp_trunk_init(void);

/**
 * Initialises spanning tree. Driver call: user_stg_init().
 *
 * From then on the switch hands BPDUs to the CPU alone. Without a program there that runs spanning tree nobody breaks
 * loops any more: before, the switch passed the BPDUs of its neighbours on, and they broke loops through it.
 *
 * @return the driver's result; a negative one prints "%s %d: MSTP set bcmSwitchCpuProtoBpduPriority failed!\n" on
 *         standard error
 */
adp_status_t adp_stg_init(void);

/**
 * Initialises the handling of LLDP (IEEE 802.1AB). Driver call: user_lldp_init().
 *
 * @return the driver's result; a negative one prints "%s %d:LLDP set default handle failed!\n" on standard error
 */
adp_status_t adp_lldp_init(void);

/**
 * Initialises mirroring. Driver calls: user_mirror_init(), then user_switch_control_set(125, 1), its result ignored.
 *
 * @return user_mirror_init()'s result
 */
adp_status_t adp_mirror_init(void);

/**
 * Initialises IGMP snooping and multicast, and sends IGMP packets (RFC 3376) to the CPU.
 *
 * Driver calls: user_igmp_snooping_init(), User_mcast_init(); user_switch_control_get(92), a failure of which prints
 * "ret:%d bcmSwitchIgmpPktToCpu:%d enable:%d \n"; user_switch_control_set(215, 1), likewise "ret:%d
 * bcmSwitchIgmpReservedMcastEnable:%d \n"; user_switch_control_set(92, 1), likewise "set igmp packet to cpu fail
 * ret:%d\n"; user_switch_control_get(92).
 *
 * @return the result of either of the first two calls when it is negative, and no further call is made; otherwise that
 *         of the last read alone, which prints " ret:%d enable:%d\n" when it is not 0
 */
adp_status_t adp_igmp_init(void);

/**
 * Turns the chip's IPv6 handling on. Driver call: user_switch_control_set(89, 1), its result ignored.
 *
 * @return 0
 */
adp_status_t ipv6_user_init(void);

/**
 * Initialises the protection against denial-of-service attacks. Driver call: user_dos_attack_prevent_init().
 *
 * @return the driver's result
 */
adp_status_t adp_dos_attack_init(void);

ADP_END_DECLS
