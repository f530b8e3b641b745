// Which VLANs the bridges and tagged interfaces have in the chip.
#include "switchd/mirror/testing/wanted_fixture.h"

namespace switchd {
namespace bridge_vids_test {

using testing::Contains;
using testing::ElementsAre;
using testing::Field;
using testing::HasSubstr;
using testing::IsEmpty;

using test::kForwards;
using test::ports;

class BridgeVids : public test::WantedTest {};

TEST_F(BridgeVids, TheVlanIsConfiguredOrTheTagOrInTheName) {
    k.plan.bridge_vids["br100"] = 7;
    const int configured = k.bridge("br100");
    k.port({1, 0}, configured);
    const int by_tag = k.bridge("lan5");
    k.port({2, 0}, by_tag);
    k.port({3, 200}, by_tag);
    const int by_name = k.bridge("lan9");
    k.port({4, 0}, by_name);
    const int any = k.bridge("office");
    k.port({5, 0}, any);
    const Wanted all = wanted();
    EXPECT_EQ(all.bridges.at(configured), 7);
    EXPECT_EQ(all.bridges.at(by_tag), 200);
    EXPECT_EQ(all.bridges.at(by_name), 9);
    EXPECT_GT(all.bridges.at(any), 4034);
    EXPECT_LE(all.bridges.at(any), 4094);
    EXPECT_EQ(all.state.ports.at(5).pvid, all.bridges.at(any));
    EXPECT_THAT(all.remarks, IsEmpty());
}

TEST_F(BridgeVids, NamesWithoutAVlanIdGetAnyVlan) {
    for (const char *name : {"br0", "br4095", "br99999999999999999999", "br4003", "br4027"}) {
        test::KernelBuilder other;
        const int bridge = other.bridge(name);
        other.port({1, 0}, bridge);
        EXPECT_GT(wanted_of(other.kernel, other.plan).bridges.at(bridge), 4034) << name;
    }
    const std::pair<const char *, int> named[] = {{"br1", 1}, {"br4094", 4094}, {"br0042", 42}};
    for (const auto &[name, vid] : named) {
        test::KernelBuilder other;
        const int bridge = other.bridge(name);
        other.port({1, 0}, bridge);
        EXPECT_EQ(wanted_of(other.kernel, other.plan).bridges.at(bridge), vid) << name;
    }
}

TEST_F(BridgeVids, AnyVlanStaysWhenOtherBridgesCome) {
    const int first = k.bridge("a");
    k.port({1, 0}, first);
    const int second = k.bridge("b");
    k.port({2, 0}, second);
    const Wanted before = wanted();
    EXPECT_NE(before.bridges.at(first), before.bridges.at(second));
    k[first].name = "renamed";
    k.links.erase(first);
    EXPECT_EQ(wanted().bridges.at(second), before.bridges.at(second));
}

TEST_F(BridgeVids, VlansRunOut) {
    for (uint32_t i = 0; i < 80; ++i) {
        k.port({1 + i % ADP_USER_PORTS, 0}, k.bridge("office" + std::string(i, 'x')));
    }
    const Wanted all = wanted();
    EXPECT_EQ(all.bridges.size(), 4094U - 4034U);
    EXPECT_THAT(all.remarks, Contains(Field(&Remark::sentence, HasSubstr("no VLAN is free"))));
}

TEST_F(BridgeVids, AVlanServesOneBridge) {
    k.plan.bridge_vids = {{"a", 5}, {"b", 5}, {"c", 4001}, {"d", 4095}, {"e", 4034}};
    for (const char *name : {"a", "b", "c", "d", "e"}) {
        k.port({static_cast<uint32_t>(name[0] - 'a' + 1), 0}, k.bridge(name));
    }
    EXPECT_EQ(wanted().bridges.size(), 1U);
    EXPECT_THAT(remarks_on("b"), ElementsAre("is left to the kernel: VLAN 5 is that of a"));
    EXPECT_THAT(remarks_on("c"), ElementsAre("is left to the kernel: VLAN 4001 is kept for swp1"));
    EXPECT_THAT(remarks_on("e"), ElementsAre("is left to the kernel: VLAN 4034 is kept for agg8"));
    EXPECT_THAT(remarks_on("d"), ElementsAre("is left to the kernel: there is no VLAN 4095"));
    EXPECT_EQ(vlan(4002).members, ports({0, 2})) << "the kernel bridges its frames";
    EXPECT_EQ(port(2).pvid, 4002);
}

TEST_F(BridgeVids, OtherTagsThanTheBridgesAreNotInHardware) {
    const int bridge = k.bridge("br100");
    k.port({1, 100}, bridge);
    k.port({2, 200}, bridge);
    k.port({3, 0}, bridge);
    k.port({3, 100}, bridge);
    EXPECT_EQ(vlan(100), (VlanState{ports({0, 1, 3}), ports({3}), {}}));
    EXPECT_THAT(remarks_on("swp2.200"), ElementsAre("is left to the kernel: br100 stands for VLAN 100"));
    EXPECT_EQ(vlan(200), (VlanState{ports({0, 2}), 0, {}})) << "the kernel bridges it";
    EXPECT_THAT(remarks_on("swp3.100"), ElementsAre("gets no frames: VLAN 100 is that of br100"));
}

TEST_F(BridgeVids, ATaggedInterfaceAloneHasItsVlanUnlessSomebodyElseHas) {
    k.port({1, 0}, k.bridge("br100"));
    const int swp3 = k.port({3, 300});
    k.port({4, 300});
    k.port({5, 100});
    EXPECT_EQ(vlan(300), (VlanState{ports({0, 3}), 0, {}}));
    EXPECT_THAT(remarks_on("swp4.300"), ElementsAre("gets no frames: VLAN 300 is that of swp3.300"));
    EXPECT_THAT(remarks_on("swp5.100"), ElementsAre("gets no frames: VLAN 100 is that of br100"));
    EXPECT_EQ(vlan(100).members, ports({0, 1}));
    k[swp3].up = false;
    EXPECT_THAT(remarks_on("swp4.300"), IsEmpty());
    EXPECT_EQ(vlan(300).members, ports({0, 4}));
}

TEST_F(BridgeVids, VlanDevicesOfTheKernelAreTaggedInterfaces) {
    const int swp3 = k.port({3, 0});
    const int bridge = k.bridge("br0");
    const int device = k.other("swp3.100", bridge);
    k[device].parent = swp3;
    k[device].vid = 100;
    EXPECT_EQ(vlan(100).members, ports({0, 3}));
    EXPECT_EQ(wanted().places.at({100, 3}).interface, device);
    const int upper = k.other("stacked", bridge);
    k[upper].parent = device;
    k[upper].vid = 5;
    EXPECT_EQ(wanted().places.size(), 1U);
}

}  // namespace bridge_vids_test
}  // namespace switchd
