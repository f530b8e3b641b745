// Rules: the list of installed rules against the submodules, their entries against each other, and their counters
// against the driver, which has no call that reads an entry.
#include "tools/adpsh/audit.h"
#include "tools/adpsh/guard.h"

#include <netlink_api.h>

#include <fmt/format.h>

#include <algorithm>
#include <cstring>
#include <map>
#include <set>
#include <utility>

namespace adpsh {

namespace {

constexpr size_t kMostRules = 65536;

class Rules {
  public:
    Rules(const AuditTables &tables, Audit &audit) : tables_(tables), audit_(audit) {}

    void compare();

  private:
    using Key = std::pair<uint32_t, uint32_t>;  ///< submodule and entity

    bool read(const adp_list_link_t *link);
    void compare_rule();
    void compare_entries(uint32_t width);
    void compare_counters();
    [[nodiscard]] std::string rule_text() const {
        return fmt::format("rule {} of submodule {}", node_.entity.entity_id, node_.entity.submodule_type);
    }
    [[nodiscard]] const FpInfo *submodule() const;

    const AuditTables &tables_;
    Audit &audit_;
    FpListNode node_{};  ///< a copy of the rule under way
    std::set<Key> keys_;
    std::map<uint32_t, std::string> rule_of_entry_;
};

/** The list is in memory that anything may have overwritten. */
bool Rules::read(const adp_list_link_t *link) {
    return link != nullptr && run_guarded([this, link] { std::memcpy(&node_, link, sizeof node_); }).signal == 0;
}

const FpInfo *Rules::submodule() const {
    const FpInfo *const end = tables_.submodules + ADP_FP_SUBMODULES;
    // The library takes the last row of a type.
    const FpInfo *found = nullptr;
    for (const FpInfo *row = tables_.submodules; row != end; ++row) {
        if (static_cast<uint32_t>(row->submodule_type) == node_.entity.submodule_type) {
            found = row;
        }
    }
    return found;
}

void Rules::compare_entries(uint32_t width) {
    for (uint32_t i = 0; i < width; ++i) {
        const uint32_t entry = node_.entity.true_entry + i;
        const auto [other, is_new] = rule_of_entry_.emplace(entry, rule_text());
        if (!is_new) {
            audit_.difference(rule_text(), fmt::format("has entry {}, as {} has", entry, other->second));
            return;
        }
    }
}

void Rules::compare_counters() {
    for (int32_t i = 0; i < node_.entity.action_num; ++i) {
        const FpAction &action = node_.entity.actions[i];
        if (action.type != ADP_FP_ACTION_COUNT) {
            continue;
        }
        int32_t counter = 0;
        int32_t frames = 0;
        std::memcpy(&counter, action.param, sizeof counter);
        audit_.check(rule_text(), fmt::format("user_field_get_statistics of counter {}", counter),
                     user_field_get_statistics(0, 0, counter, ADP_FP_VALUE_FRAMES, &frames));
    }
}

void Rules::compare_rule() {
    const FpEntity &rule = node_.entity;
    if (!keys_.insert({rule.submodule_type, rule.entity_id}).second) {
        audit_.difference(rule_text(), "is in acl_fp_list_head twice");
    }
    const bool has_room = rule.qualify_num >= 0 && rule.qualify_num <= ADP_FP_QUALIFIERS && rule.action_num >= 0 &&
                          rule.action_num <= ADP_FP_ACTIONS;
    if (has_room) {
        compare_counters();
    } else {
        audit_.difference(rule_text(), fmt::format("has {} qualifiers and {} actions, more than a record holds",
                                                   rule.qualify_num, rule.action_num));
    }
    if (tables_.submodules == nullptr) {
        return;
    }
    const FpInfo *const row = submodule();
    if (row == nullptr || row->group == 0) {
        audit_.difference(rule_text(), "g_stFpInfo has no entries for this submodule");
        return;
    }
    const bool is_pair = row->group == 1 || row->group == 5;
    compare_entries(is_pair ? 2 : 1);
}

void Rules::compare() {
    size_t count = 0;
    const adp_list_link_t *previous = tables_.rules;
    for (const adp_list_link_t *link = previous->next; link != tables_.rules; link = node_.link.next) {
        if (count == kMostRules || !read(link) || node_.link.prev != previous) {
            audit_.difference("acl_fp_list_head",
                              fmt::format("is damaged after {} rules: the rest is not compared", count));
            break;
        }
        ++count;
        compare_rule();
        previous = link;
    }
    audit_.compared(count, "rule", "rules");
}

}  // namespace

void audit_rules(const AuditTables &tables, Audit &audit) {
    audit.begin("rules");
    if (tables.rules == nullptr) {
        return audit.leave_out("acl_fp_list_head");
    }
    if (tables.submodules == nullptr) {
        audit.leave_out("g_stFpInfo");
    }
    Rules(tables, audit).compare();
}

}  // namespace adpsh
