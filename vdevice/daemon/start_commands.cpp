// The commands that show what start-up sets: reserved addresses and traps, mirrors, pins.
#include "vdevice/daemon/command.h"
#include "vdevice/driver/mac_text.h"

namespace vdevice {
namespace {

using chip::Mirror;
using chip::MirrorTable;
using chip::ReservedMacs;
using nlohmann::json;

json user_port_or_null(const Device &device, int chip_port) {
    return chip_port == Mirror::kNone ? json(nullptr) : json(user_number(device, chip_port));
}

void drive_pin(Device &device, const json &pin, const json &level) {
    if (!pin.is_number_integer() || !level.is_number_integer() || (level != 0 && level != 1) ||
        device.drive_pin(pin.get<int64_t>(), level == 1) != chip::Status::kOk) {
        throw Refusal{"The pin must be 0 to " + std::to_string(chip::Gpio::kPins - 1) + ", its level 0 or 1."};
    }
}

}  // namespace

json show_reserved(Device &device, const json & /*request*/) {
    const chip::Switch &chip = device.chip();
    json rows = json::array();
    for (uint32_t index = 0; index < ReservedMacs::kEntries; ++index) {
        if (const chip::Mac mac = *chip.reserved_macs().get(index); !(mac == ReservedMacs::kFree)) {
            rows.push_back({{"index", index}, {"mac", driver::to_text(mac)}});
        }
    }
    return {{"reserved", rows},
            {"capacity", ReservedMacs::kEntries},
            {"traps",
             {{"lacp", chip.traps().lacp},
              {"oam", chip.traps().oam},
              {"lldp", chip.traps().lldp},
              {"bpdu", chip.traps().bpdu},
              {"igmp", chip.snooping().igmp},
              {"mld", chip.snooping().mld}}},
            {"reserved_multicast", chip.snooping().reserved_multicast},
            {"attack_filter", chip.filters_attacks()}};
}

json show_mirrors(Device &device, const json & /*request*/) {
    const MirrorTable &table = device.chip().mirrors();
    json rows = json::array();
    for (uint32_t number = 0; number < MirrorTable::kSessions; ++number) {
        const Mirror &mirror = table.session(number);
        if (mirror.is_used()) {
            rows.push_back({{"session", number},
                            {"destination", user_port_or_null(device, mirror.destination)},
                            {"ingress", user_numbers(device, mirror.ingress)},
                            {"egress", user_numbers(device, mirror.egress)},
                            {"flow", user_port_or_null(device, mirror.flow_destination)},
                            {"disabled", mirror.disabled}});
        }
    }
    return {{"mirrors", rows}, {"enabled", table.enabled()}};
}

json gpio(Device &device, const json &request) {
    if (request.contains("pin") || request.contains("level")) {
        drive_pin(device, request.value("pin", json()), request.value("level", json()));
    }
    const chip::Gpio &pins = device.chip().gpio();
    return {{"input", pins.input()}, {"output", pins.output()}, {"direction", pins.direction()}};
}

}  // namespace vdevice
