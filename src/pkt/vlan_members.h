// The members of a VLAN, from the device's VLAN service.
#pragma once

#include "core/bitmap.h"
#include "core/number.h"

namespace adp {

/** Member bitmap of a VLAN: bit i for user port i, bit 26 + g for aggregation interface g. */
class VlanMembers {
  public:
    /** Reads them; false if the service fails. The id is passed on uncut. */
    bool fetch(uint32_t vid);

    bool has(Intf intf) const {
        const uint32_t bit = combined_index(intf);
        return bit < kWords * kWordBits && has_bit(words_, bit);
    }

  private:
    static constexpr uint32_t kWords = 2;

    uint32_t words_[kWords] = {};
};

}  // namespace adp
