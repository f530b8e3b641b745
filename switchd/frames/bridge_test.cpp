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
const Octets kHost = station(7);

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
        ip("link add br100 type bridge forward_delay 0 mcast_snooping 1 mcast_query_response_interval 10");
        ip("link set br100 type bridge mcast_querier 1");
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
            const auto *port = std::get_if<ToPort>(&decided);
            const bool is_hosts = std::equal(kHost.begin(), kHost.end(), frame.begin() + 6);
            if (port != nullptr && is_hosts) {
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
    /** How many of the host's frames; the bridge's queries come in there, too. */
    size_t received_by_stack() { return stack_->receive_all_of(kHost); }
    /** Waits for so many, and for what should not come. */
    size_t received_by_stack(size_t expected) {
        size_t received = 0;
        run_until([&] { return (received += received_by_stack()) >= expected; });
        settle(100);
        return received + received_by_stack();
    }
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
    std::string sent_text() const {
        std::string text;
        for (const auto &[port, octets] : sent_) {
            text += std::to_string(port) + ":";
            for (const uint8_t octet : octets) {
                constexpr char kDigits[] = "0123456789abcdef";
                text += {' ', kDigits[octet >> 4], kDigits[octet & 15]};
            }
            text += "\n";
        }
        return text;
    }
    bool is_sent(uint32_t port, const Octets &frame) const {
        return std::find(sent_.begin(), sent_.end(), std::pair{port, frame}) != sent_.end();
    }
    static Octets hello(uint32_t number) {
        return kBroadcast + kHost + octets16(0x88B5) + octets32(number) + Octets(42, 0x33);
    }

    Time now_ = std::chrono::seconds{1};
    FramePath path_{{1, 2}, {0, 0}, now_};
    std::unique_ptr<Program> stack_;
    std::vector<std::pair<uint32_t, Octets>>
        sent_; /**< to the chip, of the host's frames; the bridge has some of its own */
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
    received += received_by_stack(kFrames - received);
    EXPECT_EQ(received, kFrames) << "each one once";
    EXPECT_EQ(sent_text(), "");
    EXPECT_EQ(path_.counters(2).of(Drop::kForwarded), kFrames);
    EXPECT_EQ(path_.counters(3).of(Drop::kForwarded), kFrames);
}

TEST_P(BridgeTest, ASecondLaterTheSameFrameIsForwardedByNobodyEither) {
    give(hello(1));
    EXPECT_EQ(received_by_stack(1), 1U);
    now_ += 2 * ForwardedFrames::kLifetime;
    give(hello(1));
    EXPECT_EQ(received_by_stack(1), 1U);
    EXPECT_TRUE(sent_.empty());
}

/** With the checksum in between (RFC 1071). */
Octets with_sum(const Octets &before, const Octets &after) {
    uint32_t sum = 0;
    const Octets whole = before + Octets(2, 0) + after;
    for (size_t i = 0; i < whole.size(); i += 2) {
        sum += vdevice::chip::read16(whole, i);
    }
    sum = (sum & 0xFFFF) + (sum >> 16);
    sum = (sum & 0xFFFF) + (sum >> 16);
    return before + octets16(static_cast<uint16_t>(~sum)) + after;
}

/** A report for 239.1.2.3, as its group's members send it (RFC 2236). */
Octets igmp_report() {
    const Octets group = {239, 1, 2, 3};
    const Octets header = Octets{0x46, 0xC0, 0, 32, 0, 0, 0x40, 0, 1, 2};
    const Octets addresses = Octets{192, 0, 2, 7} + group + Octets{0x94, 4, 0, 0};
    return Octets{0x01, 0, 0x5E, 1, 2, 3} + kHost + octets16(0x0800) + with_sum(header, addresses) +
           with_sum({0x16, 0}, group) + Octets(14, 0);
}

TEST_P(BridgeTest, ATrappedReportGoesToTheRouterPorts) {
    ip("link set swp2 type bridge_slave mcast_router 2");
    // Until the bridge has queried for a while it sends reports to all ports.
    EXPECT_TRUE(comes_true([&] {
        sent_.clear();
        give(igmp_report());
        settle(50);
        return sent_.size() == 1 && sent_[0].first == 2;
    })) << sent_text();
    EXPECT_EQ(std::system("bridge mdb show dev br100 | grep -q 'port swp1 grp 239.1.2.3'"), 0);
}

/** A packet to everybody, shorter than the shortest frame and so padded. */
Octets padded_packet(const Octets &ethernet, const Octets &address) {
    const Octets header = Octets{0x45, 0, 0, 32, 0, 0, 0x40, 0, 64, 17};
    const Octets datagram = octets16(5000) + octets16(5001) + octets16(12) + octets16(0) + Octets(4, 0x77);
    return ethernet + kHost + octets16(0x0800) + with_sum(header, Octets{192, 0, 2, 7} + address) + datagram +
           Octets(14, 0x99);
}

TEST_P(BridgeTest, PaddingChangesNothing) {
    give(padded_packet(kBroadcast, {255, 255, 255, 255}));
    give(padded_packet({0x01, 0, 0x5E, 0, 0, 5}, {224, 0, 0, 5}));
    give(padded_packet({0x01, 0, 0x5E, 9, 9, 9}, {239, 9, 9, 9}));
    give(padded_packet(station(9), {192, 0, 2, 9}));
    settle(100);
    EXPECT_EQ(sent_text(), "");
}

INSTANTIATE_TEST_SUITE_P(Kinds, BridgeTest, testing::Values(InterfaceKind::kTap, InterfaceKind::kVeth), kind_name);

}  // namespace bridge_test
}  // namespace switchd
