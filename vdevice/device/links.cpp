// Links of the wires, in both directions: what the kernel reports of interfaces, what ports and cables do to them, and
// notes of it.
#include "vdevice/device/device.h"
#include "vdevice/io/error.h"

namespace vdevice {
namespace {

constexpr int kNoticeLevel = 5;

}  // namespace

// A wire is on the interface that has its name now. A report may be older than that, and others may have been lost.
void Device::on_link_change(const io::LinkChange &change) {
    for (const auto &wire : wires_) {
        const bool has_name = wire != nullptr && wire->socket.interface_name() == change.name;
        if (has_name || (wire != nullptr && wire->socket.interface_index() == change.index)) {
            update(*wire, change.exists && has_name);
            if (has_name && wire->socket.interface_index() == change.index) {
                set_link(*wire, change.link && !wire->pulled);
            }
        }
    }
}

/** Takes up an interface that has come, and lets go of one that is no longer the wire's. */
void Device::update(Wire &wire, bool exists) {
    if (wire.socket.is_open() && !wire.socket.is_current()) {
        lose(wire);
    }
    if (exists && !wire.socket.is_open()) {
        reopen(wire);
    }
}

void Device::on_links_complete() {
    for (const auto &wire : wires_) {
        if (wire != nullptr) {
            update(*wire, false);
        }
    }
    if (known_losses_ != monitor_->losses()) {
        known_losses_ = monitor_->losses();
        note({kNoticeLevel, "PORT",
              "the kernel had to drop reports of links, " + std::to_string(known_losses_) +
                  " times up to now; all links were read again"});
    }
}

void Device::reopen(Wire &wire) {
    std::string problem;
    try {
        open_wire(wire);
        note_wire(wire, "the interface is there");
    } catch (const io::Error &error) {
        wire.socket.close();
        problem = error.what();
    }
    if (wire.problem != problem && !problem.empty()) {
        note_wire(wire, problem);
    }
    wire.problem = problem;
}

void Device::lose(Wire &wire) {
    wire.problem.clear();
    close_wire(wire);
    note_wire(wire, "the interface is gone");
    set_link(wire, false);
}

void Device::set_link(Wire &wire, bool link) {
    if (chip_.port(wire.chip_port).link != link) {
        chip_.set_link(wire.chip_port, link);
        if (!link && wire.bad != nullptr) {
            wire.bad->in.cut();
            wire.bad->out.cut();
        }
        note_wire(wire, link ? "link up" : "link down");
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
    for (const auto &listener : link_listeners_) {
        listener(port);
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
        note_wire(*wire, error.what());  // the link monitor will report that the interface is gone
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

void Device::note(const Note &note) {
    driver_.log_line(note.level, 0, note.word, note.text.c_str());
    if (note_listener_) {
        note_listener_(note);
    }
}

void Device::note_wire(const Wire &wire, const std::string &what) {
    const std::string &interface = wire.socket.interface_name();
    note({kNoticeLevel,
          "PORT",
          interface + ": " + what,
          {{"PORT", std::to_string(board().user_port(wire.chip_port).value_or(driver::Board::kCpuFrontPort))},
           {"INTERFACE", interface}}});
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

}  // namespace vdevice
