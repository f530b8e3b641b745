// bench_forwarder: moves frames between the interfaces of a device by a fixed table, with the device's rings and system
// calls and nothing else. What the device needs more than this is its own.
#include <arpa/inet.h>
#include <linux/if_ether.h>
#include <linux/if_packet.h>
#include <net/if.h>
#include <sys/epoll.h>
#include <sys/mman.h>
#include <sys/signalfd.h>
#include <sys/socket.h>

#include <array>
#include <atomic>
#include <cerrno>
#include <charconv>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <exception>
#include <memory>
#include <string>
#include <system_error>
#include <vector>

#include "vdevice/io/interfaces.h"
#include "vdevice/io/receive_ring.h"
#include "vdevice/sockets/unique_fd.h"

namespace bench {
namespace {

using vdevice::UniqueFd;
using vdevice::io::ReceiveRing;

// As many as the device takes from a port in turn, and as it sends together.
constexpr size_t kTurn = 128;
constexpr size_t kBatch = 64;
constexpr int kBufferBytes = 4 * 1024 * 1024;
constexpr int kEventsAtOnce = 64;
constexpr uint32_t kCableMark = 1;  // the namespace is the program's own

void check(bool done, const std::string &what) {
    if (!done) {
        throw std::system_error{errno, std::generic_category(), what};
    }
}

UniqueFd packet_socket() {
    UniqueFd fd{socket(AF_PACKET, SOCK_RAW | SOCK_NONBLOCK | SOCK_CLOEXEC, 0)};
    check(static_cast<bool>(fd), "open a packet socket");
    return fd;
}

void set(const UniqueFd &fd, int level, int option, const auto &value) {
    check(setsockopt(fd.get(), level, option, &value, sizeof(value)) == 0, "set up a packet socket");
}

void bind_to(const UniqueFd &fd, unsigned index, uint16_t protocol) {
    sockaddr_ll address{};
    address.sll_family = AF_PACKET;
    address.sll_protocol = htons(protocol);
    address.sll_ifindex = static_cast<int>(index);
    check(bind(fd.get(), reinterpret_cast<const sockaddr *>(&address), sizeof(address)) == 0, "bind a packet socket");
}

/** Frames as they lie in a ring. */
class Batch {
  public:
    Batch() {
        for (size_t i = 0; i < kBatch; ++i) {
            messages_[i].msg_hdr.msg_iov = &pieces_[i];
            messages_[i].msg_hdr.msg_iovlen = 1;
        }
    }
    void add(uint8_t *frame, size_t octets) { pieces_[count_++] = {frame, octets}; }
    size_t size() const { return count_; }
    void clear() { count_ = 0; }
    void send(const UniqueFd &fd) {
        for (size_t sent = 0; sent < count_;) {
            const int count = sendmmsg(fd.get(), &messages_[sent], static_cast<unsigned>(count_ - sent), MSG_DONTWAIT);
            sent += count > 0 ? static_cast<size_t>(count) : 1;
        }
    }

  private:
    std::array<iovec, kBatch> pieces_{};
    std::array<mmsghdr, kBatch> messages_{};
    size_t count_ = 0;
};

class Port {
  public:
    explicit Port(const std::string &name) {
        vdevice::io::make_transparent(name);
        const unsigned index = if_nametoindex(name.c_str());
        set(send_socket_, SOL_SOCKET, SO_SNDBUFFORCE, kBufferBytes);
        bind_to(send_socket_, index, 0);
        set(socket_, SOL_PACKET, PACKET_IGNORE_OUTGOING, int{1});
        set(socket_, SOL_PACKET, PACKET_VERSION, int{TPACKET_V2});
        const tpacket_req layout{ReceiveRing::kSlotBytes * ReceiveRing::kSlotsInBlock,
                                 ReceiveRing::kSlots / ReceiveRing::kSlotsInBlock, ReceiveRing::kSlotBytes,
                                 ReceiveRing::kSlots};
        set(socket_, SOL_PACKET, PACKET_RX_RING, layout);
        void *memory = mmap(nullptr, ReceiveRing::kSlots * ReceiveRing::kSlotBytes, PROT_READ | PROT_WRITE, MAP_SHARED,
                            socket_.get(), 0);
        check(memory != MAP_FAILED, "map a ring");
        ring_ = static_cast<uint8_t *>(memory);
        const packet_mreq promiscuous{static_cast<int>(index), PACKET_MR_PROMISC, 0, {}};
        set(socket_, SOL_PACKET, PACKET_ADD_MEMBERSHIP, promiscuous);
        vdevice::io::set_interface_up(name, true);
        bind_to(socket_, index, ETH_P_ALL);
    }

    int fd() const { return socket_.get(); }
    void send(Batch &batch) { batch.send(send_socket_); }

    /** Adds the frames that wait, up to the first one that is to many stations where the others are not. */
    bool take(Batch &batch, size_t limit) {
        bool is_group = false;
        while (batch.size() < limit) {
            tpacket2_hdr &slot = slot_at((next_ + batch.size()) % ReceiveRing::kSlots);
            if ((owner_of(slot).load(std::memory_order_acquire) & TP_STATUS_USER) == 0) {
                break;
            }
            uint8_t *frame = reinterpret_cast<uint8_t *>(&slot) + slot.tp_mac;
            const bool is_to_group = (frame[0] & 1) != 0;
            if (batch.size() != 0 && is_to_group != is_group) {
                break;
            }
            is_group = is_to_group;
            batch.add(frame, slot.tp_snaplen);
        }
        return is_group;
    }
    void release(size_t frames) {
        for (; frames > 0; --frames) {
            owner_of(slot_at(next_)).store(TP_STATUS_KERNEL, std::memory_order_release);
            next_ = (next_ + 1) % ReceiveRing::kSlots;
        }
    }
    /** Reads the error of an interface that went down, which would wake the loop again and again. */
    void forget_error() const {
        int error = 0;
        socklen_t size = sizeof(error);
        getsockopt(fd(), SOL_SOCKET, SO_ERROR, &error, &size);
    }

  private:
    tpacket2_hdr &slot_at(size_t number) const {
        return *reinterpret_cast<tpacket2_hdr *>(ring_ + number * ReceiveRing::kSlotBytes);
    }
    static std::atomic_ref<uint32_t> owner_of(tpacket2_hdr &slot) { return std::atomic_ref<uint32_t>{slot.tp_status}; }

    UniqueFd socket_ = packet_socket();
    UniqueFd send_socket_ = packet_socket();
    uint8_t *ring_ = nullptr;
    size_t next_ = 0;
};

using Ports = std::vector<std::unique_ptr<Port>>;

/** Frames to one station go to the port beside it: 1 to 2, 3 to 4. Frames to many go to all other ports. */
void forward(Ports &ports, size_t from) {
    Batch batch;
    const size_t partner = from % 2 == 0 ? from - 1 : from + 1;
    for (size_t done = 0; done < kTurn; done += batch.size()) {
        batch.clear();
        const bool to_all = ports[from]->take(batch, kBatch);
        if (batch.size() == 0) {
            if (done == 0) {
                ports[from]->forget_error();
            }
            return;
        }
        for (size_t to = 0; to < ports.size(); ++to) {
            if (to != from && (to_all || to == partner)) {
                ports[to]->send(batch);
            }
        }
        ports[from]->release(batch.size());
    }
}

UniqueFd end_signal() {
    sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, SIGTERM);
    UniqueFd fd{signalfd(-1, &signals, SFD_CLOEXEC)};
    check(fd && sigprocmask(SIG_BLOCK, &signals, nullptr) == 0, "set up signals");
    return fd;
}

void watch(const UniqueFd &loop, int fd, size_t number) {
    epoll_event event{};
    event.events = EPOLLIN;
    event.data.u64 = number;
    check(epoll_ctl(loop.get(), EPOLL_CTL_ADD, fd, &event) == 0, "watch a descriptor");
}

void run(size_t user_ports) {
    std::vector<vdevice::io::CablePair> pairs{{"cpu0", "eth0"}};
    for (size_t port = 1; port <= user_ports; ++port) {
        pairs.push_back({"port" + std::to_string(port), "host" + std::to_string(port)});
    }
    const vdevice::io::Cables cables{pairs, kCableMark};
    const UniqueFd loop{epoll_create1(EPOLL_CLOEXEC)};
    const UniqueFd end = end_signal();
    Ports ports;
    for (const vdevice::io::CablePair &pair : pairs) {
        vdevice::io::make_transparent(pair.peer_side);
        ports.push_back(std::make_unique<Port>(pair.device_side));
        watch(loop, ports.back()->fd(), ports.size() - 1);
    }
    vdevice::io::set_interface_up(pairs.front().peer_side, true);
    watch(loop, end.get(), ports.size());
    std::puts("bench_forwarder: ready");
    std::fflush(stdout);
    for (std::array<epoll_event, kEventsAtOnce> events;;) {
        const int count = epoll_wait(loop.get(), events.data(), kEventsAtOnce, -1);
        for (int i = 0; i < count; ++i) {
            const size_t number = events[static_cast<size_t>(i)].data.u64;
            if (number == ports.size()) {
                return;
            }
            forward(ports, number);
        }
    }
}

}  // namespace
}  // namespace bench

int main(int argc, char **argv) {
    size_t user_ports = 0;
    if (argc != 2 || std::from_chars(argv[1], argv[1] + std::strlen(argv[1]), user_ports).ec != std::errc{} ||
        user_ports == 0 || user_ports % 2 != 0) {
        std::fputs("usage: bench_forwarder USER_PORTS, an even number\n", stderr);
        return 1;
    }
    try {
        bench::run(user_ports);
        return 0;
    } catch (const std::exception &problem) {
        std::fprintf(stderr, "bench_forwarder: %s\n", problem.what());
        return 1;
    }
}
