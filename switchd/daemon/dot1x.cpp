// Keeps the ports as their control and whoever is let in want them.
#include "switchd/daemon/dot1x.h"

#include <iterator>
#include <nlohmann/json.hpp>
#include <utility>

#include "switchd/daemon/dot1x_calls.h"
#include "switchd/daemon/mac_text.h"
#include "switchd/ports/port_name.h"
#include "vdevice/io/error.h"

namespace switchd {
namespace {

using vdevice::io::Error;

std::string port_text(uint32_t intf) {
    return name_of({intf, 0});
}

void add(std::vector<std::string> &failures, std::optional<std::string> failure) {
    if (failure) {
        failures.push_back(std::move(*failure));
    }
}

void check(const std::optional<std::string> &failure) {
    if (failure) {
        throw Error{*failure};
    }
}

Dot1xControl control_of(const std::map<uint32_t, Dot1xControl> &ports, uint32_t intf) {
    const auto found = ports.find(intf);
    return found == ports.end() ? Dot1xControl::kNone : found->second;
}

/** Makes the hardware as wanted. */
std::optional<std::string> apply(uint32_t intf, bool is_to_be_open, std::optional<bool> &is_open) {
    if (is_open == is_to_be_open) {
        return std::nullopt;
    }
    auto failure = is_to_be_open ? dot1x_calls::open_port(intf) : dot1x_calls::close_port(intf);
    is_open = failure ? std::nullopt : std::optional{is_to_be_open};
    return failure;
}

}  // namespace

Dot1x::Dot1x(std::string file) : file_{std::move(file)} {}

void Dot1x::adopt() {
    adopted_ = read_records(file_);
}

void Dot1x::save() const {
    if (file_.empty()) {
        return;
    }
    Dot1xRecords records;
    for (const auto &[intf, port] : ports_) {
        records[intf] = port.who;
    }
    write_records(file_, records);
}

uint16_t Dot1x::vid_of(uint32_t intf) const {
    const auto found = vids_.find(intf);
    return found == vids_.end() ? uint16_t{0} : found->second;
}

Dot1x::Port &Dot1x::controlled(uint32_t intf) {
    const auto found = ports_.find(intf);
    if (found == ports_.end()) {
        throw Error{port_text(intf) + " is not controlled by 802.1X: the configuration has no 'dot1x' in [ports." +
                    port_text(intf) + "]."};
    }
    return found->second;
}

void Dot1x::forget_all(uint32_t intf, Port &port) {
    const uint16_t vid = vid_of(intf);
    for (const Mac &station : port.who.stations) {
        if (port.control == Dot1xControl::kStations && vid != 0) {
            dot1x_calls::remove_entry(intf, vid, station);  // never fails: the entry may be gone with its VLAN
        }
    }
    port.who = {};
}

/** Opens what is no longer controlled so. A port that cannot be opened waits for the next time. */
void Dot1x::release(const std::map<uint32_t, Dot1xControl> &ports, Sentences &failures) {
    for (const auto &[intf, who] : adopted_) {
        if (control_of(ports, intf) == Dot1xControl::kNone) {
            add(failures, dot1x_calls::open_port(intf));  // the killed daemon had closed it
        }
    }
    for (auto row = ports_.begin(); row != ports_.end();) {
        auto &[intf, port] = *row;
        const Dot1xControl control = control_of(ports, intf);
        if (control == port.control) {
            ++row;
            continue;
        }
        forget_all(intf, port);
        std::optional<std::string> failure;
        if (control == Dot1xControl::kNone) {
            failure = apply(intf, true, port.is_open);
        }
        add(failures, failure);
        row = failure ? std::next(row) : ports_.erase(row);
    }
}

Dot1x::Sentences Dot1x::configure(const std::map<uint32_t, Dot1xControl> &ports) {
    Sentences failures;
    release(ports, failures);
    for (const auto &[intf, control] : ports) {
        if (control == Dot1xControl::kNone) {
            continue;
        }
        const auto [row, is_new] = ports_.try_emplace(intf);
        Port &port = row->second;
        if (is_new) {
            port.control = control;
            port.who = adopted_[intf];
            port.is_open = port.is_to_be_open() ? std::optional{true} : std::nullopt;
        }
        add(failures, apply(intf, port.is_to_be_open(), port.is_open));
    }
    adopted_.clear();
    save();
    return failures;
}

Dot1x::Sentences Dot1x::set_vlan(uint32_t intf, uint16_t vid) {
    Sentences failures;
    const uint16_t before = std::exchange(vids_[intf], vid);
    const auto found = ports_.find(intf);
    if (before == vid || found == ports_.end() || found->second.control != Dot1xControl::kStations) {
        return failures;
    }
    for (const Mac &station : found->second.who.stations) {
        if (before != 0) {
            dot1x_calls::remove_entry(intf, before, station);
        }
        if (vid != 0) {
            add(failures, dot1x_calls::add_entry(intf, vid, station));
        }
    }
    return failures;
}

Dot1x::Sentences Dot1x::link_went_down(uint32_t intf) {
    Sentences failures;
    const auto found = ports_.find(intf);
    if (found != ports_.end() && found->second.has_anybody()) {
        forget_all(intf, found->second);
        add(failures, apply(intf, false, found->second.is_open));
        save();
    }
    return failures;
}

void Dot1x::let_in(uint32_t intf, Port &port, const Mac &station) {
    auto &stations = port.who.stations;
    if (!is_station_address(station)) {
        throw Error{text_of_mac(station) + " is not the address of a station."};
    }
    if (stations.count(station) == 0 && stations.size() >= kMaxStations) {
        throw Error{"there are " + std::to_string(kMaxStations) + " stations on " + port_text(intf) + " already."};
    }
    const bool is_new = stations.insert(station).second;
    std::optional<std::string> failure;
    if (port.control == Dot1xControl::kPort) {
        failure = apply(intf, true, port.is_open);
    } else if (const uint16_t vid = vid_of(intf); vid != 0) {
        failure = dot1x_calls::add_entry(intf, vid, station);
    }
    if (failure && is_new) {
        stations.erase(station);
    }
    check(failure);
}

std::string Dot1x::authorize(uint32_t intf, const std::optional<Mac> &station) {
    Port &port = controlled(intf);
    std::string said = port_text(intf) + " is open.";
    if (station) {
        let_in(intf, port, *station);
        said = text_of_mac(*station) + " is let in on " + port_text(intf) + ".";
    } else if (port.control == Dot1xControl::kStations) {
        throw Error{port_text(intf) + " lets in single stations: name the address of one."};
    } else {
        check(apply(intf, true, port.is_open));
        port.who.by_hand = true;
    }
    save();
    return said;
}

std::string Dot1x::unauthorize(uint32_t intf, const std::optional<Mac> &station) {
    Port &port = controlled(intf);
    std::string said = port_text(intf) + " is closed.";
    if (!station) {
        forget_all(intf, port);
    } else {
        const bool was_in = port.who.stations.erase(*station) != 0;
        if (const uint16_t vid = vid_of(intf); was_in && port.control == Dot1xControl::kStations && vid != 0) {
            dot1x_calls::remove_entry(intf, vid, *station);
        }
        said = text_of_mac(*station) + (was_in ? " is no longer let in on " : " was not let in on ") + port_text(intf) +
               ".";
    }
    save();
    check(apply(intf, port.is_to_be_open(), port.is_open));
    return said;
}

bool Dot1x::is_closed(uint32_t intf) const {
    const auto found = ports_.find(intf);
    return found != ports_.end() && !found->second.is_to_be_open();
}

std::set<Mac> Dot1x::stations(uint32_t intf) const {
    const auto found = ports_.find(intf);
    return found == ports_.end() ? std::set<Mac>{} : found->second.who.stations;
}

bool Dot1x::is_entry(uint16_t vid, const Mac &station) const {
    for (const auto &[intf, port] : ports_) {
        if (port.control == Dot1xControl::kStations && vid_of(intf) == vid && port.who.stations.count(station) != 0) {
            return true;
        }
    }
    return false;
}

nlohmann::json Dot1x::status(uint32_t intf) const {
    const auto found = ports_.find(intf);
    if (found == ports_.end()) {
        return nullptr;
    }
    const Port &port = found->second;
    nlohmann::json stations = nlohmann::json::array();
    for (const Mac &station : port.who.stations) {
        stations.push_back(text_of_mac(station));
    }
    return {{"control", port.control == Dot1xControl::kPort ? "port" : "stations"},
            {"open", port.is_open.value_or(false)},
            {"stations", stations}};
}

}  // namespace switchd
