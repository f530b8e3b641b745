// The switch chip as its driver sees it: settings, checked, and frames. Frames and the time are handed in, frames leave
// through the sink; the same inputs always give the same outputs.
#pragma once

#include <functional>
#include <optional>
#include <vector>

#include "vdevice/chip/pipeline/pipeline.h"
#include "vdevice/chip/pipeline/tables.h"

namespace vdevice::chip {

class Switch {
  public:
    static constexpr int kPorts = static_cast<int>(kChipPorts);
    static constexpr int kCpuPort = chip::kCpuPort;

    explicit Switch(Sink &sink) : sink_{sink} {}

    /**
     * A frame from the wire, or on the CPU port one from the CPU, with the transmit tag. The time of a port never goes
     * back; the frames of another port may be earlier ones.
     */
    void receive(Time now, int port, Bytes frame);
    /** Lets the time-driven work happen, about once a second: ageing. */
    void tick(Time now);
    /** Sends the queued frames that leave until now. */
    void depart(Time now);
    /** When a queued frame leaves next, if there is one. */
    std::optional<Time> next_departure() const;

    /** All that the chip is told, has learned and holds. */
    const Tables &tables() const { return tables_; }
    /** Shows a watcher every frame from now on; null for none. */
    void set_watcher(Watcher *watcher) { pipeline_.egress().set_watcher(watcher); }

    static bool has_port(int64_t port) { return is_chip_port(port); }
    static constexpr PortSet all_ports() { return kAllPorts; }
    static ChipPorts chip_ports() { return {kAllPorts, kCpuPort}; }

    /** The port must exist. */
    const Port &port(int port) const { return tables_.port(port); }
    Status set_enabled(int port, bool enabled);
    Status set_link(int port, bool link);
    /** Hands the port's settings to the change and gives its answer; a change that refuses leaves them alone. */
    Status change_port(int port, const std::function<Status(Port &)> &change);
    /** Ports that the chip has not are refused. */
    Status set_egress(int port, const PortSet &ports);
    /** The VLAN must exist when it is made a port's VLAN; destroyed later, the port's untagged frames are dropped. */
    Status set_pvid(int port, uint32_t vid);

    /** Clears the counts of an existing port: frames, drops, queues, and what its limits passed and dropped. */
    void clear_counts(int port);
    /** Clears the counts of the MAC table, the rules and the meters. */
    void clear_table_counts();

    const EgressQueues &queues() const { return tables_.queues; }
    /** Limits what a port sends; a rate of 0 is no limit. */
    Status set_shaper(Time now, int port, const RateLimit &limit);
    Status set_scheduler(Time now, int port, const SchedulerSettings &settings);
    /** From now on every port but the CPU's sends as fast as its speed lets it. */
    void keep_to_speeds();

    const VlanTable &vlans() const { return tables_.vlans; }
    VlanTable &vlans() { return tables_.vlans; }
    /** Destroys VLANs together with the addresses learned in them. */
    Status destroy_vlans(VidRange range);

    const MacTable &macs() const { return tables_.macs; }
    MacTable &macs() { return tables_.macs; }
    /** Adds a static address; its VLAN and port must exist. On a trunk's port it is behind the trunk. */
    Status add_static_mac(Mac mac, uint32_t vid, int port);
    /** Adds an entry of any kind; its VLAN must exist, and its port or, if it is given to a trunk, the trunk. */
    Status add_mac(MacEntry entry, uint32_t vid);
    /** The place of an existing port. */
    Place place_of(int port) const { return tables_.place_of(port); }

    const LearnLimits &limits() const { return tables_.limits; }
    LearnLimits &limits() { return tables_.limits; }

    /** Gives a group a set of ports in the place of the one that it had. Its VLAN and the ports must exist. */
    Status add_group(Mac mac, uint32_t vid, const PortSet &ports);
    Status remove_group(Mac mac, uint32_t vid);
    Status add_group_ports(Mac mac, uint32_t vid, const PortSet &ports);
    Status remove_group_ports(Mac mac, uint32_t vid, const PortSet &ports);
    /** The group's entry, or null. */
    const MacEntry *find_group(Mac mac, uint32_t vid) const;
    const GroupRules &group_rules() const { return tables_.group_rules; }
    GroupRules &group_rules() { return tables_.group_rules; }

    const TrunkTable &trunks() const { return tables_.trunks; }
    Status create_trunk(int64_t trunk);
    /** Forgets the addresses that were learned behind it. */
    Status destroy_trunk(int64_t trunk);
    void destroy_all_trunks();
    Status set_trunk(int64_t trunk, const std::vector<int> &ports);
    Status set_trunk_configured(int64_t trunk, const std::vector<int> &ports);
    Status set_trunk_balance(int64_t trunk, uint32_t mode) { return tables_.trunks.set_balance(trunk, mode); }
    /** The trunk that an existing port belongs to, or TrunkTable::kNone. */
    int trunk_of(int port) const { return tables_.trunk_of(port); }
    /** Which ends of a flow the hash of all trunks looks at. */
    void set_hash_sides(HashSides sides) { tables_.hash_sides = sides; }

    const StpGroups &stp() const { return tables_.stp; }
    StpGroups &stp() { return tables_.stp; }
    const TagRules &tag_rules() const { return tables_.tag_rules; }
    TagRules &tag_rules() { return tables_.tag_rules; }

    const Traps &traps() const { return tables_.traps; }
    Traps &traps() { return tables_.traps; }
    const ReservedMacs &reserved_macs() const { return tables_.reserved_macs; }
    ReservedMacs &reserved_macs() { return tables_.reserved_macs; }
    const Snooping &snooping() const { return tables_.snooping; }
    Snooping &snooping() { return tables_.snooping; }
    /** Whether frames are dropped that no honest host sends. */
    bool filters_attacks() const { return tables_.filters_attacks; }
    void set_attack_filter(bool on) { tables_.filters_attacks = on; }

    const MirrorTable &mirrors() const { return tables_.mirrors; }
    MirrorTable &mirrors() { return tables_.mirrors; }
    /** Sends a copy of a frame that a rule has selected to where the session's flow mirror goes, if anywhere. */
    void copy_to_flow_mirror(uint32_t session, const Frame &frame) {
        pipeline_.egress().copy_to_flow_mirror(session, frame);
    }

    const PriorityRules &priority_rules() const { return tables_.priority_rules; }
    PriorityRules &priority_rules() { return tables_.priority_rules; }
    const QueueMap &queue_map() const { return tables_.queue_map; }
    QueueMap &queue_map() { return tables_.queue_map; }

    const Gpio &gpio() const { return tables_.gpio; }
    Gpio &gpio() { return tables_.gpio; }

    const FieldProcessor &fields() const { return tables_.fields; }
    FieldProcessor &fields() { return tables_.fields; }
    /** Ports that the chip has not are refused. */
    Status set_miss_action(int port, MissAction action);

    /** How the limits of this type count, on all ports. */
    void set_storm_counting(StormType type, Counting counting, Time now);
    Counting storm_counting(StormType type) const;

  private:
    Port &at(int port) { return tables_.port(port); }
    void update_up_set(int port);
    void update_line_speed(int port) { tables_.queues.set_line_speed(port, at(port).phy.speed()); }
    void refresh_trunks();
    void release_addresses(int64_t trunk, const PortSet &kept);

    Sink &sink_;
    Tables tables_;
    Pipeline pipeline_{tables_, sink_};
};

}  // namespace vdevice::chip
