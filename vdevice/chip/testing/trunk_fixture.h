// For tests: a chip with a trunk of four ports.
#pragma once

#include <set>
#include <vector>

#include "vdevice/chip/testing/chip_fixture.h"
#include "vdevice/chip/testing/packet_builder.h"

namespace vdevice::chip::test {

constexpr int kTrunk = 3;
inline const std::vector<int> kMembers = {10, 11, 12, 13};
inline const std::set<int> kMemberSet = {10, 11, 12, 13};

class TrunkTest : public ChipTest {
  protected:
    void make_trunk() {
        for (const int port : kMembers) {
            chip_.set_link(port, true);
        }
        ASSERT_EQ(chip_.create_trunk(kTrunk), Status::kOk);
        ASSERT_EQ(chip_.set_trunk(kTrunk, kMembers), Status::kOk);
    }

    std::vector<int> outputs(int port, const Octets &frame) {
        std::vector<int> list;
        for (const Sent &sent : send(port, frame)) {
            list.push_back(sent.first);
        }
        return list;
    }

    /** The one port that the frame left by, or -1. */
    int way_of(const Octets &frame) {
        const auto list = outputs(kA, frame);
        return list.size() == 1 ? list[0] : -1;
    }

    const MacEntry *find(uint8_t number) { return chip_.macs().find(Mac::at(station(number), 0), 1); }
};

inline Octets ip_packet(uint8_t from, uint8_t to, uint16_t from_port, uint16_t to_port, uint8_t protocol = 17,
                        uint16_t fragment = 0) {
    const Octets ports = octets16(from_port) + octets16(to_port);
    return ipv4({.protocol = protocol,
                 .source = ipv4_address(from),
                 .destination = ipv4_address(to),
                 .fragment = fragment},
                ports + Octets(4, 0)) +
           Octets(18, 0);
}

}  // namespace vdevice::chip::test
