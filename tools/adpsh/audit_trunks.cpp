// Trunks: the tables of the groups against each other, and against where the driver's addresses are.
#include "tools/adpsh/audit.h"

#include "calls/describe.h"

#include <netlink_api.h>

#include <fmt/format.h>

#include <algorithm>
#include <map>
#include <set>

namespace adpsh {

namespace {

// The user ports that a word of a group's configured members can name.
constexpr uint32_t kUserPortBits = ((1U << ADP_USER_PORTS) - 1) << 1;
constexpr uint32_t kConfiguredBits = 32;

class Trunks {
  public:
    Trunks(const AuditTables &tables, Audit &audit) : tables_(tables), audit_(audit) {}

    void compare(const std::vector<adp_l2_entry_t> &addresses);

  private:
    using Ports = std::set<uint32_t>;

    static std::string group_text(size_t trunk) { return fmt::format("agg{}", trunk + 1); }
    void read_members(size_t trunk);
    void add_member(size_t trunk, uint32_t phy);
    void compare_configured(size_t trunk);
    void compare_manager(size_t trunk);
    void compare_port_groups();
    void compare_learned(size_t trunk, uint32_t phy, size_t count);
    void compare_addresses(const std::vector<adp_l2_entry_t> &addresses);
    [[nodiscard]] bool is_used(size_t trunk) const {
        return !members_[trunk].empty() || tables_.records[trunk].count != 0 || tables_.records[trunk].in_use != 0;
    }

    const AuditTables &tables_;
    Audit &audit_;
    Ports members_[ADP_AGG_GROUPS];             ///< user ports by trunk id
    std::map<uint32_t, size_t> trunk_of_;       ///< by physical port
    std::map<uint32_t, size_t> configured_in_;  ///< by user port
};

void Trunks::read_members(size_t trunk) {
    const adp_agg_record_t &record = tables_.records[trunk];
    if (record.count < 0 || record.count > ADP_AGG_MEMBER_BYTES) {
        audit_.difference(group_text(trunk), fmt::format("agg_info says {} members, and a record holds {} at most",
                                                         record.count, ADP_AGG_MEMBER_BYTES));
        return;
    }
    for (int32_t i = 0; i < record.count; ++i) {
        add_member(trunk, record.ports[i]);
    }
}

void Trunks::add_member(size_t trunk, uint32_t phy) {
    const auto [other, is_new] = trunk_of_.emplace(phy, trunk);
    if (!is_new) {
        audit_.difference(group_text(trunk), fmt::format("agg_info has physical port {} in {} already", phy,
                                                         other->second == trunk ? "it" : group_text(other->second)));
        return;
    }
    if (const auto port = tables_.user_port_of(phy)) {
        members_[trunk].insert(*port);
    } else {
        audit_.difference(group_text(trunk),
                          fmt::format("agg_info has physical port {}, which is no user port of the port map", phy));
    }
}

void Trunks::compare_configured(size_t trunk) {
    const uint32_t *const words = tables_.configured[trunk];
    if ((words[0] & ~kUserPortBits) != 0 || words[1] != 0) {
        const uint32_t others[] = {words[0] & ~kUserPortBits, words[1]};
        audit_.difference(group_text(trunk), fmt::format("agg_standby_members has {}, which are no user ports",
                                                         calls::ports_text(others, std::size(others))));
    }
    for (uint32_t port = 1; port < kConfiguredBits; ++port) {
        if ((words[0] & kUserPortBits & 1U << port) == 0) {
            continue;
        }
        const auto [other, is_new] = configured_in_.emplace(port, trunk);
        if (!is_new) {
            audit_.difference(group_text(trunk), fmt::format("agg_standby_members has user port {} in {} already", port,
                                                             group_text(other->second)));
        }
    }
}

void Trunks::compare_manager(size_t trunk) {
    const uint32_t manager = tables_.managers[trunk];
    const Ports &active = members_[trunk];
    if (manager == 0) {
        if (!active.empty()) {
            audit_.difference(group_text(trunk), "agg_manage_intf has no manager, agg_info has members");
        }
        return;
    }
    const bool is_configured = tables_.configured != nullptr && manager < kConfiguredBits &&
                               (tables_.configured[trunk][0] >> manager & 1) != 0;
    if (active.empty() ? !is_configured : active.count(manager) == 0) {
        audit_.difference(group_text(trunk),
                          fmt::format("agg_manage_intf has interface {:#x}, which is no member", manager));
    }
}

void Trunks::compare_port_groups() {
    const auto groups = tables_.groups_by_port();
    for (size_t trunk = 0; trunk < ADP_AGG_GROUPS; ++trunk) {
        for (const uint32_t port : members_[trunk]) {
            if (port < groups.size() && groups[port] != ADP_AGG_INTF(trunk + 1)) {
                audit_.difference(port_text(port), fmt::format("agg_info has it in {}, intf_map_trunk has {:#x}",
                                                               group_text(trunk), groups[port]));
            }
        }
    }
    for (uint32_t port = 0; port < groups.size(); ++port) {
        const uint32_t trunk = groups[port] - ADP_AGG_INTF(1);
        const auto is_member_of = [port](const Ports &members) { return members.count(port) != 0; };
        const bool is_member = std::any_of(std::begin(members_), std::end(members_), is_member_of);
        if (groups[port] != 0 && !is_member) {
            audit_.difference(port_text(port),
                              trunk < ADP_AGG_GROUPS
                                  ? fmt::format("intf_map_trunk has it in {}, agg_info in none", group_text(trunk))
                                  : fmt::format("intf_map_trunk has {:#x}, which is no group", groups[port]));
        }
    }
}

void Trunks::compare_addresses(const std::vector<adp_l2_entry_t> &addresses) {
    std::map<uint32_t, size_t> behind_trunk;
    std::map<uint32_t, size_t> on_port;
    for (const adp_l2_entry_t &entry : addresses) {
        if ((entry.flags & NETLINK_L2_FOUND_TRUNK) != 0) {
            ++behind_trunk[static_cast<uint32_t>(entry.trunk)];
        } else if ((entry.flags & NETLINK_L2_STATIC) == 0 && (entry.mac[0] & 1) == 0) {
            ++on_port[static_cast<uint32_t>(entry.port)];
        }
    }
    for (const auto &[trunk, count] : behind_trunk) {
        if (trunk >= ADP_AGG_GROUPS || !is_used(trunk)) {
            audit_.difference(fmt::format("trunk {}", static_cast<int32_t>(trunk)),
                              fmt::format("agg_info has no group, the driver has {} address{} behind it", count,
                                          count == 1 ? "" : "es"));
        }
    }
    for (const auto &[phy, count] : on_port) {
        if (const auto member = trunk_of_.find(phy); member != trunk_of_.end()) {
            compare_learned(member->second, phy, count);
        }
    }
}

/** The library takes members without link out of the driver's trunk, and keeps them in the table. */
void Trunks::compare_learned(size_t trunk, uint32_t phy, size_t count) {
    uint32_t link = 0;
    const int32_t result = user_port_link_status_get(0, 0, static_cast<int32_t>(phy), &link);
    if (audit_.check(group_text(trunk), fmt::format("user_port_link_status_get on physical port {}", phy), result) &&
        link != 0) {
        audit_.difference(
            group_text(trunk),
            fmt::format("agg_info has physical port {}, the driver has {} dynamic address{} on it and not "
                        "on trunk {}",
                        phy, count, count == 1 ? "" : "es", trunk));
    }
}

void Trunks::compare(const std::vector<adp_l2_entry_t> &addresses) {
    size_t used = 0;
    for (size_t trunk = 0; trunk < ADP_AGG_GROUPS; ++trunk) {
        read_members(trunk);
        used += is_used(trunk) ? 1U : 0U;
    }
    for (size_t trunk = 0; trunk < ADP_AGG_GROUPS && tables_.configured != nullptr; ++trunk) {
        compare_configured(trunk);
    }
    for (size_t trunk = 0; trunk < ADP_AGG_GROUPS && tables_.managers != nullptr; ++trunk) {
        compare_manager(trunk);
    }
    compare_port_groups();
    compare_addresses(addresses);
    audit_.compared(used, "trunk", "trunks");
}

}  // namespace

void audit_trunks(const AuditTables &tables, const std::vector<adp_l2_entry_t> &addresses, Audit &audit) {
    audit.begin("trunks");
    if (tables.records == nullptr) {
        return audit.leave_out("agg_info");
    }
    if (tables.configured == nullptr) {
        audit.leave_out("agg_standby_members");
    }
    if (tables.managers == nullptr) {
        audit.leave_out("agg_manage_intf");
    }
    if (tables.port_groups == nullptr) {
        audit.leave_out("intf_map_trunk");
    }
    Trunks(tables, audit).compare(addresses);
}

}  // namespace adpsh
