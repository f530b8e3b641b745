// Ports, VLANs and queues as the driver sets them, and the frames that come and go.
#include "vdevice/chip/switch.h"

namespace vdevice::chip {

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
    if (queues().port(port).has_line()) {
        update_line_speed(port);
    }
    if (at(port).is_up() != was_up) {
        update_up_set(port);
    } else {
        pipeline_.egress().flush_unsent(port);
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
    const Status status = tables_.vlans.check(vid);
    if (status == Status::kOk) {
        at(port).pvid = static_cast<Vid>(vid);
    }
    return status;
}

Status Switch::destroy_vlans(VidRange range) {
    const Status status = tables_.vlans.destroy(range);
    if (status == Status::kOk) {
        tables_.macs.remove_if(
            [&](const MacEntry &entry) { return entry.vid >= range.first && entry.vid <= range.last; });
    }
    return status;
}

Status Switch::set_miss_action(int port, MissAction action) {
    if (!has_port(port)) {
        return Status::kNoPort;
    }
    tables_.fields.set_miss_action(port, action);
    return Status::kOk;
}

void Switch::update_up_set(int port) {
    tables_.up.put(port, at(port).is_up());
    pipeline_.egress().flush_unsent(port);
    sink_.port_changed(port);
}

void Switch::receive(Time now, int port, Bytes frame) {
    if (has_port(port)) {
        pipeline_.receive(now, port, frame);
    }
}

void Switch::depart(Time now) {
    pipeline_.depart(now);
}

std::optional<Time> Switch::next_departure() const {
    const auto &next = queues().next();
    return next ? std::optional{next->time} : std::nullopt;
}

void Switch::clear_counts(int port) {
    Port &state = at(port);
    state.counters = {};
    state.policer.clear_counts();
    for (PortStorm::Kind &kind : state.storm.kinds()) {
        kind.limiter.clear_counts();
    }
    tables_.queues.clear_counters(port);
}

void Switch::clear_table_counts() {
    tables_.macs.clear_counters();
    tables_.fields.clear_counts();
}

Status Switch::set_shaper(Time now, int port, const RateLimit &limit) {
    if (!has_port(port)) {
        return Status::kNoPort;
    }
    pipeline_.depart(now);
    const Status status = tables_.queues.set_shaper(now, port, limit);
    pipeline_.egress().announce_departure();
    return status;
}

Status Switch::set_scheduler(Time now, int port, const SchedulerSettings &settings) {
    if (!has_port(port)) {
        return Status::kNoPort;
    }
    pipeline_.depart(now);
    const Status status = tables_.queues.set_scheduler(now, port, settings);
    pipeline_.egress().announce_departure();
    return status;
}

void Switch::keep_to_speeds() {
    (all_ports() - PortSet::of(kCpuPort)).for_each([&](int port) { update_line_speed(port); });
}

void Switch::set_storm_counting(StormType type, Counting counting, Time now) {
    for (Port &port : tables_.ports) {
        port.storm.of(type).limiter.set_counting(counting, now);
    }
}

Counting Switch::storm_counting(StormType type) const {
    return tables_.ports.front().storm.of(type).limiter.counting();
}

}  // namespace vdevice::chip
