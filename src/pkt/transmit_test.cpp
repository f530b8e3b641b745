// __adp_transmit_frame(): the frame as it is sent, refusals, the mode without a destination, and the send.
#include <algorithm>
#include <cerrno>

#include "pkt/testing/transmit.h"

namespace {

using namespace transmit_test;

class Transmit : public TransmitModeTest {};

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

TEST_F(Transmit, SwitchModeIgnoresListAndVlan) {
    const Destinations list{3};
    EXPECT_EQ(send(ADP_TX_SWITCH, &list, 100), 0);
    expect_sent(0x38000000);
    EXPECT_EQ(driver().count(), 0u);
}

TEST_F(Transmit, GroupsOutsideOneToEightHaveNoManagementInterface) {
    const Destinations list{2, ADP_AGG_INTF(9)};
    EXPECT_EQ(send(ADP_TX_ONE_PORT, &list), 0);
    expect_sent(0xDA000000 | 5);
    EXPECT_EQ(send(ADP_TX_PORTS, &list), 0);
    expect_sent(0x98000000 | 1u << 5);
}

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
