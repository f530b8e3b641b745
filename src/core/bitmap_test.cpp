// Two-word bitmap translation between interface numbers and physical ports.
#include "tests/support/library_test.h"

namespace bitmap_test {

struct Bitmap {
    uint32_t word[2];
    bool operator==(const Bitmap &) const = default;
};

std::ostream &operator<<(std::ostream &out, const Bitmap &b) {
    return out << b.word[0] << ' ' << b.word[1];
}

Bitmap bits(std::initializer_list<uint32_t> numbers) {
    Bitmap result = {};
    for (const uint32_t n : numbers) {
        result.word[n / 32] |= 1u << n % 32;
    }
    return result;
}

Bitmap to_intfs(Bitmap ports) {
    EXPECT_EQ(adp_api_xlate_port_pbmp_a2p(ports.word), 0);
    return ports;
}

Bitmap to_ports(Bitmap intfs) {
    EXPECT_EQ(adp_api_xlate_port_pbmp_p2a(intfs.word), 0);
    return intfs;
}

class BitmapTranslation : public library_test::LibraryTest {};

TEST_F(BitmapTranslation, A2pTurnsPortsIntoInterfaces) {
    EXPECT_EQ(to_intfs(bits({0, 4, 26})), bits({0, 1, 23}));
    EXPECT_EQ(to_intfs({{0, 0}}), (Bitmap{{0, 0}}));
}

TEST_F(BitmapTranslation, A2pKeepsTheBitsOfUnknownPorts) {
    EXPECT_EQ(to_intfs(bits({1, 2, 3})), bits({1, 2, 3}));
}

TEST_F(BitmapTranslation, P2aTurnsInterfacesIntoPorts) {
    EXPECT_EQ(to_ports(bits({0, 1, 26})), bits({0, 4, 29}));
    EXPECT_EQ(to_ports(bits({22, 23})), bits({25, 26}));
}

TEST_F(BitmapTranslation, P2aReachesTheSecondWord) {
    ASSERT_EQ(adp_add_phy_port(7, 0, 0, 40, 0), 0);
    EXPECT_EQ(to_ports(bits({7})), bits({40}));
}

TEST_F(BitmapTranslation, P2aBitZeroIsTheCpuPort) {
    ASSERT_EQ(adp_add_cpu_port(0, 0, 0, 31, 0), 0);
    EXPECT_EQ(to_ports(bits({0})), bits({31}));
}

TEST_F(BitmapTranslation, P2aKeepsTheBitsOfInterfacesAboveTheMaximum) {
    library_test::make_default_map(4);
    EXPECT_EQ(to_ports(bits({4, 5, 26})), bits({7, 5, 26}));
}

TEST_F(BitmapTranslation, P2aMapsARowThatWasNeverFilledToPortZero) {
    library_test::drop_map();
    ASSERT_EQ(adp_set_max_phy_port_num(8), 0);
    EXPECT_EQ(to_ports(bits({5})), bits({0}));
}

TEST_F(BitmapTranslation, BitsAbove26AreDropped) {
    EXPECT_EQ(to_intfs(bits({27, 30, 31, 32, 63})), (Bitmap{{0, 0}}));
    EXPECT_EQ(to_ports(bits({27, 30, 31, 32, 63})), (Bitmap{{0, 0}}));
    EXPECT_EQ(to_intfs(bits({26, 30})), bits({23}));
}

TEST_F(BitmapTranslation, BitsOutsideTheWordsAreDropped) {
    ASSERT_EQ(adp_add_phy_port(1, 0, 0, 64, 0), 0);
    ASSERT_EQ(adp_add_phy_port(2, 0, 0, 63, 0), 0);
    ASSERT_EQ(adp_add_phy_port(3, 0, 0, 0x7FFFFFFF, 0), 0);
    EXPECT_EQ(to_ports(bits({1, 2, 3})), bits({63}));
}

TEST_F(BitmapTranslation, SmallNegativePortsLandInTheFirstWord) {
    ASSERT_EQ(adp_add_phy_port(1, 0, 0, static_cast<uint32_t>(-2), 0), 0);
    EXPECT_EQ(to_ports(bits({1})), bits({30}));
    ASSERT_EQ(adp_add_phy_port(1, 0, 0, static_cast<uint32_t>(-31), 0), 0);
    EXPECT_EQ(to_ports(bits({1})), bits({1}));
    ASSERT_EQ(adp_add_phy_port(1, 0, 0, static_cast<uint32_t>(-32), 0), 0);
    EXPECT_EQ(to_ports(bits({1})), (Bitmap{{0, 0}}));
}

TEST_F(BitmapTranslation, BeforeTheMapExistsEveryBitIsKept) {
    library_test::drop_map();
    EXPECT_EQ(to_ports(bits({0, 5, 26})), bits({0, 5, 26}));
    EXPECT_EQ(to_intfs(bits({0, 5, 26})), bits({0, 5, 26}));
}

}  // namespace bitmap_test
