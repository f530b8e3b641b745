// The virtual device: the chip, its driver and the wires, driven by the event loop.
#pragma once

#include <array>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

#include "vdevice/chip/switch.h"
#include "vdevice/device/wire.h"
#include "vdevice/driver/driver.h"
#include "vdevice/io/event_loop.h"
#include "vdevice/io/interfaces.h"
#include "vdevice/io/link_monitor.h"
#include "vdevice/sockets/unique_fd.h"

namespace vdevice {

/** What whoever starts a device chooses, besides its board. */
struct DeviceOptions {
    std::optional<uint32_t> cable_mark; /**< the device makes its interfaces, with this mark */
    size_t ring_slots = io::ReceiveRing::kSlots;
    bool line_rate = false; /**< ports send no faster than their speed */
};

class Device final : private chip::Sink {
  public:
    /**
     * Opens the interfaces "port1", "port2" ... and "cpu0", after making them and their peers "host1", "host2" ...
     * and "eth0" if there is a mark for them. Throws an io::Error if that fails. The loop must outlive the device.
     */
    Device(io::EventLoop &loop, driver::Board board, const DeviceOptions &options);

    const chip::Switch &chip() const { return chip_; }
    const driver::Board &board() const { return driver_.board(); }
    /** The wire of a chip port, or null. */
    const Wire *wire(int chip_port) const;

    /** The calls of the software that runs on the device. */
    DriverCalls &calls() { return driver_; }
    const driver::Journal &journal() const { return driver_.journal(); }
    driver::EventQueue &events() { return driver_.events(); }
    /** The switch control that selects the hash of trunks. */
    uint32_t hash_selection();
    /** Sets what sys_trace_get() answers. */
    void set_trace(int32_t value) { driver_.set_trace(value); }

    /** Takes a user port's cable out, or puts it back in. The host at its other end sees its carrier go and come. */
    void pull(int user_port);
    void plug(int user_port);

    /** Clears the counts of a wired port, those of its interface included. */
    void clear_counts(int chip_port);
    /** Clears the counts of the chip's tables. */
    void clear_table_counts() { chip_.clear_table_counts(); }

    /** Drives an input pin of the chip, as the board does. */
    chip::Status drive_pin(int64_t pin, bool level) { return chip_.gpio().drive(pin, level); }

    chip::Time now() const;
    /** Sends the queued frames that are due, without waiting for the timer. */
    void catch_up();

    /** Called with each port whose link changes: by its cable, its host or its administrative state. */
    void set_link_listener(std::function<void(int chip_port)> listener) { link_listener_ = std::move(listener); }

  private:
    void create_cables(uint32_t mark);
    void add_wire(int chip_port, const std::string &interface_name, size_t ring_slots);
    void open_wire(Wire &wire);
    void close_wire(Wire &wire);
    void receive_from(Wire &wire);
    void on_link_change(const io::LinkChange &change);
    void on_links_complete();
    void update(Wire &wire, bool exists);
    void reopen(Wire &wire);
    void lose(Wire &wire);
    void tick();
    void set_link(Wire &wire, bool link);
    void set_cable(const Wire &wire, bool cable);
    void apply_carrier(Wire &wire);
    void announce_link(int port);
    void note(const Wire &wire, const std::string &what);
    void log(const std::string &text);
    void start_departures();
    void arm_departure();

    void transmit(int port, const chip::Frame &frame) override;
    void port_changed(int port) override;
    void departure_changed() override;
    void flush_queues();
    template <typename Work>
    void send_together(Work work);

    io::EventLoop &loop_;
    std::chrono::steady_clock::time_point started_ = std::chrono::steady_clock::now();
    chip::PortSet announced_up_; /**< ports whose link was last announced as up */
    std::function<void(int)> link_listener_;
    chip::Switch chip_;
    driver::Driver driver_;
    std::optional<io::Cables> created_cables_;
    std::array<std::unique_ptr<Wire>, chip::Switch::kPorts> wires_;
    std::vector<Wire *> waiting_; /**< wires with queued frames */
    bool is_batching_ = false;    /**< frames are collected and sent together at the end */
    bool is_timer_late_ = false;  /**< the next departure has changed since its timer was set */
    io::ReceiveBatch batch_;
    UniqueFd timer_;
    UniqueFd departure_timer_;
    std::optional<io::LinkMonitor> monitor_;
    uint64_t known_losses_ = 0; /**< of the monitor */
};

}  // namespace vdevice
