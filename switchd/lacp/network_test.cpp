// Systems that talk to each other over cables.
#include "switchd/lacp/testing/network.h"

#include <gtest/gtest.h>

#include <string>

namespace switchd::lacp {
namespace network_test {

using namespace test;

constexpr uint16_t kKey = 3;
constexpr PortSettings kFast = {.key = kKey, .is_fast = true};

class LacpNetwork : public testing::Test {
  protected:
    LacpNetwork() {
        for (uint8_t number = 1; number <= 3; ++number) {
            net_.add_system({0x8000, {0x02, 0, 0, 0, 0, number}});
        }
    }

    /** Cables between ports of the same numbers. */
    void join(size_t a, size_t b, uint16_t first, uint16_t last, const PortSettings &settings = kFast) {
        for (uint16_t port = first; port <= last; ++port) {
            net_.system(a).set_port(port, settings, net_.now());
            net_.system(b).set_port(port, settings, net_.now());
            net_.join({a, port}, {b, port}).delay = milliseconds(1);
        }
    }

    using Ports = std::set<uint16_t>;

    Ports used(size_t system) { return net_.system(system).group(kKey).distributing; }
    bool are_used(const Ports &ports) { return used(0) == ports && used(1) == ports; }
    bool come_to(const Ports &ports, Time time) {
        return net_.run_until([&] { return are_used(ports); }, time);
    }

    Network net_;
};

TEST_F(LacpNetwork, FourCablesAreUsedAfterThreeSeconds) {
    join(0, 1, 1, 4);
    net_.run(milliseconds(1999));
    EXPECT_TRUE(are_used({}));
    EXPECT_TRUE(come_to({1, 2, 3, 4}, seconds(1)));
    EXPECT_EQ(net_.system(0).group(kKey).partner, (PartnerGroup{net_.system(1).id(), kKey}));
    const uint64_t before = net_.system(0).find(1)->counters.lacpdus_out;
    net_.run(seconds(100));
    EXPECT_TRUE(are_used({1, 2, 3, 4}));
    EXPECT_EQ(net_.system(0).find(1)->counters.lacpdus_out, before + 100);
}

TEST_F(LacpNetwork, SlowEndsComeToUseAsFast) {
    join(0, 1, 1, 2, {.key = kKey});
    EXPECT_TRUE(come_to({1, 2}, seconds(3)));
    net_.run(seconds(600));
    EXPECT_TRUE(are_used({1, 2}));
}

TEST_F(LacpNetwork, APulledCableIsLeftAtOnce) {
    join(0, 1, 1, 4);
    ASSERT_TRUE(come_to({1, 2, 3, 4}, seconds(3)));
    Cable &cable = net_.cables()[1];
    net_.pull(cable);
    EXPECT_TRUE(are_used({1, 3, 4}));
    net_.run(seconds(10));
    net_.plug(cable);
    EXPECT_TRUE(are_used({1, 3, 4}));
    EXPECT_TRUE(come_to({1, 2, 3, 4}, seconds(3)));
}

TEST_F(LacpNetwork, ASilentCableIsLeftAfterThreeSeconds) {
    join(0, 1, 1, 4);
    ASSERT_TRUE(come_to({1, 2, 3, 4}, seconds(3)));
    net_.cables()[0].lost_percent[0] = 100;
    net_.cables()[0].lost_percent[1] = 100;
    EXPECT_TRUE(come_to({2, 3, 4}, milliseconds(3010)));
    net_.cables()[0].lost_percent[0] = 0;
    net_.cables()[0].lost_percent[1] = 0;
    EXPECT_TRUE(come_to({1, 2, 3, 4}, seconds(4)));
}

TEST_F(LacpNetwork, ACableThatCarriesOneWayIsNotUsed) {
    join(0, 1, 1, 2);
    net_.cables()[0].lost_percent[0] = 100;
    EXPECT_TRUE(come_to({2}, seconds(3)));
    net_.run(seconds(100));
    EXPECT_TRUE(are_used({2}));
    EXPECT_EQ(net_.system(0).find(1)->receive, ReceiveState::kCurrent) << "it hears";
    EXPECT_EQ(net_.system(1).find(1)->receive, ReceiveState::kDefaulted) << "and is not heard";
    net_.cables()[0].lost_percent[0] = 0;
    EXPECT_TRUE(come_to({1, 2}, seconds(4)));
    net_.cables()[1].lost_percent[1] = 100;
    EXPECT_TRUE(come_to({1}, milliseconds(4010)));
}

TEST_F(LacpNetwork, TwoPassiveEndsDoNotAggregate) {
    join(0, 1, 1, 2, {.key = kKey, .is_active = false, .is_fast = true});
    net_.run(seconds(200));
    EXPECT_TRUE(are_used({}));
    EXPECT_EQ(net_.system(0).find(1)->counters.lacpdus_out, 0U);
    net_.system(0).set_port(1, kFast, net_.now());
    EXPECT_TRUE(come_to({1}, seconds(4))) << "one active end is enough";
}

TEST_F(LacpNetwork, AWrongKeyAtThePartnerNeverAggregates) {
    join(0, 1, 1, 3);
    net_.system(1).set_port(3, {.key = kKey + 1, .is_fast = true}, net_.now());
    net_.watch([&] {
        EXPECT_FALSE(net_.system(0).find(3)->is_distributing());
        EXPECT_FALSE(net_.system(0).find(3)->actor.has(state::kSynchronization));
    });
    net_.run(seconds(100));
    EXPECT_EQ(used(0), (Ports{1, 2}));
    EXPECT_EQ(used(1), (Ports{1, 2}));
    EXPECT_TRUE(net_.system(1).group(kKey + 1).distributing.empty());
}

TEST_F(LacpNetwork, OfTwoPartnersOneIsUsed) {
    join(0, 1, 1, 2);
    join(0, 2, 3, 4);
    net_.run(seconds(10));
    EXPECT_EQ(used(0), (Ports{1, 2}));
    EXPECT_EQ(used(1), (Ports{1, 2}));
    EXPECT_EQ(used(2), Ports{});
    net_.pull(net_.cables()[0]);
    net_.pull(net_.cables()[1]);
    net_.run(seconds(4));
    EXPECT_EQ(used(0), (Ports{3, 4}));
    EXPECT_EQ(used(2), (Ports{3, 4}));
    net_.plug(net_.cables()[0]);
    net_.run(seconds(10));
    EXPECT_EQ(used(0), (Ports{3, 4}));
}

TEST_F(LacpNetwork, NineCablesLeaveOneStandingBy) {
    join(0, 1, 1, 9);
    ASSERT_TRUE(come_to({1, 2, 3, 4, 5, 6, 7, 8}, seconds(4)));
    EXPECT_EQ(net_.system(0).find(9)->selected, Selected::kStandby);
    EXPECT_EQ(net_.system(1).find(9)->selected, Selected::kStandby);
    net_.run(seconds(100));
    EXPECT_TRUE(are_used({1, 2, 3, 4, 5, 6, 7, 8}));
    net_.pull(net_.cables()[2]);
    EXPECT_TRUE(come_to({1, 2, 4, 5, 6, 7, 8, 9}, milliseconds(100)));
    net_.plug(net_.cables()[2]);
    EXPECT_TRUE(come_to({1, 2, 3, 4, 5, 6, 7, 8}, seconds(4)));
}

TEST_F(LacpNetwork, TheEndsAgreeOnTheOneThatStandsBy) {
    join(0, 1, 1, 9);
    net_.system(1).set_port(2, {.key = kKey, .priority = 1, .is_fast = true}, net_.now());
    net_.system(0).set_port(9, {.key = kKey, .priority = 1, .is_fast = true}, net_.now());
    net_.system(0).set_port(2, {.key = kKey, .priority = 0xFFFF, .is_fast = true}, net_.now());
    EXPECT_TRUE(come_to({1, 3, 4, 5, 6, 7, 8, 9}, seconds(5)));
    net_.run(seconds(60));
    EXPECT_TRUE(are_used({1, 3, 4, 5, 6, 7, 8, 9}));
}

TEST_F(LacpNetwork, AMovedCableIsUsedInItsNewPlace) {
    join(0, 1, 1, 2);
    ASSERT_TRUE(come_to({1, 2}, seconds(3)));
    net_.system(0).set_port(5, kFast, net_.now());
    net_.pull(net_.cables()[1]);
    net_.join({0, 5}, {1, 2});
    net_.run(seconds(4));
    EXPECT_EQ(used(0), (Ports{1, 5}));
    EXPECT_EQ(used(1), (Ports{1, 2}));
}

TEST_F(LacpNetwork, ACableBetweenPortsOfOneSystemIsNotUsed) {
    net_.system(0).set_port(1, kFast, net_.now());
    net_.system(0).set_port(2, kFast, net_.now());
    net_.join({0, 1}, {0, 2});
    net_.run(seconds(20));
    EXPECT_EQ(used(0), Ports{});
    EXPECT_EQ(net_.system(0).find(1)->receive, ReceiveState::kCurrent);
}

TEST_F(LacpNetwork, ARestartedSystemIsNoticedAndComesBack) {
    join(0, 1, 1, 2);
    ASSERT_TRUE(come_to({1, 2}, seconds(3)));
    net_.restart(0);
    for (const uint16_t port : {uint16_t{1}, uint16_t{2}}) {
        net_.system(0).set_port(port, kFast, net_.now());
        net_.system(0).set_link(port, true, true, net_.now());
    }
    net_.run(milliseconds(10));
    EXPECT_TRUE(are_used({}));
    EXPECT_TRUE(come_to({1, 2}, seconds(3)));
}

TEST_F(LacpNetwork, AResumedSystemIsNotNoticed) {
    for (const bool is_fast : {true, false}) {
        const auto first = static_cast<uint16_t>(is_fast ? 1 : 3);
        const PortSettings settings = {.key = kKey, .is_fast = is_fast};
        join(0, 1, first, first, settings);
        net_.run(seconds(4));
        ASSERT_TRUE(net_.system(0).find(first)->is_distributing());
        const Info partner = net_.system(0).find(first)->partner;
        net_.watch([&] { EXPECT_TRUE(net_.system(1).find(first)->is_distributing()); });
        net_.restart(0);
        net_.run(milliseconds(500));
        net_.system(0).resume_port(first, settings, partner, net_.now());
        net_.system(0).set_link(first, true, true, net_.now());
        EXPECT_TRUE(net_.system(0).find(first)->is_distributing());
        net_.run(seconds(200));
        EXPECT_TRUE(net_.system(0).find(first)->is_distributing());
        net_.watch({});
    }
}

}  // namespace network_test
}  // namespace switchd::lacp
