// The reserved addresses, and the calls by which start-up turns on what the chip does for protocols.
#include "vdevice/driver/check.h"
#include "vdevice/driver/driver.h"

namespace vdevice::driver {

using chip::Mac;
using chip::Status;

int32_t Driver::user_l2_bpdu_get(uint32_t unit, uint32_t zero, uint32_t index, uint8_t *mac) {
    return on_chip(unit, zero, [&] {
        if (mac == nullptr) {
            return Status::kBadArgument;
        }
        const std::optional<Mac> entry = chip_.reserved_macs().get(index);
        if (!entry) {
            return Status::kReservedIndex;
        }
        for (size_t i = 0; i < chip::kMacBytes; ++i) {
            mac[i] = entry->byte(i);
        }
        return Status::kOk;
    });
}

int32_t Driver::user_l2_bpdu_set(uint32_t unit, uint32_t zero, uint32_t index, const uint8_t *mac) {
    return on_chip(unit, zero, [&] {
        return mac == nullptr ? Status::kBadArgument : chip_.reserved_macs().set(index, Mac::from_bytes(mac));
    });
}

int32_t Driver::user_lldp_init(uint32_t unit, uint32_t zero) {
    return on_chip(unit, zero, [&] {
        chip_.traps().lldp = true;
        return Status::kOk;
    });
}

// Snooping begins with nothing taken from the hosts: software says by the controls what it wants.
int32_t Driver::user_igmp_snooping_init(uint32_t unit, uint32_t zero) {
    return user_switch_control_set(unit, zero, kIgmpToCpu, 0);
}

int32_t Driver::User_mcast_init(uint32_t unit, uint32_t zero) {
    const int32_t result = user_switch_control_set(unit, zero, kReservedMulticast, 0);
    if (result == kOk) {
        chip_.macs().remove_all_groups();
    }
    return result;
}

int32_t Driver::user_dos_attack_prevent_init(uint32_t unit, uint32_t zero) {
    return on_chip(unit, zero, [&] {
        chip_.set_attack_filter(true);
        return Status::kOk;
    });
}

}  // namespace vdevice::driver
