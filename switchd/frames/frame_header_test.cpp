// What is read of frames, of those that are cut short, too.
#include "switchd/frames/frame_header.h"

#include <gtest/gtest.h>

#include <initializer_list>

#include "vdevice/chip/testing/frame_builder.h"

namespace switchd {
namespace frame_header_test {

using vdevice::chip::test::kBroadcast;
using vdevice::chip::test::Octets;
using vdevice::chip::test::octets16;
using vdevice::chip::test::station;
using vdevice::chip::test::vlan_tag;
using vdevice::chip::test::operator+;

const Octets kPayload = octets16(0x0800) + Octets(46, 0xA5);

Octets bytes_of(const vdevice::chip::Frame &frame) {
    Octets octets(frame.size());
    frame.copy_to(octets.data());
    return octets;
}

Octets to(const Mac &destination, const Octets &rest) {
    return Octets(destination.begin(), destination.end()) + station(1) + rest;
}

bool trapped(const Octets &frame) {
    const auto header = read_frame(frame);
    return header && is_trapped(*header);
}

/** IPv6 with a hop-by-hop header, then ICMPv6 of that type. */
Octets icmp6(uint8_t type, bool has_hop_by_hop = true) {
    const Octets options = has_hop_by_hop ? Octets{58, 0, 5, 2, 0, 0, 1, 0} : Octets{};
    const Octets message = options + Octets{type, 0, 0, 0, 0, 0, 0, 0};
    Octets fixed(40, 0);
    fixed[0] = 0x60;
    fixed[5] = static_cast<uint8_t>(message.size());
    fixed[6] = has_hop_by_hop ? 0 : 58;
    return octets16(0x86DD) + fixed + message;
}

Octets ip4(uint8_t protocol) {
    Octets fixed(20, 0);
    fixed[0] = 0x45;
    fixed[3] = 28;
    fixed[9] = protocol;
    return octets16(0x0800) + fixed + Octets(8, 0);
}

TEST(FrameHeader, AFrameFromTheChipHasATagOfAnyType) {
    for (const uint16_t type : std::initializer_list<uint16_t>{0x8100, 0x88A8, 0x9100, 0x1234}) {
        const Octets frame = kBroadcast + station(1) + octets16(type) + octets16(0xE064) + kPayload;
        const auto header = read_tagged(frame);
        ASSERT_TRUE(header);
        EXPECT_EQ(header->destination, (Mac{0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF}));
        EXPECT_EQ(header->source, (Mac{2, 0, 0, 0, 0, 1}));
        EXPECT_EQ(header->vid, 100);
        EXPECT_EQ(header->type, 0x0800);
        EXPECT_EQ(bytes_of(header->frame), kBroadcast + station(1) + kPayload);
        EXPECT_EQ(bytes_of(header->whole), frame);
    }
}

TEST(FrameHeader, AFrameFromTheKernelMayHaveATag) {
    const Octets plain = kBroadcast + station(1) + kPayload;
    EXPECT_EQ(read_frame(plain)->vid, std::nullopt);
    EXPECT_EQ(bytes_of(read_frame(plain)->frame), plain);
    const Octets tagged = kBroadcast + station(1) + vlan_tag(7) + kPayload;
    EXPECT_EQ(read_frame(tagged)->vid, 7);
    EXPECT_EQ(bytes_of(read_frame(tagged)->frame), plain);
    EXPECT_EQ(bytes_of(read_frame(tagged)->whole), tagged);
}

TEST(FrameHeader, WhatIsTooShortHasNone) {
    const Octets frame = kBroadcast + station(1) + vlan_tag(7) + octets16(0x0800);
    for (size_t length = 0; length < frame.size(); ++length) {
        const Octets cut(frame.begin(), frame.begin() + static_cast<ptrdiff_t>(length));
        EXPECT_FALSE(read_tagged(cut)) << length;
        EXPECT_FALSE(read_frame(cut)) << length;
    }
    EXPECT_TRUE(read_tagged(frame));
    EXPECT_TRUE(read_frame(frame));
}

TEST(FrameHeader, FramesBetweenNeighboursAreTrapped) {
    for (uint8_t last = 0; last < 16; ++last) {
        EXPECT_TRUE(trapped(to({0x01, 0x80, 0xC2, 0, 0, last}, kPayload))) << unsigned{last};
        EXPECT_TRUE(is_link_local({0x01, 0x80, 0xC2, 0, 0, last}));
    }
    EXPECT_FALSE(is_link_local({0x01, 0x80, 0xC2, 0, 0, 0x10}));
    for (const uint8_t last : std::initializer_list<uint8_t>{0x10, 0x20, 0x21, 0x28}) {
        EXPECT_TRUE(trapped(to({0x01, 0x80, 0xC2, 0, 0, last}, kPayload))) << unsigned{last};
    }
    for (const uint8_t last : std::initializer_list<uint8_t>{0x11, 0x1F, 0x29, 0xFF}) {
        EXPECT_FALSE(trapped(to({0x01, 0x80, 0xC2, 0, 0, last}, kPayload))) << unsigned{last};
    }
}

TEST(FrameHeader, MulticastSnoopingsMessagesAreTrapped) {
    const Mac group4{0x01, 0, 0x5E, 1, 2, 3};
    const Mac group6{0x33, 0x33, 0, 0, 0, 0x16};
    EXPECT_TRUE(trapped(to(group4, ip4(2))));
    EXPECT_FALSE(trapped(to(group4, ip4(17))));
    for (const uint8_t type : std::initializer_list<uint8_t>{130, 131, 132, 143}) {
        EXPECT_TRUE(trapped(to(group6, icmp6(type)))) << unsigned{type};
        EXPECT_FALSE(trapped(to(group6, icmp6(type, false)))) << unsigned{type};
    }
    for (const uint8_t type : std::initializer_list<uint8_t>{129, 133, 135, 136, 142}) {
        EXPECT_FALSE(trapped(to(group6, icmp6(type)))) << unsigned{type};
    }
}

TEST(FrameHeader, AMessageThatIsCutShortIsReadToItsEnd) {
    for (const Octets &whole : {to({0x01, 0, 0x5E, 1, 2, 3}, ip4(2)), to({0x33, 0x33, 0, 0, 0, 0x16}, icmp6(143))}) {
        for (size_t length = 14; length < whole.size(); ++length) {
            trapped(Octets(whole.begin(), whole.begin() + static_cast<ptrdiff_t>(length)));  // the sanitizers look
        }
        EXPECT_TRUE(trapped(whole));
        EXPECT_FALSE(trapped(Octets(whole.begin(), whole.begin() + 14)));
    }
}

TEST(FrameHeader, ProtocolsAreKnownByTheirTypes) {
    const Mac slow{0x01, 0x80, 0xC2, 0, 0, 2};
    const auto is = [](bool (*question)(const FrameHeader &), const Octets &frame) {
        return question(*read_frame(frame));
    };
    EXPECT_TRUE(is(is_eapol, to({0x01, 0x80, 0xC2, 0, 0, 3}, octets16(0x888E) + Octets(46))));
    EXPECT_FALSE(is(is_eapol, to({0x01, 0x80, 0xC2, 0, 0, 3}, octets16(0x888F) + Octets(46))));
    EXPECT_TRUE(is(is_lacp, to(slow, octets16(0x8809) + Octets{1})));
    EXPECT_TRUE(is(is_lacp, to(slow, octets16(0x8809) + Octets{2})));
    EXPECT_FALSE(is(is_lacp, to(slow, octets16(0x8809) + Octets{3})));
    EXPECT_FALSE(is(is_lacp, to(slow, octets16(0x8809))));
}

}  // namespace frame_header_test
}  // namespace switchd
