// The records of the L2 calls, as the chip's entries and back.
#include "vdevice/driver/l2_record.h"

namespace vdevice::driver {

using chip::MacEntry;

std::optional<MacEntry> entry_of(const adp_l2_entry_t &record, chip::Time now) {
    constexpr uint32_t kMeaningful = NETLINK_L2_STATIC | NETLINK_L2_TO_TRUNK | kL2DropTo | kL2DropFrom;
    if ((record.flags & ~kMeaningful) != 0) {
        return std::nullopt;
    }
    MacEntry entry;
    entry.mac = chip::Mac::from_bytes(record.mac);
    entry.port = record.port;
    entry.last_seen = now;
    entry.drops_to = (record.flags & kL2DropTo) != 0;
    entry.drops_from = (record.flags & kL2DropFrom) != 0;
    // A filter that aged, or that its station could move, would be none.
    entry.is_static = (record.flags & NETLINK_L2_STATIC) != 0 || entry.is_filter();
    if ((record.flags & NETLINK_L2_TO_TRUNK) != 0) {
        entry.is_given_to_trunk = true;
        entry.trunk = record.trunk;
    }
    return entry;
}

adp_l2_entry_t record_of(const MacEntry &entry, const chip::PortSet &ports) {
    adp_l2_entry_t record = {};
    for (size_t i = 0; i < chip::kMacBytes; ++i) {
        record.mac[i] = entry.mac.byte(i);
    }
    record.flags = (entry.is_static ? NETLINK_L2_STATIC : 0) | (entry.drops_to ? kL2DropTo : 0) |
                   (entry.drops_from ? kL2DropFrom : 0);
    if (entry.place().is_trunk()) {
        record.flags |= NETLINK_L2_FOUND_TRUNK;
        record.trunk = entry.trunk;
    }
    record.vid = entry.vid;
    record.port = entry.port;
    record.index = entry.index;
    ports.to_words(record.ports);
    return record;
}

}  // namespace vdevice::driver
