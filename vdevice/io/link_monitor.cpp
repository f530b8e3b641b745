// Reads link messages of rtnetlink.
#include "vdevice/io/link_monitor.h"

#include <linux/netlink.h>
#include <linux/rtnetlink.h>
#include <net/if.h>
#include <sys/socket.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <span>
#include <utility>

#include "vdevice/io/error.h"

// <net/if.h> and <linux/if.h> cannot be included together, and only the latter names this flag.
#ifndef IFF_LOWER_UP
#define IFF_LOWER_UP 0x10000
#endif

namespace vdevice::io {
namespace {

constexpr size_t kBufferBytes = 65536;
/** Read in one turn of the loop, so that a flood of reports does not keep frames waiting. */
constexpr int kReportsAtOnce = 256;
constexpr int kNetlinkBufferBytes = 1024 * 1024;

using Message = std::span<const char>;

// Netlink messages are sequences of headers and attributes, each padded to four bytes. They are copied out, so the
// buffer needs no alignment.
constexpr size_t kAlignment = 4;

constexpr size_t aligned(size_t length) {
    return (length + kAlignment - 1) / kAlignment * kAlignment;
}

template <typename Header>
bool read_header(Message bytes, Header &header) {
    if (bytes.size() < sizeof(header)) {
        return false;
    }
    std::memcpy(&header, bytes.data(), sizeof(header));
    return true;
}

/** The bytes after the first @p length and their padding. */
Message behind(Message bytes, size_t length) {
    return bytes.subspan(std::min(aligned(length), bytes.size()));
}

std::string find_name(Message attributes) {
    rtattr attribute{};
    while (read_header(attributes, attribute)) {
        if (attribute.rta_len < sizeof(attribute) || attribute.rta_len > attributes.size()) {
            break;
        }
        if (attribute.rta_type == IFLA_IFNAME) {
            const Message text = attributes.first(attribute.rta_len).subspan(sizeof(attribute));
            return std::string(text.begin(), std::find(text.begin(), text.end(), '\0'));
        }
        attributes = behind(attributes, attribute.rta_len);
    }
    return {};
}

bool read_change(Message payload, bool exists, LinkChange &change) {
    ifinfomsg info{};
    // Bridges report their ports as a family of their own: leaving a bridge is no end of an interface.
    if (!read_header(payload, info) || info.ifi_family != AF_UNSPEC) {
        return false;
    }
    change.index = info.ifi_index;
    change.exists = exists;
    change.link = exists && (info.ifi_flags & IFF_UP) != 0 && (info.ifi_flags & IFF_LOWER_UP) != 0;
    change.name = find_name(behind(payload, sizeof(info)));
    return true;
}

/** The error that ends a request, 0 for none. Both kinds of last message begin with it. */
bool is_failure(Message payload) {
    int error = 0;
    return !read_header(payload, error) || error != 0;
}

}  // namespace

LinkMonitor::LinkMonitor(Handler on_change, std::function<void()> on_complete)
    : on_change_{std::move(on_change)},
      on_complete_{std::move(on_complete)},
      socket_{socket(AF_NETLINK, SOCK_RAW | SOCK_NONBLOCK | SOCK_CLOEXEC, NETLINK_ROUTE)} {
    sockaddr_nl address{};
    address.nl_family = AF_NETLINK;
    address.nl_groups = RTMGRP_LINK;
    if (!socket_ || bind(socket_.get(), reinterpret_cast<const sockaddr *>(&address), sizeof(address)) != 0) {
        throw error_from_errno("listen for link changes");
    }
    setsockopt(socket_.get(), SOL_SOCKET, SO_RCVBUF, &kNetlinkBufferBytes, sizeof(kNetlinkBufferBytes));
    request_all();
}

void LinkMonitor::request_all() {
    struct {
        nlmsghdr header;
        ifinfomsg info;
    } request{};
    request.header.nlmsg_len = sizeof(request);
    request.header.nlmsg_type = RTM_GETLINK;
    request.header.nlmsg_flags = NLM_F_REQUEST | NLM_F_DUMP;
    request.header.nlmsg_seq = ++sequence_;
    request.info.ifi_family = AF_UNSPEC;
    stale_ = send(socket_.get(), &request, sizeof(request), 0) < 0;
}

void LinkMonitor::handle(Message reports) {
    nlmsghdr header{};
    while (read_header(reports, header) && header.nlmsg_len >= sizeof(header) && header.nlmsg_len <= reports.size()) {
        const Message payload = reports.first(header.nlmsg_len).subspan(sizeof(header));
        // Interfaces came or went while the kernel listed them.
        stale_ = stale_ || (header.nlmsg_flags & NLM_F_DUMP_INTR) != 0;
        LinkChange change;
        if (header.nlmsg_type == NLMSG_ERROR || header.nlmsg_type == NLMSG_DONE) {
            // It may refuse, since it is still busy with the request before: then tick() asks again.
            stale_ = stale_ || is_failure(payload);
            if (header.nlmsg_seq == sequence_ && !stale_) {
                on_complete_();
            }
        } else if (const bool exists = header.nlmsg_type == RTM_NEWLINK;
                   (exists || header.nlmsg_type == RTM_DELLINK) && read_change(payload, exists, change)) {
            on_change_(change);
        }
        reports = behind(reports, header.nlmsg_len);
    }
}

LinkMonitor::Received LinkMonitor::receive() {
    std::array<char, kBufferBytes> buffer;
    const ssize_t length = recv(socket_.get(), buffer.data(), buffer.size(), MSG_DONTWAIT);
    if (length > 0) {
        handle(Message{buffer.data(), static_cast<size_t>(length)});
        return Received::kReports;
    }
    if (length == 0 || errno == EAGAIN || errno == EINTR) {
        return Received::kNothing;
    }
    ++losses_;
    stale_ = true;
    return Received::kLoss;
}

bool LinkMonitor::read_changes() {
    if (reading_) {
        return false;
    }
    reading_ = true;
    Received received = Received::kReports;
    for (int count = 0; count < kReportsAtOnce && received != Received::kNothing; ++count) {
        received = receive();
    }
    reading_ = false;
    return received == Received::kNothing;
}

void LinkMonitor::tick() {
    if (read_changes() && stale_) {
        request_all();
    }
}

}  // namespace vdevice::io
