// The table of addresses as a whole: ageing, display and size; and the reserved addresses.
#include <string>
#include <utility>

#include "vdevice/driver/driver.h"
#include "vdevice/driver/mac_text.h"

namespace vdevice::driver {
namespace {

using chip::Mac;
using chip::MacEntry;
using chip::MacTable;
using chip::Status;

/** A table of thousands of entries must not push all else out of the log. */
constexpr size_t kMaxShown = 256;

class AddressTable : public AddressTableCalls {
  public:
    AddressTable(chip::Switch &chip, Clock clock, Journal &journal)
        : chip_{chip}, clock_{std::move(clock)}, journal_{journal} {}

    Status user_mac_age_time_set(uint32_t seconds) override {
        const std::chrono::seconds age_time{seconds};
        if (age_time > MacTable::kMaxAgeTime) {
            return Status::kBadArgument;
        }
        chip_.macs().set_age_time(age_time);
        return Status::kOk;
    }

    Status user_mac_age_time_get(uint32_t &seconds) override {
        seconds = static_cast<uint32_t>(chip_.macs().age_time().count());
        return Status::kOk;
    }

    Status user_mac_table_show(uint32_t first, uint32_t /*third*/, uint32_t /*fourth*/) override {
        show_entries(first, false);
        return Status::kOk;
    }

    Status user_mac_mcast_table_show(uint32_t first, uint32_t /*third*/, uint32_t /*fourth*/) override {
        show_entries(first, true);
        return Status::kOk;
    }

    Status user_l2_cache_size_get(uint32_t &size) override {
        size = MacTable::kCapacity;
        return Status::kOk;
    }

    Status user_l2_bpdu_get(uint32_t index, uint8_t *mac) override {
        const std::optional<Mac> entry = chip_.reserved_macs().get(index);
        if (!entry) {
            return Status::kReservedIndex;
        }
        for (size_t i = 0; i < chip::kMacBytes; ++i) {
            mac[i] = entry->byte(i);
        }
        return Status::kOk;
    }

    Status user_l2_bpdu_set(uint32_t index, const uint8_t *mac) override {
        return chip_.reserved_macs().set(index, Mac::from_bytes(mac));
    }

  private:
    /** Logs the entries of a VLAN, or of all for 0. */
    void show_entries(uint32_t vid, bool groups) {
        size_t count = 0;
        for (const MacEntry &entry : chip_.macs().list()) {
            if (entry.is_group() != groups || (vid != 0 && entry.vid != vid)) {
                continue;
            }
            if (count++ < kMaxShown) {
                log(line_of(entry));
            }
        }
        log(std::to_string(count) + (groups ? " groups" : " addresses"));
    }

    std::string line_of(const MacEntry &entry) const {
        std::string line = "vlan " + std::to_string(entry.vid) + " " + to_text(entry.mac);
        if (entry.is_group()) {
            line += " ports";
            chip_.macs().ports_of(entry).for_each([&](int port) { line += " " + std::to_string(port); });
            return line;
        }
        line +=
            entry.place().is_trunk() ? " trunk " + std::to_string(entry.trunk) : " port " + std::to_string(entry.port);
        return line + (entry.is_filter() ? " filter" : entry.is_static ? " static" : " dynamic");
    }

    void log(const std::string &line) { journal_.add({clock_(), 0, 0, "MAC", line}); }

    chip::Switch &chip_;
    Clock clock_;
    Journal &journal_;
};

}  // namespace

std::unique_ptr<AddressTableCalls> address_table(chip::Switch &chip, Clock clock, Journal &journal) {
    return std::make_unique<AddressTable>(chip, std::move(clock), journal);
}

}  // namespace vdevice::driver
