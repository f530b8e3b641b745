// Frames between wires and chip, and the timers.
#include "vdevice/device/device.h"

#include <sys/epoll.h>
#include <sys/timerfd.h>

#include "vdevice/io/error.h"

namespace vdevice {
namespace {

constexpr char kCpuInterface[] = "cpu0";
constexpr char kCpuPeer[] = "eth0";
constexpr char kPortInterface[] = "port";

std::string host_interface(int user_port) {
    return "host" + std::to_string(user_port);
}

}  // namespace

Device::Device(io::EventLoop &loop, driver::Board board, DeviceOptions options)
    : loop_{loop}, options_{std::move(options)}, chip_{*this}, driver_{chip_, board, [this] { return now(); }} {
    if (options_.cable_mark) {
        create_cables(*options_.cable_mark);
    }
    if (options_.line_rate) {
        chip_.keep_to_speeds();
    }
    add_wire(chip::Switch::kCpuPort, driver::Board::kCpuFrontPort);
    for (int user_port = 1; user_port <= board.user_ports; ++user_port) {
        add_wire(*board.chip_port(user_port), user_port);
    }
    monitor_.emplace([this](const io::LinkChange &change) { on_link_change(change); }, [this] { on_links_complete(); });
    monitor_->read_changes();
    loop_.add(monitor_->fd(), EPOLLIN, [this](uint32_t) { monitor_->read_changes(); });
    timer_ = loop_.every_second([this] { tick(); });
    start_departures();
}

std::string Device::interface_of(int user_port) const {
    const auto named = options_.interfaces.find(user_port);
    if (named != options_.interfaces.end()) {
        return named->second;
    }
    return user_port == driver::Board::kCpuFrontPort
               ? kCpuInterface
               : options_.port_interfaces.value_or(kPortInterface) + std::to_string(user_port);
}

void Device::create_cables(uint32_t mark) {
    std::vector<io::CablePair> pairs{{interface_of(driver::Board::kCpuFrontPort), kCpuPeer}};
    for (int user_port = 1; user_port <= board().user_ports; ++user_port) {
        pairs.push_back({interface_of(user_port), host_interface(user_port)});
    }
    created_cables_.emplace(pairs, mark);
    for (const io::CablePair &pair : pairs) {
        if (created_cables_->has_peer(pair)) {
            // Hosts must send whole checksums and real lengths too. The settings stay when the interface moves.
            io::make_transparent(pair.peer_side);
        }
    }
    if (created_cables_->has_peer(pairs.front())) {
        io::set_interface_up(kCpuPeer, true);
    }
}

void Device::add_watcher(chip::Watcher &watcher) {
    watchers_.add(watcher);
    chip_.set_watcher(&watchers_);
}

// Without a watcher the chip asks nobody.
void Device::remove_watcher(chip::Watcher &watcher) {
    watchers_.remove(watcher);
    chip_.set_watcher(watchers_.empty() ? nullptr : &watchers_);
}

chip::Time Device::now() const {
    return std::chrono::steady_clock::now() - started_;
}

/** A timer for frames that wait for a port's shaper or on a bad cable; without such frames it is not set. */
void Device::start_departures() {
    departure_timer_.reset(timerfd_create(CLOCK_MONOTONIC, TFD_NONBLOCK | TFD_CLOEXEC));
    if (!departure_timer_) {
        throw io::error_from_errno("make the timer of queued frames");
    }
    loop_.add(departure_timer_.get(), EPOLLIN, [this](uint32_t) {
        uint64_t expirations = 0;
        if (read(departure_timer_.get(), &expirations, sizeof(expirations)) == sizeof(expirations)) {
            catch_up();
        }
    });
}

void Device::catch_up() {
    send_together([this] {
        for (const auto &wire : wires_) {
            if (wire != nullptr && wire->bad != nullptr) {
                deliver(*wire, now());
            }
        }
        chip_.depart(now());
    });
}

// A time in the past lets the timer expire at once, a time of 0 stops it.
void Device::arm_departure() {
    itimerspec at{};
    if (const std::optional<chip::Time> departure = next_departure()) {
        const auto since_boot = (started_ + *departure).time_since_epoch();
        const auto whole = std::chrono::floor<std::chrono::seconds>(since_boot);
        at.it_value.tv_sec = static_cast<time_t>(whole.count());
        at.it_value.tv_nsec = static_cast<long>(std::chrono::nanoseconds{since_boot - whole}.count());
    }
    timerfd_settime(departure_timer_.get(), TFD_TIMER_ABSTIME, &at, nullptr);
    is_timer_late_ = false;
}

// On a busy line each frame changes the next departure; the last change of a batch counts.
void Device::departure_changed() {
    is_timer_late_ = true;
    if (!is_batching_) {
        arm_departure();
    }
}

uint32_t Device::hash_selection() {
    uint32_t hash = 0;
    driver_.user_switch_control_get(0, 0, driver::kHashSelection, &hash);
    return hash;
}

const Wire *Device::wire(int chip_port) const {
    return chip::Switch::has_port(chip_port) ? wires_[static_cast<size_t>(chip_port)].get() : nullptr;
}

void Device::add_wire(int chip_port, int user_port) {
    auto &wire = wires_[static_cast<size_t>(chip_port)];
    wire = std::make_unique<Wire>(chip_port, interface_of(user_port), options_.ring_slots);
    // Interfaces that come and go are opened when the link monitor reports them, also those that are there.
    if (!options_.port_interfaces || user_port == driver::Board::kCpuFrontPort) {
        open_wire(*wire);
    }
}

void Device::open_wire(Wire &wire) {
    wire.socket.open();
    io::make_transparent(wire.socket.interface_name());
    io::keep_from_machine(wire.socket.interface_name());
    wire.raised = false;
    apply_carrier(wire);
    set_cable(wire, !wire.pulled);
    loop_.add(wire.socket.fd(), EPOLLIN, [this, &wire](uint32_t) { receive_from(wire); });
}

void Device::close_wire(Wire &wire) {
    loop_.remove(wire.socket.fd());
    wire.socket.close();
    set_cable(wire, false);
}

// The chip is told when each frame came in, however long it has waited: so the daemon may be late, and the chip's rates
// and queues do the same. Frames of different ports may go back in time by little.
void Device::receive_from(Wire &wire) {
    const chip::Time received = now();
    const io::WallTime wall_now = std::chrono::system_clock::now();
    send_together([&] {
        if (wire.bad != nullptr) {
            receive_by_bad(wire, received, wall_now);
        } else {
            wire.socket.receive(batch_, [&](chip::Bytes frame, io::WallTime arrival) {
                chip_.receive(wire.in_order(received - (wall_now - arrival), received), wire.chip_port, frame);
            });
        }
        chip_.depart(received);
    });
}

template <typename Work>
void Device::send_together(Work work) {
    is_batching_ = true;
    work();
    is_batching_ = false;
    flush_queues();
    if (is_timer_late_) {
        arm_departure();
    }
}

void Device::transmit(int port, const chip::Frame &frame) {
    const auto &wire = wires_[static_cast<size_t>(port)];
    if (wire != nullptr && wire->bad != nullptr) {
        send_by_bad(*wire, frame);
    } else if (wire != nullptr) {
        send(*wire, frame);
    }
    if (!is_batching_) {
        flush_queues();
    }
}

void Device::send(Wire &wire, const chip::Frame &frame) {
    if (wire.socket.queue(frame)) {
        waiting_.push_back(&wire);
    }
}

void Device::flush_queues() {
    for (Wire *wire : waiting_) {
        wire->socket.flush();
    }
    waiting_.clear();
}

void Device::tick() {
    chip_.tick(now());
    for (const auto &wire : wires_) {
        if (wire != nullptr && !wire->problem.empty()) {
            reopen(*wire);
            monitor_->refresh();  // the interface may have its link already, and then reports no change
        }
    }
    monitor_->tick();
}

void Device::clear_counts(int chip_port) {
    chip_.clear_counts(chip_port);
    Wire &wire = *wires_[static_cast<size_t>(chip_port)];
    wire.socket.clear_counts();
    if (wire.bad != nullptr) {
        wire.bad->in.clear_counts();
        wire.bad->out.clear_counts();
    }
}

}  // namespace vdevice
