// Follows the calls on multicast groups as the library makes driver calls of them.
#include "tools/adpsh/multicast_groups.h"

#include "tools/adpsh/execute.h"

#include <adp/agg.h>
#include <adp/port.h>

#include <algorithm>
#include <cstring>
#include <string_view>

namespace adpsh {

namespace {

using Ports = MulticastGroups::Ports;

constexpr uint32_t kWordBits = 32;
constexpr uint32_t kFrontPorts = 64;  // beyond them the calls of groups know none
constexpr uint32_t kPhysicalPorts = 256;

const Slot &slot_named(const Arguments &arguments, std::string_view name) {
    const auto &slots = arguments.slots();
    return *std::find_if(slots.begin(), slots.end(), [name](const Slot &slot) { return slot.parameter->name == name; });
}

void add_port(Ports &ports, uint32_t port) {
    if (port < kPhysicalPorts) {
        ports.word[port / kWordBits] |= 1U << port % kWordBits;
    }
}

bool has_port(const Ports &ports, uint32_t port) {
    return (ports.word[port / kWordBits] >> port % kWordBits & 1) != 0;
}

void remove_ports(Ports &ports, const Ports &removed) {
    for (size_t i = 0; i < std::size(ports.word); ++i) {
        ports.word[i] &= ~removed.word[i];
    }
}

std::vector<adp_intf_t> listed_intfs(const Arguments &arguments) {
    const Slot &members = slot_named(arguments, "members");
    std::vector<adp_intf_t> intfs(members.is_null ? 0 : members.elements);
    if (!intfs.empty()) {
        std::memcpy(intfs.data(), members.storage.data(), intfs.size() * sizeof(adp_intf_t));
    }
    return intfs;
}

void add_user_port(Ports &ports, uint32_t port) {
    add_port(ports, static_cast<uint32_t>(adp_intf_2_phy_id(port)));
}

/** A front port is a user port for the driver, and a group in the list stands for its configured members. */
Ports front_ports(const std::vector<adp_intf_t> &intfs) {
    Ports ports = {};
    for (const adp_intf_t intf : intfs) {
        const uint32_t type = intf >> ADP_INTF_TYPE_SHIFT;
        if (type == ADP_INTF_TYPE_USER_PORT && intf < kFrontPorts) {
            add_user_port(ports, intf);
        } else if (type == ADP_INTF_TYPE_AGG) {
            uint32_t count = 0;
            adp_intf_t members[ADP_MEMBER_LIST_SLOTS] = {};
            if (GET_AGG_CONFIG_GROUP(intf, &count, members) == ADP_OK) {
                std::for_each_n(members, count, [&](adp_intf_t member) { add_user_port(ports, member); });
            }
        }
    }
    return ports;
}

/** With an empty list the library hands the ports that it has read back as front ports. */
Ports front_ports_of_physical(const Ports &physical) {
    std::vector<adp_intf_t> intfs;
    for (uint32_t port = 0; port < kFrontPorts; ++port) {
        if (has_port(physical, port)) {
            intfs.push_back(port);
        }
    }
    return front_ports(intfs);
}

void change_members(Ports &ports, bool is_added, const std::vector<adp_intf_t> &intfs) {
    if (!is_added) {
        return remove_ports(ports, intfs.empty() ? front_ports_of_physical(ports) : front_ports(intfs));
    }
    for (const adp_intf_t intf : intfs) {
        add_user_port(ports, intf);  // another interface has no physical port
    }
}

}  // namespace

void MulticastGroups::follow(const Outcome &outcome) {
    const std::string_view name = outcome.call->name;
    if (name == "adp_igmp_init" || name == "adp_modules_init") {
        groups_.clear();
    }
    if (outcome.result != ADP_OK || name.find("igmpsn") == std::string_view::npos || name == "adp_get_igmpsn_group") {
        return;
    }
    const Arguments &arguments = *outcome.arguments;
    Key key;
    key.first = static_cast<uint16_t>(calls::load(calls::Kind::kU32, slot_named(arguments, "vid").storage.data()));
    std::memcpy(key.second.data(), slot_named(arguments, "mac").storage.data(), key.second.size());
    if (name == "adp_delete_igmpsn_group") {
        groups_.erase(key);
    } else if (name == "adp_create_igmpsn_group") {
        groups_[key] = front_ports(listed_intfs(arguments));
    } else if (const auto group = groups_.find(key); group != groups_.end()) {
        change_members(group->second, name == "adp_add_igmpsn_member", listed_intfs(arguments));
    }
}

}  // namespace adpsh
