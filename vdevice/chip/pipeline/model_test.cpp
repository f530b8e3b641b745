// Random lives of the chip against a model that is as plain as possible: sets, maps and whole frames, written from the
// rules and not from the chip's code.
#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <random>
#include <set>

#include "vdevice/chip/switch.h"
#include "vdevice/chip/testing/frame_builder.h"

namespace vdevice::chip {
namespace {

using namespace std::chrono_literals;
using test::Octets;
using test::operator+;
using test::Sent;

constexpr int kModelPorts = 32;
constexpr int64_t kAgeSeconds = 300;

struct Model {
    struct Member {
        std::set<int> members;
        std::set<int> untagged;
    };
    struct Station {
        int port;
        int64_t seen;
    };

    std::map<int, Member> vlans;
    std::map<std::pair<int, Octets>, Station> stations;
    std::set<int> up;
    std::map<int, int> pvid;
    std::map<int, int> groups;                  // of VLANs that are not in the default group
    std::map<std::pair<int, int>, int> states;  // by group and port, where they are not 4, forwarding
    int64_t now = 0;

    Model() {
        for (int port = 0; port < kModelPorts; ++port) {
            vlans[1].members.insert(port);
            if (port != 0) {
                vlans[1].untagged.insert(port);
            }
            pvid[port] = 1;
        }
    }

    int state(int vid, int port) {
        const int group = groups.count(vid) != 0 ? groups[vid] : 0;
        const auto found = states.find({group, port});
        return found == states.end() ? 4 : found->second;
    }

    static Octets part(const Octets &frame, size_t from, size_t to) {
        return {frame.begin() + static_cast<ptrdiff_t>(from), frame.begin() + static_cast<ptrdiff_t>(to)};
    }

    std::set<Sent> from_port(int ingress, const Octets &frame) {
        if (up.count(ingress) == 0 || frame.size() < 14) {
            return {};
        }
        Octets rest = part(frame, 12, frame.size());
        int vid = 0;
        int priority = 0;
        if (rest.at(0) == 0x81 && rest.at(1) == 0x00) {
            if (rest.size() < 6) {
                return {};
            }
            vid = (rest.at(2) & 0x0F) * 256 + rest.at(3);
            priority = rest.at(2) & 0xF0;
            rest = part(rest, 4, rest.size());
        }
        if (vid == 0) {
            vid = pvid[ingress];
        }
        if (vlans.count(vid) == 0 || vlans[vid].members.count(ingress) == 0) {
            return {};
        }
        const Octets destination = part(frame, 0, 6);
        const Octets source = part(frame, 6, 12);
        if (state(vid, ingress) >= 3 && source.at(0) % 2 == 0) {
            stations[{vid, source}] = {ingress, now};
        }
        if (state(vid, ingress) != 4) {
            return {};
        }
        std::set<int> outputs = vlans[vid].members;
        if (const auto known = stations.find({vid, destination}); known != stations.end()) {
            outputs = {known->second.port};
        }
        const Octets tag = {0x81, 0x00, static_cast<uint8_t>(priority | vid / 256), static_cast<uint8_t>(vid % 256)};
        std::set<Sent> sent;
        for (const int port : outputs) {
            if (port == ingress || up.count(port) == 0 || vlans[vid].members.count(port) == 0 ||
                state(vid, port) != 4) {
                continue;
            }
            if (port == 0) {
                const Octets to_cpu = {0x88, 0x74, 0, 0, 0, static_cast<uint8_t>(ingress)};
                sent.insert({port, destination + source + to_cpu + tag + rest});
            } else if (vlans[vid].untagged.count(port) != 0) {
                sent.insert({port, destination + source + rest});
            } else {
                sent.insert({port, destination + source + tag + rest});
            }
        }
        return sent;
    }

    std::set<Sent> from_cpu(const Octets &frame) {
        if (up.count(0) == 0 || frame.size() < 24 || frame[12] != 0x88 || frame[13] != 0x74) {
            return {};
        }
        const int opcode = frame[14] / 32;
        const Octets inner = part(frame, 0, 12) + part(frame, 22, frame.size());
        if (opcode == 1) {
            return from_port(0, inner);
        }
        const uint32_t field = (frame[14] % 2U) << 24 | frame[15] * 65536U | frame[16] * 256U | frame[17];
        const uint32_t more = frame[18] * 16777216U | frame[19] * 65536U | frame[20] * 256U | frame[21];
        std::set<uint32_t> outputs;
        if (opcode == 3 || opcode == 5 || opcode == 6) {
            outputs.insert(field);
        } else if (opcode == 4 || opcode == 7) {
            for (uint32_t bit = 0; bit < 32; ++bit) {
                if (bit < 25 && (field >> bit) % 2 == 1) {
                    outputs.insert(bit);
                }
                if ((more >> bit) % 2 == 1) {
                    outputs.insert(bit + 25);
                }
            }
        }
        std::set<Sent> sent;
        for (const uint32_t output : outputs) {
            const int port = static_cast<int>(output);
            if (port == 0 || up.count(port) == 0) {
                continue;
            }
            Octets out = inner;
            if ((opcode == 3 || opcode == 4) && inner.size() >= 18 && inner[12] == 0x81 && inner[13] == 0x00) {
                const int vid = (inner[14] & 0x0F) * 256 + inner[15];
                if (vlans.count(vid) != 0 && vlans[vid].untagged.count(port) != 0) {
                    out = part(inner, 0, 12) + part(inner, 16, inner.size());
                }
            }
            sent.insert({port, out});
        }
        return sent;
    }

    void age() {
        for (auto station = stations.begin(); station != stations.end();) {
            station = now - station->second.seen >= kAgeSeconds ? stations.erase(station) : std::next(station);
        }
    }
};

class Lives : public testing::TestWithParam<unsigned> {
  protected:
    int pick(int from, int to) { return std::uniform_int_distribution<int>{from, to}(random_); }

    /** A few VLANs and ports only, so that lives meet. */
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
        return Model::part(frame, 0, kAddressBytes) + tag + Model::part(frame, kAddressBytes, frame.size());
    }

    void step();
    void change_vlans();
    void change_groups();
    void send_frame();

    std::mt19937 random_{GetParam()};
    test::RecordingSink sink_;
    Switch chip_{sink_};
    Model model_;
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

/** The groups 1 and 2 are always there, so that lives need only move VLANs and set states. */
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

void Lives::step() {
    const int port = some_port();
    switch (pick(0, 19)) {
        case 0:
        case 1:
            change_vlans();
            break;
        case 2: {
            const int vid = some_vid();
            ASSERT_EQ(chip_.set_pvid(port, number(vid)) == Status::kOk, model_.vlans.count(vid) != 0);
            if (model_.vlans.count(vid) != 0) {
                model_.pvid[port] = vid;
            }
            break;
        }
        case 3: {
            const bool link = pick(0, 4) != 0;
            chip_.set_link(port, link);
            if (link) {
                model_.up.insert(port);
            } else {
                model_.up.erase(port);
            }
            break;
        }
        case 4:
            model_.now += pick(0, 100);
            model_.age();
            chip_.tick(std::chrono::seconds{model_.now});
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

INSTANTIATE_TEST_SUITE_P(Seeds, Lives, testing::Range(1U, 9U));

}  // namespace
}  // namespace vdevice::chip
