// Brings the chip to what is wanted, by the differences alone.
#include "switchd/mirror/applier.h"

#include <adp/adp.h>

#include <algorithm>
#include <utility>

#include "switchd/mirror/failures.h"
#include "switchd/ports/port_name.h"

namespace switchd {
namespace {

constexpr TableCalls<uint32_t> kAddressCalls = {
    .entries = "static addresses",
    .add =
        [](const VlanMac &key, uint32_t intf) {
            constexpr uint32_t kStatic = 1;
            return adp_add_mac_addr(key.mac.data(), intf, key.vid, kStatic);
        },
    .remove = [](const VlanMac &key) { return adp_del_mac_addr(key.mac.data(), key.vid, 0, 0); },
    .is_there =
        [](const VlanMac &key) {
            adp_l2_entry_t entry = {};
            return adp_get_mac_addr(key.mac.data(), key.vid, &entry) == ADP_OK;
        },
};

constexpr TableCalls<IntfSet> kGroupCalls = {
    .entries = "multicast groups",
    .add =
        [](const VlanMac &key, IntfSet ports) {
            constexpr uint32_t kOnlyKind = 1;
            return adp_add_mac_mcast_addr(key.mac.data(), ports, key.vid, kOnlyKind);
        },
    .remove = [](const VlanMac &key) { return adp_del_mac_mcast_addr(key.mac.data(), key.vid, 0, 0); },
    .is_there =
        [](const VlanMac &key) {
            adp_l2_entry_t entry = {};
            return adp_get_mac_mcast_addr(key.mac.data(), key.vid, &entry) == ADP_OK;
        },
};

constexpr const char *kSwitch = "switch";

std::string port_text(uint32_t port) {
    return name_of({port, 0});
}

}  // namespace

Applier::Applier(const Plan &plan) : Applier{read_whole_switch(plan)} {}

Applier::Applier(SwitchReading reading)
    : present_{std::move(reading.state)},
      trees_{std::move(reading.trees)},
      default_vid_{reading.default_vid},
      addresses_{kAddressCalls},
      groups_{kGroupCalls} {}

Remarks Applier::apply(const SwitchState &wanted) {
    remarks_.clear();
    close(wanted);
    join(wanted);
    open(wanted);
    for (auto &[vid, vlan] : present_.vlans) {
        vlan.not_forwarding = trees_.present().states_of(vid);
    }
    // What failed while ports were closed may fail again while they are opened.
    std::sort(remarks_.begin(), remarks_.end());
    remarks_.erase(std::unique(remarks_.begin(), remarks_.end()), remarks_.end());
    return std::exchange(remarks_, {});
}

void Applier::close(const SwitchState &wanted) {
    set_unknown_groups(wanted, ADP_MCAST_MISS_FLOOD);  // before the groups become unknown
    remove_entries(wanted);
    for (const auto &[port, settings] : wanted.ports) {
        set_may_send_to(port, present_.ports[port].may_send_to & settings.may_send_to);
        if (settings.learning == Learning::kClosed) {
            set_learning(port, settings.learning);
        }
    }
    destroy_vlans(wanted);
    for (const auto &[vid, vlan] : wanted.vlans) {
        if (const auto present = present_.vlans.find(vid); present != present_.vlans.end()) {
            const IntfSet members = present->second.members & vlan.members;
            set_members(vid, {members, present->second.untagged & members, {}});
        }
    }
}

void Applier::join(const SwitchState &wanted) {
    create_vlans(wanted);
    trees_.close(wanted.vlans, remarks_);
    for (const auto &[vid, vlan] : wanted.vlans) {
        join_vlan(vid, vlan);
    }
    for (const auto &[port, settings] : wanted.ports) {
        set_pvid(port, settings.pvid);
    }
}

void Applier::open(const SwitchState &wanted) {
    trees_.open(wanted.vlans, present_.vlans, remarks_);
    for (const auto &[port, settings] : wanted.ports) {
        set_may_send_to(port, settings.may_send_to);
        if (settings.learning != Learning::kClosed) {
            set_learning(port, settings.learning);
        }
    }
    addresses_.add(wanted.addresses, present_.addresses, remarks_);
    groups_.add(wanted.groups, present_.groups, remarks_);
    if (present_.ageing_seconds != wanted.ageing_seconds &&
        check(adp_set_mac_age_time(wanted.ageing_seconds), kSwitch, "does not take the ageing time", remarks_)) {
        present_.ageing_seconds = wanted.ageing_seconds;
    }
    set_control(ADP_CONTROL_IGMP, wanted.igmp_to_cpu, present_.igmp_to_cpu);
    set_control(ADP_CONTROL_MLD, wanted.mld_to_cpu, present_.mld_to_cpu);
    set_unknown_groups(wanted, ADP_MCAST_MISS_TO_CPU);
}

/** Port authorisation opens a closed port for single addresses, and those are not ours. */
bool Applier::is_authorised(uint32_t intf, const SwitchState &wanted) const {
    return std::any_of(wanted.ports.begin(), wanted.ports.end(), [&](const auto &entry) {
        const auto &[port, settings] = entry;
        const auto present = present_.ports.find(port);
        return (port == intf || GET_INTF_MAPPING_AGGINTF(port) == intf) && present != present_.ports.end() &&
               present->second.learning == Learning::kClosed && settings.learning != Learning::kClosed &&
               !closed_ports_.contains(port);
    });
}

void Applier::remove_entries(const SwitchState &wanted) {
    // Those of VLANs that are destroyed go with them.
    const auto stays = [&](uint16_t vid) { return wanted.vlans.contains(vid) || vid == default_vid_; };
    const auto is_surplus = [&](const VlanMac &key, uint32_t intf) {
        return !wanted.addresses.contains(key) && stays(key.vid) && !is_authorised(intf, wanted);
    };
    addresses_.remove(present_.addresses, is_surplus, remarks_);
    groups_.remove(
        present_.groups, [&](const VlanMac &key, IntfSet) { return !wanted.groups.contains(key) && stays(key.vid); },
        remarks_);
}

void Applier::create_vlans(const SwitchState &wanted) {
    for (const auto &[vid, vlan] : wanted.vlans) {
        if (!present_.vlans.contains(vid) &&
            (vid == default_vid_ || check(adp_vlan_create(vid), vlan_text(vid), "cannot be made", remarks_))) {
            present_.vlans[vid] = {};
        }
    }
}

void Applier::destroy_vlans(const SwitchState &wanted) {
    const auto is_in = [](uint16_t vid) { return [vid](const auto &entry) { return entry.first.vid == vid; }; };
    std::erase_if(present_.vlans, [&](const auto &entry) {
        const uint16_t vid = entry.first;
        if (wanted.vlans.contains(vid)) {
            return false;
        }
        if (vid == default_vid_) {
            return set_members(vid, {});
        }
        if (!check(adp_vlan_destroy(vid), vlan_text(vid), "cannot be removed", remarks_)) {
            return false;
        }
        std::erase_if(present_.addresses, is_in(vid));
        std::erase_if(present_.groups, is_in(vid));
        return true;
    });
}

bool Applier::set_members(uint16_t vid, const VlanState &wanted) {
    VlanState &present = present_.vlans.at(vid);
    if (present.members == wanted.members && present.untagged == wanted.untagged) {
        return true;
    }
    const adp_ports_t members = {wanted.members};
    const adp_ports_t untagged = {wanted.untagged};
    if (!check(adp_vlan_port_set(vid, members, untagged), vlan_text(vid), "does not take its ports", remarks_)) {
        return false;
    }
    present.members = wanted.members;
    present.untagged = wanted.untagged;
    return true;
}

void Applier::join_vlan(uint16_t vid, const VlanState &wanted) {
    if (!present_.vlans.contains(vid)) {
        return;
    }
    const IntfSet members = trees_.allowed_members(vid, wanted);
    set_members(vid, {members, wanted.untagged & members, {}});
    if (trees_.lacks_group(vid, wanted) && members != wanted.members) {
        std::string names;
        for_each(wanted.members & ~members,
                 [&](uint32_t port) { names += (names.empty() ? "" : ", ") + port_text(port); });
        remarks_.push_back(
            {vlan_text(vid),
             "lacks ports that do not forward, since all spanning-tree groups of the chip are in use: " + names});
    }
}

void Applier::set_pvid(uint32_t port, uint16_t vid) {
    if (present_.ports[port].pvid != vid &&
        check(adp_intf_pivd_set(port, vid), port_text(port),
              "cannot have its untagged frames in VLAN " + std::to_string(vid), remarks_)) {
        present_.ports[port].pvid = vid;
    }
}

void Applier::set_may_send_to(uint32_t port, IntfSet may_send_to) {
    if (present_.ports[port].may_send_to != may_send_to &&
        check(adp_set_port_isolate(port, may_send_to, 0), port_text(port), "does not take its isolation", remarks_)) {
        present_.ports[port].may_send_to = may_send_to;
    }
}

/** Port authorisation sets the same mode, so it is asked for before, and what it has closed stays closed. */
void Applier::set_learning(uint32_t port, Learning wanted) {
    Learning &present = present_.ports[port].learning;
    if (present == wanted) {
        if (wanted == Learning::kClosed) {
            closed_ports_.insert(port);
        }
        return;
    }
    uint32_t mode = ADP_LEARN_NORMAL;
    if (!check(adp_intf_learn_get(port, &mode), port_text(port), "does not tell its learning", remarks_)) {
        return;
    }
    present = learning_of(mode);
    if (present == Learning::kClosed && wanted != Learning::kClosed && !closed_ports_.contains(port)) {
        return;
    }
    constexpr adp_learn_mode kModes[] = {ADP_LEARN_NORMAL, ADP_LEARN_OFF, ADP_LEARN_CLOSED};
    if (present != wanted && !check(adp_intf_learn_set(port, kModes[static_cast<size_t>(wanted)]), port_text(port),
                                    "does not take its learning", remarks_)) {
        return;
    }
    present = wanted;
    if (wanted == Learning::kClosed) {
        closed_ports_.insert(port);
    } else {
        closed_ports_.erase(port);
    }
}

void Applier::set_control(adp_switch_control control, bool wanted, bool &present) {
    if (present != wanted && check(adp_set_vlan_igmp_pkt_action(control, wanted ? 1 : 0), kSwitch,
                                   "does not take what becomes of IGMP and MLD messages", remarks_)) {
        present = wanted;
    }
}

/** Where the action is the wanted one. The calls do not say whether they failed. */
void Applier::set_unknown_groups(const SwitchState &wanted, adp_mcast_miss action) {
    if (wanted.unknown_ipv4_groups == action && present_.unknown_ipv4_groups != action) {
        adp_control_ipmc_lookup_miss_action(action);
        present_.unknown_ipv4_groups = action;
    }
    if (wanted.unknown_ipv6_groups == action && present_.unknown_ipv6_groups != action) {
        adp_control_ip6mc_lookup_miss_action(action);
        present_.unknown_ipv6_groups = action;
    }
}

}  // namespace switchd
