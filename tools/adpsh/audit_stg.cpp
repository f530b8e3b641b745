// Spanning tree: the group of each VLAN by the table and by the driver's lists.
#include "tools/adpsh/audit.h"

#include <netlink_api.h>

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <optional>
#include <set>

namespace adpsh {

namespace {

constexpr uint32_t kMostGroups = 64;
constexpr uint32_t kGroupChunk = 64;
constexpr uint32_t kVlanChunk = 1024;
/** Stands in a chunk where the driver has written nothing. */
constexpr uint16_t kNoVlan = UINT16_MAX;

using GroupOfVlan = std::array<std::optional<int32_t>, ADP_VLANS>;

class SpanningTree {
  public:
    SpanningTree(const AuditTables &tables, Audit &audit) : tables_(tables), audit_(audit) {}

    void compare();

  private:
    std::vector<int32_t> read_groups();
    void read_vlans(int32_t group);
    void add_vlan(int32_t group, uint16_t vid);
    [[nodiscard]] uint32_t limited(const std::string &place, const char *call, uint32_t count, uint32_t most);
    [[nodiscard]] bool differs(size_t vid) const;
    void report(size_t first, size_t last);

    const AuditTables &tables_;
    Audit &audit_;
    std::optional<int32_t> default_group_;
    GroupOfVlan group_of_;
    bool is_listed_ = false;    ///< the driver's groups are known
    std::set<int32_t> unread_;  ///< groups whose VLANs are not, or not all
};

std::string stg_text(int32_t group) {
    return fmt::format("group {}", group);
}

uint32_t SpanningTree::limited(const std::string &place, const char *call, uint32_t count, uint32_t most) {
    if (count > most) {
        audit_.difference(place, fmt::format("{} gave {}, more than {}: the rest is not compared", call, count, most));
    }
    return std::min(count, most);
}

std::vector<int32_t> SpanningTree::read_groups() {
    uint32_t count = 0;
    if (!audit_.check("groups", "user_stg_stg_count_get", user_stg_stg_count_get(0, 0, &count))) {
        return {};
    }
    const uint32_t limit = limited("groups", "user_stg_stg_count_get", count, kMostGroups);
    std::vector<int32_t> groups(kGroupChunk);
    is_listed_ = audit_.check("groups", "user_stg_each_time_list",
                              user_stg_each_time_list(0, 0, groups.data(), 0, kGroupChunk)) &&
                 count == limit;
    groups.resize(limit);
    std::sort(groups.begin(), groups.end());
    const auto twice = std::adjacent_find(groups.begin(), groups.end());
    if (twice != groups.end()) {
        audit_.difference(stg_text(*twice), "the driver lists it twice");
        groups.erase(std::unique(groups.begin(), groups.end()), groups.end());
    }
    return groups;
}

void SpanningTree::add_vlan(int32_t group, uint16_t vid) {
    if (vid >= group_of_.size()) {
        audit_.difference(stg_text(group), fmt::format("the driver lists VLAN {}, which is none", vid));
    } else if (group_of_[vid]) {
        audit_.difference(stg_text(group), fmt::format("the driver lists VLAN {}, which it has in {} already", vid,
                                                       stg_text(*group_of_[vid])));
    } else {
        group_of_[vid] = group;
    }
}

void SpanningTree::read_vlans(int32_t group) {
    uint32_t count = 0;
    unread_.insert(group);
    if (!audit_.check(stg_text(group), "user_stg_vlan_count_get", user_stg_vlan_count_get(0, 0, group, &count))) {
        return;
    }
    const uint32_t limit = limited(stg_text(group), "user_stg_vlan_count_get", count, ADP_VLANS);
    for (uint32_t first = 0; first < limit; first += kVlanChunk) {
        std::array<uint16_t, kVlanChunk> chunk;
        chunk.fill(kNoVlan);
        const uint32_t index = first / kVlanChunk;
        if (!audit_.check(stg_text(group), fmt::format("user_stg_vlan_each_time_list for chunk {}", index),
                          user_stg_vlan_each_time_list(0, 0, group, chunk.data(), index, kVlanChunk))) {
            return;
        }
        for (uint32_t i = 0; i < std::min(kVlanChunk, limit - first); ++i) {
            add_vlan(group, chunk[i]);
        }
    }
    if (count == limit) {
        unread_.erase(group);
    }
}

bool SpanningTree::differs(size_t vid) const {
    const int32_t wanted = tables_.vlan_groups[vid];
    const std::optional<int32_t> found = group_of_[vid];
    if (!found) {
        return wanted != 0 && is_listed_ && unread_.count(wanted) == 0;
    }
    // 0 in the table is no group, which is the default one for the driver.
    return wanted != 0 ? *found != wanted : default_group_ && *found != *default_group_;
}

void SpanningTree::report(size_t first, size_t last) {
    const int32_t wanted = tables_.vlan_groups[first];
    const std::optional<int32_t> found = group_of_[first];
    audit_.difference(first == last ? fmt::format("VLAN {}", first) : fmt::format("VLANs {}-{}", first, last),
                      fmt::format("aiVlanStg has {}, the driver {}", wanted == 0 ? "no group" : stg_text(wanted),
                                  found ? stg_text(*found) : "no group"));
}

void SpanningTree::compare() {
    uint32_t group = 0;
    if (audit_.check("groups", "user_stg_default_get", user_stg_default_get(0, 0, &group))) {
        default_group_ = static_cast<int32_t>(group);
    }
    const std::vector<int32_t> groups = read_groups();
    for (const int32_t each : groups) {
        read_vlans(each);
    }
    for (size_t vid = 0; vid < ADP_VLANS; ++vid) {
        if (!differs(vid)) {
            continue;
        }
        const size_t first = vid;
        while (vid + 1 < ADP_VLANS && differs(vid + 1) && group_of_[vid + 1] == group_of_[first] &&
               tables_.vlan_groups[vid + 1] == tables_.vlan_groups[first]) {
            ++vid;
        }
        report(first, vid);
    }
    audit_.compared(groups.size(), "spanning-tree group", "spanning-tree groups");
    audit_.compared(static_cast<size_t>(std::count_if(group_of_.begin(), group_of_.end(),
                                                      [](const auto &found) { return found.has_value(); })),
                    "VLAN", "VLANs");
}

}  // namespace

void audit_stg(const AuditTables &tables, Audit &audit) {
    audit.begin("spanning tree");
    if (tables.vlan_groups == nullptr) {
        return audit.leave_out("aiVlanStg");
    }
    SpanningTree(tables, audit).compare();
}

}  // namespace adpsh
