// The table of spanning-tree groups, and a random life of it against a plain map.
#include "vdevice/chip/tables/stp_groups.h"

#include <gtest/gtest.h>

#include <map>
#include <random>
#include <set>

#include "vdevice/chip/switch.h"
#include "vdevice/chip/testing/seeds.h"

namespace vdevice::chip {
namespace stp_groups_test {

constexpr size_t kVids = 4094;
constexpr int kForwarding = 4;

class StpGroupsTest : public testing::Test {
  protected:
    StpGroups groups_{Switch::chip_ports()};
};

TEST_F(StpGroupsTest, GroupsAreMadeAndDestroyedOnce) {
    for (const int group : {1, 15}) {
        EXPECT_EQ(groups_.destroy(group), Status::kStgMissing);
        EXPECT_EQ(groups_.create(group), Status::kOk);
        EXPECT_EQ(groups_.create(group), Status::kStgExists);
    }
    EXPECT_EQ(groups_.list(), (std::vector<int>{0, 1, 15}));
    EXPECT_EQ(groups_.destroy(15), Status::kOk);
    EXPECT_EQ(groups_.check(15), Status::kStgMissing);
    EXPECT_EQ(groups_.create(0), Status::kStgExists);
    EXPECT_EQ(groups_.destroy(0), Status::kStgIsDefault);
    EXPECT_EQ(groups_.list(), (std::vector<int>{0, 1}));
}

TEST_F(StpGroupsTest, NumbersOutsideTheTableAreRefusedEverywhere) {
    for (const int64_t group : {int64_t{-1}, int64_t{16}, int64_t{0x100000000}}) {
        EXPECT_EQ(groups_.create(group), Status::kStgRange);
        EXPECT_EQ(groups_.destroy(group), Status::kStgRange);
        EXPECT_EQ(groups_.add_vlan(group, 10), Status::kStgRange);
        EXPECT_EQ(groups_.remove_vlan(group, 10), Status::kStgRange);
        EXPECT_EQ(groups_.set_state(group, 4, 1), Status::kStgRange);
    }
    ASSERT_EQ(groups_.create(3), Status::kOk);
    for (const uint32_t vid : {0U, 4095U, 4096U, 0xFFFFFFFFU}) {
        EXPECT_EQ(groups_.add_vlan(3, vid), Status::kVlanRange);
        EXPECT_EQ(groups_.remove_vlan(3, vid), Status::kVlanRange);
    }
    for (const int64_t port : {-1, 32, 256, 0x10000003}) {
        EXPECT_EQ(groups_.set_state(3, port, 1), Status::kNoPort);
    }
    EXPECT_EQ(groups_.set_state(3, Switch::kCpuPort, 1), Status::kCpuPort);
    EXPECT_EQ(groups_.set_state(3, 4, 5), Status::kStgState);
    EXPECT_EQ(groups_.set_state(2, 4, 1), Status::kStgMissing);
    EXPECT_TRUE(groups_.vlans(3).empty());
    EXPECT_EQ(groups_.forwarding(3), Switch::all_ports());
}

TEST_F(StpGroupsTest, ResetLeavesTheDefaultGroupAlone) {
    ASSERT_EQ(groups_.create(2), Status::kOk);
    ASSERT_EQ(groups_.add_vlan(2, 100), Status::kOk);
    ASSERT_EQ(groups_.set_state(0, 4, 0), Status::kOk);
    groups_.reset();
    EXPECT_EQ(groups_.list(), std::vector<int>{0});
    EXPECT_EQ(groups_.vlans(0).size(), kVids);
    EXPECT_EQ(groups_.state(0, 4), StpState::kForwarding);
    EXPECT_EQ(groups_.forwarding(0), Switch::all_ports());
}

/** Which VLANs left the default group, and which states differ from forwarding. */
struct PlainGroups {
    std::set<int> groups{0};
    std::map<int, int> moved;
    std::map<std::pair<int, int>, int> states;

    int state(int vid, int port) const {
        const auto group = moved.find(vid);
        const auto found = states.find({group == moved.end() ? 0 : group->second, port});
        return found == states.end() ? kForwarding : found->second;
    }

    bool destroy(int group) {
        if (group == 0 || groups.erase(group) == 0) {
            return false;
        }
        std::erase_if(moved, [&](const auto &row) { return row.second == group; });
        std::erase_if(states, [&](const auto &row) { return row.first.first == group; });
        return true;
    }

    bool add(int group, int vid) {
        if (groups.count(group) == 0 || vid < 1 || vid > 4094) {
            return false;
        }
        moved.erase(vid);
        if (group != 0) {
            moved[vid] = group;
        }
        return true;
    }

    bool remove(int group, int vid) {
        const auto row = moved.find(vid);
        return row != moved.end() && row->second == group && moved.erase(vid) == 1;
    }

    bool set(int group, int port, int state) {
        if (groups.count(group) == 0 || port < 1 || port > 31 || state > kForwarding) {
            return false;
        }
        states[{group, port}] = state;
        return true;
    }
};

class StpLife : public testing::TestWithParam<unsigned> {
  protected:
    int pick(int from, int to) { return std::uniform_int_distribution<int>{from, to}(random_); }
    int some_vid() {
        constexpr int kChosen[] = {0, 1, 2, 100, 4094, 4095};
        return kChosen[pick(0, 5)];
    }

    /** Whether chip and model agree on doing the same. */
    bool step() {
        const int group = pick(-1, 17);
        const int vid = some_vid();
        const int port = pick(-1, 33);
        const int state = pick(0, 5);
        const auto number = static_cast<uint32_t>(vid);
        switch (pick(0, 5)) {
            case 0: {
                const bool made = group >= 0 && group < 16 && model_.groups.insert(group).second;
                return (groups_.create(group) == Status::kOk) == made;
            }
            case 1:
                return (groups_.destroy(group) == Status::kOk) == model_.destroy(group);
            case 2:
            case 3:
                return (groups_.add_vlan(group, number) == Status::kOk) == model_.add(group, vid);
            case 4:
                return (groups_.remove_vlan(group, number) == Status::kOk) == model_.remove(group, vid);
            default:
                return (groups_.set_state(group, port, static_cast<uint32_t>(state)) == Status::kOk) ==
                       model_.set(group, port, state);
        }
    }

    void compare() {
        ASSERT_EQ(groups_.list(), (std::vector<int>{model_.groups.begin(), model_.groups.end()}));
        size_t members = 0;
        for (const int group : groups_.list()) {
            members += groups_.vlans(group).size();
        }
        ASSERT_EQ(members, kVids);
        ASSERT_EQ(groups_.vlans(0).size(), kVids - model_.moved.size());
        for (const int vid : {1, 2, 100, 4094}) {
            const auto moved = model_.moved.find(vid);
            ASSERT_EQ(groups_.group_of(static_cast<Vid>(vid)), moved == model_.moved.end() ? 0 : moved->second);
            for (int port = 0; port < Switch::kPorts; ++port) {
                const int state = model_.state(vid, port);
                ASSERT_EQ(static_cast<int>(groups_.state_in_vlan(static_cast<Vid>(vid), port)), state);
                ASSERT_EQ(groups_.forwarding_in_vlan(static_cast<Vid>(vid)).has(port), state == kForwarding);
            }
        }
    }

    std::mt19937 random_{GetParam()};
    StpGroups groups_{Switch::chip_ports()};
    PlainGroups model_;
};

TEST_P(StpLife, IsTheModels) {
    constexpr int kSteps = 20000;
    constexpr int kComparedEvery = 20;
    for (int number = 0; number < kSteps; ++number) {
        ASSERT_TRUE(step()) << "step " << number;
        if (number % kComparedEvery == 0) {
            compare();
            ASSERT_FALSE(HasFatalFailure()) << "step " << number;
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Seeds, StpLife, test::seeds());

}  // namespace stp_groups_test
}  // namespace vdevice::chip
