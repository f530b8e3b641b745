// Where the list forms and the bitmap forms of joining and leaving differ.
#include "core/testing/group.h"

namespace {

using agg_test::bits_of;
using agg_test::calls;
using agg_test::fibre_reads;
using agg_test::Intfs;
using agg_test::kBadGroups;
using agg_test::link_reads;
using agg_test::Ports;
using agg_test::table_bytes;
using agg_test::to_kernel;
using agg_test::trunk_create;
using agg_test::trunk_destroy;
using agg_test::trunk_set;
using ::testing::ElementsAreArray;
using ::testing::IsEmpty;

constexpr uint32_t kGroup = 3;
constexpr uint32_t kAgg = ADP_AGG_INTF(kGroup);
constexpr uint32_t kFull27 = 0x07FFFFFF;

adp_status_t add_list(uint32_t agg, const Intfs &list) {
    return adp_add_agg_member(agg, static_cast<uint32_t>(list.size()), list.data());
}

adp_status_t del_list(uint32_t agg, const Intfs &list) {
    return adp_del_agg_member(agg, static_cast<uint32_t>(list.size()), list.data());
}

class MemberList : public agg_test::AggTest {};

TEST_F(MemberList, AddingNoMembersSucceedsForAnyGroup) {
    fill_tables();
    const std::string before = table_bytes();
    EXPECT_EQ(adp_add_agg_member(kAgg, 0, nullptr), 0);
    for (const uint32_t group : kBadGroups) {
        EXPECT_EQ(adp_add_agg_member(group, 0, nullptr), 0) << group;
    }
    EXPECT_THAT(driver().trace(), IsEmpty());
    EXPECT_EQ(table_bytes(), before);
}

TEST_F(MemberList, RemovingNoMembersCommitsButDoesNotElect) {
    set_record(kGroup, 0, {4, 5});
    agg_manage_intf[kGroup - 1] = 9;
    const std::string expected = table_bytes();
    agg_info[kGroup - 1].in_use = 1;
    set_links({5});
    set_fibre_link(5, 1);
    EXPECT_EQ(adp_del_agg_member(kAgg, 0, nullptr), 0);
    EXPECT_THAT(driver().trace(),
                ElementsAreArray(calls(link_reads({4, 5}), trunk_set(kGroup, {5}), to_kernel(kGroup, 0, {4, 5}))));
    EXPECT_EQ(table_bytes(), expected);  // the in-use byte is cleared
}

TEST_F(MemberList, RemovingNoMembersReturnsTheDriversResult) {
    set_record(kGroup, 1, {4});
    const std::string before = table_bytes();
    driver().fail_every("user_trunk_create_id", 7);
    EXPECT_EQ(adp_del_agg_member(kAgg, 0, nullptr), 7);
    EXPECT_EQ(table_bytes(), before);
    for (const uint32_t group : kBadGroups) {
        EXPECT_EQ(adp_del_agg_member(group, 0, nullptr), -1) << group;
    }
}

TEST_F(MemberList, JoinInTheOrderOfTheListAndAsOftenAsListed) {
    EXPECT_EQ(add_list(kAgg, {4, 1, 4}), 0);
    const Ports ports = {7, 4, 7};
    EXPECT_THAT(driver().trace(), ElementsAreArray(calls(link_reads(ports), trunk_set(kGroup, ports),
                                                         to_kernel(kGroup, 0, ports), fibre_reads(ports))));
    EXPECT_EQ(record_ports(kGroup), ports);
    EXPECT_EQ(intf_map_trunk[4], kAgg);
    EXPECT_EQ(del_list(kAgg, {4}), 0);
    EXPECT_EQ(record_ports(kGroup), Ports{4});
}

TEST_F(MemberList, InterfacesBeyondTheMapAreRefusedWhateverTheirType) {
    const std::string before = table_bytes();
    for (const uint32_t intf : {27u, 0x0FFFFFFFu, ADP_AGG_INTF(27), 0xFFFFFFFFu}) {
        EXPECT_EQ(add_list(kAgg, {1, intf}), -1) << intf;
        EXPECT_EQ(del_list(kAgg, {1, intf}), -1) << intf;
    }
    EXPECT_EQ(table_bytes(), before);
    EXPECT_THAT(driver().trace(), IsEmpty());
}

// Its index is a row of the map, but it has no port, so it never equals a member.
TEST_F(MemberList, AnInterfaceWithoutAPortIsAppendedEachTime) {
    constexpr uint32_t kOfNoPort = 0x20000003;
    const Ports expected[] = {{255}, {255, 255}};
    for (const Ports &ports : expected) {
        EXPECT_EQ(add_list(kAgg, {kOfNoPort}), 0);
        EXPECT_THAT(driver().take(), ElementsAreArray(calls(trunk_set(kGroup, ports), to_kernel(kGroup, 0, ports))));
        EXPECT_EQ(record_ports(kGroup), ports);
        EXPECT_EQ(agg_manage_intf[kGroup - 1], 0xFFFFFFFFu);
        EXPECT_EQ(intf_map_trunk[3], kAgg);
    }
    EXPECT_EQ(del_list(kAgg, {kOfNoPort}), 0);
    EXPECT_EQ(record_ports(kGroup), (Ports{255, 255}));
    EXPECT_EQ(intf_map_trunk[3], 0u);
}

class MemberBitmap : public agg_test::AggTest {};

TEST_F(MemberBitmap, BothWordsZeroSucceedForAnyGroup) {
    fill_tables();
    const std::string before = table_bytes();
    EXPECT_EQ(adp_add_agg_member_by_map(kAgg, 0, 0), 0);
    EXPECT_EQ(adp_del_agg_member_by_map(kAgg, 0, 0), 0);
    for (const uint32_t group : kBadGroups) {
        EXPECT_EQ(adp_add_agg_member_by_map(group, 0, 0), 0) << group;
        EXPECT_EQ(adp_del_agg_member_by_map(group, 0, 0), 0) << group;
        EXPECT_EQ(adp_add_agg_member_by_map(group, 0, 1), -1) << group;
        EXPECT_EQ(adp_del_agg_member_by_map(group, 0, 1), -1) << group;
    }
    EXPECT_THAT(driver().trace(), IsEmpty());
    EXPECT_EQ(table_bytes(), before);
}

TEST_F(MemberBitmap, AnEmptyListElectsEvenWithoutATrunkCall) {
    for (const auto &[word0, word1] : {std::pair{0u, 1u}, std::pair{0x80000000u, 0u}, std::pair{0xF8000000u, ~0u}}) {
        start();
        agg_manage_intf[kGroup - 1] = 9;
        EXPECT_EQ(adp_add_agg_member_by_map(kAgg, word0, word1), 0);
        EXPECT_THAT(driver().trace(), IsEmpty());
        EXPECT_EQ(agg_manage_intf[kGroup - 1], 0u);
    }
}

TEST_F(MemberBitmap, AddingAnEmptyListProgramsCommitsAndElects) {
    set_record(kGroup, 1, {4, 5});
    agg_manage_intf[kGroup - 1] = 2;
    const std::string expected = table_bytes();
    agg_manage_intf[kGroup - 1] = 9;
    EXPECT_EQ(adp_add_agg_member_by_map(kAgg, 0, 1), 0);
    EXPECT_THAT(driver().trace(), ElementsAreArray(calls(link_reads({4, 5}), trunk_set(kGroup, {4, 5}),
                                                         to_kernel(kGroup, 1, {4, 5}), fibre_reads({4, 5}))));
    EXPECT_EQ(table_bytes(), expected);
}

TEST_F(MemberBitmap, RemovingAnEmptyListCommitsAndElects) {
    set_record(kGroup, 0, {4, 5});
    agg_manage_intf[kGroup - 1] = 2;
    const std::string expected = table_bytes();
    set_record(kGroup, 1, {4, 5});
    agg_manage_intf[kGroup - 1] = 9;
    EXPECT_EQ(adp_del_agg_member_by_map(kAgg, 0, 1), 0);
    EXPECT_THAT(driver().trace(),
                ElementsAreArray(calls(link_reads({4, 5}), trunk_destroy(kGroup), trunk_create(kGroup),
                                       to_kernel(kGroup, 0, {4, 5}), fibre_reads({4, 5}))));
    EXPECT_EQ(table_bytes(), expected);
}

TEST_F(MemberBitmap, NamesItsMembersInAscendingOrderInBits0To26OfTheFirstWord) {
    EXPECT_EQ(adp_add_agg_member_by_map(kAgg, 0xF8000000 | bits_of({26, 3}), 0xFFFFFFFF), 0);
    EXPECT_EQ(record_ports(kGroup), (Ports{6, 29}));
    EXPECT_EQ(adp_del_agg_member_by_map(kAgg, 0xF8000000 | bits_of({26}), 0xFFFFFFFF), 0);
    EXPECT_EQ(record_ports(kGroup), Ports{6});
}

TEST_F(MemberBitmap, RemovesAnyNumberButAddsNoneWhenTheyDoNotAllFit) {
    set_record(kGroup, 1, {0, 29});
    const std::string before = table_bytes();
    EXPECT_EQ(adp_add_agg_member_by_map(kAgg, kFull27, 0), -1);
    EXPECT_THAT(driver().trace(), IsEmpty());
    EXPECT_EQ(table_bytes(), before);
    EXPECT_EQ(adp_del_agg_member_by_map(kAgg, kFull27, 0), 0);
    EXPECT_EQ(agg_info[kGroup - 1].count, 0);
}

}  // namespace
