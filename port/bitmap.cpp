// Translation of bitmaps between interface numbers and physical ports.
#include "port/bitmap.h"

#include <adp/port.h>
#include <string.h>

namespace adp {
namespace {

/** Rows whose interface has a place in a set. */
uint32_t rows_in_set() {
    if (intf_to_phy_port == nullptr) {
        return 0;
    }
    return adp_max_phy_port_num < kPortSetBits ? adp_max_phy_port_num + 1 : kPortSetBits;
}

using Translation = int32_t (*)(uint32_t);

// The word is chosen by a division that rounds towards zero, so a translation of -31..-2 lands in word 0 too.
adp_status_t translate_pair(uint32_t *bitmap, Translation translate) {
    uint32_t low = 0;
    uint32_t high = 0;
    for (uint32_t n = 0; n < kBitmapPositions; ++n) {
        if (!has_bit(bitmap, n)) {
            continue;
        }
        const int32_t translated = translate(n);
        const int32_t number = translated == -1 ? static_cast<int32_t>(n) : translated;
        const uint32_t bit = 1u << (static_cast<uint32_t>(number) % kWordBits);
        const int32_t word = number / static_cast<int32_t>(kWordBits);
        if (word == 0) {
            low |= bit;
        } else if (word == 1) {
            high |= bit;
        }
    }
    bitmap[0] = low;
    bitmap[1] = high;
    return ADP_OK;
}

}  // namespace

// Sets are translated in one pass over the map: a look-up for each port would be a pass for each.

adp_port_set_t phy_set_of(const uint32_t *intfs) {
    adp_port_set_t result = {};
    const uint32_t rows = rows_in_set();
    const adp_port_row_t *row = intf_to_phy_port;
    for (uint32_t intf = 0; intf < rows; ++intf, ++row) {
        if (has_bit(intfs, intf)) {
            // A port that is negative as the driver numbers it is a large number here, outside the set.
            set_bit_inside(result.word, row->phy);
        }
    }
    return result;
}

adp_port_set_t intf_set_of(const uint32_t *ports) {
    adp_port_set_t result = {};
    adp_port_set_t untranslated;
    memcpy(untranslated.word, ports, sizeof untranslated.word);
    const uint32_t rows = rows_in_set();
    const adp_port_row_t *row = intf_to_phy_port;
    for (uint32_t intf = 0; intf < rows; ++intf, ++row) {
        const uint32_t port = row->phy;
        if (port < kPortSetBits && has_bit(untranslated.word, port)) {
            // Of several rows with one port the lowest is its interface.
            untranslated.word[port / kWordBits] &= ~(1u << port % kWordBits);
            set_bit(result.word, intf);
        }
    }
    return result;
}

}  // namespace adp

adp_status_t adp_api_xlate_port_pbmp_a2p(uint32_t bitmap[2]) {
    return adp::translate_pair(bitmap, adp_phy_2_intf_id);
}

adp_status_t adp_api_xlate_port_pbmp_p2a(uint32_t bitmap[2]) {
    return adp::translate_pair(bitmap, adp_intf_2_phy_id);
}
