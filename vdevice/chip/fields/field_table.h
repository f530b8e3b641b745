// The field processor's rules: entries in slices of groups, each with a state that is being written and one that is
// installed, and pairs of entries that are one rule.
#pragma once

#include <stddef.h>
#include <stdint.h>
#include <algorithm>
#include <array>
#include <functional>
#include <optional>
#include <span>
#include <vector>

#include "vdevice/chip/fields/field.h"
#include "vdevice/chip/fields/field_action.h"
#include "vdevice/chip/fields/field_key.h"
#include "vdevice/chip/fields/rule_index.h"
#include "vdevice/chip/frame/status.h"

namespace vdevice::chip {

struct FieldRule {
    int32_t priority = 0;
    std::vector<Qualifier> qualifiers;
    std::vector<Action> actions;

    bool names_meter(uint32_t meter) const;

    friend bool operator==(const FieldRule &, const FieldRule &) = default;
};

/** The rules that won within their groups, each by the entry of its first half; the lowest group's first. */
struct MatchedRules {
    std::array<uint32_t, RuleIndex::kLists> entries;
    size_t count = 0;

    void add(uint32_t entry) { entries[count++] = entry; }
    std::span<const uint32_t> list() const { return std::span{entries}.first(count); }
};

/** The rules that a frame meets, and their actions. */
struct FieldMatch {
    MatchedRules rules;
    ActionSet actions;
};

/** What part of a rule an entry is. A half whose other half is gone never matches. */
enum class EntryPart : uint8_t { kWhole, kFirstHalf, kSecondHalf };

struct FieldEntry {
    int group = 0;
    EntryPart part = EntryPart::kWhole;
    FieldRule staged;
    std::optional<FieldRule> installed;
    uint64_t matches = 0; /**< frames for which the rule won within its group, counted on the first half */

    /** Whether one of its actions, staged or installed, uses the meter. */
    bool names_meter(uint32_t meter) const {
        return staged.names_meter(meter) || (installed && installed->names_meter(meter));
    }
};

/** The entries of a group. In a wide one, entries may be joined to pairs. */
struct FieldSlice {
    int group;
    uint32_t first;
    uint32_t size;
    bool is_wide;

    constexpr bool has(uint32_t entry) const { return entry >= first && entry - first < size; }
};

class FieldTable {
  public:
    static constexpr uint32_t kEntries = 1536;
    static constexpr size_t kGroups = RuleIndex::kLists;

    FieldTable() : entries_(kEntries) {}

    Status create(int64_t group, uint32_t entry);
    /** Removes the entry, effective at once. */
    Status destroy(uint32_t entry);
    /** Joins an entry and the next one into a pair, effective at once, for as long as both exist. */
    Status join(uint32_t entry);

    // These change what the next install() copies.
    Status set_priority(uint32_t entry, int32_t priority);
    /** Replaces a condition on the same field. */
    Status qualify(uint32_t entry, const Qualifier &qualifier);
    Status clear_qualifiers(uint32_t entry);
    /** Replaces an action of the same code. */
    Status add_action(uint32_t entry, const Action &action);
    Status clear_actions(uint32_t entry);
    Status install(uint32_t entry);

    /** The entry, or nothing. */
    const FieldEntry *find(uint32_t entry) const;
    void for_each(const std::function<void(uint32_t, const FieldEntry &)> &visit) const;
    /** Calls visit(action) for each action of a rule, in the order in which they count; it must be installed. */
    template <typename Visit>
    void for_each_action(uint32_t entry, Visit visit) const {
        for (const FieldRule *half : {&*get(entry).installed, second_half(entry)}) {
            if (half != nullptr) {
                std::for_each(half->actions.begin(), half->actions.end(), visit);
            }
        }
    }
    /** Whether there is an installed rule. */
    bool has_rules() const { return rule_count_ != 0; }

    void clear_matches();

    /** Each group's best rule, the lowest group's first; nothing if no rule matches. */
    std::optional<FieldMatch> match(const FieldKey &key);

    /** The reason why there is no entry of this number. */
    static Status absence_of(uint32_t entry) { return entry < kEntries ? Status::kFieldMissing : Status::kFieldRange; }

  private:
    /** The entry, which must exist. */
    const FieldEntry &get(uint32_t entry) const { return *entries_[entry]; }
    Status change(uint32_t entry, const std::function<Status(FieldEntry &)> &change);
    void list_rules(int group);
    bool is_rule(uint32_t entry) const;
    const FieldRule *second_half(uint32_t entry) const;
    void make_index();
    void collect(uint32_t entry, FieldMatch &match);

    std::vector<std::optional<FieldEntry>> entries_;
    /** The installed rules of each group, in the order in which they are tried. */
    std::array<std::vector<uint32_t>, kGroups> rules_;
    RuleIndex index_;
    bool is_indexed_ = true; /**< rebuilt for the next frame, not after each of many changes */
    size_t rule_count_ = 0;
};

}  // namespace vdevice::chip
