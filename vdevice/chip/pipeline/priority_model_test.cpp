// Random settings of priorities against a model that is as plain as possible, written from the rules and not from the
// chip's code.
#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <random>

#include "vdevice/chip/testing/priority_fixture.h"
#include "vdevice/chip/testing/seeds.h"

namespace vdevice::chip {
namespace priority_model_test {

using namespace test;

constexpr int kSteps = 3000;

/** A frame, told by what priorities come from. */
struct Told {
    int version; /**< of IP; 0 for something else */
    int dscp;
    int tag; /**< its priority; -1 without a tag */

    Octets octets(int vid) const {
        const auto service = static_cast<uint8_t>(dscp * 4 + 1);
        const Octets packet = version == 4   ? test::ipv4({.protocol = kUdp, .tos = service}, kDatagram)
                              : version == 6 ? test::ipv6({.next_header = kUdp, .traffic_class = service}, kDatagram)
                                             : test::octets16(0x88B5) + kDatagram;
        return kAddresses + (tag < 0 ? Octets{} : test::vlan_tag(static_cast<uint16_t>(tag * 8192 + vid))) + packet;
    }
};

/** What is set for port A, where frames come in, and for B, where they leave; what was never set is not there. */
struct Model {
    using Map = std::map<int, int>;

    int trust = 1;
    bool defaults_to_port = false;
    int own = 0;
    int queues = 8;
    Map remap, mapped, priorities, chip_queues, port_queues;

    static int find(const Map &map, int key, int otherwise) { return map.count(key) != 0 ? map.at(key) : otherwise; }

    /** The frame as it goes on. */
    Told classify(Told frame) const {
        const int by_tag = frame.tag < 0 ? own : find(remap, frame.tag, frame.tag);
        if (trust < 2 || frame.version == 0) {
            frame.tag = trust == 0 || (trust == 2 && defaults_to_port) ? own : by_tag;
            return frame;
        }
        return {frame.version, find(mapped, frame.dscp, frame.dscp), find(priorities, frame.dscp, frame.dscp / 8)};
    }
    int queue_of(int priority) const {
        return std::min(find(port_queues, priority, find(chip_queues, priority, priority)), queues - 1);
    }
};

class PriorityLives : public test::PriorityTest, public testing::WithParamInterface<unsigned> {
  protected:
    int below(int limit) { return static_cast<int>(random_() % static_cast<unsigned>(limit)); }
    DscpMap &dscps() { return chip_.priority_rules().dscps; }

    void set_trust() {
        model_.trust = below(4);
        change(kA, [&](Port &port) { port.trust = static_cast<Trust>(model_.trust); });
    }
    void set_default() {
        model_.defaults_to_port = below(2) == 0;
        chip_.priority_rules().defaults_to_port = model_.defaults_to_port;
    }
    void set_own() {
        model_.own = below(8);
        change(kA, [&](Port &port) { port.untagged_priority = static_cast<uint32_t>(model_.own); });
    }
    void set_remap() {
        const int priority = below(8);
        model_.remap[priority] = below(8);
        change(kA, [&](Port &port) {
            port.remap.to.at(static_cast<size_t>(priority)) = static_cast<uint8_t>(model_.remap[priority]);
        });
    }
    void set_dscp() {
        const int dscp = below(64);
        const DscpRow row{static_cast<uint8_t>(below(64)), static_cast<uint8_t>(below(8))};
        model_.mapped[dscp] = row.mapped;
        model_.priorities[dscp] = row.priority;
        if (below(2) == 0) {
            dscps().set(static_cast<uint32_t>(dscp), row);
        } else {
            dscps().set(kA, static_cast<uint32_t>(dscp), row);
        }
        dscps().set(kB, static_cast<uint32_t>(dscp), {0, 0});  // is of no importance to A
    }
    void set_dscp_priority() {
        const int dscp = below(64);
        model_.priorities[dscp] = below(8);
        dscps().set_priority(static_cast<uint32_t>(dscp), static_cast<uint8_t>(model_.priorities[dscp]));
    }
    void set_queues() {
        model_.queues = 1 + below(8);
        EXPECT_EQ(chip_.queue_map().set_queues(static_cast<uint32_t>(model_.queues)), Status::kOk);
    }
    void set_queue() {
        const int priority = below(8);
        const int queue = below(8);
        const auto row = std::pair{static_cast<uint32_t>(priority), static_cast<uint32_t>(queue)};
        const bool of_port = below(2) == 0;
        const Status status =
            of_port ? chip_.queue_map().set(kB, row.first, row.second) : chip_.queue_map().set(row.first, row.second);
        EXPECT_EQ(status, queue < model_.queues ? Status::kOk : Status::kQueueRange);
        if (status == Status::kOk) {
            (of_port ? model_.port_queues : model_.chip_queues)[priority] = queue;
        }
    }
    void clear_queue() {
        const int priority = below(8);
        model_.port_queues.erase(priority);
        chip_.queue_map().clear(kB, static_cast<uint32_t>(priority));
    }

    void change_something() {
        using Change = void (PriorityLives::*)();
        constexpr Change kChanges[] = {
            &PriorityLives::set_trust,  &PriorityLives::set_default, &PriorityLives::set_own,
            &PriorityLives::set_remap,  &PriorityLives::set_dscp,    &PriorityLives::set_dscp_priority,
            &PriorityLives::set_queues, &PriorityLives::set_queue,   &PriorityLives::clear_queue};
        (this->*kChanges[below(static_cast<int>(std::size(kChanges)))])();
    }
    Told some_frame() {
        constexpr int kVersions[] = {0, 4, 6};
        return {kVersions[below(3)], below(64), below(9) - 1};
    }

    std::mt19937 random_{GetParam()};
    Model model_;
};

TEST_P(PriorityLives, FramesLeaveAsTheModelSays) {
    tag_vlan_1();
    for (int step = 0; step < kSteps && !HasFailure(); ++step) {
        change_something();
        const Told frame = some_frame();
        const Told expected = model_.classify(frame);
        EXPECT_EQ(received(frame.octets(0)), expected.octets(1)) << "step " << step;
        EXPECT_EQ(sent(kB), one_in(static_cast<uint32_t>(model_.queue_of(expected.tag)))) << "step " << step;
    }
}

INSTANTIATE_TEST_SUITE_P(Seeds, PriorityLives, test::seeds());

}  // namespace priority_model_test
}  // namespace vdevice::chip
