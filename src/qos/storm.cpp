// Storm control and the ingress limit.
#include <adp/storm.h>
#include <netlink_api.h>

#include "core/members.h"
#include "core/resolve.h"

namespace adp {
namespace {

constexpr uint32_t kResetSlots = 8;

// The driver's storm types by code. Enabling has a shorter table; the codes beyond it are those of the first.
constexpr uint8_t kTypeOfCode[] = {0, 3, 2, 0, 4, 0, 0, 0, 1, 0, 0, 0, 0, 0, 0, 0, 0};
constexpr uint8_t kEnableTypeOfCode[] = {0, 3, 2, 0, 4};

constexpr uint32_t storm_type(uint32_t code) {
    const uint32_t row = low8(code);
    return row < sizeof kTypeOfCode ? kTypeOfCode[row] : 0;
}

constexpr uint32_t enable_type(uint32_t code) {
    const uint32_t row = low8(code);
    return row < sizeof kEnableTypeOfCode ? kEnableTypeOfCode[row] : storm_type(code);
}

/** Contract: on this device every call succeeds before any argument is checked. */
template <typename Call>
adp_status_t unless_no_device(uint32_t dev_id, Call call) {
    return dev_id == ADP_STORM_NO_DEVICE ? ADP_OK : call();
}

template <typename... Values>
adp_status_t on_device_port(uint32_t dev_id, adp_intf_t intf, PortCall<Values...> call, Values... values) {
    return unless_no_device(dev_id, [=] { return on_port_only(Intf(intf), call, values...); });
}

}  // namespace
}  // namespace adp

using namespace adp;

adp_status_t adp_set_storm_control(uint32_t dev_id, adp_intf_t intf, uint32_t storm_code, uint32_t rate,
                                   uint32_t burst) {
    const auto limit = [=](PhyPort port) {
        return user_rate_bandwidth_set(0, 0, number(port), storm_type(storm_code), rate, burst);
    };
    return unless_no_device(
        dev_id, [&] { return on_port_or_members(Intf(intf), Members::kConfigured | Failure::kDriverError, limit); });
}

adp_status_t adp_get_storm_control(uint32_t dev_id, adp_intf_t intf, uint32_t storm_code, uint32_t *rate,
                                   uint32_t *burst) {
    return unless_no_device(dev_id, [=] {
        return on_port_or_manager(Intf(intf), Failure::kDriverError, user_rate_bandwidth_get, storm_type(storm_code),
                                  rate, burst);
    });
}

adp_status_t adp_set_storm_seltype(uint32_t dev_id, adp_intf_t intf, uint32_t storm_code, uint32_t selected) {
    return on_device_port(dev_id, intf, user_rate_stormsel_set, storm_type(storm_code), selected);
}

adp_status_t adp_get_storm_seltype(uint32_t dev_id, adp_intf_t intf, uint32_t storm_code, uint32_t *selected) {
    return on_device_port(dev_id, intf, user_rate_stormsel_get, storm_type(storm_code), selected);
}

adp_status_t adp_set_stormcontrol_enable(uint32_t dev_id, adp_intf_t intf, uint32_t storm_code, uint32_t enable) {
    return on_device_port(dev_id, intf, user_rate_stormControlEnable_set, enable_type(storm_code), enable);
}

adp_status_t adp_get_storm_exceed_flag(uint32_t dev_id, adp_intf_t intf, uint32_t storm_code, uint32_t *flag) {
    return on_device_port(dev_id, intf, user_rate_stormExceedFlag_get, low8(storm_code), flag);
}

adp_status_t adp_reset_storm_exceed_flag(uint32_t dev_id, adp_intf_t intf) {
    const auto reset = [](PhyPort port) { return driver_status(user_rate_stormExceedFlag_reset(0, 0, number(port))); };
    return unless_no_device(dev_id, [&] {
        return by_kind(Intf(intf), reset, [&](Intf agg) {
            MemberList members = members_of(agg, Members::kConfigured);
            members.count = kResetSlots;  // Contract: eight slots are visited, whatever the number of members.
            return first_failure(members, [&](Intf member) { return reset(phy_of(member)); });
        });
    });
}

adp_status_t adp_set_storm_counting_mode(uint32_t dev_id, uint32_t storm_code, uint32_t, uint32_t mode) {
    return unless_no_device(dev_id,
                            [=] { return driver_status(user_rate_stormCountMode_set(0, 0, low8(storm_code), mode)); });
}

adp_status_t adp_get_storm_counting_mode(uint32_t dev_id, uint32_t storm_code, uint32_t, uint32_t *mode) {
    return unless_no_device(dev_id,
                            [=] { return driver_status(user_rate_stormCountMode_get(0, 0, storm_code, mode)); });
}

adp_status_t adp_set_ingress_limit(uint32_t dev_id, adp_intf_t intf, uint32_t rate, uint32_t burst) {
    return on_device_port(dev_id, intf, user_port_ingress_rate_set, rate, burst);
}

adp_status_t adp_get_ingress_limit(uint32_t dev_id, adp_intf_t intf, uint32_t *rate, uint32_t *burst) {
    return on_device_port(dev_id, intf, user_port_ingress_rate_get, rate, burst);
}
