// Trunks: their table, the way of frames to and from them, and how flows are spread.
#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <map>
#include <set>

#include "vdevice/chip/testing/chip_fixture.h"
#include "vdevice/chip/testing/packet_builder.h"

namespace vdevice::chip {
namespace {

using namespace std::chrono_literals;
using test::kA;
using test::kB;
using test::kBroadcast;
using test::kC;
using test::kCpu;
using test::kPayload;
using test::Octets;
using test::operator+;
using test::Sent;
using test::station;

constexpr int kTrunk = 3;
const std::vector<int> kMembers = {10, 11, 12, 13};
const std::set<int> kMemberSet = {10, 11, 12, 13};

class TrunkTest : public test::ChipTest {
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

Octets ip_packet(uint8_t from, uint8_t to, uint16_t from_port, uint16_t to_port, uint8_t protocol = 17,
                 uint16_t fragment = 0) {
    const Octets ports = test::octets16(from_port) + test::octets16(to_port);
    return test::ipv4({.protocol = protocol,
                       .source = test::ipv4_address(from),
                       .destination = test::ipv4_address(to),
                       .fragment = fragment},
                      ports + Octets(4, 0)) +
           Octets(18, 0);
}

TEST_F(TrunkTest, AreCreatedOnceAndDestroyedOnce) {
    for (const int64_t missing : {-1, 8, 255}) {
        EXPECT_EQ(chip_.create_trunk(missing), Status::kTrunkRange);
        EXPECT_EQ(chip_.destroy_trunk(missing), Status::kTrunkRange);
    }
    for (int trunk = 0; trunk < TrunkTable::kTrunks; ++trunk) {
        EXPECT_EQ(chip_.destroy_trunk(trunk), Status::kTrunkMissing);
        EXPECT_EQ(chip_.set_trunk(trunk, {10}), Status::kTrunkMissing);
        EXPECT_EQ(chip_.set_trunk_balance(trunk, 1), Status::kTrunkMissing);
        EXPECT_EQ(chip_.create_trunk(trunk), Status::kOk);
        EXPECT_EQ(chip_.create_trunk(trunk), Status::kTrunkExists);
    }
    EXPECT_EQ(chip_.destroy_trunk(7), Status::kOk);
    EXPECT_EQ(chip_.destroy_trunk(7), Status::kTrunkMissing);
    chip_.destroy_all_trunks();
    EXPECT_EQ(chip_.destroy_trunk(0), Status::kTrunkMissing);
}

TEST_F(TrunkTest, MembersAreRefusedForAReason) {
    make_trunk();
    ASSERT_EQ(chip_.create_trunk(0), Status::kOk);
    EXPECT_EQ(chip_.set_trunk(0, {1, 2, 3, 4, 5, 6, 7, 8, 9}), Status::kTrunkFull);
    EXPECT_EQ(chip_.set_trunk(0, {1, 32}), Status::kNoPort);
    EXPECT_EQ(chip_.set_trunk(0, {1, 1}), Status::kTrunkMember);
    EXPECT_EQ(chip_.set_trunk(0, {1, 0}), Status::kTrunkMember);
    EXPECT_EQ(chip_.set_trunk(0, {1, 10}), Status::kTrunkMember);
    EXPECT_TRUE(chip_.trunks().find(0)->members.empty());
    EXPECT_EQ(chip_.set_trunk(0, {1, 2, 3, 4, 5, 6, 7, 8}), Status::kOk);
    EXPECT_EQ(chip_.set_trunk(kTrunk, {13, 10}), Status::kOk);
    EXPECT_EQ(chip_.trunks().find(kTrunk)->members, (std::vector<int>{13, 10}));
    EXPECT_EQ(chip_.set_trunk(0, {11}), Status::kOk) << "it left its trunk";
    for (const uint32_t mode : {0U, 7U, 0xFFFFFFFFU}) {
        EXPECT_EQ(chip_.set_trunk_balance(0, mode), Status::kBadArgument);
    }
}

TEST_F(TrunkTest, AFloodedFrameLeavesOnce) {
    make_trunk();
    for (uint8_t number = 1; number < 50; ++number) {
        const auto ports = outputs(kA, kBroadcast + station(number) + kPayload);
        std::set<int> others;
        int copies = 0;
        for (const int port : ports) {
            if (kMemberSet.count(port) != 0) {
                ++copies;
            } else {
                others.insert(port);
            }
        }
        EXPECT_EQ(copies, 1);
        EXPECT_EQ(others, (std::set<int>{kCpu, kB, kC}));
    }
}

TEST_F(TrunkTest, NothingReturnsToTheTrunkThatItCameFrom) {
    make_trunk();
    EXPECT_EQ(outputs(11, kBroadcast + station(1) + kPayload), (std::vector<int>{kCpu, kA, kB, kC}));
    EXPECT_TRUE(send(12, station(1) + station(2) + kPayload).empty()) << "known behind the same trunk";
    EXPECT_EQ(dropped(12, Drop::kSamePort), 1U);
}

TEST_F(TrunkTest, AddressesBelongToTheTrunk) {
    make_trunk();
    send(11, kBroadcast + station(1) + kPayload);
    send(12, kBroadcast + station(1) + kPayload);
    EXPECT_EQ(chip_.macs().counters().moved, 0U) << "from one member to another is no move";
    ASSERT_EQ(find(1)->trunk, kTrunk);
    chip_.set_link(11, false);
    chip_.set_link(12, false);
    EXPECT_NE(way_of(station(1) + station(9) + kPayload), -1);
    send(kB, kBroadcast + station(1) + kPayload);
    EXPECT_EQ(chip_.macs().counters().moved, 1U);
    EXPECT_EQ(way_of(station(1) + station(9) + kPayload), kB);
}

TEST_F(TrunkTest, AddressesComeAndGoWithTheTrunk) {
    for (const int port : kMembers) {
        chip_.set_link(port, true);
    }
    send(10, kBroadcast + station(1) + kPayload);
    ASSERT_EQ(chip_.add_static_mac(Mac::at(station(2), 0), 1, 10), Status::kOk);
    make_trunk();
    EXPECT_EQ(find(1)->trunk, kTrunk) << "learned before the port joined";
    EXPECT_EQ(find(2)->trunk, kTrunk);
    ASSERT_EQ(chip_.destroy_trunk(kTrunk), Status::kOk);
    EXPECT_EQ(find(1), nullptr);
    ASSERT_NE(find(2), nullptr) << "static entries stay";
    EXPECT_EQ(way_of(station(2) + station(9) + kPayload), 10);
}

TEST_F(TrunkTest, MembersWithoutLinkAreSkipped) {
    make_trunk();
    send(10, kBroadcast + station(1) + kPayload);
    std::vector<int> left = kMembers;
    while (!left.empty()) {
        std::set<int> used;
        for (uint8_t number = 20; number < 220; ++number) {
            used.insert(way_of(station(1) + station(number) + kPayload));
        }
        EXPECT_EQ(used, std::set<int>(left.begin(), left.end()));
        chip_.set_link(left.back(), false);
        left.pop_back();
    }
    EXPECT_TRUE(send(kA, station(1) + station(9) + kPayload).empty());
    EXPECT_EQ(dropped(kA, Drop::kEgressDown), 1U);
}

TEST_F(TrunkTest, AFlowKeepsItsMember) {
    make_trunk();
    send(10, kBroadcast + station(1) + kPayload);
    for (uint8_t number = 20; number < 40; ++number) {
        const Octets frame = station(1) + station(number) + kPayload;
        const int way = way_of(frame);
        for (int i = 0; i < 10; ++i) {
            EXPECT_EQ(way_of(frame), way);
        }
    }
}

TEST_F(TrunkTest, FlowsAreSpreadEvenlyByEveryMode) {
    make_trunk();
    constexpr int kFlows = 2000;
    for (uint32_t mode = 1; mode <= 6; ++mode) {
        ASSERT_EQ(chip_.set_trunk_balance(kTrunk, mode), Status::kOk);
        std::map<int, int> used;
        send(10, kBroadcast + station(1) + kPayload);
        for (int flow = 0; flow < kFlows; ++flow) {
            const Octets source = {0x02, 0, 0, 1, static_cast<uint8_t>(flow / 250), static_cast<uint8_t>(flow % 250)};
            ++used[way_of(station(1) + source + ip_packet(1, 2, static_cast<uint16_t>(1000 + flow), 53))];
        }
        ASSERT_EQ(used.size(), kMembers.size()) << mode;
        for (const auto &[port, count] : used) {
            EXPECT_GT(count, kFlows / 8) << "mode " << mode << ", port " << port;
        }
    }
}

/** By how many members frames leave that differ in one thing only. */
class HashFields : public TrunkTest {
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
    static Octets macs_destination(uint8_t n) { return station(n) + station(110) + kPayload; }
    static Octets ip_source(uint8_t n) { return station(1) + station(110) + ip_packet(n, 9, 1, 2); }
    static Octets ip_destination(uint8_t n) { return station(1) + station(110) + ip_packet(9, n, 1, 2); }
    static Octets port_source(uint8_t n) { return station(1) + station(110) + ip_packet(8, 9, n, 2); }
    static Octets port_destination(uint8_t n) { return station(1) + station(110) + ip_packet(8, 9, 1, n); }
};

TEST_F(HashFields, MacSource) {
    prepare(2, {true, false});
    EXPECT_EQ(differing(macs_source), 4);
    EXPECT_EQ(differing(macs_destination), 1);
    EXPECT_EQ(differing(ip_source), 1);
}

TEST_F(HashFields, MacDestination) {
    prepare(1, {false, true});
    EXPECT_EQ(differing(macs_source), 1);
    EXPECT_EQ(differing(macs_destination), 4);
}

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

TEST_F(HashFields, CutPacketsAreHashedByWhatIsThere) {
    prepare(6, {true, true});
    const Octets whole = station(1) + station(110) + ip_packet(8, 9, 1, 2);
    for (size_t size = kHeaderBytes; size <= whole.size(); ++size) {
        EXPECT_NE(way_of({whole.begin(), whole.begin() + static_cast<ptrdiff_t>(size)}), -1) << size;
    }
}

class Standby : public TrunkTest {
  protected:
    // What the software does when member 13 loses its link: the chip's members are those with a link, and no more.
    void lose_one() {
        make_trunk();
        ASSERT_EQ(chip_.set_trunk_configured(kTrunk, kMembers), Status::kOk);
        chip_.set_link(13, false);
        ASSERT_EQ(chip_.set_trunk(kTrunk, {10, 11, 12}), Status::kOk);
        chip_.set_link(13, true);
    }
};

TEST_F(Standby, APortThatIsBackSendsNothingUntilItIsAMember) {
    lose_one();
    for (uint8_t number = 1; number < 50; ++number) {
        const auto ports = outputs(kA, kBroadcast + station(number) + kPayload);
        EXPECT_EQ(std::count(ports.begin(), ports.end(), 13), 0);
        EXPECT_EQ(ports.size(), 4U);
    }
    ASSERT_EQ(chip_.set_trunk(kTrunk, kMembers), Status::kOk);
    std::set<int> used;
    for (uint8_t number = 1; number < 50; ++number) {
        for (const int port : outputs(kA, kBroadcast + station(number) + kPayload)) {
            used.insert(port);
        }
    }
    EXPECT_EQ(used.count(13), 1U);
}

TEST_F(Standby, ItTakesWhatTheNeighbourSendsAlready) {
    lose_one();
    EXPECT_EQ(outputs(13, kBroadcast + station(1) + kPayload), (std::vector<int>{kCpu, kA, kB, kC}));
    EXPECT_EQ(find(1)->trunk, kTrunk);
    EXPECT_NE(way_of(station(1) + station(9) + kPayload), 13);
}

TEST_F(Standby, AnEmptiedTrunkKeepsItsPorts) {
    lose_one();
    for (const int port : kMembers) {
        chip_.set_link(port, false);
    }
    ASSERT_EQ(chip_.destroy_trunk(kTrunk), Status::kOk);
    ASSERT_EQ(chip_.create_trunk(kTrunk), Status::kOk);
    chip_.set_link(10, true);
    EXPECT_EQ(outputs(kA, kBroadcast + station(1) + kPayload), (std::vector<int>{kCpu, kB, kC}));
    EXPECT_EQ(chip_.trunk_of(10), kTrunk);
}

TEST_F(Standby, ADestroyedTrunkFreesItsPorts) {
    lose_one();
    ASSERT_EQ(chip_.destroy_trunk(kTrunk), Status::kOk);
    EXPECT_EQ(outputs(kA, kBroadcast + station(1) + kPayload).size(), 7U);
    ASSERT_EQ(chip_.create_trunk(kTrunk), Status::kOk);
    EXPECT_EQ(outputs(kA, kBroadcast + station(1) + kPayload).size(), 7U) << "the new one has no members";
}

TEST_F(Standby, TheMembersOfATrunkThatStaysAwayAreForgotten) {
    lose_one();
    for (const int port : kMembers) {
        chip_.set_link(port, false);
    }
    ASSERT_EQ(chip_.destroy_trunk(kTrunk), Status::kOk);
    chip_.tick(5s);
    ASSERT_EQ(chip_.create_trunk(kTrunk), Status::kOk);
    chip_.set_link(10, true);
    EXPECT_EQ(outputs(kA, kBroadcast + station(1) + kPayload), (std::vector<int>{kCpu, kB, 10, kC}));
}

TEST_F(Standby, APortThatLeavesTakesItsAddressesAlong) {
    make_trunk();
    ASSERT_EQ(chip_.set_trunk_configured(kTrunk, kMembers), Status::kOk);
    send(13, kBroadcast + station(1) + kPayload);
    send(12, kBroadcast + station(2) + kPayload);
    ASSERT_EQ(chip_.set_trunk(kTrunk, {10, 11, 12}), Status::kOk);
    ASSERT_NE(find(1), nullptr);
    ASSERT_EQ(chip_.set_trunk_configured(kTrunk, {10, 11, 12}), Status::kOk);
    EXPECT_EQ(find(1), nullptr);
    EXPECT_EQ(find(2)->trunk, kTrunk);
    EXPECT_EQ(chip_.trunk_of(13), TrunkTable::kNone);
    EXPECT_EQ(outputs(13, kBroadcast + station(3) + kPayload).size(), 5U) << "a port of its own again";
}

TEST_F(TrunkTest, EgressSetsAndVlansChooseAmongMembers) {
    make_trunk();
    send(10, kBroadcast + station(1) + kPayload);
    ASSERT_EQ(chip_.set_egress(kA, PortSet::of(12)), Status::kOk);
    EXPECT_EQ(way_of(station(1) + station(9) + kPayload), 12);
    ASSERT_EQ(chip_.set_egress(kA, PortSet::of(kB)), Status::kOk);
    EXPECT_EQ(way_of(station(1) + station(9) + kPayload), -1);
    EXPECT_EQ(dropped(kA, Drop::kIsolated), 1U);
}

}  // namespace
}  // namespace vdevice::chip
