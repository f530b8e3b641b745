// The chip's spanning-tree groups, brought to what is wanted: first what closes ports, later what opens them.
#pragma once

#include <stdint.h>

#include <map>
#include <utility>

#include "switchd/mirror/reader.h"
#include "switchd/mirror/remark.h"
#include "switchd/mirror/tree_choice.h"

namespace switchd {

class Trees {
  public:
    explicit Trees(TreeGroups present) : present_{std::move(present)} {}

    /** Closes ports in groups, and then moves VLANs into groups other than 0. No port is opened that was closed. */
    void close(const std::map<uint16_t, VlanState> &wanted, Remarks &remarks);
    /** The members that a VLAN may have now, and when open() has done its work: nobody may forward who should not. */
    IntfSet allowed_members(uint16_t vid, const VlanState &wanted) const;
    /** Moves VLANs into group 0 and opens ports; @p present are the VLANs with the members that they have by now. */
    void open(const std::map<uint16_t, VlanState> &wanted, const std::map<uint16_t, VlanState> &present,
              Remarks &remarks);

    /** Whether the groups did not suffice for the VLAN. */
    bool lacks_group(uint16_t vid, const VlanState &wanted) const {
        return !wanted.not_forwarding.empty() && choice_.vlans.at(vid) == 0;
    }
    const TreeGroups &present() const { return present_; }

  private:
    bool close_group(int32_t group, const TreeStates &states, Remarks &remarks);
    void open_group(int32_t group, const TreeStates &states, Remarks &remarks);
    bool set_state(int32_t group, uint32_t port, adp_stg_state state, Remarks &remarks);
    bool move(uint16_t vid, int32_t group, Remarks &remarks);

    TreeGroups present_;
    TreeChoice choice_;
};

}  // namespace switchd
