// A port's state in a group: set on ports and on all members of an aggregation interface, read from ports.
#include "stg/testing/support.h"

namespace {

using stg_test::Outcome;
using stg_test::state_get;
using stg_test::state_sets;
using stg_test::table_bytes;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

constexpr uint32_t kGroup = 2;
constexpr uint32_t kAgg = ADP_AGG_INTF(kGroup);

class MstpState : public stg_test::StgTest {
  protected:
    static Outcome set(uint32_t intf, int32_t stg = 5, uint32_t state = 1) {
        return library_test::outcome_of([=] { return adp_set_port_mstp_state(stg, intf, state); });
    }

    /** The report of the member at a place, an interface number as the report shows it. */
    static std::string report(size_t place, int member, int32_t stg = 5) {
        return "adp_set_port_mstp_state set tMstId " + std::to_string(stg) + " tIntfId 268435458 atMemList[" +
               std::to_string(place) + "] " + std::to_string(member) + " fail. \n";
    }
};

TEST_F(MstpState, OfAPortIsPassedOnUnchanged) {
    EXPECT_EQ(set(1, 5, 0), Outcome{});
    EXPECT_EQ(set(26, 0x10005, 0xFFFFFFFF), Outcome{});
    EXPECT_EQ(set(3, INT32_MIN, 0x10001), Outcome{});
    EXPECT_EQ(driver().trace(), stg_test::calls(state_sets(5, {4}, 0), state_sets(0x10005, {29}, 0xFFFFFFFF),
                                                state_sets(INT32_MIN, {6}, 0x10001)));
}

TEST_F(MstpState, OfTheCpuRowAndOfAnUnmappedPortIsSetToo) {
    EXPECT_EQ(set(0), Outcome{});
    EXPECT_EQ(set(27), Outcome{});
    EXPECT_EQ(driver().trace(), state_sets(5, {0, -1}, 1));
}

TEST_F(MstpState, OfAPortReturnsTheDriversResultWithoutAReport) {
    for (const int32_t failure : stg_test::kFailures) {
        driver().fail_every("user_stg_stp_set", failure);
        EXPECT_EQ(set(1), (Outcome{failure, "", ""}));
    }
}

TEST_F(MstpState, OfAGroupIsSetOnItsActiveMembersInOrder) {
    set_configured(kGroup, 1u << 9);
    for (const std::vector<int> &ports : {std::vector<int>{4}, {29, 4, 10}, {11, 10, 9, 8, 7, 6, 5, 4}}) {
        set_active(kGroup, {ports.begin(), ports.end()});
        EXPECT_EQ(set(kAgg, -1, 3), Outcome{});
        EXPECT_EQ(driver().take(), state_sets(-1, ports, 3));
    }
}

TEST_F(MstpState, OfAGroupIsSetOnEmptySlotsToo) {
    set_active(kGroup, {4, 0, 200, 6});
    EXPECT_EQ(set(kAgg), Outcome{});
    EXPECT_EQ(driver().take(), state_sets(5, {4, 0, -1, 6}, 1));
}

TEST_F(MstpState, OfAGroupWithoutMembersIsNotSet) {
    set_configured(kGroup, 1u << 9);
    agg_manage_intf[kGroup - 1] = 9;
    EXPECT_EQ(set(kAgg), Outcome{});
    EXPECT_THAT(driver().trace(), IsEmpty());
}

TEST_F(MstpState, OfAGroupOfNineOrMoreIsTheListsResult) {
    for (const size_t count : {9u, 11u}) {
        set_active(kGroup, agg_test::first_ports(count));
        EXPECT_EQ(set(kAgg), (Outcome{-1, "", ""}));
    }
    EXPECT_THAT(driver().trace(), IsEmpty());
}

TEST_F(MstpState, OfAGroupStopsAtTheFirstFailureAndReportsTheMember) {
    const std::vector<int> ports = {4, 29, 6};
    const int members[] = {1, 26, 3};
    set_active(kGroup, {4, 29, 6});
    const std::string before = table_bytes();
    for (size_t failing = 0; failing < ports.size(); ++failing) {
        for (const int32_t failure : stg_test::kFailures) {
            driver().fail_call(failing, failure);
            EXPECT_EQ(set(kAgg), (Outcome{failure, report(failing, members[failing]), ""}));
            EXPECT_EQ(driver().take(),
                      state_sets(5, {ports.begin(), ports.begin() + static_cast<long>(failing) + 1}, 1));
        }
    }
    EXPECT_EQ(table_bytes(), before);
}

TEST_F(MstpState, ReportShowsAnEmptySlotAndAnUnmappedMemberUnchanged) {
    set_active(kGroup, {0, 200});
    driver().fail_call(0, -7);
    EXPECT_EQ(set(kAgg, -3), (Outcome{-7, report(0, 0, -3), ""}));
    driver().fail_call(1, -7);
    EXPECT_EQ(set(kAgg, INT32_MAX), (Outcome{-7, report(1, -1, INT32_MAX), ""}));
}

TEST_F(MstpState, OfOtherTypesAndGroupsIsMinusOneWithoutADriverCall) {
    for (const uint32_t intf : stg_test::kOtherTypes) {
        EXPECT_EQ(set(intf), (Outcome{-1, "", ""})) << intf;
    }
    for (const uint32_t group : stg_test::kBadGroups) {
        EXPECT_EQ(set(group), (Outcome{-1, "", ""})) << group;
    }
    EXPECT_THAT(driver().trace(), IsEmpty());
}

TEST_F(MstpState, OfAPortIsReadIntoTheCallersOutput) {
    driver().on("user_stg_stp_get").sets("state", 0x80000003u);
    uint32_t state = stg_test::kNotWritten;
    EXPECT_EQ(adp_stg_stp_get(-1, 26, &state), 0);
    EXPECT_EQ(state, 0x80000003u);
    EXPECT_THAT(driver().take(), ElementsAre(state_get(-1, 29)));
}

TEST_F(MstpState, IsReadWithoutATypeCheck) {
    set_active(kGroup, {4});
    agg_manage_intf[kGroup - 1] = 1;
    uint32_t state = stg_test::kNotWritten;
    for (const uint32_t intf : {0u, 27u, kAgg, ADP_AGG_INTF(9), 0x20000001u}) {
        EXPECT_EQ(adp_stg_stp_get(5, intf, &state), 0);
    }
    EXPECT_THAT(driver().trace(),
                ElementsAre(state_get(5, 0), state_get(5, -1), state_get(5, -1), state_get(5, -1), state_get(5, -1)));
    EXPECT_EQ(state, stg_test::kNotWritten);
}

}  // namespace
