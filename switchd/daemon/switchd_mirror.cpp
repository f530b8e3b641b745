// The kernel's bridges in the chip.
#include <adp/adp.h>

#include <algorithm>
#include <utility>

#include "switchd/daemon/switchd.h"

namespace switchd {
namespace {

/** Changes within this time are made together: netlink tells of each address and each port by itself. */
constexpr std::chrono::milliseconds kSettleTime{5};
/** A change of the groups can make another one. */
constexpr int kMostRounds = 8;

}  // namespace

void Switchd::reconcile_soon() {
    if (!std::exchange(is_due_, true)) {
        soon_.start_once(kSettleTime);
    }
}

void Switchd::reconcile() {
    is_due_ = false;
    follow_admin_states();
    for (int round = 0; round < kMostRounds; ++round) {
        const bool have_groups_changed = follow_groups();
        mirror();
        if (!have_groups_changed) {
            break;
        }
        groups_.remove_idle(now());
    }
}

void Switchd::mirror() {
    wanted_ = wanted_of(monitor_.state(), plan());
    Remarks remarks = wanted_.remarks;
    if (synced_since_ == Time{} || applier_->state() != wanted_.state) {
        synced_since_ = now();
    }
    const Remarks refused = applier_->apply(wanted_.state);
    remarks.insert(remarks.end(), refused.begin(), refused.end());
    if (!monitor_.is_complete()) {
        remarks.push_back(
            {"kernel", "has more interfaces, addresses or groups than adp-switchd keeps: the rest is ignored"});
    }
    note_remarks(std::move(remarks));
    tell_kernel(learned_.follow(monitor_.state(), wanted_));
    follow_vlans();
    traffic_.path().set_table(path_table());
}

Plan Switchd::plan() {
    Plan plan;
    plan.user_ports = configuration_.user_ports;
    plan.first_internal_vid = configuration_.first_internal_vid;
    plan.bridge_vids = configuration_.bridges;
    plan.new_queriers = new_queriers();
    for (const auto &[port, interface] : traffic_.interfaces().all()) {
        plan.interfaces[interface->index()] = port;
    }
    const std::set<uint32_t> idle = groups_.idle_members();
    for (const auto &[number, group] : configuration_.groups) {
        IntfSet &members = plan.groups[ADP_AGG_INTF(number)];
        for (const auto &[port, priority] : group.members) {
            members |= idle.contains(port) ? 0 : set_of(port);
        }
    }
    return plan;
}

/** Those that the hosts have not yet had the time to answer. Queriers that a killed daemon knew have their answers. */
std::set<int> Switchd::new_queriers() {
    const bool is_first = applier_ == nullptr;
    std::set<int> young;
    std::map<int, Time> since;
    for (const auto &[index, link] : monitor_.state().links) {
        if (!link.bridge || !link.bridge->querier) {
            continue;
        }
        const auto known = querying_since_.find(index);
        since[index] = known != querying_since_.end() ? known->second : is_first && was_in_use_ ? Time{} : now();
        if (now() - since[index] < std::chrono::seconds(link.bridge->query_response_seconds)) {
            young.insert(index);
        }
    }
    querying_since_ = std::move(since);
    young_queriers_ = young;
    return young;
}

/** The stations that 802.1X has let in have their entries in the VLAN of the port. */
void Switchd::follow_vlans() {
    for (const auto &[port, settings] : wanted_.state.ports) {
        note_failures(dot1x_.set_vlan(port, settings.pvid));
    }
}

void Switchd::add_path_ports(PathTable &table) const {
    const std::set<uint32_t> idle = groups_.idle_members();
    for (const auto &[port, settings] : wanted_.state.ports) {
        PathPort &row = table.ports[port];
        row.untagged_vid = settings.pvid;
        row.is_closed = dot1x_.is_closed(port);
        row.stations = dot1x_.stations(port);
    }
    for (const auto &[number, group] : configuration_.groups) {
        for (const auto &[port, priority] : group.members) {
            PathPort &row = table.ports[port];
            row.runs_lacp = group.mode == GroupMode::kLacp;
            if (!idle.contains(port)) {
                row.group = ADP_AGG_INTF(number);
                table.ports[row.group].untagged_vid = row.untagged_vid;
            }
        }
    }
}

void Switchd::add_path_groups(PathTable &table) const {
    const SwitchState &chip = applier_->state();
    table.has_unknown_ipv4 = chip.unknown_ipv4_groups == ADP_MCAST_MISS_TO_CPU;
    table.has_unknown_ipv6 = chip.unknown_ipv6_groups == ADP_MCAST_MISS_TO_CPU;
    for (const auto &[group, ports] : chip.groups) {
        table.groups.insert({group.vid, group.mac});
    }
}

PathTable Switchd::path_table() const {
    PathTable table;
    add_path_ports(table);
    add_path_groups(table);
    std::set<int> ours;
    for (const auto &[port, interface] : traffic_.interfaces().all()) {
        table.interfaces.insert(port);
        ours.insert(interface->index());
    }
    const KernelState &kernel = monitor_.state();
    for (const auto &[index, link] : kernel.links) {
        if (link.bridge || link.port || ours.contains(index)) {
            table.own_addresses.insert(link.mac);
        }
    }
    for (const auto &[key, address] : kernel.addresses) {
        if (address.kind == Address::Kind::kLocal) {
            table.own_addresses.insert(key.mac);
        }
    }
    return table;
}

void Switchd::tell_kernel(const LearnedChanges &changes) {
    std::vector<AddressChange> all;
    for (const auto &[addresses, is_learned] : {std::pair{&changes.removed, false}, std::pair{&changes.added, true}}) {
        for (const LearnedAddress &address : *addresses) {
            all.push_back({address.interface, address.vid, address.mac, is_learned});
        }
    }
    if (!all.empty()) {
        requests_.change_addresses(all);
    }
}
}  // namespace switchd
