// The ports' interfaces and links, aggregation groups, and port authorisation.
#include <adp/adp.h>

#include <algorithm>
#include <system_error>
#include <utility>

#include "switchd/daemon/small_file.h"
#include "switchd/daemon/switchd.h"
#include "switchd/ports/link_mode.h"
#include "text/printable.h"
#include "vdevice/io/error.h"

namespace switchd {
namespace {

/** The default of IEEE 802.1AX. */
constexpr uint16_t kSystemPriority = 0x8000;

}  // namespace

bool Switchd::is_port(const PortName &port) const {
    const uint32_t group = port.intf & ADP_INTF_INDEX_MASK;
    return port.intf <= configuration_.user_ports || (port.intf != group && configuration_.groups.contains(group));
}

PortName Switchd::port_named(const std::string &name, bool has_tag) const {
    const auto port = port_of_name(name);
    if (!port || !is_port(*port) || (port->vid != 0) != has_tag) {
        throw vdevice::io::Error{"there is no port '" + text::on_one_line(name.substr(0, 64)) + "'" +
                                 (has_tag ? " with a tag; one is named like swp3.100." : ".")};
    }
    if (port->vid >= configuration_.first_internal_vid) {
        throw vdevice::io::Error{"VLAN " + std::to_string(port->vid) + " is one of the switch's own."};
    }
    return *port;
}

void Switchd::open_interfaces() {
    std::set<PortName> wanted{asked_for_};
    wanted.insert(configuration_.interfaces.begin(), configuration_.interfaces.end());
    for (uint32_t port = 1; port <= configuration_.user_ports; ++port) {
        wanted.insert({port, 0});
    }
    for (const auto &[group, settings] : configuration_.groups) {
        wanted.insert({ADP_AGG_INTF(group), 0});
    }
    std::erase_if(wanted, [this](const PortName &port) { return !is_port(port); });
    note_failures(traffic_.interfaces().set_wanted(wanted));
    interfaces_there_ = traffic_.interfaces().all().size();
    set_mtus();
}

/** Those that the file has: of a port's interface and of all with its tags. */
void Switchd::set_mtus() {
    for (const auto &[port, interface] : traffic_.interfaces().all()) {
        const auto mtu = configuration_.port(port.intf).mtu;
        const int error = mtu ? requests_.set_link(interface->index(), {.mtu = mtu}) : 0;
        if (error != 0) {
            note_failures(
                {"cannot set the MTU of " + name_of(port) + ": " + std::generic_category().message(error) + "."});
        }
    }
}

std::string Switchd::add(const std::string &name) {
    const PortName port = port_named(name, true);
    asked_for_.insert(port);
    open_interfaces();
    if (traffic_.interfaces().find(port) == nullptr) {
        asked_for_.erase(port);
        throw vdevice::io::Error{"cannot make " + name_of(port) + ": the log says why."};
    }
    reconcile_soon();
    return name_of(port) + " is there.";
}

std::string Switchd::remove(const std::string &name) {
    const PortName port = port_named(name, true);
    const auto &configured = configuration_.interfaces;
    if (std::find(configured.begin(), configured.end(), port) != configured.end()) {
        throw vdevice::io::Error{name_of(port) + " is in the configuration file."};
    }
    if (asked_for_.erase(port) == 0) {
        throw vdevice::io::Error{"there is no " + name_of(port) + "."};
    }
    open_interfaces();
    reconcile_soon();
    return name_of(port) + " is gone.";
}

void Switchd::link_changed(uint32_t port, bool is_up) {
    uint32_t duplex = ADP_DUPLEX_HALF;
    uint32_t speed = 0;
    adp_get_phy_port_attr(port, ADP_ATTR_DUPLEX, &duplex);
    adp_get_phy_port_attr(port, ADP_ATTR_SPEED, &speed);
    groups_.set_link(port, is_up, duplex == ADP_DUPLEX_FULL, now());
    if (const Interface *interface = traffic_.interfaces().find({port, 0})) {
        show_link_mode(interface->index(), speed, duplex == ADP_DUPLEX_FULL);
    }
    traffic_.interfaces().set_carrier(port, is_up);
    if (!is_up) {
        note_failures(dot1x_.link_went_down(port));
    }
    reconcile_soon();
}

/** A port is disabled while its interface is down. */
void Switchd::follow_admin_states() {
    for (uint32_t port = 1; port <= configuration_.user_ports; ++port) {
        const Link *link = link_of({port, 0});
        if (link == nullptr) {
            continue;
        }
        uint32_t state = 0;
        if (!enabled_.contains(port) && adp_get_phy_port_attr(port, ADP_ATTR_ADMIN_STATE, &state) == ADP_OK) {
            enabled_[port] = state != 0;
        }
        if ((!enabled_.contains(port) || enabled_.at(port) != link->up) &&
            adp_set_phy_port_attr(port, ADP_ATTR_ADMIN_STATE, link->up ? 1 : 0, 0) == ADP_OK) {
            enabled_[port] = link->up;
        }
    }
}

lacp::SystemId Switchd::lacp_system() const {
    return {kSystemPriority, base_mac_};
}

void Switchd::open_groups() {
    const GroupsSettings settings{lacp_system(), configuration_.groups};
    const bool is_first = applier_ == nullptr;
    SavedGroups saved;
    if (is_first && was_in_use_) {
        saved = saved_of(text_in(group_file())).value_or(SavedGroups{});
    }
    groups_.configure(settings, now(), saved);
}

void Switchd::follow_groups_soon() {
    if (groups_.take_change()) {
        have_groups_changed_ = true;
        reconcile_soon();
    }
}

/** False if nothing has changed. */
bool Switchd::follow_groups() {
    const bool has_changed = groups_.take_change();
    if (!std::exchange(have_groups_changed_, false) && !has_changed) {
        return false;
    }
    for (const auto &[number, settings] : configuration_.groups) {
        traffic_.interfaces().set_carrier(ADP_AGG_INTF(number), groups_.is_up(number));
    }
    write_text(group_file(), text_of(groups_.saved()));
    return true;
}

std::map<uint32_t, Dot1xControl> Switchd::dot1x_ports() const {
    std::map<uint32_t, Dot1xControl> ports;
    for (const auto &[intf, port] : configuration_.ports) {
        if (port.dot1x != Dot1xControl::kNone) {
            ports[intf] = port.dot1x;
        }
    }
    return ports;
}

std::string Switchd::authorize(const std::string &name, const std::optional<Mac> &station, bool is_let_in) {
    const uint32_t intf = port_named(name, false).intf;
    std::string text = is_let_in ? dot1x_.authorize(intf, station) : dot1x_.unauthorize(intf, station);
    reconcile_soon();
    return text;
}
}  // namespace switchd
