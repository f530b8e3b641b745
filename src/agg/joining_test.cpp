// Members that join a group: the driver calls, and the tables after them.
#include "agg/testing/membership.h"

namespace {

using namespace membership_test;
using agg_test::announced;
using agg_test::calls;
using agg_test::fibre_reads;
using agg_test::first_intfs;
using agg_test::first_ports;
using agg_test::kAdd;
using agg_test::link_reads;
using agg_test::to_kernel;
using agg_test::Trace;
using agg_test::trunk_set;
using ::testing::ElementsAreArray;
using ::testing::IsEmpty;

class Joining : public MembershipTest {};

TEST_P(Joining, FillsAnEmptyGroup) {
    for (const size_t count : {1u, 3u, 8u}) {
        const Ports ports = first_ports(count);
        const std::string expected =
            bytes_with(0, ports, static_cast<uint32_t>(count), first_intfs(count), 0);  // all down: the largest manages
        EXPECT_EQ(add(first_intfs(count)), 0);
        EXPECT_THAT(driver().trace(), ElementsAreArray(calls(link_reads(ports), trunk_set(kGroup, ports),
                                                             to_kernel(kGroup, 0, ports), fibre_reads(ports))));
        EXPECT_EQ(table_bytes(), expected) << count;
    }
}

TEST_P(Joining, OfLinkedMembersAfterTheOthersAnnouncesTheGroupAsUp) {
    const std::string expected = bytes_with(1, {10, 4, 5, 6}, 2, {1, 2, 3}, 1);
    set_record(kGroup, 1, {10});
    agg_manage_intf[kGroup - 1] = 7;
    set_all_links({5, 6});
    driver().on("sys_trace_get").returns(1);
    EXPECT_EQ(add({1, 2, 3}), 0);
    const Ports all = {10, 4, 5, 6};
    EXPECT_THAT(driver().trace(),
                ElementsAreArray(calls(link_reads(all), trunk_set(kGroup, all), announced(kGroup, "up", kAdd), event(1),
                                       to_kernel(kGroup, 1, all), fibre_reads(all))));
    EXPECT_EQ(table_bytes(), expected);
}

TEST_P(Joining, OfAnExistingMemberProgramsTheTrunkAgain) {
    const std::string expected = bytes_with(1, {5, 4}, 2, {1, 2}, 1);
    set_record(kGroup, 1, {5, 4});
    adp::agg_link_status[kGroup] = 1;
    set_all_links({5});
    EXPECT_EQ(add({1, 2}), 0);
    EXPECT_THAT(driver().trace(), ElementsAreArray(calls(link_reads({5, 4}), trunk_set(kGroup, {5, 4}), event(1),
                                                         to_kernel(kGroup, 1, {5, 4}), fibre_reads({5, 4}))));
    EXPECT_EQ(table_bytes(), expected);
}

TEST_P(Joining, DoesNotCheckWhetherThePortIsInAnotherGroup) {
    set_record(5, 1, {4});
    intf_map_trunk[1] = ADP_AGG_INTF(5);
    EXPECT_EQ(add({1}), 0);
    EXPECT_EQ(record_ports(5), Ports{4});
    EXPECT_EQ(record_ports(kGroup), Ports{4});
    EXPECT_EQ(intf_map_trunk[1], kAgg);
}

TEST_P(Joining, OfNineToElevenMembersElectsNoManager) {
    for (const size_t count : {9u, 10u, 11u}) {
        const Ports ports = first_ports(count);
        const std::string expected = bytes_with(0, ports, 0, first_intfs(count), 0);
        agg_manage_intf[kGroup - 1] = 7;
        EXPECT_EQ(add(first_intfs(count)), 0);
        EXPECT_THAT(driver().trace(),
                    ElementsAreArray(calls(link_reads(ports), trunk_set(kGroup, ports), to_kernel(kGroup, 0, ports),
                                           fibre_reads(Ports(count, 0)))));
        EXPECT_EQ(table_bytes(), expected) << count;
    }
}

TEST_P(Joining, OfATwelfthMemberIsRefusedAndChangesNothing) {
    for (const size_t members : {0u, 8u, 11u}) {
        start();
        set_group(1, first_ports(members), 1, first_intfs(members));
        const std::string before = table_bytes();
        EXPECT_EQ(add(first_intfs(12)), -1);
        EXPECT_THAT(driver().trace(), IsEmpty());
        EXPECT_EQ(table_bytes(), before);
    }
}

/** The tables after call number k has failed. Later calls are still made unless the failed one decides the result. */
TEST_P(Joining, WithEachCallFailingInTurn) {
    const Ports all = {4, 5};
    const Trace whole = calls(link_reads(all), trunk_set(kGroup, all), announced(kGroup, "up"), event(1),
                              to_kernel(kGroup, 0, all), fibre_reads(all));
    Trace traced = whole;
    traced.insert(traced.begin() + 4, announced(kGroup, "up", kAdd)[1]);
    Trace unset = calls(link_reads(all), trunk_set(kGroup, all), announced(kGroup, "up"), event(1));
    const struct {
        const char *what;
        Trace trace;
        adp_status_t status;
        uint32_t manager;
    } cases[] = {
        {"first link", whole, 0, 1},
        {"second link", whole, 0, 1},
        {"trunk", unset, -44, 0},
        {"trace flag", traced, 0, 1},
        {"log", whole, 0, 1},
        {"kernel", whole, 0, 1},
        {"first fibre link", whole, 0, 2},
        {"second fibre link", whole, 0, 1},
    };
    for (size_t k = 0; k < std::size(cases); ++k) {
        const auto &[what, trace, status, manager] = cases[k];
        const bool is_added = status == 0;
        const std::string expected =
            bytes_with(0, is_added ? all : Ports{}, manager, is_added ? Intfs{1, 2} : Intfs{}, 1);
        set_all_links(all);
        driver().fail_call(k, -44);
        EXPECT_EQ(add({1, 2}), status) << what;
        EXPECT_THAT(driver().trace(), ElementsAreArray(trace)) << what;
        EXPECT_EQ(table_bytes(), expected) << what;
    }
}

INSTANTIATE_TEST_SUITE_P(Forms, Joining, kForms, form_name);

}  // namespace
