/**
 * @file runner.h
 * Runs sequences, each in a child process, and shrinks one in which library and model differ.
 */
#pragma once

#include <stddef.h>
#include <stdint.h>
#include <cstdio>
#include <vector>

#include "tests/differential/sequence.h"

namespace differential {

struct Outcome {
    enum class End { kAgreed, kDiffered, kCrashed };
    End end = End::kAgreed;
    size_t step = 0; /**< the last one, unless they agreed */
};

/** Counts of all sequences, in memory that the child processes share. */
struct Counts {
    static constexpr size_t kMostCalls = 512;
    uint64_t imported_calls;    /**< driver, service and system calls, and events, of the library */
    uint64_t calls[kMostCalls]; /**< by index in the table of calls */
    size_t step;                /**< of the running sequence, for a child that crashes */
};
Counts &counts();

/** @p trace: where the complete trace is appended, null for none. */
Outcome run(const Sequence &sequence, std::FILE *trace);

/** Prints the sequence as an adpsh script, and how library and model differ at its end. */
void report(const Sequence &sequence);

/** A shorter sequence that ends in the same call in the same way. */
Sequence shrink(Sequence sequence, const Outcome &outcome);

}  // namespace differential
