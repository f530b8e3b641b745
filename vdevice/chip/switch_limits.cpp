// Limits on what ports let in: the ingress policers and storm control.
#include "vdevice/chip/switch.h"

namespace vdevice::chip {
namespace {

/** On the wire, without preamble and gap. */
size_t octets_of(const Header &header) {
    const size_t tag = header.tagged ? kVlanTagBytes : 0;
    return kAddressBytes + tag + header.payload.size() + kCheckSequenceBytes;
}

/** Nothing for a frame to a station that is known. */
std::optional<StormType> storm_type(Mac destination, const MacEntry *entry) {
    if (destination.is_broadcast()) {
        return StormType::kBroadcast;
    }
    if (destination.is_group()) {
        return StormType::kMulticast;
    }
    return entry == nullptr ? std::optional{StormType::kUnknownUnicast} : std::nullopt;
}

}  // namespace

void Switch::set_storm_counting(StormType type, Counting counting, Time now) {
    for (Port &port : ports_) {
        port.storm.of(type).limiter.set_counting(counting, now);
    }
}

Counting Switch::storm_counting(StormType type) const {
    return ports_.front().storm.of(type).limiter.counting();
}

bool Switch::passes_policer(Time now, int port, size_t octets) {
    if (at(port).policer.charge(octets + kCheckSequenceBytes, now)) {
        return true;
    }
    drop(port, Drop::kPoliced);
    return false;
}

bool Switch::passes_storm_control(Time now, const Flow &flow, const MacEntry *entry) {
    const std::optional<StormType> type = storm_type(flow.header.destination, entry);
    if (!type || at(flow.ingress).storm.admit(*type, octets_of(flow.header), now)) {
        return true;
    }
    drop(flow.ingress, Drop::kStorm);
    return false;
}

}  // namespace vdevice::chip
