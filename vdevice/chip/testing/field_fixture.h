// For tests: a chip with rules for what comes in on port A.
#pragma once

#include "vdevice/chip/testing/chip_fixture.h"
#include "vdevice/chip/testing/packet_builder.h"

namespace vdevice::chip::test {

constexpr uint32_t kAll = 0xFFFFFFFF;
constexpr uint32_t kSetDscp = 1;
constexpr uint32_t kSetPriority = 11;
constexpr uint32_t kRedirectPort = 30;
constexpr uint32_t kRedirectPorts = 33;
constexpr uint32_t kMeter = 53;
constexpr uint32_t kPermit = 200;
constexpr uint32_t kDropIt = 201;
constexpr uint32_t kCopyToCpu = 202;
constexpr uint32_t kToCpu = 203;
constexpr uint32_t kSetVlan = 204;
constexpr uint32_t kCount = 205;
constexpr uint32_t kMirror = 206;
inline const Octets kAddresses = kBroadcast + station(1);
inline const Octets kDatagram = octets16(1000) + octets16(2000) + Octets(22, 0x5A);
inline const Octets kFlooded = kAddresses + kPayload;

struct Wanted {
    uint32_t code;
    uint32_t value = 0;
    uint32_t second = 0;
};

class FieldRulesTest : public ChipTest {
  protected:
    FieldTable &table() { return chip_.fields().table(); }

    void add_actions(uint32_t entry, std::initializer_list<Wanted> actions) {
        for (const Wanted &wanted : actions) {
            Action action;
            ASSERT_EQ(make_action(wanted.code, {{wanted.value}, wanted.second}, action), Status::kOk) << wanted.code;
            ASSERT_EQ(table().add_action(entry, action), Status::kOk);
        }
        ASSERT_EQ(table().install(entry), Status::kOk);
    }
    /** A rule of the group for what comes in on A, with the actions of codes and their words. */
    void add_rule(int group, uint32_t entry, std::initializer_list<Wanted> actions) {
        ASSERT_EQ(table().create(group, entry), Status::kOk);
        ASSERT_EQ(table().qualify(entry, qualifier(Field::kInPorts, 1U << kA, kAll)), Status::kOk);
        add_actions(entry, actions);
    }
    void rule(std::initializer_list<Wanted> actions) { add_rule(3, 768, actions); }
    /** A rule for all frames. */
    void rule_for_all(std::initializer_list<Wanted> actions) {
        ASSERT_EQ(table().create(4, 640), Status::kOk);
        add_actions(640, actions);
    }

    std::vector<int> outputs(int port, const Octets &frame, Time now = std::chrono::seconds{1}) {
        std::vector<int> list;
        for (const Sent &sent : send(port, frame, now)) {
            list.push_back(sent.first);
        }
        return list;
    }
    /** The frame as it arrives at B. */
    Octets received(const Octets &frame) {
        for (const Sent &sent : send(kA, frame)) {
            if (sent.first == kB) {
                return sent.second;
            }
        }
        return {};
    }
    uint64_t count(uint32_t counter, CounterType type) { return chip_.fields().counters().get(counter, type); }
    void tag_vlan_1() { ASSERT_EQ(chip_.vlans().set_ports(1, Switch::all_ports(), PortSet{}), Status::kOk); }
};

}  // namespace vdevice::chip::test
