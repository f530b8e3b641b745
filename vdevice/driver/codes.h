// Results of driver calls: 0, or the negative number of the chip's refusal (vdevice/chip/frame/status.h has the table).
#pragma once

#include <stdint.h>

#include "vdevice/chip/frame/status.h"

namespace vdevice::driver {

inline constexpr int32_t kOk = chip::code(chip::Status::kOk);
inline constexpr int32_t kNotSupported = chip::code(chip::Status::kNotSupported);
/** A service that finds nothing says so with -1, as the device's libraries do. */
inline constexpr int32_t kNotFound = -1;

}  // namespace vdevice::driver
