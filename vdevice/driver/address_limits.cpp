// Limits on learning, what has been learned, and what has been refused because of a limit.
#include "vdevice/driver/driver.h"
#include "vdevice/driver/port_access.h"

namespace vdevice::driver {
namespace {

using chip::LearnLimits;
using chip::Port;
using chip::Status;
using chip::Switch;
using chip::TrunkTable;

class AddressLimits : public AddressLimitsCalls {
  public:
    explicit AddressLimits(Switch &chip) : chip_{chip} {}

    Status user_mac_violate_del_by_port(int32_t port) override {
        return set_port(chip_, port, [](Port &state) { state.violations.forget(); });
    }

    Status user_mac_violate_count_get_by_port(int32_t port, uint32_t &count) override {
        return read_port(chip_, port, count, [](const Port &state) { return state.violations.count(); });
    }

    Status user_mac_learn_count_get_by_port(int32_t port, uint32_t &count) override {
        return read_port(chip_, port, count,
                         [&](const Port &) { return chip_.macs().counts().behind(chip_.place_of(port)); });
    }

    Status user_mac_learn_limit_set(const netlink_learn_limit_t &limit) override {
        return with_limit(limit, [&](LearnLimits::Limit &set) {
            set = limit.limit;
            return Status::kOk;
        });
    }

    Status user_mac_learn_limit_get(netlink_learn_limit_t &limit) override {
        return with_limit(limit, [&](LearnLimits::Limit set) {
            limit.limit = set;
            return Status::kOk;
        });
    }

  private:
    /** Hands the limit to the operation. The record's flags name one scope, which must exist. */
    template <typename Operation>
    Status with_limit(const netlink_learn_limit_t &scope, Operation operation) {
        LearnLimits &limits = chip_.limits();
        switch (scope.flags) {
            case NETLINK_LIMIT_SYSTEM:
                return operation(limits.system());
            case NETLINK_LIMIT_VLAN:
                return chip::is_vid(scope.vid) ? operation(limits.of_vlan(scope.vid)) : Status::kVlanRange;
            case NETLINK_LIMIT_PORT:
                return Switch::has_port(scope.port) ? operation(limits.of_port(scope.port)) : Status::kNoPort;
            case NETLINK_LIMIT_TRUNK:
                return TrunkTable::is_trunk(scope.trunk) ? operation(limits.of_trunk(scope.trunk))
                                                         : Status::kTrunkRange;
            default:
                return Status::kBadArgument;
        }
    }

    Switch &chip_;
};

}  // namespace

std::unique_ptr<AddressLimitsCalls> address_limits(Switch &chip) {
    return std::make_unique<AddressLimits>(chip);
}

}  // namespace vdevice::driver
