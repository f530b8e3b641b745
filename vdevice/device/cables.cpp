// Frames on bad cables, between the wires' interfaces and the chip.
#include <algorithm>

#include "vdevice/device/device.h"

namespace vdevice {

void Device::set_conditions(int user_port, const cable::Conditions &conditions) {
    Wire &wire = *wires_[static_cast<size_t>(*board().chip_port(user_port))];
    send_together([&] {
        if (wire.bad != nullptr) {
            deliver(wire, chip::Time::max());
        }
        wire.bad = conditions.is_none() ? nullptr : std::make_unique<cable::BadCable>(conditions, user_port);
    });
}

cable::Conditions Device::conditions(int user_port) const {
    const auto &bad = wire(*board().chip_port(user_port))->bad;
    return bad != nullptr ? bad->conditions : cable::Conditions{};
}

// A frame that is read after the link went was on the wire before: the chip counts it as it would without the cable.
void Device::receive_by_bad(Wire &wire, chip::Time received, io::WallTime wall_now) {
    const bool link = chip_.port(wire.chip_port).link;
    wire.socket.receive(batch_, [&](chip::Bytes frame, io::WallTime arrival) {
        const chip::Time at = wire.in_order(received - (wall_now - arrival), received);
        if (link) {
            wire.bad->in.take({{}, frame}, at);
        } else {
            chip_.receive(at, wire.chip_port, frame);
        }
    });
    deliver(wire, received);
}

void Device::send_by_bad(Wire &wire, const chip::Frame &frame) {
    const chip::Time sent = now();
    wire.bad->out.take(frame, sent);
    deliver_out(wire, sent);
}

/** What is due until then passes; the chip is told when a frame was due, as far as that is not still to come. */
void Device::deliver(Wire &wire, chip::Time until) {
    const chip::Time latest = std::min(until, now());
    wire.bad->in.deliver(
        until, [&](chip::Bytes frame, chip::Time due) { chip_.receive(std::min(due, latest), wire.chip_port, frame); });
    deliver_out(wire, until);
}

void Device::deliver_out(Wire &wire, chip::Time until) {
    wire.bad->out.deliver(until, [&](chip::Bytes frame, chip::Time) { send(wire, {{}, frame}); });
    departure_changed();
}

std::optional<chip::Time> Device::next_departure() const {
    std::optional<chip::Time> next = chip_.next_departure();
    for (const auto &wire : wires_) {
        const auto due = wire != nullptr && wire->bad != nullptr ? wire->bad->next() : std::nullopt;
        next = next && due ? std::min(next, due) : (next ? next : due);
    }
    return next;
}

}  // namespace vdevice
