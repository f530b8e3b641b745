// Limits on learning, what has been learned, and what has been refused because of a limit.
#include "vdevice/driver/check.h"
#include "vdevice/driver/driver.h"

namespace vdevice::driver {
namespace {

using chip::LearnLimits;
using chip::Status;
using chip::Switch;
using chip::TrunkTable;

/** Hands the limit that the record's scope names to the operation. One scope must be named, and what it is of. */
template <typename Limits, typename Operation>
Status with_limit(Limits &limits, const netlink_learn_limit_t &scope, Operation operation) {
    switch (scope.flags) {
        case NETLINK_LIMIT_SYSTEM:
            return operation(limits.system());
        case NETLINK_LIMIT_VLAN:
            return chip::is_vid(scope.vid) ? operation(limits.of_vlan(scope.vid)) : Status::kVlanRange;
        case NETLINK_LIMIT_PORT:
            return Switch::has_port(scope.port) ? operation(limits.of_port(scope.port)) : Status::kNoPort;
        case NETLINK_LIMIT_TRUNK:
            return TrunkTable::is_trunk(scope.trunk) ? operation(limits.of_trunk(scope.trunk)) : Status::kTrunkRange;
        default:
            return Status::kBadArgument;
    }
}

}  // namespace

int32_t Driver::user_mac_learn_limit_set(uint32_t unit, netlink_learn_limit_t limit) {
    return on_chip(unit, 0, [&] {
        return with_limit(chip_.limits(), limit, [&](LearnLimits::Limit &set) {
            set = limit.limit;
            return Status::kOk;
        });
    });
}

int32_t Driver::user_mac_learn_limit_get(uint32_t unit, netlink_learn_limit_t *limit) {
    return on_chip(unit, 0, [&] {
        if (limit == nullptr) {
            return Status::kBadArgument;
        }
        return with_limit(chip_.limits(), *limit, [&](LearnLimits::Limit set) {
            limit->limit = set;
            return Status::kOk;
        });
    });
}

int32_t Driver::user_mac_learn_count_get_by_port(int32_t port, uint32_t *count) {
    return read_port(0, 0, port, count,
                     [&](const chip::Port &) { return chip_.macs().counts().behind(chip_.place_of(port)); });
}

int32_t Driver::user_mac_violate_count_get_by_port(int32_t port, uint32_t *count) {
    return read_port(0, 0, port, count, [](const chip::Port &state) { return state.violations.count(); });
}

int32_t Driver::user_mac_violate_del_by_port(int32_t port) {
    return write_port(0, 0, port, [](chip::Port &state) {
        state.violations.forget();
        return Status::kOk;
    });
}

}  // namespace vdevice::driver
