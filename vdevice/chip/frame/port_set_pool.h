// The port sets of group addresses: a finite pool with numbers from 1 on, so that 0 can mean "none".
#pragma once

#include <stddef.h>
#include <stdint.h>
#include <array>

#include "vdevice/chip/frame/port_set.h"

namespace vdevice::chip {

class PortSetPool {
  public:
    static constexpr uint32_t kCapacity = 1024;
    static constexpr uint32_t kNone = 0;

    /** Takes the lowest free number, or kNone. */
    uint32_t take(const PortSet &ports) {
        for (uint32_t number = 1; number <= kCapacity; ++number) {
            Row &row = rows_[number - 1];
            if (!row.is_taken) {
                row = {true, ports};
                ++size_;
                return number;
            }
        }
        return kNone;
    }

    void give_back(uint32_t number) {
        rows_[number - 1] = {};
        --size_;
    }

    const PortSet &get(uint32_t number) const { return rows_[number - 1].ports; }
    void set(uint32_t number, const PortSet &ports) { rows_[number - 1].ports = ports; }
    size_t size() const { return size_; }
    bool is_full() const { return size_ == kCapacity; }

  private:
    struct Row {
        bool is_taken = false;
        PortSet ports;
    };

    std::array<Row, kCapacity> rows_;
    size_t size_ = 0;
};

}  // namespace vdevice::chip
