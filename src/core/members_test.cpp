// The member lists and the walk over them.
#include "core/members.h"

#include "tests/support/library_test.h"

namespace members_test {

using library_test::table_bytes;

constexpr uint32_t kUntouched = 0xAAAAAAAA;
constexpr uint32_t kGroup = 2;
constexpr uint32_t kAgg = ADP_AGG_INTF(kGroup);

struct List {
    uint32_t count = kUntouched;
    std::vector<uint32_t> slots = std::vector<uint32_t>(ADP_MEMBER_LIST_SLOTS + 1, kUntouched);

    std::vector<uint32_t> first(size_t n) const { return {slots.begin(), slots.begin() + static_cast<long>(n)}; }
    bool is_untouched_from(size_t n) const {
        return std::all_of(slots.begin() + static_cast<long>(n), slots.end(),
                           [](uint32_t slot) { return slot == kUntouched; });
    }
};

using Numbers = std::vector<uint32_t>;

class MemberLists : public library_test::LibraryTest {};

TEST_F(MemberLists, ActiveMembersAreInterfacesInJoiningOrder) {
    set_active(kGroup, {29, 4, 10});
    List list;
    EXPECT_EQ(GET_AGG_GROUP(kAgg, &list.count, list.slots.data()), 0);
    EXPECT_EQ(list.count, 3u);
    EXPECT_EQ(list.first(3), (Numbers{26, 1, 7}));
    EXPECT_TRUE(list.is_untouched_from(3));
}

TEST_F(MemberLists, AnUnmappedMemberPortReadsAsAllOnesAndTheCpuPortAsAnEmptySlot) {
    set_active(kGroup, {200, 0, 4});
    List list;
    EXPECT_EQ(GET_AGG_GROUP(kAgg, &list.count, list.slots.data()), 0);
    EXPECT_EQ(list.first(3), (Numbers{0xFFFFFFFF, 0, 1}));
}

TEST_F(MemberLists, NineActiveMembersAreCountedButNotListed) {
    set_active(kGroup, {4, 5, 6, 7, 8, 9, 10, 11, 12});
    List list;
    EXPECT_EQ(GET_AGG_GROUP(kAgg, &list.count, list.slots.data()), -1);
    EXPECT_EQ(list.count, 9u);
    EXPECT_TRUE(list.is_untouched_from(0));
}

TEST_F(MemberLists, ElevenMembersAreListedWhereThereIsRoom) {
    set_active(kGroup, {4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14});
    List list;
    EXPECT_EQ(adp_get_agg_group(kAgg, 11, &list.count, list.slots.data()), 0);
    EXPECT_EQ(list.first(11), (Numbers{1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11}));
    EXPECT_EQ(adp_get_agg_group(kAgg, 10, &list.count, list.slots.data()), -1);
}

TEST_F(MemberLists, CountsAboveTheRecordsSizeAreNotFollowed) {
    for (const int32_t count : {12, 26, -1, INT32_MAX, INT32_MIN}) {
        agg_info[kGroup - 1].count = count;
        List list;
        EXPECT_EQ(adp_get_agg_group(kAgg, ADP_MEMBER_LIST_SLOTS, &list.count, list.slots.data()), -1) << count;
        EXPECT_EQ(list.count, static_cast<uint32_t>(count));
        EXPECT_TRUE(list.is_untouched_from(0));
    }
}

TEST_F(MemberLists, NoMembersAreAnEmptyList) {
    List list;
    EXPECT_EQ(GET_AGG_GROUP(kAgg, &list.count, list.slots.data()), 0);
    EXPECT_EQ(list.count, 0u);
    List configured;
    EXPECT_EQ(GET_AGG_CONFIG_GROUP(kAgg, &configured.count, configured.slots.data()), 0);
    EXPECT_EQ(configured.count, 0u);
    EXPECT_TRUE(configured.is_untouched_from(0));
}

TEST_F(MemberLists, ConfiguredMembersComeFromTheBitmapWhateverTheActiveOnesAre) {
    set_active(kGroup, {20, 21});
    set_configured(kGroup, 1u << 5 | 1u << 3);
    List list;
    EXPECT_EQ(GET_AGG_CONFIG_GROUP(kAgg, &list.count, list.slots.data()), 0);
    EXPECT_EQ(list.count, 2u);
    EXPECT_EQ(list.first(2), (Numbers{3, 5}));
    EXPECT_TRUE(list.is_untouched_from(2));
}

TEST_F(MemberLists, WithAnEmptyBitmapTheActiveMembersAreListed) {
    set_active(kGroup, {20, 21});
    List list;
    EXPECT_EQ(GET_AGG_CONFIG_GROUP(kAgg, &list.count, list.slots.data()), 0);
    EXPECT_EQ(list.count, 2u);
    EXPECT_EQ(list.first(2), (Numbers{17, 18}));
}

TEST_F(MemberLists, WithAnEmptyBitmapNineToElevenActiveMembersFitTheConfiguredList) {
    set_active(kGroup, {4, 5, 6, 7, 8, 9, 10, 11, 12});
    List list;
    EXPECT_EQ(GET_AGG_CONFIG_GROUP(kAgg, &list.count, list.slots.data()), 0);
    EXPECT_EQ(list.count, 9u);
    EXPECT_EQ(list.slots[8], 9u);
}

TEST_F(MemberLists, ASecondWordAloneGivesAnEmptyListEvenWithActiveMembers) {
    set_active(kGroup, {20, 21});
    set_configured(kGroup, 0, 1);
    List list;
    EXPECT_EQ(GET_AGG_CONFIG_GROUP(kAgg, &list.count, list.slots.data()), 0);
    EXPECT_EQ(list.count, 0u);
    EXPECT_TRUE(list.is_untouched_from(0));
}

TEST_F(MemberLists, BitsAbove26AreNotListed) {
    set_configured(kGroup, 0xF8000000 | 1u << 1);
    List list;
    EXPECT_EQ(GET_AGG_CONFIG_GROUP(kAgg, &list.count, list.slots.data()), 0);
    EXPECT_EQ(list.count, 1u);
    EXPECT_EQ(list.slots[0], 1u);
}

TEST_F(MemberLists, TwentySevenConfiguredMembersFillTheListAndLeaveTheCount) {
    set_configured(kGroup, 0x07FFFFFF);
    List list;
    EXPECT_EQ(GET_AGG_CONFIG_GROUP(kAgg, &list.count, list.slots.data()), -1);
    EXPECT_EQ(list.count, kUntouched);
    EXPECT_EQ(list.slots[0], 0u);
    EXPECT_EQ(list.slots[25], 25u);
    EXPECT_TRUE(list.is_untouched_from(26));
}

TEST_F(MemberLists, TwentySixConfiguredMembersFit) {
    set_configured(kGroup, 0x07FFFFFE);
    List list;
    EXPECT_EQ(GET_AGG_CONFIG_GROUP(kAgg, &list.count, list.slots.data()), 0);
    EXPECT_EQ(list.count, 26u);
    EXPECT_EQ(list.slots[25], 26u);
}

TEST_F(MemberLists, ConfiguredListChecksTheActiveCountAgainstItsRoomFirst) {
    set_active(kGroup, {4, 5, 6});
    set_configured(kGroup, 1u << 5);
    List list;
    EXPECT_EQ(adp_get_agg_config_group(kAgg, 2, &list.count, list.slots.data()), -1);
    EXPECT_EQ(list.count, kUntouched);
    EXPECT_TRUE(list.is_untouched_from(0));
    EXPECT_EQ(adp_get_agg_config_group(kAgg, 3, &list.count, list.slots.data()), 0);
    EXPECT_EQ(list.count, 1u);
}

TEST_F(MemberLists, ConfiguredListWithImpossibleActiveCounts) {
    agg_info[kGroup - 1].count = 12;
    List list;
    EXPECT_EQ(GET_AGG_CONFIG_GROUP(kAgg, &list.count, list.slots.data()), -1);  // as for the active list
    EXPECT_EQ(list.count, 12u);
    agg_info[kGroup - 1].count = -1;
    list = {};
    EXPECT_EQ(GET_AGG_CONFIG_GROUP(kAgg, &list.count, list.slots.data()), -1);
    EXPECT_EQ(list.count, kUntouched);
}

TEST_F(MemberLists, ByMapSetsTheBitOfEachActiveInterface) {
    set_active(kGroup, {6, 8});
    uint32_t bitmap[2] = {kUntouched, kUntouched};
    EXPECT_EQ(adp_get_agg_group_by_map(kAgg, bitmap), 0);
    EXPECT_EQ(bitmap[0], 1u << 3 | 1u << 5);
    EXPECT_EQ(bitmap[1], 0u);
}

TEST_F(MemberLists, ByMapReachesTheSecondWordAndDropsInterfacesWithoutABit) {
    library_test::make_default_map(70);
    set_active(kGroup, {43, 68, 0, 200});
    uint32_t bitmap[2] = {kUntouched, kUntouched};
    EXPECT_EQ(adp_get_agg_group_by_map(kAgg, bitmap), 0);
    EXPECT_EQ(bitmap[0], 0u);
    EXPECT_EQ(bitmap[1], 1u << (40 - 32));  // interface 65 and the unmapped port have no bit, slot 0 is empty
}

TEST_F(MemberLists, ByMapRefusesNineMembersAndWritesNothing) {
    set_active(kGroup, {4, 5, 6, 7, 8, 9, 10, 11, 12});
    uint32_t bitmap[2] = {kUntouched, kUntouched};
    EXPECT_EQ(adp_get_agg_group_by_map(kAgg, bitmap), -1);
    EXPECT_EQ(bitmap[0], kUntouched);
    EXPECT_EQ(bitmap[1], kUntouched);
}

TEST_F(MemberLists, GroupsOutsideOneToEightAreRefusedWithZeroedOutputs) {
    const std::string before = table_bytes();
    for (const uint32_t group : {0x10000000u, 0x10000009u, 0u, 9u, 0xFFFFFFFFu}) {
        List active;
        EXPECT_EQ(GET_AGG_GROUP(group, &active.count, active.slots.data()), -1);
        EXPECT_EQ(active.count, 0u);
        EXPECT_EQ(active.first(8), Numbers(8, 0));
        EXPECT_TRUE(active.is_untouched_from(8));
        List configured;
        EXPECT_EQ(GET_AGG_CONFIG_GROUP(group, &configured.count, configured.slots.data()), -1);
        EXPECT_EQ(configured.count, 0u);
        EXPECT_EQ(configured.first(26), Numbers(26, 0));
        EXPECT_TRUE(configured.is_untouched_from(26));
        List unbounded;
        EXPECT_EQ(adp_get_agg_group(group, 0xFFFFFFFF, &unbounded.count, unbounded.slots.data()), -1);
        EXPECT_TRUE(unbounded.is_untouched_from(26));
        uint32_t bitmap[2] = {kUntouched, kUntouched};
        EXPECT_EQ(adp_get_agg_group_by_map(group, bitmap), -1);
        EXPECT_EQ(bitmap[0], 0u);
        EXPECT_EQ(bitmap[1], 0u);
    }
    EXPECT_EQ(table_bytes(), before);
}

TEST_F(MemberLists, TypeBitsDoNotMatter) {
    set_active(3, {4});
    List list;
    EXPECT_EQ(GET_AGG_GROUP(3, &list.count, list.slots.data()), 0);
    EXPECT_EQ(list.count, 1u);
    EXPECT_EQ(list.slots[0], 1u);
}

// The walk, with a step that records the members it visits.
struct Walk {
    std::vector<uint32_t> seen;
    uint32_t failing = 0;

    int32_t run(const adp::MemberList &members) {
        return adp::first_failure(members, [this](adp::Intf intf) {
            seen.push_back(number(intf));
            return number(intf) == failing ? -7 : 0;
        });
    }
};

adp::MemberList members(uint32_t count, const std::vector<uint32_t> &slots) {
    adp::MemberList list;
    list.count = count;
    std::copy(slots.begin(), slots.end(), list.slots);
    return list;
}

TEST(FirstFailure, VisitsMembersInOrder) {
    Walk walk;
    EXPECT_EQ(walk.run(members(3, {9, 2, 5})), ADP_OK);
    EXPECT_EQ(walk.seen, (Numbers{9, 2, 5}));
}

TEST(FirstFailure, StopsAtTheFirstFailure) {
    Walk walk;
    walk.failing = 2;
    EXPECT_EQ(walk.run(members(3, {9, 2, 5})), -7);
    EXPECT_EQ(walk.seen, (Numbers{9, 2}));
}

TEST(FirstFailure, CountsEmptySlotsSoThatMembersAfterTheCountAreNotVisited) {
    Walk walk;
    EXPECT_EQ(walk.run(members(2, {9, 0, 5})), ADP_OK);
    EXPECT_EQ(walk.seen, (Numbers{9}));
}

TEST(FirstFailure, VisitsNothingWithoutMembers) {
    Walk walk;
    EXPECT_EQ(walk.run(members(0, {9, 2})), ADP_OK);
    EXPECT_TRUE(walk.seen.empty());
}

TEST(FirstFailure, NeverGoesBeyondTheList) {
    Walk walk;
    EXPECT_EQ(walk.run(members(0xFFFFFFFF, Numbers(26, 4))), ADP_OK);
    EXPECT_EQ(walk.seen.size(), 26u);
}

}  // namespace members_test
