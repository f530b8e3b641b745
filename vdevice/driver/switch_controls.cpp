#include "vdevice/driver/switch_controls.h"

namespace vdevice::driver {

void apply_switch(chip::Switch &chip, uint32_t control, uint32_t value) {
    const bool on = value != 0;
    switch (control) {
        case kMldToCpu:
            chip.snooping().mld = on;
            return;
        case kIgmpToCpu:
            chip.snooping().igmp = on;
            return;
        case kMirroring:
            chip.mirrors().set_enabled(on);
            return;
        case kReservedMulticast:
            chip.snooping().reserved_multicast = on;
            return;
        default:
            return;
    }
}

}  // namespace vdevice::driver
