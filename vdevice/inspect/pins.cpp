// The chip's general-purpose pins. Input pins are driven by hand.
#include <fmt/core.h>

#include <nlohmann/json.hpp>

#include "vdevice/inspect/subject.h"

namespace vdevice::inspect {
namespace {

using nlohmann::json;

void drive_pin(Device &device, const json &pin, const json &level) {
    if (!pin.is_number_integer() || !level.is_number_integer() || (level != 0 && level != 1) ||
        device.drive_pin(pin.get<int64_t>(), level == 1) != chip::Status::kOk) {
        throw Refusal{"The pin must be 0 to " + std::to_string(chip::Gpio::kPins - 1) + ", its level 0 or 1."};
    }
}

json read_gpio(Device &device, const json &request) {
    if (request.contains("pin") || request.contains("level")) {
        drive_pin(device, request.value("pin", json()), request.value("level", json()));
    }
    const chip::Gpio &pins = device.chip().gpio();
    return {{"input", pins.input()}, {"output", pins.output()}, {"direction", pins.direction()}};
}

std::string show_gpio(const json &answer) {
    std::string text;
    for (const char *name : {"direction", "output", "input"}) {
        text += fmt::format("{:<10} {:#010x}\n", name, answer[name].get<uint32_t>());
    }
    return text;
}

}  // namespace

extern constexpr Subject kGpio{
    "gpio", "[PIN LEVEL]", "the general-purpose pins; with PIN and LEVEL, drive an input pin", read_gpio, show_gpio};

}  // namespace vdevice::inspect
