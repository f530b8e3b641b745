// The limits on what leaves, on random chips: one port asked bit by bit is limited as all ports are, and every port
// that gets no copy of a frame has a reason that is true.
#include "vdevice/chip/pipeline/egress_limits.h"

#include <gtest/gtest.h>

#include <map>

#include "vdevice/chip/testing/random_chip.h"
#include "vdevice/chip/testing/seeds.h"

namespace vdevice::chip {
namespace egress_limits_test {

/** Looks at each frame when it has passed, while the tables are as they were for it. */
class LimitsWatcher final : public Watcher {
  public:
    explicit LimitsWatcher(const Tables &tables) : tables_{tables} {}

    void passed(const Passage &p) override {
        ++ways[p.way];
        for (int port = 0; port < static_cast<int>(kChipPorts); ++port) {
            expect_a_true_reason(p, port);
            if (p.way == Way::kEntry) {
                expect_one_answer(p, port);
            }
        }
        EXPECT_EQ(sent_, p.chosen);
        EXPECT_TRUE(!p.drop || p.way == Way::kNone || (p.chosen - PortSet::of(kCpuPort)).empty());
        sent_ = {};
    }

    void left(int port, const Frame & /*copy*/, const Dispatch &dispatch) override { note(port, dispatch); }
    void lost(int port, const Frame & /*copy*/, const Dispatch &dispatch, Lost reason) override {
        if (reason != Lost::kLoopback) {
            note(port, dispatch);
        }
    }

    std::map<Way, int> ways;
    std::map<Unsent, int> reasons;
    std::map<bool, int> answers;

  private:
    void note(int port, const Dispatch &dispatch) {
        if (dispatch.origin == Origin::kSwitched) {
            EXPECT_FALSE(sent_.has(port)) << "two copies by port " << port;
            sent_.add(port);
        }
    }

    void expect_one_answer(const Passage &p, int port) {
        const bool is_left = egress_limits(tables_, p).left_of(PortSet::of(port)).has(port);
        EXPECT_EQ(may_leave(tables_, p, port), is_left) << "port " << port;
        ++answers[is_left];
    }

    void expect_a_true_reason(const Passage &p, int port) {
        const std::optional<Unsent> reason = why_unsent(tables_, p, port);
        ASSERT_EQ(!reason.has_value(), p.chosen.has(port));
        if (reason) {
            EXPECT_TRUE(is_true(*reason, p, port)) << "port " << port << ", reason " << static_cast<int>(*reason);
            ++reasons[*reason];
        }
    }

    bool is_behind_trunk_of(const Passage &p, int port) const {
        const int trunk = tables_.trunks.trunk_of(p.ingress);
        return trunk != TrunkTable::kNone && tables_.trunks.trunk_of(port) == trunk;
    }

    bool is_true(Unsent reason, const Passage &p, int port) const {
        const Trunk *trunk = tables_.trunks.find(tables_.trunks.trunk_of(port));
        switch (reason) {
            case Unsent::kNotWanted:
                return !p.wanted.has(port);
            case Unsent::kIngress:
                return port == p.ingress;
            case Unsent::kSameTrunk:
                return is_behind_trunk_of(p, port);
            case Unsent::kNotMember:
                return !tables_.vlans.find(p.tci & kVidMask)->members.has(port);
            case Unsent::kDown:
                return !tables_.port(port).is_up();
            case Unsent::kStandby:
                return trunk != nullptr && !trunk->member_set.has(port);
            case Unsent::kStpBlocked:
                return tables_.stp.state_in_vlan(p.tci & kVidMask, port) != StpState::kForwarding;
            case Unsent::kIsolated:
                return !tables_.port(p.ingress).egress.has(port);
            case Unsent::kOtherMember:
                return trunk != nullptr && !(trunk->member_set & p.chosen).empty();
        }
        return false;
    }

    const Tables &tables_;
    PortSet sent_;
};

class Limits : public testing::TestWithParam<unsigned> {};

// Without shapers, so that a copy that does not leave at once is lost at once.
TEST_P(Limits, EveryPortWithoutACopyHasATrueReason) {
    test::RandomChip random{GetParam()};
    LimitsWatcher watcher{random.chip().tables()};
    random.chip().set_watcher(&watcher);
    for (int step = 0; step < 3000; ++step) {
        random.change();
        for (int port = 0; port < Switch::kPorts; ++port) {
            random.chip().set_shaper(random.now(), port, {});
        }
        random.receive();
        ASSERT_FALSE(HasFailure()) << "step " << step;
    }
    EXPECT_EQ(watcher.ways.size(), 7U) << "frames went all ways";
    EXPECT_EQ(watcher.reasons.size(), 9U) << "all reasons were met";
    EXPECT_GT(watcher.answers[true], 100);
    EXPECT_GT(watcher.answers[false], 100);
}

INSTANTIATE_TEST_SUITE_P(Seeds, Limits, test::seeds());

}  // namespace egress_limits_test
}  // namespace vdevice::chip
