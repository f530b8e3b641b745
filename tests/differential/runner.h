/**
 * @file runner.h
 * Runs lives, each in a child process, and shrinks one in which library and model part.
 */
#pragma once

#include <stddef.h>
#include <stdint.h>
#include <cstdio>
#include <vector>

#include "tests/differential/life.h"

namespace lives {

struct Outcome {
    enum class End { kAgreed, kParted, kCrashed };
    End end = End::kAgreed;
    size_t step = 0; /**< the one at which it ended, if they did not agree */
};

/** What all lives did, kept where child processes can write it. */
struct Counts {
    static constexpr size_t kMostCalls = 512;
    uint64_t imported_calls;    /**< driver, service and system calls, and events, of the library */
    uint64_t calls[kMostCalls]; /**< by place in the table of calls */
    size_t step;                /**< the life's own, for a child that cannot say it any more */
};
Counts &counts();

/** @p trace: where the complete trace is appended, null for none. */
Outcome run_life(const std::vector<Step> &steps, std::FILE *trace);

/** Prints the sequence as an adpsh script and where library and model part at its end. */
void report_life(const std::vector<Step> &steps);

/** A shorter sequence that ends in the same call in the same way. */
std::vector<Step> shrink(std::vector<Step> steps, const Outcome &outcome);

}  // namespace lives
