// All that the chip is told, has learned and holds: plain data, whose meaning is in the stages. A copy of it is a copy
// of the chip.
#pragma once

#include <array>

#include "vdevice/chip/fields/field_processor.h"
#include "vdevice/chip/frame/chip_ports.h"
#include "vdevice/chip/frame/flow_hash.h"
#include "vdevice/chip/queues/egress_queues.h"
#include "vdevice/chip/tables/gpio.h"
#include "vdevice/chip/tables/group_rules.h"
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

struct Tables {
    Tables() { trunks_of_ports.fill(TrunkTable::kNone); }

    /** The port must exist, here and below. */
    Port &port(int number) { return ports[static_cast<size_t>(number)]; }
    const Port &port(int number) const { return ports[static_cast<size_t>(number)]; }
    int trunk_of(int number) const { return trunks_of_ports[static_cast<size_t>(number)]; }
    Place place_of(int number) const { return {number, trunk_of(number)}; }
    void count_drop(int number, Drop reason) { ++port(number).counters.drops[static_cast<size_t>(reason)]; }

    std::array<Port, kChipPorts> ports;
    PortSet up; /**< the ports that are up */
    /** At power-on every port is a member of VLAN 1, and every port but the CPU's gets its frames untagged. */
    VlanTable vlans{kAllPorts, {kAllPorts, kAllPorts - PortSet::of(kCpuPort)}};
    MacTable macs;
    LearnLimits limits;
    GroupRules group_rules;
    TrunkTable trunks{kAllPorts, kCpuPort};
    PortSet standby;                               /**< what trunks.standby() gives */
    std::array<int, kChipPorts> trunks_of_ports{}; /**< what trunks.trunk_of() gives */
    HashSides hash_sides;
    StpGroups stp{{kAllPorts, kCpuPort}};
    TagRules tag_rules{{kAllPorts, kCpuPort}};
    Traps traps;
    FieldProcessor fields;
    ReservedMacs reserved_macs;
    Snooping snooping;
    bool filters_attacks = false; /**< drops frames that no honest host sends */
    MirrorTable mirrors{kAllPorts, kCpuPort};
    PriorityRules priority_rules;
    QueueMap queue_map;
    EgressQueues queues{static_cast<int>(kChipPorts)};
    Gpio gpio;
};

}  // namespace vdevice::chip
