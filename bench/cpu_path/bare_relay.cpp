// bench_bare_relay INTERFACE TAP [PORT]: moves frames between an interface and a TAP interface that it makes, with one
// system call to read a frame, one to write it, and one to wait when none is there. It decides nothing.
//
// With a port of the chip, INTERFACE is the CPU's: the switch tag and the VLAN tag of the chip's frames are removed,
// and frames for the chip get a tag for this port. Says "bench_bare_relay: ready" when the TAP interface is up.
#include <arpa/inet.h>
#include <fcntl.h>
#include <linux/if_ether.h>
#include <linux/if_packet.h>
#include <linux/if_tun.h>
#include <net/if.h>
#include <poll.h>
#include <stdint.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <sys/uio.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <string>
#include <utility>

#include "vdevice/io/error.h"
#include "vdevice/io/interfaces.h"
#include "vdevice/sockets/unique_fd.h"

namespace {

using vdevice::UniqueFd;
using vdevice::io::error_from_errno;

constexpr size_t kAddresses = 12;
constexpr size_t kTags = 10;
constexpr size_t kLongest = 2048;
/** Moved in one direction before the other one has its turn. */
constexpr int kFramesInARow = 64;
constexpr long kMostPorts = 64;
constexpr int kBufferBytes = 4 * 1024 * 1024;

/** Buffers like those of adp-switchd's sockets; without the privilege as far as the system allows. */
void enlarge_buffers(int fd) {
    for (const auto &[forced, option] : {std::pair{SO_RCVBUFFORCE, SO_RCVBUF}, std::pair{SO_SNDBUFFORCE, SO_SNDBUF}}) {
        if (setsockopt(fd, SOL_SOCKET, forced, &kBufferBytes, sizeof(kBufferBytes)) != 0) {
            setsockopt(fd, SOL_SOCKET, option, &kBufferBytes, sizeof(kBufferBytes));
        }
    }
}

/** One that only sends is for itself: the kernel wakes those who wait for a socket whenever a frame was sent. */
UniqueFd open_interface(const std::string &name, bool receives) {
    UniqueFd fd{socket(AF_PACKET, SOCK_RAW | SOCK_NONBLOCK | SOCK_CLOEXEC, 0)};
    enlarge_buffers(fd.get());
    sockaddr_ll address{};
    address.sll_family = AF_PACKET;
    address.sll_protocol = receives ? htons(ETH_P_ALL) : uint16_t{0};
    address.sll_ifindex = static_cast<int>(if_nametoindex(name.c_str()));
    const int on = 1;
    setsockopt(fd.get(), SOL_PACKET, PACKET_IGNORE_OUTGOING, &on, sizeof(on));
    if (address.sll_ifindex == 0 ||
        bind(fd.get(), reinterpret_cast<const sockaddr *>(&address), sizeof(address)) != 0) {
        throw error_from_errno("open " + name);
    }
    return fd;
}

UniqueFd make_tap(const std::string &name) {
    UniqueFd fd{open("/dev/net/tun", O_RDWR | O_NONBLOCK | O_CLOEXEC)};
    ifreq request{};
    name.copy(request.ifr_name, IFNAMSIZ - 1);
    request.ifr_flags = IFF_TAP | IFF_NO_PI;
    if (!fd || ioctl(fd.get(), TUNSETIFF, &request) != 0) {
        throw error_from_errno("make " + name);
    }
    vdevice::io::turn_off_offloads(name);
    vdevice::io::set_interface_up(name, true);
    return fd;
}

/** A frame in parts, with or without the tags between its addresses and the rest. */
class Frame {
  public:
    explicit Frame(uint8_t port) : tags_{0x88, 0x74, 0xC0, 0, 0, port, 0, 0, 0, 0} {}

    /** False if none waits. */
    bool read_from(int fd, size_t tags) {
        const auto parts = with_tags(tags, kLongest);
        const ssize_t size = readv(fd, parts.data(), static_cast<int>(parts.size()));
        rest_size_ = size < 0 ? 0 : static_cast<size_t>(size) - std::min(static_cast<size_t>(size), kAddresses + tags);
        return size >= 0;
    }
    /** What is not taken is lost, as on a cable, and TCP sends it again. */
    void write_to(int fd, size_t tags) {
        const auto parts = with_tags(tags, rest_size_);
        [[maybe_unused]] const ssize_t taken = writev(fd, parts.data(), static_cast<int>(parts.size()));
    }

  private:
    std::array<iovec, 3> with_tags(size_t tags, size_t rest) {
        return {{{addresses_.data(), kAddresses}, {tags_.data(), tags}, {rest_.data(), rest}}};
    }

    std::array<uint8_t, kAddresses> addresses_{};
    std::array<uint8_t, kTags> tags_;
    std::array<uint8_t, kLongest> rest_{};
    size_t rest_size_ = 0;
};

struct End {
    int receiving;
    int sending;
    size_t tags;
};

void move_frames(Frame &frame, const End &from, const End &to) {
    for (int i = 0; i < kFramesInARow && frame.read_from(from.receiving, from.tags); ++i) {
        frame.write_to(to.sending, to.tags);
    }
}

[[noreturn]] void run(const End &interface, const End &tap, uint8_t port) {
    Frame in{port};
    Frame out{port};
    std::array<pollfd, 2> waiting{{{interface.receiving, POLLIN, 0}, {tap.receiving, POLLIN, 0}}};
    while (poll(waiting.data(), waiting.size(), -1) >= 0) {
        if (waiting[0].revents != 0) {
            move_frames(in, interface, tap);
        }
        if (waiting[1].revents != 0) {
            move_frames(out, tap, interface);
        }
    }
    throw error_from_errno("wait for frames");
}

}  // namespace

int main(int argc, char **argv) {
    const long port = argc == 4 ? std::strtol(argv[3], nullptr, 10) : 0;
    if (argc < 3 || argc > 4 || port < 0 || port >= kMostPorts) {
        std::fprintf(stderr, "usage: bench_bare_relay INTERFACE TAP [PORT]\n");
        return 2;
    }
    try {
        const UniqueFd receiving = open_interface(argv[1], true);
        const UniqueFd sending = open_interface(argv[1], false);
        const UniqueFd tap = make_tap(argv[2]);
        std::puts("bench_bare_relay: ready");
        std::fflush(stdout);
        run({receiving.get(), sending.get(), argc == 4 ? kTags : 0}, {tap.get(), tap.get(), 0},
            static_cast<uint8_t>(port));
    } catch (const std::exception &error) {
        std::fprintf(stderr, "bench_bare_relay: %s\n", error.what());
        return 1;
    }
}
