// The records of the L2 calls, as the chip's entries and back.
#pragma once

#include <optional>

#include "platform/netlink_api.h"
#include "vdevice/chip/switch.h"

namespace vdevice::driver {

// What the library does not know of: these flags are the caller's own.
constexpr uint32_t kL2DropTo = 0x10;   /**< filtering: frames to the address are dropped */
constexpr uint32_t kL2DropFrom = 0x20; /**< filtering: frames from the address are dropped */

/** Nothing if the record's flags mean nothing. The VLAN is left to the chip. */
std::optional<chip::MacEntry> entry_of(const adp_l2_entry_t &record, chip::Time now);

/** As look-ups give it: a trunk is told by NETLINK_L2_FOUND_TRUNK. @p ports are those of a group. */
adp_l2_entry_t record_of(const chip::MacEntry &entry, const chip::PortSet &ports = {});

}  // namespace vdevice::driver
