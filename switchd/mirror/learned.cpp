// The addresses that the chip has learned, in the kernel's bridges, and what is flushed on either side on the other.
#include "switchd/mirror/learned.h"

namespace switchd {
namespace {

AddressKey key_in_kernel(const VlanMac &key, const BridgePlace &place) {
    return {place.bridge, place.vid, key.mac};
}

LearnedAddress address_of(const VlanMac &key, const BridgePlace &place) {
    return {place.interface, place.vid, key.mac};
}

}  // namespace

/** Forgets what the kernel was told of those that are picked; it is told to forget them, too. */
template <typename Picks>
void LearnedAddresses::forget_if(Picks picks, LearnedChanges &changes) {
    std::erase_if(told_, [&](const auto &entry) {
        const auto &[key, told] = entry;
        if (!picks(key, told)) {
            return false;
        }
        changes.removed.push_back(address_of(key, told.place));
        leaving_[key] = told.place;
        return true;
    });
}

LearnedChanges LearnedAddresses::follow(const KernelState &kernel, const Wanted &wanted) {
    LearnedChanges changes;
    flush_stopped(wanted, changes);
    places_ = wanted.places;
    flush_changed_topologies(kernel, changes);
    compare(kernel, wanted);
    adopt(kernel);
    return changes;
}

void LearnedAddresses::flush_stopped(const Wanted &wanted, LearnedChanges &changes) {
    std::set<VlanPort> stopped;
    for (const auto &[at, before] : places_) {
        const auto now = wanted.places.find(at);
        if (before.forwards && (now == wanted.places.end() || !now->second.forwards)) {
            adp_del_mac_addr_by_vlan_intf(at.vid, at.intf, ADP_MAC_DYNAMIC);
            stopped.insert(at);
        }
    }
    forget_if([&](const VlanMac &, const Told &told) { return stopped.contains(told.at); }, changes);
}

void LearnedAddresses::flush_changed_topologies(const KernelState &kernel, LearnedChanges &changes) {
    std::set<int> changing;
    for (const auto &[index, link] : kernel.links) {
        if (link.bridge && link.bridge->topology_change) {
            changing.insert(index);
        }
    }
    std::set<uint16_t> flushed;
    for (const auto &[at, place] : places_) {
        if (changing.contains(place.bridge) && !changing_.contains(place.bridge) && flushed.insert(at.vid).second) {
            adp_del_mac_addr_by_vlan(at.vid, ADP_MAC_DYNAMIC);
        }
    }
    changing_ = std::move(changing);
    forget_if([&](const VlanMac &key, const Told &) { return flushed.contains(key.vid); }, changes);
}

void LearnedAddresses::compare(const KernelState &kernel, const Wanted &wanted) {
    std::set<VlanMac> gone;
    std::set<VlanMac> replaced;
    for (auto &[key, told] : told_) {
        const auto found = kernel.addresses.find(key_in_kernel(key, told.place));
        if (found == kernel.addresses.end()) {
            if (told.is_confirmed) {
                gone.insert(key);
            }
        } else if (found->second.kind != Address::Kind::kHardware) {
            replaced.insert(key);  // the kernel learned it itself, or a person has set it
        } else {
            told.is_confirmed = found->second.interface == told.place.interface;
        }
    }
    std::erase_if(leaving_, [&](const auto &entry) {
        return !kernel.addresses.contains(key_in_kernel(entry.first, entry.second));
    });
    std::erase_if(told_, [&](const auto &entry) { return replaced.contains(entry.first); });
    std::erase_if(gone, [&](const VlanMac &key) { return wanted.state.addresses.contains(key); });
    delete_from_chip(gone);
    std::erase_if(told_, [&](const auto &entry) { return gone.contains(entry.first); });
}

void LearnedAddresses::delete_from_chip(const std::set<VlanMac> &gone) {
    std::map<uint16_t, size_t> left;
    for (const auto &[key, told] : told_) {
        left[key.vid] += gone.contains(key) ? 0U : 1U;
    }
    std::set<uint16_t> flushed;
    for (const VlanMac &key : gone) {
        if (left[key.vid] != 0) {
            adp_del_mac_addr(key.mac.data(), key.vid, 0, 0);
        } else if (flushed.insert(key.vid).second) {
            adp_del_mac_addr_by_vlan(key.vid, ADP_MAC_DYNAMIC);
        }
    }
}

/** Entries that a daemon before this one has made. */
void LearnedAddresses::adopt(const KernelState &kernel) {
    std::map<std::pair<int, uint16_t>, VlanPort> ports;
    for (const auto &[at, place] : places_) {
        ports[{place.interface, place.vid}] = at;
    }
    for (const auto &[key, address] : kernel.addresses) {
        const auto at = ports.find({address.interface, key.vid});
        if (address.kind != Address::Kind::kHardware || at == ports.end() ||
            leaving_.contains({at->second.vid, key.mac})) {
            continue;
        }
        told_.try_emplace(VlanMac{at->second.vid, key.mac}, Told{at->second, places_.at(at->second), true, pass_});
    }
}

LearnedChanges LearnedAddresses::walk(size_t max_entries) {
    LearnedChanges changes;
    for (size_t i = 0; i < max_entries; ++i) {
        adp_l2_entry_t entry;
        const TableWalk::Step step = walk_.next(entry);
        if (step == TableWalk::Step::kEntry) {
            saw(entry, changes);
            continue;
        }
        if (step == TableWalk::Step::kEnd) {
            end_pass(changes);
        }
        break;
    }
    return changes;
}

void LearnedAddresses::saw(const adp_l2_entry_t &entry, LearnedChanges &changes) {
    const VlanPort at{entry.vid, intf_of(entry)};
    const auto place = places_.find(at);
    if (is_group(entry) || (entry.flags & ADP_MAC_FLAG_STATIC) != 0 || place == places_.end()) {
        return;
    }
    const VlanMac key{entry.vid, mac_of(entry)};
    const auto [told, is_new] = told_.try_emplace(key, Told{at, place->second, false, pass_});
    const bool is_moved = told->second.at != at || told->second.place.interface != place->second.interface;
    const bool is_lost = !told->second.is_confirmed && told->second.pass != pass_;
    if (is_new || is_moved || is_lost) {
        changes.added.push_back(address_of(key, place->second));
        leaving_.erase(key);
        told->second.is_confirmed = false;
    }
    told->second.at = at;
    told->second.place = place->second;
    told->second.pass = pass_;
}

void LearnedAddresses::end_pass(LearnedChanges &changes) {
    // What the kernel did not remove by now is found there and removed again.
    leaving_.clear();
    forget_if([&](const VlanMac &, const Told &told) { return told.pass != pass_; }, changes);
    ++pass_;
}

}  // namespace switchd
