// An index of lists of rules. Rules that compare the same bits of the same fields have one shape, and within a shape a
// hash of these bits leads to the rules that a frame can meet. So a search costs a look-up for each shape, of which
// there are few, however many rules there are.
#pragma once

#include <stdint.h>
#include <array>
#include <vector>

#include "vdevice/chip/fields/field_key.h"
#include "vdevice/chip/fields/rule_terms.h"

namespace vdevice::chip {

class RuleIndex {
  public:
    static constexpr size_t kLists = 9;
    static constexpr uint32_t kNone = ~uint32_t{0};

    /** Of each list an entry, or kNone. */
    using Entries = std::array<uint32_t, kLists>;

    void clear();
    /** Adds a rule at the end of a list. */
    void add(size_t list, uint32_t entry, const RuleTerms &terms);

    /** The first rule of each list, in the order of adding, that the frame meets. */
    Entries find(const FieldKey &key) const;

  private:
    struct Rule {
        size_t list;
        uint32_t entry;
        uint32_t hash;
        PortSet ports;
        std::vector<uint32_t> data; /**< for each word of the shape */
    };

    struct Mask {
        uint32_t word;
        uint32_t mask;
    };

    /** The rules stand in slots by their hashes, those of equal hashes in the order of adding. */
    struct Shape {
        uint32_t present;
        std::vector<Mask> masks;
        std::vector<uint32_t> rules;
        std::vector<uint32_t> slots;
    };

    Shape &shape_of(const RuleTerms &terms);
    void grow(Shape &shape) const;
    void put(Shape &shape, uint32_t rule) const;
    bool hides(const Rule &earlier, const Rule &later) const;
    void find_in(const Shape &shape, const FieldKey &key, Entries &first) const;

    std::vector<Rule> rules_;
    std::vector<Shape> shapes_;
};

}  // namespace vdevice::chip
