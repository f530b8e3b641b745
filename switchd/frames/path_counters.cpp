// Names of reasons, and where a port's counters stand.
#include "switchd/frames/path_counters.h"

namespace switchd {

std::string_view name_of(Drop reason) {
    constexpr std::array<std::string_view, kDrops> kNames = {"unknown_port", "malformed",  "closed",       "looped",
                                                             "flood_limit",  "trap_limit", "no_interface", "not_taken",
                                                             "forwarded",    "too_long",   "not_sent"};
    return kNames[static_cast<size_t>(reason)];
}

size_t path_slot_of(uint32_t intf) {
    const uint32_t index = intf & ADP_INTF_INDEX_MASK;
    switch (intf >> ADP_INTF_TYPE_SHIFT) {
        case ADP_INTF_TYPE_USER_PORT:
            return index <= ADP_USER_PORTS ? index : 0;
        case ADP_INTF_TYPE_AGG:
            return index >= 1 && index <= ADP_AGG_GROUPS ? ADP_USER_PORTS + index : 0;
        default:
            return 0;
    }
}

}  // namespace switchd
