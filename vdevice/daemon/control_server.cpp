// Lines in, lines out: clients are served in turn and never waited for.
#include "vdevice/daemon/control_server.h"

#include <sys/epoll.h>
#include <sys/socket.h>

#include <array>
#include <cerrno>
#include <nlohmann/json.hpp>
#include <utility>

#include "vdevice/io/error.h"
#include "vdevice/sockets/unix_address.h"

namespace vdevice {
namespace {

constexpr int kBacklog = 16;

sockaddr_un address_of(const std::string &path) {
    const auto address = unix_address(path);
    if (!address) {
        throw io::Error{"cannot use " + path + " as a socket: the name is too long."};
    }
    return *address;
}

UniqueFd unix_socket() {
    return UniqueFd{socket(AF_UNIX, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0)};
}

bool is_answered(const sockaddr_un &address) {
    const UniqueFd probe = unix_socket();
    return connect(probe.get(), reinterpret_cast<const sockaddr *>(&address), sizeof(address)) == 0;
}

}  // namespace

ControlServer::ControlServer(io::EventLoop &loop, std::string path, Handler handler)
    : loop_{loop}, path_{std::move(path)}, handler_{std::move(handler)}, listener_{unix_socket()} {
    const sockaddr_un address = address_of(path_);
    if (is_answered(address)) {
        throw io::Error{"cannot listen on " + path_ + ": another vdeviced is running there."};
    }
    unlink(path_.c_str());
    if (!listener_ || bind(listener_.get(), reinterpret_cast<const sockaddr *>(&address), sizeof(address)) != 0 ||
        listen(listener_.get(), kBacklog) != 0) {
        throw io::error_from_errno("listen on " + path_);
    }
    loop_.add(listener_.get(), EPOLLIN, [this](uint32_t) { accept_client(); });
}

ControlServer::~ControlServer() {
    unlink(path_.c_str());
}

void ControlServer::accept_client() {
    UniqueFd fd{accept4(listener_.get(), nullptr, nullptr, SOCK_NONBLOCK | SOCK_CLOEXEC)};
    if (!fd || clients_.size() >= kMaxClients) {
        return;
    }
    const int number = fd.get();
    loop_.add(number, EPOLLIN, [this, number](uint32_t events) { serve(number, events); });
    clients_[number].fd = std::move(fd);
}

void ControlServer::serve(int fd, uint32_t events) {
    Client &client = clients_.at(fd);
    bool stays = true;
    // A client with work is not read from: what it sends ahead stays in the socket.
    if (!client.has_work() && (events & (EPOLLIN | EPOLLHUP | EPOLLERR)) != 0) {
        stays = read_requests(client);
    }
    if (!(stays && answer_one(client) && write_answers(client))) {
        loop_.remove(fd);
        clients_.erase(fd);
        return;
    }
    // One answer a turn, so that a client with many requests lets the others have theirs.
    loop_.change(fd, client.has_work() ? EPOLLOUT : EPOLLIN);
}

bool ControlServer::read_requests(Client &client) {
    std::array<char, 4096> buffer;
    const ssize_t length = recv(client.fd.get(), buffer.data(), buffer.size(), MSG_DONTWAIT);
    if (length <= 0) {
        return length < 0 && (errno == EAGAIN || errno == EINTR);
    }
    client.input.append(buffer.data(), static_cast<size_t>(length));
    return client.has_work() || client.input.size() <= kMaxRequest;
}

bool ControlServer::answer_one(Client &client) {
    const size_t end = client.input.find('\n');
    if (!client.output.empty() || end == std::string::npos) {
        return true;
    }
    if (end > kMaxRequest) {
        return false;
    }
    client.output = answer(client.input.substr(0, end)) + '\n';
    client.input.erase(0, end + 1);
    return true;
}

bool ControlServer::write_answers(Client &client) {
    while (!client.output.empty()) {
        const ssize_t length =
            send(client.fd.get(), client.output.data(), client.output.size(), MSG_DONTWAIT | MSG_NOSIGNAL);
        if (length < 0) {
            return errno == EAGAIN || errno == EINTR;
        }
        client.output.erase(0, static_cast<size_t>(length));
    }
    return true;
}

std::string ControlServer::answer(const std::string &line) const {
    constexpr int kCompact = -1;
    const auto request = nlohmann::json::parse(line, nullptr, false);
    nlohmann::json reply;
    if (request.is_object()) {
        reply = handler_(request);
    } else {
        reply = {{"error", "The request is not a JSON object."}};
    }
    // Bytes that are not UTF-8 are replaced, so that no text of another program can make this fail.
    return reply.dump(kCompact, ' ', false, nlohmann::json::error_handler_t::replace);
}

}  // namespace vdevice
