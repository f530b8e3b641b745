// A port of the chip and the network interface that is its cable.
#pragma once

#include <algorithm>
#include <memory>
#include <string>
#include <utility>

#include "vdevice/cable/bad_cable.h"
#include "vdevice/chip/frame/time.h"
#include "vdevice/io/packet_port.h"

namespace vdevice {

struct Wire {
    Wire(int port, std::string interface_name, size_t ring_slots)
        : chip_port{port}, socket{std::move(interface_name), ring_slots} {}

    /** When a frame came in: not before the one ahead of it nor after now, although the wall's clock may have been set.
     */
    chip::Time in_order(chip::Time arrival, chip::Time now) {
        return last_arrival = std::clamp(arrival, last_arrival, now);
    }

    int chip_port;
    std::unique_ptr<cable::BadCable> bad; /**< null while the cable is a good one */
    io::PacketPort socket;
    chip::Time last_arrival{};
    bool pulled = false; /**< the cable is out, until it is plugged again */
    std::string problem; /**< why its interface could not be opened; that is tried again each second */
    bool raised = false; /**< the interface is up, so the host has a carrier */
};

}  // namespace vdevice
