// Multicast groups and router ports as messages about them come in.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "switchd/kernel/reader.h"
#include "switchd/kernel/testing/compose.h"

namespace switchd {
namespace reader_groups_test {

using namespace test;
using testing::ElementsAre;
using testing::Pair;

constexpr int kBridge = 10;

class ReaderGroupsTest : public testing::Test {
  protected:
    bool join(int interface, const Bytes &source = {}, uint8_t flags = 0) {
        return reader_.apply(group({kGroup, interface, flags, source}));
    }
    bool leave(int interface, const Bytes &source = {}) {
        return reader_.apply(group({kGroup, interface, 0, source}, RTM_DELMDB));
    }
    const std::map<GroupKey, std::set<int>> &groups() const { return reader_.state().groups; }

    const GroupKey kGroup = ipv4_group(kBridge, 1);
    Reader reader_;
};

TEST_F(ReaderGroupsTest, PortsJoinAndLeave) {
    EXPECT_TRUE(join(1));
    EXPECT_TRUE(join(2));
    EXPECT_FALSE(join(2));
    EXPECT_THAT(groups(), ElementsAre(Pair(kGroup, ElementsAre(1, 2))));
    EXPECT_TRUE(leave(1));
    EXPECT_FALSE(leave(1));
    EXPECT_THAT(groups(), ElementsAre(Pair(kGroup, ElementsAre(2))));
    EXPECT_TRUE(leave(2));
    EXPECT_TRUE(groups().empty());
}

TEST_F(ReaderGroupsTest, TheBridgeItselfHasItsOwnIndex) {
    EXPECT_TRUE(join(kBridge));
    EXPECT_THAT(groups(), ElementsAre(Pair(kGroup, ElementsAre(kBridge))));
}

TEST_F(ReaderGroupsTest, APortStaysWhileItWantsAnySource) {
    EXPECT_TRUE(join(1));
    EXPECT_FALSE(join(1, {192, 0, 2, 1})) << "it is there already";
    EXPECT_FALSE(join(1, {192, 0, 2, 2}));
    EXPECT_FALSE(leave(1));
    EXPECT_FALSE(leave(1, {192, 0, 2, 2}));
    EXPECT_THAT(groups(), ElementsAre(Pair(kGroup, ElementsAre(1))));
    EXPECT_TRUE(leave(1, {192, 0, 2, 1}));
    EXPECT_TRUE(groups().empty());
}

TEST_F(ReaderGroupsTest, ABlockedSourceIsNotWanted) {
    EXPECT_FALSE(join(1, {192, 0, 2, 1}, MDB_FLAGS_BLOCKED));
    EXPECT_TRUE(join(1, {192, 0, 2, 1}));
    EXPECT_TRUE(join(1, {192, 0, 2, 1}, MDB_FLAGS_BLOCKED));
    EXPECT_TRUE(groups().empty());
}

TEST_F(ReaderGroupsTest, GroupsOfEachProtocol) {
    const GroupKey ipv6{kBridge, 0, ETH_P_IPV6, {0xFF, 2, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 5}};
    const GroupKey mac{kBridge, 0, 0, {1, 2, 3, 4, 5, 6}};
    EXPECT_TRUE(join(1));
    EXPECT_TRUE(reader_.apply(group({ipv6, 1})));
    EXPECT_TRUE(reader_.apply(group({mac, 1})));
    EXPECT_EQ(groups().size(), 3U);
    EXPECT_TRUE(groups().contains(ipv6));
    EXPECT_TRUE(groups().contains(mac));
}

TEST_F(ReaderGroupsTest, OctetsAfterTheAddressAreNoneOfIt) {
    GroupKey garbled = kGroup;
    garbled.address[4] = 0xFF;
    EXPECT_TRUE(join(1));
    EXPECT_FALSE(reader_.apply(group({garbled, 1})));
    EXPECT_FALSE(reader_.apply(group({garbled, 2}, RTM_DELMDB)));
    EXPECT_EQ(groups().size(), 1U);
}

TEST_F(ReaderGroupsTest, AGroupIsKnownByItsVlan) {
    EXPECT_TRUE(join(1));
    EXPECT_TRUE(reader_.apply(group({ipv4_group(kBridge, 1, 5), 1})));
    EXPECT_TRUE(leave(1));
    EXPECT_THAT(groups(), ElementsAre(Pair(ipv4_group(kBridge, 1, 5), ElementsAre(1))));
}

TEST_F(ReaderGroupsTest, WhatCannotBeIsIgnored) {
    EXPECT_FALSE(join(0));
    EXPECT_FALSE(join(-1));
    EXPECT_FALSE(reader_.apply(group({ipv4_group(0, 1), 1})));
    EXPECT_FALSE(reader_.apply(group({ipv4_group(-5, 1), 1})));
    EXPECT_FALSE(reader_.apply(group({ipv4_group(kBridge, 1, 4096), 1})));
    EXPECT_FALSE(reader_.apply(group({{kBridge, 0, ETH_P_ARP, {1}}, 1})));
    EXPECT_FALSE(reader_.apply(router_port(kBridge, 0))) << "the bridge itself";
    EXPECT_FALSE(reader_.apply(router_port(kBridge, -1)));
    EXPECT_FALSE(reader_.apply(router_port(0, 1)));
    EXPECT_FALSE(reader_.apply(router_port(kBridge, 1, RTM_DELMDB)));
    br_port_msg header = bridge_header(kBridge);
    header.family = AF_INET;
    EXPECT_FALSE(reader_.apply(message(RTM_NEWMDB, header, [](MessageWriter &writer) {
        const Nested ports{writer, MDBA_ROUTER};
        writer.put_number(MDBA_ROUTER_PORT, 1);
    })));
    EXPECT_EQ(reader_.state(), KernelState{});
}

TEST_F(ReaderGroupsTest, ADumpHasManyGroupsAndRouterPortsInAMessage) {
    br_port_msg header = bridge_header(kBridge);
    header.family = AF_UNSPEC;
    EXPECT_TRUE(reader_.apply(message(RTM_GETMDB, header, [](MessageWriter &writer) {
        {
            const Nested groups{writer, MDBA_MDB};
            for (const uint8_t last : {uint8_t{1}, uint8_t{2}}) {
                const Nested entry{writer, MDBA_MDB_ENTRY};
                put_group(writer, {ipv4_group(kBridge, last), 1});
                put_group(writer, {ipv4_group(kBridge, last), kBridge});
            }
        }
        const Nested ports{writer, MDBA_ROUTER};
        for (const int interface : {1, 2}) {
            writer.put_number(MDBA_ROUTER_PORT, interface);
        }
    })));
    EXPECT_THAT(groups(), ElementsAre(Pair(ipv4_group(kBridge, 1), ElementsAre(1, kBridge)),
                                      Pair(ipv4_group(kBridge, 2), ElementsAre(1, kBridge))));
    EXPECT_THAT(reader_.state().router_ports, ElementsAre(Pair(kBridge, ElementsAre(1, 2))));
}

TEST_F(ReaderGroupsTest, RouterPortsComeAndGo) {
    EXPECT_TRUE(reader_.apply(router_port(kBridge, 1)));
    EXPECT_FALSE(reader_.apply(router_port(kBridge, 1)));
    EXPECT_TRUE(reader_.apply(router_port(kBridge, 2)));
    EXPECT_TRUE(reader_.apply(router_port(kBridge, 1, RTM_DELMDB)));
    EXPECT_THAT(reader_.state().router_ports, ElementsAre(Pair(kBridge, ElementsAre(2))));
    EXPECT_TRUE(reader_.apply(router_port(kBridge, 2, RTM_DELMDB)));
    EXPECT_TRUE(reader_.state().router_ports.empty());
}

}  // namespace reader_groups_test
}  // namespace switchd
