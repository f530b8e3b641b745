// Tables that are full.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "switchd/kernel/reader.h"
#include "switchd/kernel/testing/compose.h"

namespace switchd {
namespace reader_limits_test {

using namespace test;

constexpr int kBridge = 10;

TEST(ReaderLimitsTest, WhatFindsATableFullIsIgnoredAndCounted) {
    Reader reader{{.links = 4, .addresses = 4, .groups = 2, .memberships = 3}};
    reader.apply(bridge(kBridge, "br100") + port(1, "swp1", kBridge) + port(2, "swp2", kBridge) +
                 port(3, "swp3", kBridge));
    EXPECT_FALSE(reader.apply(port(4, "swp4", kBridge)));
    EXPECT_EQ(reader.ignored(), 1U);
    EXPECT_TRUE(reader.apply(port(3, "uplink", kBridge))) << "one that is known";
    for (uint8_t last = 1; last <= 5; ++last) {
        EXPECT_EQ(reader.apply(address({1, kBridge, {2, 0, 0, 0, 0, last}})), last <= 4);
    }
    EXPECT_EQ(reader.ignored(), 2U);
    EXPECT_TRUE(reader.apply(address({2, kBridge, {2, 0, 0, 0, 0, 1}}))) << "one that is known";
    for (uint8_t last = 1; last <= 3; ++last) {
        EXPECT_EQ(reader.apply(group({ipv4_group(kBridge, last), 1})), last <= 2);
    }
    EXPECT_EQ(reader.ignored(), 3U);
    EXPECT_TRUE(reader.apply(group({ipv4_group(kBridge, 1), 2})));
    EXPECT_FALSE(reader.apply(group({ipv4_group(kBridge, 1), 3})));
    EXPECT_FALSE(reader.apply(group({ipv4_group(kBridge, 1), 2}))) << "known, so not counted";
    EXPECT_EQ(reader.ignored(), 4U);
    for (int interface = 1; interface <= 5; ++interface) {
        EXPECT_EQ(reader.apply(router_port(kBridge, interface)), interface <= 4);
    }
    EXPECT_EQ(reader.ignored(), 5U);
    EXPECT_EQ(reader.state().links.size(), 4U);
    EXPECT_EQ(reader.state().addresses.size(), 4U);
    EXPECT_EQ(reader.state().groups.size(), 2U);
}

TEST(ReaderLimitsTest, ThereIsRoomWhenAQuarterOfEachTableIsFree) {
    Reader reader{{.links = 100, .addresses = 4, .groups = 4, .memberships = 8}};
    const auto nth = [](uint8_t last) { return Neighbour{1, kBridge, {2, 0, 0, 0, 0, last}}; };
    EXPECT_TRUE(reader.has_room());
    for (uint8_t last = 1; last <= 4; ++last) {
        reader.apply(address(nth(last)));
        EXPECT_EQ(reader.has_room(), last <= 3) << int{last};
    }
    reader.apply(address(nth(1), RTM_DELNEIGH));
    EXPECT_TRUE(reader.has_room());
    for (uint8_t last = 1; last <= 4; ++last) {
        reader.apply(group({ipv4_group(kBridge, last), 1}));
    }
    EXPECT_FALSE(reader.has_room());
}

TEST(ReaderLimitsTest, RouterPortsThatGoMakeRoom) {
    Reader reader{{.links = 2, .addresses = 1, .groups = 1, .memberships = 1}};
    for (int round = 0; round < 5; ++round) {
        EXPECT_TRUE(reader.apply(router_port(kBridge, 1) + router_port(kBridge, 2)));
        EXPECT_TRUE(reader.apply(link_gone(1)));
        EXPECT_TRUE(reader.apply(router_port(kBridge, 2, RTM_DELMDB)));
    }
    EXPECT_EQ(reader.ignored(), 0U);
}

}  // namespace reader_limits_test
}  // namespace switchd
