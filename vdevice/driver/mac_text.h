// MAC addresses as text: six hexadecimal pairs with colons between.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "vdevice/chip/frame/frame.h"

namespace vdevice::driver {

std::string to_text(chip::Mac mac);
/** Nothing unless the whole text is an address. */
std::optional<chip::Mac> parse_mac(std::string_view text);

}  // namespace vdevice::driver
