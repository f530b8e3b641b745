// Reading IP packets: what they say, and that no lie about lengths leads out of the frame.
#include "vdevice/chip/frame/ip_packet.h"

#include <gtest/gtest.h>

#include <random>

#include "vdevice/chip/tables/dos_filter.h"
#include "vdevice/chip/tables/snooping.h"
#include "vdevice/chip/testing/packet_builder.h"

namespace vdevice::chip {
namespace ip_packet_test {

using namespace test;

constexpr uint8_t kTcp = 6;
const Octets kData = {1, 2, 3, 4, 5, 6, 7, 8};

Octets octets(Bytes bytes) {
    return {bytes.begin(), bytes.end()};
}

/** The packet of a frame that has @p rest behind its addresses; both live until the next call. */
std::optional<IpPacket> read(const Octets &rest) {
    static Octets frame;
    frame = station(2) + station(1) + rest;
    const auto header = read_header(split_frame(frame), kVlanTpid);
    return header ? read_ip_packet(*header) : std::nullopt;
}

TEST(IpPacket, Version4IsReadWithoutThePadding) {
    const auto packet = read(test::ipv4({.protocol = kTcp}, kData) + Octets(18, 0));
    ASSERT_TRUE(packet);
    EXPECT_FALSE(packet->is_version6());
    EXPECT_EQ(octets(packet->source), test::ipv4_address(1));
    EXPECT_EQ(octets(packet->destination), test::ipv4_address(2));
    EXPECT_EQ(packet->protocol, kTcp);
    EXPECT_EQ(octets(packet->payload), kData);
    EXPECT_FALSE(packet->is_first_fragment());
    EXPECT_EQ(packet->fragment_offset, 0);
}

TEST(IpPacket, FragmentsAreToldApart) {
    EXPECT_TRUE(read(test::ipv4({.protocol = kTcp, .fragment = kMoreFragments}, kData))->is_first_fragment());
    const auto later = read(test::ipv4({.protocol = kTcp, .fragment = kMoreFragments | 185}, kData));
    EXPECT_EQ(later->fragment_offset, 185);
    EXPECT_FALSE(later->is_first_fragment());
    EXPECT_TRUE(read(test::ipv6({44}, test::fragment_header(kTcp, 0, true) + kData))->is_first_fragment());
    const auto later6 = read(test::ipv6({44}, test::fragment_header(60, 3, false) + kData));
    EXPECT_EQ(later6->fragment_offset, 3);
    EXPECT_EQ(octets(later6->payload), kData) << "the middle of something is not taken for a header";
}

TEST(IpPacket, Version6IsReadBehindItsExtensionHeaders) {
    const Octets routing = Octets{60, 1} + Octets(14, 0);
    const Octets options = Octets{51, 0} + Octets(6, 0);
    const Octets authentication = Octets{44, 4} + Octets(22, 0);
    const auto packet = read(test::ipv6(
        {0}, router_alert(43) + routing + options + authentication + test::fragment_header(kTcp, 0, false) + kData));
    ASSERT_TRUE(packet);
    EXPECT_TRUE(packet->is_version6());
    EXPECT_EQ(octets(packet->destination), test::ipv6_address(2));
    EXPECT_TRUE(packet->has_hop_by_hop);
    EXPECT_EQ(packet->protocol, kTcp);
    EXPECT_EQ(octets(packet->payload), kData);
}

TEST(IpPacket, AnEndlessChainIsGivenUp) {
    Octets chain;
    for (int i = 0; i < 100; ++i) {
        chain = chain + router_alert(0);
    }
    const auto packet = read(test::ipv6({0}, chain));
    ASSERT_TRUE(packet);
    EXPECT_EQ(packet->protocol, 0);
    EXPECT_FALSE(packet->payload.empty());
}

// The sanitizers watch the reads; what comes out must lie within the frame.
TEST(IpPacket, DamagedFramesNeverLeadOutOfTheFrame) {
    const Octets samples[] = {
        test::ipv4({.protocol = kTcp, .options = Octets(8, 1)}, test::tcp(2)),
        test::ipv6({0}, router_alert(44) + test::fragment_header(51, 0, true) + Octets{kTcp, 1} + Octets(10, 0) +
                            test::tcp(2)),
        test::ipv6({0}, router_alert(58) + Octets{143, 0, 0, 0}),
    };
    constexpr Snooping kAll{true, true, true};
    std::mt19937 random{7};
    int packets = 0;
    for (int round = 0; round < 10000; ++round) {
        Octets frame = station(2) + station(1) + samples[random() % std::size(samples)];
        for (unsigned change = random() % 4; change > 0; --change) {
            frame[14 + random() % (frame.size() - 14)] = static_cast<uint8_t>(random());
        }
        frame.resize(14 + random() % (frame.size() - 13));
        frame.shrink_to_fit();
        const auto header = read_header(split_frame(frame), kVlanTpid);
        ASSERT_TRUE(header);
        find_attack(*header);
        is_snooped(kAll, *header);
        is_copied_to_cpu(kAll, *header);
        if (const auto packet = read_ip_packet(*header)) {
            ++packets;
            ASSERT_LE(packet->payload.size(), header->payload.size());
            if (!packet->payload.empty()) {
                ASSERT_GE(packet->payload.data(), frame.data());
                ASSERT_LE(packet->payload.data() + packet->payload.size(), frame.data() + frame.size());
            }
        }
    }
    EXPECT_GT(packets, 1000) << "most of the damage must leave something to read";
}

}  // namespace ip_packet_test
}  // namespace vdevice::chip
