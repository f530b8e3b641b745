// The chip's time. It is always handed in: the chip has no clock of its own.
#pragma once

#include <chrono>

namespace vdevice::chip {

/** Time since the device was switched on. */
using Time = std::chrono::nanoseconds;

}  // namespace vdevice::chip
