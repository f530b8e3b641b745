// The whole state of the device.
#include "vdevice/state/state.h"

#include <fmt/core.h>

#include <nlohmann/json.hpp>

#include "text/differences.h"
#include "vdevice/inspect/subject.h"

namespace vdevice::inspect {
namespace {

using nlohmann::json;

json read_state(Device &device, const json & /*request*/) {
    return state::state_of(device.chip(), device.driver());
}

/** What differs from the power-on state: all of it would be thousands of lines. */
std::string show_state(const json &answer) {
    json now = answer;
    json before = state::power_on_state(answer);
    now.erase(state::kRunning);
    before.erase(state::kRunning);
    const std::vector<std::string> lines = text::differences(before, now);
    if (lines.empty()) {
        return "All is as after power-on.\n";
    }
    std::string text = "SETTING: AFTER POWER-ON / NOW\n";
    for (const std::string &line : lines) {
        text += line + "\n";
    }
    return text;
}

}  // namespace

extern constexpr Subject kState{
    "state",    "",         "all that the chip and its driver keep; as text what differs from power-on",
    read_state, show_state, {},
    {},         kLong};

}  // namespace vdevice::inspect
