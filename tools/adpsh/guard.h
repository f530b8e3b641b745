/**
 * @file guard.h
 * A net under each call: a wrong address on a line must not take the shell down.
 */
#pragma once

#include <stdint.h>
#include <functional>

namespace adpsh {

/** How a guarded run ended. */
struct Fault {
    int signal = 0;  ///< 0 when all went well
    uintptr_t address = 0;
};

/**
 * Runs a function; an invalid memory access in it ends the run and is reported instead of ending the process. What the
 * function had in hand is lost: locks stay taken, memory stays allocated.
 */
Fault run_guarded(const std::function<void()> &function);

}  // namespace adpsh
