// Groups as MST instances: created, destroyed and emptied.
#include "stg/testing/support.h"

namespace {

using stg_test::calls;
using stg_test::on_group;
using stg_test::releases;
using stg_test::table_bytes;
using stg_test::vlan_remove;
using ::testing::ElementsAre;
using ::testing::ElementsAreArray;
using ::testing::IsEmpty;

std::string destroy(int32_t stg) {
    return on_group("user_stg_destroy", stg);
}

class MstpInstance : public stg_test::StgTest {};

TEST_F(MstpInstance, IsCreatedUnderItsOwnNumber) {
    set_map({{100, 5}});
    const std::string before = table_bytes();
    for (const int32_t stg : {0, 5, 16, 0x10005, -1, INT32_MIN}) {
        EXPECT_EQ(adp_create_mstp_instance(stg), 0);
        EXPECT_THAT(driver().take(), ElementsAre(on_group("user_stg_create_id", stg)));
    }
    for (const int32_t failure : stg_test::kFailures) {
        driver().fail_every("user_stg_create_id", failure);
        EXPECT_EQ(adp_create_mstp_instance(5), failure);
    }
    EXPECT_EQ(table_bytes(), before);
}

TEST_F(MstpInstance, ZeroIsNeverDestroyed) {
    set_map({{100, 5}});
    const std::string before = table_bytes();
    EXPECT_EQ(adp_delete_mstp_instance(0), 0);
    EXPECT_THAT(driver().trace(), IsEmpty());
    EXPECT_EQ(table_bytes(), before);
}

TEST_F(MstpInstance, DestroyedGivesUpItsVlansInAscendingOrderAndReleasesItsPorts) {
    set_map({{4095, 5}, {0, 5}, {100, 5}, {99, 4}, {101, 6}});
    EXPECT_EQ(adp_delete_mstp_instance(5), 0);
    EXPECT_THAT(driver().trace(), ElementsAreArray(calls(destroy(5), vlan_remove(5, 0), vlan_remove(5, 100),
                                                         vlan_remove(5, 4095), releases(5))));
    EXPECT_EQ(map(), map_with({{99, 4}, {101, 6}}));
}

TEST_F(MstpInstance, DestroyedWithoutVlansReleasesItsPorts) {
    EXPECT_EQ(adp_delete_mstp_instance(-3), 0);
    EXPECT_THAT(driver().trace(), ElementsAreArray(calls(destroy(-3), releases(-3))));
}

TEST_F(MstpInstance, KeepsItsVlansWhenTheDriverFailsToDestroyIt) {
    set_map({{100, 5}});
    const std::string before = table_bytes();
    for (const int32_t failure : {-1, -77, INT32_MIN}) {
        driver().fail_every("user_stg_destroy", failure);
        EXPECT_EQ(adp_delete_mstp_instance(5), failure);
        EXPECT_THAT(driver().take(), ElementsAre(destroy(5)));
    }
    EXPECT_EQ(table_bytes(), before);
}

TEST_F(MstpInstance, IsClearedAfterAPositiveResultWhichIsReturned) {
    for (const int32_t result : {1, 77, INT32_MAX}) {
        set_map({{100, 5}});
        driver().on("user_stg_destroy").returns(result);
        EXPECT_EQ(adp_delete_mstp_instance(5), result);
        EXPECT_THAT(driver().take(), ElementsAreArray(calls(destroy(5), vlan_remove(5, 100), releases(5))));
        EXPECT_EQ(map(), map_with({}));
    }
}

TEST_F(MstpInstance, IsClearedWhicheverLaterCallFails) {
    const size_t last = calls(destroy(5), vlan_remove(5, 100), vlan_remove(5, 200), releases(5)).size() - 1;
    for (size_t failing = 1; failing <= last; ++failing) {
        for (const int32_t failure : stg_test::kFailures) {
            start_over();
            set_map({{100, 5}, {150, 7}, {200, 5}});
            driver().fail_call(failing, failure);
            EXPECT_EQ(adp_delete_mstp_instance(5), 0);
            EXPECT_EQ(driver().count(), last + 1);
            EXPECT_EQ(map(), map_with({{150, 7}}));
        }
    }
}

class AllMembers : public stg_test::StgTest {};

TEST_F(AllMembers, AreRemovedBeforeThePortsAreReleased) {
    set_map({{1, 7}, {2, 5}, {3, 7}});
    EXPECT_EQ(adp_del_msti_all_member(7), 0);
    EXPECT_THAT(driver().trace(), ElementsAreArray(calls(vlan_remove(7, 1), vlan_remove(7, 3), releases(7))));
    EXPECT_EQ(map(), map_with({{2, 5}}));
}

TEST_F(AllMembers, MayBeEveryVlan) {
    std::fill(aiVlanStg, aiVlanStg + ADP_VLANS, int16_t{7});
    agg_test::Trace removals;
    for (uint32_t vlan = 0; vlan < ADP_VLANS; ++vlan) {
        removals.push_back(vlan_remove(7, vlan));
    }
    EXPECT_EQ(adp_del_msti_all_member(7), 0);
    EXPECT_EQ(driver().trace(), calls(removals, releases(7)));
    EXPECT_EQ(map(), map_with({}));
}

TEST_F(AllMembers, OfGroupZeroAreNone) {
    set_map({{2, 5}});
    EXPECT_EQ(adp_del_msti_all_member(0), 0);
    EXPECT_THAT(driver().trace(), ElementsAreArray(releases(0)));
    EXPECT_EQ(map(), map_with({{2, 5}}));
}

TEST_F(AllMembers, AreComparedSigned) {
    set_map({{10, -1}, {11, INT16_MIN}});
    for (const int32_t stg : {0xFFFF, 0x8000, 0x10000, 0x1FFFF}) {
        EXPECT_EQ(adp_del_msti_all_member(stg), 0);
        EXPECT_EQ(driver().take(), releases(stg));
    }
    EXPECT_EQ(adp_del_msti_all_member(-1), 0);
    EXPECT_EQ(driver().take(), calls(vlan_remove(-1, 10), releases(-1)));
    EXPECT_EQ(adp_del_msti_all_member(INT16_MIN), 0);
    EXPECT_EQ(driver().take(), calls(vlan_remove(INT16_MIN, 11), releases(INT16_MIN)));
    EXPECT_EQ(map(), map_with({}));
}

TEST_F(AllMembers, OfAGroupThatWasCutAreFoundUnderTheStoredNumberOnly) {
    ASSERT_EQ(adp_add_msti_member(0x10005, 100), 0);
    EXPECT_EQ(driver().take(), calls(stg_test::vlan_add(0x10005, 100)));
    EXPECT_EQ(adp_del_msti_all_member(0x10005), 0);
    EXPECT_EQ(driver().take(), releases(0x10005));
    EXPECT_EQ(map(), map_with({{100, 5}}));
    EXPECT_EQ(adp_del_msti_all_member(5), 0);
    EXPECT_EQ(driver().take(), calls(vlan_remove(5, 100), releases(5)));
}

TEST_F(AllMembers, AreRemovedWhateverTheDriversResult) {
    for (const int32_t failure : stg_test::kFailures) {
        start_over();
        set_map({{1, 7}, {3, 7}});
        driver().fail_every("user_stg_vlan_remove", failure);
        driver().fail_every("user_stg_stp_set", failure);
        EXPECT_EQ(adp_del_msti_all_member(7), 0);
        EXPECT_EQ(driver().trace(), calls(vlan_remove(7, 1), vlan_remove(7, 3), releases(7)));
        EXPECT_EQ(map(), map_with({}));
    }
}

TEST_F(AllMembers, ReleasePortMinusOneWithoutAMap) {
    library_test::drop_map();
    EXPECT_EQ(adp_del_msti_all_member(7), 0);
    EXPECT_EQ(driver().trace(), stg_test::state_sets(7, std::vector<int>(library_test::kUserPorts, -1), 4));
}

}  // namespace
