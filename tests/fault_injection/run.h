/**
 * @file run.h
 * One run of a row in a state, undisturbed or with one call failing, and everything that came of it.
 */
#pragma once

#include <stdint.h>
#include <string>
#include <vector>

#include "tests/fault_injection/plan.h"
#include "tests/fault_injection/row.h"
#include "tests/fault_injection/state.h"

namespace fault_injection {

/**
 * Which call fails: number @p index of the driver's and services' calls, of allocations, or of a system call's; or
 * every call of the driver and the services.
 */
struct Failure {
    enum class What { kNothing, kDriver, kEveryDriverCall, kAllocation, kSystem };
    What what = What::kNothing;
    size_t index = 0;
    std::string name;    /**< of a system call */
    int32_t value = 0;   /**< the driver's result, or the error number */
    bool writes = false; /**< the driver writes its outputs all the same */
};

/** The exported tables and the call's own memory after a run. */
struct Memory {
    std::string tables;
    std::vector<std::string> rules; /**< "submodule/entity@hardware entry" of each installed rule */
    std::vector<std::string> outputs;
};

struct Observed {
    int64_t status = 0;
    std::vector<std::string> trace;
    Memory memory;
    size_t allocations = 0;
    int64_t kept_memory = 0; /**< blocks more, or fewer, than before */
    int64_t open_descriptors = 0;
};

/** The result with which a call can fail that is nearest to @p value: not every call fails with any. */
int32_t failing_result(const std::string &call, int32_t value);

/** Runs the row's call. */
Observed run(const Row &row, const State &state, const Failure &failure);

/** The memory as it must be: that from before the call, with these written. */
Memory memory_with(const Row &row, const State &state, const std::vector<Assignment> &writes);

}  // namespace fault_injection
