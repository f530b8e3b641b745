/**
 * @file trial.h
 * One row in all states.
 */
#pragma once

#include "tests/fault_injection/report.h"
#include "tests/fault_injection/row.h"

namespace fault_injection {

/** Runs the row in each state, undisturbed and with each of its calls failing in turn. */
void run_row(const Family &family, const Row &row, Report &report);

}  // namespace fault_injection
