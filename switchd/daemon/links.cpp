// The library takes no locks, so the link scan's thread only writes each change into a pipe.
#include "switchd/daemon/links.h"

#include <adp/adp.h>
#include <fcntl.h>
#include <sys/epoll.h>

#include <utility>

#include "vdevice/io/error.h"
#include "vdevice/remote/vdev_linkscan.h"

// A board registers linkscan_handle_cb() with its driver itself, or not: then the links are asked for.
#pragma weak vdev_linkscan_register

namespace switchd {
namespace {

/** Shorter than PIPE_BUF, so written whole. */
struct LinkChange {
    uint32_t physical_port;
    uint32_t status;
};

int writing_end = -1;

int32_t on_link_scan(uint32_t, uint32_t port, uint32_t status) {
    const LinkChange change{port, status};
    return write(writing_end, &change, sizeof change) == static_cast<ssize_t>(sizeof change) ? 0 : -1;
}

}  // namespace

Links::Links(vdevice::io::EventLoop &loop, uint32_t user_ports, Handler handler)
    : handler_{std::move(handler)}, up_(user_ports + 1) {
    int ends[2];
    if (pipe2(ends, O_CLOEXEC) != 0 || fcntl(ends[0], F_SETFL, O_NONBLOCK) != 0) {
        throw vdevice::io::error_from_errno("make a pipe");
    }
    changes_.reset(ends[0]);
    writing_end = ends[1];
    loop.add(changes_.get(), EPOLLIN, [this](uint32_t) { take_changes(); });
    adp_linkscan_register(on_link_scan);
    if (&vdev_linkscan_register == nullptr) {
        clock_ = loop.every_second([this] { read_all(); });
    } else if (vdev_linkscan_register(linkscan_handle_cb) != 0) {
        throw vdevice::io::Error{"cannot register with the driver's link scan."};
    }
    read_all();
}

Links::~Links() {
    if (&vdev_linkscan_register != nullptr) {
        vdev_linkscan_register(nullptr);
    }
    adp_linkscan_register(nullptr);
    close(std::exchange(writing_end, -1));
}

void Links::read_all() {
    for (uint32_t port = 1; port < up_.size(); ++port) {
        uint32_t link = 0;
        if (adp_get_phy_port_attr(port, ADP_ATTR_LINK, &link) == ADP_OK) {
            set(port, link != 0);
        }
    }
}

void Links::take_changes() {
    LinkChange change{};
    while (read(changes_.get(), &change, sizeof change) == static_cast<ssize_t>(sizeof change)) {
        const int32_t port = adp_phy_2_intf_id(change.physical_port);
        if (port >= 1 && static_cast<size_t>(port) < up_.size()) {
            set(static_cast<uint32_t>(port), change.status == 1);
        }
    }
}

void Links::set(uint32_t port, bool is_up) {
    if (up_[port] == is_up) {
        return;
    }
    up_[port] = is_up;
    adp_set_port_last_change(port);
    handler_(port, is_up);
}

}  // namespace switchd
