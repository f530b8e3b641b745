// __adp_transmit_frame() with one destination: mode 3, and modes 2 and 4, which need a VLAN.
#include "pkt/testing/transmit.h"
#include "pkt/testing/vlan_record.h"

namespace {

using namespace transmit_test;
using pkt_test::set_vlan_members;
using ::testing::ElementsAre;

constexpr uint32_t kEmptyDestination = 0;

class OnePortMode : public TransmitModeTest {};

TEST_F(OnePortMode, NeedsAList) {
    EXPECT_EQ(send(ADP_TX_ONE_PORT, nullptr, 100), -1);
    EXPECT_EQ(driver().count(), 0u);
    expect_nothing_sent();
}

TEST_F(OnePortMode, SendsToTheLastNode) {
    const Destinations list{1, 26};
    EXPECT_EQ(send(ADP_TX_ONE_PORT, &list), 0);
    expect_sent(0xDA000000 | 29);
    EXPECT_EQ(driver().count(), 0u);  // no VLAN, no record
}

TEST_F(OnePortMode, WithAnEmptyListLeavesTheDestinationZero) {
    const Destinations list{};
    EXPECT_EQ(send(ADP_TX_ONE_PORT, &list), 0);
    expect_sent(0xDA000000 | kEmptyDestination);
}

TEST_F(OnePortMode, ChecksEveryNodeAgainstTheVlan) {
    set_vlan_members(bit(1) | bit(2));
    const Destinations members{2, 1};
    EXPECT_EQ(send(ADP_TX_ONE_PORT, &members, 100), 0);
    expect_sent(0xDA000000 | 4);
    EXPECT_THAT(driver().take(), ElementsAre("get_vlan_info(vid=100)"));
    const Destinations non_member{1, 3};
    EXPECT_EQ(send(ADP_TX_ONE_PORT, &non_member, 100), -1);
    const Destinations non_member_first{3, 1};
    EXPECT_EQ(send(ADP_TX_ONE_PORT, &non_member_first, 100), -1);
    EXPECT_EQ(system().sent().size(), 1u);
}

TEST_F(OnePortMode, ReachesAGroupThroughItsManagementInterface) {
    agg_manage_intf[0] = 7;
    const Destinations list{1, kAgg1};
    EXPECT_EQ(send(ADP_TX_ONE_PORT, &list), 0);
    expect_sent(0xDA000000 | 10);
    set_vlan_members(bit(1) | bit(27));
    EXPECT_EQ(send(ADP_TX_ONE_PORT, &list, 5), 0);
    expect_sent(0xDA000000 | 10);
    set_vlan_members(bit(1) | bit(7));  // the group itself must be a member, not its port
    EXPECT_EQ(send(ADP_TX_ONE_PORT, &list, 5), -1);
}

TEST_F(OnePortMode, KeepsTheDestinationWhenAGroupHasNoManagementInterface) {
    const Destinations list{2, kAgg2};
    EXPECT_EQ(send(ADP_TX_ONE_PORT, &list), 0);
    expect_sent(0xDA000000 | 5);
}

TEST_F(OnePortMode, SkipsIndexZeroEvenWhenItIsNotAMember) {
    set_vlan_members(bit(2));
    const Destinations list{2, 0};
    EXPECT_EQ(send(ADP_TX_ONE_PORT, &list, 5), 0);
    expect_sent(0xDA000000 | 5);
}

TEST_F(OnePortMode, RefusesOtherTypes) {
    const Destinations list{2, 0x20000002};
    EXPECT_EQ(send(ADP_TX_ONE_PORT, &list), -1);
    expect_nothing_sent();
}

TEST_F(OnePortMode, DoesNotSkipTheSource) {
    const Destinations list{2, 3};
    EXPECT_EQ(send(ADP_TX_ONE_PORT, &list, ADP_NO_VLAN, 3), 0);
    expect_sent(0xDA000000 | 6);
}

TEST_F(OnePortMode, UnmappedPortFillsTheDestinationField) {
    const Destinations list{60};
    EXPECT_EQ(send(ADP_TX_ONE_PORT, &list), 0);
    expect_sent(0xDA000000 | 0x1FFFFFF);
}

TEST_F(OnePortMode, ReportsAFailingVlanService) {
    driver().fail_every("get_vlan_info");
    const Destinations list{1};
    EXPECT_EQ(send(ADP_TX_ONE_PORT, &list, 100), -1);
    expect_nothing_sent();
}

class VlanPortModes : public TransmitModeTest {};

TEST_F(VlanPortModes, NeedAListBeforeTheyFetchTheVlan) {
    for (const uint32_t mode : {ADP_TX_VLAN_PORT, ADP_TX_VLAN_NOT_SOURCE}) {
        EXPECT_EQ(send(mode, nullptr, 100), -1);
    }
    EXPECT_EQ(driver().count(), 0u);
}

TEST_F(VlanPortModes, FetchTheRecordEvenWithoutAVlan) {
    set_vlan_members(bit(2));
    const Destinations list{2};
    for (const uint32_t mode : {ADP_TX_VLAN_PORT, ADP_TX_VLAN_NOT_SOURCE}) {
        EXPECT_EQ(send(mode, &list), 0);
        expect_sent(0x78000000 | 5);
        EXPECT_THAT(driver().take(), ElementsAre("get_vlan_info(vid=4294967295)"));
        driver().fail_every("get_vlan_info", 1);
        EXPECT_EQ(send(mode, &list), -1);
        driver().fail_nothing();
        EXPECT_EQ(driver().take().size(), 1u);
    }
}

TEST_F(VlanPortModes, CheckMembershipInTheFetchedRecord) {
    set_vlan_members(bit(2));
    const Destinations list{2, 3};
    for (const uint32_t mode : {ADP_TX_VLAN_PORT, ADP_TX_VLAN_NOT_SOURCE}) {
        EXPECT_EQ(send(mode, &list, 9), -1);
        EXPECT_EQ(send(mode, &list), -1);
    }
    expect_nothing_sent();
}

TEST_F(VlanPortModes, OnlyTheLastModeSkipsTheSource) {
    set_vlan_members(bit(2) | bit(3));
    const Destinations list{2, 3};
    EXPECT_EQ(send(ADP_TX_VLAN_PORT, &list, 9, 3), 0);
    expect_sent(0x78000000 | 6);
    EXPECT_EQ(send(ADP_TX_VLAN_NOT_SOURCE, &list, 9, 3), 0);
    expect_sent(0x78000000 | 5);
}

TEST_F(VlanPortModes, ASourceThatIsNotAMemberIsSkippedUnchecked) {
    set_vlan_members(bit(2));
    const Destinations list{kAgg2, 2};
    EXPECT_EQ(send(ADP_TX_VLAN_NOT_SOURCE, &list, 9, kAgg2), 0);
    expect_sent(0x78000000 | 5);
    EXPECT_EQ(send(ADP_TX_VLAN_PORT, &list, 9, kAgg2), -1);
}

TEST_F(VlanPortModes, ASourceOfAnotherTypeIsSkippedToo) {
    set_vlan_members(bit(2));
    const Destinations list{2, 0x30000001};
    EXPECT_EQ(send(ADP_TX_VLAN_NOT_SOURCE, &list, 9, 0x30000001), 0);
    expect_sent(0x78000000 | 5);
    EXPECT_EQ(send(ADP_TX_VLAN_PORT, &list, 9, 0x30000001), -1);
}

TEST_F(VlanPortModes, SkipIndexZeroAndRefuseOtherTypes) {
    set_vlan_members(bit(2));
    const Destinations other{2, 0x20000002};
    for (const uint32_t mode : {ADP_TX_VLAN_PORT, ADP_TX_VLAN_NOT_SOURCE}) {
        for (const uint32_t without_index : {0u, ADP_AGG_INTF(0)}) {
            const Destinations zero{2, without_index};
            EXPECT_EQ(send(mode, &zero, 9), 0);
            expect_sent(0x78000000 | 5);
        }
        EXPECT_EQ(send(mode, &other, 9), -1);
    }
}

TEST_F(VlanPortModes, AListThatHoldsOnlyTheSourceLeavesTheDestinationZeroInTheLastMode) {
    const Destinations list{3};
    EXPECT_EQ(send(ADP_TX_VLAN_NOT_SOURCE, &list, 9, 3), 0);
    expect_sent(0x78000000 | kEmptyDestination);
}

}  // namespace
