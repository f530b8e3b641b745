// The hex dump.
#include <numeric>

#include "tests/support/library_test.h"

namespace dump_test {

const std::string kRule = "--------------------------------------\r\n";
const std::string kColumns = "00 01 02 03 04 05 06 07   08 09 0A 0B 0C 0D 0E 0F ";

std::string dump(const std::vector<uint8_t> &data, int32_t length, int32_t *result) {
    ::testing::internal::CaptureStderr();
    *result = adp_dump_packet("title", data.data(), length);
    return ::testing::internal::GetCapturedStderr();
}

std::vector<uint8_t> counting(size_t n) {
    std::vector<uint8_t> data(n);
    std::iota(data.begin(), data.end(), uint8_t{0xA0});
    return data;
}

TEST(DumpPacket, PrintsRowsOfSixteenWithAGapInTheMiddle) {
    int32_t result = 0;
    EXPECT_EQ(dump(counting(18), 18, &result), kRule + "title:18(0x12)\r\n    " + kColumns +
                                                   "\r\n000 A0 A1 A2 A3 A4 A5 A6 A7   A8 A9 AA AB AC AD AE AF "
                                                   "\r\n001 B0 B1 \r\n");
    EXPECT_EQ(result, 2);
}

TEST(DumpPacket, PutsTheGapAfterTheEighthByteEvenWhenItIsTheLast) {
    int32_t result = 0;
    EXPECT_EQ(dump(counting(8), 8, &result),
              kRule + "title:8(0x8)\r\n    " + kColumns + "\r\n000 A0 A1 A2 A3 A4 A5 A6 A7   \r\n");
}

TEST(DumpPacket, LengthBelowOnePrintsTheHeadOnly) {
    int32_t result = 0;
    EXPECT_EQ(dump(counting(4), 0, &result), kRule + "title:0(0x0)\r\n    " + kColumns + "\r\n");
    EXPECT_EQ(result, 2);
    EXPECT_EQ(dump(counting(4), -1, &result), kRule + "title:-1(0xFFFFFFFF)\r\n    " + kColumns + "\r\n");
}

}  // namespace dump_test
