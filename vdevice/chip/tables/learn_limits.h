// Limits on how many addresses are learned: in the whole chip, in a VLAN, behind a port, behind a trunk.
#pragma once

#include <stddef.h>
#include <stdint.h>
#include <array>

#include "vdevice/chip/tables/learn_counts.h"

namespace vdevice::chip {

class LearnLimits {
  public:
    using Limit = uint32_t;
    static constexpr Limit kNoLimit = ~Limit{0};

    LearnLimits() {
        vlans_.fill(kNoLimit);
        ports_.fill(kNoLimit);
        trunks_.fill(kNoLimit);
    }

    Limit &system() { return system_; }
    Limit &of_vlan(Vid vid) { return vlans_[vid]; }
    Limit &of_port(int port) { return ports_[static_cast<size_t>(port)]; }
    Limit &of_trunk(int trunk) { return trunks_[static_cast<size_t>(trunk)]; }
    Limit system() const { return system_; }
    Limit of_vlan(Vid vid) const { return vlans_[vid]; }
    Limit of_port(int port) const { return ports_[static_cast<size_t>(port)]; }
    Limit of_trunk(int trunk) const { return trunks_[static_cast<size_t>(trunk)]; }
    /** Of a trunk's port the trunk's limit. */
    Limit of_place(const Place &place) const { return place.is_trunk() ? of_trunk(place.trunk) : of_port(place.port); }

    /** Whether one more address may be learned there. */
    bool allow_new(const LearnCounts &counts, Vid vid, const Place &place) const {
        return counts.total() < system_ && counts.in_vlan(vid) < of_vlan(vid) && allow_move(counts, place);
    }
    /** Whether an address that was learned elsewhere may move there. */
    bool allow_move(const LearnCounts &counts, const Place &place) const {
        return counts.behind(place) < of_place(place);
    }

  private:
    Limit system_ = kNoLimit;
    std::array<Limit, kMaxVid + 1> vlans_{};
    std::array<Limit, PortSet::kSize> ports_{};
    std::array<Limit, TrunkTable::kTrunks> trunks_{};
};

}  // namespace vdevice::chip
