// VLAN, priority and DSCP of a frame before rules are applied, and by what they were chosen.
#pragma once

#include <stdint.h>
#include <optional>

namespace vdevice::chip {

/** By what a frame's VLAN or priority was chosen. */
enum class ChosenBy : uint8_t {
    kPort,        /**< the ingress port's own */
    kTag,         /**< the frame's VLAN tag; of a double-tag entry without a priority the customer's */
    kTranslation, /**< an ingress translation of the tag's VLAN */
    kSubnet,      /**< the subnet of the packet's source address */
    kDoubleTag,   /**< a double-tag entry for the customer's VLAN */
    kDscp,        /**< the packet's DSCP, which the port trusts */
};

struct Classified {
    uint16_t tci = 0; /**< VLAN and priority in which the frame goes on */
    ChosenBy vlan_by = ChosenBy::kPort;
    ChosenBy priority_by = ChosenBy::kPort;
    std::optional<uint8_t> dscp{}; /**< the DSCP that it leaves with, if it is another one */
};

}  // namespace vdevice::chip
