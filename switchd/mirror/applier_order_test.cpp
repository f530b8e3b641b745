// No moment in which something is open that was closed, and stays so.
#include <adp/adp.h>

#include "switchd/mirror/testing/random_state.h"
#include "switchd/mirror/testing/switch_fixture.h"

namespace switchd {
namespace applier_order_test {

using testing::ElementsAre;

/** The chip ports by which frames pass, of each VLAN that random states may have. */
using Passing = std::vector<uint32_t>;

class ApplierOrder : public test::SwitchTest {
  protected:
    Passing passing() {
        Passing now;
        for (const uint16_t vid : test::kRandomVids) {
            const auto *vlan = chip.chip().vlans().find(vid);
            uint32_t words[vdevice::chip::PortSet::kWords] = {};
            if (vlan != nullptr) {
                (vlan->members & chip.chip().stp().forwarding_in_vlan(vid)).to_words(words);
            }
            now.push_back(words[0]);
        }
        return now;
    }

    /** What passed after each call. */
    std::vector<Passing> apply(Applier &applier, const SwitchState &state) {
        std::vector<Passing> moments;
        chip.watch([&] { moments.push_back(passing()); });
        applier.apply(state);
        chip.watch({});
        return moments;
    }

    static void expect_safe(const Passing &before, const std::vector<Passing> &moments, const Passing &after) {
        for (const Passing &now : moments) {
            for (size_t i = 0; i < now.size(); ++i) {
                const uint32_t opened = now[i] & ~before[i];
                const uint32_t to_close = now[i] & before[i] & ~after[i];
                ASSERT_EQ(opened & ~after[i], 0U) << "open in between, VLAN " << test::kRandomVids[i];
                ASSERT_TRUE(opened == 0 || to_close == 0) << "opened too early, VLAN " << test::kRandomVids[i];
            }
        }
    }
};

TEST_F(ApplierOrder, NothingIsOpenInBetween) {
    for (uint32_t seed = 0; seed < SWITCHD_SEEDS; ++seed) {
        SCOPED_TRACE(seed);
        test::RandomState random{seed};
        Applier applier{k.plan};
        applier.apply(random());
        for (int i = 0; i < 10; ++i) {
            const Passing before = passing();
            const auto moments = apply(applier, random());
            expect_safe(before, moments, passing());
        }
    }
}

TEST_F(ApplierOrder, NorIfACallFails) {
    test::RandomState random{7, false};
    for (size_t failing = 0; failing < 150; ++failing) {
        SCOPED_TRACE(failing);
        test::begin_new_process();
        Applier applier{k.plan};
        applier.apply(random());
        const SwitchState next = random();
        const Passing before = passing();
        chip.take_count();
        chip.fail_call(failing);
        auto moments = apply(applier, next);
        const auto again = apply(applier, next);
        moments.insert(moments.end(), again.begin(), again.end());
        expect_safe(before, moments, passing());
    }
}

TEST_F(ApplierOrder, APortIsBlockedBeforeItJoins) {
    const int br5 = k.bridge("br5", {.stp = true});
    k.port({1, 0}, br5);
    Applier applier{k.plan};
    applier.apply(wanted().state);
    k.port({2, 5}, br5, test::in_state(PortState::kListening));
    chip.record();
    applier.apply(wanted().state);
    EXPECT_THAT(chip.take_trace(),
                ElementsAre("user_stg_create_id(unit=0, zero=0, stg=1)",
                            "user_stg_stp_set(unit=0, zero=0, stg=1, port=5, state=2)",
                            "user_stg_vlan_add(unit=0, zero=0, stg=1, vid=5)",
                            "user_vlan_port_set(unit=0, zero=0, vid=5, members={0,4,5}, untagged={4})"));
}

TEST_F(ApplierOrder, OnePortIsBlockedBeforeTheOtherForwards) {
    const int br5 = k.bridge("br5", {.stp = true});
    const int swp1 = k.port({1, 0}, br5);
    const int swp2 = k.port({2, 0}, br5, test::in_state(PortState::kBlocking));
    Applier applier{k.plan};
    applier.apply(wanted().state);
    std::swap(k[swp1].port, k[swp2].port);
    chip.record();
    applier.apply(wanted().state);
    EXPECT_THAT(chip.take_trace(), ElementsAre("user_stg_stp_set(unit=0, zero=0, stg=1, port=4, state=1)",
                                               "user_stg_stp_set(unit=0, zero=0, stg=1, port=5, state=4)"));
    k[swp1].port = test::kForwards;
    chip.take_trace();
    applier.apply(wanted().state);
    EXPECT_THAT(chip.take_trace(), ElementsAre("user_stg_vlan_add(unit=0, zero=0, stg=0, vid=5)"))
        << "all forward, as they do in the default group";
}

TEST_F(ApplierOrder, OtherVlansOfAGroupStayBlockedWhenOneLeaves) {
    const int br5 = k.bridge("br5", {.stp = true});
    const int br6 = k.bridge("br6", {.stp = true});
    k.port({1, 5}, br5, test::in_state(PortState::kBlocking));
    const int leaving = k.port({1, 6}, br6, test::in_state(PortState::kBlocking));
    Applier applier{k.plan};
    applier.apply(wanted().state);
    ASSERT_EQ(chip.chip().stp().group_of(5), chip.chip().stp().group_of(6));
    k[leaving].port = test::kForwards;
    chip.record();
    applier.apply(wanted().state);
    EXPECT_THAT(chip.take_trace(), ElementsAre("user_stg_vlan_add(unit=0, zero=0, stg=0, vid=6)"));
    EXPECT_EQ(present(), wanted().state);
}

TEST_F(ApplierOrder, AVlanDoesNotMoveToAGroupThatCouldNotBeClosed) {
    k.port({1, 1}, k.bridge("br1", {.stp = true}), test::in_state(PortState::kBlocking));
    const int br10 = k.bridge("br10", {.stp = true});
    k.port({1, 10}, br10, test::in_state(PortState::kBlocking));
    const int other = k.port({2, 10}, br10);
    Applier applier{k.plan};
    applier.apply(wanted().state);
    ASSERT_EQ(chip.chip().stp().group_of(1), chip.chip().stp().group_of(10));
    const Passing before = passing();
    k[other].port = test::in_state(PortState::kBlocking);
    chip.fail_every("user_stg_stp_set");
    const auto moments = apply(applier, wanted().state);
    chip.fail_every({});
    applier.apply(wanted().state);
    expect_safe(before, moments, passing());
    EXPECT_EQ(present(), wanted().state);
}

TEST_F(ApplierOrder, AVlanThatLosesItsGroupToOthersLosesItsBlockedPortsBefore) {
    for (uint32_t port = 5; port < 5 + 14; ++port) {
        const auto vid = static_cast<uint16_t>(100 + port);
        k.port({port, vid}, k.bridge("br" + std::to_string(vid), {.stp = true}), test::in_state(PortState::kBlocking));
    }
    std::vector<int> opening;
    for (const uint16_t vid : {uint16_t{10}, uint16_t{20}}) {
        const int bridge = k.bridge("br" + std::to_string(vid), {.stp = true});
        k.port({1, vid}, bridge, test::in_state(PortState::kBlocking));
        opening.push_back(k.port({2, vid}, bridge, test::in_state(PortState::kBlocking)));
    }
    Applier applier{k.plan};
    EXPECT_THAT(applier.apply(wanted().state), testing::IsEmpty());
    k[opening[1]].port = test::kForwards;
    const Passing before = passing();
    const auto moments = apply(applier, wanted().state);
    expect_safe(before, moments, passing());
    const SwitchState state = present();
    EXPECT_EQ(state.vlans.at(10), wanted().state.vlans.at(10));
    EXPECT_EQ(state.vlans.at(20), (VlanState{kCpuAlone | set_of(2), 0, {}})) << "no group is left for it";
}

}  // namespace applier_order_test
}  // namespace switchd
