// Mirror sessions: whose frames are copied, in what form, and what the table refuses.
#include <gtest/gtest.h>

#include "vdevice/chip/testing/chip_fixture.h"

namespace vdevice::chip {
namespace mirror_test {

using namespace test;

constexpr uint32_t kStop = 0;
constexpr uint32_t kIngress = 2;
constexpr uint32_t kBoth = 6;
constexpr int kSpy = 20;
const Octets kFrame = kBroadcast + station(1) + kPayload;
const Octets kTagged = kBroadcast + station(1) + test::vlan_tag(0xA001) + kPayload;

class MirrorTest : public test::ChipTest {
  protected:
    MirrorTest() {
        chip_.set_link(kSpy, true);
        // The mirror port is in no VLAN, so that whatever leaves by it is a copy.
        PortSet ports = Switch::all_ports();
        ports.remove(kSpy);
        EXPECT_EQ(chip_.vlans().set_ports(1, ports, ports - PortSet::of(kCpu)), Status::kOk);
        chip_.mirrors().set_enabled(true);
    }
    std::vector<Octets> copies(int port, const Octets &frame) {
        std::vector<Octets> list;
        for (const Sent &sent : send(port, frame)) {
            if (sent.first == kSpy) {
                list.push_back(sent.second);
            }
        }
        return list;
    }
    Status mirror(uint32_t session, int port, int destination, uint32_t mode) {
        return chip_.mirrors().set_port(session, port, destination, mode);
    }
};

using Copies = std::vector<Octets>;

TEST_F(MirrorTest, IngressCopiesAreTheFrameAsReceived) {
    ASSERT_EQ(mirror(0, kA, kSpy, kIngress), Status::kOk);
    EXPECT_EQ(copies(kA, kTagged), Copies{kTagged});
    EXPECT_EQ(send(kA, kTagged).size(), 4U) << "the frame itself goes its way";
    EXPECT_EQ(copies(kB, kFrame), Copies{}) << "what leaves by the port is not asked for";
    EXPECT_EQ(chip_.port(kSpy).counters.tx_frames, 2U);
    EXPECT_EQ(chip_.port(kSpy).counters.tx_octets, 2 * kTagged.size());
}

TEST_F(MirrorTest, BothDirectionsAndTheCpu) {
    ASSERT_EQ(mirror(3, kA, kSpy, kBoth), Status::kOk);
    EXPECT_EQ(copies(kA, kTagged), Copies{kTagged});
    EXPECT_EQ(copies(kB, kTagged), Copies{kFrame});
    ASSERT_EQ(mirror(3, kA, kSpy, kStop), Status::kOk);
    ASSERT_EQ(mirror(3, kCpu, kSpy, kBoth), Status::kOk);
    EXPECT_EQ(copies(kA, kFrame),
              Copies{kBroadcast + station(1) + test::receive_tag(kA) + test::vlan_tag(1) + kPayload});
    const Octets directed = kBroadcast + station(1) + test::transmit_tag(6, kA) + kPayload;
    EXPECT_EQ(copies(kCpu, directed), Copies{directed});
}

TEST_F(MirrorTest, OnlyWhatIsUsedCanBeDisabled) {
    MirrorTable &mirrors = chip_.mirrors();
    EXPECT_EQ(mirrors.check_disabled(0, true), Status::kMirrorMissing);
    EXPECT_EQ(mirrors.set_disabled(0, true), Status::kMirrorMissing);
    EXPECT_EQ(mirrors.set_disabled(0, false), Status::kOk);
    ASSERT_EQ(mirrors.set_flow_destination(0, kSpy), Status::kOk);
    EXPECT_EQ(mirrors.check_disabled(0, true), Status::kOk);
    EXPECT_FALSE(mirrors.session(0).disabled) << "a question changes nothing";
    EXPECT_EQ(mirrors.check_disabled(4, false), Status::kMirrorSession);
    EXPECT_EQ(mirrors.set_disabled(4, false), Status::kMirrorSession);
}

TEST_F(MirrorTest, TheSessionIsForgottenWithItsLastUse) {
    ASSERT_EQ(mirror(0, kA, kSpy, kIngress), Status::kOk);
    ASSERT_EQ(chip_.mirrors().set_disabled(0, true), Status::kOk);
    ASSERT_EQ(mirror(0, kA, kSpy, kStop), Status::kOk);
    EXPECT_FALSE(chip_.mirrors().session(0).is_used());
    ASSERT_EQ(mirror(0, kA, kSpy, kIngress), Status::kOk);
    EXPECT_EQ(copies(kA, kFrame), Copies{kFrame}) << "a new session is not disabled";
    chip_.mirrors().clear();
    EXPECT_EQ(copies(kA, kFrame), Copies{});
    EXPECT_TRUE(chip_.mirrors().enabled()) << "a setting of the chip, not of a session";
}

TEST_F(MirrorTest, WhatCannotBeIsRefused) {
    EXPECT_EQ(mirror(4, kA, kSpy, kIngress), Status::kMirrorSession);
    EXPECT_EQ(mirror(0xFFFFFFFF, kA, kSpy, kIngress), Status::kMirrorSession);
    for (const int unknown : {-1, 32, 255}) {
        EXPECT_EQ(mirror(0, unknown, kSpy, kIngress), Status::kNoPort);
        EXPECT_EQ(mirror(0, kA, unknown, kIngress), Status::kNoPort);
        EXPECT_EQ(mirror(0, unknown, unknown, kStop), Status::kNoPort);
        EXPECT_EQ(chip_.mirrors().set_flow_destination(0, unknown), Status::kNoPort);
    }
    for (const uint32_t mode : {1U, 3U, 5U, 7U, 8U}) {
        EXPECT_EQ(mirror(0, kA, kSpy, mode), Status::kBadArgument);
    }
    EXPECT_EQ(mirror(0, kA, kA, kIngress), Status::kMirrorDestination);
    EXPECT_EQ(mirror(0, kA, kCpu, kIngress), Status::kMirrorDestination);
    EXPECT_EQ(chip_.mirrors().set_flow_destination(0, kCpu), Status::kMirrorDestination);
    EXPECT_EQ(chip_.mirrors().set_flow_destination(4, kSpy), Status::kMirrorSession);
    EXPECT_EQ(mirror(0, kA, kSpy, kStop), Status::kMirrorMissing);
    ASSERT_EQ(mirror(0, kA, kSpy, kIngress), Status::kOk);
    EXPECT_EQ(mirror(0, kB, kC, kIngress), Status::kMirrorBusy);
    EXPECT_EQ(mirror(0, kA, kC, kIngress), Status::kMirrorBusy);
    EXPECT_EQ(mirror(0, kA, kC, kStop), Status::kMirrorMissing);
    EXPECT_EQ(mirror(0, kB, kSpy, kStop), Status::kMirrorMissing);
    EXPECT_EQ(copies(kA, kFrame), Copies{kFrame}) << "refusals change nothing";
}

}  // namespace mirror_test
}  // namespace vdevice::chip
