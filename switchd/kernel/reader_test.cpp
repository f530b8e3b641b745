// Links and addresses, as messages about them come in.
#include "switchd/kernel/reader.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>

#include "switchd/kernel/testing/compose.h"

namespace switchd {
namespace reader_test {

using namespace test;

constexpr int kBridge = 10;
constexpr int kOtherBridge = 11;
constexpr int kPort = 1;
constexpr int kOtherPort = 2;
constexpr Mac kMac{2, 0, 0, 0, 0, 1};

class ReaderTest : public testing::Test {
  protected:
    ReaderTest() {
        reader_.apply(bridge(kBridge, "br100") + bridge(kOtherBridge, "br200"));
        reader_.apply(port(kPort, "swp1", kBridge) + port(kOtherPort, "swp2", kBridge));
    }

    const Link &link_at(int index) const { return reader_.state().links.at(index); }
    /** An address, a group and a router at the port. */
    void fill(int at) {
        EXPECT_TRUE(reader_.apply(address({at, kBridge, {2, 0, 0, 0, 1, static_cast<uint8_t>(at)}})));
        EXPECT_TRUE(reader_.apply(group({ipv4_group(kBridge, 1), at})));
        EXPECT_TRUE(reader_.apply(router_port(kBridge, at)));
    }
    bool knows(int interface) const {
        const KernelState &state = reader_.state();
        const auto has = [interface](const auto &entry) { return entry.second.contains(interface); };
        return std::any_of(state.addresses.begin(), state.addresses.end(),
                           [=](const auto &entry) { return entry.second.interface == interface; }) ||
               std::any_of(state.groups.begin(), state.groups.end(), has) ||
               std::any_of(state.router_ports.begin(), state.router_ports.end(), has);
    }

    Reader reader_;
};

TEST_F(ReaderTest, TheSameAgainChangesNothing) {
    EXPECT_FALSE(reader_.apply(port(kPort, "swp1", kBridge)));
    fill(kPort);
    EXPECT_FALSE(reader_.apply(address({kPort, kBridge, {2, 0, 0, 0, 1, kPort}})));
    EXPECT_FALSE(reader_.apply(group({ipv4_group(kBridge, 1), kPort})));
    EXPECT_FALSE(reader_.apply(router_port(kBridge, kPort)));
    EXPECT_FALSE(reader_.apply(address({kPort, kBridge, kMac}, RTM_DELNEIGH))) << "it is not there";
    EXPECT_FALSE(reader_.apply(link_gone(77)));
}

TEST_F(ReaderTest, ARenamedInterfaceKeepsItsPlace) {
    fill(kPort);
    EXPECT_TRUE(reader_.apply(port(kPort, "uplink", kBridge)));
    EXPECT_EQ(link_at(kPort).name, "uplink");
    EXPECT_TRUE(knows(kPort));
}

TEST_F(ReaderTest, AnInterfaceThatIsGoneIsGoneEverywhere) {
    fill(kPort);
    fill(kOtherPort);
    EXPECT_TRUE(reader_.apply(link_gone(kPort)));
    EXPECT_FALSE(reader_.state().links.contains(kPort));
    EXPECT_FALSE(knows(kPort));
    EXPECT_TRUE(knows(kOtherPort));
    EXPECT_EQ(reader_.state().addresses.size(), 1U);
}

TEST_F(ReaderTest, ABridgeThatIsGoneLeavesItsPortsWithoutOne) {
    fill(kPort);
    EXPECT_TRUE(reader_.apply(address({kBridge, kBridge, kMac, NUD_PERMANENT})));
    EXPECT_TRUE(reader_.apply(link_gone(kBridge)));
    EXPECT_TRUE(reader_.state().addresses.empty());
    EXPECT_TRUE(reader_.state().groups.empty());
    EXPECT_TRUE(reader_.state().router_ports.empty());
    EXPECT_EQ(link_at(kPort).master, 0);
    EXPECT_FALSE(link_at(kPort).port.has_value());
}

TEST_F(ReaderTest, APortThatLeavesItsBridgeStaysAnInterface) {
    reader_.apply(member(kPort, kBridge, octet(IFLA_BRPORT_STATE, 3), vlan(7)));
    fill(kPort);
    EXPECT_TRUE(reader_.apply(member_gone(kPort, kBridge)));
    EXPECT_EQ(link_at(kPort).master, 0);
    EXPECT_FALSE(link_at(kPort).port.has_value());
    EXPECT_TRUE(link_at(kPort).vlans.empty());
    EXPECT_FALSE(knows(kPort));
    EXPECT_FALSE(reader_.apply(link(kPort, "swp1", [](MessageWriter &writer) {
        put_nested(writer, IFLA_LINKINFO, [](MessageWriter &info) { info.put_text(IFLA_INFO_KIND, "tun"); });
    })));
}

TEST_F(ReaderTest, APortThatEntersAnotherBridgeIsForgottenInTheOldOne) {
    for (const Bytes &news : {port(kPort, "swp1", kOtherBridge), member(kPort, kBridge, octet(IFLA_BRPORT_STATE, 3))}) {
        fill(kPort);
        EXPECT_TRUE(reader_.apply(news));
        EXPECT_FALSE(knows(kPort));
    }
    EXPECT_EQ(link_at(kPort).master, kBridge);
}

TEST_F(ReaderTest, ABridgesOwnReportChangesAPort) {
    EXPECT_TRUE(reader_.apply(member(
        kPort, kBridge,
        [](MessageWriter &writer) {
            writer.put_number(IFLA_BRPORT_STATE, uint8_t{BR_STATE_LEARNING});
            writer.put_number(IFLA_BRPORT_ISOLATED, uint8_t{1});
        },
        vlan(5, BRIDGE_VLAN_INFO_PVID))));
    EXPECT_EQ(link_at(kPort).port->state, PortState::kLearning);
    EXPECT_TRUE(link_at(kPort).port->isolated);
    EXPECT_EQ(link_at(kPort).vlans, (std::vector<BridgeVlan>{{5, true, false}}));
    EXPECT_EQ(link_at(kPort).name, "swp1");

    EXPECT_TRUE(reader_.apply(member(kPort, kBridge, octet(IFLA_BRPORT_STATE, BR_STATE_LEARNING)))) << "the VLAN went";
    EXPECT_TRUE(link_at(kPort).vlans.empty());
}

TEST_F(ReaderTest, AReportWithoutSettingsKeepsThem) {
    const std::optional<BridgePort> before = link_at(kPort).port;
    EXPECT_FALSE(reader_.apply(member(kPort, kBridge, {})));
    // As older kernels have it: the state alone, and no attribute.
    EXPECT_FALSE(reader_.apply(message(RTM_NEWLINK, link_info(kPort, 0, AF_BRIDGE), [](MessageWriter &writer) {
        writer.put_number(IFLA_MASTER, kBridge);
        writer.put_number(IFLA_PROTINFO, uint8_t{BR_STATE_BLOCKING});
    })));
    EXPECT_EQ(link_at(kPort).port, before);
}

TEST_F(ReaderTest, VlansOfTheBridgeItself) {
    EXPECT_TRUE(reader_.apply(member(kBridge, kBridge, {}, vlan(5))));
    EXPECT_EQ(link_at(kBridge).vlans.size(), 1U);
    EXPECT_EQ(link_at(kBridge).master, 0);
    EXPECT_FALSE(reader_.apply(bridge(kBridge, "br100"))) << "another message says nothing of VLANs";
    EXPECT_EQ(link_at(kBridge).vlans.size(), 1U);
}

TEST_F(ReaderTest, MessagesOfOtherFamiliesAndUnknownPortsAreIgnored) {
    const KernelState before = reader_.state();
    EXPECT_FALSE(reader_.apply(message(RTM_NEWLINK, link_info(kPort, 0, AF_INET6),
                                       [](MessageWriter &writer) { writer.put_text(IFLA_IFNAME, "other"); })));
    EXPECT_FALSE(reader_.apply(message(RTM_DELLINK, link_info(kPort, 0, AF_INET6))));
    EXPECT_FALSE(reader_.apply(member(77, kBridge, octet(IFLA_BRPORT_STATE, 3))));
    EXPECT_FALSE(reader_.apply(member_gone(77, kBridge)));
    EXPECT_FALSE(reader_.apply(message(RTM_NEWADDR, link_info(kPort))));
    EXPECT_EQ(reader_.state(), before);
}

TEST_F(ReaderTest, EachKindOfAddress) {
    const auto kind = [this](uint16_t state, uint8_t flags) {
        reader_.apply(address({kPort, kBridge, kMac, state, flags}));
        return reader_.state().addresses.at({kBridge, 0, kMac}).kind;
    };
    EXPECT_EQ(kind(NUD_REACHABLE, 0), Address::Kind::kLearned);
    EXPECT_EQ(kind(NUD_STALE, 0), Address::Kind::kLearned);
    EXPECT_EQ(kind(NUD_REACHABLE, NTF_EXT_LEARNED), Address::Kind::kHardware);
    EXPECT_EQ(kind(NUD_NOARP, 0), Address::Kind::kStatic);
    EXPECT_EQ(kind(NUD_PERMANENT, 0), Address::Kind::kLocal);
}

TEST_F(ReaderTest, AnAddressMovesToAnotherPort) {
    EXPECT_TRUE(reader_.apply(address({kPort, kBridge, kMac})));
    EXPECT_TRUE(reader_.apply(address({kOtherPort, kBridge, kMac})));
    EXPECT_EQ(reader_.state().addresses.at({kBridge, 0, kMac}).interface, kOtherPort);
    EXPECT_TRUE(reader_.apply(address({kOtherPort, kBridge, kMac}, RTM_DELNEIGH)));
    EXPECT_TRUE(reader_.state().addresses.empty());
}

TEST_F(ReaderTest, AnAddressIsKnownByItsVlanAndBridge) {
    EXPECT_TRUE(reader_.apply(address({kPort, kBridge, kMac, NUD_REACHABLE, 0, 5})));
    EXPECT_TRUE(reader_.apply(address({kPort, kBridge, kMac, NUD_REACHABLE, 0, 6})));
    EXPECT_TRUE(reader_.apply(address({kPort, kOtherBridge, kMac, NUD_REACHABLE, 0, 6})));
    EXPECT_TRUE(reader_.apply(address({kPort, kBridge, kMac, NUD_REACHABLE, 0, 6}, RTM_DELNEIGH)));
    EXPECT_TRUE(reader_.state().addresses.contains({kBridge, 5, kMac}));
    EXPECT_TRUE(reader_.state().addresses.contains({kOtherBridge, 6, kMac}));
}

TEST_F(ReaderTest, AddressesThatAreNoneOfABridge) {
    EXPECT_FALSE(reader_.apply(address({kPort, kBridge, kMac, NUD_PERMANENT, NTF_SELF}))) << "a driver's filter";
    EXPECT_FALSE(reader_.apply(address({kPort, 0, kMac})));
    EXPECT_FALSE(reader_.apply(address({kPort, -1, kMac})));
    EXPECT_FALSE(reader_.apply(address({0, kBridge, kMac})));
    EXPECT_FALSE(reader_.apply(address({kPort, kBridge, kMac, NUD_REACHABLE, 0, 4096})));
    ndmsg header{};
    header.ndm_family = AF_BRIDGE;
    header.ndm_ifindex = kPort;
    EXPECT_FALSE(reader_.apply(message(RTM_NEWNEIGH, header, [](MessageWriter &writer) {
        writer.put_number(NDA_MASTER, kBridge);
        writer.put(NDA_LLADDR, Bytes(5));
    })));
    header.ndm_family = AF_INET;
    EXPECT_FALSE(reader_.apply(message(RTM_NEWNEIGH, header, [](MessageWriter &writer) {
        writer.put_number(NDA_MASTER, kBridge);
        writer.put(NDA_LLADDR, kMac);
    })));
    EXPECT_TRUE(reader_.state().addresses.empty());
}

TEST_F(ReaderTest, CountsRemovals) {
    EXPECT_EQ(reader_.removals(), 0U);
    reader_.apply(address({kPort, kBridge, kMac}, RTM_DELNEIGH) + group({ipv4_group(kBridge, 1), kPort}, RTM_DELMDB) +
                  member_gone(kPort, kBridge) + link_gone(kPort));
    EXPECT_EQ(reader_.removals(), 4U);
}

TEST_F(ReaderTest, GroupsAreStaleWhenSnoopingBeginsOrEnds) {
    EXPECT_FALSE(reader_.is_stale());
    reader_.apply(bridge(kBridge, "br100", octet(IFLA_BR_TOPOLOGY_CHANGE, 1)));
    EXPECT_FALSE(reader_.is_stale());
    reader_.apply(bridge(kBridge, "br100", octet(IFLA_BR_MCAST_SNOOPING, 1)));
    EXPECT_TRUE(reader_.is_stale());
}

TEST_F(ReaderTest, RefreshTakesOverOnlyWhatIsNotAnnounced) {
    Reader newer;
    newer.apply(bridge(kBridge, "renamed",
                       [](MessageWriter &writer) {
                           writer.put_number(IFLA_BR_TOPOLOGY_CHANGE, uint8_t{1});
                           writer.put_number(IFLA_BR_AGEING_TIME, uint32_t{100});
                           const Nested state{writer, IFLA_BR_MCAST_QUERIER_STATE};
                           writer.put_number(BRIDGE_QUERIER_IP_OTHER_TIMER, uint64_t{7});
                       }) +
                bridge(77, "unknown"));
    EXPECT_TRUE(reader_.refresh_bridges(newer.state()));
    EXPECT_FALSE(reader_.refresh_bridges(newer.state()));
    EXPECT_TRUE(link_at(kBridge).bridge->topology_change);
    EXPECT_TRUE(link_at(kBridge).bridge->other_querier);
    EXPECT_FALSE(link_at(kBridge).bridge->other_mld_querier);
    EXPECT_EQ(link_at(kBridge).bridge->ageing_seconds, 300U);
    EXPECT_EQ(link_at(kBridge).name, "br100");
    EXPECT_FALSE(reader_.state().links.contains(77));
}

}  // namespace reader_test
}  // namespace switchd
