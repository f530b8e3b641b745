// Group membership messages and the local control groups: trapped or copied while they are switched on.
#include "vdevice/chip/tables/snooping.h"

#include <gtest/gtest.h>

#include <set>

#include "vdevice/chip/testing/chip_fixture.h"
#include "vdevice/chip/testing/packet_builder.h"

namespace vdevice::chip {
namespace snooping_test {

using namespace test;

constexpr uint8_t kIgmp = 2;
constexpr uint8_t kUdp = 17;
constexpr uint8_t kIcmpv6 = 58;
constexpr size_t kFlooded = 3;
const Octets kAllHosts = {0x01, 0, 0x5E, 0, 0, 1};
const Octets kAllHosts6 = {0x33, 0x33, 0, 0, 0, 1};

const Octets kQuery = test::ipv4({.protocol = kIgmp, .destination = {224, 0, 0, 1}}, {0x11, 100, 0, 0, 0, 0, 0, 0});
const Octets kReport = test::ipv4({.protocol = kIgmp, .destination = {239, 1, 2, 3}, .options = {0x94, 4, 0, 0}},
                                  {0x16, 0, 0, 0, 239, 1, 2, 3});
const Octets kControl = test::ipv4({.protocol = kUdp, .destination = {224, 0, 0, 5}}, Octets(20, 0));

Octets mld(uint8_t type) {
    return test::ipv6({0}, router_alert(kIcmpv6) + Octets{type, 0, 0, 0} + Octets(20, 0));
}

class SnoopingTest : public test::ChipTest {
  protected:
    size_t copies(const Octets &packet, const Octets &destination = kAllHosts) {
        return send(kA, destination + station(1) + packet).size();
    }
    std::set<int> ways(const Octets &packet) {
        std::set<int> ports;
        for (const Sent &sent : send(kA, kAllHosts + station(1) + packet)) {
            ports.insert(sent.first);
        }
        return ports;
    }
};

TEST_F(SnoopingTest, IgmpGoesToTheCpuOnly) {
    chip_.snooping().igmp = true;
    for (const Octets &packet : {kQuery, kReport}) {
        EXPECT_EQ(
            send(kA, kAllHosts + station(1) + packet),
            (std::vector<Sent>{{kCpu, kAllHosts + station(1) + test::receive_tag(kA) + test::vlan_tag(1) + packet}}));
    }
    EXPECT_EQ(copies(kControl), kFlooded);
    EXPECT_EQ(copies(mld(131), kAllHosts6), kFlooded);
    EXPECT_EQ(copies(test::ipv6({kIgmp}, Octets(20, 0)), kAllHosts6), kFlooded) << "of version 4 only";
    chip_.snooping().igmp = false;
    EXPECT_EQ(copies(kQuery), kFlooded);
}

TEST_F(SnoopingTest, MldGoesToTheCpuOnly) {
    chip_.snooping().mld = true;
    for (const uint8_t type : Octets{130, 131, 132, 143}) {
        EXPECT_EQ(copies(mld(type), kAllHosts6), 1U) << unsigned{type};
    }
    for (const uint8_t type : Octets{128, 129, 133, 135, 142}) {
        EXPECT_EQ(copies(mld(type), kAllHosts6), kFlooded) << unsigned{type};
    }
    EXPECT_EQ(copies(test::ipv6({kIcmpv6}, Octets{131, 0, 0, 0}), kAllHosts6), kFlooded) << "no hop-by-hop header";
    EXPECT_EQ(copies(test::ipv6({0}, router_alert(kIcmpv6)), kAllHosts6), kFlooded) << "nothing behind the header";
    EXPECT_EQ(copies(test::ipv6({0}, router_alert(kUdp) + Octets(20, 131)), kAllHosts6), kFlooded);
    EXPECT_EQ(copies(kQuery), kFlooded);
}

TEST_F(SnoopingTest, ControlGroupsReachTheCpuInAnyCase) {
    ASSERT_EQ(chip_.set_egress(kA, PortSet::of(kB)), Status::kOk);
    EXPECT_EQ(ways(kControl), std::set<int>{kB});
    chip_.snooping().reserved_multicast = true;
    EXPECT_EQ(ways(kControl), (std::set<int>{kCpu, kB}));
    const Octets next_block = test::ipv4({.protocol = kUdp, .destination = {224, 0, 1, 5}}, Octets(20, 0));
    EXPECT_EQ(ways(next_block), std::set<int>{kB});
    ASSERT_EQ(chip_.set_egress(kA, Switch::all_ports()), Status::kOk);
    EXPECT_EQ(ways(kControl), (std::set<int>{kCpu, kB, kC})) << "one copy, not two";
    chip_.set_link(kCpu, false);
    EXPECT_EQ(ways(kControl), (std::set<int>{kB, kC}));
}

}  // namespace snooping_test
}  // namespace vdevice::chip
