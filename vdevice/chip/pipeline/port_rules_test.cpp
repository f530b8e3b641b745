// What single ports let pass: loopback, jumbo frames, learning modes, egress sets, priority of untagged frames.
#include <gtest/gtest.h>

#include "vdevice/chip/testing/chip_fixture.h"

namespace vdevice::chip {
namespace port_rules_test {

using namespace test;

class PortRules : public test::ChipTest {
  protected:
    void set_mode(int port, int64_t number) {
        ASSERT_EQ(change(port, [&](Port &state) { state.learning = *find_learn_mode(number); }), Status::kOk);
    }
    void set_loopback(int port, uint32_t mode) {
        ASSERT_EQ(change(port, [&](Port &state) { state.loopback = mode; }), Status::kOk);
    }
    std::vector<int> outputs(int port, const Octets &frame) {
        std::vector<int> list;
        for (const Sent &sent : send(port, frame)) {
            list.push_back(sent.first);
        }
        return list;
    }
};

TEST_F(PortRules, ADisabledPortPassesNothingAndIsHeardOf) {
    chip_.set_enabled(kB, false);
    EXPECT_EQ(sink_.take_changes(), (std::vector<int>{kB}));
    chip_.set_enabled(kB, false);
    EXPECT_TRUE(sink_.take_changes().empty()) << "nothing changed";
    EXPECT_EQ(outputs(kA, kBroadcast + station(1) + kPayload), (std::vector<int>{kCpu, kC}));
    EXPECT_TRUE(send(kB, kBroadcast + station(2) + kPayload).empty());
    EXPECT_EQ(dropped(kB, Drop::kPortDown), 1U);
    chip_.set_enabled(kB, true);
    EXPECT_EQ(sink_.take_changes(), (std::vector<int>{kB}));
    EXPECT_EQ(outputs(kA, kBroadcast + station(1) + kPayload), (std::vector<int>{kCpu, kB, kC}));
}

TEST_F(PortRules, LoopbackReturnsFramesToTheirPort) {
    set_loopback(kB, 1);
    const Octets frame = kBroadcast + station(1) + kPayload;
    // Out to the CPU and C; looped at B, whence it comes in as a frame of B: to the CPU, A and C.
    EXPECT_EQ(outputs(kA, frame), (std::vector<int>{kCpu, kC, kCpu, kA, kC}));
    EXPECT_EQ(chip_.port(kB).counters.tx_frames, 1U);
    EXPECT_EQ(chip_.port(kB).counters.rx_frames, 1U);
    EXPECT_EQ(chip_.macs().find(Mac::at(frame, 6), 1)->port, kB);
    EXPECT_TRUE(send(kB, frame).empty()) << "nothing comes in from the wire";
    EXPECT_EQ(dropped(kB, Drop::kLoopback), 1U);
}

TEST_F(PortRules, LoopbackIsALinkOfItsOwn) {
    chip_.set_link(kB, false);
    sink_.take_changes();
    set_loopback(kB, 2);
    EXPECT_TRUE(chip_.port(kB).is_up());
    EXPECT_EQ(sink_.take_changes(), (std::vector<int>{kB}));
    EXPECT_EQ(outputs(kA, kBroadcast + station(1) + kPayload).size(), 5U);
    chip_.set_enabled(kB, false);
    EXPECT_FALSE(chip_.port(kB).is_up());
    chip_.set_enabled(kB, true);
    set_loopback(kB, 0);
    EXPECT_FALSE(chip_.port(kB).is_up());
}

TEST_F(PortRules, TwoLoopedPortsDoNotLoopForEver) {
    set_loopback(kB, 1);
    set_loopback(kC, 1);
    EXPECT_FALSE(send(kA, kBroadcast + station(1) + kPayload).empty());
    EXPECT_EQ(chip_.port(kB).counters.rx_frames + chip_.port(kC).counters.rx_frames, 64U);
    EXPECT_GT(dropped(kB, Drop::kLoopback) + dropped(kC, Drop::kLoopback), 0U);
    set_loopback(kC, 0);
    EXPECT_EQ(send(kA, kBroadcast + station(1) + kPayload).size(), 5U) << "the limit is each frame's own";
}

TEST_F(PortRules, WithoutJumboFramesLongOnesAreDroppedBothWays) {
    ASSERT_EQ(change(kB, [](Port &port) { port.jumbo = false; }), Status::kOk);
    const auto frame_of = [](size_t size) {
        return kBroadcast + station(1) + test::octets16(0x0800) + Octets(size - kHeaderBytes, 0x11);
    };
    EXPECT_EQ(outputs(kA, frame_of(1518)), (std::vector<int>{kCpu, kB, kC}));
    EXPECT_EQ(outputs(kA, frame_of(1519)), (std::vector<int>{kCpu, kC}));
    EXPECT_EQ(chip_.port(kB).counters.tx_too_long, 1U);
    EXPECT_EQ(chip_.port(kB).counters.tx_frames, 1U);
    EXPECT_EQ(outputs(kB, frame_of(1518)), (std::vector<int>{kCpu, kA, kC}));
    EXPECT_TRUE(send(kB, frame_of(1519)).empty());
    EXPECT_EQ(dropped(kB, Drop::kOversize), 1U);
    EXPECT_EQ(outputs(kA, frame_of(9600)), (std::vector<int>{kCpu, kC}));
}

TEST_F(PortRules, AClosedPortPassesKnownSourcesOnly) {
    for (const int64_t mode : {0, 8}) {
        chip_.macs().remove_if([](const MacEntry &) { return true; });
        set_mode(kA, mode);
        const Octets frame = station(9) + station(1) + kPayload;
        const auto to_cpu = mode == 8 ? std::vector<int>{kCpu} : std::vector<int>{};
        EXPECT_EQ(outputs(kA, frame), to_cpu) << mode;
        EXPECT_EQ(chip_.macs().size(), 0U) << mode;
        ASSERT_EQ(chip_.add_static_mac(Mac::at(frame, 6), 1, kA), Status::kOk);
        EXPECT_EQ(outputs(kA, frame), (std::vector<int>{kCpu, kB, kC})) << mode;
        ASSERT_EQ(chip_.add_static_mac(Mac::at(frame, 6), 1, kB), Status::kOk);
        EXPECT_EQ(outputs(kA, frame), to_cpu) << "known, but elsewhere; mode " << mode;
    }
    EXPECT_EQ(dropped(kA, Drop::kUnknownSource), 2U);
}

TEST_F(PortRules, EgressSetsHoldForFloodingAndForKnownAddresses) {
    send(kC, kBroadcast + station(3) + kPayload);
    ASSERT_EQ(chip_.set_egress(kA, PortSet::of(kB)), Status::kOk);
    EXPECT_EQ(outputs(kA, kBroadcast + station(1) + kPayload), (std::vector<int>{kB})) << "nor to the CPU";
    EXPECT_TRUE(send(kA, station(3) + station(1) + kPayload).empty());
    EXPECT_EQ(dropped(kA, Drop::kIsolated), 1U);
    EXPECT_EQ(outputs(kC, station(1) + station(3) + kPayload), (std::vector<int>{kA})) << "the other way is free";
    EXPECT_EQ(chip_.set_egress(kA, PortSet::of(32)), Status::kNoPort);
    EXPECT_EQ(chip_.set_egress(32, PortSet::of(kB)), Status::kNoPort);
}

}  // namespace port_rules_test
}  // namespace vdevice::chip
