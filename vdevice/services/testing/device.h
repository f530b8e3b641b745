// For tests: a device that answers a few calls and keeps what it was told.
#pragma once

#include <stdint.h>
#include <cstring>
#include <functional>
#include <iterator>
#include <memory>
#include <string>
#include <vector>

#include "generated/driver_calls.h"

namespace vdevice::services {

class Device : public DriverCalls {
  public:
    static constexpr uint32_t kVid = 100; /**< the one VLAN */

    Device() {
        sections_.vlans = std::make_unique<Vlans>();
        sections_.ports = std::make_unique<Ports>(*this);
        sections_.services = std::make_unique<Services>(*this);
    }

    std::function<void(int32_t port, uint32_t link)> link_changed;

    std::string logged;
    std::vector<int32_t> event;

  private:
    struct Vlans : VlansCalls {
        chip::Status user_vlan_port_get(uint32_t vid, uint32_t *members, uint32_t *untagged) override {
            if (vid != kVid) {
                return chip::Status::kVlanMissing;
            }
            members[0] = 1u << 4;
            members[7] = 1u << 31;
            untagged[1] = 2;
            return chip::Status::kOk;
        }
    };

    struct Ports : PortsCalls {
        explicit Ports(Device &owner) : device{owner} {}
        chip::Status user_port_enable_set(int32_t port, uint32_t enable) override {
            device.link_changed(port, enable);
            return chip::Status::kOk;
        }
        Device &device;
    };

    struct Services : ServicesCalls {
        explicit Services(Device &owner) : device{owner} {}
        int32_t get_vlan_info(uint32_t vid, uint8_t *record) override {
            const uint32_t words[] = {vid, 0, 1, 0x80000002};
            std::memcpy(record, words, sizeof words);
            return 0;
        }
        int32_t log_line(int32_t, int32_t, const char *word, const char *text) override {
            device.logged = std::string(word) + ": " + text;
            return 0;
        }
        int32_t equeue_send_ucast(uintptr_t queue, const uintptr_t *message, int32_t timeout) override {
            device.event = {static_cast<int32_t>(queue), static_cast<int32_t>(message[0]), timeout};
            uint16_t record[4];
            std::memcpy(record, reinterpret_cast<const void *>(message[7]), sizeof record);
            device.event.insert(device.event.end(), std::begin(record), std::end(record));
            return 1;
        }
        int32_t sys_trace_get() override { return 1; }
        Device &device;
    };
};

}  // namespace vdevice::services
