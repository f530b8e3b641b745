// A hash table for each shape of rules.
#include "vdevice/chip/fields/rule_index.h"

#include <algorithm>

namespace vdevice::chip {
namespace {

constexpr size_t kFirstSlots = 8;
constexpr uint32_t kHashStart = 0x811C9DC5;

/** Multiplication carries what differs upwards, the shift brings it back to the bits that choose the slot. */
constexpr uint32_t mixed(uint32_t hash, uint32_t word) {
    constexpr uint32_t kFactor = 0x9E3779B1;
    constexpr unsigned kShift = 15;
    hash = (hash ^ word) * kFactor;
    return hash ^ hash >> kShift;
}

}  // namespace

void RuleIndex::clear() {
    rules_.clear();
    shapes_.clear();
}

void RuleIndex::add(size_t list, uint32_t entry, const RuleTerms &terms) {
    Rule rule{list, entry, kHashStart, terms.ports, {}};
    for (const RuleTerm &term : terms.terms) {
        rule.hash = mixed(rule.hash, term.data);
        rule.data.push_back(term.data);
    }
    const auto number = static_cast<uint32_t>(rules_.size());
    rules_.push_back(std::move(rule));
    Shape &shape = shape_of(terms);
    shape.rules.push_back(number);
    if (shape.rules.size() * 2 > shape.slots.size()) {
        grow(shape);
    } else {
        put(shape, number);
    }
}

RuleIndex::Shape &RuleIndex::shape_of(const RuleTerms &terms) {
    const auto is_alike = [](const Mask &mask, const RuleTerm &term) {
        return mask.word == term.word && mask.mask == term.mask;
    };
    for (Shape &shape : shapes_) {
        if (std::equal(shape.masks.begin(), shape.masks.end(), terms.terms.begin(), terms.terms.end(), is_alike)) {
            return shape;
        }
    }
    Shape &made = shapes_.emplace_back(Shape{terms.present, {}, {}, {}});
    for (const RuleTerm &term : terms.terms) {
        made.masks.push_back({term.word, term.mask});
    }
    return made;
}

void RuleIndex::grow(Shape &shape) const {
    shape.slots.assign(std::max(kFirstSlots, shape.slots.size() * 2), kNone);
    for (const uint32_t rule : shape.rules) {
        put(shape, rule);
    }
}

// In the first free slot from the hash's own on, so that earlier rules are found first. A rule that an earlier one
// hides from all frames is left out, so that many of them cost no more than one.
void RuleIndex::put(Shape &shape, uint32_t rule) const {
    const size_t last = shape.slots.size() - 1;
    size_t slot = rules_[rule].hash & last;
    for (; shape.slots[slot] != kNone; slot = (slot + 1) & last) {
        if (hides(rules_[shape.slots[slot]], rules_[rule])) {
            return;
        }
    }
    shape.slots[slot] = rule;
}

/** Of two rules of one shape. */
bool RuleIndex::hides(const Rule &earlier, const Rule &later) const {
    return earlier.list == later.list && earlier.data == later.data && later.ports.is_within(earlier.ports);
}

RuleIndex::Entries RuleIndex::find(const FieldKey &key) const {
    Entries first;
    first.fill(kNone);
    for (const Shape &shape : shapes_) {
        if ((shape.present & ~key.present()) == 0) {
            find_in(shape, key, first);
        }
    }
    for (uint32_t &rule : first) {
        rule = rule == kNone ? kNone : rules_[rule].entry;
    }
    return first;
}

/** Takes those of the shape's rules that the frame meets, if they come before those found in their lists so far. */
void RuleIndex::find_in(const Shape &shape, const FieldKey &key, Entries &first) const {
    std::array<uint32_t, kKeyWords> words;
    uint32_t hash = kHashStart;
    size_t count = 0;
    for (const Mask &each : shape.masks) {
        words[count] = key.word(each.word) & each.mask;
        hash = mixed(hash, words[count++]);
    }
    const size_t last = shape.slots.size() - 1;
    for (size_t slot = hash & last; shape.slots[slot] != kNone; slot = (slot + 1) & last) {
        const Rule &rule = rules_[shape.slots[slot]];
        if (rule.hash == hash && rule.ports.has(key.ingress()) &&
            std::equal(rule.data.begin(), rule.data.end(), words.begin())) {
            first[rule.list] = std::min(first[rule.list], shape.slots[slot]);
        }
    }
}

}  // namespace vdevice::chip
