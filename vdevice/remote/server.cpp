// Accepts clients and serves those that are ready.
#include "vdevice/remote/server.h"

#include <sys/epoll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstring>
#include <stdexcept>
#include <utility>

#include "vdevice/remote/connection.h"

namespace vdevice::remote {
namespace {

constexpr int kBacklog = 16;
constexpr size_t kEventsAtOnce = 16;

[[noreturn]] void fail(const std::string &what, const std::string &path) {
    throw std::runtime_error("cannot " + what + " " + path + ": " + std::strerror(errno));
}

sockaddr_un address_of(const std::string &path) {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    if (path.size() >= sizeof address.sun_path) {
        throw std::runtime_error("the path of the driver socket is too long: " + path);
    }
    std::memcpy(address.sun_path, path.c_str(), path.size() + 1);
    return address;
}

/** Removes the socket of a dead daemon; a socket that answers belongs to another daemon. */
void remove_stale(const std::string &path, const sockaddr_un &address) {
    const int probe = socket(AF_UNIX, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0);
    if (probe < 0) {
        fail("open a socket for", path);
    }
    const int status = connect(probe, reinterpret_cast<const sockaddr *>(&address), sizeof address);
    const int error = status == 0 ? 0 : errno;
    close(probe);
    if (error == 0 || error == EAGAIN) {
        throw std::runtime_error("another virtual device already serves " + path);
    }
    if (error == ECONNREFUSED) {
        unlink(path.c_str());
    }
}

void watch(int epoll, int operation, int descriptor, uint32_t events) {
    epoll_event event{};
    event.events = events;
    event.data.fd = descriptor;
    epoll_ctl(epoll, operation, descriptor, &event);
}

}  // namespace

Server::Server(DriverCalls &calls, const std::string &path)
    : Server([&calls](calls::CallId id, const void *const *arguments) { return dispatch(calls, id, arguments); },
             path) {}

Server::Server(Handler handler, const std::string &path) : handler_(std::move(handler)), path_(path) {
    epoll_ = epoll_create1(EPOLL_CLOEXEC);
    if (epoll_ < 0) {
        fail("wait for clients of", path);
    }
    try {
        listen_on(path);
    } catch (...) {
        close(epoll_);
        if (listener_ >= 0) {
            close(listener_);
        }
        throw;
    }
}

Server::~Server() {
    connections_.clear();
    close(listener_);
    close(epoll_);
    unlink(path_.c_str());
}

void Server::listen_on(const std::string &path) {
    const sockaddr_un address = address_of(path);
    remove_stale(path, address);
    listener_ = socket(AF_UNIX, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0);
    if (listener_ < 0) {
        fail("open a socket for", path);
    }
    if (bind(listener_, reinterpret_cast<const sockaddr *>(&address), sizeof address) != 0) {
        fail("bind", path);
    }
    if (listen(listener_, kBacklog) != 0) {
        fail("listen on", path);
    }
    watch(epoll_, EPOLL_CTL_ADD, listener_, EPOLLIN);
}

void Server::accept_clients() {
    const int descriptor = accept4(listener_, nullptr, nullptr, SOCK_NONBLOCK | SOCK_CLOEXEC);
    if (descriptor < 0) {
        return;
    }
    if (connections_.size() >= kMaxClients) {
        ++counters_.refused;
        close(descriptor);
        return;
    }
    const auto &connection = connections_[descriptor] = std::make_unique<Connection>(*this, descriptor);
    connection->set_awaited(EPOLLIN);
    watch(epoll_, EPOLL_CTL_ADD, descriptor, EPOLLIN);
}

// The messages are sent in serve_ready(): a connection that is being served must not be closed.
void Server::publish_link_change(std::span<const uint32_t, kLinkChangeWords> words) {
    for (const auto &[descriptor, connection] : connections_) {
        if (connection->is_watching()) {
            connection->push(words);
            await(descriptor, *connection, EPOLLOUT);
        }
    }
}

// Most clients read their answers at once; their events stay the same and the kernel need not be told.
void Server::await(int descriptor, Connection &connection, uint32_t events) {
    if (connection.awaited() != events) {
        watch(epoll_, EPOLL_CTL_MOD, descriptor, events);
        connection.set_awaited(events);
    }
}

void Server::close_client(int descriptor) {
    connections_.erase(descriptor);
}

void Server::serve_ready() {
    std::array<epoll_event, kEventsAtOnce> events{};
    const int ready = epoll_wait(epoll_, events.data(), static_cast<int>(events.size()), 0);
    for (int index = 0; index < ready; ++index) {
        const int descriptor = events[static_cast<size_t>(index)].data.fd;
        if (descriptor == listener_) {
            accept_clients();
            continue;
        }
        const auto found = connections_.find(descriptor);
        if (found == connections_.end()) {
            continue;
        }
        if (found->second->serve()) {
            await(descriptor, *found->second, found->second->has_work() ? EPOLLOUT : EPOLLIN);
        } else {
            close_client(descriptor);
        }
    }
}

}  // namespace vdevice::remote
