// Octets as digits.
#include "text/hex.h"

#include <gtest/gtest.h>

#include <vector>

namespace text {
namespace hex_test {

TEST(Hex, HasTwoDigitsAnOctet) {
    EXPECT_EQ(hex(std::vector<uint8_t>{0x00, 0x0A, 0xF0, 0xFF}), "000af0ff");
    EXPECT_EQ(hex({}), "");
}

}  // namespace hex_test
}  // namespace text
