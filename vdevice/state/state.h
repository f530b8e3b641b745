// The state of a device: what its chip and its driver keep, as JSON. The same state is always the same text: names are
// sorted, and there are no times in it. docs/reference/vdevctl.md describes the members.
#pragma once

#include <nlohmann/json_fwd.hpp>

#include "vdevice/driver/driver.h"

namespace vdevice::state {

/** The member that says that JSON is a state, and in which form. */
inline constexpr const char *kFormMember = "state";
inline constexpr int kForm = 1;
/** The member for what changes with time and traffic alone. */
inline constexpr const char *kRunning = "running";

nlohmann::json state_of(const chip::Switch &chip, const driver::Driver &driver);
/** The state of a device with the same board after power-on. */
nlohmann::json power_on_state(const nlohmann::json &state);

}  // namespace vdevice::state
