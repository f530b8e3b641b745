// What the files of the MAC address table share.
#pragma once

#include <netlink_api.h>
#include <string.h>

#include "core/number.h"

namespace adp {

/** The form in which the driver takes a MAC address: two zero bytes follow it. */
struct MacKey {
    uint8_t byte[NETLINK_MAC_KEY_BYTES] = {};

    explicit MacKey(const uint8_t *mac) { memcpy(byte, mac, NETLINK_MAC_BYTES); }
};

/** The trunk id as the driver takes it: plain arithmetic, also for a group that there is not. */
constexpr int32_t get_chip_tgid(Intf agg) {
    return driver_number(trunk_of(agg));
}

}  // namespace adp
