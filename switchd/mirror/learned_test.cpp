// Addresses that the chip has learned, in the kernel, and flushes on both sides.
#include "switchd/mirror/learned.h"

#include <adp/adp.h>

#include "switchd/mirror/testing/switch_fixture.h"

namespace switchd {
namespace learned_test {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

constexpr size_t kAll = 10000;

class Learned : public test::SwitchTest {
  protected:
    Learned() { update(); }

    /** The kernel's news reach the chip and the addresses. */
    LearnedChanges update() {
        applier_.apply(wanted().state);
        return learned_.follow(k.kernel, wanted());
    }
    LearnedChanges walk() {
        const LearnedChanges changes = learned_.walk(kAll);
        for (const LearnedAddress &address : changes.removed) {
            k.kernel.addresses.erase({k[address.interface].master, address.vid, address.mac});
        }
        for (const LearnedAddress &address : changes.added) {
            k.kernel.addresses[{k[address.interface].master, address.vid, address.mac}] = {address.interface,
                                                                                           Address::Kind::kHardware};
        }
        return changes;
    }
    /** What the kernel is told is in its next news. */
    LearnedChanges walk_and_update() {
        LearnedChanges changes = walk();
        update();
        return changes;
    }
    bool is_known(uint64_t mac, uint16_t vid) const {
        return chip_->macs().find(vdevice::chip::Mac{mac}, vid) != nullptr;
    }
    static Mac mac_of(uint64_t number) { return test::mac_number(static_cast<uint32_t>(number)); }

    static constexpr uint64_t kPrefix = 0x020000000000;
    static constexpr uint64_t kMac = kPrefix + 77;
    static constexpr uint64_t kOther = kPrefix + 78;

    int br5_ = k.bridge("br5");
    int swp1_ = k.port({1, 0}, br5_);
    int swp2_ = k.port({2, 5}, br5_);
    vdevice::chip::Switch *chip_ = &chip.chip();
    Applier applier_{k.plan};
    LearnedAddresses learned_;
};

TEST_F(Learned, AreToldOnce) {
    EXPECT_EQ(walk(), LearnedChanges{});
    chip.learn(kMac, 5, 1);
    chip.learn(kOther, 5, 2);
    EXPECT_THAT(walk_and_update().added, testing::UnorderedElementsAre(LearnedAddress{swp1_, 0, mac_of(77)},
                                                                       LearnedAddress{swp2_, 0, mac_of(78)}));
    EXPECT_EQ(walk_and_update(), LearnedChanges{});
    EXPECT_EQ(walk_and_update(), LearnedChanges{});
}

TEST_F(Learned, OfPortsInNoBridgeAreNot) {
    chip.learn(kMac, 4003, 3);
    EXPECT_EQ(walk(), LearnedChanges{});
}

TEST_F(Learned, ThatMoveAreToldAtTheirNewPlace) {
    chip.learn(kMac, 5, 1);
    walk_and_update();
    chip.learn(kMac, 5, 2);
    EXPECT_EQ(walk_and_update(), (LearnedChanges{{{swp2_, 0, mac_of(77)}}, {}}));
    EXPECT_EQ(walk_and_update(), LearnedChanges{});
}

TEST_F(Learned, ThatTheChipForgetsAreRemovedAfterAWholePass) {
    chip.learn(kMac, 5, 1);
    walk_and_update();
    chip_->macs().remove(vdevice::chip::Mac{kMac}, 5);
    EXPECT_EQ(walk_and_update(), (LearnedChanges{{}, {{swp1_, 0, mac_of(77)}}}));
    EXPECT_EQ(walk_and_update(), LearnedChanges{});
}

TEST_F(Learned, ThatTheKernelKeepsAreRemovedAgain) {
    chip.learn(kMac, 5, 1);
    walk_and_update();
    chip_->macs().remove(vdevice::chip::Mac{kMac}, 5);
    const LearnedChanges removed{{}, {{swp1_, 0, mac_of(77)}}};
    int times = 0;
    for (int i = 0; i < 6; ++i) {
        times += learned_.walk(kAll) == removed ? 1 : 0;
        update();
    }
    EXPECT_GE(times, 2);
    EXPECT_LE(times, 3) << "it gets the time of a pass";
}

TEST_F(Learned, AreWalkedOverAFewAtATime) {
    constexpr uint64_t kStations = 100;
    for (uint64_t i = 0; i < kStations; ++i) {
        chip.learn(kPrefix + 1000 + i, 5, 1);
    }
    size_t told = 0;
    for (int i = 0; i < 9; ++i) {
        chip.take_count();
        const LearnedChanges changes = learned_.walk(10);
        EXPECT_EQ(chip.take_count(), 10U);
        EXPECT_THAT(changes.removed, IsEmpty());
        told += changes.added.size();
    }
    told += walk().added.size();
    EXPECT_EQ(told, kStations);
}

TEST_F(Learned, AWalkThatFailsRemovesNothing) {
    chip.learn(kMac, 5, 1);
    walk_and_update();
    chip.fail_every("user_netlink_mac_nextValidAddr_get");
    EXPECT_EQ(walk(), LearnedChanges{});
    chip.fail_every({});
    EXPECT_EQ(walk(), LearnedChanges{});
}

TEST_F(Learned, BehindAGroup) {
    ASSERT_EQ(adp_create_agg_group(ADP_AGG_INTF(1)), ADP_OK);
    const adp_intf_t members[] = {8, 9};
    ASSERT_EQ(adp_add_agg_member(ADP_AGG_INTF(1), 2, members), ADP_OK);
    k.plan.groups[ADP_AGG_INTF(1)] = set_of(8) | set_of(9);
    const int agg1 = k.port({ADP_AGG_INTF(1), 0}, br5_);
    update();
    chip.learn(kMac, 5, 9);
    EXPECT_THAT(walk().added, ElementsAre(LearnedAddress{agg1, 0, mac_of(77)}));
}

TEST_F(Learned, OfAVlanAwareBridgeHaveTheirVlan) {
    k[br5_].bridge->vlan_filtering = true;
    k[swp1_].vlans = {{6, true, true}};
    update();
    chip.learn(kMac, 6, 1);
    EXPECT_THAT(walk().added, ElementsAre(LearnedAddress{swp1_, 6, mac_of(77)}));
}

TEST_F(Learned, FlushedInTheKernelAreDeletedFromTheChip) {
    chip.learn(kMac, 5, 1);
    chip.learn(kOther, 5, 1);
    walk_and_update();
    k.kernel.addresses.erase({br5_, 0, mac_of(77)});
    update();
    EXPECT_FALSE(is_known(kMac, 5));
    EXPECT_TRUE(is_known(kOther, 5));
    k.kernel.addresses.clear();
    update();
    EXPECT_FALSE(is_known(kOther, 5));
    EXPECT_EQ(walk(), LearnedChanges{});
}

TEST_F(Learned, AreNotTakenAsFlushedBeforeTheKernelHasThem) {
    chip.learn(kMac, 5, 1);
    EXPECT_THAT(learned_.walk(kAll).added, SizeIs(1));
    update();
    EXPECT_TRUE(is_known(kMac, 5));
    EXPECT_THAT(walk_and_update().added, SizeIs(1)) << "the kernel has not taken it, so it is told again";
    EXPECT_EQ(walk_and_update(), LearnedChanges{});
}

TEST_F(Learned, ThatAPersonSetsBecomeStatic) {
    chip.learn(kMac, 5, 1);
    walk_and_update();
    k.kernel.addresses[{br5_, 0, mac_of(77)}] = {swp2_, Address::Kind::kStatic};
    update();
    EXPECT_TRUE(chip_->macs().find(vdevice::chip::Mac{kMac}, 5)->is_static);
    EXPECT_EQ(walk(), LearnedChanges{});
}

TEST_F(Learned, ThatTheKernelTakesOverAreToldAgain) {
    chip.learn(kMac, 5, 1);
    walk_and_update();
    k.kernel.addresses[{br5_, 0, mac_of(77)}] = {swp1_, Address::Kind::kLearned};
    update();
    EXPECT_TRUE(is_known(kMac, 5));
    EXPECT_THAT(walk().added, SizeIs(1));
}

TEST_F(Learned, BeforeARestartAreRemovedIfTheChipHasForgottenThem) {
    k.kernel.addresses[{br5_, 0, mac_of(77)}] = {swp1_, Address::Kind::kHardware};
    k.kernel.addresses[{br5_, 0, mac_of(78)}] = {swp1_, Address::Kind::kHardware};
    chip.learn(kMac, 5, 1);
    update();
    EXPECT_TRUE(is_known(kMac, 5));
    EXPECT_EQ(walk_and_update(), LearnedChanges{}) << "a pass may be over a part of the table only";
    EXPECT_EQ(walk_and_update(), (LearnedChanges{{}, {{swp1_, 0, mac_of(78)}}}));
}

TEST_F(Learned, OfAPortThatStopsForwardingAreForgotten) {
    chip.learn(kMac, 5, 1);
    chip.learn(kOther, 5, 2);
    walk_and_update();
    k[swp1_].port->state = PortState::kBlocking;
    EXPECT_EQ(update(), (LearnedChanges{{}, {{swp1_, 0, mac_of(77)}}}));
    EXPECT_FALSE(is_known(kMac, 5));
    EXPECT_TRUE(is_known(kOther, 5));
    EXPECT_EQ(update(), LearnedChanges{}) << "the kernel still has it, and was told";
    EXPECT_TRUE(is_known(kOther, 5));
}

TEST_F(Learned, OfABridgeWhoseTopologyChangesAreForgottenOnce) {
    k.port({3, 0}, k.bridge("br6"));
    update();
    chip.learn(kMac, 5, 1);
    chip.learn(kOther, 6, 3);
    walk_and_update();
    k[br5_].bridge->topology_change = true;
    EXPECT_EQ(update(), (LearnedChanges{{}, {{swp1_, 0, mac_of(77)}}}));
    EXPECT_FALSE(is_known(kMac, 5));
    EXPECT_TRUE(is_known(kOther, 6));
    k.kernel.addresses.erase({br5_, 0, mac_of(77)});
    chip.learn(kMac, 5, 1);
    update();
    EXPECT_TRUE(is_known(kMac, 5));
    EXPECT_THAT(walk().added, SizeIs(1));
}

TEST_F(Learned, OfAPortThatLeavesTheBridgeAreForgotten) {
    chip.learn(kMac, 5, 1);
    walk_and_update();
    k[swp1_].master = 0;
    k.kernel.addresses.clear();
    update();
    EXPECT_FALSE(is_known(kMac, 5));
    EXPECT_EQ(walk_and_update(), LearnedChanges{});
    EXPECT_EQ(walk_and_update(), LearnedChanges{});
}

}  // namespace learned_test
}  // namespace switchd
