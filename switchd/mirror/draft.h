// The steps of wanted_of(): each adds its part to a draft.
#pragma once

#include <stdint.h>

#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "switchd/mirror/wanted.h"

namespace switchd {

/** An interface of the switch. */
struct Member {
    int interface = 0;
    const Link *link = nullptr;
    PortName port;
    IntfSet ports = 0; /**< the user port, or those of the group */
    int bridge = 0;    /**< 0 for none */

    BridgePort settings() const { return link->port.value_or(BridgePort{}); }
};

struct Draft {
    const KernelState &kernel;
    const Plan &plan;
    std::vector<Member> members{};          /**< ordered by port and tag */
    std::map<uint16_t, int> owners{};       /**< the bridge or interface that has the VLAN */
    std::map<int, const Member *> served{}; /**< members of bridges in hardware, by interface */
    Wanted wanted{};

    const Link &link(int index) const { return kernel.links.at(index); }
    bool is_bridge(int index) const {
        const auto found = kernel.links.find(index);
        return found != kernel.links.end() && found->second.bridge.has_value();
    }
    void remark(std::string_view subject, std::string sentence) {
        wanted.remarks.push_back({std::string(subject), std::move(sentence)});
    }
    /** The chip's VLAN for a VLAN of the bridge; nothing if it is not in hardware. */
    std::optional<uint16_t> chip_vid_of(int bridge, uint16_t vid) const;
    /** Why nobody else can have the VLAN; empty if it is free. */
    std::string why_taken(uint16_t vid) const;
};

void find_members(Draft &draft);
void choose_vids(Draft &draft);
void add_vlans(Draft &draft);
void add_port_settings(Draft &draft);
void add_addresses(Draft &draft);
void add_groups(Draft &draft);

}  // namespace switchd
