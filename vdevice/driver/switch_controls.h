// The chip-wide controls: a small table of words, a few of which have an effect on the chip.
#pragma once

#include <stddef.h>
#include <stdint.h>
#include <array>
#include <optional>

#include "vdevice/chip/frame/flow_hash.h"
#include "vdevice/chip/switch.h"

namespace vdevice::driver {

// Numbers of controls.
constexpr uint32_t kMldToCpu = 89;
constexpr uint32_t kIgmpToCpu = 92;
constexpr uint32_t kMirroring = 125;
constexpr uint32_t kHashSelection = 136; /**< which ends of a flow the hash of trunks looks at */
constexpr uint32_t kReservedMulticast = 215;

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

/** Makes the chip do what the control says: 0 is off, all else on. Controls that are not such a switch are left alone.
 */
void apply_switch(chip::Switch &chip, uint32_t control, uint32_t value);

class SwitchControls {
  public:
    static constexpr uint32_t kControls = 256;
    static constexpr uint32_t kPowerOnHash = 0x70;

    SwitchControls() { words_[kHashSelection] = kPowerOnHash; }

    static constexpr bool is_control(uint32_t control) { return control < kControls; }
    uint32_t get(uint32_t control) const { return words_[control]; }
    void set(uint32_t control, uint32_t value) { words_[control] = value; }

  private:
    std::array<uint32_t, kControls> words_{};
};

}  // namespace vdevice::driver
