// Which spanning-tree group each VLAN gets.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "switchd/mirror/tree_choice.h"

namespace switchd {
namespace tree_choice_test {

using testing::ElementsAre;
using testing::Pair;

VlanState with(uint32_t blocked_port) {
    return {.members = 0, .untagged = 0, .not_forwarding = {{blocked_port, ADP_STG_STATE_BLOCKING}}};
}

TEST(TreeChoiceOf, VlansWithoutBlockedPortsAreInTheDefaultGroup) {
    const TreeChoice choice = tree_choice_of({{10, {}}, {20, {}}}, {{{20, 3}}, {{0, {}}, {3, {}}}});
    EXPECT_THAT(choice.vlans, ElementsAre(Pair(10, 0), Pair(20, 0)));
    EXPECT_THAT(choice.states, ElementsAre(Pair(0, TreeStates{})));
}

TEST(TreeChoiceOf, VlansWithTheSameStatesShareAGroup) {
    const TreeChoice choice = tree_choice_of({{10, with(1)}, {20, with(2)}, {30, with(1)}}, {{}, {{0, {}}}});
    EXPECT_THAT(choice.vlans, ElementsAre(Pair(10, 1), Pair(20, 2), Pair(30, 1)));
    EXPECT_EQ(choice.states.at(2), with(2).not_forwarding);
}

TEST(TreeChoiceOf, AVlanStaysInItsGroup) {
    const TreeGroups present{{{20, 7}}, {{0, {}}, {7, with(9).not_forwarding}}};
    const TreeChoice choice = tree_choice_of({{10, with(1)}, {20, with(2)}}, present);
    EXPECT_THAT(choice.vlans, ElementsAre(Pair(10, 1), Pair(20, 7)));
    EXPECT_EQ(choice.states.at(7), with(2).not_forwarding);
}

TEST(TreeChoiceOf, WhoChangesItsStatesLeavesASharedGroup) {
    const TreeGroups present{{{10, 7}, {20, 7}, {30, 7}}, {{0, {}}, {7, with(1).not_forwarding}}};
    const TreeChoice choice = tree_choice_of({{10, with(2)}, {20, with(2)}, {30, with(1)}}, present);
    EXPECT_THAT(choice.vlans, ElementsAre(Pair(10, 1), Pair(20, 1), Pair(30, 7)));
}

TEST(TreeChoiceOf, WhoHadAGroupKeepsItWhenTheyRunOut) {
    std::map<uint16_t, VlanState> wanted;
    TreeGroups present{{}, {{0, {}}}};
    for (uint16_t vid = 1; vid <= 20; ++vid) {
        wanted[vid] = with(vid);
    }
    for (uint16_t vid = 6; vid <= 20; ++vid) {
        present.vlans[vid] = vid - 5;
        present.states[vid - 5] = with(vid).not_forwarding;
    }
    const TreeChoice choice = tree_choice_of(wanted, present);
    EXPECT_EQ(choice.vlans.at(1), 0);
    EXPECT_EQ(choice.vlans.at(5), 0);
    for (uint16_t vid = 6; vid <= 20; ++vid) {
        EXPECT_EQ(choice.vlans.at(vid), vid - 5);
    }
}

}  // namespace tree_choice_test
}  // namespace switchd
