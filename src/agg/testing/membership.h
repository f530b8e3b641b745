// Shared by the tests of joining and leaving: the two forms of the calls, and one group with its tables.
#pragma once

#include "core/testing/group.h"

namespace membership_test {

using agg_test::bits_of;
using agg_test::Intfs;
using agg_test::Ports;
using agg_test::table_bytes;

constexpr uint32_t kGroup = 3;
constexpr uint32_t kAgg = ADP_AGG_INTF(kGroup);

inline adp_status_t add_list(uint32_t agg, const Intfs &list) {
    return adp_add_agg_member(agg, static_cast<uint32_t>(list.size()), list.data());
}

inline adp_status_t del_list(uint32_t agg, const Intfs &list) {
    return adp_del_agg_member(agg, static_cast<uint32_t>(list.size()), list.data());
}

inline adp_status_t add_bits(uint32_t agg, const Intfs &list) {
    return adp_add_agg_member_by_map(agg, bits_of(list), 0);
}

inline adp_status_t del_bits(uint32_t agg, const Intfs &list) {
    return adp_del_agg_member_by_map(agg, bits_of(list), 0);
}

inline std::string event(int state) {
    return agg_test::event(kGroup, state);
}

/** The two ways to name members; lists given to both are in ascending order. */
struct Form {
    const char *name;
    adp_status_t (*add)(uint32_t, const Intfs &);
    adp_status_t (*del)(uint32_t, const Intfs &);
};

inline const auto kForms = ::testing::Values(Form{"List", add_list, del_list}, Form{"Bitmap", add_bits, del_bits});

inline std::string form_name(const ::testing::TestParamInfo<Form> &info) {
    return info.param.name;
}

class MembershipTest : public agg_test::AggTest, public ::testing::WithParamInterface<Form> {
  protected:
    static adp_status_t add(const Intfs &list) { return GetParam().add(kAgg, list); }
    static adp_status_t del(const Intfs &list) { return GetParam().del(kAgg, list); }

    void set_all_links(const Ports &ports) {
        set_links(ports);
        for (const uint8_t port : ports) {
            set_fibre_link(port, 1);
        }
    }

    /** A group as it is after additions: its record, its rows in the map, its manager. */
    static void set_group(uint8_t in_use, const Ports &ports, uint32_t manager, const Intfs &mapped) {
        set_record(kGroup, in_use, ports);
        agg_manage_intf[kGroup - 1] = manager;
        for (const uint32_t intf : mapped) {
            intf_map_trunk[intf] = kAgg;
        }
    }

    /** The tables with that group, everything else as after start(). */
    std::string bytes_with(uint8_t in_use, const Ports &ports, uint32_t manager, const Intfs &mapped, int8_t state) {
        start();
        set_group(in_use, ports, manager, mapped);
        adp::agg_link_status[kGroup] = state;
        const std::string bytes = table_bytes();
        start();
        return bytes;
    }
};

}  // namespace membership_test
