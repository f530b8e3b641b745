/**
 * @file alignment.h
 * Which elements of two sequences belong together.
 */
#pragma once

#include <stddef.h>
#include <stdint.h>
#include <optional>
#include <span>
#include <vector>

namespace adptrace {

/** An element of each sequence, or of one alone. */
struct Step {
    static constexpr size_t kAbsent = SIZE_MAX;

    size_t a = kAbsent; /**< index */
    size_t b = kAbsent;

    [[nodiscard]] bool is_pair() const { return a != kAbsent && b != kAbsent; }
    bool operator==(const Step &) const = default;
};

struct Alignment {
    std::vector<Step> steps; /**< every element once, each sequence in its order */
    /** The elements from which on there may be an alignment with fewer differences. */
    std::optional<Step> not_smallest_from;
};

/** What elements are compared by. */
struct Element {
    uint64_t key = 0;  /**< equal elements are a pair */
    uint64_t name = 0; /**< where no equal ones are, elements of one name are a pair that differs */
};

/**
 * The alignment with the fewest elements that have no equal one, as long as these are no more than @p most.
 *
 * The search (E. Myers, An O(ND) difference algorithm) takes memory for @p most squared numbers, and time for @p most
 * times the number of elements: where it has found so many differences, it begins anew at the furthest place reached.
 */
Alignment align(std::span<const Element> a, std::span<const Element> b, size_t most);

}  // namespace adptrace
