// The addresses of stations: how they enter the table, from frames and from software, and the limits on learning them.
#include "vdevice/chip/switch.h"

namespace vdevice::chip {

Status Switch::add_static_mac(Mac mac, uint32_t vid, int port) {
    MacEntry entry;
    entry.mac = mac;
    entry.port = port;
    entry.is_static = true;
    return add_mac(entry, vid);
}

Status Switch::add_mac(MacEntry entry, uint32_t vid) {
    if (entry.is_given_to_trunk) {
        if (trunks_.find(entry.trunk) == nullptr) {
            return TrunkTable::is_trunk(entry.trunk) ? Status::kTrunkMissing : Status::kTrunkRange;
        }
    } else if (!has_port(entry.port)) {
        return Status::kNoPort;
    } else {
        entry.trunk = trunk_of(entry.port);
    }
    const Status status = vlans_.check(vid);
    if (status != Status::kOk) {
        return status;
    }
    entry.vid = static_cast<Vid>(vid);
    return macs_.add(entry);
}

/** Learns the frame's source, if the port learns. False if the frame is dropped for its source. */
bool Switch::take_source(Time now, const Flow &flow) {
    const Mac source = flow.header.source;
    if (source.is_group()) {
        return true;
    }
    const MacEntry *known = macs_.find(source, flow.vid);
    if (known != nullptr && known->drops_from) {
        drop(flow.ingress, Drop::kFiltered);
        return false;
    }
    if (!at(flow.ingress).learning.learns) {
        return true;
    }
    const Place place = place_of(flow.ingress);
    if (known != nullptr && macs_.refresh(*known, place, now)) {
        return true;
    }
    // The device's own software must not be shut out by what its ports have learned.
    if (flow.ingress != kCpuPort && !may_learn(known, flow.vid, place)) {
        at(flow.ingress).violations.remember(source, flow.vid);
        drop(flow.ingress, Drop::kLearnLimit);
        return false;
    }
    macs_.learn(source, flow.vid, flow.ingress, now, place.trunk);
    return true;
}

bool Switch::may_learn(const MacEntry *known, Vid vid, const Place &place) const {
    if (known == nullptr) {
        return limits_.allow_new(macs_.counts(), vid, place);
    }
    return known->is_static || known->place() == place || limits_.allow_move(macs_.counts(), place);
}

}  // namespace vdevice::chip
