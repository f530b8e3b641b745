// Deleting from the MAC address table, by every key that the management software has and by kind of entry.
#include <adp/mac.h>

#include "agg/members.h"
#include "agg/resolve.h"
#include "l2/mac.h"

namespace adp {
namespace {

constexpr int32_t kAnyModule = -1;
constexpr uint32_t kModes = 3;

/** What a delete call may name; each key uses its part. */
struct Subject {
    const uint8_t *key = nullptr;
    uint32_t vid = 0;
    int32_t port = 0;
    int32_t trunk = 0;
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
    [](const Subject &s) { return user_l2_addr_delete_by_mac(0, 0, s.key, 0); },
    [](const Subject &s) { return user_l2_addr_delete_static_by_mac(0, 0, s.key, 0); },
    [](const Subject &s) { return user_l2_addr_delete_by_mac(0, 0, s.key, 1); },
};

constexpr DeletesByMode kByPort = {
    [](const Subject &s) { return user_l2_addr_delete_by_port(0, 0, kAnyModule, s.port, 0); },
    [](const Subject &s) { return user_l2_addr_delete_static_by_port(0, 0, kAnyModule, s.port); },
    [](const Subject &s) { return user_l2_addr_delete_by_port(0, 0, kAnyModule, s.port, 1); },
};

constexpr DeletesByMode kByVlanPort = {
    [](const Subject &s) { return user_l2_addr_delete_by_vlan_port(0, 0, s.vid, kAnyModule, s.port, 0); },
    [](const Subject &s) { return user_l2_addr_delete_static_by_vlan_port(0, 0, s.vid, s.port); },
    [](const Subject &s) { return user_l2_addr_delete_by_vlan_port(0, 0, s.vid, kAnyModule, s.port, 1); },
};

// The driver has no call for a trunk's static entries alone: all are deleted, and the caller is told of a failure.
constexpr DeletesByMode kByVlanTrunk = {
    [](const Subject &s) { return user_l2_addr_delete_by_vlan_trunk(0, 0, s.vid, s.trunk, 0); },
    [](const Subject &s) {
        user_l2_addr_delete_by_vlan_trunk(0, 0, s.vid, s.trunk, 1);
        return ADP_FAIL;
    },
    [](const Subject &s) { return user_l2_addr_delete_by_vlan_trunk(0, 0, s.vid, s.trunk, 1); },
};

constexpr DeletesByMode kByMacPort = {
    [](const Subject &s) { return user_l2_addr_delete_dynaic_by_mac_port(0, 0, s.key, s.port, s.last); },
    [](const Subject &s) { return user_l2_addr_delete_static_by_mac_port(0, 0, s.key, s.port, s.last); },
    [](const Subject &s) { return user_l2_addr_delete_all_by_mac_port(0, 0, s.key, s.port); },
};

constexpr DeletesByMode kByTrunkMacVlan = {
    [](const Subject &s) { return user_l2_addr_delete_trunk_dynamic_by_port_mac_vlan(0, 0, s.key, s.port, s.vid); },
    [](const Subject &s) { return user_l2_addr_delete_trunk_static_by_port_mac_vlan(0, 0, s.key, s.port, s.vid); },
    [](const Subject &s) { return user_l2_addr_delete_all_dynamic_by_port_mac_vlan(0, 0, s.key, s.port, s.vid); },
};

adp_status_t delete_by(const DeletesByMode &deletes, uint32_t mode, const Subject &subject) {
    const uint32_t number = low8(mode);
    return number < kModes ? deletes[number](subject) : ADP_E_SELECTOR;
}

adp_status_t delete_by_port(PhyPort port, uint32_t mode) {
    return delete_by(kByPort, mode, {.port = port.value()});
}

}  // namespace
}  // namespace adp

using adp::Intf;
using adp::IntfKind;
using adp::low16;
using adp::MacKey;
using adp::PhyPort;

adp_status_t adp_del_mac_addr(const uint8_t mac[ADP_MAC_BYTES], uint32_t vid, uint32_t, adp_word_t last) {
    return user_mac_addr_delete(0, MacKey(mac).byte, low16(vid), last);
}

adp_status_t adp_del_mac_mcast_addr(const uint8_t mac[ADP_MAC_BYTES], uint32_t vid, uint32_t, adp_word_t last) {
    return user_mac_mcast_addr_delete(0, MacKey(mac).byte, low16(vid), last);
}

adp_status_t adp_del_mac_by_lrntype(uint32_t type) {
    return user_l2_addr_del_all_addr_by_lrntype(0, 0, adp::low8(type));
}

adp_status_t adp_del_mac_addr_by_vlan(uint32_t vid, uint32_t mode) {
    return adp::delete_by(adp::kByVlan, mode, {.vid = low16(vid)});
}

adp_status_t adp_del_mac_addr_by_mac(const uint8_t mac[ADP_MAC_BYTES], uint32_t mode) {
    const MacKey key(mac);
    return adp::delete_by(adp::kByMac, mode, {.key = key.byte});
}

adp_status_t adp_del_mac_addr_by_intf(adp_intf_t intf, uint32_t mode) {
    return adp::by_kind(
        Intf(intf), [=](PhyPort port) { return adp::delete_by_port(port, mode); },
        [=](Intf agg) {
            return adp::every_member_last_result(agg, adp::Members::kActive, ADP_FAIL,
                                                 [=](PhyPort port) { return adp::delete_by_port(port, mode); });
        });
}

// A group is not looked up here, its trunk id is enough: so it is not checked either.
adp_status_t adp_del_mac_addr_by_vlan_intf(uint32_t vid, adp_intf_t intf, uint32_t mode) {
    switch (Intf(intf).kind()) {
        case IntfKind::kUserPort:
            return adp::delete_by(adp::kByVlanPort, mode, {.vid = low16(vid), .port = adp::phy_of(Intf(intf)).value()});
        case IntfKind::kAggregation:
            return adp::delete_by(adp::kByVlanTrunk, mode,
                                  {.vid = low16(vid), .trunk = adp::get_chip_tgid(Intf(intf))});
        default:
            return ADP_E_INTF_TYPE;
    }
}

adp_status_t adp_del_mac_addr_by_intf_mac(adp_intf_t intf, const uint8_t mac[ADP_MAC_BYTES], uint32_t mode,
                                          adp_word_t last) {
    const MacKey key(mac);
    return adp::by_kind(
        Intf(intf),
        [&](PhyPort port) {
            return adp::delete_by(adp::kByMacPort, mode, {.key = key.byte, .port = port.value(), .last = last});
        },
        [](Intf) { return ADP_FAIL; });
}

adp_status_t adp_del_mac_addr_by_trunkid_mac_vlan(adp_intf_t intf, const uint8_t mac[ADP_MAC_BYTES], uint32_t mode,
                                                  uint32_t vid) {
    const MacKey key(mac);
    return adp::delete_by(adp::kByTrunkMacVlan, mode,
                          {.key = key.byte, .vid = low16(vid), .port = adp::phy_of(Intf(intf)).value()});
}

adp_status_t adp_del_port_violate_mac_addr_by_intf(adp_intf_t intf) {
    return user_mac_violate_del_by_port(adp::phy_of(Intf(intf)).value());
}
