// Members joining and leaving: the groups and interfaces that are accepted, and failures of the hardware trunk.
#include "agg/testing/membership.h"

namespace {

using namespace membership_test;
using agg_test::calls;
using agg_test::fibre_reads;
using agg_test::kBadGroups;
using agg_test::link_reads;
using agg_test::to_kernel;
using agg_test::trunk_set;
using ::testing::ElementsAreArray;
using ::testing::IsEmpty;

constexpr int32_t kDriverResults[] = {-1, 1, 102, -33, INT32_MIN};

class Membership : public MembershipTest {};

TEST_P(Membership, AnInterfaceBeyondTheMapRefusesTheWholeCall) {
    library_test::make_default_map(10);
    set_group(1, {4, 5}, 1, {1, 2});
    const std::string before = table_bytes();
    for (const Intfs &list : {Intfs{11}, Intfs{1, 2, 26}, Intfs{3, 11}}) {
        EXPECT_EQ(add(list), -1);
        EXPECT_EQ(del(list), -1);
    }
    EXPECT_EQ(table_bytes(), before);
    EXPECT_THAT(driver().trace(), IsEmpty());
    EXPECT_EQ(add({10}), 0);
    EXPECT_EQ(record_ports(kGroup), (Ports{4, 5, 13}));
}

TEST_P(Membership, WithoutAMapEveryInterfaceIsRefused) {
    library_test::drop_map();
    set_record(kGroup, 1, {4, 5});
    for (const uint32_t intf : {0u, 1u}) {
        EXPECT_EQ(add({intf}), -1);
        EXPECT_EQ(del({intf}), -1);
    }
    EXPECT_THAT(driver().trace(), IsEmpty());
}

TEST_P(Membership, TheCpuRowIsAMemberLikeAnyOther) {
    EXPECT_EQ(add({0}), 0);
    EXPECT_THAT(driver().take(), ElementsAreArray(calls(link_reads({0}), trunk_set(kGroup, {0}),
                                                        to_kernel(kGroup, 0, {0}), fibre_reads({0}))));
    EXPECT_EQ(intf_map_trunk[0], kAgg);
    EXPECT_EQ(del({0}), 0);
    EXPECT_EQ(intf_map_trunk[0], 0u);
    EXPECT_EQ(agg_info[kGroup - 1].count, 0);
}

TEST_P(Membership, AFailedTrunkSetIsReturnedAndChangesNothing) {
    for (const int32_t result : kDriverResults) {
        start();
        set_group(1, {4, 5}, 9, {1, 2});
        set_all_links({5});
        adp::agg_link_status[kGroup] = 1;
        const std::string before = table_bytes();
        driver().fail_every("user_trunk_set", result);
        EXPECT_EQ(add({3}), result);
        EXPECT_THAT(driver().take(),
                    ElementsAreArray(calls(link_reads({4, 5, 6}), trunk_set(kGroup, {4, 5, 6}), event(1))));
        EXPECT_EQ(del({1}), result);
        EXPECT_THAT(driver().take(), ElementsAreArray(calls(link_reads({5}), trunk_set(kGroup, {5}))));
        EXPECT_EQ(table_bytes(), before);
    }
}

TEST_P(Membership, GroupsOutsideOneToEightAreRefused) {
    fill_tables();
    const std::string before = table_bytes();
    for (const uint32_t group : kBadGroups) {
        EXPECT_EQ(GetParam().add(group, {1}), -1) << group;
        EXPECT_EQ(GetParam().del(group, {1}), -1) << group;
    }
    EXPECT_EQ(table_bytes(), before);
    EXPECT_THAT(driver().trace(), IsEmpty());
}

TEST_P(Membership, OnlyTheIndexBitsNameTheGroup) {
    EXPECT_EQ(GetParam().add(0x70000003, {1}), 0);
    EXPECT_EQ(record_ports(3), Ports{4});
    EXPECT_EQ(intf_map_trunk[1], 0x70000003u);  // stored as it was given
}

INSTANTIATE_TEST_SUITE_P(Forms, Membership, kForms, form_name);

}  // namespace
