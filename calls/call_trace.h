/**
 * @file call_trace.h
 * Traces the imported calls of a program. Linked into the executable, it interposes on the libraries that libadp
 * imports, forwards every call and, while enabled, stores each as text with its result and outputs.
 *
 * The executable must export its symbols (ENABLE_EXPORTS), so that the loader finds these definitions first.
 */
#pragma once

#include <string>
#include <vector>

namespace call_trace {

/** Off at first. */
extern bool enabled;

/** The calls since the last take(), in order: `user_vlan_create(unit=0, zero=0, vid=100) -> 0`. */
std::vector<std::string> take();

}  // namespace call_trace
