/**
 * @file multicast_groups.h
 * The multicast groups that the shell's lines have made. The library keeps none: who snoops keeps them.
 */
#pragma once

#include <adp/types.h>

#include <stdint.h>
#include <array>
#include <map>
#include <utility>
#include <vector>

namespace adpsh {

class Arguments;
struct Outcome;

class MulticastGroups {
  public:
    using Mac = std::array<uint8_t, 6>;
    using Key = std::pair<uint16_t, Mac>;  ///< VLAN id and address
    using Ports = adp_port_set_t;          ///< physical

    /** Follows a call that a line has made. */
    void follow(const Outcome &outcome);

    [[nodiscard]] const std::map<Key, Ports> &all() const { return groups_; }

  private:
    std::map<Key, Ports> groups_;
};

}  // namespace adpsh
