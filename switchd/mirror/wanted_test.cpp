// What the chip should have: members, spanning-tree states and settings of ports.
#include "switchd/mirror/testing/wanted_fixture.h"

namespace switchd {
namespace wanted_test {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Pair;
using testing::UnorderedElementsAre;

using test::kForwards;
using test::ports;

class WantedOf : public test::WantedTest {};

TEST_F(WantedOf, NothingIsPortsThatReachTheCpuAlone) {
    const Wanted all = wanted();
    EXPECT_EQ(all.state.vlans.size(), ADP_USER_PORTS);
    EXPECT_EQ(vlan(4003), (VlanState{ports({0, 3}), ports({3}), {}}));
    EXPECT_EQ(port(3), (PortSettings{4003, Learning::kOn, all_up_to(26)}));
    EXPECT_EQ(all.state.unknown_ipv4_groups, ADP_MCAST_MISS_FLOOD);
    EXPECT_EQ(all.state.unknown_ipv6_groups, ADP_MCAST_MISS_FLOOD);
    EXPECT_EQ(all.state.ageing_seconds, 300U);
    EXPECT_FALSE(all.state.igmp_to_cpu);
    EXPECT_THAT(all.remarks, IsEmpty());
    EXPECT_THAT(all.places, IsEmpty());
}

TEST_F(WantedOf, ABridgeIsAVlan) {
    const int bridge = k.bridge("br100");
    const int swp1 = k.port({1, 0}, bridge);
    const int tagged = k.port({3, 100}, bridge);
    EXPECT_EQ(vlan(100), (VlanState{ports({0, 1, 3}), ports({1}), {}}));
    EXPECT_EQ(port(1).pvid, 100);
    EXPECT_EQ(vlan(4001).members, ports({0})) << "it is there, and tells a chip that was set up before";
    EXPECT_EQ(port(3).pvid, 4003);
    EXPECT_EQ(vlan(4003).members, ports({0, 3}));
    EXPECT_THAT(wanted().bridges, ElementsAre(Pair(bridge, 100)));
    EXPECT_THAT(wanted().places, ElementsAre(Pair(VlanPort{100, 1}, BridgePlace{swp1, bridge, 0, true}),
                                             Pair(VlanPort{100, 3}, BridgePlace{tagged, bridge, 0, true})));
    EXPECT_THAT(wanted().remarks, IsEmpty());
}

TEST_F(WantedOf, AGroupIsAllItsPorts) {
    k.plan.groups[ADP_AGG_INTF(1)] = ports({5, 6});
    const int bridge = k.bridge("br100");
    const int agg1 = k.port({ADP_AGG_INTF(1), 0}, bridge, test::in_state(PortState::kBlocking));
    k.port({5, 0}, k.bridge("br200"));
    EXPECT_EQ(vlan(100).members, ports({0, 5, 6}));
    EXPECT_EQ(vlan(100).untagged, ports({5, 6}));
    EXPECT_EQ(vlan(100).not_forwarding, (TreeStates{{5, ADP_STG_STATE_BLOCKING}, {6, ADP_STG_STATE_BLOCKING}}));
    EXPECT_EQ(port(6).pvid, 100);
    EXPECT_EQ(wanted().places.at({100, ADP_AGG_INTF(1)}).interface, agg1);
    EXPECT_THAT(remarks_on("swp5"), ElementsAre("is a port of agg1, whose bridge counts"));
    EXPECT_EQ(port(5).may_send_to, all_up_to(26) & ~ports({6}));
    EXPECT_EQ(vlan(4027).members, ports({0}));
    k.links.erase(agg1);
    EXPECT_EQ(vlan(4027), (VlanState{ports({0, 5, 6}), ports({5, 6}), {}}));
    EXPECT_EQ(port(5).pvid, 4027);
    EXPECT_EQ(port(6).pvid, 4027);
    EXPECT_EQ(vlan(4006).members, ports({0}));
}

TEST_F(WantedOf, SpanningTreeStatesAreTheKernels) {
    const int bridge = k.bridge("br7", {.stp = true});
    k.port({1, 0}, bridge, test::in_state(PortState::kForwarding));
    k.port({2, 0}, bridge, test::in_state(PortState::kLearning));
    k.port({3, 0}, bridge, test::in_state(PortState::kListening));
    k.port({4, 7}, bridge, test::in_state(PortState::kBlocking));
    k.port({5, 7}, bridge, test::in_state(PortState::kDisabled));
    EXPECT_EQ(vlan(7).members, ports({0, 1, 2, 3, 4, 5}));
    EXPECT_EQ(vlan(7).not_forwarding, (TreeStates{{2, ADP_STG_STATE_LEARNING},
                                                  {3, ADP_STG_STATE_LISTENING},
                                                  {4, ADP_STG_STATE_BLOCKING},
                                                  {5, ADP_STG_STATE_BLOCKING}}));
    EXPECT_TRUE(wanted().places.at({7, 1}).forwards);
    EXPECT_FALSE(wanted().places.at({7, 2}).forwards);
}

TEST_F(WantedOf, PortsThatAreDownAreNoMembers) {
    const int bridge = k.bridge("br7", {.stp = true});
    const int swp1 = k.port({1, 0}, bridge);
    k.port({2, 7}, bridge);
    k[swp1].up = false;
    EXPECT_EQ(vlan(7), (VlanState{ports({0, 2}), 0, {}}));
    EXPECT_EQ(port(1).pvid, 7) << "its frames are nobody's";
    k[bridge].up = false;
    EXPECT_EQ(vlan(7), (VlanState{ports({0}), 0, {}}));
}

TEST_F(WantedOf, WithoutSpanningTreeAPortWithoutCarrierMayForward) {
    const int bridge = k.bridge("br7");
    const int swp1 = k.port({1, 0}, bridge, test::in_state(PortState::kDisabled));
    k.port({2, 0}, bridge, test::in_state(PortState::kBlocking));
    EXPECT_EQ(vlan(7).members, ports({0, 2})) << "disabled by hand";
    EXPECT_EQ(vlan(7).not_forwarding, (TreeStates{{2, ADP_STG_STATE_BLOCKING}})) << "blocked by hand";
    k[swp1].carrier = false;
    EXPECT_EQ(vlan(7).members, ports({0, 1, 2}));
    EXPECT_EQ(vlan(7).not_forwarding, (TreeStates{{2, ADP_STG_STATE_BLOCKING}}));
    k[swp1].port.reset();
    k[swp1].carrier = true;
    EXPECT_EQ(vlan(7).members, ports({0, 2})) << "nothing is known of it yet";
}

TEST_F(WantedOf, AVlanAwareBridgeHasTheVlansOfItsPorts) {
    const int bridge = k.bridge("br0", {.stp = true, .vlan_filtering = true});
    const int swp1 = k.port({1, 0}, bridge);
    const int swp2 = k.port({2, 0}, bridge, test::in_state(PortState::kBlocking));
    k[swp1].vlans = {{10, true, true}, {20, false, false}};
    k[swp2].vlans = {{20, false, true}, {4001, false, false}};
    k.port({3, 30}, bridge);
    k.port({4, 0}, k.bridge("br40"));
    EXPECT_EQ(vlan(40).not_forwarding, TreeStates{});
    EXPECT_EQ(vlan(10), (VlanState{ports({0, 1}), ports({1}), {{2, ADP_STG_STATE_BLOCKING}}}));
    EXPECT_EQ(vlan(20), (VlanState{ports({0, 1, 2}), ports({2}), {{2, ADP_STG_STATE_BLOCKING}}}));
    EXPECT_EQ(port(1).pvid, 10);
    EXPECT_EQ(port(2).pvid, 4002);
    EXPECT_EQ(vlan(4002).members, ports({0})) << "its untagged frames are nobody's";
    EXPECT_EQ(wanted().places.at({20, 2}), (BridgePlace{swp2, bridge, 20, false}));
    EXPECT_FALSE(wanted().bridges.contains(bridge));
    EXPECT_THAT(remarks_on("br0"), ElementsAre("gets no frames of a VLAN: VLAN 4001 is kept for swp1"));
    EXPECT_THAT(remarks_on("swp3.30"), ElementsAre(HasSubstr("is left to the kernel")));
    EXPECT_EQ(vlan(30).members, ports({0, 3}));
}

TEST_F(WantedOf, LearningIsThePorts) {
    BridgePort off = kForwards;
    off.learning = false;
    BridgePort locked = kForwards;
    locked.locked = true;
    const int br1 = k.bridge("br1");
    const int br2 = k.bridge("br2");
    k.port({1, 0}, br1, off);
    k.port({2, 0}, br1, off);
    k.port({2, 2}, br2);
    k.port({3, 0}, br1, locked);
    k.port({3, 2}, br2, off);
    EXPECT_EQ(port(1).learning, Learning::kOff);
    EXPECT_EQ(port(2).learning, Learning::kOff);
    EXPECT_EQ(port(3).learning, Learning::kClosed);
    EXPECT_EQ(port(4).learning, Learning::kOn);
    EXPECT_THAT(remarks_on("swp2"), IsEmpty());
    EXPECT_THAT(remarks_on("swp2.2"), ElementsAre(HasSubstr("has the learning of another interface")));
    EXPECT_THAT(remarks_on("swp3.2"), ElementsAre(HasSubstr("has the learning of another interface")));
}

TEST_F(WantedOf, IsolatedPortsDoNotReachEachOther) {
    BridgePort isolated = kForwards;
    isolated.isolated = true;
    const int br1 = k.bridge("br1");
    k.port({1, 0}, br1, isolated);
    k.port({2, 0}, br1, isolated);
    k.port({3, 0}, br1);
    EXPECT_EQ(port(1).may_send_to, all_up_to(26) & ~ports({2}));
    EXPECT_EQ(port(2).may_send_to, all_up_to(26) & ~ports({1}));
    EXPECT_EQ(port(3).may_send_to, all_up_to(26));
    EXPECT_THAT(wanted().remarks, IsEmpty());
    const int br2 = k.bridge("br2");
    k.port({1, 2}, br2, isolated);
    k.port({3, 2}, br2, isolated);
    EXPECT_THAT(remarks_on("br1"),
                ElementsAre(HasSubstr("do not reach each other, swp1, swp3: they are isolated in br2")));
    EXPECT_THAT(remarks_on("br2"), IsEmpty());
}

TEST_F(WantedOf, WhatTheChipCannotDoIsSaid) {
    BridgePort odd = kForwards;
    odd.unicast_flood = odd.multicast_flood = odd.broadcast_flood = false;
    odd.hairpin = true;
    k.port({1, 0}, k.bridge("br1"), odd);
    EXPECT_THAT(remarks_on("swp1"), UnorderedElementsAre(HasSubstr("unknown unicast"), HasSubstr("unknown multicast"),
                                                         HasSubstr("broadcast"), HasSubstr("hairpin")));
}

TEST_F(WantedOf, StrangeInterfacesAreIgnored) {
    k.other("eth0");
    k.other("veth1", k.bridge("docker0"));
    k.port({27, 0}, k.bridge("br27"));
    k.port({0, 0}, k.bridge("br28"));
    k.port({ADP_AGG_INTF(9), 0}, k.bridge("br29"));
    k[k.port({1, 0})].master = 9999;
    const Wanted all = wanted();
    EXPECT_EQ(all.state, wanted_of({}, {}).state);
    EXPECT_THAT(all.remarks, IsEmpty());
}

}  // namespace wanted_test
}  // namespace switchd
