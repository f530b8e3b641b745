// Deleting from the MAC address table, by key and by kind of entry.
#include <adp/mac.h>

#include "core/members.h"
#include "core/resolve.h"
#include "l2/mac.h"

namespace adp {
namespace {

constexpr int32_t kAnyModule = -1;
constexpr uint32_t kModes = 3;

/** The arguments of a deletion; each key uses some. */
struct Subject {
    const uint8_t *mac = nullptr;
    uint32_t vid = 0;
    int32_t number = 0;  // of the port or the trunk
    adp_word_t last = 0;
};

using Delete = int32_t (*)(const Subject &);

/** The driver calls of one key: for the dynamic, the static and all entries. */
using DeletesByMode = Delete[kModes];

constexpr DeletesByMode kByVlan = {
    [](const Subject &s) { return user_l2_addr_delete_by_vlan(0, 0, s.vid, 0); },
    [](const Subject &s) { return user_l2_addr_delete_static_by_vlan(0, 0, s.vid, 0); },
    [](const Subject &s) { return user_l2_addr_delete_by_vlan(0, 0, s.vid, 1); },
};

constexpr DeletesByMode kByMac = {
    [](const Subject &s) { return user_l2_addr_delete_by_mac(0, 0, s.mac, 0); },
    [](const Subject &s) { return user_l2_addr_delete_static_by_mac(0, 0, s.mac, 0); },
    [](const Subject &s) { return user_l2_addr_delete_by_mac(0, 0, s.mac, 1); },
};

constexpr DeletesByMode kByPort = {
    [](const Subject &s) { return user_l2_addr_delete_by_port(0, 0, kAnyModule, s.number, 0); },
    [](const Subject &s) { return user_l2_addr_delete_static_by_port(0, 0, kAnyModule, s.number); },
    [](const Subject &s) { return user_l2_addr_delete_by_port(0, 0, kAnyModule, s.number, 1); },
};

constexpr DeletesByMode kByVlanPort = {
    [](const Subject &s) { return user_l2_addr_delete_by_vlan_port(0, 0, s.vid, kAnyModule, s.number, 0); },
    [](const Subject &s) { return user_l2_addr_delete_static_by_vlan_port(0, 0, s.vid, s.number); },
    [](const Subject &s) { return user_l2_addr_delete_by_vlan_port(0, 0, s.vid, kAnyModule, s.number, 1); },
};

// Contract: the driver has no call for the static entries of a trunk. All are deleted, and the call fails.
constexpr DeletesByMode kByVlanTrunk = {
    [](const Subject &s) { return user_l2_addr_delete_by_vlan_trunk(0, 0, s.vid, s.number, 0); },
    [](const Subject &s) {
        user_l2_addr_delete_by_vlan_trunk(0, 0, s.vid, s.number, 1);
        return ADP_FAIL;
    },
    [](const Subject &s) { return user_l2_addr_delete_by_vlan_trunk(0, 0, s.vid, s.number, 1); },
};

constexpr DeletesByMode kByMacPort = {
    [](const Subject &s) { return user_l2_addr_delete_dynaic_by_mac_port(0, 0, s.mac, s.number, s.last); },
    [](const Subject &s) { return user_l2_addr_delete_static_by_mac_port(0, 0, s.mac, s.number, s.last); },
    [](const Subject &s) { return user_l2_addr_delete_all_by_mac_port(0, 0, s.mac, s.number); },
};

constexpr DeletesByMode kByTrunkMacVlan = {
    [](const Subject &s) { return user_l2_addr_delete_trunk_dynamic_by_port_mac_vlan(0, 0, s.mac, s.number, s.vid); },
    [](const Subject &s) { return user_l2_addr_delete_trunk_static_by_port_mac_vlan(0, 0, s.mac, s.number, s.vid); },
    [](const Subject &s) { return user_l2_addr_delete_all_dynamic_by_port_mac_vlan(0, 0, s.mac, s.number, s.vid); },
};

// Arguments that a key does not use.
constexpr uint8_t kNoMac[NETLINK_MAC_BYTES] = {};
constexpr uint32_t kNoVlan = 0;
constexpr int32_t kNoPort = 0;

/** Makes the driver call of a mode. */
adp_status_t delete_by(const DeletesByMode &deletes, uint32_t mode, const uint8_t *mac, uint32_t vid, int32_t number,
                       adp_word_t last = 0) {
    const uint32_t row = low8(mode);
    if (row >= kModes) {
        return ADP_E_SELECTOR;
    }
    const MacKey key(mac);
    return deletes[row]({key.byte, low16(vid), number, last});
}

/** Deletes one entry by its address in a VLAN. */
[[gnu::noinline]] adp_status_t delete_entry(int32_t (*call)(uint32_t, const uint8_t *, uint32_t, adp_word_t),
                                            const uint8_t *mac, uint32_t vid, adp_word_t last) {
    return call(0, MacKey(mac).byte, low16(vid), last);
}

[[gnu::noinline]] adp_status_t delete_by_port(PhyPort port, uint32_t mode) {
    return delete_by(kByPort, mode, kNoMac, kNoVlan, number(port));
}

}  // namespace
}  // namespace adp

using namespace adp;

adp_status_t adp_del_mac_addr(const uint8_t mac[ADP_MAC_BYTES], uint32_t vid, uint32_t, adp_word_t option) {
    return delete_entry(user_mac_addr_delete, mac, vid, option);
}

adp_status_t adp_del_mac_mcast_addr(const uint8_t mac[ADP_MAC_BYTES], uint32_t vid, uint32_t, adp_word_t option) {
    return delete_entry(user_mac_mcast_addr_delete, mac, vid, option);
}

adp_status_t adp_del_mac_by_lrntype(uint32_t learn_type) {
    return user_l2_addr_del_all_addr_by_lrntype(0, 0, low8(learn_type));
}

adp_status_t adp_del_mac_addr_by_vlan(uint32_t vid, uint32_t mode) {
    return delete_by(kByVlan, mode, kNoMac, vid, kNoPort);
}

adp_status_t adp_del_mac_addr_by_mac(const uint8_t mac[ADP_MAC_BYTES], uint32_t mode) {
    return delete_by(kByMac, mode, mac, kNoVlan, kNoPort);
}

// Contract: all members are visited, whatever the driver returns; the result is the last one.
adp_status_t adp_del_mac_addr_by_intf(adp_intf_t intf, uint32_t mode) {
    return by_kind(
        Intf(intf), [=](PhyPort port) { return delete_by_port(port, mode); },
        [=](Intf agg) {
            int32_t last = ADP_FAIL;
            first_failure(agg, Members::kActive, [&](PhyPort port) {
                last = delete_by_port(port, mode);
                return 0;
            });
            return last;
        });
}

// Contract: the trunk id of a group is enough, so a group outside 1..8 is not refused.
adp_status_t adp_del_mac_addr_by_vlan_intf(uint32_t vid, adp_intf_t intf, uint32_t mode) {
    switch (kind_of(Intf(intf))) {
        case IntfKind::kUserPort:
            return delete_by(kByVlanPort, mode, kNoMac, vid, number(phy_of(Intf(intf))));
        case IntfKind::kAggregation:
            return delete_by(kByVlanTrunk, mode, kNoMac, vid, get_chip_tgid(Intf(intf)));
        default:
            return ADP_E_INTF_TYPE;
    }
}

adp_status_t adp_del_mac_addr_by_intf_mac(adp_intf_t intf, const uint8_t mac[ADP_MAC_BYTES], uint32_t mode,
                                          adp_word_t option) {
    return by_kind(
        Intf(intf), [=](PhyPort port) { return delete_by(kByMacPort, mode, mac, kNoVlan, number(port), option); },
        [](Intf) { return ADP_FAIL; });
}

adp_status_t adp_del_mac_addr_by_trunkid_mac_vlan(adp_intf_t intf, const uint8_t mac[ADP_MAC_BYTES], uint32_t mode,
                                                  uint32_t vid) {
    return delete_by(kByTrunkMacVlan, mode, mac, vid, number(phy_of(Intf(intf))));
}

adp_status_t adp_del_port_violate_mac_addr_by_intf(adp_intf_t intf) {
    return user_mac_violate_del_by_port(number(phy_of(Intf(intf))));
}
