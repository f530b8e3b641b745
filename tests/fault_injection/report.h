/**
 * @file report.h
 * What the functions of a family do in all states, undisturbed and with each of their calls failing in turn.
 */
#pragma once

#include <stddef.h>
#include <set>
#include <string>
#include <vector>

#include "tests/fault_injection/row.h"

namespace fault_injection {

struct Counts {
    std::set<std::string> functions;
    size_t rows = 0;
    size_t runs = 0;
    size_t runs_without_driver = 0; /**< those in which every driver and service call failed */
    size_t failed_calls = 0;        /**< driver and service calls that failed, one in a run */
    size_t failed_system_calls = 0;
    size_t failed_allocations = 0;

    Counts &operator+=(const Counts &more);
};

struct Report {
    Counts counts;
    std::vector<std::string> complaints;
};

/** Runs all rows of the family. A row that cannot be run is a complaint. */
Report inject_failures(const Family &family);

/** The names of the calls that fail in some run of the family. */
std::set<std::string> calls_that_fail(const Family &family);

}  // namespace fault_injection
