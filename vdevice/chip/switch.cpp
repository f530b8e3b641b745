// The chip's settings; the way of a frame is in pipeline.cpp.
#include "vdevice/chip/switch.h"

namespace vdevice::chip {
namespace {

/** VLAN 1 at power-on: every port is a member, and every port but the CPU's gets its frames untagged. */
Vlan power_on_vlan() {
    Vlan vlan{Switch::all_ports(), Switch::all_ports()};
    vlan.untagged.remove(Switch::kCpuPort);
    return vlan;
}

}  // namespace

Switch::Switch(Sink &sink) : sink_{sink}, vlans_{all_ports(), power_on_vlan()} {
    for (Port &port : ports_) {
        port.egress = all_ports();
    }
    refresh_trunks();
}

Status Switch::set_enabled(int port, bool enabled) {
    if (!has_port(port)) {
        return Status::kNoPort;
    }
    if (at(port).enabled != enabled) {
        at(port).enabled = enabled;
        update_up_set(port);
    }
    return Status::kOk;
}

Status Switch::set_link(int port, bool link) {
    if (!has_port(port)) {
        return Status::kNoPort;
    }
    if (at(port).link != link) {
        at(port).link = link;
        update_up_set(port);
    }
    return Status::kOk;
}

Status Switch::change_port(int port, const std::function<Status(Port &)> &change) {
    if (!has_port(port)) {
        return Status::kNoPort;
    }
    const bool was_up = at(port).is_up();
    const Status status = change(at(port));
    if (at(port).is_up() != was_up) {
        update_up_set(port);
    } else {
        flush_unsent(port);
    }
    return status;
}

Status Switch::set_egress(int port, const PortSet &ports) {
    if (!has_port(port) || !ports.is_within(all_ports())) {
        return Status::kNoPort;
    }
    at(port).egress = ports;
    return Status::kOk;
}

Status Switch::set_pvid(int port, uint32_t vid) {
    if (!has_port(port)) {
        return Status::kNoPort;
    }
    const Status status = vlans_.check(vid);
    if (status == Status::kOk) {
        at(port).pvid = static_cast<Vid>(vid);
    }
    return status;
}

Status Switch::destroy_vlans(VidRange range) {
    const Status status = vlans_.destroy(range);
    if (status == Status::kOk) {
        macs_.remove_if([&](const MacEntry &entry) { return entry.vid >= range.first && entry.vid <= range.last; });
    }
    return status;
}

Status Switch::set_miss_action(int port, MissAction action) {
    if (!has_port(port)) {
        return Status::kNoPort;
    }
    fields_.set_miss_action(port, action);
    return Status::kOk;
}

void Switch::update_up_set(int port) {
    if (at(port).is_up()) {
        up_.add(port);
    } else {
        up_.remove(port);
    }
    flush_unsent(port);
    sink_.port_changed(port);
}

}  // namespace vdevice::chip
