// The chip's trunks: ports that carry the flows between two devices together (link aggregation, IEEE 802.1AX).
#pragma once

#include <stdint.h>
#include <array>
#include <vector>

#include "vdevice/chip/frame/flow_hash.h"
#include "vdevice/chip/frame/port_set.h"
#include "vdevice/chip/frame/status.h"

namespace vdevice::chip {

/** Balancing modes 1 to 3 hash MAC addresses, 4 to 6 at IP addresses and ports. */
constexpr uint32_t kFirstBalanceMode = 1;
constexpr uint32_t kFirstIpBalanceMode = 4;
constexpr uint32_t kLastBalanceMode = 6;

struct Trunk {
    static constexpr uint32_t kPowerOnMode = 3;

    bool exists = false;
    std::vector<int> members;   /**< that frames may leave by, in the order in which they were given */
    PortSet member_set;         /**< the same as a set */
    PortSet configured;         /**< members as the software counts them, including those without a link */
    bool is_configured = false; /**< the software has told its members */
    uint32_t balance = kPowerOnMode;

    HashLayer layer() const { return balance >= kFirstIpBalanceMode ? HashLayer::kIp : HashLayer::kMac; }
    /** The ports that belong to the trunk, including those on standby. */
    PortSet ports() const { return is_configured ? configured | member_set : member_set; }
};

class TrunkTable {
  public:
    static constexpr int kTrunks = 8;
    static constexpr size_t kMaxMembers = 8;
    static constexpr int kNone = -1;

    /** @p existing are the ports of the chip; the CPU's cannot be a member. */
    TrunkTable(const PortSet &existing, int cpu_port) : existing_{existing}, cpu_port_{cpu_port} {}

    static constexpr bool is_trunk(int64_t trunk) { return trunk >= 0 && trunk < kTrunks; }

    /** The trunk's row, or null. */
    const Trunk *find(int64_t trunk) const { return is_trunk(trunk) && row(trunk).exists ? &row(trunk) : nullptr; }
    /** The row of a trunk's number, which is_trunk(); of one that does not exist, too. */
    const Trunk &row(int64_t trunk) const { return rows_[static_cast<size_t>(trunk)]; }
    /** The trunk that the port belongs to as a member or on standby, or kNone. */
    int trunk_of(int port) const;
    /**
     * Configured ports that are not members. Frames from them are accepted as the trunk's, but none leaves by them:
     * they lead to the same neighbour as the trunk's other ports, and would close a loop.
     */
    PortSet standby() const;

    Status create(int64_t trunk);
    Status destroy(int64_t trunk);
    /** The ports that frames leave by. They must exist, be listed once, and not be members of another trunk. */
    Status set_members(int64_t trunk, const std::vector<int> &ports);
    /** The ports that the software counts among the members. They are kept when the trunk is destroyed, until
     * forgotten. */
    Status set_configured(int64_t trunk, const std::vector<int> &ports);
    Status set_balance(int64_t trunk, uint32_t mode);
    /** Forgets the configured members if one of them is among these. */
    void forget_configured(int64_t trunk, const PortSet &ports);
    /** Forgets the members of trunks that do not exist. */
    void forget_missing();

  private:
    Trunk &row(int64_t trunk) { return rows_[static_cast<size_t>(trunk)]; }
    int member_of(int port) const;
    Status check_exists(int64_t trunk) const;
    Status check_ports(int64_t trunk, const std::vector<int> &ports) const;

    PortSet existing_;
    int cpu_port_;
    std::array<Trunk, kTrunks> rows_;
};

}  // namespace vdevice::chip
