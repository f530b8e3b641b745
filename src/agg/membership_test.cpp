// Members joining and leaving: what the list forms and the bitmap forms have in common.
#include "core/testing/group.h"

namespace {

using agg_test::announced;
using agg_test::bits_of;
using agg_test::calls;
using agg_test::fibre_reads;
using agg_test::first_intfs;
using agg_test::first_ports;
using agg_test::Intfs;
using agg_test::kAdd;
using agg_test::kBadGroups;
using agg_test::kDel;
using agg_test::link_reads;
using agg_test::Ports;
using agg_test::table_bytes;
using agg_test::to_kernel;
using agg_test::Trace;
using agg_test::trunk_create;
using agg_test::trunk_destroy;
using agg_test::trunk_set;
using ::testing::ElementsAreArray;
using ::testing::IsEmpty;

constexpr uint32_t kGroup = 3;
constexpr uint32_t kAgg = ADP_AGG_INTF(kGroup);
constexpr int32_t kDriverResults[] = {-1, 1, 102, -33, INT32_MIN};

adp_status_t add_list(uint32_t agg, const Intfs &list) {
    return adp_add_agg_member(agg, static_cast<uint32_t>(list.size()), list.data());
}

adp_status_t del_list(uint32_t agg, const Intfs &list) {
    return adp_del_agg_member(agg, static_cast<uint32_t>(list.size()), list.data());
}

adp_status_t add_bits(uint32_t agg, const Intfs &list) {
    return adp_add_agg_member_by_map(agg, bits_of(list), 0);
}

adp_status_t del_bits(uint32_t agg, const Intfs &list) {
    return adp_del_agg_member_by_map(agg, bits_of(list), 0);
}

std::string event(int state) {
    return agg_test::event(kGroup, state);
}

/** The two ways to name members; lists given to both are in ascending order. */
struct Form {
    const char *name;
    adp_status_t (*add)(uint32_t, const Intfs &);
    adp_status_t (*del)(uint32_t, const Intfs &);
};

class Membership : public agg_test::AggTest, public ::testing::WithParamInterface<Form> {
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

TEST_P(Membership, AddingToAnEmptyGroup) {
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

TEST_P(Membership, AddingLinkedMembersAfterTheOthersAnnouncesTheGroupAsUp) {
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

TEST_P(Membership, AddingAnExistingMemberProgramsTheTrunkAgain) {
    const std::string expected = bytes_with(1, {5, 4}, 2, {1, 2}, 1);
    set_record(kGroup, 1, {5, 4});
    adp::agg_link_status[kGroup] = 1;
    set_all_links({5});
    EXPECT_EQ(add({1, 2}), 0);
    EXPECT_THAT(driver().trace(), ElementsAreArray(calls(link_reads({5, 4}), trunk_set(kGroup, {5, 4}), event(1),
                                                         to_kernel(kGroup, 1, {5, 4}), fibre_reads({5, 4}))));
    EXPECT_EQ(table_bytes(), expected);
}

TEST_P(Membership, AddingDoesNotCheckWhetherThePortIsInAnotherGroup) {
    set_record(5, 1, {4});
    intf_map_trunk[1] = ADP_AGG_INTF(5);
    EXPECT_EQ(add({1}), 0);
    EXPECT_EQ(record_ports(5), Ports{4});
    EXPECT_EQ(record_ports(kGroup), Ports{4});
    EXPECT_EQ(intf_map_trunk[1], kAgg);
}

TEST_P(Membership, NineToElevenMembersJoinAndElectNoManager) {
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

TEST_P(Membership, ATwelfthMemberIsRefusedAndChangesNothing) {
    for (const size_t members : {0u, 8u, 11u}) {
        start();
        set_group(1, first_ports(members), 1, first_intfs(members));
        const std::string before = table_bytes();
        EXPECT_EQ(add(first_intfs(12)), -1);
        EXPECT_THAT(driver().trace(), IsEmpty());
        EXPECT_EQ(table_bytes(), before);
    }
}

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

TEST_P(Membership, RemovingProgramsLinkedMembersButKeepsTheOthersInTheRecord) {
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

TEST_P(Membership, RemovingEveryMember) {
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

TEST_P(Membership, RemovingTheLastActiveMemberElectsAConfiguredOne) {
    set_group(1, {4}, 1, {1});
    set_configured(kGroup, bits_of({2, 6}));
    EXPECT_EQ(del({1}), 0);
    EXPECT_EQ(agg_manage_intf[kGroup - 1], 6u);
    EXPECT_THAT(driver().trace(), ElementsAreArray(calls(trunk_destroy(kGroup), trunk_create(kGroup),
                                                         to_kernel(kGroup, 0, {}), fibre_reads({5, 9}))));
}

TEST_P(Membership, RemovingAPortOfAnotherGroupClearsItsRowInTheMapOnly) {
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

/** The tables after call number k has failed. Later calls are still made unless the failed one decides the result. */
TEST_P(Membership, AddingWithEachCallFailingInTurn) {
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

TEST_P(Membership, RemovingWithEachCallFailingInTurn) {
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

INSTANTIATE_TEST_SUITE_P(Forms, Membership,
                         ::testing::Values(Form{"List", add_list, del_list}, Form{"Bitmap", add_bits, del_bits}),
                         [](const auto &row) { return std::string(row.param.name); });

}  // namespace
