// Frames between wires and chip, links in both directions, and the timers.
#include "vdevice/device/device.h"

#include <sys/epoll.h>
#include <sys/timerfd.h>

#include "vdevice/io/error.h"

namespace vdevice {
namespace {

constexpr char kCpuInterface[] = "cpu0";
constexpr char kCpuPeer[] = "eth0";
constexpr time_t kTickSeconds = 1;
constexpr int32_t kNoticeLevel = 5;

std::string port_interface(int user_port) {
    return "port" + std::to_string(user_port);
}
std::string host_interface(int user_port) {
    return "host" + std::to_string(user_port);
}

}  // namespace

Device::Device(io::EventLoop &loop, driver::Board board, const DeviceOptions &options)
    : loop_{loop}, chip_{*this}, driver_{chip_, board, [this] { return now(); }} {
    if (options.create_interfaces) {
        create_cables();
    }
    if (options.line_rate) {
        chip_.keep_to_speeds();
    }
    add_wire(chip::Switch::kCpuPort, kCpuInterface, options.ring_slots);
    for (int user_port = 1; user_port <= board.user_ports; ++user_port) {
        add_wire(*board.chip_port(user_port), port_interface(user_port), options.ring_slots);
    }
    monitor_.emplace([this](const io::LinkChange &change) { on_link_change(change); });
    monitor_->read_changes();
    loop_.add(monitor_->fd(), EPOLLIN, [this](uint32_t) { monitor_->read_changes(); });
    start_clock();
    start_departures();
}

void Device::create_cables() {
    std::vector<io::CablePair> pairs{{kCpuInterface, kCpuPeer}};
    for (int user_port = 1; user_port <= board().user_ports; ++user_port) {
        pairs.push_back({port_interface(user_port), host_interface(user_port)});
    }
    created_cables_.emplace(pairs);
    for (const io::CablePair &pair : pairs) {
        // Hosts must send whole checksums and real lengths too. The settings stay when the interface moves.
        io::make_transparent(pair.peer_side);
    }
    io::set_interface_up(kCpuPeer, true);
}

chip::Time Device::now() const {
    return std::chrono::steady_clock::now() - started_;
}

void Device::start_clock() {
    timer_.reset(timerfd_create(CLOCK_MONOTONIC, TFD_NONBLOCK | TFD_CLOEXEC));
    const itimerspec every_tick{{kTickSeconds, 0}, {kTickSeconds, 0}};
    if (!timer_ || timerfd_settime(timer_.get(), 0, &every_tick, nullptr) != 0) {
        throw io::error_from_errno("start the device's clock");
    }
    loop_.add(timer_.get(), EPOLLIN, [this](uint32_t) {
        uint64_t expirations = 0;
        if (read(timer_.get(), &expirations, sizeof(expirations)) == sizeof(expirations)) {
            chip_.tick(now());
        }
    });
}

/** A timer for frames that wait for a port's shaper; without such frames it is not set. */
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
    send_together([this] { chip_.depart(now()); });
}

// A time in the past lets the timer expire at once, a time of 0 stops it.
void Device::arm_departure() {
    itimerspec at{};
    if (const std::optional<chip::Time> departure = chip_.next_departure()) {
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

void Device::add_wire(int chip_port, const std::string &interface_name, size_t ring_slots) {
    auto &wire = wires_[static_cast<size_t>(chip_port)];
    wire = std::make_unique<Wire>(chip_port, interface_name, ring_slots);
    open_wire(*wire);
}

void Device::open_wire(Wire &wire) {
    wire.socket.open();
    io::make_transparent(wire.socket.interface_name());
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
        wire.socket.receive(batch_, [&](chip::Bytes frame, io::WallTime arrival) {
            chip_.receive(wire.in_order(received - (wall_now - arrival), received), wire.chip_port, frame);
        });
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
    if (wire != nullptr && wire->socket.queue(frame)) {
        waiting_.push_back(wire.get());
    }
    if (!is_batching_) {
        flush_queues();
    }
}

void Device::flush_queues() {
    for (Wire *wire : waiting_) {
        wire->socket.flush();
    }
    waiting_.clear();
}

void Device::on_link_change(const io::LinkChange &change) {
    for (const auto &wire : wires_) {
        if (wire == nullptr || wire->socket.interface_name() != change.name) {
            continue;
        }
        if (!change.exists) {
            // Its peer's namespace has ended, and the pair with it.
            if (wire->socket.is_open() && wire->socket.interface_index() == change.index) {
                close_wire(*wire);
                note(*wire, "the interface is gone");
                set_link(*wire, false);
            }
            return;
        }
        if (!wire->socket.is_open()) {
            try {
                open_wire(*wire);
                note(*wire, "the interface is back");
            } catch (const io::Error &error) {
                note(*wire, error.what());
            }
            if (!change.link) {
                return;  // opening has raised it, and may have reported a newer link already
            }
        }
        set_link(*wire, change.link && wire->socket.is_open() && !wire->pulled);
        return;
    }
}

void Device::set_link(Wire &wire, bool link) {
    if (chip_.port(wire.chip_port).link != link) {
        chip_.set_link(wire.chip_port, link);
        note(wire, link ? "link up" : "link down");
    }
}

void Device::set_cable(const Wire &wire, bool cable) {
    chip_.change_port(wire.chip_port, [&](chip::Port &port) {
        port.cable = cable;
        return chip::Status::kOk;
    });
}

void Device::announce_link(int port) {
    const bool up = chip_.port(port).is_up();
    if (announced_up_.has(port) == up) {
        return;
    }
    if (up) {
        announced_up_.add(port);
    } else {
        announced_up_.remove(port);
    }
    if (link_listener_) {
        link_listener_(port);
    }
}

void Device::port_changed(int port) {
    announce_link(port);
    const auto &wire = wires_[static_cast<size_t>(port)];
    if (wire == nullptr) {
        return;
    }
    try {
        apply_carrier(*wire);
    } catch (const io::Error &error) {
        note(*wire, error.what());  // the link monitor will report that the interface is gone
    }
}

// The host at the other end has a carrier while the cable is in and the port enabled.
void Device::apply_carrier(Wire &wire) {
    const bool raised = !wire.pulled && chip_.port(wire.chip_port).enabled;
    if (!wire.socket.is_open() || wire.raised == raised) {
        return;
    }
    io::set_interface_up(wire.socket.interface_name(), raised);
    wire.raised = raised;
    if (monitor_) {
        // The carrier may be there already; then the kernel reported it before it answered the request.
        monitor_->read_changes();
    }
}

void Device::note(const Wire &wire, const std::string &what) {
    const std::string text = wire.socket.interface_name() + ": " + what;
    driver_.log_line(kNoticeLevel, 0, "PORT", text.c_str());
}

void Device::pull(int user_port) {
    Wire &wire = *wires_[static_cast<size_t>(*board().chip_port(user_port))];
    wire.pulled = true;
    set_cable(wire, false);
    set_link(wire, false);
    apply_carrier(wire);
}

void Device::plug(int user_port) {
    Wire &wire = *wires_[static_cast<size_t>(*board().chip_port(user_port))];
    wire.pulled = false;
    set_cable(wire, wire.socket.is_open());
    apply_carrier(wire);
}

void Device::clear_counts(int chip_port) {
    chip_.clear_counts(chip_port);
    wires_[static_cast<size_t>(chip_port)]->socket.clear_counts();
}

}  // namespace vdevice
