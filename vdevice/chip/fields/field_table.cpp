// Changes of entries, and the lists of rules that follow from them.
#include "vdevice/chip/fields/field_table.h"

#include <algorithm>

namespace vdevice::chip {
namespace {

constexpr FieldSlice kSlices[FieldTable::kGroups] = {
    {1, 1280, 256, true}, {2, 896, 128, false}, {3, 768, 128, false}, {4, 640, 128, false}, {5, 1024, 256, true},
    {6, 512, 128, false}, {7, 384, 128, false}, {8, 256, 128, false}, {9, 0, 256, false},
};

const FieldSlice *find_slice(int64_t group) {
    const auto *slice =
        std::find_if(std::begin(kSlices), std::end(kSlices), [&](const FieldSlice &row) { return row.group == group; });
    return slice == std::end(kSlices) ? nullptr : slice;
}

size_t list_of(int group) {
    return static_cast<size_t>(group - 1);
}

/** Puts the element in the place of the one that is like it, or behind all others. */
template <typename Element, typename IsAlike>
void replace_or_add(std::vector<Element> &list, const Element &element, IsAlike is_alike) {
    const auto place = std::find_if(list.begin(), list.end(), is_alike);
    if (place == list.end()) {
        list.push_back(element);
    } else {
        *place = element;
    }
}

}  // namespace

bool FieldRule::names_meter(uint32_t meter) const {
    return std::any_of(actions.begin(), actions.end(), [&](const Action &action) {
        return action.kind == ActionKind::kMeter && action.value == meter;
    });
}

Status FieldTable::create(int64_t group, uint32_t entry) {
    const FieldSlice *slice = find_slice(group);
    if (slice == nullptr) {
        return Status::kFieldGroup;
    }
    if (entry >= kEntries) {
        return Status::kFieldRange;
    }
    if (!slice->has(entry)) {
        return Status::kFieldSlice;
    }
    if (entries_[entry]) {
        return Status::kFieldExists;
    }
    entries_[entry].emplace().group = slice->group;
    return Status::kOk;
}

Status FieldTable::destroy(uint32_t entry) {
    const FieldEntry *found = find(entry);
    if (found == nullptr) {
        return absence_of(entry);
    }
    const int group = found->group;
    entries_[entry].reset();
    list_rules(group);
    return Status::kOk;
}

Status FieldTable::join(uint32_t entry) {
    return change(entry, [&](FieldEntry &first) {
        const FieldSlice &slice = *find_slice(first.group);
        if (!slice.is_wide || (entry - slice.first) % 2 != 0) {
            return Status::kFieldPair;
        }
        return change(entry + 1, [&](FieldEntry &second) {
            first.part = EntryPart::kFirstHalf;
            second.part = EntryPart::kSecondHalf;
            list_rules(first.group);
            return Status::kOk;
        });
    });
}

Status FieldTable::change(uint32_t entry, const std::function<Status(FieldEntry &)> &change) {
    return find(entry) != nullptr ? change(*entries_[entry]) : absence_of(entry);
}

Status FieldTable::set_priority(uint32_t entry, int32_t priority) {
    return change(entry, [&](FieldEntry &state) {
        state.staged.priority = priority;
        return Status::kOk;
    });
}

Status FieldTable::qualify(uint32_t entry, const Qualifier &qualifier) {
    return change(entry, [&](FieldEntry &state) {
        if (!is_possible(qualifier)) {
            return Status::kBadArgument;
        }
        replace_or_add(state.staged.qualifiers, qualifier,
                       [&](const Qualifier &other) { return other.field == qualifier.field; });
        return Status::kOk;
    });
}

Status FieldTable::clear_qualifiers(uint32_t entry) {
    return change(entry, [](FieldEntry &state) {
        state.staged.qualifiers.clear();
        return Status::kOk;
    });
}

Status FieldTable::add_action(uint32_t entry, const Action &action) {
    return change(entry, [&](FieldEntry &state) {
        replace_or_add(state.staged.actions, action, [&](const Action &other) { return other.code == action.code; });
        return Status::kOk;
    });
}

Status FieldTable::clear_actions(uint32_t entry) {
    return change(entry, [](FieldEntry &state) {
        state.staged.actions.clear();
        return Status::kOk;
    });
}

Status FieldTable::install(uint32_t entry) {
    return change(entry, [&](FieldEntry &state) {
        state.installed = state.staged;
        list_rules(state.group);
        return Status::kOk;
    });
}

const FieldEntry *FieldTable::find(uint32_t entry) const {
    return entry < kEntries && entries_[entry] ? &*entries_[entry] : nullptr;
}

void FieldTable::clear_matches() {
    for (std::optional<FieldEntry> &entry : entries_) {
        if (entry) {
            entry->matches = 0;
        }
    }
}

void FieldTable::for_each(const std::function<void(uint32_t, const FieldEntry &)> &visit) const {
    for (uint32_t entry = 0; entry < kEntries; ++entry) {
        if (entries_[entry]) {
            visit(entry, *entries_[entry]);
        }
    }
}

bool FieldTable::is_rule(uint32_t entry) const {
    const FieldEntry *found = find(entry);
    if (found == nullptr || !found->installed) {
        return false;
    }
    return found->part == EntryPart::kWhole || (found->part == EntryPart::kFirstHalf && second_half(entry) != nullptr);
}

/** The installed other half of a first half, or null. */
const FieldRule *FieldTable::second_half(uint32_t entry) const {
    const FieldEntry *second = find(entry + 1);
    const bool is_pair = get(entry).part == EntryPart::kFirstHalf && second != nullptr &&
                         second->part == EntryPart::kSecondHalf && second->installed;
    return is_pair ? &*second->installed : nullptr;
}

void FieldTable::list_rules(int group) {
    const FieldSlice &slice = *find_slice(group);
    std::vector<uint32_t> &rules = rules_[list_of(group)];
    is_indexed_ = false;
    rule_count_ -= rules.size();
    rules.clear();
    for (uint32_t entry = slice.first; slice.has(entry); ++entry) {
        if (is_rule(entry)) {
            rules.push_back(entry);
        }
    }
    const auto priority = [&](uint32_t entry) { return get(entry).installed->priority; };
    // Stable: of equal priorities the lower entry stays before the higher one.
    std::stable_sort(rules.begin(), rules.end(), [&](auto a, auto b) { return priority(a) > priority(b); });
    rule_count_ += rules.size();
}

void FieldTable::make_index() {
    index_.clear();
    for (size_t list = 0; list < rules_.size(); ++list) {
        for (const uint32_t entry : rules_[list]) {
            const FieldRule *second = second_half(entry);
            if (const auto terms =
                    make_terms(get(entry).installed->qualifiers, second == nullptr ? nullptr : &second->qualifiers)) {
                index_.add(list, entry, *terms);
            }
        }
    }
    is_indexed_ = true;
}

void FieldTable::collect(uint32_t entry, FieldMatch &match) {
    match.rules.add(entry);
    ++entries_[entry]->matches;
    for_each_action(entry, [&](const Action &each) { match.actions.add(each); });
}

std::optional<FieldMatch> FieldTable::match(const FieldKey &key) {
    std::optional<FieldMatch> match;
    if (!is_indexed_) {
        make_index();
    }
    for (const uint32_t best : index_.find(key)) {
        if (best != RuleIndex::kNone) {
            collect(best, match ? *match : match.emplace());
        }
    }
    return match;
}

}  // namespace vdevice::chip
