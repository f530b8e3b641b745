// The aggregation groups as they are configured.
#pragma once

#include <adp/agg.h>
#include <stdint.h>
#include <map>

#include "switchd/lacp/pdu.h"

namespace switchd {

enum class GroupMode : uint8_t {
    kStatic, /**< every member with a link is used */
    kLacp    /**< members are used on which the partner has agreed */
};

struct GroupSettings {
    GroupMode mode = GroupMode::kLacp;
    std::map<uint32_t, uint16_t> members;       /**< user ports and their priorities: the lowest ones are used first */
    bool is_active = true;                      /**< LACP: speaks first */
    bool is_fast = false;                       /**< LACP: the partner is to speak once a second */
    uint32_t balance = ADP_BALANCE_SRC_DST_MAC; /**< enum adp_balance_mode */
    uint32_t minimum_links = 1;                 /**< with fewer members in use the group counts as down */

    bool operator==(const GroupSettings &) const = default;
};

struct GroupsSettings {
    lacp::SystemId system;                    /**< as partners see it */
    std::map<uint32_t, GroupSettings> groups; /**< by number: 1 is agg1 */

    bool operator==(const GroupsSettings &) const = default;
};

}  // namespace switchd
