// The library's 802.1X calls, each with a sentence for its failure.
#pragma once

#include <stdint.h>
#include <optional>
#include <string>

#include "switchd/kernel/kernel_state.h"

namespace switchd::dot1x_calls {

// These give nothing on success, and otherwise what the switch refuses.
std::optional<std::string> open_port(uint32_t intf);
/** Learned addresses are forgotten. */
std::optional<std::string> close_port(uint32_t intf);
std::optional<std::string> add_entry(uint32_t intf, uint16_t vid, const Mac &station);
std::optional<std::string> remove_entry(uint32_t intf, uint16_t vid, const Mac &station);

}  // namespace switchd::dot1x_calls
