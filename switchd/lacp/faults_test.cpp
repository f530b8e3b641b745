// Random faults: cables that are pulled, lose and delay, ends that are restarted and change their settings. No port
// distributes to a partner that does not collect, but for the time in which it cannot know; afterwards all is in use.
#include <gtest/gtest.h>

#include <map>
#include <utility>

#include "switchd/lacp/testing/network.h"

namespace switchd::lacp {
namespace faults_test {

using namespace test;

constexpr uint16_t kKey = 1;
constexpr uint16_t kCables = 6;
constexpr uint32_t kFaults = 7;
constexpr PortSettings kFast = {.key = kKey, .is_fast = true};
constexpr Time kLongestDelay = milliseconds(50);

class LacpFaults : public testing::TestWithParam<uint32_t> {
  protected:
    LacpFaults() {
        for (uint8_t number = 1; number <= 2; ++number) {
            net_.add_system({0x8000, {0x02, 0, 0, 0, 0, number}});
        }
        for (uint16_t port = 1; port <= kCables; ++port) {
            net_.system(0).set_port(port, kFast, net_.now());
            net_.system(1).set_port(port, kFast, net_.now());
            net_.join({0, port}, {1, port});
        }
        net_.watch([this] { look(); });
    }

    struct Watched {
        Time last{};
        bool partner_collects = false;
        bool distributes = false;
    };

    const PortStatus &status(size_t system, uint16_t port) { return *net_.system(system).find(port); }

    /** Notes when a port has last had a partner that collects, and judges those that distribute. */
    void look() {
        for (const size_t system : {size_t{0}, size_t{1}}) {
            for (uint16_t port = 1; port <= kCables; ++port) {
                Watched &watched = watched_[{system, port}];
                const bool collects = status(1 - system, port).actor.has(state::kCollecting);
                if (collects || watched.partner_collects) {
                    watched.last = net_.now();
                }
                watched.partner_collects = collects;
                const bool distributes = status(system, port).is_distributing();
                begun_ += distributes && !watched.distributes ? 1U : 0U;
                watched.distributes = distributes;
                EXPECT_TRUE(!distributes || net_.now() - watched.last <= longest_) << system << ", port " << port;
            }
        }
    }

    uint32_t below(uint32_t limit) { return static_cast<uint32_t>(net_.random()() % limit); }

    void restart(size_t system) {
        net_.restart(system);
        for (uint16_t port = 1; port <= kCables; ++port) {
            net_.system(system).set_port(port, kFast, net_.now());
            net_.system(system).set_link(port, net_.cables()[port - 1U].is_plugged, true, net_.now());
        }
    }

    /** Kind 0 is a loss. */
    void make_fault(uint32_t kind) {
        const uint16_t port = static_cast<uint16_t>(1 + below(kCables));
        Cable &cable = net_.cables()[port - 1U];
        const size_t system = below(2);
        switch (kind) {
            case 0:
                cable.lost_percent[below(2)] = 10 * below(11);
                break;
            case 1:
                cable.is_plugged ? net_.pull(cable) : net_.plug(cable);
                break;
            case 2:
                cable.delay = milliseconds(below(51));
                break;
            case 3:
                restart(system);
                break;
            case 4:
                net_.system(system).set_port(
                    port, {.key = kKey, .priority = static_cast<uint16_t>(below(9)), .is_fast = true}, net_.now());
                break;
            case 5:
                net_.system(system).set_port(port, {.key = static_cast<uint16_t>(kKey + below(2)), .is_fast = true},
                                             net_.now());
                break;
            default:
                net_.system(system).receive(port, noise(), net_.now());
        }
        look();
    }

    /** A LACPDU of anybody about anything. */
    Frame noise() {
        Lacpdu pdu;
        for (Info *info : {&pdu.actor, &pdu.partner}) {
            *info = {net_.system(below(2)).id(), static_cast<uint16_t>(below(3)), 0x8000,
                     static_cast<uint16_t>(below(kCables + 1U)), static_cast<uint8_t>(below(256))};
            info->set(state::kCollecting, false);
        }
        return frame_of(pdu, Mac{});
    }

    void expect_all_in_use() {
        EXPECT_GT(begun_, 20U) << "ports came into use between the faults";
        for (Cable &cable : net_.cables()) {
            cable.lost_percent[0] = cable.lost_percent[1] = 0;
            if (!cable.is_plugged) {
                net_.plug(cable);
            }
        }
        for (uint16_t port = 1; port <= kCables; ++port) {
            net_.system(0).set_port(port, kFast, net_.now());
            net_.system(1).set_port(port, kFast, net_.now());
        }
        net_.run(seconds(15));
        EXPECT_EQ(net_.system(0).group(kKey).distributing.size(), kCables);
        EXPECT_EQ(net_.system(1).group(kKey).distributing.size(), kCables);
    }

    Network net_{GetParam()};
    std::map<std::pair<size_t, uint16_t>, Watched> watched_;
    Time longest_ = kShortTimeoutTime + kLongestDelay;
    uint64_t begun_ = 0;
};

TEST_P(LacpFaults, AreSurvived) {
    for (int i = 0; i < 400; ++i) {
        make_fault(below(kFaults));
        net_.run(milliseconds(below(2000)));
    }
    expect_all_in_use();
}

TEST_P(LacpFaults, AreNoticedByBothEndsIfNothingIsLost) {
    longest_ = kFastPeriodicTime + kLongestDelay;  // an end that has sent three LACPDUs has to wait before the next one
    for (int i = 0; i < 400; ++i) {
        make_fault(1 + below(kFaults - 1));
        net_.run(milliseconds(below(2000)));
    }
    expect_all_in_use();
}

INSTANTIATE_TEST_SUITE_P(Seeds, LacpFaults, testing::Range(1U, 1U + SWITCHD_SEEDS));

}  // namespace faults_test
}  // namespace switchd::lacp
