// Translation of bitmaps between interface numbers and physical ports.
#include "port/bitmap.h"

#include <adp/port.h>

namespace adp {
namespace {

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

// One pass over the map: a look-up for each port would be a pass for each.
adp_port_set_t translated_set(const uint32_t *from, Direction direction) {
    adp_port_set_t result = {};
    adp_port_set_t translated = {};
    for (uint32_t row = 0; intf_to_phy_port != nullptr && row < kPortSetBits && row <= adp_max_phy_port_num; ++row) {
        const uint32_t port = intf_to_phy_port[row].phy;
        const uint32_t number = direction == Direction::kToPhy ? row : port;
        const uint32_t other = direction == Direction::kToPhy ? port : row;
        if (number < kPortSetBits && has_bit(from, number) && !has_bit(translated.word, number)) {
            set_bit(translated.word, number);
            set_bit_inside(result.word, other);
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
