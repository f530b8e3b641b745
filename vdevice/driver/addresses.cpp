// Addresses one by one, of stations and of groups, and the walk over the table. The options are the caller's, and have
// no meaning here.
#include <utility>

#include "vdevice/driver/driver.h"
#include "vdevice/driver/l2_record.h"

namespace vdevice::driver {
namespace {

using chip::Mac;
using chip::MacEntry;
using chip::PortSet;
using chip::Status;
using chip::Vid;

class Addresses : public AddressesCalls {
  public:
    Addresses(chip::Switch &chip, Clock clock) : chip_{chip}, clock_{std::move(clock)} {}

    Status user_mac_addr_add(const adp_l2_entry_t &entry) override {
        const auto added = entry_of(entry, clock_());
        return added ? chip_.add_mac(*added, entry.vid) : Status::kBadArgument;
    }

    Status user_mac_addr_delete(const uint8_t *key, uint32_t vid, uint32_t /*option*/) override {
        return chip::is_vid(vid) ? chip_.macs().remove(Mac::from_bytes(key), static_cast<Vid>(vid))
                                 : Status::kVlanRange;
    }

    Status user_mac_addr_get(const uint8_t *key, uint32_t vid, adp_l2_entry_t &entry) override {
        if (!chip::is_vid(vid)) {
            return Status::kVlanRange;
        }
        const Mac mac = Mac::from_bytes(key);
        const MacEntry *found = chip_.macs().find(mac, static_cast<Vid>(vid));
        if (mac.is_group() || found == nullptr) {
            return mac.is_group() ? Status::kMacNotUnicast : Status::kMacMissing;
        }
        entry = record_of(*found);
        return Status::kOk;
    }

    Status user_mac_mcast_addr_add(const adp_l2_entry_t &entry) override {
        return chip_.add_group(Mac::from_bytes(entry.mac), entry.vid, PortSet::from_words(entry.ports));
    }

    Status user_mac_mcast_addr_delete(const uint8_t *key, uint32_t vid, uint32_t /*option*/) override {
        return chip_.remove_group(Mac::from_bytes(key), vid);
    }

    Status user_mac_mcast_addr_get(const uint8_t *key, uint32_t vid, adp_l2_entry_t &entry) override {
        const MacEntry *group = chip_.find_group(Mac::from_bytes(key), vid);
        if (group == nullptr) {
            return Status::kGroupMissing;
        }
        entry = record_of(*group, chip_.macs().ports_of(*group));
        return Status::kOk;
    }

    Status user_netlink_mac_nextValidAddr_get(uint32_t index, adp_l2_entry_t &entry, uint32_t /*option*/) override {
        const MacEntry *found = chip_.macs().next(index);
        if (found == nullptr) {
            return Status::kMacMissing;
        }
        entry = record_of(*found, found->is_group() ? chip_.macs().ports_of(*found) : PortSet{});
        return Status::kOk;
    }

  private:
    chip::Switch &chip_;
    Clock clock_;
};

}  // namespace

std::unique_ptr<AddressesCalls> addresses(chip::Switch &chip, Clock clock) {
    return std::make_unique<Addresses>(chip, std::move(clock));
}

}  // namespace vdevice::driver
