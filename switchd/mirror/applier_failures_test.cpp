// Calls that fail: each is told, and made again the next time.
#include <adp/adp.h>

#include "switchd/mirror/testing/random_state.h"
#include "switchd/mirror/testing/switch_fixture.h"

namespace switchd {
namespace applier_failures_test {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::SizeIs;

class ApplierFailures : public test::SwitchTest {
  protected:
    static VlanMac group_number(uint32_t number) {
        return {5, {0x01, 0, 0x5E, 1, static_cast<uint8_t>(number >> 8), static_cast<uint8_t>(number)}};
    }
    Remarks fail_every(const std::string &name, Applier &applier, const SwitchState &state) {
        chip.fail_every(name);
        Remarks remarks = applier.apply(state);
        chip.fail_every({});
        return remarks;
    }
};

TEST_F(ApplierFailures, EachCallIsMadeAgain) {
    // Whether the actions for unknown groups failed is not known, nor would a failed look-up change anything.
    test::RandomState random{3, false};
    size_t failed = 0;
    for (size_t failing = 0; failing < 10 * SWITCHD_SEEDS; ++failing) {
        SCOPED_TRACE(failing);
        test::VirtualSwitch fresh;
        Applier applier{k.plan};
        applier.apply(random());
        SwitchState next = random();
        next.unknown_ipv4_groups = applier.state().unknown_ipv4_groups;
        next.unknown_ipv6_groups = applier.state().unknown_ipv6_groups;
        fresh.take_count();
        fresh.fail_call(failing);
        const Remarks remarks = applier.apply(next);
        const bool has_failed = fresh.take_count() > failing;
        failed += has_failed ? 1 : 0;
        if (!has_failed) {
            EXPECT_THAT(remarks, IsEmpty());
        }
        fresh.fail_call(100000);
        EXPECT_THAT(applier.apply(next), IsEmpty());
        SwitchState read = read_switch(k.plan);
        read.unknown_ipv4_groups = next.unknown_ipv4_groups;
        read.unknown_ipv6_groups = next.unknown_ipv6_groups;
        ASSERT_EQ(read, next);
    }
    EXPECT_GT(failed, SWITCHD_SEEDS);
}

TEST_F(ApplierFailures, AreToldForEachKindOfCall) {
    const int br5 = k.bridge("br5", {.stp = true, .ageing_seconds = 20, .multicast_snooping = true, .querier = true});
    const int swp1 = k.port({1, 0}, br5);
    k.port({2, 0}, br5, {.state = PortState::kBlocking, .learning = false, .isolated = true});
    k.port({3, 0}, br5, {.state = PortState::kForwarding, .isolated = true});
    k.kernel.addresses[{br5, 0, test::mac_number(5)}] = {swp1, Address::Kind::kStatic};
    k.kernel.groups[{br5, 0, 0, {0x01, 0, 0x5E, 1, 2, 3}}] = {swp1};
    for (const char *name :
         {"user_vlan_create", "user_vlan_port_set", "user_stg_create_id", "user_stg_stp_set", "user_stg_vlan_add",
          "user_port_untagged_vlan_set", "user_port_egress_set", "user_port_learn_get", "user_port_learn_set",
          "user_mac_addr_add", "user_mac_mcast_addr_add", "user_mac_age_time_set", "user_switch_control_set"}) {
        SCOPED_TRACE(name);
        test::VirtualSwitch fresh;
        Applier applier{k.plan};
        fresh.fail_every(name);
        EXPECT_THAT(applier.apply(wanted().state), Not(IsEmpty()));
        fresh.fail_every({});
        EXPECT_THAT(applier.apply(wanted().state), IsEmpty());
        EXPECT_EQ(applier.state(), wanted().state);
    }
}

TEST_F(ApplierFailures, APortThatCannotBeBlockedDoesNotJoin) {
    const int br5 = k.bridge("br5", {.stp = true});
    k.port({1, 0}, br5);
    k.port({2, 0}, br5, test::in_state(PortState::kBlocking));
    Applier applier{k.plan};
    const Remarks remarks = fail_every("user_stg_stp_set", applier, wanted().state);
    ASSERT_THAT(remarks, SizeIs(1));
    EXPECT_EQ(remarks[0].subject, "swp2");
    EXPECT_EQ(present().vlans.at(5).members, set_of(0) | set_of(1));
    EXPECT_THAT(applier.apply(wanted().state), IsEmpty());
    EXPECT_EQ(present(), wanted().state);
}

TEST_F(ApplierFailures, OneSentenceTellsOfAllGroupsThatFoundNoRoom) {
    SwitchState state = wanted().state;
    state.vlans[5].members = set_of(0);
    constexpr uint32_t kRoom = 1024;
    for (uint32_t i = 0; i < kRoom + 200; ++i) {
        state.groups[group_number(i)] = set_of(1);
    }
    Applier applier{k.plan};
    const auto all_but = [](const char *count) {
        return ElementsAre(
            Remark{"switch", std::string("does not take ") + count +
                                 " multicast groups: there are as many multicast groups as the chip has room for"});
    };
    EXPECT_THAT(applier.apply(state), all_but("200"));
    chip.take_count();
    EXPECT_THAT(applier.apply(state), all_but("200"));
    EXPECT_EQ(chip.take_count(), TableMirror<IntfSet>::kRetries) << "a few are tried again";
    // Each gets its turn: after some updates there is room for as many as left.
    for (uint32_t i = 0; i < 100; ++i) {
        state.groups.erase(group_number(i));
    }
    for (int i = 0; i < 4; ++i) {
        applier.apply(state);
    }
    EXPECT_THAT(applier.apply(state), all_but("100"));
    for (uint32_t i = 100; i < 200; ++i) {
        state.groups.erase(group_number(i));
    }
    for (int i = 0; i < 4; ++i) {
        applier.apply(state);
    }
    EXPECT_THAT(applier.apply(state), IsEmpty());
    EXPECT_EQ(read_switch(k.plan).groups, state.groups);
}

TEST_F(ApplierFailures, AnEntryWithRoomIsNotKeptOutByOthersWithout) {
    constexpr uint16_t kSum = 1000;  // addresses whose words have the same sum share a few places in the chip
    SwitchState state = wanted().state;
    for (uint16_t i = 0; i < 80; ++i) {
        const auto rest = static_cast<uint16_t>(kSum - i);
        state.addresses[{
            4001, {2, 0, 0, static_cast<uint8_t>(i), static_cast<uint8_t>(rest >> 8), static_cast<uint8_t>(rest)}}] = 1;
    }
    const VlanMac last{4001, {2, 1, 0, 0, 0, 0}};
    state.addresses[last] = 1;
    Applier applier{k.plan};
    EXPECT_THAT(fail_every("user_mac_addr_add", applier, state), SizeIs(1));
    applier.apply(state);
    EXPECT_THAT(applier.apply(state),
                ElementsAre(testing::Field(&Remark::sentence, HasSubstr("does not take 72 static addresses"))));
    EXPECT_TRUE(read_switch(k.plan).addresses.contains(last));
}

TEST_F(ApplierFailures, AnEntryThatSomebodyElseHasRemovedIsGone) {
    SwitchState state = wanted().state;
    state.vlans[5].members = set_of(0);
    state.addresses[{5, test::mac_number(5)}] = 1;
    state.groups[group_number(1)] = set_of(1);
    Applier applier{k.plan};
    applier.apply(state);
    ASSERT_EQ(adp_del_mac_addr(test::mac_number(5).data(), 5, 0, 0), ADP_OK);
    ASSERT_EQ(adp_del_mac_mcast_addr(group_number(1).mac.data(), 5, 0, 0), ADP_OK);
    state.addresses.clear();
    state.groups.clear();
    EXPECT_THAT(applier.apply(state), IsEmpty());
    state.addresses[{5, test::mac_number(5)}] = 1;
    applier.apply(state);
    state.addresses.clear();
    EXPECT_THAT(fail_every("user_mac_addr_delete", applier, state),
                ElementsAre(testing::Field(&Remark::sentence, HasSubstr("keeps 1 static addresses"))));
    EXPECT_THAT(applier.apply(state), IsEmpty());
    EXPECT_THAT(read_switch(k.plan).addresses, IsEmpty());
}

}  // namespace applier_failures_test
}  // namespace switchd
