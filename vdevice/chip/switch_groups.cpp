// Groups of stations: their entries, and the way of the frames to them (IGMP and MLD snooping, RFC 4541).
#include "vdevice/chip/switch.h"

namespace vdevice::chip {

Status Switch::add_group(Mac mac, uint32_t vid, const PortSet &ports) {
    if (!ports.is_within(all_ports())) {
        return Status::kNoPort;
    }
    const Status status = vlans_.check(vid);
    return status != Status::kOk ? status : macs_.add_group(mac, static_cast<Vid>(vid), ports);
}

Status Switch::remove_group(Mac mac, uint32_t vid) {
    return is_vid(vid) ? macs_.remove_group(mac, static_cast<Vid>(vid)) : Status::kVlanRange;
}

const MacEntry *Switch::find_group(Mac mac, uint32_t vid) const {
    return mac.is_group() && is_vid(vid) ? macs_.find(mac, static_cast<Vid>(vid)) : nullptr;
}

Status Switch::add_group_ports(Mac mac, uint32_t vid, const PortSet &ports) {
    const MacEntry *group = find_group(mac, vid);
    return group == nullptr ? Status::kGroupMissing : add_group(mac, vid, macs_.ports_of(*group) | ports);
}

Status Switch::remove_group_ports(Mac mac, uint32_t vid, const PortSet &ports) {
    const MacEntry *group = find_group(mac, vid);
    return group == nullptr ? Status::kGroupMissing : add_group(mac, vid, macs_.ports_of(*group) - ports);
}

void Switch::forward_group(const Flow &flow) {
    const Mac group = flow.header.destination;
    if (is_always_flooded(group) || !at(flow.ingress).groups.uses_entries) {
        return flood(flow);
    }
    if (const MacEntry *entry = macs_.find(group, flow.vid)) {
        return send_to(flow, with_whole_trunks(macs_.ports_of(*entry)));
    }
    switch (miss_of(flow)) {
        case GroupMiss::kDrop:
            return drop(flow.ingress, Drop::kUnknownGroup);
        case GroupMiss::kToCpu:
            return hand_over(flow);
        case GroupMiss::kFlood:
            return flood(flow);
    }
}

GroupMiss Switch::miss_of(const Flow &flow) const {
    const PortGroupRules &rules = port(flow.ingress).groups;
    if (is_ipv4_group(flow.header.destination) && group_rules_.knows_ipv4 && rules.knows_ipv4) {
        return rules.ipv4_miss;
    }
    if (is_ipv6_group(flow.header.destination) && group_rules_.knows_ipv6) {
        return rules.ipv6_miss;
    }
    return GroupMiss::kFlood;
}

/** A group that has one port of a trunk has stations behind the trunk, and they are there by its other ports too. */
PortSet Switch::with_whole_trunks(PortSet ports) const {
    for (int number = 0; number < TrunkTable::kTrunks; ++number) {
        const Trunk *trunk = trunks_.find(number);
        if (trunk != nullptr && !(trunk->ports() & ports).empty()) {
            ports |= trunk->member_set();
        }
    }
    return ports;
}

}  // namespace vdevice::chip
