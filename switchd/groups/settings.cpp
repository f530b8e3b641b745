// What settings of groups must keep to.
#include "switchd/groups/settings.h"

#include <adp/agg.h>

#include <set>

namespace switchd {
namespace {

static_assert(kDefaultBalance == ADP_BALANCE_SRC_DST_MAC);

std::string fault_of_values(const GroupSettings &settings) {
    if (settings.balance < ADP_BALANCE_DST_MAC || settings.balance > ADP_BALANCE_SRC_DST_IP) {
        return "the balancing mode must be 1 to 6.";
    }
    if (settings.minimum_links < 1 || settings.minimum_links > ADP_AGG_ACTIVE_MAX) {
        return "the minimum of links must be 1 to 8.";
    }
    return settings.members.empty() ? "it has no members." : "";
}

}  // namespace

std::string fault_of(const GroupsSettings &settings, uint32_t user_ports) {
    std::set<uint32_t> known;
    for (const auto &[number, group] : settings.groups) {
        const std::string name = "agg" + std::to_string(number) + ": ";
        if (number < 1 || number > ADP_AGG_GROUPS) {
            return name + "the groups are agg1 to agg8.";
        }
        if (const auto fault = fault_of_values(group); !fault.empty()) {
            return name + fault;
        }
        for (const auto &[port, priority] : group.members) {
            if (port < 1 || port > user_ports || port > ADP_USER_PORTS) {
                return name + "there is no port " + std::to_string(port) + ".";
            }
            if (!known.insert(port).second) {
                return name + "port " + std::to_string(port) + " is a member of another group, too.";
            }
        }
    }
    return "";
}

}  // namespace switchd
