// A ring port's state: its state in group 0.
#include "stg/testing/support.h"

namespace {

using stg_test::Outcome;
using stg_test::state_get;
using stg_test::state_sets;
using stg_test::table_bytes;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

constexpr uint32_t kGroup = 8;
constexpr uint32_t kAgg = ADP_AGG_INTF(kGroup);

class RingPort : public stg_test::StgTest {
  protected:
    /** Every outcome is compared with both streams: the set prints nothing. */
    static Outcome set(uint32_t intf, uint32_t state = 1) {
        return library_test::outcome_of([=] { return adp_set_port_erps_state(intf, state); });
    }
};

TEST_F(RingPort, IsOneDriverCallInGroupZero) {
    set_map({{100, 5}});
    const std::string before = table_bytes();
    EXPECT_EQ(set(1, 0), Outcome{});
    EXPECT_EQ(driver().take(), state_sets(0, {4}, 0));
    EXPECT_EQ(set(26, 0xFFFF0001), Outcome{});
    EXPECT_EQ(driver().take(), state_sets(0, {29}, 0xFFFF0001));
    EXPECT_EQ(table_bytes(), before);
}

TEST_F(RingPort, OnTheCpuRowAndUnmappedIsSetToo) {
    EXPECT_EQ(set(0), Outcome{});
    EXPECT_EQ(set(27), Outcome{});
    EXPECT_EQ(driver().trace(), state_sets(0, {0, -1}, 1));
}

TEST_F(RingPort, ReturnsTheDriversResultUnmapped) {
    for (const int32_t failure : stg_test::kFailures) {
        driver().fail_every("user_stg_stp_set", failure);
        EXPECT_EQ(set(1), (Outcome{failure, "", ""}));
    }
}

TEST_F(RingPort, AsAGroupSetsItsActiveMembersInOrder) {
    set_configured(kGroup, 1u << 9);
    for (const std::vector<int> &ports : {std::vector<int>{4}, {29, 4, 10}, {11, 10, 9, 8, 7, 6, 5, 4}}) {
        set_active(kGroup, {ports.begin(), ports.end()});
        EXPECT_EQ(set(kAgg, 4), Outcome{});
        EXPECT_EQ(driver().take(), state_sets(0, ports, 4));
    }
}

TEST_F(RingPort, AsAGroupCountsEmptySlotsButDoesNotSetThem) {
    set_active(kGroup, {4, 0, 200, 6});
    agg_info[kGroup - 1].ports[4] = 7;  // beyond the count
    EXPECT_EQ(set(kAgg), Outcome{});
    EXPECT_EQ(driver().take(), state_sets(0, {4, -1, 6}, 1));
    agg_info[kGroup - 1].count = 3;
    EXPECT_EQ(set(kAgg), Outcome{});
    EXPECT_EQ(driver().take(), state_sets(0, {4, -1}, 1));
}

TEST_F(RingPort, AsAGroupWithoutMembersSetsNothing) {
    set_configured(kGroup, 1u << 9);
    EXPECT_EQ(set(kAgg), Outcome{});
    EXPECT_THAT(driver().trace(), IsEmpty());
}

TEST_F(RingPort, AsAGroupOfNineOrMoreVisitsSlotsThatWereNotFilled) {
    for (const size_t count : {9u, 11u}) {
        set_active(kGroup, agg_test::first_ports(count));
        EXPECT_EQ(set(kAgg), Outcome{});
    }
    EXPECT_THAT(driver().trace(), IsEmpty());
}

TEST_F(RingPort, AsAGroupStopsAtTheFirstFailureWith102) {
    const std::vector<int> ports = {4, 29, 6};
    set_active(kGroup, {4, 29, 6});
    const std::string before = table_bytes();
    for (size_t failing = 0; failing < ports.size(); ++failing) {
        for (const int32_t failure : stg_test::kFailures) {
            driver().fail_call(failing, failure);
            EXPECT_EQ(set(kAgg), (Outcome{102, "", ""}));
            EXPECT_EQ(driver().take(),
                      state_sets(0, {ports.begin(), ports.begin() + static_cast<long>(failing) + 1}, 1));
        }
    }
    EXPECT_EQ(table_bytes(), before);
}

TEST_F(RingPort, OfOtherTypesIs201AndOfOtherGroupsRefused) {
    for (const uint32_t intf : stg_test::kOtherTypes) {
        EXPECT_EQ(set(intf), (Outcome{201, "", ""})) << intf;
    }
    for (const uint32_t group : stg_test::kBadGroups) {
        EXPECT_EQ(set(group), (Outcome{-1, "", ""})) << group;
    }
    EXPECT_THAT(driver().trace(), IsEmpty());
}

TEST_F(RingPort, IsReadInGroupZero) {
    driver().on("user_stg_stp_get").sets("state", 0x80000003u);
    uint32_t state = stg_test::kNotWritten;
    EXPECT_EQ(adp_get_port_erps_state(26, &state), 0);
    EXPECT_EQ(state, 0x80000003u);
    EXPECT_THAT(driver().take(), ElementsAre(state_get(0, 29)));
}

TEST_F(RingPort, IsReadWithoutATypeCheck) {
    set_active(kGroup, {4});
    agg_manage_intf[kGroup - 1] = 1;
    uint32_t state = stg_test::kNotWritten;
    for (const uint32_t intf : {0u, 27u, kAgg, 0x30000001u}) {
        EXPECT_EQ(adp_get_port_erps_state(intf, &state), 0);
    }
    EXPECT_THAT(driver().trace(), ElementsAre(state_get(0, 0), state_get(0, -1), state_get(0, -1), state_get(0, -1)));
    EXPECT_EQ(state, stg_test::kNotWritten);
}

}  // namespace
