// Accepts clients and serves those that are ready.
#include "vdevice/remote/server.h"

#include <sys/epoll.h>
#include <sys/socket.h>

#include <array>
#include <cerrno>
#include <cstring>
#include <new>
#include <stdexcept>
#include <utility>

#include "vdevice/remote/connection.h"

namespace vdevice::remote {
namespace {

constexpr size_t kEventsAtOnce = 16;

bool watch(const UniqueFd &epoll, int operation, int descriptor, uint32_t events) {
    epoll_event event{};
    event.events = events;
    event.data.fd = descriptor;
    return epoll_ctl(epoll.get(), operation, descriptor, &event) == 0;
}

/** Tells a client that cannot be served, if it takes an answer at once. */
void turn_away(const UniqueFd &client) {
    Writer writer;
    writer.word(kFull);
    writer.word(Server::kMaxClients);
    send(client.get(), writer.buffer().data(), writer.buffer().size(), MSG_NOSIGNAL | MSG_DONTWAIT);
}

}  // namespace

Server::Server(DriverCalls &calls, const std::string &path)
    : Server([&calls](calls::CallId id, const void *const *arguments) { return dispatch(calls, id, arguments); },
             path) {}

Server::Server(Handler handler, const std::string &path)
    : handler_(std::move(handler)), epoll_(epoll_create1(EPOLL_CLOEXEC)), listener_(path) {
    if (!epoll_ || !watch(epoll_, EPOLL_CTL_ADD, listener_.fd(), 0)) {
        throw std::runtime_error("cannot wait for clients of " + path + ": " + std::strerror(errno) + ".");
    }
    listen(true);
}

Server::~Server() = default;

void Server::listen(bool wanted) {
    if (is_listening_ != wanted) {
        is_listening_ = wanted;
        watch(epoll_, EPOLL_CTL_MOD, listener_.fd(), wanted ? uint32_t{EPOLLIN} : 0);
    }
}

void Server::accept_client() {
    UniqueFd client = listener_.accept();
    if (!client) {
        listen(!listener_.is_exhausted());
        return;
    }
    if (connections_.size() >= kMaxClients) {
        ++counters_.refused;
        turn_away(client);
        return;
    }
    const int descriptor = client.get();
    auto connection = std::make_unique<Connection>(*this, std::move(client));
    if (watch(epoll_, EPOLL_CTL_ADD, descriptor, EPOLLIN)) {
        connection->set_awaited(EPOLLIN);
        connections_[descriptor] = std::move(connection);
    }
}

void Server::tick() {
    listen(true);
    std::erase_if(connections_, [this](const auto &entry) {
        const bool is_late = entry.second->count_tick() > kHandshakeTicks;
        counters_.late += is_late ? 1 : 0;
        return is_late;
    });
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
    listen(true);
}

void Server::serve(int descriptor, Connection &connection) {
    bool stays = false;
    try {
        stays = connection.serve();
    } catch (const std::bad_alloc &) {
        // Its request was too much for the memory there is: it ends, and the others go on.
    }
    if (stays) {
        await(descriptor, connection, connection.has_work() ? EPOLLOUT : EPOLLIN);
    } else {
        close_client(descriptor);
    }
}

void Server::serve_ready() {
    std::array<epoll_event, kEventsAtOnce> events{};
    const int ready = epoll_wait(epoll_.get(), events.data(), static_cast<int>(events.size()), 0);
    for (int index = 0; index < ready; ++index) {
        const int descriptor = events[static_cast<size_t>(index)].data.fd;
        if (descriptor == listener_.fd()) {
            accept_client();
        } else if (const auto found = connections_.find(descriptor); found != connections_.end()) {
            serve(descriptor, *found->second);
        }
    }
}

}  // namespace vdevice::remote
