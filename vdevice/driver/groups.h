// Which user ports form which aggregation group, as the device's VLAN and MAC-table services see it.
#pragma once

#include <array>
#include <cstdint>
#include <optional>

#include "vdevice/chip/port_set.h"

namespace vdevice::driver {

class Groups {
  public:
    static constexpr int kGroups = 8; /**< numbered 1..8 */

    static constexpr bool is_group(std::int64_t group) { return group >= 1 && group <= kGroups; }

    /** The group must exist; its user ports leave whatever group they were in. */
    void set_members(int group, const chip::PortSet &user_ports) {
        for (chip::PortSet &members : members_) {
            members -= user_ports;
        }
        members_[index(group)] = user_ports;
    }

    const chip::PortSet &members(int group) const { return members_[index(group)]; }

    std::optional<int> group_of(int user_port) const {
        for (int group = 1; group <= kGroups; ++group) {
            if (members(group).has(user_port)) {
                return group;
            }
        }
        return std::nullopt;
    }

  private:
    static constexpr std::size_t index(int group) { return static_cast<std::size_t>(group - 1); }

    std::array<chip::PortSet, kGroups> members_;
};

}  // namespace vdevice::driver
