// Random sequences of settings and frames against a plain model.
#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <set>
#include <vector>

#include "vdevice/chip/switch.h"
#include "vdevice/chip/testing/plain_model.h"
#include "vdevice/chip/testing/seeds.h"

namespace vdevice::chip {
namespace model_test {

using namespace test;

class Lives : public testing::TestWithParam<unsigned> {
  protected:
    int pick(int from, int to) { return std::uniform_int_distribution<int>{from, to}(random_); }

    /** A few VLANs and ports only, so that settings collide. */
    int some_vid() {
        constexpr int kVids[] = {0, 1, 2, 3, 100, 4094, 4095};
        return kVids[pick(0, 6)];
    }
    int some_port() {
        constexpr int kPorts[] = {0, 4, 5, 24, 25, 26, 29, 31};
        return kPorts[pick(0, 7)];
    }

    std::set<int> some_ports() {
        std::set<int> ports;
        for (int count = pick(0, 6); count > 0; --count) {
            ports.insert(some_port());
        }
        return ports;
    }

    static PortSet set_of(const std::set<int> &ports) {
        PortSet set;
        for (const int port : ports) {
            set.add(port);
        }
        return set;
    }

    static uint32_t number(int vid) { return static_cast<uint32_t>(vid); }

    Octets some_frame() {
        const Octets addresses[] = {
            test::kBroadcast, test::station(1), test::station(2), test::station(3), {0x01, 0, 0x5E, 0, 0, 1}};
        Octets frame = addresses[pick(0, 4)] + addresses[pick(0, 4)];
        if (pick(0, 1) == 1) {
            frame = frame + test::vlan_tag(static_cast<uint16_t>(pick(0, 15) * 4096 + some_vid()));
        }
        frame = frame + test::octets16(0x0800) + Octets(static_cast<size_t>(pick(0, 4)), 0x5A);
        if (pick(0, 19) == 0) {
            frame.resize(static_cast<size_t>(pick(0, static_cast<int>(frame.size()))));
        }
        return frame;
    }

    Octets some_cpu_frame() {
        const Octets frame = some_frame();
        if (frame.size() < kAddressBytes || pick(0, 19) == 0) {
            return frame;
        }
        const unsigned opcode = static_cast<unsigned>(pick(0, 7));
        const bool bitmap = opcode == 4 || opcode == 7;
        const uint32_t bits = static_cast<uint32_t>(random_());
        const uint32_t port = static_cast<uint32_t>(some_port());
        const Octets tag =
            test::transmit_tag(opcode, bitmap ? bits & 0x1FFFFFF : port, bitmap ? static_cast<uint32_t>(random_()) : 0);
        return PlainModel::part(frame, 0, kAddressBytes) + tag + PlainModel::part(frame, kAddressBytes, frame.size());
    }

    void step();
    void change_vlans();
    void change_groups();
    void change_pvid();
    void change_link();
    void grow_older();
    void send_frame();

    std::mt19937 random_{GetParam()};
    test::RecordingSink sink_;
    Switch chip_{sink_};
    PlainModel model_;
};

void Lives::change_vlans() {
    const int vid = some_vid();
    const bool possible = vid >= 1 && vid <= 4094;
    const bool exists = model_.vlans.count(vid) != 0;
    switch (pick(0, 2)) {
        case 0:
            ASSERT_EQ(chip_.vlans().create({number(vid), number(vid)}) == Status::kOk, possible && !exists);
            if (possible) {
                model_.vlans[vid];
            }
            break;
        case 1:
            ASSERT_EQ(chip_.destroy_vlans({number(vid), number(vid)}) == Status::kOk, exists && vid != 1);
            if (vid != 1 && model_.vlans.erase(vid) != 0) {
                std::erase_if(model_.stations, [&](const auto &row) { return row.first.first == vid; });
            }
            break;
        default: {
            const std::set<int> members = some_ports();
            const std::set<int> untagged = some_ports();
            const bool within = std::includes(members.begin(), members.end(), untagged.begin(), untagged.end());
            ASSERT_EQ(chip_.vlans().set_ports(number(vid), set_of(members), set_of(untagged)) == Status::kOk,
                      exists && within);
            if (exists && within) {
                model_.vlans[vid] = {members, untagged};
            }
        }
    }
}

/** The groups 1 and 2 are always there, so that a sequence need only move VLANs and set states. */
void Lives::change_groups() {
    const int group = pick(0, 2);
    const int vid = some_vid();
    const int port = some_port();
    const int state = pick(0, 3) == 0 ? pick(0, 4) : 4;
    if (pick(0, 1) == 0) {
        const bool possible = vid >= 1 && vid <= 4094;
        ASSERT_EQ(chip_.stp().add_vlan(group, number(vid)) == Status::kOk, possible);
        if (possible) {
            model_.groups[vid] = group;
        }
        return;
    }
    ASSERT_EQ(chip_.stp().set_state(group, port, number(state)) == Status::kOk, port != 0);
    if (port != 0) {
        model_.states[{group, port}] = state;
    }
}

void Lives::send_frame() {
    const Time now = std::chrono::seconds{model_.now};
    const int port = some_port();
    const Octets frame = port == 0 ? some_cpu_frame() : some_frame();
    chip_.receive(now, port, frame);
    const std::vector<Sent> sent = sink_.take();
    const std::set<Sent> expected = port == 0 ? model_.from_cpu(frame) : model_.from_port(port, frame);
    ASSERT_EQ(std::set<Sent>(sent.begin(), sent.end()), expected);
    ASSERT_EQ(sent.size(), expected.size()) << "a frame left twice";
}

void Lives::change_pvid() {
    const int port = some_port();
    const int vid = some_vid();
    ASSERT_EQ(chip_.set_pvid(port, number(vid)) == Status::kOk, model_.vlans.count(vid) != 0);
    if (model_.vlans.count(vid) != 0) {
        model_.pvid[port] = vid;
    }
}

void Lives::change_link() {
    const int port = some_port();
    const bool link = pick(0, 4) != 0;
    chip_.set_link(port, link);
    if (link) {
        model_.up.insert(port);
    } else {
        model_.up.erase(port);
    }
}

void Lives::grow_older() {
    model_.now += pick(0, 100);
    model_.age();
    chip_.tick(std::chrono::seconds{model_.now});
}

void Lives::step() {
    switch (pick(0, 19)) {
        case 0:
        case 1:
            change_vlans();
            break;
        case 2:
            change_pvid();
            break;
        case 3:
            change_link();
            break;
        case 4:
            grow_older();
            break;
        case 5:
            change_groups();
            break;
        default:
            send_frame();
    }
    ASSERT_EQ(chip_.macs().size(), model_.stations.size());
}

TEST_P(Lives, AreTheModels) {
    constexpr int kSteps = 20000;
    ASSERT_EQ(chip_.stp().create(1), Status::kOk);
    ASSERT_EQ(chip_.stp().create(2), Status::kOk);
    for (int number = 0; number < kSteps; ++number) {
        step();
        ASSERT_FALSE(HasFatalFailure()) << "step " << number;
    }
    EXPECT_EQ(chip_.vlans().list().size(), model_.vlans.size());
}

INSTANTIATE_TEST_SUITE_P(Seeds, Lives, test::seeds());

}  // namespace model_test
}  // namespace vdevice::chip
