// __adp_transmit_frame() with a set of ports: those of a list, or without a list all ports of a VLAN or of the device.
#include "pkt/testing/transmit.h"
#include "pkt/testing/vlan_record.h"

namespace {

using namespace transmit_test;
using pkt_test::set_vlan_members;
using ::testing::ElementsAre;

class ListedPorts : public TransmitModeTest {};

TEST_F(ListedPorts, FillBothWordsOfTheBitmap) {
    const Destinations list{1, 21, 22, 26};
    EXPECT_EQ(send(ADP_TX_PORTS, &list), 0);
    expect_sent(0x98000000 | 1u << 4 | 1u << 24, 1u << 0 | 1u << 4);
    EXPECT_EQ(driver().count(), 0u);
}

TEST_F(ListedPorts, SkipSourceNonMembersAndOtherTypes) {
    agg_manage_intf[0] = 9;
    set_vlan_members(bit(1) | bit(2) | bit(27));
    const Destinations list{0, 1, 2, 3, kAgg1, kAgg2, 0x20000001};
    EXPECT_EQ(send(ADP_TX_PORTS, &list, 9, 2), 0);
    expect_sent(0x98000000 | 1u << 4 | 1u << 12);
    EXPECT_THAT(driver().trace(), ElementsAre("get_vlan_info(vid=9)"));
}

TEST_F(ListedPorts, AListWithoutAReachablePortIsRefused) {
    const Destinations empty{};
    const Destinations source{3};
    const Destinations unmapped{60};
    EXPECT_EQ(send(ADP_TX_PORTS, &empty), -1);
    EXPECT_EQ(send(ADP_TX_PORTS, &source, ADP_NO_VLAN, 3), -1);
    EXPECT_EQ(send(ADP_TX_PORTS, &unmapped), -1);
    expect_nothing_sent();
}

TEST_F(ListedPorts, AnEmptyListIsRefusedOnlyAfterTheVlanIsFetched) {
    const Destinations empty{};
    EXPECT_EQ(send(ADP_TX_PORTS, &empty, 9), -1);
    EXPECT_EQ(driver().count("get_vlan_info"), 1u);
}

TEST_F(ListedPorts, PortsAbove56AreNotAdded) {
    ASSERT_EQ(adp_add_phy_port(1, 0, 0, 57, 0), 0);
    ASSERT_EQ(adp_add_phy_port(2, 0, 0, 56, 0), 0);
    const Destinations only_high{1};
    EXPECT_EQ(send(ADP_TX_PORTS, &only_high), -1);
    const Destinations both{1, 2};
    EXPECT_EQ(send(ADP_TX_PORTS, &both), 0);
    expect_sent(0x98000000, 1u << 31);
}

constexpr uint32_t kLowPorts = 0x1FFFFF0;  // physical ports 4..24
constexpr uint32_t kHighPorts = 0x1F;      // physical ports 25..29

class Flood : public TransmitModeTest {};

TEST_F(Flood, WithoutVlanReachesEveryUserPortButTheSource) {
    EXPECT_EQ(send(ADP_TX_PORTS, nullptr), 0);
    expect_sent(0xF8000000 | kLowPorts, kHighPorts);
    EXPECT_EQ(send(ADP_TX_PORTS, nullptr, ADP_NO_VLAN, 1), 0);
    expect_sent(0xF8000000 | (kLowPorts & ~(1u << 4)), kHighPorts);
    EXPECT_EQ(send(ADP_TX_PORTS, nullptr, ADP_NO_VLAN, 26), 0);
    expect_sent(0xF8000000 | kLowPorts, kHighPorts & ~(1u << 4));
    EXPECT_EQ(driver().count(), 0u);
}

TEST_F(Flood, WithoutVlanNeverAddsAggregationInterfaces) {
    library_test::make_default_map(2);
    ASSERT_EQ(adp_add_cpu_port(0, 0, 0, 20, 0), 0);
    agg_manage_intf[0] = 0;
    agg_manage_intf[1] = 60;  // has no port
    EXPECT_EQ(send(ADP_TX_PORTS, nullptr), 0);
    expect_sent(0xF8000000 | 1u << 4 | 1u << 5);
}

TEST_F(Flood, SkipsUnmappedPorts) {
    library_test::make_default_map(3);
    EXPECT_EQ(send(ADP_TX_PORTS, nullptr), 0);
    expect_sent(0xF8000000 | 1u << 4 | 1u << 5 | 1u << 6);
    ASSERT_EQ(adp_add_phy_port(2, 0, 0, 0xFFFFFFFF, 0), 0);
    EXPECT_EQ(send(ADP_TX_PORTS, nullptr), 0);
    expect_sent(0xF8000000 | 1u << 4 | 1u << 6);
}

TEST_F(Flood, WithoutAnyPortIsRefused) {
    library_test::drop_map();
    EXPECT_EQ(send(ADP_TX_PORTS, nullptr), -1);
    EXPECT_TRUE(system().sent().empty());
}

TEST_F(Flood, InAVlanReachesItsMembers) {
    set_vlan_members(bit(1) | bit(22) | bit(23));
    EXPECT_EQ(send(ADP_TX_PORTS, nullptr, 9, 22), 0);
    expect_sent(0x98000000 | 1u << 4, 1u << 1);
    EXPECT_THAT(driver().trace(), ElementsAre("get_vlan_info(vid=9)"));
}

TEST_F(Flood, InAVlanAddsGroupsThatAreMembers) {
    agg_manage_intf[0] = 3;
    agg_manage_intf[1] = 4;
    agg_manage_intf[7] = 26;
    set_vlan_members(bit(27) | bit(29) | bit(34));  // groups 1, 3 and 8; group 3 has no management interface
    EXPECT_EQ(send(ADP_TX_PORTS, nullptr, 9), 0);
    expect_sent(0x98000000 | 1u << 6, 1u << 4);
    EXPECT_EQ(send(ADP_TX_PORTS, nullptr, 9, ADP_AGG_INTF(8)), 0);
    expect_sent(0x98000000 | 1u << 6);
}

TEST_F(Flood, InAVlanWithoutMembersIsRefused) {
    set_vlan_members(0);
    EXPECT_EQ(send(ADP_TX_PORTS, nullptr, 9), -1);
    driver().fail_every("get_vlan_info", 5);
    EXPECT_EQ(send(ADP_TX_PORTS, nullptr, 9), -1);
    expect_nothing_sent();
}

}  // namespace
