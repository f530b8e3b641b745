// Entries of the tables that change tags: found by port and VLAN id.
#pragma once

#include <stdint.h>

#include "vdevice/chip/switch.h"

namespace vdevice::driver {

constexpr uint32_t kByVlan = 0; /**< kind of an entry: it is found by port and VLAN id. The chip has no other. */

inline chip::Status read_entry(const chip::VidMap &table, int32_t port, uint32_t vid, uint32_t &new_vid,
                               uint32_t &priority) {
    chip::TagChange change;
    const chip::Status status = table.get(port, vid, change);
    if (status == chip::Status::kOk) {
        new_vid = change.vid;
        priority = change.priority;
    }
    return status;
}

}  // namespace vdevice::driver
