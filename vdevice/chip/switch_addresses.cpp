// The addresses of stations and groups that software enters into the table.
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
        if (tables_.trunks.find(entry.trunk) == nullptr) {
            return TrunkTable::is_trunk(entry.trunk) ? Status::kTrunkMissing : Status::kTrunkRange;
        }
    } else if (!has_port(entry.port)) {
        return Status::kNoPort;
    } else {
        entry.trunk = trunk_of(entry.port);
    }
    const Status status = tables_.vlans.check(vid);
    if (status != Status::kOk) {
        return status;
    }
    entry.vid = static_cast<Vid>(vid);
    return tables_.macs.add(entry);
}

Status Switch::add_group(Mac mac, uint32_t vid, const PortSet &ports) {
    if (!ports.is_within(all_ports())) {
        return Status::kNoPort;
    }
    const Status status = tables_.vlans.check(vid);
    return status != Status::kOk ? status : tables_.macs.add_group(mac, static_cast<Vid>(vid), ports);
}

Status Switch::remove_group(Mac mac, uint32_t vid) {
    return is_vid(vid) ? tables_.macs.remove_group(mac, static_cast<Vid>(vid)) : Status::kVlanRange;
}

const MacEntry *Switch::find_group(Mac mac, uint32_t vid) const {
    return mac.is_group() && is_vid(vid) ? tables_.macs.find(mac, static_cast<Vid>(vid)) : nullptr;
}

Status Switch::add_group_ports(Mac mac, uint32_t vid, const PortSet &ports) {
    const MacEntry *group = find_group(mac, vid);
    return group == nullptr ? Status::kGroupMissing : add_group(mac, vid, tables_.macs.ports_of(*group) | ports);
}

Status Switch::remove_group_ports(Mac mac, uint32_t vid, const PortSet &ports) {
    const MacEntry *group = find_group(mac, vid);
    return group == nullptr ? Status::kGroupMissing : add_group(mac, vid, tables_.macs.ports_of(*group) - ports);
}

}  // namespace vdevice::chip
