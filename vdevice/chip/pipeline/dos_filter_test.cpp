// Frames that no honest host sends: each is dropped for its reason, and what looks like it but is honest passes.
#include <gtest/gtest.h>

#include "vdevice/chip/testing/chip_fixture.h"
#include "vdevice/chip/testing/packet_builder.h"

namespace vdevice::chip {
namespace dos_filter_test {

using namespace test;

constexpr uint8_t kTcp = 6;
constexpr uint8_t kUdp = 17;
constexpr uint8_t kSynFlag = 0x02;
constexpr uint8_t kAckFlag = 0x10;
constexpr size_t kFlooded = 3;

Octets frame(const Octets &packet) {
    return kBroadcast + station(1) + packet;
}
Octets segment4(uint8_t flags) {
    return frame(test::ipv4({.protocol = kTcp}, tcp(flags)));
}
Octets segment6(uint8_t flags) {
    return frame(test::ipv6({kTcp}, tcp(flags)));
}
Octets fragment4(uint16_t fragment, size_t length, uint8_t protocol = kTcp) {
    return frame(test::ipv4({.protocol = protocol, .fragment = fragment}, Octets(length, 0)) + Octets(46, 0));
}

struct Attack {
    const char *name;
    Octets octets;
    Drop reason;
};

const Attack kAttacks[] = {
    {"SameMac", station(1) + station(1) + test::kPayload, Drop::kDosSameMac},
    {"Land4", frame(test::ipv4({.protocol = kUdp, .destination = test::ipv4_address(1)}, Octets(8, 0))),
     Drop::kDosLand},
    {"Land6", frame(test::ipv6({kUdp, test::ipv6_address(2)}, Octets(8, 0))), Drop::kDosLand},
    {"LandBehindATag",
     frame(test::vlan_tag(1) + test::ipv4({.protocol = kUdp, .destination = test::ipv4_address(1)}, Octets(8, 0))),
     Drop::kDosLand},
    {"NullScan4", segment4(0), Drop::kDosNullScan},
    {"NullScan6", segment6(0xC0), Drop::kDosNullScan},
    {"NullScanBehindOptions", frame(test::ipv4({.protocol = kTcp, .options = Octets(8, 1)}, tcp(0))),
     Drop::kDosNullScan},
    {"SynFin4", segment4(0x03), Drop::kDosSynFin},
    {"SynFinAndAll", segment4(0x3F), Drop::kDosSynFin},
    {"SynFin6", frame(test::ipv6({0}, test::router_alert(kTcp) + tcp(0x03))), Drop::kDosSynFin},
    {"Xmas", segment4(0x29), Drop::kDosXmasScan},
    {"TinyOffset4", fragment4(1, 12), Drop::kDosFragment},
    {"TinyOffsetOfMany", fragment4(kMoreFragments | 1, 16), Drop::kDosFragment},
    {"TinyOffset6", frame(test::ipv6({44}, test::fragment_header(kTcp, 1, false) + Octets(12, 0))), Drop::kDosFragment},
    {"ShortFirst4", fragment4(kMoreFragments, 16), Drop::kDosFragment},
    {"ShortFirst6", frame(test::ipv6({44}, test::fragment_header(kTcp, 0, true) + Octets(16, 0))), Drop::kDosFragment},
};

class AttackTest : public test::ChipTest, public testing::WithParamInterface<Attack> {};

TEST_P(AttackTest, IsDroppedForItsReasonAndTeachesNothing) {
    chip_.set_attack_filter(true);
    EXPECT_TRUE(send(kA, GetParam().octets).empty());
    for (size_t reason = 0; reason < kDropReasons; ++reason) {
        const auto drop = static_cast<Drop>(reason);
        EXPECT_EQ(dropped(kA, drop), drop == GetParam().reason ? 1U : 0U) << name(drop);
    }
    EXPECT_EQ(chip_.macs().size(), 0U);
}

TEST_P(AttackTest, PassesFromTheCpu) {
    chip_.set_attack_filter(true);
    const Octets &octets = GetParam().octets;
    send(kCpu, Octets(octets.begin(), octets.begin() + 12) + test::transmit_tag(1, 0) +
                   Octets(octets.begin() + 12, octets.end()));
    EXPECT_EQ(dropped(kCpu, GetParam().reason), 0U);
}

INSTANTIATE_TEST_SUITE_P(Filter, AttackTest, testing::ValuesIn(kAttacks),
                         [](const auto &attack) { return std::string{attack.param.name}; });

class DosFilterTest : public test::ChipTest {};

TEST_F(DosFilterTest, HonestFramesPass) {
    chip_.set_attack_filter(true);
    const Octets honest[] = {
        kBroadcast + station(1) + test::octets16(0x0806) + Octets(46, 0),
        segment4(kSynFlag),
        segment4(kSynFlag | kAckFlag),
        segment4(0x11),
        segment4(0x39),  // FIN, PSH and URG with ACK: the end of a stream in a hurry
        segment4(0x04),
        segment6(kAckFlag),
        frame(test::ipv4({.protocol = kUdp}, Octets(20, 0))),
        fragment4(kMoreFragments, 24 + 0x10, kUdp),
        fragment4(1, 12, kUdp),
        fragment4(kMoreFragments, 8, kUdp),
        fragment4(2, 12),
        fragment4(185, 8),
        fragment4(185, 32),  // no header, whatever stands where its flags would be
        frame(test::ipv4({.protocol = kTcp, .fragment = kMoreFragments}, tcp(kAckFlag))),
        frame(test::ipv6({44}, test::fragment_header(kTcp, 0, true) + tcp(kAckFlag) + Octets(4, 0))),
        frame(test::ipv6({44}, test::fragment_header(kTcp, 2, false) + Octets(12, 0))),
    };
    for (const Octets &octets : honest) {
        EXPECT_EQ(send(kA, octets).size(), kFlooded) << &octets - honest;
    }
}

}  // namespace dos_filter_test
}  // namespace vdevice::chip
