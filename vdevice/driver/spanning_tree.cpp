// Spanning-tree groups: their VLANs and the ports' states in them.
#include "vdevice/driver/check.h"
#include "vdevice/driver/driver.h"

namespace vdevice::driver {

using chip::Status;
using chip::StpGroups;

// BPDUs are the CPU's from now on, whatever the ports' states.
int32_t Driver::user_stg_init(uint32_t unit, uint32_t zero) {
    return on_chip(unit, zero, [&] {
        chip_.traps().bpdu = true;
        chip_.stp().reset();
        return Status::kOk;
    });
}

int32_t Driver::user_stg_create_id(uint32_t unit, uint32_t zero, int32_t stg) {
    return on_chip(unit, zero, [&] { return chip_.stp().create(stg); });
}

int32_t Driver::user_stg_destroy(uint32_t unit, uint32_t zero, int32_t stg) {
    return on_chip(unit, zero, [&] { return chip_.stp().destroy(stg); });
}

int32_t Driver::user_stg_vlan_add(uint32_t unit, uint32_t zero, int32_t stg, uint32_t vid) {
    return on_chip(unit, zero, [&] { return chip_.stp().add_vlan(stg, vid); });
}

int32_t Driver::user_stg_vlan_remove(uint32_t unit, uint32_t zero, int32_t stg, uint32_t vid) {
    return on_chip(unit, zero, [&] { return chip_.stp().remove_vlan(stg, vid); });
}

int32_t Driver::user_stg_stp_set(uint32_t unit, uint32_t zero, int32_t stg, int32_t port, uint32_t state) {
    return on_chip(unit, zero, [&] { return chip_.stp().set_state(stg, port, state); });
}

int32_t Driver::user_stg_stp_get(uint32_t unit, uint32_t zero, int32_t stg, int32_t port, uint32_t *state) {
    return read_word(unit, zero, state, [&](uint32_t &out) {
        Status status = chip_.stp().check(stg);
        if (status == Status::kOk) {
            status = chip::Switch::chip_ports().check(port);
        }
        if (status == Status::kOk) {
            out = static_cast<uint32_t>(chip_.stp().state(stg, port));
        }
        return status;
    });
}

int32_t Driver::user_stg_default_get(uint32_t unit, uint32_t zero, uint32_t *stg) {
    return read_word(unit, zero, stg, [](uint32_t &out) {
        out = StpGroups::kDefault;
        return Status::kOk;
    });
}

int32_t Driver::user_stg_max_support_count_get(uint32_t unit, uint32_t zero, uint32_t *count) {
    return read_word(unit, zero, count, [](uint32_t &out) {
        out = StpGroups::kGroups;
        return Status::kOk;
    });
}

int32_t Driver::user_stg_stg_count_get(uint32_t unit, uint32_t zero, uint32_t *count) {
    return read_word(unit, zero, count, [&](uint32_t &out) {
        out = static_cast<uint32_t>(chip_.stp().list().size());
        return Status::kOk;
    });
}

int32_t Driver::user_stg_vlan_count_get(uint32_t unit, uint32_t zero, int32_t stg, uint32_t *count) {
    return read_word(unit, zero, count, [&](uint32_t &out) {
        const Status status = chip_.stp().check(stg);
        if (status == Status::kOk) {
            out = static_cast<uint32_t>(chip_.stp().vlans(stg).size());
        }
        return status;
    });
}

}  // namespace vdevice::driver
