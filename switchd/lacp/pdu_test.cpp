// Octets of LACPDUs and markers, and what is refused.
#include "switchd/lacp/pdu.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

namespace switchd::lacp {
namespace pdu_test {

constexpr Mac kSource = {0x02, 0, 0, 0, 0, 0x11};
constexpr Lacpdu kLacpdu = {{{0x8001, {2, 3, 4, 5, 6, 7}}, 0x0102, 0x8002, 0x0304, 0x3D},
                            {{0x7001, {8, 9, 10, 11, 12, 13}}, 0x1112, 0x7002, 0x1314, 0xC7}};
constexpr Marker kMarker = {false, 0x0102, {2, 3, 4, 5, 6, 7}, 0xA1A2A3A4};

std::vector<uint8_t> octets_of(const Frame &frame) {
    return {frame.begin(), frame.end()};
}

std::vector<uint8_t> changed(const Frame &frame, size_t place, uint8_t value) {
    auto octets = octets_of(frame);
    octets.at(place) = value;
    return octets;
}

TEST(Pdu, LacpduHasTheOctetsOfTheStandard) {
    const std::vector<uint8_t> head = {0x01, 0x80, 0xC2, 0,    0,    2,    0x02, 0,  0,  0,
                                       0,    0x11, 0x88, 0x09, 1,    1,  // to, from, type, LACP, version
                                       1,    20,   0x80, 0x01, 2,    3,    4,    5,  6,  7,
                                       1,    2,    0x80, 0x02, 3,    4,    0x3D, 0,  0,  0,  // actor
                                       2,    20,   0x70, 0x01, 8,    9,    10,   11, 12, 13,
                                       0x11, 0x12, 0x70, 0x02, 0x13, 0x14, 0xC7, 0,  0,  0,  // partner
                                       3,    16};                                            // collector
    std::vector<uint8_t> expected(124, 0);
    std::copy(head.begin(), head.end(), expected.begin());
    EXPECT_EQ(octets_of(frame_of(kLacpdu, kSource)), expected);
}

TEST(Pdu, MarkerHasTheOctetsOfTheStandard) {
    const std::vector<uint8_t> head = {0x01, 0x80, 0xC2, 0, 0, 2, 0x02, 0, 0, 0, 0, 0x11, 0x88, 0x09, 2,
                                       1,    1,    16,   1, 2, 2, 3,    4, 5, 6, 7, 0xA1, 0xA2, 0xA3, 0xA4};
    std::vector<uint8_t> expected(124, 0);
    std::copy(head.begin(), head.end(), expected.begin());
    EXPECT_EQ(octets_of(frame_of(kMarker, kSource)), expected);
    Marker response = kMarker;
    response.is_response = true;
    expected[16] = 2;
    EXPECT_EQ(octets_of(frame_of(response, kSource)), expected);
}

TEST(Pdu, AreReadAsWritten) {
    EXPECT_EQ(pdu_of(frame_of(kLacpdu, kSource)), Pdu{kLacpdu});
    EXPECT_EQ(pdu_of(frame_of(kMarker, kSource)), Pdu{kMarker});
}

TEST(Pdu, ShorterFramesAreIllegal) {
    for (const Frame &frame : {frame_of(kLacpdu, kSource), frame_of(kMarker, kSource)}) {
        for (size_t size = 0; size < frame.size(); ++size) {
            const std::vector<uint8_t> part(frame.begin(), frame.begin() + static_cast<ptrdiff_t>(size));
            EXPECT_EQ(pdu_of(part), Pdu{size < 14 ? Unusable::kNotSlowProtocol : Unusable::kIllegal}) << size;
        }
    }
}

TEST(Pdu, LaterVersionsAreRead) {
    auto octets = octets_of(frame_of(kLacpdu, kSource));
    octets[15] = 2;
    octets[72] = 4;  // another part where version 1 ends
    octets[73] = 10;
    octets.resize(500, 0xA5);
    EXPECT_EQ(pdu_of(octets), Pdu{kLacpdu});
}

TEST(Pdu, TypesAndReservedOctetsAreNotChecked) {
    for (const size_t place : {15U, 16U, 33U, 36U, 53U, 56U, 60U, 73U, 123U}) {
        EXPECT_EQ(pdu_of(changed(frame_of(kLacpdu, kSource), place, 0xFF)), Pdu{kLacpdu}) << place;
    }
}

TEST(Pdu, WrongLengthsAreIllegal) {
    for (const size_t place : {17U, 37U, 57U}) {
        for (const uint8_t length : std::initializer_list<uint8_t>{0, 15, 19, 21, 255}) {
            EXPECT_EQ(pdu_of(changed(frame_of(kLacpdu, kSource), place, length)), Pdu{Unusable::kIllegal}) << place;
        }
    }
    EXPECT_EQ(pdu_of(changed(frame_of(kMarker, kSource), 17, 20)), Pdu{Unusable::kIllegal});
    EXPECT_EQ(pdu_of(changed(frame_of(kMarker, kSource), 16, 3)), Pdu{Unusable::kIllegal});
}

TEST(Pdu, OtherSlowProtocolsAreUnknown) {
    const Frame frame = frame_of(kLacpdu, kSource);
    for (int subtype = 0; subtype < 256; ++subtype) {
        if (subtype != 1 && subtype != 2) {
            const bool is_legal = subtype >= 3 && subtype <= 10;
            EXPECT_EQ(pdu_of(changed(frame, 14, static_cast<uint8_t>(subtype))),
                      Pdu{is_legal ? Unusable::kUnknown : Unusable::kIllegal});
        }
    }
    EXPECT_EQ(pdu_of(changed(frame, 13, 0x0A)), Pdu{Unusable::kUnknown}) << "another type";
}

TEST(Pdu, OtherDestinationsAreNotLookedAt) {
    EXPECT_EQ(pdu_of(changed(frame_of(kLacpdu, kSource), 5, 3)), Pdu{Unusable::kNotSlowProtocol});
    EXPECT_EQ(pdu_of(changed(frame_of(kLacpdu, kSource), 0, 0)), Pdu{Unusable::kNotSlowProtocol});
}

}  // namespace pdu_test
}  // namespace switchd::lacp
