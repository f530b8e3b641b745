// Trunks, the chip-wide controls and the traps. The traps' last argument is not looked at.
#include <vector>

#include "vdevice/driver/check.h"
#include "vdevice/driver/driver.h"

namespace vdevice::driver {
namespace {

using chip::Status;

/** Carries out the operation on the record's ports, if their number is one that the record can hold. */
template <typename Operation>
Status with_ports(const adp_agg_record_t &record, Operation operation) {
    if (record.count < 0 || record.count > ADP_AGG_MEMBER_BYTES) {
        return Status::kBadArgument;
    }
    return operation(std::vector<int>(record.ports, record.ports + record.count));
}

}  // namespace

int32_t Driver::user_trunk_init(uint32_t unit, uint32_t zero) {
    return on_chip(unit, zero, [&] {
        chip_.destroy_all_trunks();
        return Status::kOk;
    });
}

int32_t Driver::user_trunk_create_id(uint32_t unit, uint32_t zero, int32_t trunk) {
    return on_chip(unit, zero, [&] { return chip_.create_trunk(trunk); });
}

int32_t Driver::user_trunk_destroy(uint32_t unit, uint32_t zero, int32_t trunk) {
    return on_chip(unit, zero, [&] { return chip_.destroy_trunk(trunk); });
}

int32_t Driver::user_trunk_set(uint32_t unit, uint32_t zero, int32_t trunk, adp_agg_record_t record) {
    return on_chip(unit, zero, [&] {
        return with_ports(record, [&](const std::vector<int> &ports) { return chip_.set_trunk(trunk, ports); });
    });
}

int32_t Driver::user_trunk_send_data_to_kernel(uint32_t unit, uint32_t zero, int32_t trunk, adp_agg_record_t record) {
    return on_chip(unit, zero, [&] {
        return with_ports(record,
                          [&](const std::vector<int> &ports) { return chip_.set_trunk_configured(trunk, ports); });
    });
}

int32_t Driver::user_trunk_loadbalance_set(uint32_t unit, uint32_t zero, int32_t trunk, uint32_t mode) {
    return on_chip(unit, zero, [&] { return chip_.set_trunk_balance(trunk, mode); });
}

int32_t Driver::user_switch_control_set(uint32_t unit, uint32_t zero, uint32_t control, uint32_t value) {
    return on_chip(unit, zero, [&] {
        if (!SwitchControls::is_control(control)) {
            return Status::kBadArgument;
        }
        if (control == kHashSelection) {
            const auto sides = hash_sides(value);
            if (!sides) {
                return Status::kBadArgument;
            }
            chip_.set_hash_sides(*sides);
        }
        apply_switch(chip_, control, value);
        controls_.set(control, value);
        return Status::kOk;
    });
}

int32_t Driver::user_switch_control_get(uint32_t unit, uint32_t zero, uint32_t control, uint32_t *value) {
    return on_chip(unit, zero, [&] {
        if (!SwitchControls::is_control(control) || value == nullptr) {
            return Status::kBadArgument;
        }
        *value = controls_.get(control);
        return Status::kOk;
    });
}

int32_t Driver::user_trunk_trap_lacp(uint32_t unit, uint32_t zero, uint32_t value, adp_word_t /*option*/) {
    return on_chip(unit, zero, [&] {
        chip_.traps().lacp = value != 0;
        return Status::kOk;
    });
}

int32_t Driver::user_eoam_trap_set(uint32_t unit, uint32_t zero, uint32_t value, adp_word_t /*option*/) {
    return on_chip(unit, zero, [&] {
        chip_.traps().oam = value != 0;
        return Status::kOk;
    });
}

int32_t Driver::user_selfmac_trap_to_cpu(uint32_t unit, uint32_t zero, uint32_t value, adp_word_t /*option*/) {
    return on_chip(unit, zero, [&] {
        chip_.traps().self_mac = value;
        return Status::kOk;
    });
}

}  // namespace vdevice::driver
