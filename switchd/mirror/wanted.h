// What the chip should have, by what the kernel has.
#pragma once

#include <stdint.h>

#include <compare>
#include <map>

#include "switchd/kernel/kernel_state.h"
#include "switchd/mirror/plan.h"
#include "switchd/mirror/remark.h"
#include "switchd/mirror/switch_state.h"

namespace switchd {

/** A port in a VLAN of the chip; groups are ports too. */
struct VlanPort {
    uint16_t vid = 0;
    uint32_t intf = 0;

    auto operator<=>(const VlanPort &) const = default;
};

/** Where the kernel has it. */
struct BridgePlace {
    int interface = 0;
    int bridge = 0;
    uint16_t vid = 0; /**< as the kernel's tables name it: 0 where the bridge is not aware of VLANs */
    bool forwards = false;

    bool operator==(const BridgePlace &) const = default;
};

struct Wanted {
    SwitchState state; /**< a port's untagged frames are in the VLAN ports.at(port).pvid */
    Remarks remarks;
    std::map<int, uint16_t> bridges;        /**< the VLAN of each bridge that is in hardware and not aware of VLANs */
    std::map<VlanPort, BridgePlace> places; /**< the ports of bridges that the chip serves */
};

/**
 * A bridge stands for a VLAN. A port that is in no bridge, or in one that the chip cannot serve, is in a VLAN with the
 * CPU port alone, so that its frames reach the kernel.
 */
Wanted wanted_of(const KernelState &kernel, const Plan &plan);

}  // namespace switchd
