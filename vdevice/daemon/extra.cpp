// Link changes are sent to the clients that watch; messages of the event queue are taken on request.
#include "vdevice/daemon/extra.h"

#include <vector>

#include "vdevice/remote/vdev_linkscan.h"

namespace vdevice {
namespace {

using remote::Extra;

uint32_t fault_of(const chip::Port &port) {
    if (port.is_up()) {
        return VDEV_FAULT_NONE;
    }
    if (!port.enabled) {
        return VDEV_FAULT_DISABLED;
    }
    return port.cable ? VDEV_FAULT_NO_SIGNAL : VDEV_FAULT_NO_CABLE;
}

remote::Server::LinkChange link_of(const Device &device, int chip_port) {
    const chip::Port &port = device.chip().port(chip_port);
    remote::Server::LinkChange words{};
    words[remote::kLinkChangePort] = static_cast<uint32_t>(chip_port);
    words[remote::kLinkChangeInfo + VDEV_LINKSCAN_SPEED] = port.phy.speed();
    words[remote::kLinkChangeInfo + VDEV_LINKSCAN_DUPLEX] = port.phy.full_duplex() ? 1 : 0;
    words[remote::kLinkChangeInfo + VDEV_LINKSCAN_FAULT] = fault_of(port);
    words[remote::kLinkChangeInfo + VDEV_LINKSCAN_LINK] = port.is_up() ? 1 : 0;
    return words;
}

std::vector<remote::Server::LinkChange> links_of(const Device &device) {
    std::vector<remote::Server::LinkChange> links(chip::Switch::kPorts);
    for (int port = 0; port < chip::Switch::kPorts; ++port) {
        links[static_cast<size_t>(port)] = link_of(device, port);
    }
    return links;
}

int32_t take_event(driver::EventQueue &events, std::span<const uint32_t> words, std::vector<uint32_t> &answer) {
    const auto event = words.empty() ? std::nullopt : events.take(words.front());
    if (!event) {
        return 0;
    }
    answer.assign(event->words.begin(), event->words.end());
    answer.insert(answer.end(), event->record.begin(), event->record.end());
    return 1;
}

}  // namespace

void serve_extra(remote::Server &server, Device &device) {
    device.set_link_listener([&](int port) { server.publish_link_change(link_of(device, port)); });
    server.set_link_states([&] { return links_of(device); });
    server.set_extra_handler([&](Extra, std::span<const uint32_t> words, std::vector<uint32_t> &answer) {
        return take_event(device.events(), words, answer);
    });
}

}  // namespace vdevice
