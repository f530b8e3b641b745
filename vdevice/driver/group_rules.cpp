// What ports and chip do with frames to groups. The port comes second in the calls on a port, the zero third.
#include "vdevice/driver/check.h"
#include "vdevice/driver/driver.h"

namespace vdevice::driver {
namespace {

using chip::Port;
using chip::PortGroupRules;
using chip::Status;

}  // namespace

int32_t Driver::User_switch_port_control_l2mc_enable(uint32_t unit, int32_t port, uint32_t zero, uint32_t value) {
    return write_port(unit, zero, port, [&](Port &state) {
        state.groups.uses_entries = value != 0;
        return Status::kOk;
    });
}

int32_t Driver::User_switch_port_control_l2mc_get(uint32_t unit, int32_t port, uint32_t zero, uint32_t *value) {
    return read_port(unit, zero, port, value, [](const Port &state) { return state.groups.uses_entries ? 1U : 0U; });
}

int32_t Driver::User_switch_port_control_ipmc_set(uint32_t unit, int32_t port, uint32_t zero, uint32_t value) {
    return write_port(unit, zero, port, [&](Port &state) {
        state.groups.knows_ipv4 = value != 0;
        return Status::kOk;
    });
}

int32_t Driver::User_switch_port_control_ipmc_get(uint32_t unit, int32_t port, uint32_t zero, uint32_t *value) {
    return read_port(unit, zero, port, value, [](const Port &state) { return state.groups.knows_ipv4 ? 1U : 0U; });
}

int32_t Driver::User_switch_ipmc_set(uint32_t unit, uint32_t zero, uint32_t enable) {
    return on_chip(unit, zero, [&] {
        chip_.group_rules().knows_ipv4 = enable != 0;
        return Status::kOk;
    });
}

int32_t Driver::User_switch_ip6mc_mode_set(uint32_t unit, uint32_t zero, uint32_t mode) {
    return on_chip(unit, zero, [&] {
        chip_.group_rules().knows_ipv6 = mode != 0;
        return Status::kOk;
    });
}

int32_t Driver::set_group_miss(uint32_t unit, uint32_t zero, int32_t port, uint32_t action,
                               chip::GroupMiss PortGroupRules::*rule) {
    return write_port(unit, zero, port, [&](Port &state) {
        const auto miss = chip::find_group_miss(action);
        if (!miss) {
            return Status::kBadArgument;
        }
        state.groups.*rule = *miss;
        return Status::kOk;
    });
}

int32_t Driver::User_switch_ipmc_lookup_miss_action(uint32_t unit, uint32_t zero, int32_t port, uint32_t action) {
    return set_group_miss(unit, zero, port, action, &PortGroupRules::ipv4_miss);
}

int32_t Driver::User_switch_ip6mc_lookup_miss_action(uint32_t unit, uint32_t zero, int32_t port, uint32_t action) {
    return set_group_miss(unit, zero, port, action, &PortGroupRules::ipv6_miss);
}

}  // namespace vdevice::driver
