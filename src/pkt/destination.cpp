// The five transmit modes. They differ on purpose in when the VLAN is asked for and in what ends the call.
#include "pkt/destination.h"

#include "core/resolve.h"
#include "pkt/vlan_members.h"

namespace adp {
namespace {

// The flag bits that the switch chip expects with the opcodes.
constexpr uint32_t kForwardFlags = 0xC;
constexpr uint32_t kOnePortFlags = 0xD;

constexpr TxTag tag_for(TxOpcode opcode, uint32_t flags = kForwardFlags) {
    return {static_cast<uint32_t>(opcode), flags};
}

constexpr TxTag kTags[] = {
    tag_for(TxOpcode::kPorts),                   // ADP_TX_PORTS
    tag_for(TxOpcode::kSwitch),                  // ADP_TX_SWITCH
    tag_for(TxOpcode::kVlanPort),                // ADP_TX_VLAN_PORT
    tag_for(TxOpcode::kOnePort, kOnePortFlags),  // ADP_TX_ONE_PORT
    tag_for(TxOpcode::kVlanPort),                // ADP_TX_VLAN_NOT_SOURCE
};
constexpr uint32_t kModes = sizeof kTags / sizeof kTags[0];
constexpr TxTag kFloodTag = tag_for(TxOpcode::kAllPorts);

static_assert(kModes == ADP_TX_VLAN_NOT_SOURCE + 1);
static_assert(kTags[ADP_TX_PORTS].first() == 0x98000000 && kTags[ADP_TX_SWITCH].first() == 0x38000000);
static_assert(kTags[ADP_TX_ONE_PORT].first() == 0xDA000000 && kTags[ADP_TX_VLAN_PORT].first() == 0x78000000);
static_assert(kFloodTag.first() == 0xF8000000);

/** The VLAN of a call: none, or a fetched member bitmap. */
struct VlanFilter {
    bool given = false;
    VlanMembers members;

    bool fetch(uint32_t vid) {
        given = true;
        return members.fetch(vid);
    }
    bool passes(Intf intf) const { return !given || members.has(intf); }
};

inline Intf intf_of_node(const adp_list_link_t *node) {
    return Intf(reinterpret_cast<const adp_tx_dest_t *>(node)->intf);
}

/** The user port that a frame to an interface is sent to; kNoIntf if there is none. */
Intf receiver_of(Intf intf) {
    return has_known_kind(intf) ? representative_of(intf) : kNoIntf;
}

// The modes of one port: every node is checked, the last one that names a port is the destination.
constexpr Intf kSkipNone = kNoIntf;

bool aim_at_last(const adp_list_link_t *list, const VlanFilter &vlan, Intf skipped, TxTag *tag) {
    for (const adp_list_link_t *node = list->next; node != list; node = node->next) {
        const Intf intf = intf_of_node(node);
        if (intf == skipped) {
            continue;
        }
        if (!has_known_kind(intf)) {
            return false;
        }
        if (index_of(intf) == 0) {
            continue;
        }
        if (!vlan.passes(intf)) {
            return false;
        }
        const Intf port = receiver_of(intf);
        if (port != kNoIntf) {
            tag->aim_at(phy_of(port));
        }
    }
    return true;
}

// Mode 0: interfaces that are no members of the VLAN, or have no port, are skipped.
bool add_if_reachable(Intf intf, const VlanFilter &vlan, TxTag *tag) {
    if (!vlan.passes(intf)) {
        return false;
    }
    const Intf port = receiver_of(intf);
    return port != kNoIntf && tag->add(phy_of(port));
}

bool add_listed(const adp_list_link_t *list, const VlanFilter &vlan, Intf source, TxTag *tag) {
    bool added = false;
    for (const adp_list_link_t *node = list->next; node != list; node = node->next) {
        const Intf intf = intf_of_node(node);
        if (intf != source) {
            added |= add_if_reachable(intf, vlan, tag);
        }
    }
    return added;
}

// Contract: without a VLAN aggregation interfaces are skipped; their members are flooded as user ports.
bool add_flooded(const VlanFilter &vlan, Intf source, TxTag *tag) {
    bool added = false;
    for (Intf port{1}; index_of(port) <= ADP_USER_PORTS; port = Intf(number(port) + 1)) {
        if (port != source && vlan.passes(port)) {
            added |= tag->add(phy_of(port));
        }
    }
    for (Intf agg{ADP_AGG_INTF(1)}; vlan.given && index_of(agg) <= ADP_AGG_GROUPS; agg = Intf(number(agg) + 1)) {
        if (agg != source) {
            added |= add_if_reachable(agg, vlan, tag);
        }
    }
    return added;
}

/** Two modes require a VLAN, in the others it is optional. */
constexpr bool asks_for_vlan(uint32_t mode, uint32_t vid) {
    return mode == ADP_TX_VLAN_PORT || mode == ADP_TX_VLAN_NOT_SOURCE || vid != ADP_NO_VLAN;
}

}  // namespace

bool build_tag(uint32_t mode, const adp_list_link_t *list, uint32_t vid, Intf source, TxTag *tag) {
    if (mode >= kModes) {
        return false;
    }
    const bool is_flooded = list == nullptr && mode == ADP_TX_PORTS;
    *tag = is_flooded && vid == ADP_NO_VLAN ? kFloodTag : kTags[mode];
    if (mode == ADP_TX_SWITCH) {
        return true;
    }
    if (list == nullptr && !is_flooded) {
        return false;
    }
    VlanFilter vlan;
    if (asks_for_vlan(mode, vid) && !vlan.fetch(vid)) {
        return false;
    }
    if (is_flooded) {
        return add_flooded(vlan, source, tag);
    }
    return mode == ADP_TX_PORTS ? add_listed(list, vlan, source, tag)
                                : aim_at_last(list, vlan, mode == ADP_TX_VLAN_NOT_SOURCE ? source : kSkipNone, tag);
}

}  // namespace adp
