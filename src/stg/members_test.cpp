// VLANs joining and leaving groups, and the map of them.
#include "stg/testing/support.h"

namespace {

using stg_test::calls;
using stg_test::releases;
using stg_test::table_bytes;
using stg_test::vlan_add;
using stg_test::vlan_remove;
using ::testing::ElementsAre;
using ::testing::ElementsAreArray;
using ::testing::IsEmpty;

constexpr uint32_t kNoSuchVlans[] = {4096, 4097, 0x8000, 0xFFFF, 0x11000, 0xFFFFFFFF};

class MstiMember : public stg_test::StgTest {};

TEST_F(MstiMember, OfNoGroupIsOnlyAdded) {
    for (const uint32_t vlan : {0u, 1u, 100u, 4094u, 4095u}) {
        start_over();
        EXPECT_EQ(adp_add_msti_member(2, vlan), 0);
        EXPECT_THAT(driver().trace(), ElementsAre(vlan_add(2, vlan)));
        EXPECT_EQ(map(), map_with({{vlan, 2}}));
    }
}

TEST_F(MstiMember, MovedToAnotherGroupLeavesTheOldOneFirst) {
    ASSERT_EQ(adp_add_msti_member(2, 100), 0);
    EXPECT_EQ(driver().take(), calls(vlan_add(2, 100)));
    EXPECT_EQ(adp_add_msti_member(3, 100), 0);
    EXPECT_THAT(driver().trace(), ElementsAreArray(calls(releases(2), vlan_remove(2, 100), vlan_add(3, 100))));
    EXPECT_EQ(map(), map_with({{100, 3}}));
}

TEST_F(MstiMember, AddedToItsOwnGroupLeavesItFirst) {
    set_map({{100, 2}, {101, 2}});
    EXPECT_EQ(adp_add_msti_member(2, 100), 0);
    EXPECT_THAT(driver().trace(), ElementsAreArray(calls(releases(2), vlan_remove(2, 100), vlan_add(2, 100))));
    EXPECT_EQ(map(), map_with({{100, 2}, {101, 2}}));
}

TEST_F(MstiMember, AddedToGroupZeroLeavesItsGroup) {
    set_map({{100, 2}});
    EXPECT_EQ(adp_add_msti_member(0, 100), 0);
    EXPECT_THAT(driver().trace(), ElementsAreArray(calls(releases(2), vlan_remove(2, 100), vlan_add(0, 100))));
    EXPECT_EQ(map(), map_with({}));
}

TEST_F(MstiMember, IsAVlanIdOfSixteenBits) {
    EXPECT_EQ(adp_add_msti_member(2, 0x10064), 0);
    EXPECT_EQ(driver().take(), calls(vlan_add(2, 100)));
    EXPECT_EQ(map(), map_with({{100, 2}}));
    EXPECT_EQ(adp_del_msti_member(2, 0xFFFF0064), 0);
    EXPECT_EQ(driver().take(), calls(releases(2), vlan_remove(2, 100)));
    EXPECT_EQ(map(), map_with({}));
}

TEST_F(MstiMember, GroupIsCutInTheMapOnly) {
    EXPECT_EQ(adp_add_msti_member(0x10005, 100), 0);
    EXPECT_EQ(driver().take(), calls(vlan_add(0x10005, 100)));
    EXPECT_EQ(map(), map_with({{100, 5}}));
    EXPECT_EQ(adp_add_msti_member(6, 100), 0);
    EXPECT_EQ(driver().take(), calls(releases(5), vlan_remove(5, 100), vlan_add(6, 100)));
}

TEST_F(MstiMember, OfTheHighestGroupLeavesIt) {
    EXPECT_EQ(adp_add_msti_member(INT16_MAX, 100), 0);
    EXPECT_EQ(driver().take(), calls(vlan_add(INT16_MAX, 100)));
    EXPECT_EQ(adp_add_msti_member(6, 100), 0);
    EXPECT_EQ(driver().take(), calls(releases(INT16_MAX), vlan_remove(INT16_MAX, 100), vlan_add(6, 100)));
}

TEST_F(MstiMember, OfAGroupStoredAsNegativeOrZeroLeavesNothing) {
    const struct {
        int32_t stg;
        int16_t stored;
    } groups[] = {{-1, -1}, {0x8000, INT16_MIN}, {0xFFFF, -1}, {0x10000, 0}, {INT32_MIN, 0}, {INT32_MAX, -1}};
    for (const auto &[stg, stored] : groups) {
        start_over();
        EXPECT_EQ(adp_add_msti_member(stg, 100), 0);
        EXPECT_EQ(map(), map_with({{100, stored}}));
        EXPECT_EQ(adp_add_msti_member(6, 100), 0);
        EXPECT_THAT(driver().trace(), ElementsAre(vlan_add(stg, 100), vlan_add(6, 100)));
    }
}

TEST_F(MstiMember, RemovedIsInNoGroupWhicheverItWasIn) {
    set_map({{100, 7}, {101, 5}});
    EXPECT_EQ(adp_del_msti_member(5, 100), 0);
    EXPECT_THAT(driver().trace(), ElementsAreArray(calls(releases(5), vlan_remove(5, 100))));
    EXPECT_EQ(map(), map_with({{101, 5}}));
}

TEST_F(MstiMember, RemovedFromAnyGroupNumberCallsTheDriver) {
    for (const int32_t stg : {0, -1, 0x10005, INT32_MIN}) {
        EXPECT_EQ(adp_del_msti_member(stg, 4095), 0);
        EXPECT_EQ(driver().take(), calls(releases(stg), vlan_remove(stg, 4095)));
    }
}

TEST_F(MstiMember, ReleasesThePortsThatTheMapHas) {
    library_test::make_default_map(2);
    std::vector<int> ports(library_test::kUserPorts, -1);
    ports[0] = 4;
    ports[1] = 5;
    EXPECT_EQ(adp_del_msti_member(5, 100), 0);
    EXPECT_EQ(driver().trace(), calls(stg_test::state_sets(5, ports, 4), vlan_remove(5, 100)));
}

TEST_F(MstiMember, IsStoredEvenWhenTheDriverFails) {
    for (const int32_t failure : stg_test::kFailures) {
        start_over();
        driver().fail_every("user_stg_vlan_add", failure);
        EXPECT_EQ(adp_add_msti_member(2, 100), failure);
        EXPECT_EQ(map(), map_with({{100, 2}}));
        driver().fail_every("user_stg_vlan_remove", failure);
        EXPECT_EQ(adp_del_msti_member(2, 100), failure);
        EXPECT_EQ(map(), map_with({}));
    }
}

TEST_F(MstiMember, MoveContinuesWhicheverCallFails) {
    const agg_test::Trace whole = calls(releases(2), vlan_remove(2, 100), vlan_add(3, 100));
    for (size_t failing = 0; failing < whole.size(); ++failing) {
        for (const int32_t failure : stg_test::kFailures) {
            start_over();
            set_map({{100, 2}, {101, 2}});
            driver().fail_call(failing, failure);
            EXPECT_EQ(adp_add_msti_member(3, 100), failing == whole.size() - 1 ? failure : 0);
            EXPECT_EQ(driver().trace(), whole);
            EXPECT_EQ(map(), map_with({{100, 3}, {101, 2}}));
        }
    }
}

TEST_F(MstiMember, RemovalContinuesWhicheverCallFails) {
    const agg_test::Trace whole = calls(releases(2), vlan_remove(2, 100));
    for (size_t failing = 0; failing < whole.size(); ++failing) {
        start_over();
        set_map({{100, 2}, {101, 2}});
        driver().fail_call(failing, -7);
        EXPECT_EQ(adp_del_msti_member(2, 100), failing == whole.size() - 1 ? -7 : 0);
        EXPECT_EQ(driver().trace(), whole);
        EXPECT_EQ(map(), map_with({{101, 2}}));
    }
}

TEST_F(MstiMember, IsRefusedBeyondTheMap) {
    std::fill(aiVlanStg, aiVlanStg + ADP_VLANS, int16_t{7});
    const std::string before = table_bytes();
    for (const uint32_t vlan : kNoSuchVlans) {
        EXPECT_EQ(adp_add_msti_member(2, vlan), -1) << vlan;
        EXPECT_EQ(adp_del_msti_member(2, vlan), -1) << vlan;
    }
    EXPECT_THAT(driver().trace(), IsEmpty());
    EXPECT_EQ(table_bytes(), before);
}

}  // namespace
