// Members that leave a group: the driver calls, and the tables after them.
#include "agg/testing/membership.h"

namespace {

using namespace membership_test;
using agg_test::announced;
using agg_test::calls;
using agg_test::fibre_reads;
using agg_test::first_intfs;
using agg_test::first_ports;
using agg_test::kDel;
using agg_test::link_reads;
using agg_test::to_kernel;
using agg_test::Trace;
using agg_test::trunk_create;
using agg_test::trunk_destroy;
using agg_test::trunk_set;
using ::testing::ElementsAreArray;

class Leaving : public MembershipTest {};

TEST_P(Leaving, ProgramsLinkedMembersButKeepsTheOthersInTheRecord) {
    const std::string expected = bytes_with(0, {10, 4, 6}, 3, {7, 3}, 1);
    set_group(1, {10, 5, 4, 6}, 2, {7, 2, 1, 3});
    intf_map_trunk[1] = 0;  // the map is written for listed ports only
    adp::agg_link_status[kGroup] = 1;
    set_links({10, 6});
    set_fibre_link(6, 1);
    EXPECT_EQ(del({2}), 0);
    EXPECT_THAT(driver().trace(), ElementsAreArray(calls(link_reads({10, 4, 6}), trunk_set(kGroup, {10, 6}),
                                                         to_kernel(kGroup, 0, {10, 4, 6}), fibre_reads({10, 4, 6}))));
    EXPECT_EQ(table_bytes(), expected);
}

TEST_P(Leaving, OfEveryMemberTakesTheGroupDown) {
    for (const size_t count : {1u, 3u, 8u, 9u, 11u}) {
        const std::string expected = bytes_with(0, {}, 0, {}, 0);
        set_group(1, first_ports(count), 1, first_intfs(count));
        adp::agg_link_status[kGroup] = 1;
        set_all_links(first_ports(count));
        driver().on("sys_trace_get").returns(1);
        EXPECT_EQ(del(first_intfs(count)), 0);
        EXPECT_THAT(driver().trace(),
                    ElementsAreArray(calls(trunk_destroy(kGroup), trunk_create(kGroup), announced(kGroup, "down", kDel),
                                           event(0), to_kernel(kGroup, 0, {}))));
        EXPECT_EQ(table_bytes(), expected) << count;
    }
}

TEST_P(Leaving, OfTheLastActiveMemberElectsAConfiguredOne) {
    set_group(1, {4}, 1, {1});
    set_configured(kGroup, bits_of({2, 6}));
    EXPECT_EQ(del({1}), 0);
    EXPECT_EQ(agg_manage_intf[kGroup - 1], 6u);
    EXPECT_THAT(driver().trace(), ElementsAreArray(calls(trunk_destroy(kGroup), trunk_create(kGroup),
                                                         to_kernel(kGroup, 0, {}), fibre_reads({5, 9}))));
}

TEST_P(Leaving, OfAPortOfAnotherGroupClearsItsRowInTheMapOnly) {
    set_group(1, {4}, 1, {1});
    set_record(5, 1, {5});
    intf_map_trunk[2] = ADP_AGG_INTF(5);
    set_all_links({4, 5});
    EXPECT_EQ(del({2}), 0);
    EXPECT_EQ(intf_map_trunk[2], 0u);
    EXPECT_EQ(intf_map_trunk[1], kAgg);
    EXPECT_EQ(record_ports(kGroup), Ports{4});
    EXPECT_EQ(record_ports(5), Ports{5});
}

TEST_P(Leaving, WithEachCallFailingInTurn) {
    const Trace emptied = calls(link_reads({5}), trunk_destroy(kGroup), trunk_create(kGroup));
    const Trace whole =
        calls(emptied, announced(kGroup, "down"), event(0), to_kernel(kGroup, 0, {5}), fibre_reads({5}));
    Trace traced = whole;
    traced.insert(traced.begin() + 4, announced(kGroup, "down", kDel)[1]);
    const Trace uncreated = calls(emptied, announced(kGroup, "down"), event(0));
    const struct {
        const char *what;
        Trace trace;
        adp_status_t status;
    } cases[] = {{"link", whole, 0}, {"destroy", whole, 0}, {"create", uncreated, -44}, {"trace flag", traced, 0},
                 {"log", whole, 0},  {"kernel", whole, 0},  {"fibre link", whole, 0}};
    for (size_t k = 0; k < std::size(cases); ++k) {
        const auto &[what, trace, status] = cases[k];
        const std::string expected = status == 0 ? bytes_with(0, {5}, 2, {2}, 0) : bytes_with(1, {4, 5}, 9, {1, 2}, 0);
        set_group(1, {4, 5}, 9, {1, 2});
        adp::agg_link_status[kGroup] = 1;
        driver().fail_call(k, -44);
        EXPECT_EQ(del({1}), status) << what;
        EXPECT_THAT(driver().trace(), ElementsAreArray(trace)) << what;
        EXPECT_EQ(table_bytes(), expected) << what;
    }
}

INSTANTIATE_TEST_SUITE_P(Forms, Leaving, kForms, form_name);

}  // namespace
