// Modes and results of the library.
#include "switchd/daemon/dot1x_calls.h"

#include <adp/dot1x.h>
#include <adp/mac.h>
#include <adp/status.h>

#include "switchd/daemon/mac_text.h"
#include "switchd/ports/port_name.h"

namespace switchd::dot1x_calls {
namespace {

std::optional<std::string> refusal(adp_status_t status, const std::string &what) {
    if (status == ADP_OK) {
        return std::nullopt;
    }
    return "the switch refuses to " + what + ": " + adp_status_text(status) + " (" + std::to_string(status) + ").";
}

/** Adding an entry again would take it away for a moment. */
bool has_entry(uint32_t intf, uint16_t vid, const Mac &station) {
    adp_intf_t found = 0;
    uint32_t flags = 0;
    return adp_get_intf_flags_by_addr(station.data(), vid, &found, &flags) == ADP_OK && found == intf &&
           (flags & ADP_MAC_FLAG_STATIC) != 0;
}

}  // namespace

std::optional<std::string> open_port(uint32_t intf) {
    return refusal(adp_set_port_dot1x_authorized_state(static_cast<int32_t>(intf), 1, 0), "open " + name_of({intf, 0}));
}

// Blocked rather than unauthorized: in that mode frames of unknown sources go to the CPU, where each program would have
// to look at the port's mode.
std::optional<std::string> close_port(uint32_t intf) {
    return refusal(adp_set_port_dot1x_mode(static_cast<int32_t>(intf), ADP_DOT1X_BLOCKED, 0, 0),
                   "close " + name_of({intf, 0}));
}

std::optional<std::string> add_entry(uint32_t intf, uint16_t vid, const Mac &station) {
    if (has_entry(intf, vid, station)) {
        return std::nullopt;
    }
    return refusal(adp_set_mac_dot1x_authorized_state(intf, vid, station.data(), 1),
                   "let " + text_of_mac(station) + " in on " + name_of({intf, 0}));
}

std::optional<std::string> remove_entry(uint32_t intf, uint16_t vid, const Mac &station) {
    return refusal(adp_set_mac_dot1x_authorized_state(intf, vid, station.data(), 0),
                   "shut " + text_of_mac(station) + " out on " + name_of({intf, 0}));
}

}  // namespace switchd::dot1x_calls
