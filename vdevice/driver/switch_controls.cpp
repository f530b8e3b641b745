// Controls of the whole chip, and the calls that turn on its traps and protections.
#include "vdevice/driver/switch_controls.h"

#include <optional>

#include "vdevice/chip/frame/flow_hash.h"
#include "vdevice/driver/driver.h"

namespace vdevice::driver {

using chip::Status;

namespace {

/** The meaning of the hash selection's values; nothing for one that has none. */
constexpr std::optional<chip::HashSides> hash_sides(uint32_t value) {
    constexpr uint32_t kSource = 0x50;
    constexpr uint32_t kDestination = 0x60;
    constexpr uint32_t kBoth = 0x70;
    switch (value) {
        case kSource:
            return chip::HashSides{true, false};
        case kDestination:
            return chip::HashSides{false, true};
        case kBoth:
            return chip::HashSides{true, true};
        default:
            return std::nullopt;
    }
}

// The options of the traps are the caller's, and have no meaning here.
class Controls : public SwitchControlsCalls {
  public:
    Controls(chip::Switch &chip, SwitchControls &controls) : chip_{chip}, controls_{controls} {}

    Status user_switch_control_set(uint32_t control, uint32_t value) override { return controls_.set(control, value); }

    Status user_switch_control_get(uint32_t control, uint32_t &value) override { return controls_.get(control, value); }

    Status user_selfmac_trap_to_cpu(uint32_t value, uint32_t /*option*/) override {
        chip_.traps().self_mac = value;
        return Status::kOk;
    }

    Status user_eoam_trap_set(uint32_t value, uint32_t /*option*/) override {
        chip_.traps().oam = value != 0;
        return Status::kOk;
    }

    Status user_lldp_init() override {
        chip_.traps().lldp = true;
        return Status::kOk;
    }

    Status user_dos_attack_prevent_init() override {
        chip_.set_attack_filter(true);
        return Status::kOk;
    }

  private:
    chip::Switch &chip_;
    SwitchControls &controls_;
};

}  // namespace

Status SwitchControls::get(uint32_t control, uint32_t &value) const {
    if (control >= kControls) {
        return Status::kBadArgument;
    }
    value = words_[control];
    return Status::kOk;
}

Status SwitchControls::set(uint32_t control, uint32_t value) {
    if (control >= kControls) {
        return Status::kBadArgument;
    }
    if (control == kHashSelection && select_hash(value) != Status::kOk) {
        return Status::kBadArgument;
    }
    apply_switch(control, value != 0);
    words_[control] = value;
    return Status::kOk;
}

Status SwitchControls::select_hash(uint32_t value) {
    const auto sides = hash_sides(value);
    if (!sides) {
        return Status::kBadArgument;
    }
    chip_.set_hash_sides(*sides);
    return Status::kOk;
}

void SwitchControls::apply_switch(uint32_t control, bool on) {
    switch (control) {
        case kMldToCpu:
            chip_.snooping().mld = on;
            return;
        case kIgmpToCpu:
            chip_.snooping().igmp = on;
            return;
        case kMirroring:
            chip_.mirrors().set_enabled(on);
            return;
        case kReservedMulticast:
            chip_.snooping().reserved_multicast = on;
            return;
        default:
            return;
    }
}

std::unique_ptr<SwitchControlsCalls> switch_controls(chip::Switch &chip, SwitchControls &controls) {
    return std::make_unique<Controls>(chip, controls);
}

}  // namespace vdevice::driver
