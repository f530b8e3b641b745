// Applies the kernel's messages to what is known of it. Their senders are trusted with nothing: tables are bounded.
#pragma once

#include <linux/rtnetlink.h>
#include <stddef.h>
#include <stdint.h>

#include <array>
#include <compare>
#include <set>

#include "switchd/kernel/kernel_state.h"
#include "switchd/kernel/message.h"

namespace switchd {

class Reader {
  public:
    struct Limits {
        size_t links = 4096;
        size_t addresses = 16384;
        size_t groups = 8192;
        size_t memberships = 65536; /**< of all groups: a port, and a source if it wants one only */
    };

    Reader() = default;
    explicit Reader(const Limits &limits) : limits_{limits} {}

    /** The messages of a datagram, in their order; true if the state has changed. What is malformed is ignored. */
    bool apply(netlink::Octets datagram);
    bool apply(const netlink::Message &message);

    const KernelState &state() const { return state_; }
    uint64_t messages() const { return messages_; }
    /** How many links, addresses and memberships found a table full. */
    uint64_t ignored() const { return ignored_; }
    /** How often something was said to be gone. */
    uint64_t removals() const { return removals_; }
    /** A bridge began or ended to look at multicast. Some kernels then list its groups or no longer do, unannounced. */
    bool is_stale() const { return stale_; }
    /** Every table has room again for a quarter. */
    bool has_room() const;
    /** Takes over what the kernel does not announce of bridges. True if the state has changed. */
    bool refresh_bridges(const KernelState &newer);

  private:
    /** A port that wants the frames of a group, or only those of one source. */
    struct Membership {
        GroupKey group;
        int interface = 0;
        std::array<uint8_t, 16> source{}; /**< zeros for any */

        auto operator<=>(const Membership &) const = default;
    };

    bool apply_link(netlink::Octets body, bool is_new);
    bool set_link(const ifinfomsg &info, const netlink::Attributes &attributes);
    bool set_bridge_member(int index, const netlink::Attributes &attributes);
    bool remove_link(int index);
    bool leave_bridge(int index);
    bool apply_address(netlink::Octets body, bool is_new);
    bool apply_groups(netlink::Octets body, bool is_new);
    bool apply_membership(int bridge, netlink::Octets entry, bool is_new);
    bool add_membership(const Membership &membership);
    bool remove_membership(const Membership &membership);
    bool apply_router_port(int bridge, netlink::Octets entry, bool is_new);
    /** Removes addresses, groups and router ports of an interface, which may be a bridge. */
    bool forget(int index);
    bool forget_memberships(int index);
    bool ignore();

    Limits limits_;
    KernelState state_;
    std::set<Membership> memberships_;
    size_t router_ports_ = 0;
    uint64_t messages_ = 0;
    uint64_t ignored_ = 0;
    uint64_t removals_ = 0;
    bool stale_ = false;
};

}  // namespace switchd
