// The addresses that the chip has learned, in the kernel's bridges, and what is flushed on either side on the other.
#pragma once

#include <adp/mac.h>
#include <stddef.h>
#include <stdint.h>

#include <compare>
#include <map>
#include <set>
#include <utility>
#include <vector>

#include "switchd/kernel/kernel_state.h"
#include "switchd/mirror/switch_state.h"
#include "switchd/mirror/table_walk.h"
#include "switchd/mirror/wanted.h"

namespace switchd {

/** An entry of a bridge's forwarding database. */
struct LearnedAddress {
    int interface = 0; /**< the bridge's port */
    uint16_t vid = 0;  /**< 0 where the bridge is not aware of VLANs */
    Mac mac{};

    auto operator<=>(const LearnedAddress &) const = default;
};

/** What the kernel is to be told; an address that has moved is added at its new place. */
struct LearnedChanges {
    std::vector<LearnedAddress> added;
    std::vector<LearnedAddress> removed;

    bool operator==(const LearnedChanges &) const = default;
};

class LearnedAddresses {
  public:
    /**
     * Takes over what the kernel has by now. What somebody has flushed there is deleted from the chip. The chip
     * forgets what it has learned on a port that no longer forwards, and in a bridge whose topology changes.
     */
    LearnedChanges follow(const KernelState &kernel, const Wanted &wanted);

    /** Walks on over the chip's table, by at most so many entries. What the chip has forgotten is known at its end. */
    LearnedChanges walk(size_t max_entries);

  private:
    /** What the kernel was told of an address. */
    struct Told {
        VlanPort at;
        BridgePlace place;
        bool is_confirmed = false; /**< the kernel has it */
        uint32_t pass = 0;         /**< the last one over the table that has seen it */
    };
    using ToldMap = std::map<VlanMac, Told>;

    void flush_stopped(const Wanted &wanted, LearnedChanges &changes);
    void flush_changed_topologies(const KernelState &kernel, LearnedChanges &changes);
    void compare(const KernelState &kernel, const Wanted &wanted);
    void adopt(const KernelState &kernel);
    void delete_from_chip(const std::set<VlanMac> &gone);
    void saw(const adp_l2_entry_t &entry, LearnedChanges &changes);
    void end_pass(LearnedChanges &changes);
    template <typename Picks>
    void forget_if(Picks picks, LearnedChanges &changes);

    ToldMap told_;
    std::map<VlanMac, BridgePlace> leaving_; /**< the kernel was told to remove them and may not have done so */
    std::map<VlanPort, BridgePlace> places_;
    std::set<int> changing_; /**< bridges whose topology change has been seen */
    TableWalk walk_;
    uint32_t pass_ = 1;
};

}  // namespace switchd
