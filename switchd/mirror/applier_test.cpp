// The chip is brought to what is wanted, by the differences alone.
#include <adp/adp.h>

#include "switchd/mirror/testing/random_state.h"
#include "switchd/mirror/testing/switch_fixture.h"

namespace switchd {
namespace applier_test {

using testing::HasSubstr;
using testing::IsEmpty;

class ApplierTest : public test::SwitchTest {
  protected:
    /** A bridge with everything. */
    void make_bridge() {
        Bridge settings{.stp = true, .ageing_seconds = 20, .multicast_snooping = true, .querier = true};
        const int br100 = k.bridge("br100", settings);
        BridgePort odd{.state = PortState::kBlocking, .learning = false, .isolated = true};
        const int swp1 = k.port({1, 0}, br100);
        k.port({2, 0}, br100, odd);
        const int swp3 = k.port({3, 100}, br100, odd);
        k.kernel.addresses[{br100, 0, test::mac_number(5)}] = {swp1, Address::Kind::kStatic};
        GroupKey group{br100, 0, 0, {0x01, 0, 0x5E, 1, 2, 3}};
        k.kernel.groups[group] = {swp1, swp3, br100};
    }
};

TEST_F(ApplierTest, SetsUpANewChip) {
    Applier applier{k.plan};
    EXPECT_THAT(applier.apply(wanted().state), IsEmpty());
    EXPECT_EQ(present(), wanted().state);
    EXPECT_EQ(applier.state(), wanted().state);
}

TEST_F(ApplierTest, SetsEverything) {
    make_bridge();
    Applier applier{k.plan};
    EXPECT_THAT(applier.apply(wanted().state), IsEmpty());
    EXPECT_EQ(present(), wanted().state);
    EXPECT_EQ(applier.state(), wanted().state);
}

TEST_F(ApplierTest, MakesNoCallWithoutADifference) {
    make_bridge();
    Applier applier{k.plan};
    applier.apply(wanted().state);
    chip.take_count();
    EXPECT_THAT(applier.apply(wanted().state), IsEmpty());
    EXPECT_EQ(chip.take_count(), 0U);
}

TEST_F(ApplierTest, AfterARestartOnlyReadsAndSetsWhatCannotBeRead) {
    make_bridge();
    Applier{k.plan}.apply(wanted().state);
    test::begin_new_process();
    Applier next{k.plan};
    chip.record();
    EXPECT_THAT(next.apply(wanted().state), IsEmpty());
    for (const std::string &call : chip.take_trace()) {
        EXPECT_THAT(call, HasSubstr("lookup_miss_action"));
    }
    EXPECT_EQ(present(), wanted().state);
}

TEST_F(ApplierTest, TakesEverythingBack) {
    const SwitchState alone = wanted().state;
    make_bridge();
    Applier applier{k.plan};
    applier.apply(wanted().state);
    EXPECT_THAT(applier.apply(alone), IsEmpty());
    EXPECT_EQ(present(), alone);
}

TEST_F(ApplierTest, RandomStatesOneAfterTheOther) {
    for (uint32_t seed = 0; seed < SWITCHD_SEEDS; ++seed) {
        test::VirtualSwitch fresh;
        test::RandomState random{seed};
        Applier applier{k.plan};
        for (int i = 0; i < 10; ++i) {
            const SwitchState next = random();
            EXPECT_THAT(applier.apply(next), IsEmpty()) << "seed " << seed;
            ASSERT_EQ(applier.state(), next) << "seed " << seed;
            SwitchState read = read_switch(k.plan);
            read.unknown_ipv4_groups = next.unknown_ipv4_groups;
            read.unknown_ipv6_groups = next.unknown_ipv6_groups;
            ASSERT_EQ(read, next) << "seed " << seed;
        }
    }
}

TEST_F(ApplierTest, RandomStatesWithRestarts) {
    test::RandomState random{99, false};
    for (int i = 0; i < 20; ++i) {
        const SwitchState next = random();
        Applier applier{k.plan};
        EXPECT_THAT(applier.apply(next), IsEmpty());
        ASSERT_EQ(present(), next);
        test::begin_new_process();
    }
}

TEST_F(ApplierTest, ALargeSwitchIsInSyncAfterFewCalls) {
    constexpr uint32_t kStations = 1000;
    constexpr uint16_t kBridges = 100;
    for (uint16_t vid = 101; vid <= 100 + kBridges; ++vid) {
        const int bridge = k.bridge("br" + std::to_string(vid), {.stp = true});
        for (uint32_t port = 1; port <= ADP_USER_PORTS; ++port) {
            k.port({port, vid}, bridge, port == 1 + vid % 10U ? test::in_state(PortState::kBlocking) : test::kForwards);
        }
        for (uint32_t i = 0; i < kStations / kBridges; ++i) {
            const int behind = k.kernel.links.rbegin()->first;
            k.kernel.addresses[{bridge, 0, test::mac_number(vid * 1000U + i)}] = {behind, Address::Kind::kStatic};
        }
    }
    Applier{k.plan}.apply(wanted().state);
    test::begin_new_process();
    chip.take_count();
    Applier next{k.plan};
    EXPECT_THAT(next.apply(wanted().state), IsEmpty());
    const size_t calls = chip.take_count();
    RecordProperty("calls", static_cast<int>(calls));
    // 1,100 addresses, 4,094 VLANs, 16 groups of 26 ports; at 15 us a call this is a tenth of a second.
    EXPECT_LT(calls, 7000U);
    EXPECT_EQ(present(), wanted().state);
}

TEST_F(ApplierTest, PortsAreTakenOutWhereSpanningTreeGroupsHaveRunOut) {
    constexpr uint16_t kFirst = 101;
    for (uint16_t vid = kFirst; vid < kFirst + 20; ++vid) {
        const int bridge = k.bridge("br" + std::to_string(vid), {.stp = true});
        k.port({25, vid}, bridge);
        k.port({vid - kFirst + 1U, vid}, bridge, test::in_state(PortState::kBlocking));
    }
    Applier applier{k.plan};
    const Remarks remarks = applier.apply(wanted().state);
    EXPECT_EQ(remarks.size(), 20U - 15U);
    EXPECT_EQ(remarks.back(), (Remark{"VLAN 120",
                                      "lacks ports that do not forward, since all spanning-tree groups of the "
                                      "chip are in use: swp20"}));
    const SwitchState state = present();
    EXPECT_EQ(state.vlans.at(115).members, set_of(0) | set_of(15) | set_of(25));
    EXPECT_EQ(state.vlans.at(116).members, set_of(0) | set_of(25));
    chip.take_count();
    EXPECT_EQ(applier.apply(wanted().state), remarks);
    EXPECT_EQ(chip.take_count(), 0U);
    // One bridge needs its group no longer, and the first that lacks one gets it.
    for (auto &[index, link] : k.links) {
        if (link.name == "swp3.103") {
            link.port->state = PortState::kForwarding;
        }
    }
    EXPECT_EQ(applier.apply(wanted().state).size(), 4U);
    EXPECT_EQ(present().vlans.at(116), wanted().state.vlans.at(116));
    EXPECT_EQ(present().vlans.at(103), wanted().state.vlans.at(103));
}

TEST_F(ApplierTest, AddressesOfAGroupAreBehindIt) {
    ASSERT_EQ(adp_create_agg_group(ADP_AGG_INTF(2)), ADP_OK);
    const adp_intf_t members[] = {8, 9};
    ASSERT_EQ(adp_add_agg_member(ADP_AGG_INTF(2), 2, members), ADP_OK);
    k.plan.groups[ADP_AGG_INTF(2)] = set_of(8) | set_of(9);
    const int br5 = k.bridge("br5");
    const int agg2 = k.port({ADP_AGG_INTF(2), 0}, br5);
    k.kernel.addresses[{br5, 0, test::mac_number(5)}] = {agg2, Address::Kind::kStatic};
    Applier applier{k.plan};
    EXPECT_THAT(applier.apply(wanted().state), IsEmpty());
    EXPECT_EQ(present(), wanted().state);
}

TEST_F(ApplierTest, WhatPortAuthorisationHasClosedStaysClosed) {
    k.port({1, 0}, k.bridge("br5"));
    Applier applier{k.plan};
    applier.apply(wanted().state);
    ASSERT_EQ(adp_intf_learn_set(1, ADP_LEARN_PENDING), ADP_OK);
    ASSERT_EQ(adp_add_mac_addr(test::mac_number(5).data(), 1, 5, 1), ADP_OK);
    chip.take_count();
    EXPECT_THAT(applier.apply(wanted().state), IsEmpty());
    EXPECT_EQ(chip.take_count(), 0U);
    const auto expect_closed = [&](Applier &some) {
        EXPECT_THAT(some.apply(wanted().state), IsEmpty());
        uint32_t mode = 0;
        EXPECT_EQ(adp_intf_learn_get(1, &mode), ADP_OK);
        EXPECT_EQ(mode, ADP_LEARN_PENDING);
        EXPECT_EQ(present().addresses.count({5, test::mac_number(5)}), 1U);
    };
    for (auto &[index, link] : k.links) {
        if (link.port) {
            link.port->learning = false;
        }
    }
    expect_closed(applier);
    Applier next{k.plan};
    expect_closed(next);
}

TEST_F(ApplierTest, ALockedPortIsClosedUntilItIsNot) {
    const int swp1 = k.port({1, 0}, k.bridge("br5"));
    k[swp1].port->locked = true;
    Applier{k.plan}.apply(wanted().state);
    EXPECT_EQ(present().ports.at(1).learning, Learning::kClosed);
    Applier next{k.plan};
    EXPECT_THAT(next.apply(wanted().state), IsEmpty());
    k[swp1].port->locked = false;
    EXPECT_THAT(next.apply(wanted().state), IsEmpty());
    EXPECT_EQ(present().ports.at(1).learning, Learning::kOn);
}

TEST_F(ApplierTest, AddressesGoWithTheirVlan) {
    const SwitchState alone = wanted().state;
    make_bridge();
    Applier applier{k.plan};
    applier.apply(wanted().state);
    chip.record();
    applier.apply(alone);
    EXPECT_THAT(chip.take_trace(), testing::Not(testing::Contains(HasSubstr("addr_delete"))));
    EXPECT_EQ(present(), alone);
}

TEST_F(ApplierTest, VlansWithoutPortsAreThere) {
    for (const uint32_t vid : {5U, 6U}) {
        ASSERT_EQ(adp_vlan_create(vid), ADP_OK);
    }
    k.port({1, 0}, k.bridge("br5"));
    Applier applier{k.plan};
    EXPECT_THAT(applier.apply(wanted().state), IsEmpty());
    EXPECT_EQ(present(), wanted().state);
}

TEST_F(ApplierTest, FiltersAreSomebodyElses) {
    k.port({1, 0}, k.bridge("br5"));
    Applier{k.plan}.apply(wanted().state);
    ASSERT_EQ(adp_filter_mac_addr(1, test::mac_number(7).data(), 5, ADP_MAC_FLAG_DROP_FROM), ADP_OK);
    Applier next{k.plan};
    EXPECT_THAT(next.apply(wanted().state), IsEmpty());
    adp_l2_entry_t entry = {};
    EXPECT_EQ(adp_get_mac_addr(test::mac_number(7).data(), 5, &entry), ADP_OK);
}

}  // namespace applier_test
}  // namespace switchd
