// Entries of the MAC address table: adding and reading them.
#include <adp/mac.h>

#include "core/bitmap.h"
#include "core/resolve.h"
#include "l2/mac.h"

namespace adp {
namespace {

constexpr uint32_t kStaticAsked = 1;
constexpr uint32_t kActedOnKind = 1;

adp_l2_entry_t entry_for(const uint8_t *mac, uint32_t vid) {
    adp_l2_entry_t entry = {};
    memcpy(entry.mac, mac, sizeof entry.mac);
    entry.vid = static_cast<uint16_t>(low16(vid));
    return entry;
}

/** Adds an entry for what the other arguments name: a port, a trunk or both. */
adp_status_t add_entry(const uint8_t *mac, uint32_t vid, uint32_t flags, int32_t port, int32_t trunk) {
    adp_l2_entry_t entry = entry_for(mac, vid);
    entry.flags = flags;
    entry.port = port;
    entry.trunk = trunk;
    return user_mac_addr_add(0, entry);
}

constexpr int32_t kPortOfTrunk = 0;
constexpr int32_t kNoTrunk = 0;

using LookUp = int32_t (*)(uint32_t, const uint8_t *, uint32_t, adp_l2_entry_t *);

/** Reads an entry; fields that the driver does not write are zero. */
int32_t look_up(LookUp call, const uint8_t *mac, uint32_t vid, adp_l2_entry_t *entry) {
    *entry = {};
    return call(0, MacKey(mac).byte, low16(vid), entry);
}

uint32_t intf_of_entry(const adp_l2_entry_t &entry) {
    if ((entry.flags & NETLINK_L2_FOUND_TRUNK) != 0) {
        return ADP_AGG_INTF(static_cast<uint32_t>(entry.trunk) + 1);
    }
    return number(intf_of(PhyPort(entry.port)));
}

}  // namespace
}  // namespace adp

using namespace adp;

adp_status_t adp_add_mac_addr(const uint8_t mac[ADP_MAC_BYTES], adp_intf_t intf, uint32_t vid, uint32_t is_static) {
    const uint32_t flags = low8(is_static) == kStaticAsked ? NETLINK_L2_STATIC : 0;
    const Intf target{intf};
    const adp_status_t refusal = check_interface(target);
    if (refusal != ADP_OK) {
        return refusal;
    }
    const int32_t port = number(phy_of(representative_of(target)));
    return kind_of(target) == IntfKind::kUserPort
               ? add_entry(mac, vid, flags, port, kNoTrunk)
               : add_entry(mac, vid, flags | NETLINK_L2_TO_TRUNK, port, get_chip_tgid(target));
}

// Contract: the trunk id of a group is enough, so a group outside 1..8 is not refused.
adp_status_t adp_filter_mac_addr(adp_intf_t intf, const uint8_t mac[ADP_MAC_BYTES], uint32_t vid, uint32_t flags) {
    const Intf target{intf};
    const uint32_t asked = low8(flags);
    switch (kind_of(target)) {
        case IntfKind::kUserPort:
            return add_entry(mac, vid, asked, number(phy_of(target)), kNoTrunk);
        case IntfKind::kAggregation:
            return add_entry(mac, vid, asked | NETLINK_L2_TO_TRUNK, kPortOfTrunk, get_chip_tgid(target));
        default:
            return ADP_E_INTF_TYPE;
    }
}

adp_status_t adp_add_mac_mcast_addr(const uint8_t mac[ADP_MAC_BYTES], uint64_t ports, uint32_t vid, uint32_t kind) {
    if (low8(kind) != kActedOnKind) {
        return ADP_FAIL;
    }
    const adp_ports_t interfaces = {static_cast<uint32_t>(ports), static_cast<uint32_t>(ports >> kWordBits)};
    const adp_port_set_t physical = phy_set_of(interfaces);
    adp_l2_entry_t entry = entry_for(mac, vid);
    memcpy(entry.ports, physical.word, sizeof entry.ports);
    return user_mac_mcast_addr_add(0, entry);
}

adp_status_t adp_get_mac_addr(const uint8_t mac[ADP_MAC_BYTES], uint32_t vid, adp_l2_entry_t *entry) {
    // The address may lie inside the caller's entry, so the entry is written last.
    adp_l2_entry_t found;
    const int32_t result = look_up(user_mac_addr_get, mac, vid, &found);
    found.port = static_cast<int32_t>(number(intf_of(PhyPort(found.port))));
    *entry = found;
    return result;
}

adp_status_t adp_get_mac_mcast_addr(const uint8_t mac[ADP_MAC_BYTES], uint32_t vid, adp_l2_entry_t *entry) {
    adp_l2_entry_t found;
    const int32_t result = look_up(user_mac_mcast_addr_get, mac, vid, &found);
    *entry = found;
    return result;
}

adp_status_t adp_get_intf_by_addr(const uint8_t mac[ADP_MAC_BYTES], uint32_t vid, adp_intf_t *intf) {
    uint32_t flags = 0;
    return adp_get_intf_flags_by_addr(mac, vid, intf, &flags);
}

adp_status_t adp_get_intf_flags_by_addr(const uint8_t mac[ADP_MAC_BYTES], uint32_t vid, adp_intf_t *intf,
                                        uint32_t *flags) {
    adp_l2_entry_t entry;
    const int32_t result = look_up(user_mac_addr_get, mac, vid, &entry);
    *intf = intf_of_entry(entry);
    *flags = entry.flags;
    return result;
}

adp_status_t adp_get_l2_index_by_addr(const uint8_t mac[ADP_MAC_BYTES], uint32_t vid, uint32_t *index) {
    adp_l2_entry_t entry;
    const int32_t result = look_up(user_mac_addr_get, mac, vid, &entry);
    *index = entry.index;
    return result;
}

adp_status_t adp_get_nextvalid_mac_addr(adp_word_t index, adp_l2_entry_t *entry, adp_word_t, adp_word_t option) {
    return user_netlink_mac_nextValidAddr_get(0, index, entry, option);
}
