// __adp_transmit_frame(): the five modes, their refusals, and the send.
#include <algorithm>
#include <cerrno>

#include "pkt/testing/transmit.h"

namespace {

using ::testing::ElementsAre;
using transmit_test::Bytes;
using transmit_test::Destinations;
using transmit_test::make_frame;
using transmit_test::with_tag;

constexpr uint32_t kAgg1 = ADP_AGG_INTF(1);
constexpr uint32_t kAgg2 = ADP_AGG_INTF(2);
constexpr uint64_t bit(uint32_t n) {
    return 1ull << n;
}
constexpr uint32_t kEmptyDestination = 0;

class Transmit : public transmit_test::TransmitTest {
  protected:
    void SetUp() override {
        transmit_test::TransmitTest::SetUp();
        ASSERT_GT(adp_pkt_init(), 0);
    }

    adp_status_t send(uint32_t mode, const Destinations *list, uint32_t vid = ADP_NO_VLAN, uint32_t source = 0) {
        const adp_tx_frame_t desc = {frame.data(), static_cast<uint32_t>(frame.size()), source};
        return __adp_transmit_frame(&desc, list == nullptr ? nullptr : list->head(), vid, mode);
    }

    void expect_sent(uint32_t word1, uint32_t word2 = 0) {
        ASSERT_FALSE(system().sent().empty());
        EXPECT_EQ(system().sent().back().bytes, with_tag(frame, word1, word2));
        EXPECT_EQ(held(), 0u);
    }

    void expect_nothing_sent() {
        EXPECT_TRUE(system().sent().empty());
        EXPECT_EQ(held(), 0u);
    }

    Bytes frame = make_frame(60);
};

TEST_F(Transmit, TaggedFrameIsTenBytesLongerAndGoesToEth0) {
    EXPECT_EQ(send(ADP_TX_SWITCH, nullptr), 0);
    expect_sent(0x38000000);
    const fake_system::SentFrame &sent = system().sent().back();
    EXPECT_EQ(sent.bytes.size(), 70u);
    EXPECT_EQ(sent.bytes[12], 0x88);
    EXPECT_EQ(sent.bytes[13], 0x74);
    EXPECT_EQ(sent.flags, 0);
    EXPECT_EQ(sent.address_length, 20u);
    EXPECT_EQ(sent.family, 17);
    EXPECT_EQ(sent.protocol, 0);
    EXPECT_EQ(sent.interface_index, 7);
    EXPECT_EQ(sent.hardware_length, 6);
    EXPECT_EQ(Bytes(sent.hardware_address.begin(), sent.hardware_address.begin() + 6),
              Bytes(frame.begin() + 6, frame.begin() + 12));
    EXPECT_EQ(driver().count(), 0u);
}

TEST_F(Transmit, CostsOneAllocationAndLooksTheInterfaceUpForEachFrame) {
    const size_t calls = system().trace().size();
    EXPECT_EQ(send(ADP_TX_SWITCH, nullptr), 0);
    EXPECT_EQ(allocations(), 1u);
    const std::vector<std::string> made(system().trace().begin() + static_cast<long>(calls), system().trace().end());
    ASSERT_EQ(made.size(), 4u);
    EXPECT_THAT(made[0], ::testing::StartsWith("socket(2, "));
    EXPECT_THAT(made[1], ::testing::HasSubstr("SIOCGIFINDEX, \"eth0\""));
    EXPECT_THAT(made[2], ::testing::StartsWith("close("));
    EXPECT_THAT(made[3], ::testing::StartsWith("sendto(1000, "));
}

TEST_F(Transmit, ShortestFrameIsTheTwoAddresses) {
    frame = make_frame(12);
    EXPECT_EQ(send(ADP_TX_SWITCH, nullptr), 0);
    expect_sent(0x38000000);
}

TEST_F(Transmit, RefusesFramesWithoutRoomForTheTag) {
    for (const size_t length : {0u, 1u, 11u}) {
        frame = make_frame(length);
        frame.reserve(1);
        EXPECT_EQ(send(ADP_TX_SWITCH, nullptr), -1) << length;
    }
    expect_nothing_sent();
}

TEST_F(Transmit, RefusesANullFrameAndModesFromFive) {
    const adp_tx_frame_t desc = {nullptr, 60, 0};
    EXPECT_EQ(__adp_transmit_frame(&desc, nullptr, ADP_NO_VLAN, ADP_TX_SWITCH), -1);
    EXPECT_EQ(send(5, nullptr), -1);
    EXPECT_EQ(send(0xFFFF, nullptr), -1);
    expect_nothing_sent();
}

TEST_F(Transmit, ModeUsesItsLow16Bits) {
    EXPECT_EQ(send(0x30001, nullptr), 0);
    expect_sent(0x38000000);
}

TEST_F(Transmit, LengthThatOverflowsIsRefused) {
    const adp_tx_frame_t desc = {frame.data(), 0xFFFFFFFA, 0};
    EXPECT_EQ(__adp_transmit_frame(&desc, nullptr, ADP_NO_VLAN, ADP_TX_SWITCH), -1);
    expect_nothing_sent();
}

// Mode 1.

TEST_F(Transmit, SwitchModeIgnoresListAndVlan) {
    const Destinations list{3};
    EXPECT_EQ(send(ADP_TX_SWITCH, &list, 100), 0);
    expect_sent(0x38000000);
    EXPECT_EQ(driver().count(), 0u);
}

// Mode 3.

TEST_F(Transmit, OnePortModeNeedsAList) {
    EXPECT_EQ(send(ADP_TX_ONE_PORT, nullptr, 100), -1);
    EXPECT_EQ(driver().count(), 0u);
    expect_nothing_sent();
}

TEST_F(Transmit, OnePortModeSendsToTheLastNode) {
    const Destinations list{1, 26};
    EXPECT_EQ(send(ADP_TX_ONE_PORT, &list), 0);
    expect_sent(0xDA000000 | 29);
    EXPECT_EQ(driver().count(), 0u);  // no VLAN, no record
}

TEST_F(Transmit, OnePortModeWithAnEmptyListLeavesTheDestinationZero) {
    const Destinations list{};
    EXPECT_EQ(send(ADP_TX_ONE_PORT, &list), 0);
    expect_sent(0xDA000000 | kEmptyDestination);
}

TEST_F(Transmit, OnePortModeChecksEveryNodeAgainstTheVlan) {
    set_vlan_members(bit(1) | bit(2));
    const Destinations members{2, 1};
    EXPECT_EQ(send(ADP_TX_ONE_PORT, &members, 100), 0);
    expect_sent(0xDA000000 | 4);
    EXPECT_THAT(driver().take(), ElementsAre("get_vlan_info(vid=100)"));
    const Destinations stranger{1, 3};
    EXPECT_EQ(send(ADP_TX_ONE_PORT, &stranger, 100), -1);
    const Destinations stranger_first{3, 1};
    EXPECT_EQ(send(ADP_TX_ONE_PORT, &stranger_first, 100), -1);
    EXPECT_EQ(system().sent().size(), 1u);
}

TEST_F(Transmit, OnePortModeReachesAGroupThroughItsManagementInterface) {
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

TEST_F(Transmit, OnePortModeKeepsTheDestinationWhenAGroupHasNoManagementInterface) {
    const Destinations list{2, kAgg2};
    EXPECT_EQ(send(ADP_TX_ONE_PORT, &list), 0);
    expect_sent(0xDA000000 | 5);
}

TEST_F(Transmit, OnePortModeSkipsIndexZeroEvenWhenItIsNotAMember) {
    set_vlan_members(bit(2));
    const Destinations list{2, 0};
    EXPECT_EQ(send(ADP_TX_ONE_PORT, &list, 5), 0);
    expect_sent(0xDA000000 | 5);
}

TEST_F(Transmit, OnePortModeRefusesOtherTypes) {
    const Destinations list{2, 0x20000002};
    EXPECT_EQ(send(ADP_TX_ONE_PORT, &list), -1);
    expect_nothing_sent();
}

TEST_F(Transmit, OnePortModeDoesNotSkipTheSource) {
    const Destinations list{2, 3};
    EXPECT_EQ(send(ADP_TX_ONE_PORT, &list, ADP_NO_VLAN, 3), 0);
    expect_sent(0xDA000000 | 6);
}

TEST_F(Transmit, UnmappedPortFillsTheDestinationField) {
    const Destinations list{60};
    EXPECT_EQ(send(ADP_TX_ONE_PORT, &list), 0);
    expect_sent(0xDA000000 | 0x1FFFFFF);
}

TEST_F(Transmit, OnePortModeReportsAFailingVlanService) {
    driver().fail_every("get_vlan_info");
    const Destinations list{1};
    EXPECT_EQ(send(ADP_TX_ONE_PORT, &list, 100), -1);
    expect_nothing_sent();
}

// Modes 2 and 4.

TEST_F(Transmit, VlanPortModesNeedAListBeforeTheyFetchTheVlan) {
    for (const uint32_t mode : {ADP_TX_VLAN_PORT, ADP_TX_VLAN_NOT_SOURCE}) {
        EXPECT_EQ(send(mode, nullptr, 100), -1);
    }
    EXPECT_EQ(driver().count(), 0u);
}

TEST_F(Transmit, VlanPortModesFetchTheRecordEvenWithoutAVlan) {
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

TEST_F(Transmit, VlanPortModesCheckMembershipInTheFetchedRecord) {
    set_vlan_members(bit(2));
    const Destinations list{2, 3};
    for (const uint32_t mode : {ADP_TX_VLAN_PORT, ADP_TX_VLAN_NOT_SOURCE}) {
        EXPECT_EQ(send(mode, &list, 9), -1);
        EXPECT_EQ(send(mode, &list), -1);
    }
    expect_nothing_sent();
}

TEST_F(Transmit, OnlyTheLastModeSkipsTheSource) {
    set_vlan_members(bit(2) | bit(3));
    const Destinations list{2, 3};
    EXPECT_EQ(send(ADP_TX_VLAN_PORT, &list, 9, 3), 0);
    expect_sent(0x78000000 | 6);
    EXPECT_EQ(send(ADP_TX_VLAN_NOT_SOURCE, &list, 9, 3), 0);
    expect_sent(0x78000000 | 5);
}

TEST_F(Transmit, ASourceThatIsNotAMemberIsSkippedUnchecked) {
    set_vlan_members(bit(2));
    const Destinations list{kAgg2, 2};
    EXPECT_EQ(send(ADP_TX_VLAN_NOT_SOURCE, &list, 9, kAgg2), 0);
    expect_sent(0x78000000 | 5);
    EXPECT_EQ(send(ADP_TX_VLAN_PORT, &list, 9, kAgg2), -1);
}

TEST_F(Transmit, ASourceOfAnotherTypeIsSkippedToo) {
    set_vlan_members(bit(2));
    const Destinations list{2, 0x30000001};
    EXPECT_EQ(send(ADP_TX_VLAN_NOT_SOURCE, &list, 9, 0x30000001), 0);
    expect_sent(0x78000000 | 5);
    EXPECT_EQ(send(ADP_TX_VLAN_PORT, &list, 9, 0x30000001), -1);
}

TEST_F(Transmit, VlanPortModesSkipIndexZeroAndRefuseOtherTypes) {
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

TEST_F(Transmit, AListThatHoldsOnlyTheSourceLeavesTheDestinationZeroInTheLastMode) {
    const Destinations list{3};
    EXPECT_EQ(send(ADP_TX_VLAN_NOT_SOURCE, &list, 9, 3), 0);
    expect_sent(0x78000000 | kEmptyDestination);
}

TEST_F(Transmit, GroupsOutsideOneToEightHaveNoManagementInterface) {
    const Destinations list{2, ADP_AGG_INTF(9)};
    EXPECT_EQ(send(ADP_TX_ONE_PORT, &list), 0);
    expect_sent(0xDA000000 | 5);
    EXPECT_EQ(send(ADP_TX_PORTS, &list), 0);
    expect_sent(0x98000000 | 1u << 5);
}

// Mode 0 with a list.

TEST_F(Transmit, ListedPortsFillBothWordsOfTheBitmap) {
    const Destinations list{1, 21, 22, 26};
    EXPECT_EQ(send(ADP_TX_PORTS, &list), 0);
    expect_sent(0x98000000 | 1u << 4 | 1u << 24, 1u << 0 | 1u << 4);
    EXPECT_EQ(driver().count(), 0u);
}

TEST_F(Transmit, ListedPortsSkipSourceNonMembersAndOtherTypes) {
    agg_manage_intf[0] = 9;
    set_vlan_members(bit(1) | bit(2) | bit(27));
    const Destinations list{0, 1, 2, 3, kAgg1, kAgg2, 0x20000001};
    EXPECT_EQ(send(ADP_TX_PORTS, &list, 9, 2), 0);
    expect_sent(0x98000000 | 1u << 4 | 1u << 12);
    EXPECT_THAT(driver().trace(), ElementsAre("get_vlan_info(vid=9)"));
}

TEST_F(Transmit, AListWithoutAReachablePortIsRefused) {
    const Destinations empty{};
    const Destinations source{3};
    const Destinations unmapped{60};
    EXPECT_EQ(send(ADP_TX_PORTS, &empty), -1);
    EXPECT_EQ(send(ADP_TX_PORTS, &source, ADP_NO_VLAN, 3), -1);
    EXPECT_EQ(send(ADP_TX_PORTS, &unmapped), -1);
    expect_nothing_sent();
}

TEST_F(Transmit, AnEmptyListIsRefusedOnlyAfterTheVlanIsFetched) {
    const Destinations empty{};
    EXPECT_EQ(send(ADP_TX_PORTS, &empty, 9), -1);
    EXPECT_EQ(driver().count("get_vlan_info"), 1u);
}

TEST_F(Transmit, PortsAbove56AreNotAdded) {
    ASSERT_EQ(adp_add_phy_port(1, 0, 0, 57, 0), 0);
    ASSERT_EQ(adp_add_phy_port(2, 0, 0, 56, 0), 0);
    const Destinations only_high{1};
    EXPECT_EQ(send(ADP_TX_PORTS, &only_high), -1);
    const Destinations both{1, 2};
    EXPECT_EQ(send(ADP_TX_PORTS, &both), 0);
    expect_sent(0x98000000, 1u << 31);
}

// Mode 0 without a list.

constexpr uint32_t kAllLowPorts = 0x1FFFFF0;  // physical ports 4..24
constexpr uint32_t kAllHighPorts = 0x1F;      // physical ports 25..29

TEST_F(Transmit, FloodWithoutVlanReachesEveryUserPortButTheSource) {
    EXPECT_EQ(send(ADP_TX_PORTS, nullptr), 0);
    expect_sent(0xF8000000 | kAllLowPorts, kAllHighPorts);
    EXPECT_EQ(send(ADP_TX_PORTS, nullptr, ADP_NO_VLAN, 1), 0);
    expect_sent(0xF8000000 | (kAllLowPorts & ~(1u << 4)), kAllHighPorts);
    EXPECT_EQ(send(ADP_TX_PORTS, nullptr, ADP_NO_VLAN, 26), 0);
    expect_sent(0xF8000000 | kAllLowPorts, kAllHighPorts & ~(1u << 4));
    EXPECT_EQ(driver().count(), 0u);
}

TEST_F(Transmit, FloodWithoutVlanNeverAddsAggregationInterfaces) {
    library_test::make_default_map(2);
    ASSERT_EQ(adp_add_cpu_port(0, 0, 0, 20, 0), 0);
    agg_manage_intf[0] = 0;
    agg_manage_intf[1] = 60;  // has no port
    EXPECT_EQ(send(ADP_TX_PORTS, nullptr), 0);
    expect_sent(0xF8000000 | 1u << 4 | 1u << 5);
}

TEST_F(Transmit, FloodSkipsUnmappedPorts) {
    library_test::make_default_map(3);
    EXPECT_EQ(send(ADP_TX_PORTS, nullptr), 0);
    expect_sent(0xF8000000 | 1u << 4 | 1u << 5 | 1u << 6);
    ASSERT_EQ(adp_add_phy_port(2, 0, 0, 0xFFFFFFFF, 0), 0);
    EXPECT_EQ(send(ADP_TX_PORTS, nullptr), 0);
    expect_sent(0xF8000000 | 1u << 4 | 1u << 6);
}

TEST_F(Transmit, FloodWithoutAnyPortIsRefused) {
    library_test::drop_map();
    EXPECT_EQ(send(ADP_TX_PORTS, nullptr), -1);
    EXPECT_TRUE(system().sent().empty());
}

TEST_F(Transmit, FloodInAVlanReachesItsMembers) {
    set_vlan_members(bit(1) | bit(22) | bit(23));
    EXPECT_EQ(send(ADP_TX_PORTS, nullptr, 9, 22), 0);
    expect_sent(0x98000000 | 1u << 4, 1u << 1);
    EXPECT_THAT(driver().trace(), ElementsAre("get_vlan_info(vid=9)"));
}

TEST_F(Transmit, FloodInAVlanAddsGroupsThatAreMembers) {
    agg_manage_intf[0] = 3;
    agg_manage_intf[1] = 4;
    agg_manage_intf[7] = 26;
    set_vlan_members(bit(27) | bit(29) | bit(34));  // groups 1, 3 and 8; group 3 has no management interface
    EXPECT_EQ(send(ADP_TX_PORTS, nullptr, 9), 0);
    expect_sent(0x98000000 | 1u << 6, 1u << 4);
    EXPECT_EQ(send(ADP_TX_PORTS, nullptr, 9, ADP_AGG_INTF(8)), 0);
    expect_sent(0x98000000 | 1u << 6);
}

TEST_F(Transmit, FloodInAVlanWithoutMembersIsRefused) {
    set_vlan_members(0);
    EXPECT_EQ(send(ADP_TX_PORTS, nullptr, 9), -1);
    driver().fail_every("get_vlan_info", 5);
    EXPECT_EQ(send(ADP_TX_PORTS, nullptr, 9), -1);
    expect_nothing_sent();
}

// The send.

TEST_F(Transmit, TriesFourTimesAndThenGivesUp) {
    system().fail("sendto", ENOBUFS);
    EXPECT_EQ(send(ADP_TX_SWITCH, nullptr), -1);
    EXPECT_EQ(std::ranges::count_if(system().trace(), [](const auto &line) { return line.starts_with("sendto("); }), 4);
    EXPECT_EQ(held(), 0u);
}

TEST_F(Transmit, SucceedsWhenALaterAttemptDoes) {
    system().fail_call("sendto", 0, ENOBUFS);
    system().fail_call("sendto", 1, EINTR);
    system().fail_call("sendto", 2, ENETDOWN);
    EXPECT_EQ(send(ADP_TX_SWITCH, nullptr), 0);
    expect_sent(0x38000000);
}

TEST_F(Transmit, AShortSendFailsWithoutAnotherAttempt) {
    system().send_only(69);
    EXPECT_EQ(send(ADP_TX_SWITCH, nullptr), -1);
    EXPECT_EQ(system().sent().size(), 1u);
}

TEST_F(Transmit, WithoutMemoryNothingIsSent) {
    system().fail_allocation(0);
    EXPECT_EQ(send(ADP_TX_SWITCH, nullptr), -1);
    expect_nothing_sent();
}

TEST_F(Transmit, WithoutEth0TheSendStillRunsAgainstNoInterface) {
    system().remove_interface("eth0");
    ::testing::internal::CaptureStdout();
    send(ADP_TX_SWITCH, nullptr);
    EXPECT_THAT(::testing::internal::GetCapturedStdout(), ::testing::StartsWith(" ioctl failed: \r\n"));
    ASSERT_EQ(system().sent().size(), 1u);
    EXPECT_EQ(system().sent()[0].interface_index, -1);
}

TEST_F(Transmit, AFailedSocketSetUpShowsInEveryLaterSend) {
    system().fail("socket", EPERM);
    ::testing::internal::CaptureStdout();
    const std::string message = "adp_pkt_init:443 init send packet socket error !~\n";
    EXPECT_EQ(adp_pkt_init(), static_cast<int32_t>(message.size()));
    EXPECT_EQ(::testing::internal::GetCapturedStdout(), message);
    ::testing::internal::CaptureStdout();
    send(ADP_TX_SWITCH, nullptr);
    ::testing::internal::GetCapturedStdout();
    ASSERT_FALSE(system().sent().empty());
    EXPECT_EQ(system().sent().back().descriptor, -1);
}

}  // namespace
