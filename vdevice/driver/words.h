// Arguments that the library hands through as words. They are numbers of 32 bits, however wide a word is.
#pragma once

#include <stdint.h>

#include "platform/netlink_api.h"

namespace vdevice::driver {

inline uint32_t number(adp_word_t word) {
    return static_cast<uint32_t>(word);
}

/** Negative numbers are no ports, also when they travelled as a word. */
inline int32_t port_number(adp_word_t word) {
    return static_cast<int32_t>(number(word));
}

}  // namespace vdevice::driver
