// Conditions on fields: which are possible, and which kinds of packets and frames they may name.
#include "vdevice/chip/fields/field.h"

#include <gtest/gtest.h>

#include <string>

namespace vdevice::chip {
namespace field_test {

constexpr uint32_t kAll = 0xFFFFFFFF;

TEST(Fields, ImpossibleConditionsAreKnown) {
    EXPECT_TRUE(is_possible(qualifier(Field::kOuterVid, 4095, 0xFFFF)));
    EXPECT_FALSE(is_possible(qualifier(Field::kOuterVid, 4096, 0xFFFF)));
    EXPECT_TRUE(is_possible(qualifier(Field::kOuterVid, 4096, 0x0FFF)));
    EXPECT_FALSE(is_possible(qualifier(Field::kOuterPriority, 8, 0xFF)));
    EXPECT_TRUE(is_possible(qualifier(Field::kSourceIpv4, kAll, kAll)));
    EXPECT_FALSE(is_possible(qualifier(Field::kSourcePort, 0x10000, kAll)));
}

TEST(Fields, KindsAreTheOnesThatThereAre) {
    std::string kinds;
    for (uint32_t code = 0; code < 300; ++code) {
        kinds += is_ip_kind(code) ? std::to_string(code) + " " : "";
    }
    EXPECT_EQ(kinds, "0 1 2 3 5 10 ");
    EXPECT_TRUE(is_frame_kind(3));
    EXPECT_FALSE(is_frame_kind(4));
}

}  // namespace field_test
}  // namespace vdevice::chip
