// Chooses a group's partner, and the ports that lead to it.
#include "switchd/lacp/selection.h"

#include <algorithm>
#include <tuple>
#include <vector>

namespace switchd::lacp {
namespace {

PartnerGroup partner_of(const Port &port) {
    return {port.status.partner.system, port.status.partner.key};
}

bool may_be_selected(const PortStatus &status) {
    const bool is_known =
        status.receive == ReceiveState::kCurrent ||
        // A partner that is late keeps its place for now. One from before the link was up has to say that it is there.
        (status.receive == ReceiveState::kExpired && status.selected != Selected::kUnselected);
    return is_known && status.partner.has(state::kAggregation) && status.partner.system.mac != Mac{} &&
           status.partner.system.mac != status.actor.system.mac;
}

auto rank_of(const Info &end) {
    return std::tuple(end.port_priority, end.port);
}

bool is_better_here(const Port *a, const Port *b) {
    return rank_of(a->status.actor) < rank_of(b->status.actor);
}

bool is_better_there(const Port *a, const Port *b) {
    return rank_of(a->status.partner) < rank_of(b->status.partner);
}

void sort_by_rank(std::vector<Port *> &ports) {
    if (ports.empty()) {
        return;
    }
    const PortStatus &any = ports.front()->status;
    std::stable_sort(ports.begin(), ports.end(),
                     any.actor.system < any.partner.system ? is_better_here : is_better_there);
}

}  // namespace

void select_ports(std::span<Port *const> ports, std::optional<PartnerGroup> &partner) {
    std::vector<Port *> chosen;
    for (Port *port : ports) {
        if (may_be_selected(port->status)) {
            chosen.push_back(port);
        } else {
            port->status.selected = Selected::kUnselected;
        }
    }
    const auto leads_there = [&](const Port *port) { return partner == partner_of(*port); };
    if (std::none_of(chosen.begin(), chosen.end(), leads_there)) {
        const auto best = std::min_element(chosen.begin(), chosen.end(), is_better_here);
        partner = best == chosen.end() ? std::nullopt : std::optional{partner_of(**best)};
    }
    const auto others = std::stable_partition(chosen.begin(), chosen.end(), leads_there);
    std::for_each(others, chosen.end(), [](Port *port) { port->status.selected = Selected::kUnselected; });
    chosen.erase(others, chosen.end());
    sort_by_rank(chosen);
    for (size_t i = 0; i < chosen.size(); ++i) {
        chosen[i]->status.selected = i < kMostSelected ? Selected::kSelected : Selected::kStandby;
    }
}

}  // namespace switchd::lacp
