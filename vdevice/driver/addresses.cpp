// Addresses of stations one by one, the walk over the table, its size and its ageing.
#include "vdevice/driver/check.h"
#include "vdevice/driver/driver.h"
#include "vdevice/driver/l2_record.h"
#include "vdevice/driver/mac_text.h"

namespace vdevice::driver {
namespace {

using chip::Mac;
using chip::MacEntry;
using chip::MacTable;
using chip::Status;
using chip::Vid;

/** A table of thousands of entries must not push all else out of the log. */
constexpr size_t kMaxShown = 256;

/** The unit is the whole beginning of these calls: there is no word behind it. */
template <typename Operation>
int32_t on_unit(uint32_t unit, Operation operation) {
    return on_chip(unit, 0, operation);
}

}  // namespace

int32_t Driver::user_mac_addr_add(uint32_t unit, adp_l2_entry_t entry) {
    return on_unit(unit, [&] {
        const auto added = entry_of(entry, clock_());
        return added ? chip_.add_mac(*added, entry.vid) : Status::kBadArgument;
    });
}

int32_t Driver::user_mac_addr_delete(uint32_t unit, const uint8_t *key, uint32_t vid, adp_word_t /*option*/) {
    return on_unit(unit, [&] {
        if (key == nullptr) {
            return Status::kBadArgument;
        }
        return chip::is_vid(vid) ? chip_.macs().remove(Mac::from_bytes(key), static_cast<Vid>(vid))
                                 : Status::kVlanRange;
    });
}

int32_t Driver::user_mac_addr_get(uint32_t unit, const uint8_t *key, uint32_t vid, adp_l2_entry_t *entry) {
    return on_unit(unit, [&] {
        if (key == nullptr || entry == nullptr) {
            return Status::kBadArgument;
        }
        if (!chip::is_vid(vid)) {
            return Status::kVlanRange;
        }
        const Mac mac = Mac::from_bytes(key);
        const MacEntry *found = chip_.macs().find(mac, static_cast<Vid>(vid));
        if (mac.is_group() || found == nullptr) {
            return mac.is_group() ? Status::kMacNotUnicast : Status::kMacMissing;
        }
        *entry = record_of(*found);
        return Status::kOk;
    });
}

int32_t Driver::user_netlink_mac_nextValidAddr_get(uint32_t unit, adp_word_t index, adp_l2_entry_t *entry,
                                                   adp_word_t /*option*/) {
    return on_unit(unit, [&] {
        if (entry == nullptr) {
            return Status::kBadArgument;
        }
        const MacEntry *found = chip_.macs().next(index);
        if (found == nullptr) {
            return Status::kMacMissing;
        }
        *entry = record_of(*found, found->is_group() ? chip_.macs().ports_of(*found) : chip::PortSet{});
        return Status::kOk;
    });
}

int32_t Driver::user_mac_age_time_set(uint32_t unit, uint32_t seconds) {
    return on_unit(unit, [&] {
        const std::chrono::seconds age_time{seconds};
        if (age_time > MacTable::kMaxAgeTime) {
            return Status::kBadArgument;
        }
        chip_.macs().set_age_time(age_time);
        return Status::kOk;
    });
}

int32_t Driver::user_mac_age_time_get(uint32_t unit, uint32_t *seconds) {
    return on_unit(unit, [&] {
        if (seconds == nullptr) {
            return Status::kBadArgument;
        }
        *seconds = static_cast<uint32_t>(chip_.macs().age_time().count());
        return Status::kOk;
    });
}

int32_t Driver::user_l2_cache_size_get(uint32_t unit, uint32_t zero, uint32_t *size) {
    return on_chip(unit, zero, [&] {
        if (size == nullptr) {
            return Status::kBadArgument;
        }
        *size = MacTable::kCapacity;
        return Status::kOk;
    });
}

/** Notes the entries of a VLAN, or of all for 0. */
void Driver::show_entries(adp_word_t vid, bool groups) {
    size_t count = 0;
    for (const MacEntry &entry : chip_.macs().list()) {
        if (entry.is_group() != groups || (vid != 0 && entry.vid != vid)) {
            continue;
        }
        if (count++ < kMaxShown) {
            journal_.add({clock_(), 0, 0, "MAC", line_of(entry)});
        }
    }
    journal_.add({clock_(), 0, 0, "MAC", std::to_string(count) + (groups ? " groups" : " addresses")});
}

std::string Driver::line_of(const MacEntry &entry) const {
    std::string line = "vlan " + std::to_string(entry.vid) + " " + to_text(entry.mac);
    if (entry.is_group()) {
        line += " ports";
        chip_.macs().ports_of(entry).for_each([&](int port) { line += " " + std::to_string(port); });
        return line;
    }
    line += entry.place().is_trunk() ? " trunk " + std::to_string(entry.trunk) : " port " + std::to_string(entry.port);
    return line + (entry.is_filter() ? " filter" : entry.is_static ? " static" : " dynamic");
}

int32_t Driver::user_mac_table_show(uint32_t unit, adp_word_t first, adp_word_t /*third*/, adp_word_t /*fourth*/) {
    return on_unit(unit, [&] {
        show_entries(first, false);
        return Status::kOk;
    });
}

int32_t Driver::user_mac_mcast_table_show(uint32_t unit, adp_word_t first, adp_word_t /*third*/,
                                          adp_word_t /*fourth*/) {
    return on_unit(unit, [&] {
        show_entries(first, true);
        return Status::kOk;
    });
}

}  // namespace vdevice::driver
