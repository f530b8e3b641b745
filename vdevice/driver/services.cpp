// The device's services: its log and event queue, and the VLAN and MAC-table helpers, which speak of logical
// interface numbers and work on the same chip as the driver calls.
#include <cstring>
#include <string>
#include <utility>

#include "vdevice/driver/codes.h"
#include "vdevice/driver/driver.h"
#include "vdevice/driver/mac_text.h"
#include "vdevice/driver/vlan_record.h"

namespace vdevice::driver {
namespace {

using chip::PortSet;
using chip::Status;

constexpr int32_t kPosted = 1;
constexpr size_t kRecordAddressWord = 7;

// set_mac_tbl_clear_by_port: the one scope and kind that have a meaning, an interface's learned entries in all VLANs.
constexpr uint32_t kScopeAllVlans = 7;
constexpr uint32_t kKindLearned = 3;

/** Bit i of the record's bitmaps is user port i, bit 26 + g group g. */
uint64_t low_bits(const PortSet &interfaces) {
    uint32_t words[PortSet::kWords];
    interfaces.to_words(words);
    return (uint64_t{words[1]} << 32) | words[0];
}

std::string text_or_empty(const char *text) {
    return text == nullptr ? std::string{} : std::string{text};
}

class Services : public ServicesCalls {
  public:
    Services(chip::Switch &chip, const Board &board, Clock clock, ServiceRecords &records)
        : chip_{chip}, board_{board}, clock_{std::move(clock)}, records_{records} {}

    int32_t log_line(int32_t level, int32_t module, const char *word, const char *text) override {
        records_.journal.add({clock_(), level, module, text_or_empty(word), text_or_empty(text)});
        return kOk;
    }

    int32_t sys_trace_get() override { return records_.trace; }

    int32_t sys_trace_add_log(const char *prefix, const char *message) override {
        note("TRACE", text_or_empty(prefix) + " " + text_or_empty(message));
        return kOk;
    }

    int32_t link_event_handle_cb(uint32_t intf, int32_t status) override {
        note("LINK", "interface " + std::to_string(intf) + (status == 0 ? " is down" : " is up"));
        return kOk;
    }

    int32_t equeue_send_ucast(uintptr_t queue, const uintptr_t *message, int32_t /*timeout*/) override {
        if (message == nullptr) {
            return chip::code(Status::kBadArgument);
        }
        Event event;
        event.time = clock_();
        event.queue = static_cast<uint32_t>(queue);
        for (size_t i = 0; i < kRecordAddressWord; ++i) {
            event.words[i] = static_cast<uint32_t>(message[i]);
        }
        if (message[kRecordAddressWord] != 0) {
            std::memcpy(event.record.data(), reinterpret_cast<const void *>(message[kRecordAddressWord]),
                        sizeof(event.record));
        }
        return records_.events.post(event) ? kPosted : chip::code(Status::kQueueFull);
    }

    int32_t get_vlan_info(uint32_t vid, uint8_t *record) override {
        const chip::Vlan *vlan = chip_.vlans().find(vid);
        if (vlan == nullptr || record == nullptr) {
            return kNotFound;
        }
        VlanRecord filled;
        filled.set_vid(vid);
        filled.set_members(low_bits(interfaces_of(vlan->members)));
        filled.set_untagged(low_bits(interfaces_of(vlan->untagged)));
        filled.copy_to(record);
        return kOk;
    }

    int32_t get_group_by_interface(uint32_t intf, uint32_t *group) override {
        if (group == nullptr) {
            return chip::code(Status::kBadArgument);
        }
        *group = 0;
        const auto port = board_.chip_port(intf);
        if (!port) {
            return chip::code(Status::kNotFrontPort);
        }
        if (const int trunk = chip_.trunk_of(*port); trunk != chip::TrunkTable::kNone) {
            *group = ADP_AGG_INTF(static_cast<uint32_t>(trunk + 1));
        }
        return kOk;
    }

    int32_t add_mac_static_addr(const char *mac, uint32_t intf, uint32_t vid, uint32_t /*flag*/) override {
        const auto address = parse_mac(text_or_empty(mac));
        if (!address) {
            return chip::code(Status::kMacSyntax);
        }
        const auto port = board_.chip_port(intf);
        if (!port) {
            return chip::code(Status::kNotFrontPort);
        }
        return chip::code(chip_.add_static_mac(*address, vid, *port));
    }

    int32_t del_mac_addr(const char *mac, uint32_t vid, uint32_t /*flag*/) override {
        const auto address = parse_mac(text_or_empty(mac));
        if (!address) {
            return chip::code(Status::kMacSyntax);
        }
        if (!chip::is_vid(vid)) {
            return chip::code(Status::kVlanRange);
        }
        return chip::code(chip_.macs().remove(*address, static_cast<chip::Vid>(vid)));
    }

    int32_t set_mac_tbl_clear_by_port(uint32_t intf, uint32_t scope, uint32_t kind) override {
        const auto port = board_.chip_port(intf);
        if (!port) {
            return chip::code(Status::kNotFrontPort);
        }
        if (scope != kScopeAllVlans || kind != kKindLearned) {
            return chip::code(Status::kBadArgument);
        }
        chip::MacFilter learned;
        learned.place = chip_.place_of(*port);
        chip_.macs().remove_all(learned);
        return kOk;
    }

  private:
    void note(std::string word, std::string text) {
        records_.journal.add({clock_(), 0, 0, std::move(word), std::move(text)});
    }

    PortSet interfaces_of(const PortSet &chip_ports) const {
        PortSet interfaces;
        chip_ports.for_each([&](int port) {
            if (const auto user_port = board_.user_port(port)) {
                interfaces.add(*user_port);
            }
        });
        for (int trunk = 0; trunk < chip::TrunkTable::kTrunks; ++trunk) {
            const chip::Trunk *found = chip_.trunks().find(trunk);
            if (found != nullptr && !(found->ports() & chip_ports).empty()) {
                interfaces.add(VlanRecord::kFirstGroupBit + trunk + 1);
            }
        }
        return interfaces;
    }

    chip::Switch &chip_;
    Board board_;
    Clock clock_;
    ServiceRecords &records_;
};

}  // namespace

std::unique_ptr<ServicesCalls> services(chip::Switch &chip, const Board &board, Clock clock, ServiceRecords &records) {
    return std::make_unique<Services>(chip, board, std::move(clock), records);
}

}  // namespace vdevice::driver
