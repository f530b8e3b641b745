// MAC addresses as people write them.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "switchd/kernel/kernel_state.h"

namespace switchd {

/** "02:00:00:00:00:01"; nothing for any other text. */
std::optional<Mac> mac_of_text(std::string_view text);
std::string text_of_mac(const Mac &mac);

/** Whether one interface may have the address: it is not 0, and no group's. */
bool is_station_address(const Mac &mac);

}  // namespace switchd
