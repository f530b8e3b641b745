// Calls on a group, and what of them failed.
#include "switchd/groups/trunk.h"

#include <utility>

namespace switchd {
namespace {

uint32_t bits_of(const std::set<uint32_t> &ports) {
    uint32_t bits = 0;
    for (const uint32_t port : ports) {
        bits |= 1U << port;
    }
    return bits;
}

uint32_t count_of(const std::vector<uint32_t> &ports) {
    return static_cast<uint32_t>(ports.size());
}

}  // namespace

bool Trunk::did(std::string_view what, adp_status_t result) {
    failures_.erase(what);
    if (result != ADP_OK) {
        failures_.emplace(what, result);
    }
    return result == ADP_OK;
}

std::string Trunk::fault() const {
    if (failures_.empty()) {
        return "";
    }
    const auto &[what, result] = *failures_.begin();
    return "The chip does not " + std::string(what) + " (" + std::to_string(result) + ").";
}

void Trunk::create() {
    has_strangers_ = adp_create_agg_group(intf_) != ADP_OK;
}

void Trunk::configure(const std::set<uint32_t> &configured, uint32_t balance) {
    const uint32_t before = bits_of(configured_);
    const uint32_t after = bits_of(configured);
    adp_del_agg_standby_member(intf_, before & ~after, 0);
    adp_add_agg_standby_member(intf_, after & ~before, 0);
    configured_ = configured;
    if (balance != balance_) {
        balance_ = balance;
        set_balance();
    }
}

void Trunk::set_balance() {
    did("set the group's load balancing", adp_set_agg_loadbalance(intf_, balance_));
}

bool Trunk::add(const std::vector<uint32_t> &ports) {
    const bool added = did("add members to the group", adp_add_agg_member(intf_, count_of(ports), ports.data()));
    if (added) {
        members_.insert(ports.begin(), ports.end());
        has_strangers_ = false;
    } else if (members_.empty()) {
        make_again();  // for the next attempt, if the chip has not got it
    }
    return added;
}

bool Trunk::remove(const std::vector<uint32_t> &ports) {
    const bool removed = did("remove members from the group", adp_del_agg_member(intf_, count_of(ports), ports.data()));
    if (removed) {
        for (const uint32_t port : ports) {
            members_.erase(port);
        }
        set_balance();
    }
    return removed;
}

void Trunk::change_link(uint32_t port, bool is_up) {
    did("follow a member's link", adp_agg_linkscan_handle(port, is_up ? 1 : 0, nullptr));
    if (!is_up) {
        set_balance();
    }
}

void Trunk::make_again() {
    create();
    configure(std::exchange(configured_, {}), std::exchange(balance_, 0));
}

void Trunk::clear_strangers() {
    if (has_strangers_) {
        destroy();
        make_again();
        has_strangers_ = false;
    }
}

bool Trunk::destroy() {
    const bool destroyed = did("remove the group", adp_delete_agg_group(intf_));
    if (destroyed) {
        members_.clear();
    }
    return destroyed;
}

}  // namespace switchd
