// A walk over the chip's table of addresses, an entry a call.
#pragma once

#include <adp/mac.h>
#include <stdint.h>

#include "switchd/mirror/switch_state.h"

namespace switchd {

class TableWalk {
  public:
    enum class Step : uint8_t {
        kEntry,
        kEnd,   /**< the next step begins anew */
        kFailed /**< the driver has not answered; the next step begins anew */
    };

    /** Gives the next entry. */
    Step next(adp_l2_entry_t &entry);

  private:
    uint32_t index_ = 0;
};

Mac mac_of(const adp_l2_entry_t &entry);
inline bool is_group(const adp_l2_entry_t &entry) {
    return (entry.mac[0] & 1) != 0;
}
/** The interface that a station is behind; no type's number for a port of the chip that is not wired. */
uint32_t intf_of(const adp_l2_entry_t &entry);
/** The ports of a multicast entry. */
IntfSet ports_of(const adp_l2_entry_t &entry, uint32_t user_ports);

}  // namespace switchd
