// The interfaces of the switch among the kernel's.
#include <algorithm>
#include <tuple>

#include "switchd/mirror/draft.h"

namespace switchd {
namespace {

std::optional<PortName> port_of(const Plan &plan, int index, const Link &link) {
    if (const auto found = plan.interfaces.find(index); found != plan.interfaces.end()) {
        return found->second;
    }
    const auto parent = plan.interfaces.find(link.parent);
    if (link.vid == 0 || parent == plan.interfaces.end() || parent->second.vid != 0) {
        return std::nullopt;
    }
    return PortName{parent->second.intf, link.vid};
}

/** The group that a user port belongs to; 0 for none. */
uint32_t group_of(const Plan &plan, uint32_t port) {
    const auto found = std::find_if(plan.groups.begin(), plan.groups.end(), [&](const auto &group) {
        return port <= plan.user_ports && has(group.second, port);
    });
    return found == plan.groups.end() ? 0 : found->first;
}

/** Nothing for a port that the switch has not. */
std::optional<IntfSet> user_ports_of(const Plan &plan, uint32_t intf) {
    if (const auto group = plan.groups.find(intf); group != plan.groups.end()) {
        return group->second & plan.all() & ~kCpuAlone;
    }
    if (intf == kCpuIntf || intf > plan.user_ports) {
        return std::nullopt;
    }
    return set_of(intf);
}

}  // namespace

void find_members(Draft &draft) {
    for (const auto &[index, link] : draft.kernel.links) {
        const auto port = port_of(draft.plan, index, link);
        const auto ports = port ? user_ports_of(draft.plan, port->intf) : std::nullopt;
        if (!ports) {
            continue;
        }
        if (const uint32_t group = group_of(draft.plan, port->intf); group != 0) {
            if (link.master != 0) {
                draft.remark(link.name, "is a port of " + name_of({group, 0}) + ", whose bridge counts");
            }
            continue;
        }
        draft.members.push_back({index, &link, *port, *ports, draft.is_bridge(link.master) ? link.master : 0});
    }
    std::sort(draft.members.begin(), draft.members.end(), [](const Member &a, const Member &b) {
        return std::tie(a.port, a.interface) < std::tie(b.port, b.interface);
    });
}

}  // namespace switchd
