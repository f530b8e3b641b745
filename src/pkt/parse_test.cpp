// __adp_receive_frame(): ingress interface, tags and headers, and truncated frames.
#include "pkt/testing/receive.h"

namespace parse_test {

using namespace receive_test;

Bytes ipv4(uint8_t protocol, uint8_t words = 5) {
    Bytes header(words * 4u, 0);
    header[0] = static_cast<uint8_t>(0x40 | words);
    header[9] = protocol;
    return header;
}

Bytes ipv6(uint8_t next_header) {
    Bytes header(40, 0);
    header[0] = 0x60;
    header[6] = next_header;
    return header;
}

constexpr uint8_t kTcp = 6;
constexpr uint8_t kUdp = 17;

class Parse : public ParseTest {};

TEST_F(Parse, TaggedIpv4WithUdp) {
    const Bytes frame = received(5, {kVlan100, kIpv4Type, ipv4(kUdp), Bytes(8)});
    EXPECT_EQ(parse(frame), 0);
    EXPECT_EQ(desc.phy, 5);
    EXPECT_EQ(desc.intf, 2u);
    EXPECT_EQ(desc.length, frame.size() - 10);
    EXPECT_EQ(at(desc.ethernet_header), 0);
    EXPECT_EQ(at(desc.vlan_tag), 12);
    EXPECT_EQ(at(desc.ipv4_header), 18);
    EXPECT_EQ(at(desc.l4_header), 38);
    EXPECT_EQ(at(desc.udp_header), 38);
    EXPECT_EQ(at(desc.ipv6_header), -1);
    EXPECT_EQ(Bytes(bytes.begin(), bytes.end() - 6), stripped(frame));
    EXPECT_EQ(driver().count(), 0u);
}

TEST_F(Parse, Ipv4HeaderLengthIsFollowed) {
    EXPECT_EQ(parse(received(5, {kVlan100, kIpv4Type, ipv4(kTcp, 15), Bytes(8)})), 0);
    EXPECT_EQ(at(desc.l4_header), 18 + 60);
    EXPECT_EQ(at(desc.udp_header), -1);
}

TEST_F(Parse, Ipv4HeaderLengthMayPointBeyondTheFrame) {
    Bytes header = ipv4(kUdp);
    header[0] = 0x4F;
    EXPECT_EQ(parse(received(5, {kVlan100, kIpv4Type, header})), 0);
    EXPECT_EQ(at(desc.l4_header), 18 + 60);  // the pointer is stored, the header is not read
    EXPECT_EQ(at(desc.udp_header), 18 + 60);
}

TEST_F(Parse, Ipv6WithAndWithoutUdp) {
    EXPECT_EQ(parse(received(5, {kVlan100, kIpv6Type, ipv6(kUdp), Bytes(8)})), 0);
    EXPECT_EQ(at(desc.ipv6_header), 18);
    EXPECT_EQ(at(desc.l4_header), 58);
    EXPECT_EQ(at(desc.udp_header), 58);
    EXPECT_EQ(parse(received(5, {kVlan100, kIpv6Type, ipv6(kTcp)})), 0);
    EXPECT_EQ(at(desc.l4_header), 58);
    EXPECT_EQ(at(desc.udp_header), -1);
    EXPECT_EQ(at(desc.ipv4_header), -1);
}

TEST_F(Parse, Ipv6HopByHopHeaderIsSkippedByItsLength) {
    EXPECT_EQ(parse(received(5, {kVlan100, kIpv6Type, ipv6(0), {kUdp, 1}})), 0);
    EXPECT_EQ(at(desc.l4_header), 18 + 56);
    EXPECT_EQ(at(desc.udp_header), -1);
    EXPECT_EQ(parse(received(5, {kVlan100, kIpv6Type, ipv6(0), {kUdp, 255}})), 0);
    EXPECT_EQ(at(desc.l4_header), 18 + 40 + 8 * 255 + 8);
}

TEST_F(Parse, OtherTypesAfterATagAreAccepted) {
    EXPECT_EQ(parse(received(5, {kVlan100, {0x88, 0x63}})), 0);
    EXPECT_EQ(at(desc.vlan_tag), 12);
    EXPECT_EQ(at(desc.l4_header), -1);
}

TEST_F(Parse, TwoTagsLeaveTheInnerOneInTheDescriptor) {
    EXPECT_EQ(parse(received(5, {kVlan100, kVlan7, kIpv4Type, ipv4(kUdp)})), 0);
    EXPECT_EQ(at(desc.vlan_tag), 16);
    EXPECT_EQ(at(desc.ipv4_header), 22);
}

TEST_F(Parse, ThreeTagsAreRefused) {
    EXPECT_EQ(parse(received(5, {kVlan100, kVlan7, kVlan7, kIpv4Type, ipv4(kUdp)})), -1);
    EXPECT_EQ(at(desc.ipv4_header), -1);
    EXPECT_EQ(at(desc.vlan_tag), 16);
}

TEST_F(Parse, StackedOuterTagWithOneInnerTag) {
    EXPECT_EQ(parse(received(5, {kOuter, kVlan7, kIpv4Type, ipv4(kTcp)})), 0);
    EXPECT_EQ(at(desc.vlan_tag), 16);
    EXPECT_EQ(at(desc.ipv4_header), 22);
}

TEST_F(Parse, StackedOuterTagWithTwoInnerTagsIsRefused) {
    EXPECT_EQ(parse(received(5, {kOuter, kVlan7, kVlan7, kIpv4Type, ipv4(kTcp)})), -1);
    EXPECT_EQ(at(desc.ipv4_header), -1);
}

TEST_F(Parse, StackedOuterTagAloneLeavesTheTagFieldAlone) {
    EXPECT_EQ(parse(received(5, {kOuter, kIpv4Type, ipv4(kTcp)})), 0);
    EXPECT_EQ(at(desc.vlan_tag), -1);
    EXPECT_EQ(at(desc.ipv4_header), 18);
    EXPECT_EQ(parse(received(5, {kOuter, kIpv4Type, ipv4(kTcp)}), 0, 3), 0);
    EXPECT_EQ(at(desc.vlan_tag), 3);
}

TEST_F(Parse, UntaggedAndServiceTaggedFramesAreRefusedAfterTheStrip) {
    for (const Bytes &type : {kIpv4Type, Bytes{0x88, 0xA8}}) {
        const Bytes frame = received(5, {type, ipv4(kUdp)});
        EXPECT_EQ(parse(frame), -1);
        EXPECT_EQ(Bytes(bytes.begin(), bytes.end() - 6), stripped(frame));
        EXPECT_EQ(desc.length, frame.size() - 10);
        EXPECT_EQ(at(desc.ethernet_header), 0);
    }
}

TEST_F(Parse, GroupOfTheIngressPortIsTheInterface) {
    intf_map_trunk[2] = ADP_AGG_INTF(4);
    EXPECT_EQ(parse(received(5, {kVlan100, {0x88, 0x63}})), 0);
    EXPECT_EQ(desc.intf, ADP_AGG_INTF(4));
    EXPECT_EQ(desc.phy, 5);
}

TEST_F(Parse, AnUnmappedIngressPortIsAccepted) {
    EXPECT_EQ(parse(received(63, {kVlan100, {0x88, 0x63}})), 0);
    EXPECT_EQ(desc.intf, 0xFFFFFFFFu);
    EXPECT_EQ(desc.phy, 63);
}

TEST_F(Parse, LengthUsesItsLow16Bits) {
    bytes = received(5, {kVlan100, {0x88, 0x63}});
    desc.frame = bytes.data();
    desc.length = static_cast<uint32_t>(0x30000 | bytes.size());
    EXPECT_EQ(__adp_receive_frame(&desc, 0), 0);
    EXPECT_EQ(desc.length, bytes.size() - 10);
}

// Truncated frames. The buffer ends with the frame, so the sanitizers see a byte read beyond it.

TEST_F(Parse, FramesShorterThanTheTagAreRefusedWithNothingWritten) {
    const Bytes frame = received(5, {});
    for (size_t length = 0; length < 18; ++length) {
        const Bytes cut(frame.begin(), frame.begin() + static_cast<long>(length));
        EXPECT_EQ(parse(cut), -1) << length;
        EXPECT_EQ(bytes, cut);
        EXPECT_EQ(desc.phy, 0);
        EXPECT_EQ(desc.intf, 0u);
        EXPECT_EQ(desc.ethernet_header, nullptr);
        EXPECT_EQ(desc.length, length);
    }
}

struct Truncation {
    const char *name;
    Bytes rest;
    size_t needed;  // bytes after the receive tag that parsing has to read
};

class ParseTruncated : public Parse, public ::testing::WithParamInterface<Truncation> {};

TEST_P(ParseTruncated, IsRefusedWhenANeededByteIsMissing) {
    const Truncation &param = GetParam();
    for (size_t length = 0; length <= param.rest.size(); ++length) {
        const Bytes cut(param.rest.begin(), param.rest.begin() + static_cast<long>(length));
        EXPECT_EQ(parse(received(5, {cut})), length < param.needed ? -1 : 0) << length;
        EXPECT_EQ(desc.phy, 5);
        EXPECT_EQ(desc.length, (18 + length - 10) & 0xFFFF);
    }
}

INSTANTIATE_TEST_SUITE_P(
    Frames, ParseTruncated,
    ::testing::Values(Truncation{"Ipv4", concat({kVlan100, kIpv4Type, ipv4(kUdp)}), 4 + 2 + 10},
                      Truncation{"Ipv6", concat({kVlan100, kIpv6Type, ipv6(kUdp)}), 4 + 2 + 7},
                      Truncation{"Ipv6HopByHop", concat({kVlan100, kIpv6Type, ipv6(0), Bytes(8)}), 4 + 2 + 42},
                      Truncation{"TwoTags", concat({kVlan100, kVlan7, {0x88, 0x63}}), 4 + 4 + 2},
                      Truncation{"OuterAndInner", concat({kOuter, kVlan7, {0x88, 0x63}}), 4 + 4 + 2},
                      Truncation{"OuterAlone", concat({kOuter, {0x88, 0x63}}), 4 + 2}),
    [](const auto &test) { return std::string(test.param.name); });

TEST_F(Parse, HeadersFoundBeforeTheEndAreKept) {
    EXPECT_EQ(parse(received(5, {kVlan100, kIpv4Type, {0x45}})), -1);
    EXPECT_EQ(at(desc.vlan_tag), 12);
    EXPECT_EQ(at(desc.ipv4_header), 18);
    EXPECT_EQ(at(desc.l4_header), 38);
    EXPECT_EQ(at(desc.udp_header), -1);
    EXPECT_EQ(parse(received(5, {kVlan100, kIpv4Type})), -1);
    EXPECT_EQ(at(desc.ipv4_header), 18);
    EXPECT_EQ(at(desc.l4_header), -1);
    EXPECT_EQ(parse(received(5, {kVlan100, kIpv6Type, ipv6(0)})), -1);
    EXPECT_EQ(at(desc.ipv6_header), 18);
    EXPECT_EQ(at(desc.l4_header), -1);
}

TEST_F(Parse, LengthFieldWrapsIn16BitsForTheShortestFrame) {
    EXPECT_EQ(parse(received(5, {})), -1);
    EXPECT_EQ(desc.length, 8u);
}

}  // namespace parse_test
