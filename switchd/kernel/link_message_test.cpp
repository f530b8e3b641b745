// What the attributes of links, bridges and ports become.
#include "switchd/kernel/link_message.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "switchd/kernel/reader.h"
#include "switchd/kernel/testing/compose.h"

namespace switchd {
namespace link_message_test {

using namespace test;
using testing::ElementsAre;

constexpr int kIndex = 5;

/** The interface of the message, as a reader has it. */
Link read(const Bytes &message) {
    Reader reader;
    EXPECT_TRUE(reader.apply(message));
    return reader.state().links.at(kIndex);
}
Bridge read_bridge(const Put &data) {
    return read(bridge(kIndex, "br0", data)).bridge.value();
}
BridgePort read_port(const Put &data) {
    return read(port(kIndex, "swp1", 9, data)).port.value();
}

TEST(LinkMessageTest, AnInterface) {
    const Link read_link = read(link(
        kIndex, "swp1",
        [](MessageWriter &writer) {
            writer.put_text(IFLA_IFALIAS, "uplink");
            writer.put(IFLA_ADDRESS, Mac{2, 0, 0, 0, 0, 7});
            writer.put_number(IFLA_MTU, uint32_t{9000});
            writer.put_number(IFLA_LINK, 12);
            put_nested(writer, IFLA_LINKINFO, [](MessageWriter &info) { info.put_text(IFLA_INFO_KIND, "veth"); });
        },
        IFF_UP | 0x10000));
    Link expected;
    expected.name = "swp1";
    expected.alias = "uplink";
    expected.kind = "veth";
    expected.mac = {2, 0, 0, 0, 0, 7};
    expected.mtu = 9000;
    expected.up = true;
    expected.carrier = true;
    expected.parent = 12;
    EXPECT_EQ(read_link, expected);
}

TEST(LinkMessageTest, AnInterfaceNeedsANameThatFits) {
    Reader reader;
    EXPECT_FALSE(reader.apply(link(kIndex, "")));
    EXPECT_FALSE(reader.apply(link(kIndex, "sixteen.octets.x")));
    EXPECT_FALSE(reader.apply(message(RTM_NEWLINK, link_info(kIndex))));
    EXPECT_FALSE(reader.apply(link(0, "swp1")));
    EXPECT_FALSE(reader.apply(link(-1, "swp1")));
    EXPECT_TRUE(reader.apply(link(kIndex, "fifteen.octets.")));
    EXPECT_EQ(reader.state().links.size(), 1U);
}

TEST(LinkMessageTest, AVlanDeviceAndItsParent) {
    const auto vlan_device = [](bool elsewhere) {
        return read(link(kIndex, "swp1.100", [=](MessageWriter &writer) {
            writer.put_number(IFLA_LINK, 3);
            if (elsewhere) {
                writer.put_number(IFLA_LINK_NETNSID, 0);
            }
            const Nested info{writer, IFLA_LINKINFO};
            writer.put_text(IFLA_INFO_KIND, "vlan");
            const Nested data{writer, IFLA_INFO_DATA};
            writer.put_number(IFLA_VLAN_ID, uint16_t{100});
        }));
    };
    EXPECT_EQ(vlan_device(false).parent, 3);
    EXPECT_EQ(vlan_device(false).vid, 100);
    EXPECT_EQ(vlan_device(true).parent, 0) << "an index of another namespace";
}

TEST(LinkMessageTest, ABridgeHasTheKernelsDefaultsWithoutAttributes) {
    EXPECT_EQ(read_bridge({}), Bridge{});
}

TEST(LinkMessageTest, ABridge) {
    const Bridge read = read_bridge([](MessageWriter &writer) {
        writer.put_number(IFLA_BR_STP_STATE, uint32_t{2});
        writer.put_number(IFLA_BR_TOPOLOGY_CHANGE, uint8_t{1});
        writer.put_number(IFLA_BR_VLAN_FILTERING, uint8_t{1});
        writer.put_number(IFLA_BR_VLAN_DEFAULT_PVID, uint16_t{0});
        writer.put_number(IFLA_BR_AGEING_TIME, uint32_t{60 * kTicksPerSecond});
        writer.put_number(IFLA_BR_MCAST_SNOOPING, uint8_t{1});
        writer.put_number(IFLA_BR_MCAST_QUERIER, uint8_t{1});
        writer.put_number(IFLA_BR_MCAST_QUERY_RESPONSE_INTVL, uint64_t{5 * kTicksPerSecond});
    });
    Bridge expected;
    expected.stp = true;
    expected.topology_change = true;
    expected.vlan_filtering = true;
    expected.default_pvid = 0;
    expected.ageing_seconds = 60;
    expected.multicast_snooping = true;
    expected.querier = true;
    expected.query_response_seconds = 5;
    EXPECT_EQ(read, expected);
}

TEST(LinkMessageTest, AgesAreRoundedUp) {
    const auto ageing = [](uint32_t ticks) {
        return read_bridge([=](MessageWriter &writer) { writer.put_number(IFLA_BR_AGEING_TIME, ticks); })
            .ageing_seconds;
    };
    EXPECT_EQ(ageing(0), 0U);
    EXPECT_EQ(ageing(1), 1U);
    EXPECT_EQ(ageing(100), 1U);
    EXPECT_EQ(ageing(101), 2U);
    EXPECT_EQ(ageing(0xFFFFFFFF), 42949673U);
}

TEST(LinkMessageTest, AQuerierIsHeardWhileItsTimerRuns) {
    const auto with = [](uint16_t type) {
        return read_bridge([=](MessageWriter &writer) {
            const Nested state{writer, IFLA_BR_MCAST_QUERIER_STATE};
            writer.put_number(BRIDGE_QUERIER_IP_ADDRESS, uint32_t{1});
            writer.put_number(type, uint64_t{7});
        });
    };
    EXPECT_TRUE(with(BRIDGE_QUERIER_IP_OTHER_TIMER).other_querier);
    EXPECT_FALSE(with(BRIDGE_QUERIER_IP_OTHER_TIMER).other_mld_querier);
    EXPECT_TRUE(with(BRIDGE_QUERIER_IPV6_OTHER_TIMER).other_mld_querier);
    EXPECT_FALSE(with(BRIDGE_QUERIER_IPV6_OTHER_TIMER).other_querier);
    EXPECT_FALSE(with(BRIDGE_QUERIER_PAD).other_querier) << "the bridge's own";
}

TEST(LinkMessageTest, EachSettingOfAPort) {
    BridgePort defaults;
    defaults.state = PortState::kForwarding;
    const auto with = [](uint16_t type, uint8_t number) {
        return read_port([=](MessageWriter &writer) {
            writer.put_number(IFLA_BRPORT_STATE, uint8_t{BR_STATE_FORWARDING});
            writer.put_number(type, number);
        });
    };
    EXPECT_EQ(with(IFLA_BRPORT_LEARNING, 1), defaults);
    const auto expect_set = [&](uint16_t type, uint8_t number, auto BridgePort::*setting) {
        BridgePort expected = defaults;
        expected.*setting = number != 0;
        EXPECT_EQ(with(type, number), expected) << type;
        EXPECT_NE(expected, defaults) << type;
    };
    expect_set(IFLA_BRPORT_LEARNING, 0, &BridgePort::learning);
    expect_set(IFLA_BRPORT_UNICAST_FLOOD, 0, &BridgePort::unicast_flood);
    expect_set(IFLA_BRPORT_MCAST_FLOOD, 0, &BridgePort::multicast_flood);
    expect_set(IFLA_BRPORT_BCAST_FLOOD, 0, &BridgePort::broadcast_flood);
    expect_set(IFLA_BRPORT_ISOLATED, 1, &BridgePort::isolated);
    expect_set(IFLA_BRPORT_LOCKED, 1, &BridgePort::locked);
    expect_set(IFLA_BRPORT_MODE, 1, &BridgePort::hairpin);
    EXPECT_EQ(with(IFLA_BRPORT_MULTICAST_ROUTER, 2).multicast_router, 2);
}

TEST(LinkMessageTest, EachStateOfAPort) {
    const auto state = [](uint8_t number) { return read_port(octet(IFLA_BRPORT_STATE, number)).state; };
    EXPECT_EQ(state(BR_STATE_DISABLED), PortState::kDisabled);
    EXPECT_EQ(state(BR_STATE_LISTENING), PortState::kListening);
    EXPECT_EQ(state(BR_STATE_LEARNING), PortState::kLearning);
    EXPECT_EQ(state(BR_STATE_FORWARDING), PortState::kForwarding);
    EXPECT_EQ(state(BR_STATE_BLOCKING), PortState::kBlocking);
    EXPECT_EQ(state(5), PortState::kDisabled) << "an unknown one forwards nothing";
    EXPECT_EQ(state(255), PortState::kDisabled);
}

TEST(LinkMessageTest, AMasterThatIsNoBridgeIsNone) {
    const Link read_link = read(link(kIndex, "swp1", [](MessageWriter &writer) {
        writer.put_number(IFLA_MASTER, 9);
        const Nested info{writer, IFLA_LINKINFO};
        writer.put_text(IFLA_INFO_SLAVE_KIND, "vrf");
    }));
    EXPECT_EQ(read_link.master, 0);
    EXPECT_FALSE(read_link.port.has_value());
}

std::vector<BridgeVlan> read_vlans(const Put &vlans) {
    Reader reader;
    reader.apply(port(kIndex, "swp1", 9));
    reader.apply(member(kIndex, 9, octet(IFLA_BRPORT_STATE, 3), vlans));
    return reader.state().links.at(kIndex).vlans;
}

TEST(LinkMessageTest, VlansOfAPort) {
    EXPECT_THAT(read_vlans([](MessageWriter &writer) {
                    vlan(20)(writer);
                    vlan(1, BRIDGE_VLAN_INFO_PVID | BRIDGE_VLAN_INFO_UNTAGGED)(writer);
                    vlan(100, BRIDGE_VLAN_INFO_RANGE_BEGIN | BRIDGE_VLAN_INFO_UNTAGGED)(writer);
                    vlan(102, BRIDGE_VLAN_INFO_RANGE_END | BRIDGE_VLAN_INFO_UNTAGGED)(writer);
                }),
                ElementsAre(BridgeVlan{1, true, true}, BridgeVlan{20, false, false}, BridgeVlan{100, false, true},
                            BridgeVlan{101, false, true}, BridgeVlan{102, false, true}));
}

TEST(LinkMessageTest, VlansThatCannotBe) {
    const auto range = [](uint16_t first, uint16_t last) {
        return read_vlans([=](MessageWriter &writer) {
            vlan(first, BRIDGE_VLAN_INFO_RANGE_BEGIN)(writer);
            vlan(last, BRIDGE_VLAN_INFO_RANGE_END)(writer);
        });
    };
    EXPECT_EQ(range(1, 4094).size(), 4094U);
    EXPECT_TRUE(range(7, 5).empty());
    EXPECT_TRUE(range(1, 4095).empty());
    EXPECT_THAT(range(0, 3), ElementsAre(BridgeVlan{3, false, false})) << "without a beginning it is one alone";
    EXPECT_TRUE(read_vlans(vlan(0)).empty());
    EXPECT_TRUE(read_vlans(vlan(4095)).empty());
    EXPECT_TRUE(read_vlans(vlan(0xFFFF)).empty());
    EXPECT_TRUE(read_vlans(vlan(5, BRIDGE_VLAN_INFO_RANGE_BEGIN)).empty()) << "a range without its end";
    EXPECT_TRUE(
        read_vlans([](MessageWriter &writer) { writer.put_number(IFLA_BRIDGE_VLAN_INFO, uint16_t{7}); }).empty());
}

TEST(LinkMessageTest, WhatADriverSaysOfItsHardwareIsNoBridge) {
    Reader reader;
    reader.apply(port(kIndex, "swp1", 9));
    const KernelState before = reader.state();
    EXPECT_FALSE(reader.apply(member(kIndex, 9, octet(IFLA_BRPORT_STATE, 0), [](MessageWriter &writer) {
        writer.put_number(IFLA_BRIDGE_FLAGS, uint16_t{BRIDGE_FLAGS_SELF});
        vlan(5)(writer);
    })));
    EXPECT_EQ(reader.state(), before);
}

TEST(GroupAddressTest, IsThatOfTheGroupsFrames) {
    EXPECT_EQ(mac_of({1, 0, ETH_P_IP, {239, 129, 2, 3}}), (Mac{0x01, 0x00, 0x5E, 0x01, 2, 3}));
    EXPECT_EQ(mac_of({1, 0, ETH_P_IPV6, {0xFF, 2, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1, 0xFE, 0xFF, 0x11, 0x22}}),
              (Mac{0x33, 0x33, 0xFE, 0xFF, 0x11, 0x22}));
    EXPECT_EQ(mac_of({1, 0, 0, {1, 2, 3, 4, 5, 6, 7}}), (Mac{1, 2, 3, 4, 5, 6}));
}

}  // namespace link_message_test
}  // namespace switchd
