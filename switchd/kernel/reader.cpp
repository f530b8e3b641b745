// Links and addresses, and which message is about what.
#include "switchd/kernel/reader.h"

#include <linux/neighbour.h>
#include <sys/socket.h>

#include <utility>

#include "switchd/kernel/link_message.h"

namespace switchd {

using netlink::Attributes;
using netlink::Octets;

namespace {

constexpr uint16_t kVids = 4096;

Address::Kind kind_of(const ndmsg &header) {
    if ((header.ndm_state & NUD_PERMANENT) != 0) {
        return Address::Kind::kLocal;
    }
    if ((header.ndm_flags & NTF_EXT_LEARNED) != 0) {
        return Address::Kind::kHardware;
    }
    return (header.ndm_state & NUD_NOARP) != 0 ? Address::Kind::kStatic : Address::Kind::kLearned;
}

}  // namespace

bool Reader::apply(Octets datagram) {
    bool changed = false;
    while (const auto message = netlink::take_message(datagram)) {
        changed = apply(*message) || changed;
    }
    return changed;
}

bool Reader::apply(const netlink::Message &message) {
    ++messages_;
    switch (message.header.nlmsg_type) {
        case RTM_NEWLINK:
            return apply_link(message.payload, true);
        case RTM_DELLINK:
            ++removals_;
            return apply_link(message.payload, false);
        case RTM_NEWNEIGH:
            return apply_address(message.payload, true);
        case RTM_DELNEIGH:
            ++removals_;
            return apply_address(message.payload, false);
        case RTM_NEWMDB:
        case RTM_GETMDB:  // so the kernel calls what it dumps
            return apply_groups(message.payload, true);
        case RTM_DELMDB:
            ++removals_;
            return apply_groups(message.payload, false);
        default:
            return false;
    }
}

bool Reader::has_room() const {
    const auto is_loose = [](size_t used, size_t limit) { return used <= limit - limit / 4; };
    return is_loose(state_.links.size(), limits_.links) && is_loose(state_.addresses.size(), limits_.addresses) &&
           is_loose(state_.groups.size(), limits_.groups) && is_loose(memberships_.size(), limits_.memberships);
}

bool Reader::refresh_bridges(const KernelState &newer) {
    bool changed = false;
    for (auto &[index, link] : state_.links) {
        const auto found = newer.links.find(index);
        if (!link.bridge || found == newer.links.end() || !found->second.bridge) {
            continue;
        }
        const Bridge before = *link.bridge;
        link.bridge->topology_change = found->second.bridge->topology_change;
        link.bridge->other_querier = found->second.bridge->other_querier;
        link.bridge->other_mld_querier = found->second.bridge->other_mld_querier;
        changed = changed || *link.bridge != before;
    }
    return changed;
}

bool Reader::ignore() {
    ++ignored_;
    return false;
}

bool Reader::apply_link(Octets body, bool is_new) {
    const auto info = netlink::take<ifinfomsg>(body);
    if (!info || info->ifi_index <= 0) {
        return false;
    }
    // A bridge reports its ports as a family of its own: leaving a bridge is no end of an interface.
    if (info->ifi_family == AF_BRIDGE) {
        return is_new ? set_bridge_member(info->ifi_index, Attributes{body}) : leave_bridge(info->ifi_index);
    }
    if (info->ifi_family != AF_UNSPEC) {
        return false;
    }
    return is_new ? set_link(*info, Attributes{body}) : remove_link(info->ifi_index);
}

bool Reader::set_link(const ifinfomsg &info, const Attributes &attributes) {
    auto link = link_of(info, attributes);
    if (!link || link->master == info.ifi_index) {
        return false;
    }
    const auto found = state_.links.find(info.ifi_index);
    if (found == state_.links.end()) {
        return state_.links.size() < limits_.links ? state_.links.emplace(info.ifi_index, std::move(*link)).second
                                                   : ignore();
    }
    Link &known = found->second;
    const bool has_left = known.master != link->master && leave_bridge(info.ifi_index);
    link->vlans = known.vlans;
    stale_ = stale_ ||
             (known.bridge && link->bridge && known.bridge->multicast_snooping != link->bridge->multicast_snooping);
    if (known == *link) {
        return has_left;
    }
    known = std::move(*link);
    return true;
}

bool Reader::set_bridge_member(int index, const Attributes &attributes) {
    auto member = bridge_member_of(attributes);
    const auto found = state_.links.find(index);
    if (!member || found == state_.links.end()) {
        return false;
    }
    Link &link = found->second;
    const Link before = link;
    if (member->bridge != index) {
        if (link.master != member->bridge) {
            leave_bridge(index);
        }
        link.master = member->bridge;
        link.port = member->port ? member->port : link.port;
    }
    link.vlans = std::move(member->vlans);
    return link != before;
}

bool Reader::leave_bridge(int index) {
    const auto found = state_.links.find(index);
    if (found == state_.links.end() || found->second.master == 0) {
        return false;
    }
    forget(index);
    found->second.master = 0;
    found->second.port.reset();
    found->second.vlans.clear();
    return true;
}

bool Reader::remove_link(int index) {
    bool changed = forget(index);
    for (const auto &[other, link] : state_.links) {
        changed = (link.master == index && leave_bridge(other)) || changed;
    }
    return state_.links.erase(index) != 0 || changed;
}

bool Reader::forget(int index) {
    const size_t addresses = std::erase_if(state_.addresses, [index](const auto &entry) {
        return entry.first.bridge == index || entry.second.interface == index;
    });
    return forget_memberships(index) || addresses != 0;
}

bool Reader::apply_address(Octets body, bool is_new) {
    const auto header = netlink::take<ndmsg>(body);
    // What a driver has in its own filter is no entry of a bridge.
    if (!header || header->ndm_family != AF_BRIDGE || header->ndm_ifindex <= 0 || (header->ndm_flags & NTF_SELF) != 0) {
        return false;
    }
    const Attributes attributes{body};
    const auto mac = mac_in(attributes.payload(NDA_LLADDR));
    const AddressKey key{attributes.number<int32_t>(NDA_MASTER).value_or(0),
                         attributes.number<uint16_t>(NDA_VLAN).value_or(0), mac.value_or(Mac{})};
    if (!mac || key.bridge <= 0 || key.vid >= kVids) {
        return false;
    }
    if (!is_new) {
        return state_.addresses.erase(key) != 0;
    }
    const Address address{header->ndm_ifindex, kind_of(*header)};
    const auto found = state_.addresses.find(key);
    if (found == state_.addresses.end()) {
        return state_.addresses.size() < limits_.addresses ? state_.addresses.emplace(key, address).second : ignore();
    }
    return std::exchange(found->second, address) != address;
}

}  // namespace switchd
