// bench_ping_pong: messages of given sizes there and back over a Unix socket, and nothing else.
//
//     bench_ping_pong serve PATH REQUEST REPLY      answers any number of clients until it is ended
//     bench_ping_pong ask PATH REQUEST REPLY SECONDS   prints how many answers it has got
#include <sys/epoll.h>
#include <sys/socket.h>
#include <sys/un.h>

#include <array>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include "bench/driver_calls/clock.h"
#include "vdevice/sockets/unique_fd.h"

namespace {

using vdevice::UniqueFd;

constexpr int kBacklog = 64;
constexpr int kEventsAtOnce = 16;
constexpr int kNoTimeout = -1;

struct Sizes {
    std::vector<uint8_t> request;
    std::vector<uint8_t> reply;
};

sockaddr_un address_of(const std::string &path) {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    path.copy(address.sun_path, sizeof(address.sun_path) - 1);
    return address;
}

UniqueFd open_socket() {
    return UniqueFd{socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0)};
}

/** Messages are short and one is under way at a time, so each comes whole. */
bool receive(int socket, std::vector<uint8_t> &message) {
    return recv(socket, message.data(), message.size(), 0) == static_cast<ssize_t>(message.size());
}

bool send_whole(int socket, const std::vector<uint8_t> &message) {
    return send(socket, message.data(), message.size(), MSG_NOSIGNAL) == static_cast<ssize_t>(message.size());
}

bool watch(const UniqueFd &epoll, int fd) {
    epoll_event event{};
    event.events = EPOLLIN;
    event.data.fd = fd;
    return epoll_ctl(epoll.get(), EPOLL_CTL_ADD, fd, &event) == 0;
}

/** One request of a client; a client that has gone is closed, which ends its being watched. */
void answer(int client, Sizes &sizes) {
    if (!receive(client, sizes.request) || !send_whole(client, sizes.reply)) {
        close(client);
    }
}

bool serve(const std::string &path, Sizes &sizes) {
    const UniqueFd listener = open_socket();
    const UniqueFd epoll{epoll_create1(EPOLL_CLOEXEC)};
    const sockaddr_un address = address_of(path);
    if (bind(listener.get(), reinterpret_cast<const sockaddr *>(&address), sizeof(address)) != 0 ||
        listen(listener.get(), kBacklog) != 0 || !watch(epoll, listener.get())) {
        return false;
    }
    std::array<epoll_event, kEventsAtOnce> events{};
    for (;;) {
        const int count = epoll_wait(epoll.get(), events.data(), kEventsAtOnce, kNoTimeout);
        for (int i = 0; i < count; ++i) {
            const int ready = events[static_cast<size_t>(i)].data.fd;
            if (ready != listener.get()) {
                answer(ready, sizes);
            } else if (const int client = accept4(ready, nullptr, nullptr, SOCK_CLOEXEC); client >= 0) {
                watch(epoll, client);
            }
        }
    }
}

uint64_t ask(const std::string &path, Sizes &sizes, double seconds) {
    const UniqueFd socket = open_socket();
    const sockaddr_un address = address_of(path);
    if (connect(socket.get(), reinterpret_cast<const sockaddr *>(&address), sizeof(address)) != 0) {
        return 0;
    }
    return bench::repeat_for(
        seconds, [&] { return send_whole(socket.get(), sizes.request) && receive(socket.get(), sizes.reply); });
}

}  // namespace

int main(int argc, char **argv) {
    constexpr int kServeArguments = 5;
    constexpr int kAskArguments = 6;
    const std::string what = argc > 1 ? argv[1] : "";
    if (argc != (what == "ask" ? kAskArguments : kServeArguments)) {
        std::fprintf(stderr, "usage: bench_ping_pong serve|ask PATH REQUEST REPLY [SECONDS]\n");
        return 2;
    }
    Sizes sizes{std::vector<uint8_t>(std::strtoul(argv[3], nullptr, 10)),
                std::vector<uint8_t>(std::strtoul(argv[4], nullptr, 10))};
    if (what == "serve") {
        return serve(argv[2], sizes) ? EXIT_SUCCESS : EXIT_FAILURE;
    }
    const unsigned long long done = ask(argv[2], sizes, std::strtod(argv[5], nullptr));
    std::printf("%llu\n", done);
    return done > 0 ? EXIT_SUCCESS : EXIT_FAILURE;
}
