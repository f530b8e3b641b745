// adp_transmit_frame(): one frame to one interface.
#include <cerrno>

#include "pkt/testing/transmit.h"

namespace {

using ::testing::HasSubstr;
using ::testing::StartsWith;
using ::testing::internal::CaptureStdout;
using ::testing::internal::GetCapturedStdout;
using transmit_test::make_frame;
using transmit_test::with_tag;

class TransmitOne : public transmit_test::TransmitTest {
  protected:
    adp_status_t send(uint32_t intf, uint32_t opcode) {
        return adp_transmit_frame(frame.data(), static_cast<uint32_t>(frame.size()), 0, intf, opcode);
    }

    void expect_sent(uint32_t word1) {
        ASSERT_EQ(system().sent().size(), 1u);
        EXPECT_EQ(system().sent()[0].bytes, with_tag(frame, word1));
        expect_nothing_held();
    }

    void expect_refused() {
        EXPECT_TRUE(system().sent().empty());
        expect_nothing_held();
    }

    transmit_test::Bytes frame = make_frame(64);
};

TEST_F(TransmitOne, PutsOpcodeAndPhysicalPortIntoWord1) {
    EXPECT_EQ(send(26, 5), 0);
    expect_sent(0xA0000000 | 29);
    EXPECT_EQ(driver().count(), 0u);
}

TEST_F(TransmitOne, UsesASocketOfItsOwnAndClosesIt) {
    EXPECT_EQ(send(1, 3), 0);
    const std::vector<std::string> &trace = system().trace();
    ASSERT_EQ(trace.size(), 6u);
    EXPECT_THAT(trace[0], StartsWith("socket(17, "));
    EXPECT_THAT(trace[1], StartsWith("socket(2, "));
    EXPECT_THAT(trace[2], HasSubstr("SIOCGIFINDEX, \"eth0\""));
    EXPECT_THAT(trace[3], StartsWith("close(1001)"));
    EXPECT_THAT(trace[4], StartsWith("sendto(1000, 74 bytes)"));
    EXPECT_THAT(trace[5], StartsWith("close(1000)"));
    EXPECT_EQ(allocations(), 1u);
}

TEST_F(TransmitOne, OpcodeKeepsItsLowThreeBits) {
    EXPECT_EQ(send(1, 0xFFFFFFFD), 0);
    expect_sent(0xA0000000 | 4);
}

TEST_F(TransmitOne, LengthKeepsItsLow16Bits) {
    EXPECT_EQ(adp_transmit_frame(frame.data(), 0x50000 | 64, 9, 1, 3), 0);
    expect_sent(0x60000000 | 4);
}

TEST_F(TransmitOne, InterfaceZeroIsTheCpuPort) {
    ASSERT_EQ(adp_add_cpu_port(0, 0, 0, 30, 0), 0);
    EXPECT_EQ(send(0, 3), 0);
    expect_sent(0x60000000 | 30);
}

TEST_F(TransmitOne, AnUnmappedInterfaceFillsTheDestination) {
    EXPECT_EQ(send(27, 3), 0);
    expect_sent(0x60000000 | 0x1FFFFFF);
}

TEST_F(TransmitOne, OtherTypesAreTreatedAsUnmappedPorts) {
    EXPECT_EQ(send(0x20000001, 6), 0);
    expect_sent(0xC0000000 | 0x1FFFFFF);
}

TEST_F(TransmitOne, ReachesAGroupThroughItsManagementInterface) {
    agg_manage_intf[7] = 23;
    EXPECT_EQ(send(ADP_AGG_INTF(8), 3), 0);
    expect_sent(0x60000000 | 26);
}

TEST_F(TransmitOne, AGroupWithoutManagementInterfaceIsReportedAndRefused) {
    for (const uint32_t intf : {ADP_AGG_INTF(2), ADP_AGG_INTF(0), ADP_AGG_INTF(9)}) {
        CaptureStdout();
        EXPECT_EQ(send(intf, 3), -1);
        EXPECT_EQ(GetCapturedStdout(), "manage interface error. \n");
    }
    expect_refused();
}

TEST_F(TransmitOne, RefusesANullFrameAndFramesWithoutRoomForTheTag) {
    EXPECT_EQ(adp_transmit_frame(nullptr, 64, 0, 1, 3), -1);
    EXPECT_EQ(adp_transmit_frame(frame.data(), 11, 0, 1, 3), -1);
    EXPECT_EQ(adp_transmit_frame(frame.data(), 0x10000, 0, 1, 3), -1);
    EXPECT_TRUE(system().trace().empty());
    EXPECT_EQ(allocations(), 0u);
}

TEST_F(TransmitOne, RefusedSocketOrMemoryFails) {
    system().fail("socket", EPERM);
    EXPECT_EQ(send(1, 3), -1);
    expect_refused();
    system().fail_allocation(0);
    EXPECT_EQ(send(1, 3), -1);
    expect_refused();
}

TEST_F(TransmitOne, TriesFourTimes) {
    for (size_t k = 0; k < 3; ++k) {
        system().fail_call("sendto", k, ENOBUFS);
    }
    EXPECT_EQ(send(1, 3), 0);
    EXPECT_EQ(system().sent().size(), 4u);
    expect_nothing_held();
    for (size_t k = 0; k < 4; ++k) {
        system().fail_call("sendto", k, ENOBUFS);
    }
    EXPECT_EQ(send(1, 3), -1);
    EXPECT_EQ(system().sent().size(), 8u);
    expect_nothing_held();
}

TEST_F(TransmitOne, ShortSendFails) {
    system().send_only(10);
    EXPECT_EQ(send(1, 3), -1);
    expect_nothing_held();
}

}  // namespace
