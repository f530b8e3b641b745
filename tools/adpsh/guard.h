/**
 * @file guard.h
 * Survives calls that access invalid memory: a wrong address on a line must not end the shell.
 */
#pragma once

#include <stdint.h>
#include <functional>

namespace adpsh {

/** The invalid memory access that ended a run. */
struct Fault {
    int signal = 0;  ///< 0 if there was none
    uintptr_t address = 0;
};

/**
 * Runs a function. An invalid memory access ends the run, not the process. The function's locks stay locked and its
 * memory stays allocated.
 */
Fault run_guarded(const std::function<void()> &function);

}  // namespace adpsh
