// Compares states of devices.
#pragma once

#include "tools/vdevctl/options.h"

namespace vdevctl {

// Exit statuses, as those of diff(1).
constexpr int kEqual = 0;
constexpr int kDifferent = 1;
constexpr int kCannotCompare = 2;

/** Prints what differs between the file and the second one, or the device, and gives the exit status. */
int compare_states(const Options &options);

}  // namespace vdevctl
