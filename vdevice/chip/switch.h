// The switch chip: ports, tables and the way of a frame through them. Frames and the time are handed in, frames leave
// through the sink; the same inputs always give the same outputs.
#pragma once

#include <array>
#include <functional>
#include <optional>
#include <vector>

#include "vdevice/chip/fields/field_processor.h"
#include "vdevice/chip/frame/chip_ports.h"
#include "vdevice/chip/frame/port_set.h"
#include "vdevice/chip/frame/status.h"
#include "vdevice/chip/frame/switch_tag.h"
#include "vdevice/chip/pipeline/sink.h"
#include "vdevice/chip/queues/egress_queues.h"
#include "vdevice/chip/tables/gpio.h"
#include "vdevice/chip/tables/learn_limits.h"
#include "vdevice/chip/tables/mac_table.h"
#include "vdevice/chip/tables/mirror_table.h"
#include "vdevice/chip/tables/port.h"
#include "vdevice/chip/tables/priority_rules.h"
#include "vdevice/chip/tables/queue_map.h"
#include "vdevice/chip/tables/reserved_macs.h"
#include "vdevice/chip/tables/snooping.h"
#include "vdevice/chip/tables/stp_groups.h"
#include "vdevice/chip/tables/tag_rules.h"
#include "vdevice/chip/tables/traps.h"
#include "vdevice/chip/tables/trunk_table.h"
#include "vdevice/chip/tables/vlan_table.h"

namespace vdevice::chip {

class EgressForms;

class Switch {
  public:
    static constexpr int kPorts = static_cast<int>(kChipPorts);
    static constexpr int kCpuPort = 0;

    explicit Switch(Sink &sink);

    /** A frame from the wire, or on the CPU port one from the CPU, with the transmit tag. */
    void receive(Time now, int port, Bytes frame);
    /** Lets the time-driven work happen, about once a second: ageing. */
    void tick(Time now);
    /** Sends the queued frames that leave until now. */
    void depart(Time now);
    /** When a queued frame leaves next, if there is one. */
    std::optional<Time> next_departure() const;

    static bool has_port(int64_t port) { return port >= 0 && port < kPorts; }
    static constexpr PortSet all_ports() {
        constexpr PortSet kAll = PortSet::range(0, kPorts - 1);
        return kAll;
    }
    static ChipPorts chip_ports() { return {all_ports(), kCpuPort}; }

    /** The port must exist. */
    const Port &port(int port) const { return ports_[static_cast<size_t>(port)]; }
    Status set_enabled(int port, bool enabled);
    Status set_link(int port, bool link);
    /** Hands the port's settings to the change and gives its answer; a change that refuses leaves them alone. */
    Status change_port(int port, const std::function<Status(Port &)> &change);
    /** Ports that the chip has not are refused. */
    Status set_egress(int port, const PortSet &ports);
    /** The VLAN must exist when it is made a port's VLAN; destroyed later, the port's untagged frames are dropped. */
    Status set_pvid(int port, uint32_t vid);

    const EgressQueues &queues() const { return queues_; }
    /** Limits what a port sends; a rate of 0 is no limit. */
    Status set_shaper(Time now, int port, const RateLimit &limit);
    Status set_scheduler(Time now, int port, const SchedulerSettings &settings);

    const VlanTable &vlans() const { return vlans_; }
    VlanTable &vlans() { return vlans_; }
    /** Destroys VLANs together with the addresses learned in them. */
    Status destroy_vlans(VidRange range);

    const MacTable &macs() const { return macs_; }
    MacTable &macs() { return macs_; }
    /** Adds a static address; its VLAN and port must exist. On a trunk's port it is behind the trunk. */
    Status add_static_mac(Mac mac, uint32_t vid, int port);
    /** Adds an entry of any kind; its VLAN must exist, and its port or, if it is given to a trunk, the trunk. */
    Status add_mac(MacEntry entry, uint32_t vid);
    /** The place of an existing port. */
    Place place_of(int port) const { return {port, trunk_of(port)}; }

    const LearnLimits &limits() const { return limits_; }
    LearnLimits &limits() { return limits_; }

    /** Gives a group a set of ports in the place of the one that it had. Its VLAN and the ports must exist. */
    Status add_group(Mac mac, uint32_t vid, const PortSet &ports);
    Status remove_group(Mac mac, uint32_t vid);
    Status add_group_ports(Mac mac, uint32_t vid, const PortSet &ports);
    Status remove_group_ports(Mac mac, uint32_t vid, const PortSet &ports);
    /** The group's entry, or null. */
    const MacEntry *find_group(Mac mac, uint32_t vid) const;
    const GroupRules &group_rules() const { return group_rules_; }
    GroupRules &group_rules() { return group_rules_; }

    const TrunkTable &trunks() const { return trunks_; }
    Status create_trunk(int64_t trunk);
    /** Forgets the addresses that were learned behind it. */
    Status destroy_trunk(int64_t trunk);
    void destroy_all_trunks();
    Status set_trunk(int64_t trunk, const std::vector<int> &ports);
    Status set_trunk_configured(int64_t trunk, const std::vector<int> &ports);
    Status set_trunk_balance(int64_t trunk, uint32_t mode) { return trunks_.set_balance(trunk, mode); }
    /** The trunk that an existing port belongs to, or TrunkTable::kNone. */
    int trunk_of(int port) const { return trunk_of_[static_cast<size_t>(port)]; }
    /** Which ends of a flow the hash of all trunks looks at. */
    void set_hash_sides(HashSides sides) { hash_sides_ = sides; }

    const StpGroups &stp() const { return stp_; }
    StpGroups &stp() { return stp_; }
    const TagRules &tag_rules() const { return tag_rules_; }
    TagRules &tag_rules() { return tag_rules_; }

    const Traps &traps() const { return traps_; }
    Traps &traps() { return traps_; }
    const ReservedMacs &reserved_macs() const { return reserved_macs_; }
    ReservedMacs &reserved_macs() { return reserved_macs_; }
    const Snooping &snooping() const { return snooping_; }
    Snooping &snooping() { return snooping_; }
    /** Whether frames are dropped that no honest host sends. */
    bool filters_attacks() const { return filters_attacks_; }
    void set_attack_filter(bool on) { filters_attacks_ = on; }

    const MirrorTable &mirrors() const { return mirrors_; }
    MirrorTable &mirrors() { return mirrors_; }
    /** Sends a copy of a frame that a rule has selected to where the session's flow mirror goes, if anywhere. */
    void copy_to_flow_mirror(uint32_t session, const Frame &frame);

    const PriorityRules &priority_rules() const { return priority_rules_; }
    PriorityRules &priority_rules() { return priority_rules_; }
    const QueueMap &queue_map() const { return queue_map_; }
    QueueMap &queue_map() { return queue_map_; }

    const Gpio &gpio() const { return gpio_; }
    Gpio &gpio() { return gpio_; }

    const FieldProcessor &fields() const { return fields_; }
    FieldProcessor &fields() { return fields_; }
    /** Ports that the chip has not are refused. */
    Status set_miss_action(int port, MissAction action);

    /** How the limits of this type count, on all ports. */
    void set_storm_counting(StormType type, Counting counting, Time now);
    Counting storm_counting(StormType type) const;

  private:
    /** A frame on its way through the chip. */
    struct Flow {
        int ingress;
        Vid vid;
        const Vlan &vlan;
        const Header &header;
        EgressForms &forms;
        bool cpu_has_copy; /**< another one would be one too many */
    };

    /** A frame on its way back into the port that it should have left by. */
    struct Looped {
        int port;
        std::vector<uint8_t> octets;
    };

    Port &at(int port) { return ports_[static_cast<size_t>(port)]; }
    void update_up_set(int port);
    void refresh_trunks();
    void release_addresses(int64_t trunk, const PortSet &kept);
    void drop(int port, Drop reason);

    void take_in(Time now, int port, Bytes frame);
    bool passes_policer(Time now, int port, size_t octets);
    void take_looped(Time now);
    void loop_back(int port, const Frame &frame);
    bool let_in(Time now, const Flow &flow);
    bool admit(Time now, const Flow &flow);
    bool take_source(Time now, const Flow &flow);
    bool may_learn(const MacEntry *known, Vid vid, const Place &place) const;
    bool is_for_cpu_alone(const Header &header) const;
    void hand_over(const Flow &flow);
    void trap(int ingress, EgressForms &forms);
    void receive_from_cpu(Time now, Bytes frame);
    void forward(Time now, int ingress, const Frame &frame);
    Classified classify(int ingress, const Header &header) const;
    FieldVerdict apply_rules(Time now, int ingress, const Frame &frame, const Classified &own, Header &header);
    void switch_in_vlan(Time now, int ingress, const Header &header, EgressForms &forms, const FieldVerdict &verdict);
    bool copy_to_cpu(int ingress, EgressForms &forms);
    void redirect(const Flow &flow, const PortSet &ports);
    bool passes_storm_control(Time now, const Flow &flow, const MacEntry *entry);
    bool may_leave(int egress, const Flow &flow) const;
    void forward_to_entry(const Flow &flow, const MacEntry &entry);
    void forward_group(const Flow &flow);
    GroupMiss miss_of(const Flow &flow) const;
    PortSet with_whole_trunks(PortSet ports) const;
    void flood(const Flow &flow);
    void send_to(const Flow &flow, const PortSet &wanted);
    int choose_member(const Flow &flow, const Trunk &trunk, const PortSet &among) const;
    void send_in_vlan(int egress, const Flow &flow);
    Frame form_for(int egress, const Vlan &vlan, EgressForms &forms) const;
    void send_directed(const TransmitTag &tag, const Frame &frame);
    void send_directed_to(int egress, const Frame &frame, uint32_t priority);
    void transmit(int port, const Frame &frame, uint32_t priority);
    void put_out(int port, const Frame &frame, Dispatch dispatch);
    void leave(int port, const Frame &frame, Dispatch dispatch);
    void flush_unsent(int port);
    void send_until(Time now);
    void announce_departure();
    void mirror_ingress(int port, Bytes frame);
    void mirror_egress(int port, const Frame &frame, uint32_t priority);
    void send_copy(int port, const Frame &frame, uint32_t priority);

    Sink &sink_;
    std::array<Port, kPorts> ports_;
    PortSet up_;
    Time now_{}; /**< of the frame that comes in or leaves */
    EgressQueues queues_{kPorts};
    std::optional<Time> announced_; /**< the departure that the sink was told of */
    std::vector<Looped> looped_;
    VlanTable vlans_;
    MacTable macs_;
    LearnLimits limits_;
    GroupRules group_rules_;
    TrunkTable trunks_{all_ports(), kCpuPort};
    PortSet standby_;
    std::array<int, kPorts> trunk_of_;
    HashSides hash_sides_;
    StpGroups stp_{chip_ports()};
    TagRules tag_rules_{chip_ports()};
    Traps traps_;
    FieldProcessor fields_;
    std::vector<uint8_t> remarked_; /**< the payload of the frame on its way, when a rule has rewritten it */
    ReservedMacs reserved_macs_;
    Snooping snooping_;
    bool filters_attacks_ = false;
    MirrorTable mirrors_{all_ports(), kCpuPort};
    PriorityRules priority_rules_;
    QueueMap queue_map_;
    Gpio gpio_;
};

}  // namespace vdevice::chip
