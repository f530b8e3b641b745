// The port VLAN id of user ports and aggregation interfaces.
#include "tests/support/library_test.h"

namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

constexpr uint32_t kAgg2 = ADP_AGG_INTF(2);
const std::string kSetOnNoPort = "user_port_untagged_vlan_set(unit=0, zero=0, port=-1, vid=100)";

class Pvid : public library_test::LibraryTest {
  protected:
    uint32_t vlan = 42;
};

TEST_F(Pvid, SetOnAUserPortReturnsTheDriversResult) {
    EXPECT_EQ(adp_intf_pivd_set(26, 0x30064), 0);
    EXPECT_THAT(driver().take(), ElementsAre("user_port_untagged_vlan_set(unit=0, zero=0, port=29, vid=100)"));
    driver().fail_every("user_port_untagged_vlan_set", -33);
    EXPECT_EQ(adp_intf_pivd_set(1, 100), -33);
}

TEST_F(Pvid, SetPassesAnUnmappedPortOn) {
    EXPECT_EQ(adp_intf_pivd_set(27, 100), 0);
    EXPECT_THAT(driver().trace(), ElementsAre(kSetOnNoPort));
}

TEST_F(Pvid, SetOnAGroupNamesNoPortOncePerNonEmptySlot) {
    set_active(2, {4, 0, 6});
    EXPECT_EQ(adp_intf_pivd_set(kAgg2, 100), 0);
    EXPECT_THAT(driver().trace(), ElementsAre(kSetOnNoPort, kSetOnNoPort));
}

TEST_F(Pvid, SetOnAGroupTakesTheActiveMembersNotTheConfiguredOnes) {
    set_active(2, {4});
    set_configured(2, 1u << 3 | 1u << 4);
    EXPECT_EQ(adp_intf_pivd_set(kAgg2, 100), 0);
    EXPECT_THAT(driver().trace(), ElementsAre(kSetOnNoPort));
}

TEST_F(Pvid, SetOnAGroupStopsAtTheFirstFailure) {
    set_active(2, {4, 5, 6});
    for (size_t failing = 0; failing < 3; ++failing) {
        driver().reset();
        driver().fail_call(failing, -7);
        EXPECT_EQ(adp_intf_pivd_set(kAgg2, 100), 102);
        EXPECT_EQ(driver().count(), failing + 1);
    }
}

TEST_F(Pvid, SetOnAnEmptyGroupDoesNothing) {
    set_configured(2, 1u << 3);
    EXPECT_EQ(adp_intf_pivd_set(kAgg2, 100), 0);
    EXPECT_THAT(driver().trace(), IsEmpty());
}

TEST_F(Pvid, SetOnAGroupOfNineVisitsTheSlotsThatWereNotFilled) {
    set_active(2, {4, 5, 6, 7, 8, 9, 10, 11, 12});
    EXPECT_EQ(adp_intf_pivd_set(kAgg2, 100), 0);
    EXPECT_THAT(driver().trace(), IsEmpty());
}

TEST_F(Pvid, SetOnAGroupOfEight) {
    set_active(2, {4, 5, 6, 7, 8, 9, 10, 11});
    EXPECT_EQ(adp_intf_pivd_set(kAgg2, 100), 0);
    EXPECT_EQ(driver().count(), 8u);
}

TEST_F(Pvid, GetOnAUserPortReportsAnyFailureAs102) {
    driver().on("user_port_untagged_vlan_get").sets("vid", 4094u);
    EXPECT_EQ(adp_intf_pivd_get(1, &vlan), 0);
    EXPECT_EQ(vlan, 4094u);
    EXPECT_THAT(driver().trace(), ElementsAre("user_port_untagged_vlan_get(unit=0, zero=0, port=4)"));
    for (const int32_t failure : {-1, 1, 77}) {
        driver().fail_every("user_port_untagged_vlan_get", failure);
        EXPECT_EQ(adp_intf_pivd_get(1, &vlan), 102);
    }
}

TEST_F(Pvid, GetOnAGroupReadsItsManagementInterface) {
    agg_manage_intf[1] = 9;
    set_configured(2, 1u << 3);
    EXPECT_EQ(adp_intf_pivd_get(kAgg2, &vlan), 0);
    EXPECT_THAT(driver().trace(), ElementsAre("user_port_untagged_vlan_get(unit=0, zero=0, port=12)"));
}

TEST_F(Pvid, GetOnAGroupFallsBackToItsLowestConfiguredMember) {
    set_configured(2, 1u << 26 | 1u << 5);
    EXPECT_EQ(adp_intf_pivd_get(kAgg2, &vlan), 0);
    EXPECT_THAT(driver().trace(), ElementsAre("user_port_untagged_vlan_get(unit=0, zero=0, port=8)"));
}

TEST_F(Pvid, GetOnAGroupWithNeitherIs203) {
    set_active(2, {4});  // active members do not count
    EXPECT_EQ(adp_intf_pivd_get(kAgg2, &vlan), 203);
    EXPECT_EQ(vlan, 42u);
    EXPECT_THAT(driver().trace(), IsEmpty());
}

TEST_F(Pvid, OtherTypesAndGroupsAreRefusedWithoutADriverCall) {
    const std::string before = library_test::table_bytes();
    for (const uint32_t intf : {0x20000001u, 0x30000000u, 0xFFFFFFFFu}) {
        EXPECT_EQ(adp_intf_pivd_set(intf, 100), 201);
        EXPECT_EQ(adp_intf_pivd_get(intf, &vlan), 201);
    }
    for (const uint32_t group : {ADP_AGG_INTF(0), ADP_AGG_INTF(9), 0x1FFFFFFFu}) {
        EXPECT_EQ(adp_intf_pivd_set(group, 100), -1);
        EXPECT_EQ(adp_intf_pivd_get(group, &vlan), -1);
    }
    EXPECT_EQ(vlan, 42u);
    EXPECT_THAT(driver().trace(), IsEmpty());
    EXPECT_EQ(library_test::table_bytes(), before);
}

}  // namespace
