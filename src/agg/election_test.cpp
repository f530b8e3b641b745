// The election of a group's management interface.
#include "core/testing/group.h"

namespace {

using agg_test::fibre_reads;
using agg_test::Ports;
using agg_test::table_bytes;
using ::testing::ElementsAreArray;
using ::testing::IsEmpty;

constexpr uint32_t kGroup = 4;
constexpr uint32_t kAgg = ADP_AGG_INTF(kGroup);
constexpr uint32_t kUnmapped = 0xFFFFFFFF;
constexpr uint32_t kAll27 = 0x07FFFFFF;

struct Candidates {
    const char *name;
    Ports active;                 /**< physical ports */
    uint32_t configured[2];       /**< bits of interfaces */
    std::map<int, uint32_t> link; /**< attribute 14 of the ports that do not read 0 */
    Ports read;                   /**< ports that are read, in order */
    uint32_t winner;              /**< an interface */
};

void PrintTo(const Candidates &candidates, std::ostream *out) {
    *out << candidates.name;
}

class Election : public agg_test::AggTest, public ::testing::WithParamInterface<Candidates> {
  protected:
    void SetUp() override {
        start();
        set_active(kGroup, GetParam().active);
        set_configured(kGroup, GetParam().configured[0], GetParam().configured[1]);
        for (const auto &[port, status] : GetParam().link) {
            set_fibre_link(port, status);
        }
    }
};

TEST_P(Election, ReadsEveryCandidateAndStoresTheWinnerOnly) {
    agg_manage_intf[kGroup - 1] = GetParam().winner;
    const std::string expected = table_bytes();
    agg_manage_intf[kGroup - 1] = 23;
    EXPECT_EQ(ANEW_SELECT_MANAGE_INTF(kAgg), 0);
    EXPECT_EQ(agg_manage_intf[kGroup - 1], GetParam().winner);
    EXPECT_EQ(table_bytes(), expected);
    EXPECT_THAT(driver().trace(), ElementsAreArray(fibre_reads(GetParam().read)));
}

const Candidates kCases[] = {
    {"AllDownTheLargest", {7, 5, 10}, {0, 0}, {}, {7, 5, 10}, 7},
    {"TheSmallestThatIsUp", {7, 5, 10}, {0, 0}, {{7, 1}, {10, 1}}, {7, 5, 10}, 4},
    {"TheOnlyOneThatIsUpThoughALargerJoinedFirst", {29, 5, 10}, {0, 0}, {{5, 1}}, {29, 5, 10}, 2},
    {"UpAtTheEndOfTheList", {29, 5, 10}, {0, 0}, {{29, 1}, {10, 1}}, {29, 5, 10}, 7},
    {"NoneWithoutMembers", {}, {0, 0}, {}, {}, 0},
    {"OneMember", {29}, {0, 0}, {}, {29}, 26},
    {"EightMembersAllDown", {4, 5, 6, 7, 8, 9, 10, 11}, {0, 0}, {}, {4, 5, 6, 7, 8, 9, 10, 11}, 8},
    {"EightMembersAllUp",
     {11, 10, 9, 8, 7, 6, 5, 4},
     {0, 0},
     {{4, 1}, {5, 1}, {6, 1}, {7, 1}, {8, 1}, {9, 1}, {10, 1}, {11, 1}},
     {11, 10, 9, 8, 7, 6, 5, 4},
     1},
    {"AnyLinkButZeroIsUp", {7, 10}, {0, 0}, {{7, 2}, {10, 0xFFFFFFFF}}, {7, 10}, 4},
    {"ConfiguredWhenNoneIsActive", {}, {1u << 5 | 1u << 3, 0}, {{8, 1}}, {6, 8}, 5},
    {"ConfiguredAllDownTheLargest", {}, {1u << 5 | 1u << 3, 0}, {}, {6, 8}, 5},
    {"ActiveBeforeConfigured", {7}, {1u << 5 | 1u << 3, 0}, {{6, 1}, {8, 1}}, {7}, 4},
    {"ConfiguredBitZeroIsTheCpuRow", {}, {1u << 0 | 1u << 5, 0}, {}, {0, 8}, 5},
    {"ConfiguredBitsAbove26AreNone", {}, {0xF8000000, 0}, {}, {}, 0},
    {"ASecondWordAloneIsNone", {}, {0, 0xFFFFFFFF}, {}, {}, 0},
    {"TwentySevenConfiguredAreNone", {}, {kAll27, 0}, {{4, 1}}, {}, 0},
    {"AnEmptySlotStandsForElection", {7, 0}, {0, 0}, {}, {7, 0}, 4},
    {"ALinkedEmptySlotCountsAsNoneUp", {0, 7, 5}, {0, 0}, {{0, 1}}, {0, 7, 5}, 4},
    {"ALinkedEmptySlotForgetsTheSmallestBeforeIt", {8, 0, 10}, {0, 0}, {{8, 1}, {0, 1}, {10, 1}}, {8, 0, 10}, 7},
    {"ALinkedEmptySlotAtTheEndLeavesTheLargest", {8, 10, 0}, {0, 0}, {{8, 1}, {10, 1}, {0, 1}}, {8, 10, 0}, 7},
    {"AnUnmappedMemberIsTheLargestAndNotRead", {200, 7}, {0, 0}, {}, {7}, kUnmapped},
    {"AnUnmappedMemberIsNeverUp", {200, 7, 9}, {0, 0}, {{200, 1}, {9, 1}}, {7, 9}, 6},
    {"NineMembersAreNineEmptySlots",
     {4, 5, 6, 7, 8, 9, 10, 11, 12},
     {1u << 3, 0},
     {{4, 1}, {0, 1}},
     {0, 0, 0, 0, 0, 0, 0, 0, 0},
     0},
    {"ElevenMembersAreElevenEmptySlots",
     {4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14},
     {0, 0},
     {{4, 1}},
     {0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0},
     0},
};

INSTANTIATE_TEST_SUITE_P(Of, Election, ::testing::ValuesIn(kCases),
                         [](const auto &row) { return std::string(row.param.name); });

class ElectionReads : public agg_test::AggTest {
  protected:
    void SetUp() override {
        start();
        set_active(kGroup, {7, 5, 10});
    }
};

TEST_F(ElectionReads, AFailedReadCountsAsDown) {
    const uint32_t winners[] = {2, 4, 2};  // 4, 2 and 7 are all up, one read fails
    for (size_t failing = 0; failing < std::size(winners); ++failing) {
        start();
        set_active(kGroup, {7, 5, 10});
        for (const int port : {7, 5, 10}) {
            set_fibre_link(port, 1);
        }
        driver().fail_call(failing);
        EXPECT_EQ(ANEW_SELECT_MANAGE_INTF(kAgg), 0);
        EXPECT_EQ(agg_manage_intf[kGroup - 1], winners[failing]) << failing;
        EXPECT_THAT(driver().trace(), ElementsAreArray(fibre_reads({7, 5, 10})));
    }
}

TEST_F(ElectionReads, EveryReadFailingElectsTheLargest) {
    driver().fail_every("user_fiberport_link_status_get");
    EXPECT_EQ(ANEW_SELECT_MANAGE_INTF(kAgg), 0);
    EXPECT_EQ(agg_manage_intf[kGroup - 1], 7u);
}

TEST_F(ElectionReads, IgnoresTheStatusOfARead) {
    driver().on("user_fiberport_link_status_get").does([](recording::Arguments &arguments) {
        *static_cast<uint32_t *>(arguments.pointer("status")) = arguments.i32("port") == 7 ? 1 : 0;
        return -1;
    });
    EXPECT_EQ(ANEW_SELECT_MANAGE_INTF(kAgg), 0);
    EXPECT_EQ(agg_manage_intf[kGroup - 1], 4u);
}

// A read that writes nothing must not inherit the link of the member before.
TEST_F(ElectionReads, EachReadStartsFromZero) {
    driver().on("user_fiberport_link_status_get").returns(0);
    driver().once("user_fiberport_link_status_get").sets("status", 1u);
    driver().once("user_fiberport_link_status_get").returns(0);
    EXPECT_EQ(ANEW_SELECT_MANAGE_INTF(kAgg), 0);
    EXPECT_EQ(agg_manage_intf[kGroup - 1], 4u);
}

TEST_F(ElectionReads, IgnoresTheOtherLinkAttribute) {
    set_links({5});
    EXPECT_EQ(ANEW_SELECT_MANAGE_INTF(kAgg), 0);
    EXPECT_EQ(agg_manage_intf[kGroup - 1], 7u);
}

TEST_F(ElectionReads, GroupsOutsideOneToEightAreRefused) {
    fill_tables();
    const std::string before = table_bytes();
    for (const uint32_t group : agg_test::kBadGroups) {
        EXPECT_EQ(ANEW_SELECT_MANAGE_INTF(group), -1) << group;
    }
    EXPECT_EQ(table_bytes(), before);
    EXPECT_THAT(driver().trace(), IsEmpty());
}

TEST_F(ElectionReads, OnlyTheIndexBitsNameTheGroup) {
    EXPECT_EQ(ANEW_SELECT_MANAGE_INTF(kGroup), 0);
    EXPECT_EQ(agg_manage_intf[kGroup - 1], 7u);
}

}  // namespace
