// Protocol frames that are handed to the CPU instead of being switched. Each protocol has a switch of its own.
#pragma once

#include <stdint.h>

#include "vdevice/chip/frame/frame.h"

namespace vdevice::chip {

struct Traps {
    bool lacp = false;     /**< Link Aggregation Control Protocol, IEEE 802.1AX */
    bool oam = false;      /**< operation, administration and maintenance, IEEE 802.3 clause 57 */
    bool lldp = false;     /**< Link Layer Discovery Protocol, IEEE 802.1AB */
    bool bpdu = false;     /**< the spanning tree's bridge protocol data units, IEEE 802.1D */
    uint32_t self_mac = 0; /**< frames to the device's own address: kept, but without effect */
};

bool is_trapped(const Traps &traps, const Header &header);

}  // namespace vdevice::chip
