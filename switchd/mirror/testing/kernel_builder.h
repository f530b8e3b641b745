// For tests: what the kernel has, put together by hand.
#pragma once

#include <stdint.h>

#include <string>

#include "switchd/kernel/kernel_state.h"
#include "switchd/mirror/plan.h"

namespace switchd::test {

inline Mac mac_number(uint32_t number) {
    return {0x02,
            0,
            static_cast<uint8_t>(number >> 24),
            static_cast<uint8_t>(number >> 16),
            static_cast<uint8_t>(number >> 8),
            static_cast<uint8_t>(number)};
}

constexpr BridgePort kForwards{.state = PortState::kForwarding};
inline BridgePort in_state(PortState state) {
    return {.state = state};
}

class KernelBuilder {
  public:
    int bridge(const std::string &name, const Bridge &settings = {}) {
        const int index = add(name, "bridge");
        links[index].bridge = settings;
        return index;
    }

    /** An interface of the switch, as a port of a bridge unless that is 0. */
    int port(PortName name, int bridge = 0, const BridgePort &settings = kForwards) {
        std::string text = (name.intf & ADP_AGG_INTF(0)) != 0 ? "agg" : "swp";
        text += std::to_string(name.intf & ADP_INTF_INDEX_MASK);
        const int index = add(name.vid == 0 ? text : text + "." + std::to_string(name.vid), "tun");
        plan.interfaces[index] = name;
        enslave(index, bridge, settings);
        return index;
    }

    /** Any other interface. */
    int other(const std::string &name, int bridge = 0) {
        const int index = add(name, "veth");
        enslave(index, bridge, kForwards);
        return index;
    }

    Link &operator[](int index) { return links.at(index); }

    KernelState kernel;
    Plan plan;
    std::map<int, Link> &links = kernel.links;

  private:
    int add(const std::string &name, const std::string &kind) {
        const int index = next_index_++;
        Link &link = links[index];
        link.name = name;
        link.kind = kind;
        link.mac = mac_number(static_cast<uint32_t>(index));
        link.up = link.carrier = true;
        return index;
    }

    void enslave(int index, int bridge, const BridgePort &settings) {
        if (bridge != 0) {
            links[index].master = bridge;
            links[index].port = settings;
        }
    }

    int next_index_ = 100;
};

}  // namespace switchd::test
