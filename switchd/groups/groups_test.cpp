// The calls that groups make of libadp, in order, with the protocol's partner on the other end.
#include <array>

#include "switchd/groups/testing/groups_fixture.h"

namespace switchd {
namespace groups_test {

using namespace test;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

TEST_F(GroupsTest, MembersJoinTheTrunkWhenThePartnerHasAgreed) {
    stage_.plug({1, 2, 3});
    stage_.configure({{1, lacp_group({1, 2, 3})}});
    EXPECT_THAT(calls(), ElementsAre("trap", "create 0", "balance 0 3", "mirror"));
    EXPECT_EQ(mirrored_idle_, (Ports{1, 2, 3}));
    stage_.join_partner({1, 2});
    stage_.run(milliseconds(1900));
    EXPECT_THAT(calls(), IsEmpty());
    EXPECT_FALSE(groups().is_up(1));
    stage_.run(milliseconds(200));
    EXPECT_THAT(calls(), ElementsAre("set 0 04", "set 0 04:05", "mirror"));
    EXPECT_EQ(mirrored_idle_, Ports{3});
    EXPECT_TRUE(groups().is_up(1));
    adp_intf_t manager = 0;
    EXPECT_EQ(GET_AGG_MANAGE_INTF(ADP_AGG_INTF(1), &manager), ADP_OK);
    EXPECT_EQ(manager, 1U);
    EXPECT_EQ(agg_standby_members[0][0], 0xEU) << "the configured members";
}

TEST_F(GroupsTest, APulledCableIsLeftAtOnceAndTheMemberAfterTheMirror) {
    use({1, 2, 3});
    stage_.set_link(2, false);
    EXPECT_THAT(calls(), ElementsAre("set 0 04:06", "balance 0 3", "mirror", "set 0 04:06", "balance 0 3"));
    EXPECT_EQ(mirrored_idle_, Ports{2});
    stage_.set_link(2, true);
    EXPECT_THAT(calls(), IsEmpty());
    stage_.run(seconds(3));
    EXPECT_THAT(calls(), ElementsAre("set 0 04:06:05", "mirror"));
}

TEST_F(GroupsTest, ATrunkWithoutLinksIsMadeAnewWithItsBalancing) {
    use({1});
    stage_.set_link(1, false);
    EXPECT_THAT(calls(),
                ElementsAre("destroy 0", "create 0", "balance 0 3", "mirror", "destroy 0", "create 0", "balance 0 3"));
    EXPECT_FALSE(groups().is_up(1));
}

TEST_F(GroupsTest, AMemberWhosePartnerStopsLeavesAfterTheMirror) {
    use({1, 2});
    stage_.partner().remove_port(2, stage_.now());
    stage_.settle();
    EXPECT_THAT(calls(), ElementsAre("mirror", "set 0 04", "balance 0 3"));
    EXPECT_EQ(groups().idle_members(), Ports{2});
}

TEST_F(GroupsTest, TheSameSettingsChangeNothing) {
    use({1, 2});
    stage_.configure({{1, lacp_group({1, 2})}});
    EXPECT_THAT(calls(), IsEmpty());
    auto changed = lacp_group({1, 2});
    changed.balance = ADP_BALANCE_SRC_DST_IP;
    stage_.configure({{1, changed}});
    EXPECT_THAT(calls(), ElementsAre("balance 0 6"));
    changed.is_active = false;
    stage_.configure({{1, changed}});
    stage_.run(seconds(10));
    EXPECT_THAT(calls(), IsEmpty());
}

TEST_F(GroupsTest, MembersComeAndGoWithTheSettings) {
    use({1, 2});
    stage_.plug({3});
    stage_.configure({{1, lacp_group({1, 3})}});
    EXPECT_THAT(calls_without_mirror(), ElementsAre("set 0 04", "balance 0 3"));
    EXPECT_EQ(groups().idle_members(), Ports{3}) << "port 2 is no member";
    EXPECT_EQ(agg_standby_members[0][0], 0xAU);
    EXPECT_FALSE(stage_.partner().find(2)->is_distributing()) << "told at once";
    stage_.join_partner({3});
    stage_.run(seconds(3));
    EXPECT_THAT(calls_without_mirror(), ElementsAre("set 0 04:06"));
}

TEST_F(GroupsTest, ARemovedGroupLeavesTheChipAfterTheMirror) {
    use({1, 2});
    stage_.configure({});
    EXPECT_THAT(calls(), ElementsAre("mirror", "destroy 0", "mirror"));
    EXPECT_THAT(groups().status(), IsEmpty());
    EXPECT_EQ(groups().idle_members(), Ports{});
    stage_.configure({{1, lacp_group({1, 2})}});
    EXPECT_THAT(calls(), ElementsAre("create 0", "balance 0 3", "mirror"));
}

TEST_F(GroupsTest, AMemberMovesToAnotherGroupAfterTheMirror) {
    stage_.plug({1, 2, 3});
    stage_.configure({{1, static_group({1, 2})}, {2, static_group({3})}});
    calls();
    stage_.configure({{1, static_group({1})}, {2, static_group({2, 3})}});
    EXPECT_THAT(calls(), ElementsAre("mirror", "set 0 04", "balance 0 3", "set 1 06:05", "mirror"));
    EXPECT_EQ(mirrored_idle_, Ports{});
}

TEST_F(GroupsTest, AMemberOfARemovedGroupMovesAfterTheMirror) {
    stage_.plug({1, 2});
    stage_.configure({{1, static_group({1, 2})}});
    calls();
    stage_.configure({{2, static_group({1, 2})}});
    EXPECT_THAT(calls(), ElementsAre("create 1", "balance 1 3", "mirror", "destroy 0", "set 1 04:05", "mirror"));
}

TEST_F(GroupsTest, StaticMembersNeedNoPartner) {
    stage_.plug({1});
    stage_.configure({{1, static_group({1, 2})}});
    EXPECT_THAT(calls(), ElementsAre("trap", "create 0", "balance 0 3", "set 0 04:05", "mirror"));
    EXPECT_EQ(groups().idle_members(), Ports{}) << "the chip keeps a member without link on standby";
    EXPECT_TRUE(groups().is_up(1));
    stage_.set_link(2, true);
    EXPECT_THAT(calls_without_mirror(), ElementsAre("set 0 04:05"));
    stage_.set_link(1, false);
    EXPECT_THAT(calls_without_mirror(), ElementsAre("set 0 05", "balance 0 3"));
    stage_.set_link(2, false);
    EXPECT_FALSE(groups().is_up(1));
    const std::array<uint8_t, 1> anything = {0};
    EXPECT_FALSE(groups().receive(1, anything, stage_.now()));
}

TEST_F(GroupsTest, OfNineStaticMembersThoseWithALinkAreUsed) {
    auto settings = static_group({1, 2, 3, 4, 5, 6, 7, 8, 9});
    settings.members[1] = 0xFFFF;
    stage_.plug({1, 2, 3, 4, 5, 6, 7, 8, 9});
    stage_.configure({{1, settings}});
    EXPECT_EQ(groups().idle_members(), Ports{1}) << "the one of the worst priority";
    calls();
    stage_.set_link(5, false);
    EXPECT_EQ(groups().idle_members(), Ports{5});
    EXPECT_EQ(calls_without_mirror().back(), "set 0 05:06:07:09:0a:0b:0c:04");
}

TEST_F(GroupsTest, AGroupIsUpWithEnoughMembers) {
    auto settings = lacp_group({1, 2, 3});
    settings.minimum_links = 2;
    stage_.plug({1, 2, 3});
    stage_.configure({{1, settings}});
    stage_.join_partner({1, 2, 3});
    stage_.run(seconds(3));
    EXPECT_TRUE(groups().is_up(1));
    stage_.set_link(1, false);
    EXPECT_TRUE(groups().is_up(1));
    stage_.set_link(2, false);
    EXPECT_FALSE(groups().is_up(1));
    EXPECT_FALSE(groups().is_up(2));
    settings.minimum_links = 1;
    stage_.configure({{1, settings}});
    EXPECT_TRUE(groups().is_up(1));
}

TEST_F(GroupsTest, StatusHasWhatTheProtocolKnows) {
    use({1, 2});
    stage_.set_link(2, false);
    const auto status = groups().status();
    ASSERT_TRUE(status.contains(1));
    const AggregationStatus &group = status.at(1);
    EXPECT_TRUE(group.is_up);
    EXPECT_EQ(group.partner, (lacp::PartnerGroup{kPartnerSystem, kPartnerKey}));
    EXPECT_EQ(group.settings, lacp_group({1, 2}));
    const MemberStatus &first = group.members.at(1);
    EXPECT_TRUE(first.is_up && first.is_in_use);
    EXPECT_EQ(first.lacp->mux, lacp::MuxState::kDistributing);
    EXPECT_EQ(first.lacp->partner.port, 1);
    EXPECT_GT(first.lacp->counters.lacpdus_in, 2U);
    const MemberStatus &second = group.members.at(2);
    EXPECT_FALSE(second.is_up || second.is_in_use);
    EXPECT_EQ(second.lacp->receive, lacp::ReceiveState::kPortDisabled);
}

TEST_F(GroupsTest, AnotherSystemIdentifierBeginsAnew) {
    use({1, 2});
    GroupsSettings settings = settings_of({{1, lacp_group({1, 2})}});
    settings.system.priority = 1;
    groups().configure(settings, stage_.now());
    EXPECT_EQ(groups().idle_members(), (Ports{1, 2}));
    stage_.run(seconds(4));
    EXPECT_EQ(groups().idle_members(), Ports{});
    EXPECT_EQ(stage_.partner().find(1)->partner.system.priority, 1);
}

}  // namespace groups_test
}  // namespace switchd
