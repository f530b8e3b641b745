/**
 * @file sweep.h
 * A family's functions in all states, undisturbed and with each of their calls failing in turn.
 */
#pragma once

#include <stddef.h>
#include <set>
#include <string>
#include <vector>

#include "tests/fault_injection/row.h"

namespace fault {

struct Counts {
    std::set<std::string> functions;
    size_t rows = 0;
    size_t runs = 0;
    size_t runs_without_driver = 0; /**< of them those in which every driver and service call failed */
    size_t failed_calls = 0;        /**< driver and service calls that failed, one per run */
    size_t failed_system_calls = 0;
    size_t failed_allocations = 0;

    Counts &operator+=(const Counts &more);
};

struct Report {
    Counts counts;
    std::vector<std::string> complaints;
};

Report sweep(const Family &family);

/** The names of the calls that fail in some run of the family. */
std::set<std::string> calls_that_fail(const Family &family);

}  // namespace fault
