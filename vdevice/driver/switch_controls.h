// The chip-wide controls: a small table of words, a few of which have an effect on the chip.
#pragma once

#include <adp/l2.h>

#include <stdint.h>
#include <array>

#include "vdevice/chip/switch.h"

namespace vdevice::driver {

// Numbers of controls.
constexpr uint32_t kMldToCpu = ADP_CONTROL_MLD;
constexpr uint32_t kIgmpToCpu = ADP_CONTROL_IGMP;
constexpr uint32_t kMirroring = ADP_CONTROL_MIRRORS;
constexpr uint32_t kHashSelection = ADP_CONTROL_HASH; /**< which ends of a flow the hash of trunks looks at */
constexpr uint32_t kReservedMulticast = ADP_CONTROL_LOCAL_GROUPS;

class SwitchControls {
  public:
    static constexpr uint32_t kControls = 256;
    static constexpr uint32_t kPowerOnHash = 0x70;

    explicit SwitchControls(chip::Switch &chip) : chip_{chip} { words_[kHashSelection] = kPowerOnHash; }

    chip::Status get(uint32_t control, uint32_t &value) const;
    /** Keeps the value and makes the chip do what the control says: of the switches 0 is off, all else on. */
    chip::Status set(uint32_t control, uint32_t value);

  private:
    chip::Status select_hash(uint32_t value);
    void apply_switch(uint32_t control, bool on);

    chip::Switch &chip_;
    std::array<uint32_t, kControls> words_{};
};

}  // namespace vdevice::driver
