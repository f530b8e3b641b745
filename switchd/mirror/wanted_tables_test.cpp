// What the chip should have: addresses, multicast groups, and what is set for all VLANs.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <linux/if_ether.h>

#include <algorithm>

#include "switchd/mirror/testing/kernel_builder.h"
#include "switchd/mirror/wanted.h"

namespace switchd {
namespace wanted_tables_test {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Pair;
using testing::SizeIs;

constexpr Bridge kSnoops{.multicast_snooping = true, .querier = true};

class WantedTables : public testing::Test {
  protected:
    Wanted wanted() const { return wanted_of(k.kernel, k.plan); }

    void address(int bridge, Mac mac, int interface, Address::Kind kind) {
        k.kernel.addresses[{bridge, 0, mac}] = {interface, kind};
    }
    void group(int bridge, std::initializer_list<uint8_t> ipv4, std::set<int> interfaces) {
        GroupKey key{bridge, 0, ETH_P_IP, {}};
        std::copy(ipv4.begin(), ipv4.end(), key.address.begin());
        k.kernel.groups[key] = std::move(interfaces);
    }

    test::KernelBuilder k;
    int br7_ = k.bridge("br7", kSnoops);
    int swp1_ = k.port({1, 0}, br7_);
    int swp2_ = k.port({2, 7}, br7_);
    int other_ = k.other("veth0", br7_);
};

const Mac kStation = test::mac_number(0xABCD);

TEST_F(WantedTables, TheBridgesOwnAddressIsBehindTheCpu) {
    EXPECT_THAT(wanted().state.addresses, ElementsAre(Pair(VlanMac{7, k[br7_].mac}, kCpuIntf)));
    address(br7_, kStation, br7_, Address::Kind::kLocal);
    EXPECT_EQ(wanted().state.addresses.at({7, kStation}), kCpuIntf);
    k[br7_].mac = {};
    EXPECT_THAT(wanted().state.addresses, SizeIs(1));
}

TEST_F(WantedTables, StaticAddressesAreBehindTheirPort) {
    address(br7_, kStation, swp2_, Address::Kind::kStatic);
    EXPECT_EQ(wanted().state.addresses.at({7, kStation}), 2U);
    address(br7_, kStation, other_, Address::Kind::kStatic);
    EXPECT_EQ(wanted().state.addresses.at({7, kStation}), kCpuIntf) << "the kernel forwards to it";
    for (const auto kind : {Address::Kind::kLearned, Address::Kind::kHardware, Address::Kind::kLocal}) {
        address(br7_, kStation, swp2_, kind);
        EXPECT_THAT(wanted().state.addresses, SizeIs(1));
    }
    address(br7_, {1, 0, 0x5E, 1, 1, 1}, swp2_, Address::Kind::kStatic);
    k.kernel.addresses[{br7_, 7, kStation}] = {swp2_, Address::Kind::kStatic};
    k.kernel.addresses[{999, 0, kStation}] = {swp2_, Address::Kind::kStatic};
    EXPECT_THAT(wanted().state.addresses, SizeIs(1));
}

TEST_F(WantedTables, StaticAddressesOfAGroup) {
    k.plan.groups[ADP_AGG_INTF(2)] = set_of(8) | set_of(9);
    const int agg2 = k.port({ADP_AGG_INTF(2), 7}, br7_);
    address(br7_, kStation, agg2, Address::Kind::kStatic);
    EXPECT_EQ(wanted().state.addresses.at({7, kStation}), ADP_AGG_INTF(2));
}

TEST_F(WantedTables, GroupsHaveTheirPortsAndThoseOfRouters) {
    const int swp3 = k.port({3, 0}, br7_);
    group(br7_, {239, 1, 2, 3}, {swp2_});
    const VlanMac key{7, {0x01, 0, 0x5E, 1, 2, 3}};
    EXPECT_THAT(wanted().state.groups, ElementsAre(Pair(key, set_of(2))));
    group(br7_, {238, 129, 2, 3}, {br7_});
    EXPECT_THAT(wanted().state.groups, ElementsAre(Pair(key, kCpuAlone | set_of(2)))) << "the same address";
    k.kernel.router_ports[br7_] = {swp1_};
    k[swp3].port->multicast_router = 2;
    EXPECT_THAT(wanted().state.groups, ElementsAre(Pair(key, kCpuAlone | set_of(1) | set_of(2) | set_of(3))));
    group(br7_, {239, 1, 2, 4}, {other_});
    EXPECT_EQ(wanted().state.groups.at({7, {0x01, 0, 0x5E, 1, 2, 4}}), kCpuAlone | set_of(1) | set_of(3));
}

TEST_F(WantedTables, GroupsThatAreAlwaysFloodedNeedNoEntry) {
    group(br7_, {224, 0, 0, 5}, {swp2_});
    group(br7_, {239, 128, 0, 5}, {swp2_});
    EXPECT_THAT(wanted().state.groups, IsEmpty());
}

TEST_F(WantedTables, GroupsAreTrustedWhereSomebodyAsksForThem) {
    group(br7_, {239, 1, 2, 3}, {swp2_});
    const auto trusts = [&] {
        const SwitchState state = wanted().state;
        const bool is_known = !state.groups.empty();
        EXPECT_EQ(state.unknown_ipv4_groups, is_known ? ADP_MCAST_MISS_TO_CPU : ADP_MCAST_MISS_FLOOD);
        return is_known;
    };
    EXPECT_TRUE(trusts());
    k.plan.new_queriers = {br7_};
    EXPECT_FALSE(trusts());
    k[br7_].bridge->other_querier = true;
    EXPECT_TRUE(trusts());
    EXPECT_EQ(wanted().state.unknown_ipv6_groups, ADP_MCAST_MISS_FLOOD) << "nobody asks for those";
    k[br7_].bridge->querier = false;
    EXPECT_TRUE(trusts());
    k[br7_].bridge->other_querier = false;
    EXPECT_FALSE(trusts());
    k[br7_].bridge = Bridge{.querier = true, .other_querier = true};
    EXPECT_FALSE(trusts());
    EXPECT_THAT(wanted().remarks, IsEmpty());
}

TEST_F(WantedTables, GroupsThatAreNotIpNeedNoQuerier) {
    k[br7_].bridge->querier = false;
    GroupKey key{br7_, 0, 0, {0x01, 0x0C, 1, 2, 3, 4}};
    k.kernel.groups[key] = {swp1_};
    EXPECT_THAT(wanted().state.groups, ElementsAre(Pair(VlanMac{7, mac_of(key)}, set_of(1))));
}

TEST_F(WantedTables, SnoopingMessagesGoToTheCpuIfABridgeSnoops) {
    EXPECT_TRUE(wanted().state.igmp_to_cpu);
    EXPECT_TRUE(wanted().state.mld_to_cpu);
    k[br7_].bridge = Bridge{};
    EXPECT_FALSE(wanted().state.igmp_to_cpu);
    EXPECT_FALSE(wanted().state.mld_to_cpu);
}

TEST_F(WantedTables, UnknownGroupsAreFloodedIfABridgeNeedsIt) {
    EXPECT_EQ(wanted().state.unknown_ipv4_groups, ADP_MCAST_MISS_TO_CPU);
    k.port({5, 0}, k.bridge("br8"));
    const Wanted all = wanted();
    EXPECT_EQ(all.state.unknown_ipv4_groups, ADP_MCAST_MISS_FLOOD);
    ASSERT_THAT(all.remarks, SizeIs(2));
    EXPECT_EQ(all.remarks[0].subject, "br7");
    EXPECT_THAT(all.remarks[0].sentence, HasSubstr("floods unknown IPv4 multicast: br8 needs it"));
    EXPECT_THAT(all.remarks[1].sentence, HasSubstr("floods unknown IPv6"));
}

TEST_F(WantedTables, TheShortestAgeingTimeIsEverybodys) {
    k[br7_].bridge->ageing_seconds = 100;
    EXPECT_EQ(wanted().state.ageing_seconds, 100U);
    const int br8 = k.bridge("br8", kSnoops);
    k.port({5, 0}, br8);
    k[br8].bridge->ageing_seconds = 40;
    const Wanted all = wanted();
    EXPECT_EQ(all.state.ageing_seconds, 40U);
    ASSERT_THAT(all.remarks, SizeIs(1));
    EXPECT_EQ(all.remarks[0].subject, "br7");
    EXPECT_THAT(all.remarks[0].sentence, HasSubstr("after 40 s as br8 does"));
    k[br8].bridge->ageing_seconds = 0;
    EXPECT_EQ(wanted().state.ageing_seconds, 1U) << "0 turns ageing off in the chip";
}

}  // namespace wanted_tables_test
}  // namespace switchd
