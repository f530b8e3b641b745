// Lines in, lines out: clients are served in turn and never waited for.
#include "vdevice/process/control_server.h"

#include <malloc.h>
#include <sys/epoll.h>
#include <sys/socket.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <new>
#include <nlohmann/json.hpp>
#include <utility>

#include "vdevice/io/error.h"
#include "vdevice/process/request.h"

namespace vdevice {
namespace {

using nlohmann::json;

constexpr int kOneEvent = 1;
/** The descriptor of a client that has left. */
constexpr int kNobody = -1;
/** Sent to a client in one turn. */
constexpr size_t kPieceBytes = 65536;

std::string line_of(const json &answer) {
    constexpr int kCompact = -1;
    // Bytes that are not UTF-8 are replaced, so that no text of another program can make this fail.
    return answer.dump(kCompact, ' ', false, json::error_handler_t::replace) + '\n';
}

std::string refusal(const std::string &sentence) {
    return line_of({{"error", sentence}});
}

ssize_t send_some(const UniqueFd &client, const char *bytes, size_t size) {
    return send(client.get(), bytes, size, MSG_DONTWAIT | MSG_NOSIGNAL);
}

}  // namespace

ControlServer::ControlServer(io::EventLoop &loop, const std::string &path, Handler handler, IsLong is_long, Open open)
    : handler_{std::move(handler)}, is_long_{std::move(is_long)}, open_{std::move(open)}, listener_{path} {
    turns_.add(listener_.fd(), EPOLLIN, [this](uint32_t) { accept_client(); });
    loop.add(turns_.fd(), EPOLLIN, [this](uint32_t) { turns_.run_once(0, kOneEvent); });
}

void ControlServer::listen(bool wanted) {
    if (is_listening_ != wanted) {
        is_listening_ = wanted;
        turns_.change(listener_.fd(), wanted ? uint32_t{EPOLLIN} : 0);
    }
}

// What many clients have left behind is in pieces between what stays, and would be kept for ever.
void ControlServer::give_memory_back() {
    if (clients_.size() <= kFewClients && std::exchange(had_many_clients_, false)) {
        malloc_trim(0);
    }
}

void ControlServer::tick() {
    listen(true);
    give_memory_back();
    for (auto &[fd, client] : clients_) {
        ++client.idle_ticks;
    }
}

/** Closes the client that was idle for longest, if it was for long. */
bool ControlServer::make_room() {
    const auto idlest = std::max_element(clients_.begin(), clients_.end(), [](const auto &one, const auto &other) {
        return one.second.idle_ticks < other.second.idle_ticks;
    });
    if (idlest->second.idle_ticks <= kIdleTicks) {
        return false;
    }
    close_client(idlest->first);
    return true;
}

void ControlServer::accept_client() {
    UniqueFd fd = listener_.accept();
    if (!fd) {
        listen(!listener_.is_exhausted());
        return;
    }
    if (clients_.size() >= kMaxClients && !make_room()) {
        const std::string line =
            refusal("The device serves " + std::to_string(kMaxClients) + " control clients already. Try again later.");
        send_some(fd, line.data(), line.size());
        ++rejected_;
        return;
    }
    const int number = fd.get();
    try {
        turns_.add(number, EPOLLIN, [this, number](uint32_t events) { serve(number, events); });
        clients_[number].fd = std::move(fd);
        had_many_clients_ = had_many_clients_ || clients_.size() > kFewClients;
    } catch (const io::Error &) {
        // The kernel watches no more descriptors: this client is closed, the others stay.
    } catch (const std::bad_alloc &) {
        turns_.remove(number);
    }
}

void ControlServer::close_client(int fd) {
    turns_.remove(fd);
    clients_.erase(fd);
    for (Waiting &one : waiting_) {
        one.fd = one.fd == fd ? kNobody : one.fd;
    }
    listen(true);
}

void ControlServer::serve(int fd, uint32_t events) {
    Client &client = clients_.at(fd);
    bool stays = false;
    try {
        stays = take_turn(client, events);
    } catch (const std::bad_alloc &) {
        // Its request was too much for the memory there is: it ends, and the others go on.
    }
    if (stays) {
        await(client);
    } else {
        close_client(fd);
    }
}

// One answer a turn, so that a client with many requests lets the others have theirs.
void ControlServer::await(const Client &client) {
    const uint32_t awaited = client.is_waiting ? 0 : uint32_t{client.has_work() ? EPOLLOUT : EPOLLIN};
    turns_.change(client.fd.get(), awaited);
}

bool ControlServer::take_turn(Client &client, uint32_t events) {
    if (client.is_waiting) {
        return false;  // nothing was awaited: the client is gone
    }
    if (client.lines) {
        return send_lines(client, events) && write_answers(client);
    }
    // A client with work is not read from: what it sends ahead stays in the socket.
    if (!client.has_work() && (events & (EPOLLIN | EPOLLHUP | EPOLLERR)) != 0 && !read_requests(client)) {
        return false;
    }
    return answer_one(client) && write_answers(client);
}

bool ControlServer::read_requests(Client &client) {
    std::array<char, 4096> buffer;
    const ssize_t length = recv(client.fd.get(), buffer.data(), buffer.size(), MSG_DONTWAIT);
    if (length <= 0) {
        return length < 0 && (errno == EAGAIN || errno == EINTR);
    }
    client.idle_ticks = 0;
    client.input.append(buffer.data(), static_cast<size_t>(length));
    return client.has_work() || client.input.size() <= kMaxRequest;
}

// What such a client says is not listened to.
bool ControlServer::send_lines(Client &client, uint32_t events) {
    std::array<char, 4096> ignored;
    if ((events & (EPOLLIN | EPOLLHUP | EPOLLERR)) != 0) {
        const ssize_t length = recv(client.fd.get(), ignored.data(), ignored.size(), MSG_DONTWAIT);
        if (length == 0 || (length < 0 && errno != EAGAIN && errno != EINTR)) {
            return false;
        }
    }
    client.has_lines = true;
    while (client.has_lines && client.output.size() < kPieceBytes) {
        const auto line = client.lines();
        client.output += line ? *line + '\n' : "";
        client.has_lines = line.has_value();
    }
    return true;
}

bool ControlServer::answer_one(Client &client) {
    const size_t end = client.input.find('\n');
    if (client.has_output() || end == std::string::npos) {
        return true;
    }
    if (end > kMaxRequest) {
        return false;
    }
    const std::string line = client.input.substr(0, end);
    client.input.erase(0, end + 1);
    answer(client, line);
    return true;
}

bool ControlServer::write_answers(Client &client) {
    if (!client.has_output()) {
        return true;
    }
    if (client.sent == client.output.size() && !refill(client)) {
        return false;
    }
    const size_t size = std::min(client.output.size() - client.sent, kPieceBytes);
    const ssize_t length = send_some(client.fd, client.output.data() + client.sent, size);
    if (length < 0) {
        return errno == EAGAIN || errno == EINTR;
    }
    client.idle_ticks = 0;
    client.sent += static_cast<size_t>(length);
    if (!client.has_output()) {
        client.output = {};  // gives back the memory, too
        client.sent = 0;
    }
    return true;
}

/** Reads the next piece of the file; the file is closed at its end. */
bool ControlServer::refill(Client &client) {
    client.output.resize(kPieceBytes);
    client.sent = 0;
    const ssize_t length = read(client.rest.get(), client.output.data(), client.output.size());
    client.output.resize(static_cast<size_t>(std::max<ssize_t>(length, 0)));
    if (client.output.size() < kPieceBytes) {
        client.rest.reset();
    }
    return length >= 0;
}

void ControlServer::answer(Client &client, const std::string &line) {
    const char *problem = nullptr;
    const json request = request_in(line, problem);
    if (problem != nullptr) {
        client.output = refusal(problem);
    } else if (open_ &&
               (client.lines = open_(request, [this, fd = client.fd.get()] { turns_.change(fd, EPOLLOUT); }))) {
        client.input = {};
        send_lines(client, 0);
    } else if (is_long_ && is_long_(request)) {
        client.is_waiting = true;
        waiting_.push_back({client.fd.get(), [this, request] { return line_of(handler_(request)); }});
        make_next();
    } else {
        client.output = line_of(handler_(request));
    }
}

/** Makes the text that the first one waits for. */
void ControlServer::make_next() {
    while (background_ == nullptr && !waiting_.empty()) {
        if (waiting_.front().fd == kNobody) {
            waiting_.pop_front();
            continue;
        }
        try {
            background_ = std::make_unique<BackgroundText>(waiting_.front().make);
            turns_.add(background_->fd(), EPOLLIN, [this](uint32_t) { take_text(); });
        } catch (const io::Error &) {
            background_.reset();
            hand_over(UniqueFd{});
        }
    }
}

void ControlServer::take_text() {
    turns_.remove(background_->fd());
    UniqueFd text = background_->take();
    background_.reset();
    hand_over(std::move(text));
    make_next();
}

/** Gives the text to the first one that waits, if it is still there. */
void ControlServer::hand_over(UniqueFd text) {
    const auto found = clients_.find(waiting_.front().fd);
    waiting_.pop_front();
    if (found == clients_.end()) {
        return;
    }
    Client &client = found->second;
    client.is_waiting = false;
    client.rest = std::move(text);
    if (!client.rest) {
        client.output = refusal("The device could not make the answer. It may be out of memory.");
    }
    await(client);
}

}  // namespace vdevice
