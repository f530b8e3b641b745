// The virtual device: the chip, its driver and the wires, driven by the event loop.
#pragma once

#include <array>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "vdevice/cable/conditions.h"
#include "vdevice/chip/pipeline/watchers.h"
#include "vdevice/chip/switch.h"
#include "vdevice/device/wire.h"
#include "vdevice/driver/driver.h"
#include "vdevice/io/event_loop.h"
#include "vdevice/io/interfaces.h"
#include "vdevice/io/link_monitor.h"
#include "vdevice/sockets/unique_fd.h"

namespace vdevice {

/** Something that the device or its daemon says, with data for those who search. Levels are those of syslog. */
struct Note {
    int level;
    const char *word; /**< the part that says it */
    std::string text;
    std::vector<std::pair<const char *, std::string>> fields = {};
};

/** Programs at the daemon's sockets. */
struct Clients {
    struct Socket {
        const char *name;
        size_t connected;
        uint64_t rejected;
    };
    struct Stream {
        const char *command;
        size_t readers;
    };
    std::array<Socket, 2> sockets;
    std::array<Stream, 3> streams;
};

/** What whoever starts a device chooses, besides its board. */
struct DeviceOptions {
    /** By user port, 0 for the CPU port; one that is not here is "port<n>", or "cpu0". */
    using InterfaceNames = std::map<int, std::string>;

    std::optional<uint32_t> cable_mark = {}; /**< of the interfaces that it makes, if it makes them */
    InterfaceNames interfaces = {};
    /** The name of user ports' interfaces before the number, for those that come and go as somebody else makes them. */
    std::optional<std::string> port_interfaces = {};
    size_t ring_slots = io::ReceiveRing::kSlots;
    bool line_rate = false; /**< ports send no faster than their speed */
};

class Device final : private chip::Sink {
  public:
    /**
     * Opens the interfaces of the ports, after making them and their peers "host1", "host2" ... and "eth0" if it
     * gets a mark for them. Throws an io::Error if that fails. The loop must outlive the device.
     */
    Device(io::EventLoop &loop, driver::Board board, DeviceOptions options);

    const chip::Switch &chip() const { return chip_; }
    const driver::Board &board() const { return driver_.board(); }
    /** The wire of a chip port, or null. */
    const Wire *wire(int chip_port) const;

    const driver::Driver &driver() const { return driver_; }
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
    /** From now on the user port's cable is like this. What waits on it passes at once, all counts begin anew. */
    void set_conditions(int user_port, const cable::Conditions &conditions);
    cable::Conditions conditions(int user_port) const;

    /** Clears the counts of a wired port, those of its interface and its cable included. */
    void clear_counts(int chip_port);
    /** Clears the counts of the chip's tables. */
    void clear_table_counts() { chip_.clear_table_counts(); }

    /** Drives an input pin of the chip, as the board does. */
    chip::Status drive_pin(int64_t pin, bool level) { return chip_.gpio().drive(pin, level); }

    chip::Time now() const;
    /** Sends the queued frames that are due, without waiting for the timer. */
    void catch_up();

    /** Called with each port whose link changes: by its cable, its host or its administrative state. */
    void add_link_listener(std::function<void(int chip_port)> listener) {
        link_listeners_.push_back(std::move(listener));
    }
    /** Adds to the log, and hands it to the listener. */
    void note(const Note &note);
    void set_note_listener(std::function<void(const Note &)> listener) { note_listener_ = std::move(listener); }
    /** What only the daemon knows, for who looks at the device. */
    void set_clients_reader(std::function<Clients()> reader) { clients_reader_ = std::move(reader); }
    std::optional<Clients> clients() const { return clients_reader_ ? std::optional{clients_reader_()} : std::nullopt; }
    /** Shows the watcher every frame from now on, until it is removed; it must outlive that. */
    void add_watcher(chip::Watcher &watcher);
    void remove_watcher(chip::Watcher &watcher);

  private:
    void create_cables(uint32_t mark);
    std::string interface_of(int user_port) const;
    void add_wire(int chip_port, int user_port);
    void open_wire(Wire &wire);
    void close_wire(Wire &wire);
    void receive_from(Wire &wire);
    void receive_by_bad(Wire &wire, chip::Time received, io::WallTime wall_now);
    void send_by_bad(Wire &wire, const chip::Frame &frame);
    void deliver(Wire &wire, chip::Time until);
    void deliver_out(Wire &wire, chip::Time until);
    void send(Wire &wire, const chip::Frame &frame);
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
    void note_wire(const Wire &wire, const std::string &what);
    void start_departures();
    void arm_departure();
    std::optional<chip::Time> next_departure() const;

    void transmit(int port, const chip::Frame &frame) override;
    void port_changed(int port) override;
    void departure_changed() override;
    void flush_queues();
    template <typename Work>
    void send_together(Work work);

    io::EventLoop &loop_;
    const DeviceOptions options_;
    std::chrono::steady_clock::time_point started_ = std::chrono::steady_clock::now();
    chip::PortSet announced_up_; /**< ports whose link was last announced as up */
    std::vector<std::function<void(int)>> link_listeners_;
    std::function<void(const Note &)> note_listener_;
    std::function<Clients()> clients_reader_;
    chip::Switch chip_;
    chip::Watchers watchers_;
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
