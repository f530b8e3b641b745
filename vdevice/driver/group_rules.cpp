// What chip and ports do with multicast frames.
#include "vdevice/driver/driver.h"
#include "vdevice/driver/port_access.h"
#include "vdevice/driver/switch_controls.h"

namespace vdevice::driver {
namespace {

using chip::Port;
using chip::PortGroupRules;
using chip::Status;

class GroupRules : public GroupRulesCalls {
  public:
    GroupRules(chip::Switch &chip, SwitchControls &controls) : chip_{chip}, controls_{controls} {}

    // Snooping begins with nothing taken from the hosts: software chooses by the controls.
    Status user_igmp_snooping_init() override { return controls_.set(kIgmpToCpu, 0); }

    Status User_switch_port_control_l2mc_enable(int32_t port, uint32_t value) override {
        return set_port(chip_, port, [&](Port &state) { state.groups.uses_entries = value != 0; });
    }

    Status User_switch_port_control_l2mc_get(int32_t port, uint32_t &value) override {
        return read_port(chip_, port, value, [](const Port &state) { return state.groups.uses_entries; });
    }

    Status User_switch_port_control_ipmc_set(int32_t port, uint32_t value) override {
        return set_port(chip_, port, [&](Port &state) { state.groups.knows_ipv4 = value != 0; });
    }

    Status User_switch_port_control_ipmc_get(int32_t port, uint32_t &value) override {
        return read_port(chip_, port, value, [](const Port &state) { return state.groups.knows_ipv4; });
    }

    Status User_switch_ipmc_set(uint32_t enable) override {
        chip_.group_rules().knows_ipv4 = enable != 0;
        return Status::kOk;
    }

    Status User_switch_ip6mc_mode_set(uint32_t mode) override {
        chip_.group_rules().knows_ipv6 = mode != 0;
        return Status::kOk;
    }

    Status User_switch_ipmc_lookup_miss_action(int32_t port, uint32_t action) override {
        return set_miss(port, action, &PortGroupRules::ipv4_miss);
    }

    Status User_switch_ip6mc_lookup_miss_action(int32_t port, uint32_t action) override {
        return set_miss(port, action, &PortGroupRules::ipv6_miss);
    }

  private:
    Status set_miss(int32_t port, uint32_t action, chip::GroupMiss PortGroupRules::*rule) {
        return chip_.change_port(port, [&](Port &state) {
            const auto miss = chip::find_group_miss(action);
            if (!miss) {
                return Status::kBadArgument;
            }
            state.groups.*rule = *miss;
            return Status::kOk;
        });
    }

    chip::Switch &chip_;
    SwitchControls &controls_;
};

}  // namespace

std::unique_ptr<GroupRulesCalls> group_rules(chip::Switch &chip, SwitchControls &controls) {
    return std::make_unique<GroupRules>(chip, controls);
}

}  // namespace vdevice::driver
