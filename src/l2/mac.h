// Shared by the files of the MAC address table.
#pragma once

#include <netlink_api.h>
#include <string.h>

#include "core/number.h"

namespace adp {

/** A MAC address as the driver takes it: two zero bytes follow it. */
struct MacKey {
    uint8_t byte[NETLINK_MAC_KEY_BYTES] = {};

    explicit MacKey(const uint8_t *mac) { memcpy(byte, mac, NETLINK_MAC_BYTES); }
};

/** The trunk id as the driver takes it; a group outside 1..8 is not refused. */
constexpr int32_t get_chip_tgid(Intf agg) {
    return driver_number(trunk_of(agg));
}

}  // namespace adp
