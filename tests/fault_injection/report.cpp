// All rows of a family.
#include "tests/fault_injection/report.h"

#include <exception>

#include "tests/fault_injection/plan.h"
#include "tests/fault_injection/state.h"
#include "tests/fault_injection/trial.h"
#include "tests/support/silence.h"

namespace fault_injection {

Counts &Counts::operator+=(const Counts &more) {
    functions.insert(more.functions.begin(), more.functions.end());
    rows += more.rows;
    runs += more.runs;
    runs_without_driver += more.runs_without_driver;
    failed_calls += more.failed_calls;
    failed_system_calls += more.failed_system_calls;
    failed_allocations += more.failed_allocations;
    return *this;
}

Report inject_failures(const Family &family) {
    Report report;
    const silence::Silence silence;
    for (const Row &row : family.rows) {
        try {
            run_row(family, row, report);
        } catch (const std::exception &error) {
            report.complaints.push_back(row.where + ": " + error.what());
        }
    }
    return report;
}

std::set<std::string> calls_that_fail(const Family &family) {
    std::set<std::string> names;
    for (const Row &row : family.rows) {
        for (const State &state : states()) {
            const auto plan = plan_of(family, row, state);
            for (const Item *item : plan ? failing_calls(*plan) : std::vector<const Item *>()) {
                names.insert(item->name);
            }
        }
    }
    return names;
}

}  // namespace fault_injection
