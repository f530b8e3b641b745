// Random sequences: which calls they make, and how often.
#include "tests/differential/sequence.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <iterator>
#include <string>
#include <string_view>

#include "calls/exported.h"
#include "tests/differential/random.h"

namespace differential {
namespace {

/** How often a call is made, compared with the others, which have kUsualWeight. */
constexpr struct {
    std::string_view call;
    uint32_t weight;
} kWeights[] = {
    {"adp_set_max_phy_port_num", 1},
    {"adp_add_phy_port", 6},
    {"adp_modules_init", 1},
    {"adp_fp_init", 1},
    {"adp_delete_dscp_map", 2},
    {"adp_create_dscp_map", 2},
    {"adp_get_dscp_map", 2},
    {"l2_user_entry_init", 2},
    {"l2_user_entry_add_all_bpdu", 2},
    {"adp_set_phy_port_attr", 40},
    {"adp_get_phy_port_attr", 30},
    {"adp_create_agg_group", 8},
    {"adp_delete_agg_group", 4},
    {"adp_add_agg_member", 24},
    {"adp_add_agg_member_by_map", 16},
    {"adp_del_agg_member", 12},
    {"adp_del_agg_member_by_map", 8},
    {"adp_add_agg_standby_member", 12},
    {"adp_del_agg_standby_member", 10},
    {"adp_agg_linkscan_handle", 24},
    {"SET_AGG_MANAGE_INTF", 6},
    {"adp_fp_add_entity_rule", 24},
    {"adp_fp_delete_entity_rule", 10},
    {"adp_fp_delete_entity_rule_ex", 8},
    {"adp_add_remark_rule", 12},
    {"adp_add_msti_member", 16},
    {"adp_del_msti_member", 8},
    {"adp_get_stg_vlan_list", 8},
    {"__adp_transmit_frame", 24},
    {"__adp_receive_frame", 24},
    {"adp_transmit_frame", 10},
    {"adp_pkt_init", 2},
    {"adp_dump_packet", 2},
};
constexpr uint32_t kUsualWeight = 4;

uint32_t weight_of(std::string_view name) {
    const auto *const found =
        std::find_if(std::begin(kWeights), std::end(kWeights), [name](const auto &row) { return row.call == name; });
    return found == std::end(kWeights) ? kUsualWeight : found->weight;
}

size_t index_of(std::string_view name) {
    const auto calls = exported::calls();
    const auto found = std::find_if(calls.begin(), calls.end(), [&](const auto &call) { return call.name == name; });
    if (found == calls.end()) {
        std::fprintf(stderr, "differential: there is no call named %s\n", std::string(name).c_str());
        std::exit(2);
    }
    return static_cast<size_t>(found - calls.begin());
}

/** The index of every call, as often as its weight says. */
const std::vector<size_t> &weighted_calls() {
    static const std::vector<size_t> indexes = [] {
        std::vector<size_t> all;
        for (size_t index = 0; index < exported::calls().size(); ++index) {
            all.insert(all.end(), weight_of(exported::calls()[index].name), index);
        }
        return all;
    }();
    return indexes;
}

/** The default board's map, with this number of user ports. */
void add_map(Sequence &sequence, uint32_t ports) {
    constexpr uint32_t kPortOffset = 3;
    constexpr uint64_t kSeed = 1;  // with which the driver succeeds
    sequence.push_back({index_of("adp_set_max_phy_port_num"), kSeed, {ports}});
    sequence.push_back({index_of("adp_add_cpu_port"), kSeed, {0, 0, 0, 0, 0}});
    for (uint32_t port = 1; port <= ports; ++port) {
        sequence.push_back({index_of("adp_add_phy_port"), kSeed, {port, 0, 0, port + kPortOffset, 0}});
    }
}

}  // namespace

Sequence make_sequence(uint64_t seed, size_t calls) {
    constexpr uint32_t kBoardPorts = 26;
    constexpr uint32_t kKinds = 8;
    constexpr uint32_t kLargest = 34;
    Random random(seed);
    Sequence sequence;
    const uint32_t kind = random.below(kKinds);
    if (kind != 0) {
        add_map(sequence, kind == 1 ? random.below(kLargest) : kBoardPorts);
    }
    while (sequence.size() < calls) {
        const size_t call = weighted_calls()[random.below(static_cast<uint32_t>(weighted_calls().size()))];
        const uint64_t high = random.next();
        sequence.push_back({call, high << 32 | random.next(), {}});
    }
    sequence.resize(calls);
    return sequence;
}

const char *name_of(const Step &step) {
    return exported::calls()[step.call].name;
}

}  // namespace differential
