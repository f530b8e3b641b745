// How flows are spread over the members of a trunk.
#include <gtest/gtest.h>

#include <functional>
#include <set>

#include "vdevice/chip/testing/trunk_fixture.h"

namespace vdevice::chip {
namespace trunk_hash_test {

using namespace test;

/** By how many members frames leave that differ in one thing only. */
class HashFields : public test::TrunkTest {
  protected:
    int differing(const std::function<Octets(uint8_t)> &frame) {
        std::set<int> ways;
        for (uint8_t number = 1; number <= 100; ++number) {
            ways.insert(way_of(frame(number)));
        }
        EXPECT_EQ(ways.count(-1), 0U);
        return static_cast<int>(ways.size());
    }

    void prepare(uint32_t mode, HashSides sides) {
        make_trunk();
        ASSERT_EQ(chip_.set_trunk_balance(kTrunk, mode), Status::kOk);
        chip_.set_hash_sides(sides);
        for (uint8_t number = 1; number <= 101; ++number) {
            send(10, kBroadcast + station(number) + kPayload);
        }
    }

    // Destinations 1 to 101 are behind the trunk, sources from 110 on are not.
    static Octets macs_source(uint8_t n) { return station(1) + station(static_cast<uint8_t>(110 + n)) + kPayload; }
    static Octets ip_source(uint8_t n) { return station(1) + station(110) + ip_packet(n, 9, 1, 2); }
    static Octets ip_destination(uint8_t n) { return station(1) + station(110) + ip_packet(9, n, 1, 2); }
    static Octets port_source(uint8_t n) { return station(1) + station(110) + ip_packet(8, 9, n, 2); }
    static Octets port_destination(uint8_t n) { return station(1) + station(110) + ip_packet(8, 9, 1, n); }
};

TEST_F(HashFields, IpSource) {
    prepare(5, {true, false});
    EXPECT_EQ(differing(ip_source), 4);
    EXPECT_EQ(differing(port_source), 4);
    EXPECT_EQ(differing(ip_destination), 1);
    EXPECT_EQ(differing(port_destination), 1);
    EXPECT_EQ(differing(macs_source), 4) << "not IP: by MAC address";
}

TEST_F(HashFields, IpDestination) {
    prepare(4, {false, true});
    EXPECT_EQ(differing(ip_source), 1);
    EXPECT_EQ(differing(port_source), 1);
    EXPECT_EQ(differing(ip_destination), 4);
    EXPECT_EQ(differing(port_destination), 4);
}

TEST_F(HashFields, FragmentsGoTogether) {
    prepare(6, {true, true});
    EXPECT_EQ(differing([](uint8_t n) { return station(1) + station(110) + ip_packet(8, 9, n, n, 17, 0x2000); }), 1);
    EXPECT_EQ(differing([](uint8_t n) { return station(1) + station(110) + ip_packet(8, 9, n, n, 17, 1); }), 1);
    EXPECT_EQ(differing([](uint8_t n) { return station(1) + station(110) + ip_packet(8, 9, n, n, 17, 0x4000); }), 4)
        << "whole, and not to be fragmented";
    EXPECT_EQ(differing([](uint8_t n) { return station(1) + station(110) + ip_packet(8, 9, n, n, 1); }), 1)
        << "no ports in this protocol";
}

TEST_F(HashFields, Ipv6) {
    prepare(6, {true, true});
    const auto packet = [](uint8_t address, uint8_t port) {
        return station(1) + station(110) + test::octets16(0x86DD) + Octets{0x60, 0, 0, 0, 0, 8, 6, 64} +
               Octets(15, 0x20) + Octets{address} + Octets(16, 0x20) + Octets{0, port, 0, 80} + Octets(4, 0);
    };
    EXPECT_EQ(differing([&](uint8_t n) { return packet(n, 1); }), 4);
    EXPECT_EQ(differing([&](uint8_t n) { return packet(1, n); }), 4);
}

}  // namespace trunk_hash_test
}  // namespace vdevice::chip
