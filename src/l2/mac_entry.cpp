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

constexpr int32_t kNoPort = 0;
constexpr int32_t kNoTrunk = 0;

using LookUp = int32_t (*)(uint32_t, const uint8_t *, uint32_t, adp_l2_entry_t *);

/** The entry as the driver knows it; zero where the driver wrote nothing. */
int32_t look_up(LookUp call, const uint8_t *mac, uint32_t vid, adp_l2_entry_t *entry) {
    *entry = {};
    return call(0, MacKey(mac).byte, low16(vid), entry);
}

uint32_t intf_of_entry(const adp_l2_entry_t &entry) {
    if ((entry.flags & NETLINK_L2_FOUND_TRUNK) != 0) {
        return ADP_AGG_INTF(static_cast<uint32_t>(entry.trunk) + 1);
    }
    return intf_of(PhyPort(entry.port)).value();
}

}  // namespace
}  // namespace adp

using adp::Intf;
using adp::PhyPort;

adp_status_t adp_add_mac_addr(const uint8_t mac[ADP_MAC_BYTES], adp_intf_t intf, uint32_t vid, uint32_t is_static) {
    const uint32_t flags = adp::low8(is_static) == adp::kStaticAsked ? NETLINK_L2_STATIC : 0;
    const Intf target(intf);
    const adp_status_t refusal = adp::refusal_of(target);
    if (refusal != ADP_OK) {
        return refusal;
    }
    const int32_t port = adp::standing_port_number_of(target);
    return target.kind() == adp::IntfKind::kUserPort
               ? adp::add_entry(mac, vid, flags, port, adp::kNoTrunk)
               : adp::add_entry(mac, vid, flags | NETLINK_L2_TO_TRUNK, port, adp::get_chip_tgid(target));
}

// A group is not looked up here, its trunk id is enough: so it is not checked either.
adp_status_t adp_filter_mac_addr(adp_intf_t intf, const uint8_t mac[ADP_MAC_BYTES], uint32_t vid, uint32_t flags) {
    const Intf target(intf);
    const uint32_t asked = adp::low8(flags);
    switch (target.kind()) {
        case adp::IntfKind::kUserPort:
            return adp::add_entry(mac, vid, asked, adp::phy_of(target).value(), adp::kNoTrunk);
        case adp::IntfKind::kAggregation:
            return adp::add_entry(mac, vid, asked | NETLINK_L2_TO_TRUNK, adp::kNoPort, adp::get_chip_tgid(target));
        default:
            return ADP_E_INTF_TYPE;
    }
}

adp_status_t adp_add_mac_mcast_addr(const uint8_t mac[ADP_MAC_BYTES], uint64_t ports, uint32_t vid, uint32_t kind) {
    if (adp::low8(kind) != adp::kActedOnKind) {
        return ADP_FAIL;
    }
    const adp_ports_t interfaces = {static_cast<uint32_t>(ports), static_cast<uint32_t>(ports >> adp::kWordBits)};
    const adp_port_set_t physical = adp::phy_set_of(interfaces);
    adp_l2_entry_t entry = adp::entry_for(mac, vid);
    memcpy(entry.ports, physical.word, sizeof entry.ports);
    return user_mac_mcast_addr_add(0, entry);
}

adp_status_t adp_get_mac_addr(const uint8_t mac[ADP_MAC_BYTES], uint32_t vid, adp_l2_entry_t *entry) {
    // The caller's address may stand in the caller's entry, so that is written last.
    adp_l2_entry_t found;
    const int32_t result = adp::look_up(user_mac_addr_get, mac, vid, &found);
    found.port = static_cast<int32_t>(adp::intf_of(PhyPort(found.port)).value());
    *entry = found;
    return result;
}

adp_status_t adp_get_mac_mcast_addr(const uint8_t mac[ADP_MAC_BYTES], uint32_t vid, adp_l2_entry_t *entry) {
    adp_l2_entry_t found;
    const int32_t result = adp::look_up(user_mac_mcast_addr_get, mac, vid, &found);
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
    const int32_t result = adp::look_up(user_mac_addr_get, mac, vid, &entry);
    *intf = adp::intf_of_entry(entry);
    *flags = entry.flags;
    return result;
}

adp_status_t adp_get_l2_index_by_addr(const uint8_t mac[ADP_MAC_BYTES], uint32_t vid, uint32_t *index) {
    adp_l2_entry_t entry;
    const int32_t result = adp::look_up(user_mac_addr_get, mac, vid, &entry);
    *index = entry.index;
    return result;
}

adp_status_t adp_get_nextvalid_mac_addr(adp_word_t first, adp_l2_entry_t *second, adp_word_t, adp_word_t fourth) {
    return user_netlink_mac_nextValidAddr_get(0, first, second, fourth);
}
