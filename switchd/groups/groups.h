// The aggregation groups agg1 to agg8 of the switch: LACP or static, kept in the chip through libadp.
#pragma once

#include <stdint.h>
#include <functional>
#include <map>
#include <optional>
#include <set>
#include <span>
#include <string>
#include <vector>

#include "switchd/groups/saved.h"
#include "switchd/groups/settings.h"
#include "switchd/groups/trunk.h"
#include "switchd/lacp/system.h"

namespace switchd {

struct MemberStatus {
    bool is_up = false;
    bool is_in_use = false;               /**< the chip forwards by it, as one of the group */
    std::optional<lacp::PortStatus> lacp; /**< of groups that use it */

    bool operator==(const MemberStatus &) const = default;
};

struct AggregationStatus {
    GroupSettings settings;
    bool is_up = false;
    std::optional<lacp::PartnerGroup> partner;
    std::map<uint32_t, MemberStatus> members;
    std::string fault; /**< what the chip refuses, in a sentence; it is tried again */

    bool operator==(const AggregationStatus &) const = default;
};

/**
 * Frames pass a group's members only while these are in the chip's trunk. The chip has no state for a member that is
 * configured and not in use: such a port is one of its own, which would forward, and close a loop with the others of
 * the group. So idle_members() must be kept out of every VLAN that has ports besides the CPU's; the protocols that go
 * to the CPU alone, LACP among them, need no VLAN. A port joins the trunk before it may be put into VLANs, and leaves
 * it only after it was taken out of them:
 *
 *     if (groups.take_change()) {
 *         mirror the VLANs, without groups.idle_members();
 *         groups.remove_idle(now);  // may make another change
 *     }
 *
 * For the same reason a member on which the protocol collects and does not distribute yet is idle: the chip does both
 * or neither. What a partner sends in these moments is lost.
 *
 * A process that takes over from a killed one is handed what that has saved. It puts the same members into the same
 * trunk and goes on with the protocol where the other one ended, so that neither the chip nor the partner notices; then
 * the partner or its timeout decides. Without saved groups a trunk that is found loses its members, after the mirror
 * has taken them out of their VLANs, and the protocol begins anew.
 *
 * The time is handed in; links must be set before the first configuration.
 */
class Groups {
  public:
    using Time = lacp::Time;
    /** Sends a frame by a user port, whole and untagged. It must not call the groups. */
    using Transmit = std::function<void(uint32_t port, std::span<const uint8_t> frame)>;

    explicit Groups(Transmit transmit) : transmit_{std::move(transmit)} {}
    Groups(const Groups &) = delete;
    Groups &operator=(const Groups &) = delete;

    /**
     * Brings the groups 1 to 8 to these settings, in which a port is in one group at most. What has not changed goes on
     * undisturbed.
     */
    void configure(const GroupsSettings &settings, Time now, const SavedGroups &predecessor = {});
    /** The link of any user port, as it is now; may be set again and again. */
    void set_link(uint32_t port, bool is_up, bool is_full_duplex, Time now);
    /** Takes a frame without a tag that came in on a user port; true if nobody else need see it. */
    bool receive(uint32_t port, std::span<const uint8_t> frame, Time now);
    void tick(Time now);
    std::optional<Time> next_deadline() const;

    /** Whether idle_members(), is_up() or saved() may have changed since the last call. */
    bool take_change();
    /** The members that must be in no VLAN with other ports. */
    std::set<uint32_t> idle_members() const;
    /** Takes idle members, and groups that are no longer configured, out of the chip's trunks. */
    void remove_idle(Time now);

    /** Whether enough members are in use; of a group that is not configured, false. */
    bool is_up(uint32_t group) const;
    /** To be handed to a successor. */
    SavedGroups saved() const;
    std::map<uint32_t, AggregationStatus> status() const;

  private:
    struct Group {
        GroupSettings settings;
        Trunk trunk;
        std::set<uint32_t> wanted; /**< the members that are to be in use */
        lacp::Timer retry;         /**< runs after the chip has refused something */
    };
    struct PortLink {
        bool is_up = false;
        bool is_full_duplex = false;

        bool operator==(const PortLink &) const = default;
    };
    /** What others act on. */
    struct Outside {
        std::set<uint32_t> idle;
        std::set<uint32_t> up;
        SavedGroups saved;

        bool operator==(const Outside &) const = default;
    };

    void remove_groups(const GroupsSettings &settings, const SavedGroups &predecessor);
    void set_groups(const GroupsSettings &settings);
    void set_ports(const GroupsSettings &settings, Time now, const SavedGroups &predecessor);
    std::set<uint32_t> wanted_of(uint32_t number, const GroupSettings &settings) const;
    std::set<uint32_t> best_of(const std::map<uint32_t, uint16_t> &members) const;
    std::set<uint32_t> in_use(const Group &group) const;
    bool is_linked(uint32_t port) const;
    bool is_in_trunk(uint32_t port) const;
    void add_members(Group &group, Time now);
    void update(Time now);

    Transmit transmit_;
    std::optional<lacp::System> system_;
    std::set<uint32_t> lacp_ports_;
    std::map<uint32_t, PortLink> links_;
    std::map<uint32_t, Group> groups_;
    std::map<uint32_t, Trunk> removed_; /**< no longer configured, still in the chip */
    Outside told_;
    bool again_ = false; /**< remove_idle() has something to do again */
};

}  // namespace switchd
