// Every field of the field processor against real frames: what matches, what does not, what is not there.
#include "vdevice/chip/fields/field_key.h"

#include <gtest/gtest.h>

#include <optional>
#include <random>

#include "vdevice/chip/testing/packet_builder.h"

namespace vdevice::chip {
namespace field_key_test {

using namespace test;

constexpr uint32_t kAll = 0xFFFFFFFF;
constexpr int kIngress = 5;

Octets service_tag(uint16_t tpid, uint16_t tci) {
    return octets16(tpid) + octets16(tci);
}

const Octets kAddresses = station(2) + station(1);
const Octets kDatagram = octets16(1000) + octets16(2000) + Octets(22, 0x5A);

class FieldKeyTest : public testing::Test {
  protected:
    /** The key of a frame that is switched in a VLAN with a priority. */
    static FieldKey key_of(const Octets &frame, uint16_t tci = 0x6064) {
        const std::optional<Header> header = read_header(split_frame(frame), kVlanTpid);
        return FieldKey{{kIngress, frame.size(), *header, tci}};
    }
    static bool meets(const Octets &rest, Field field, uint32_t data, uint32_t mask = kAll) {
        return key_of(kAddresses + rest).meets(qualifier(field, data, mask));
    }
    static bool is_ip_kind(const Octets &rest, IpKind kind) {
        return meets(rest, Field::kIpKind, bit_of(kind), bit_of(kind));
    }
    static bool is_frame_kind(const Octets &rest, FrameKind kind) {
        return meets(rest, Field::kFrameKind, bit_of(kind), bit_of(kind));
    }
    static bool has_ports(const Octets &rest) {
        const bool source = meets(rest, Field::kSourcePort, 1000);
        EXPECT_EQ(source, meets(rest, Field::kDestinationPort, 2000));
        EXPECT_FALSE(meets(rest, Field::kSourcePort, 2000));
        EXPECT_FALSE(meets(rest, Field::kDestinationPort, 1000));
        return source;
    }
    static bool has(const Octets &rest, Field field) { return meets(rest, field, 0, 1) || meets(rest, field, 1, 1); }
};

TEST_F(FieldKeyTest, MacAddresses) {
    const FieldKey key = key_of(kAddresses + test::kPayload);
    EXPECT_TRUE(key.meets({Field::kDestinationMac, {0x0200, 2}, {0xFFFF, kAll}}));
    EXPECT_TRUE(key.meets({Field::kSourceMac, {0x0200, 1}, {0xFFFF, kAll}}));
    EXPECT_FALSE(key.meets({Field::kSourceMac, {0x0200, 2}, {0xFFFF, kAll}}));
    EXPECT_FALSE(key.meets({Field::kSourceMac, {0x0300, 1}, {0xFFFF, kAll}}));
    EXPECT_TRUE(key.meets({Field::kSourceMac, {0x0200, 99}, {0xFFFF, 0xFFFFFF00}}));
}

TEST_F(FieldKeyTest, TheInnerVlanIsThatOfTheInnermostTag) {
    const Octets one = test::vlan_tag(0xA00A) + test::kPayload;
    EXPECT_TRUE(meets(one, Field::kInnerVid, 10));
    EXPECT_TRUE(meets(one, Field::kInnerPriority, 5));
    const Octets two = test::vlan_tag(0x0014) + one;
    EXPECT_TRUE(meets(two, Field::kInnerVid, 10));
    for (const uint16_t tpid : {uint16_t{0x88A8}, uint16_t{0x9100}, kVlanTpid}) {
        const Octets outer = service_tag(tpid, 0x0014);
        EXPECT_TRUE(meets(outer + one, Field::kInnerVid, 10)) << tpid;
        EXPECT_TRUE(meets(outer + test::kPayload, Field::kInnerVid, 20)) << tpid;
        EXPECT_TRUE(meets(outer + one, Field::kEtherType, 0x0800)) << tpid;
    }
}

TEST_F(FieldKeyTest, TheInnerFormatIsNonePriorityOrVlan) {
    EXPECT_TRUE(meets(test::kPayload, Field::kInnerFormat, 0));
    EXPECT_TRUE(meets(test::vlan_tag(0xE000) + test::kPayload, Field::kInnerFormat, 1));
    EXPECT_TRUE(meets(test::vlan_tag(0xE001) + test::kPayload, Field::kInnerFormat, 2));
    EXPECT_TRUE(meets(test::vlan_tag(1) + test::vlan_tag(0) + test::kPayload, Field::kInnerFormat, 1));
}

TEST_F(FieldKeyTest, EtherTypeAndEncapsulation) {
    const Octets arp = octets16(0x0806) + Octets(28, 0);
    EXPECT_TRUE(meets(arp, Field::kEtherType, 0x0806));
    EXPECT_TRUE(is_frame_kind(arp, FrameKind::kEthernet));
    EXPECT_TRUE(is_ip_kind(arp, IpKind::kArp));
    EXPECT_TRUE(has(octets16(1501) + Octets(46, 0), Field::kEtherType));
    EXPECT_FALSE(has(octets16(1500) + Octets(46, 0), Field::kEtherType));
    const Octets llc = octets16(38) + Octets{0x42, 0x42, 0x03} + Octets(35, 0);
    EXPECT_FALSE(has(llc, Field::kEtherType));
    EXPECT_TRUE(is_frame_kind(llc, FrameKind::kLlc));
    EXPECT_FALSE(is_frame_kind(llc, FrameKind::kEthernet));
    EXPECT_TRUE(is_ip_kind(llc, IpKind::kNotIp));
    for (const Octets &rest : {arp, llc}) {
        EXPECT_TRUE(is_frame_kind(rest, FrameKind::kAny));
        EXPECT_TRUE(is_ip_kind(rest, IpKind::kAny));
    }
}

TEST_F(FieldKeyTest, SnapCarriesATypeWhereItSaysSo) {
    const Octets plain = octets16(100) + Octets{0xAA, 0xAA, 3, 0, 0, 0} + ipv4({kUdp}, kDatagram);
    EXPECT_TRUE(is_frame_kind(plain, FrameKind::kSnap));
    EXPECT_FALSE(is_frame_kind(plain, FrameKind::kLlc));
    EXPECT_TRUE(meets(plain, Field::kEtherType, 0x0800));
    EXPECT_TRUE(meets(plain, Field::kSourceIpv4, 0x0A000001));
    const Octets other = octets16(100) + Octets{0xAA, 0xAA, 3, 0, 0, 0x0C} + ipv4({kUdp}, kDatagram);
    EXPECT_TRUE(is_frame_kind(other, FrameKind::kSnap));
    EXPECT_FALSE(has(other, Field::kEtherType));
    EXPECT_FALSE(has(other, Field::kSourceIpv4));
}

TEST_F(FieldKeyTest, Ipv4) {
    Ipv4 packet{kUdp};
    packet.tos = 184;
    const Octets rest = ipv4(packet, kDatagram);
    EXPECT_TRUE(meets(rest, Field::kSourceIpv4, 0x0A000001));
    EXPECT_TRUE(meets(rest, Field::kDestinationIpv4, 0x0A000002));
    EXPECT_TRUE(meets(rest, Field::kDestinationIpv4, 0x0A0000FF, 0xFFFFFF00));
    EXPECT_FALSE(meets(rest, Field::kSourceIpv4, 0x0A000002));
    EXPECT_TRUE(meets(rest, Field::kProtocol, kUdp));
    EXPECT_TRUE(meets(rest, Field::kDscp, 46 << 2));
    EXPECT_FALSE(meets(rest, Field::kDscp, 46));
    EXPECT_TRUE(is_ip_kind(rest, IpKind::kIpv4));
    EXPECT_TRUE(is_ip_kind(rest, IpKind::kIp));
    EXPECT_FALSE(is_ip_kind(rest, IpKind::kIpv6));
    EXPECT_FALSE(is_ip_kind(rest, IpKind::kNotIp));
    EXPECT_FALSE(has(rest, Field::kTrafficClass));
    EXPECT_FALSE(has(rest, Field::kSourceIpv6));
}

TEST_F(FieldKeyTest, Ipv6) {
    Ipv6 packet{kUdp};
    packet.traffic_class = 184;
    const Octets rest = ipv6(packet, kDatagram);
    const FieldKey key = key_of(kAddresses + rest);
    EXPECT_TRUE(key.meets({Field::kSourceIpv6, {0xFD000000, 0, 0, 1}, {kAll, kAll, kAll, kAll}}));
    EXPECT_TRUE(key.meets({Field::kDestinationIpv6, {0xFD000000, 0, 0, 2}, {kAll, kAll, kAll, kAll}}));
    EXPECT_FALSE(key.meets({Field::kDestinationIpv6, {0xFD000000, 0, 1, 2}, {kAll, kAll, kAll, kAll}}));
    EXPECT_TRUE(key.meets({Field::kDestinationIpv6, {0xFD000000, 0, 1, 2}, {kAll, kAll, 0, kAll}}));
    EXPECT_TRUE(meets(rest, Field::kTrafficClass, 184));
    EXPECT_TRUE(meets(rest, Field::kProtocol, kUdp));
    EXPECT_TRUE(has_ports(rest));
    EXPECT_TRUE(is_ip_kind(rest, IpKind::kIpv6));
    EXPECT_TRUE(is_ip_kind(rest, IpKind::kIp));
    EXPECT_FALSE(is_ip_kind(rest, IpKind::kIpv4));
    EXPECT_FALSE(has(rest, Field::kDscp));
    EXPECT_FALSE(has(rest, Field::kSourceIpv4));
}

TEST_F(FieldKeyTest, PortsOfTheProtocolsThatHaveThem) {
    for (const uint8_t protocol : {kTcp, kUdp, kSctp}) {
        EXPECT_TRUE(has_ports(ipv4({protocol}, kDatagram)));
        EXPECT_TRUE(has_ports(ipv6({protocol}, kDatagram)));
    }
    constexpr uint8_t kIcmp = 1;
    EXPECT_FALSE(has_ports(ipv4({kIcmp}, kDatagram)));
    Ipv4 packet{kUdp};
    packet.options = Octets(8, 1);
    EXPECT_TRUE(has_ports(ipv4(packet, kDatagram))) << "behind the options";
    EXPECT_FALSE(has_ports(ipv4({kUdp}, {}) + kDatagram)) << "padding is no port";
}

TEST_F(FieldKeyTest, ABrokenHeaderIsNoPacket) {
    Octets v4 = ipv4({kUdp}, kDatagram);
    v4[2] = 0x65;  // version 6
    EXPECT_FALSE(has(v4, Field::kSourceIpv4));
    EXPECT_TRUE(is_ip_kind(v4, IpKind::kNotIp));
    v4[2] = 0x44;  // a header of 16 octets
    EXPECT_TRUE(has(v4, Field::kSourceIpv4));
    EXPECT_FALSE(has_ports(v4));
    v4[2] = 0x4F;  // longer than the packet
    EXPECT_FALSE(has_ports(v4));
    Octets v6 = ipv6({kUdp}, kDatagram);
    v6[2] = 0x45;
    EXPECT_FALSE(has(v6, Field::kSourceIpv6));
}

// Wherever a frame ends, a field is there whole or not at all, and nothing is read behind the end: the octets are in a
// block of their own, so that the sanitizers see it.
TEST_F(FieldKeyTest, FramesCutAnywhereAreReadToTheirEnd) {
    const Octets headers = test::extension(44) + test::fragment_header(60, 0, true) + test::extension(kTcp, 1);
    const Octets frames[] = {kAddresses + test::vlan_tag(1) + service_tag(0x88A8, 2) + ipv4({kUdp}, kDatagram),
                             kAddresses + ipv6({0}, headers + kDatagram),
                             kAddresses + octets16(60) + Octets{0xAA, 0xAA, 3, 0, 0, 0} + ipv4({kUdp}, kDatagram)};
    for (const Octets &frame : frames) {
        size_t with_ports = 0;
        for (size_t length = kHeaderBytes; length <= frame.size(); ++length) {
            const Octets cut(frame.begin(), frame.begin() + static_cast<ptrdiff_t>(length));
            if (const auto header = read_header(split_frame(cut), kVlanTpid)) {
                const FieldKey key{{kIngress, length, *header, 1}};
                with_ports += key.meets(qualifier(Field::kDestinationPort, 2000, kAll)) ? 1U : 0U;
            }
        }
        EXPECT_EQ(with_ports, 1 + kDatagram.size() - 2 * kPortBytes) << "from the octet on that ends the port";
    }
}

TEST_F(FieldKeyTest, GarbageIsReadToItsEnd) {
    constexpr int kRounds = 5000;
    constexpr uint8_t kLikely[] = {0x81, 0x00, 0x88, 0xA8, 0x08, 0x86, 0xDD, 0x45, 0x60, 44, 0, 60, 0xAA, 3};
    std::mt19937 random{1};
    int packets = 0;
    for (int round = 0; round < kRounds; ++round) {
        Octets frame(kHeaderBytes + random() % 80);
        for (uint8_t &octet : frame) {
            octet = random() % 4 == 0 ? static_cast<uint8_t>(random()) : kLikely[random() % std::size(kLikely)];
        }
        if (const auto header = read_header(split_frame(frame), kVlanTpid)) {
            const FieldKey key{{kIngress, frame.size(), *header, 1}};
            packets += key.meets(qualifier(Field::kIpKind, bit_of(IpKind::kIp), bit_of(IpKind::kIp))) ? 1 : 0;
        }
    }
    EXPECT_GT(packets, 0) << "some of the garbage looks like a packet";
}

}  // namespace field_key_test
}  // namespace vdevice::chip
