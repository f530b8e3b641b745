// Groups after a failure: calls that the chip refuses, and processes that follow a killed one.
#include "switchd/groups/testing/groups_fixture.h"

namespace switchd {
namespace takeover_test {

using namespace test;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

class TakeoverTest : public GroupsTest {};

TEST_F(TakeoverTest, WhatTheChipRefusesIsSaidAndTriedAgain) {
    stage_.plug({1});
    driver().fail_every("user_trunk_set", -5);
    stage_.configure({{1, static_group({1})}});
    EXPECT_THAT(calls(),
                ElementsAre("trap", "create 0", "balance 0 3", "set 0 04", "create 0", "balance 0 3", "mirror"))
        << "the chip may have lost the trunk";
    EXPECT_EQ(groups().idle_members(), Ports{1}) << "a port that is in no trunk must not forward";
    EXPECT_FALSE(groups().is_up(1));
    EXPECT_EQ(groups().status()[1].fault, "The chip does not add members to the group (-5).");
    driver().fail_nothing();
    stage_.run(milliseconds(4900));
    EXPECT_EQ(groups().idle_members(), Ports{1});
    EXPECT_GT(groups().next_deadline().value(), stage_.now());
    stage_.run(milliseconds(200));
    EXPECT_EQ(groups().idle_members(), Ports{});
    EXPECT_EQ(groups().status()[1].fault, "");
}

TEST_F(TakeoverTest, AMemberThatTheChipKeepsStaysIdle) {
    use({1, 2});
    driver().fail_every("user_trunk_set", -5);
    stage_.partner().remove_port(2, stage_.now());
    stage_.settle();
    EXPECT_EQ(groups().idle_members(), Ports{2});
    EXPECT_EQ(groups().status()[1].fault, "The chip does not remove members from the group (-5).");
    driver().fail_nothing();
    calls();
    stage_.run(milliseconds(5100));
    EXPECT_THAT(calls(), ElementsAre("mirror", "set 0 04", "balance 0 3"));
    EXPECT_EQ(groups().status()[1].fault, "");
}

TEST_F(TakeoverTest, ASuccessorGoesOnWithTheSameMembers) {
    use({1, 2, 3});
    stage_.set_link(3, false);
    const SavedGroups saved = groups().saved();
    EXPECT_EQ(saved.groups, Ports{1});
    EXPECT_THAT(saved.members, ::testing::SizeIs(2));
    using namespace lacp::state;
    EXPECT_EQ(saved.members.at(1).partner.state,
              kActive | kShortTimeout | kAggregation | kSynchronization | kCollecting)
        << "whether the partner distributes already does not matter";
    start_over_library();
    stage_.restart(saved);
    stage_.configure({{1, lacp_group({1, 2, 3})}});
    EXPECT_THAT(calls(), ElementsAre("trap", "create 0", "balance 0 3", "set 0 04:05", "mirror"));
    EXPECT_EQ(groups().idle_members(), Ports{3});
    stage_.run(seconds(10));
    EXPECT_THAT(calls(), IsEmpty());
    EXPECT_TRUE(stage_.partner().find(1)->is_distributing());
    EXPECT_EQ(groups().saved(), saved);
}

TEST_F(TakeoverTest, ASuccessorGivesUpMembersThatThePartnerNoLongerUses) {
    use({1, 2});
    const SavedGroups saved = groups().saved();
    start_over_library();
    stage_.restart(saved);
    stage_.partner().remove_port(2, stage_.now());
    stage_.settle();
    stage_.configure({{1, lacp_group({1, 2})}});
    calls();
    EXPECT_EQ(groups().idle_members(), Ports{});
    stage_.run(seconds(3));
    EXPECT_EQ(groups().idle_members(), Ports{2});
    EXPECT_THAT(calls(), ElementsAre("mirror", "set 0 04", "balance 0 3"));
}

TEST_F(TakeoverTest, ASuccessorThatKnowsNothingEmptiesTheTrunkAfterTheMirror) {
    use({1, 2});
    start_over_library();
    stage_.restart({});
    stage_.configure({{1, lacp_group({1, 2})}});
    EXPECT_THAT(calls(),
                ElementsAre("trap", "create 0", "balance 0 3", "mirror", "destroy 0", "create 0", "balance 0 3"));
    stage_.run(seconds(4));
    EXPECT_EQ(groups().idle_members(), Ports{});
    EXPECT_THAT(calls(), ElementsAre("set 0 04", "set 0 04:05", "mirror"));
}

TEST_F(TakeoverTest, ASuccessorRemovesGroupsThatAreNoLongerConfigured) {
    use({1, 2});
    const SavedGroups saved = groups().saved();
    start_over_library();
    stage_.restart(saved);
    stage_.configure({{2, static_group({1, 2})}});
    EXPECT_THAT(calls_without_mirror(), ::testing::Contains("destroy 0"));
    EXPECT_EQ(groups().saved().groups, Ports{2});
}

}  // namespace takeover_test
}  // namespace switchd
