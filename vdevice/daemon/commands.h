// What can be asked of a running device: its state as JSON, and a hand on its cables.
#pragma once

#include <nlohmann/json.hpp>

#include "vdevice/device/device.h"

namespace vdevice {

/**
 * Carries out {"command": NAME, ...}. The answer is an object; one with a member "error" is a refusal, in a sentence.
 */
nlohmann::json carry_out(Device &device, const nlohmann::json &request);

}  // namespace vdevice
