// The kernel's own bridge on the interfaces of the switch: what the chip has forwarded is not forwarded again.
#include <fstream>

#include "switchd/frames/frame_path.h"
#include "switchd/ports/testing/interface_fixture.h"
#include "vdevice/chip/testing/frame_builder.h"

namespace switchd {
namespace bridge_test {

using namespace test;
using vdevice::chip::Bytes;
using vdevice::chip::test::kBroadcast;
using vdevice::chip::test::octets16;
using vdevice::chip::test::octets32;
using vdevice::chip::test::station;
using vdevice::chip::test::vlan_tag;
using vdevice::chip::test::operator+;

constexpr uint16_t kVid = 100;

/** A bridge of three ports, whose own stack is looked at, too. */
class BridgeTest : public InterfaceTest {
  protected:
    void SetUp() override {
        if (GetParam() == InterfaceKind::kTap && best_interface_kind() != InterfaceKind::kTap) {
            GTEST_SKIP() << "this user may have no TAP interface here";
        }
        // The kernel itself shall say nothing.
        std::ofstream{"/proc/sys/net/ipv6/conf/default/disable_ipv6"} << "1";
        interfaces_ = std::make_unique<Interfaces>(loop_, InterfaceSettings{GetParam(), {2, 0, 0, 0, 1, 0}, 1500}, "",
                                                   [this](Interface &interface) { take_from(interface); });
        PathTable table;
        std::set<PortName> ports;
        for (const uint32_t port : {1U, 2U, 3U}) {
            table.ports[port].untagged_vid = kVid;
            ports.insert({port, 0});
        }
        table.interfaces = ports;
        path_.set_table(table);
        want(ports);
        ip("link add br100 type bridge mcast_snooping 1 forward_delay 0");
        for (const PortName &port : ports) {
            ip("link set " + name_of(port) + " master br100 up");
            interfaces_->set_carrier(port.intf, true);
        }
        ip("link set br100 up");
        stack_ = std::make_unique<Program>("br100");
        wait_for_bridge();
    }
    void TearDown() override {
        InterfaceTest::TearDown();
        if (find_link("br100")) {
            ip("link del br100");
        }
    }

    void take_from(Interface &interface) {
        interface.read(interfaces_->room(), [&](Bytes frame) {
            const auto decided = path_.from_kernel(interface.port(), frame, now_);
            if (const auto *port = std::get_if<ToPort>(&decided)) {
                sent_.emplace_back(port->intf, octets_of(frame));
            }
        });
    }
    /** From a host on port 1. */
    void give(const Octets &frame) {
        const Octets tagged =
            Octets(frame.begin(), frame.begin() + 12) + vlan_tag(kVid) + Octets(frame.begin() + 12, frame.end());
        const auto decided = path_.from_chip(1, tagged, now_);
        const auto *interface = std::get_if<ToInterface>(&decided);
        ASSERT_NE(interface, nullptr) << name_of(std::get<Drop>(decided));
        EXPECT_TRUE(at(interface->interface).write(interface->frame));
        at(interface->interface).flush();
    }
    void settle(int patience) {
        while (loop_.run_once(patience)) {
        }
    }
    size_t received_by_stack() { return stack_->receive_all(); }
    /** The kernel's bridge forwards, and its stack receives, what no chip has forwarded before. */
    void wait_for_bridge() {
        EXPECT_TRUE(run_until([&] {
            at({1, 0}).write(vdevice::chip::split_frame(hello(0)));
            at({1, 0}).flush();
            return is_sent(2, hello(0)) && is_sent(3, hello(0));
        }));
        settle(50);
        received_by_stack();
        sent_.clear();
    }
    bool is_sent(uint32_t port, const Octets &frame) const {
        return std::find(sent_.begin(), sent_.end(), std::pair{port, frame}) != sent_.end();
    }
    static Octets hello(uint32_t number) {
        return kBroadcast + station(7) + octets16(0x88B5) + octets32(number) + Octets(42, 0x33);
    }

    Time now_ = std::chrono::seconds{1};
    FramePath path_{{1, 2}, {0, 0}, now_};
    std::unique_ptr<Program> stack_;
    std::vector<std::pair<uint32_t, Octets>> sent_; /**< to the chip */
};

TEST_P(BridgeTest, AHundredThousandFloodedFramesReachTheStackAndNoPort) {
    constexpr uint32_t kFrames = 100'000;
    constexpr uint32_t kAtOnce = 50;
    size_t received = 0;
    for (uint32_t number = 1; number <= kFrames; ++number) {
        give(hello(number));
        now_ += std::chrono::microseconds{10};
        if (number % kAtOnce == 0) {
            settle(0);
            received += received_by_stack();
        }
    }
    settle(100);
    received += received_by_stack();
    EXPECT_EQ(received, kFrames) << "each one once";
    EXPECT_EQ(sent_.size(), 0U);
    EXPECT_EQ(path_.counters(2).of(Drop::kForwarded), kFrames);
    EXPECT_EQ(path_.counters(3).of(Drop::kForwarded), kFrames);
}

TEST_P(BridgeTest, ASecondLaterTheSameFrameIsForwardedByNobodyEither) {
    give(hello(1));
    settle(50);
    now_ += 2 * ForwardedFrames::kLifetime;
    give(hello(1));
    settle(50);
    EXPECT_EQ(received_by_stack(), 2U);
    EXPECT_TRUE(sent_.empty());
}

/** A report for 239.1.2.3, as its group's members send it (RFC 2236). */
Octets igmp_report() {
    const Octets group = {239, 1, 2, 3};
    const Octets header = Octets{0x46, 0xC0, 0, 32, 0, 0, 0x40, 0, 1, 2};
    const Octets addresses = Octets{192, 0, 2, 7} + group + Octets{0x94, 4, 0, 0};
    const auto with_sum = [](const Octets &before, const Octets &after) {
        uint32_t sum = 0;
        const Octets whole = before + Octets(2, 0) + after;
        for (size_t i = 0; i < whole.size(); i += 2) {
            sum += vdevice::chip::read16(whole, i);
        }
        sum = (sum & 0xFFFF) + (sum >> 16);
        sum = (sum & 0xFFFF) + (sum >> 16);
        return before + octets16(static_cast<uint16_t>(~sum)) + after;
    };
    return Octets{0x01, 0, 0x5E, 1, 2, 3} + station(7) + octets16(0x0800) + with_sum(header, addresses) +
           with_sum({0x16, 0}, group) + Octets(14, 0);
}

TEST_P(BridgeTest, ATrappedReportGoesToTheRouterPorts) {
    ip("link set swp2 type bridge_slave mcast_router 2");
    give(igmp_report());
    EXPECT_TRUE(run_until([&] { return is_sent(2, igmp_report()); }));
    settle(50);
    EXPECT_EQ(sent_.size(), 1U) << "no other port has a router";
    EXPECT_EQ(std::system("bridge mdb show dev br100 | grep -q 'port swp1 grp 239.1.2.3'"), 0);
}

INSTANTIATE_TEST_SUITE_P(Kinds, BridgeTest, testing::Values(InterfaceKind::kTap, InterfaceKind::kVeth), kind_name);

}  // namespace bridge_test
}  // namespace switchd
