// bench_relay BYTES FRAMES BLOCKS: frames between the CPU port and a TAP interface by adp-switchd's relay, and by a
// bare loop of two system calls a frame, a read and a write of a frame that is ready.
//
// Both alternate, BLOCKS times with FRAMES each, and each is first every other time. A line for each block has the
// nanoseconds of processor time for the way out (relay, bare) and the way in (relay, bare). It needs a network
// namespace of its own.
#include <adp/adp.h>
#include <arpa/inet.h>
#include <linux/if_ether.h>
#include <linux/if_packet.h>
#include <net/if.h>
#include <sys/socket.h>
#include <time.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <fstream>
#include <string>
#include <utility>
#include <vector>

#include "switchd/frames/relay.h"
#include "vdevice/io/error.h"
#include "vdevice/io/interfaces.h"

namespace {

using namespace switchd;
using vdevice::UniqueFd;
using Octets = std::vector<uint8_t>;

constexpr uint32_t kPort = 1;
constexpr uint16_t kVid = 100;
constexpr Mac kSwitch{2, 0, 0, 0, 0, 1};
constexpr Time kNow = std::chrono::seconds{1};

void set_up_port_map() {
    adp_set_max_phy_port_num(ADP_USER_PORTS);
    adp_add_cpu_port(0, 0, 0, 0, 0);
    for (uint32_t port = 1; port <= ADP_USER_PORTS; ++port) {
        adp_add_phy_port(port, 0, 0, port + 3, 0);
    }
}

/** A packet socket on an interface, which receives or not. */
UniqueFd open_socket(const char *name, bool receives) {
    UniqueFd fd{socket(AF_PACKET, SOCK_RAW | SOCK_NONBLOCK | SOCK_CLOEXEC, 0)};
    sockaddr_ll address{};
    address.sll_family = AF_PACKET;
    address.sll_protocol = receives ? htons(ETH_P_ALL) : uint16_t{0};
    address.sll_ifindex = static_cast<int>(if_nametoindex(name));
    const int on = 1;
    setsockopt(fd.get(), SOL_PACKET, PACKET_IGNORE_OUTGOING, &on, sizeof(on));
    if (!fd || bind(fd.get(), reinterpret_cast<const sockaddr *>(&address), sizeof(address)) != 0) {
        throw vdevice::io::Error{std::string{"cannot open a socket on "} + name};
    }
    return fd;
}

/** Unicast between the switch and a host, so that no limit holds. */
Octets frame_of(size_t size, bool to_switch, const Octets &tag) {
    Octets frame = {2, 0, 0, 0, 0, 1, 2, 0, 0, 0, 0, 7};
    if (!to_switch) {
        std::swap_ranges(frame.begin(), frame.begin() + 6, frame.begin() + 6);
    }
    frame.insert(frame.end(), tag.begin(), tag.end());
    frame.insert(frame.end(), {0x88, 0xB5});
    frame.resize(size + tag.size());
    return frame;
}

uint64_t spent() {
    timespec time{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return uint64_t{1'000'000'000} * static_cast<uint64_t>(time.tv_sec) + static_cast<uint64_t>(time.tv_nsec);
}

class Bench {
  public:
    Bench(size_t size, int frames)
        : frames_{frames},
          from_kernel_{frame_of(size, false, {})},
          from_chip_{frame_of(size, true, {0x88, 0x74, 0, 0, 0, 4, 0x81, 0, 0, kVid})},
          sent_{frame_of(size, false, {0x88, 0x74, 0xDA, 0, 0, 4, 0, 0, 0, 0})},
          delivered_{frame_of(size, true, {})} {
        cpu_port_.open();
        PathTable table;
        table.ports[kPort].untagged_vid = kVid;
        table.interfaces = {{kPort, 0}};
        table.own_addresses = {kSwitch};
        path_.set_table(table);
        if (!interfaces_.set_wanted({{kPort, 0}}).empty()) {
            throw vdevice::io::Error{"cannot make swp1"};
        }
        interfaces_.set_carrier(kPort, true);
        std::ofstream{"/proc/sys/net/ipv6/conf/swp1/disable_ipv6"} << "1";
        vdevice::io::set_interface_up("swp1", true);
        kernel_ = open_socket("swp1", false);
        chip_ = open_socket("chip0", false);
        bare_in_ = open_socket("eth0", true);
        bare_out_ = open_socket("eth0", false);
    }
    ~Bench() { interfaces_.remove_all(); }

    void run(int blocks) {
        using Step = uint64_t (Bench::*)();
        const auto take_turns = [this](Step relay, Step bare, bool is_relay_first) {
            const uint64_t first = (this->*(is_relay_first ? relay : bare))();
            const uint64_t second = (this->*(is_relay_first ? bare : relay))();
            return is_relay_first ? std::pair{first, second} : std::pair{second, first};
        };
        for (int i = 0; i < blocks; ++i) {
            const auto [out, bare_out] = take_turns(&Bench::relay_out, &Bench::bare_out, i % 2 == 0);
            const auto [in, bare_in] = take_turns(&Bench::relay_in, &Bench::bare_in, i % 2 == 0);
            std::printf("%llu %llu %llu %llu\n", ull(out), ull(bare_out), ull(in), ull(bare_in));
        }
    }

  private:
    static unsigned long long ull(uint64_t value) { return value; }

    void send_all(const UniqueFd &socket, const Octets &frame) const {
        for (int i = 0; i < frames_; ++i) {
            if (write(socket.get(), frame.data(), frame.size()) != static_cast<ssize_t>(frame.size())) {
                throw vdevice::io::error_from_errno("send a frame");
            }
        }
    }
    int tap() { return interfaces_.find(PortName{kPort, 0})->fd(); }

    uint64_t relay_out() {
        send_all(kernel_, from_kernel_);
        const uint64_t before = path_.counters(kPort).from_kernel;
        const uint64_t began = spent();
        while (path_.counters(kPort).from_kernel < before + static_cast<uint64_t>(frames_)) {
            relay_.from_interface(*interfaces_.find(PortName{kPort, 0}), kNow);
        }
        return spent() - began;
    }
    uint64_t bare_out() {
        send_all(kernel_, from_kernel_);
        const int fd = tap();
        const uint64_t began = spent();
        for (int i = 0; i < frames_; ++i) {
            if (read(fd, room_.data(), room_.size()) <= 0 ||
                send(bare_out_.get(), sent_.data(), sent_.size(), 0) != static_cast<ssize_t>(sent_.size())) {
                throw vdevice::io::error_from_errno("pass a frame to the chip");
            }
        }
        return spent() - began;
    }
    uint64_t relay_in() {
        send_all(chip_, from_chip_);
        discard_bare();
        const uint64_t before = path_.counters(kPort).to_kernel;
        const uint64_t began = spent();
        while (path_.counters(kPort).to_kernel < before + static_cast<uint64_t>(frames_)) {
            relay_.from_chip(kNow);
        }
        return spent() - began;
    }
    uint64_t bare_in() {
        send_all(chip_, from_chip_);
        cpu_port_.receive([](uint32_t, vdevice::chip::Bytes) {});
        const int fd = tap();
        const uint64_t began = spent();
        for (int i = 0; i < frames_; ++i) {
            if (recv(bare_in_.get(), room_.data(), room_.size(), 0) <= 0 ||
                write(fd, delivered_.data(), delivered_.size()) != static_cast<ssize_t>(delivered_.size())) {
                throw vdevice::io::error_from_errno("pass a frame to the kernel");
            }
        }
        return spent() - began;
    }
    void discard_bare() {
        while (recv(bare_in_.get(), room_.data(), room_.size(), 0) > 0) {
        }
    }

    int frames_;
    Octets from_kernel_;
    Octets from_chip_;
    Octets sent_;
    Octets delivered_;
    Octets room_ = Octets(ReadRoom::kFrameBytes);
    vdevice::io::EventLoop loop_;
    CpuPort cpu_port_;
    FramePath path_{{1, 2}, {}, kNow};
    Interfaces interfaces_{loop_, {}, "", [](Interface &) {}};
    Relay relay_{path_, cpu_port_, interfaces_, [](uint32_t, const vdevice::chip::Frame &) {}};
    UniqueFd kernel_;
    UniqueFd chip_;
    UniqueFd bare_in_;
    UniqueFd bare_out_;
};

}  // namespace

int main(int argc, char **argv) {
    constexpr int kMostFrames = 100;  // so many fit into every queue on the way, and are read in one turn
    const long size = argc == 4 ? std::strtol(argv[1], nullptr, 10) : 0;
    const long frames = argc == 4 ? std::strtol(argv[2], nullptr, 10) : 0;
    const long blocks = argc == 4 ? std::strtol(argv[3], nullptr, 10) : 0;
    if (size < 60 || size > 1514 || frames < 1 || frames > kMostFrames || blocks < 1) {
        std::fprintf(stderr, "usage: bench_relay BYTES FRAMES BLOCKS\n");
        return 2;
    }
    try {
        set_up_port_map();
        if (std::system("exec ip link add eth0 type veth peer name chip0") != 0) {
            return 1;
        }
        for (const char *name : {"eth0", "chip0"}) {
            vdevice::io::make_transparent(name);
            vdevice::io::set_interface_up(name, true);
        }
        Bench{static_cast<size_t>(size), static_cast<int>(frames)}.run(static_cast<int>(blocks));
    } catch (const std::exception &error) {
        std::fprintf(stderr, "bench_relay: %s\n", error.what());
        return 1;
    }
    return 0;
}
