// Where a frame goes, and whether it may: the steps from the frame's VLAN and priority to the ports that get a copy. A
// step that ends the frame's way is false.
#pragma once

#include "vdevice/chip/pipeline/egress.h"
#include "vdevice/chip/pipeline/passage.h"
#include "vdevice/chip/pipeline/tables.h"

namespace vdevice::chip {

class Forwarder {
  public:
    Forwarder(Tables &tables, Egress &egress) : tables_{tables}, egress_{egress} {}

    /** What rules or neighbours' protocols give to the CPU alone goes there; a rule's copy for the CPU is made. */
    bool pass_traps(Passage &p);
    /** The VLAN exists and has the ingress port. */
    bool enter_vlan(Passage &p);
    /** The port forwards in the VLAN's spanning-tree group; the source is learned, and let in. */
    bool admit(Passage &p);
    /** What hosts say of their groups goes to the software that wants it, and nowhere else. */
    bool snoop(Passage &p);
    /** The destination is looked up, and storm limits are kept. */
    bool limit_storm(Passage &p);
    /** The ports are chosen, and each gets a copy. */
    bool forward(Passage &p);

  private:
    CpuReason reason_for_cpu_alone(const Passage &p) const;
    bool learn(Passage &p);
    bool let_source_in(Passage &p);
    bool may_learn(const MacEntry *known, const Passage &p, const Place &place) const;
    bool trap(Passage &p, CpuReason reason);
    bool end_at_limit(Passage &p) const;
    bool redirect(Passage &p);
    bool forward_group(Passage &p);
    bool forward_to_entry(Passage &p);
    bool forward_to_trunk(Passage &p);
    bool flood(Passage &p);
    bool send_to(Passage &p, Way way, const PortSet &wanted);
    GroupMiss miss_of(const Passage &p) const;
    PortSet with_whole_trunks(PortSet ports) const;
    PortSet with_one_member_each(const Passage &p, PortSet ports) const;
    int choose_member(const Passage &p, const Trunk &trunk, const PortSet &among) const;
    bool send(Passage &p, int port);
    bool send_each(Passage &p, const PortSet &ports);

    Tables &tables_;
    Egress &egress_;
};

}  // namespace vdevice::chip
