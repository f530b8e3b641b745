// What adp-switchd status shows, as docs/reference/switchd.md describes it.
#include <adp/adp.h>
#include <fmt/format.h>

#include <algorithm>
#include <nlohmann/json.hpp>

#include "switchd/daemon/mac_text.h"
#include "switchd/daemon/statistics.h"
#include "switchd/daemon/switchd.h"

namespace switchd {
namespace {

using nlohmann::json;

const char *name_of(PortState state) {
    switch (state) {
        case PortState::kDisabled:
            return "disabled";
        case PortState::kListening:
            return "listening";
        case PortState::kLearning:
            return "learning";
        case PortState::kForwarding:
            return "forwarding";
        case PortState::kBlocking:
            return "blocking";
    }
    return "unknown";
}

uint32_t attribute(uint32_t port, uint32_t selector) {
    uint32_t value = 0;
    return adp_get_phy_port_attr(port, selector, &value) == ADP_OK ? value : 0;
}

/** "02:00:00:00:00:01 key 1 port 3 state 3d", as the protocol numbers them. */
std::string end_of(const lacp::Info &end) {
    return fmt::format("{} key {} port {} state {:02x}", text_of_mac(end.system.mac), end.key, end.port, end.state);
}

json member_of(uint32_t port, const MemberStatus &member) {
    json row{{"name", switchd::name_of(PortName{port, 0})}, {"link", member.is_up}, {"in_use", member.is_in_use}};
    if (!member.lacp) {
        row["state"] = member.is_in_use ? "in use" : "not in use";
        return row;
    }
    row["state"] = lacp::name_of(member.lacp->mux);
    row["receive"] = lacp::name_of(member.lacp->receive);
    row["selected"] = lacp::name_of(member.lacp->selected);
    row["actor"] = end_of(member.lacp->actor);
    row["partner"] = end_of(member.lacp->partner);
    row["actor_churn"] = lacp::name_of(member.lacp->actor_churn.state);
    row["partner_churn"] = lacp::name_of(member.lacp->partner_churn.state);
    row["lacpdus_in"] = member.lacp->counters.lacpdus_in;
    row["lacpdus_out"] = member.lacp->counters.lacpdus_out;
    row["illegal_in"] = member.lacp->counters.illegal_in;
    return row;
}

}  // namespace

const Link *Switchd::link_of(const PortName &port) const {
    const auto &interfaces = traffic_.interfaces().all();
    const auto interface = interfaces.find(port);
    if (interface == interfaces.end()) {
        return nullptr;
    }
    const auto link = monitor_.state().links.find(interface->second->index());
    return link == monitor_.state().links.end() ? nullptr : &link->second;
}

std::vector<uint32_t> Switchd::counted() const {
    std::vector<uint32_t> interfaces;
    for (uint32_t port = 1; port <= configuration_.user_ports; ++port) {
        interfaces.push_back(port);
    }
    for (const auto &[group, settings] : configuration_.groups) {
        interfaces.push_back(ADP_AGG_INTF(group));
    }
    return interfaces;
}

json Switchd::bridge_ports(int bridge) const {
    json rows = json::array();
    for (const auto &[at, place] : wanted_.places) {
        const auto link = monitor_.state().links.find(place.interface);
        if (place.bridge != bridge || link == monitor_.state().links.end() || !link->second.port) {
            continue;
        }
        const auto &interfaces = traffic_.interfaces().all();
        const bool is_tagged = std::any_of(
            interfaces.begin(), interfaces.end(),
            [index = place.interface](const auto &row) { return row.second->index() == index && row.first.vid != 0; });
        rows.push_back(
            {{"name", link->second.name}, {"state", name_of(link->second.port->state)}, {"tagged", is_tagged}});
    }
    return rows;
}

json Switchd::bridges() const {
    json rows = json::array();
    for (const auto &[index, vid] : wanted_.bridges) {
        const auto link = monitor_.state().links.find(index);
        if (link != monitor_.state().links.end() && link->second.bridge) {
            rows.push_back({{"name", link->second.name},
                            {"vid", vid},
                            {"stp", link->second.bridge->stp},
                            {"snooping", link->second.bridge->multicast_snooping},
                            {"ports", bridge_ports(index)}});
        }
    }
    return rows;
}

json Switchd::ports() const {
    json rows = json::array();
    for (const uint32_t intf : counted()) {
        const PortName port{intf, 0};
        json row = counters_of(intf);
        if (const Link *link = link_of(port)) {
            row["interface"] = link->name;
            row["up"] = link->up;
            const auto bridge = monitor_.state().links.find(link->master);
            row["bridge"] = bridge == monitor_.state().links.end() ? json() : json(bridge->second.name);
        }
        if (intf <= configuration_.user_ports) {
            row["link"] = links_->is_up(intf);
            row["speed"] = attribute(intf, ADP_ATTR_SPEED);
            row["duplex"] = attribute(intf, ADP_ATTR_DUPLEX) == ADP_DUPLEX_FULL ? "full" : "half";
            const auto settings = wanted_.state.ports.find(intf);
            row["vid"] = settings == wanted_.state.ports.end() ? 0 : settings->second.pvid;
            row["dot1x"] = dot1x_.status(intf);
        } else {
            row["link"] = groups_.is_up(intf & ADP_INTF_INDEX_MASK);
        }
        rows.push_back(std::move(row));
    }
    return rows;
}

json Switchd::groups() const {
    json rows = json::array();
    for (const auto &[number, group] : groups_.status()) {
        json row{{"name", switchd::name_of(PortName{ADP_AGG_INTF(number), 0})},
                 {"mode", group.settings.mode == GroupMode::kLacp ? "lacp" : "static"},
                 {"up", group.is_up},
                 {"partner", group.partner ? json(text_of_mac(group.partner->system.mac)) : json()},
                 {"fault", group.fault},
                 {"members", json::array()}};
        for (const auto &[port, member] : group.members) {
            row["members"].push_back(member_of(port, member));
        }
        rows.push_back(std::move(row));
    }
    return rows;
}

json Switchd::frame_counters() const {
    json sums{{"to_kernel", 0}, {"to_lacp", 0}, {"from_kernel", 0}};
    const auto add = [&](const std::string &key, uint64_t count) { sums[key] = sums.value(key, uint64_t{0}) + count; };
    std::vector<uint32_t> interfaces = counted();
    interfaces.push_back(0);
    for (const uint32_t intf : interfaces) {
        const PathCounters &counters = traffic_.path().counters(intf);
        add("to_kernel", counters.to_kernel);
        add("to_lacp", counters.to_lacp);
        add("from_kernel", counters.from_kernel);
        for (size_t i = 0; i < kDrops; ++i) {
            add("dropped_" + std::string{name_of(static_cast<Drop>(i))}, counters.drops[i]);
        }
    }
    sums["lost"] = traffic_.cpu_port().lost_frames();
    sums["foreign"] = traffic_.cpu_port().foreign_frames();
    return sums;
}

json Switchd::status() const {
    const auto since = std::chrono::duration_cast<std::chrono::milliseconds>(now() - synced_since_);
    const KernelMonitor::Counters counters = monitor_.counters();
    json remarks = json::array();
    for (const Remark &remark : remarks_) {
        remarks.push_back({{"subject", remark.subject}, {"text", remark.sentence}});
    }
    return {{"state",
             {{"synced", !is_due_},
              {"since_ms", since.count()},
              {"resyncs", counters.resyncs},
              {"messages", counters.messages},
              {"losses", counters.losses}}},
            {"bridges", bridges()},
            {"ports", ports()},
            {"groups", groups()},
            {"frames", frame_counters()},
            {"not_in_hardware", std::move(remarks)}};
}

}  // namespace switchd
