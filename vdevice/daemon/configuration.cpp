// Settings of both sources put together, and settings made on a device.
#include "vdevice/daemon/configuration.h"

#include <adp/status.h>

#include <algorithm>
#include <iterator>

#include "text/printable.h"
#include "vdevice/io/error.h"
#include "vdevice/io/receive_ring.h"

namespace vdevice {
namespace {

constexpr char kLongestPort[] = "31";

}  // namespace

driver::Board Settings::board() const {
    driver::Board board;
    board.user_ports = user_ports.value_or(board.user_ports);
    board.first_port = first_port.value_or(board.first_port);
    return board;
}

void Settings::check() const {
    using io::ReceiveRing;
    if (!board().is_possible()) {
        throw io::Error{driver::kImpossibleBoard};
    }
    if (port_interfaces && (port_interfaces->empty() || !is_interface_name(*port_interfaces + kLongestPort))) {
        throw io::Error{"port-interfaces must be 1 to 13 letters without blanks, '/' and ':'."};
    }
    if (ring_slots && !ReceiveRing::may_have(*ring_slots)) {
        throw io::Error{"cannot make such rings: the number of slots must be a multiple of " +
                        std::to_string(ReceiveRing::kSlotsInBlock) + " from " +
                        std::to_string(ReceiveRing::kSlotsInBlock) + " to " + std::to_string(ReceiveRing::kMostSlots) +
                        "."};
    }
}

Settings Settings::or_else(const Settings &other) const {
    const auto either = [](const auto &one, const auto &another) { return one ? one : another; };
    return {either(run_dir, other.run_dir),
            either(create_interfaces, other.create_interfaces),
            either(user_ports, other.user_ports),
            either(first_port, other.first_port),
            either(port_interfaces, other.port_interfaces),
            either(ring_slots, other.ring_slots),
            either(line_rate, other.line_rate),
            either(log_level, other.log_level)};
}

bool is_interface_name(const std::string &name) {
    constexpr size_t kMaxName = 15;
    return !name.empty() && name.size() <= kMaxName && name.find_first_of("/: \t\n") == std::string::npos &&
           text::on_one_line(name) == name;
}

std::vector<std::string> apply(const Configuration &configuration, DriverCalls &calls) {
    std::vector<std::string> refusals;
    for (const Step &step : configuration.steps) {
        if (const int32_t result = step.call(calls); result != 0) {
            const adp_status_entry_t *why = adp_status_find(result);
            refusals.push_back(step.place + ": the device refuses " + step.what + ": " + adp_status_text(result) +
                               " (" + (why == nullptr ? std::to_string(result) : why->name) + ").");
        }
    }
    return refusals;
}

std::vector<std::string> apply_changes(const Configuration &earlier, const Configuration &configuration,
                                       DriverCalls &calls) {
    std::vector<uint32_t> gone;
    std::set_difference(earlier.vids.begin(), earlier.vids.end(), configuration.vids.begin(), configuration.vids.end(),
                        std::back_inserter(gone));
    for (const uint32_t vid : gone) {
        calls.user_vlan_destroy(0, 0, vid);  // the default VLAN stays, and so does one that is gone already
    }
    return apply(configuration, calls);
}

}  // namespace vdevice
