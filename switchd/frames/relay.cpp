// Reads, asks the frame path, writes.
#include "switchd/frames/relay.h"

#include <utility>
#include <variant>

namespace switchd {

using vdevice::chip::Bytes;

void Relay::from_chip(Time now) {
    cpu_port_.receive([&](uint32_t port, Bytes frame) {
        const FramePath::FromChip decided = path_.from_chip(port, frame, now);
        if (const auto *interface = std::get_if<ToInterface>(&decided)) {
            deliver(port, *interface);
        } else if (const auto *lacp = std::get_if<ToLacp>(&decided)) {
            on_lacp_(lacp->port, lacp->frame);
        }
    });
    for (const PortName &port : std::exchange(unflushed_, {})) {
        if (Interface *interface = interfaces_.find(port)) {
            interface->flush();
        }
    }
}

void Relay::deliver(uint32_t port, const ToInterface &destination) {
    Interface *interface = interfaces_.find(destination.interface);
    if (interface == nullptr || !interface->write(destination.frame)) {
        path_.count_drop(port, Drop::kNotTaken);
        return;
    }
    if (unflushed_.empty() || unflushed_.back() != destination.interface) {
        unflushed_.push_back(destination.interface);
    }
}

void Relay::from_interface(Interface &interface, Time now) {
    const PortName name = interface.port();
    interface.read(interfaces_.room(), [&](Bytes frame) {
        const FramePath::FromKernel decided = path_.from_kernel(name, frame, now);
        const auto *port = std::get_if<ToPort>(&decided);
        if (port != nullptr && !cpu_port_.send(port->intf, port->vid, frame)) {
            path_.count_drop(name.intf, Drop::kNotSent);
        }
    });
    cpu_port_.flush();
}

}  // namespace switchd
