#include "bench/driver_calls/kinds.h"

#include <array>

#include "platform/netlink_api.h"

namespace bench {
namespace {

constexpr int32_t kPort = 4;
constexpr int32_t kDefaultGroup = 0;
constexpr uint32_t kChunk = 64;
constexpr uint32_t kDefaultVlan = 1;
constexpr uint32_t kPriority = 3;

bool get() {
    uint32_t enabled = 0;
    return user_port_enable_get(0, 0, kPort, &enabled) == 0 && enabled == 1;
}

bool set() {
    return user_port_untagged_priority_set(0, 0, kPort, kPriority) == 0;
}

bool list() {
    std::array<uint16_t, kChunk> vlans{};
    return user_stg_vlan_each_time_list(0, 0, kDefaultGroup, vlans.data(), 0, kChunk) == 0 && vlans[1] == 2;
}

bool bitmaps() {
    adp_ports_t members{};
    adp_ports_t untagged{};
    return user_vlan_port_get(0, 0, kDefaultVlan, members, untagged) == 0 && members[0] != 0;
}

constexpr Kind kKinds[] = {{"get", get}, {"set", set}, {"bitmaps", bitmaps}, {"list", list}};

}  // namespace

const Kind *find_kind(const std::string &name) {
    for (const Kind &kind : kKinds) {
        if (name == kind.name) {
            return &kind;
        }
    }
    return nullptr;
}

}  // namespace bench
