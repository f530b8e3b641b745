// A port of the chip and the network interface that is its cable.
#pragma once

#include <string>
#include <utility>

#include "vdevice/chip/frame/time.h"
#include "vdevice/io/packet_port.h"

namespace vdevice {

struct Wire {
    Wire(int port, std::string interface_name, size_t ring_slots)
        : chip_port{port}, socket{std::move(interface_name), ring_slots} {}

    int chip_port;
    io::PacketPort socket;
    chip::Time last_arrival{}; /**< of a frame; the chip sees a port's frames in the order of time */
    bool pulled = false;       /**< the cable is out, until it is plugged again */
    std::string problem;       /**< why its interface could not be opened; that is tried again each second */
    bool raised = false;       /**< the interface is up, so the host has a carrier */
};

}  // namespace vdevice
