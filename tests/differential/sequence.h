/**
 * @file sequence.h
 * Random sequences of calls.
 */
#pragma once

#include <stddef.h>
#include <stdint.h>
#include <vector>

namespace differential {

/** One call of a sequence. It depends on nothing before it, so a sequence can be cut anywhere. */
struct Step {
    size_t call = 0;              /**< index in the library's table of calls */
    uint64_t seed = 0;            /**< of its arguments, and of the driver's answers */
    std::vector<uint32_t> values; /**< given arguments; empty for random ones */
};

using Sequence = std::vector<Step>;

/** The sequence with this seed. */
Sequence make_sequence(uint64_t seed, size_t calls);

const char *name_of(const Step &step);

}  // namespace differential
