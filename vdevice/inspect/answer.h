// The answer to a request, as JSON or as text.
#pragma once

#include <nlohmann/json_fwd.hpp>

#include "vdevice/device/device.h"

namespace vdevice::inspect {

/**
 * Answers {"command": NAME, ...}. What the subject needs to know is a member of its own ("port": 3) or comes as words,
 * in the order of the subject's arguments ("arguments": ["3"]). With "form": "text" the answer has one member, "text".
 * An answer with a member "error" is a refusal, in a sentence.
 */
nlohmann::json answer(Device &device, const nlohmann::json &request);

/** Whether the request asks for a table so large that making the answer takes long. It then changes nothing. */
bool is_long(const nlohmann::json &request);

}  // namespace vdevice::inspect
