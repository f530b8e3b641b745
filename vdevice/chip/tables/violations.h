// The addresses that a port has not learned because of a limit. Each is remembered once, up to a bound, since a host
// may make up any number of them.
#pragma once

#include <stddef.h>
#include <stdint.h>
#include <set>
#include <utility>

#include "vdevice/chip/frame/frame.h"

namespace vdevice::chip {

class Violations {
  public:
    static constexpr size_t kMaxRemembered = 1024;

    void remember(Mac mac, Vid vid) {
        if (addresses_.size() < kMaxRemembered) {
            addresses_.emplace(vid, mac);
        }
    }

    void forget() { addresses_.clear(); }
    uint32_t count() const { return static_cast<uint32_t>(addresses_.size()); }
    /** Ordered by VLAN and address. */
    const std::set<std::pair<Vid, Mac>> &addresses() const { return addresses_; }

  private:
    std::set<std::pair<Vid, Mac>> addresses_;
};

}  // namespace vdevice::chip
