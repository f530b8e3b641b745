/**
 * @file values.h
 * What two calls have in common in meaning: their arguments, results and outputs.
 */
#pragma once

#include <stdint.h>
#include <map>
#include <string>
#include <vector>

#include "tools/adptrace/recording/recording.h"

namespace adptrace {

/** A hash of name and arguments, without what differs from one run to the next. */
uint64_t key_of(const Call &call);

/** Handles that calls gave: each of the first recording's stands for one of the second's. Those of one process. */
class Handles {
  public:
    /** Whether they stand for each other, or are equal numbers that no call gave. */
    [[nodiscard]] bool are_pair(uint64_t a, uint64_t b) const;
    /** Likewise; two that are new become a pair. */
    bool meet(uint64_t a, uint64_t b, uint64_t unit);
    /**
     * Two that calls gave. @return whether they can be a pair: a handle may be given again, but within one @p unit it
     * stays what it is.
     */
    bool give(uint64_t a, uint64_t b, uint64_t unit);

  private:
    struct Other {
        uint64_t handle;
        uint64_t unit;
    };
    std::map<uint64_t, Other> of_a_;
    std::map<uint64_t, Other> of_b_;
};

struct Difference {
    std::string what; /**< "argument vid", "result" */
    std::string a;    /**< the values as text */
    std::string b;
};

/** Two calls of one name. @p unit: the number of the unit that they are in. */
std::vector<Difference> differences_of(const Call &a, const Call &b, Handles &handles, uint64_t unit);

}  // namespace adptrace
