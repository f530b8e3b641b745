// Brings the chip to what is wanted, by the differences alone.
#pragma once

#include <stdint.h>

#include <set>

#include "switchd/mirror/plan.h"
#include "switchd/mirror/reader.h"
#include "switchd/mirror/remark.h"
#include "switchd/mirror/switch_state.h"
#include "switchd/mirror/table_mirror.h"
#include "switchd/mirror/trees.h"

namespace switchd {

/**
 * Knows what the chip has: reads it at the beginning, and changes it afterwards. What was closed is never open for a
 * moment: ports are closed and taken out of VLANs before others are opened, and join VLANs in between.
 */
class Applier {
  public:
    /** Reads the chip, in some thousand driver calls. */
    explicit Applier(const Plan &plan);

    /** What fails is a remark, and is tried again the next time. */
    Remarks apply(const SwitchState &wanted);

    /** What the chip has. */
    const SwitchState &state() const { return present_; }

  private:
    explicit Applier(SwitchReading reading);

    void close(const SwitchState &wanted);
    void join(const SwitchState &wanted);
    void open(const SwitchState &wanted);

    void create_vlans(const SwitchState &wanted);
    void destroy_vlans(const SwitchState &wanted);
    bool set_members(uint16_t vid, const VlanState &wanted);
    void join_vlan(uint16_t vid, const VlanState &wanted);
    void set_pvid(uint32_t port, uint16_t vid);
    void set_may_send_to(uint32_t port, IntfSet may_send_to);
    void set_learning(uint32_t port, Learning wanted);
    void set_control(adp_switch_control control, bool wanted, bool &present);
    void set_unknown_groups(const SwitchState &wanted, adp_mcast_miss action);
    bool is_authorised(uint32_t intf, const SwitchState &wanted) const;
    void remove_entries(const SwitchState &wanted);

    SwitchState present_;
    Trees trees_;
    uint16_t default_vid_;
    TableMirror<uint32_t> addresses_;
    TableMirror<IntfSet> groups_;
    std::set<uint32_t> closed_ports_; /**< whose learning was closed here, and not by port authorisation */
    Remarks remarks_;
};

}  // namespace switchd
