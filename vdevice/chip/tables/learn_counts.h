// How many dynamic addresses the MAC table holds: in all, in each VLAN, and behind each port and trunk.
#pragma once

#include <stddef.h>
#include <stdint.h>
#include <array>

#include "vdevice/chip/frame/port_set.h"
#include "vdevice/chip/tables/mac_entry.h"
#include "vdevice/chip/tables/trunk_table.h"

namespace vdevice::chip {

class LearnCounts {
  public:
    void count(const MacEntry &entry) { add(entry, 1); }
    void uncount(const MacEntry &entry) { add(entry, ~uint32_t{0}); }

    uint32_t total() const { return total_; }
    uint32_t in_vlan(Vid vid) const { return vlans_[vid]; }
    uint32_t behind(const Place &place) const {
        return place.is_trunk() ? trunks_[index(place.trunk)] : ports_[index(place.port)];
    }

  private:
    static size_t index(int number) { return static_cast<size_t>(number); }

    /** @p change is 1 or, to subtract one, all ones. */
    void add(const MacEntry &entry, uint32_t change) {
        if (entry.is_static) {
            return;
        }
        total_ += change;
        vlans_[entry.vid] += change;
        (entry.place().is_trunk() ? trunks_[index(entry.trunk)] : ports_[index(entry.port)]) += change;
    }

    uint32_t total_ = 0;
    std::array<uint32_t, kMaxVid + 1> vlans_{};
    std::array<uint32_t, PortSet::kSize> ports_{};
    std::array<uint32_t, TrunkTable::kTrunks> trunks_{};
};

}  // namespace vdevice::chip
