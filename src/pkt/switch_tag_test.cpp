// The tag's fields, and the translation of a tag built with interface numbers.
#include "pkt/switch_tag.h"

#include "tests/support/library_test.h"

namespace switch_tag_test {

using Bytes = std::vector<uint8_t>;

Bytes tag_of(uint32_t word1, uint32_t word2) {
    Bytes tag(8);
    adp::write_be32(tag.data(), word1);
    adp::write_be32(tag.data() + 4, word2);
    return tag;
}

Bytes bytes_of(const adp::TxTag &tag) {
    Bytes bytes(8);
    tag.write_to(bytes.data());
    return bytes;
}

TEST(TagFields, AreAtTheirPlacesInBigEndianBytes) {
    const uint32_t word = adp::kTxDestination.put(adp::kTxFlags.put(adp::kTxOpcode.put(0, 4), 0xC), 0x1000002);
    const Bytes expected = {0x99, 0x00, 0x00, 0x02, 0x80, 0x00, 0x00, 0x01};
    EXPECT_EQ(tag_of(word, 0x80000001), expected);
    EXPECT_EQ(adp::kTxOpcode.get(word), 4u);
    EXPECT_EQ(adp::kTxFlags.get(word), 0xCu);
    EXPECT_EQ(adp::kTxDestination.get(word), 0x1000002u);
    const adp::TxTag tag(expected.data());
    EXPECT_EQ(tag.opcode(), 4u);
    EXPECT_EQ(tag.destination(), 0x1000002u);
    EXPECT_TRUE(tag.has(1) && tag.has(24) && tag.has(25) && tag.has(56));
    EXPECT_FALSE(tag.has(0) || tag.has(23) || tag.has(26) || tag.has(55));
    EXPECT_EQ(bytes_of(tag), expected);
}

TEST(TagFields, SettingOneLeavesTheOthersAndCutsTheValue) {
    const uint32_t word = adp::kTxDestination.put(0xFFFFFFFF, 0);
    EXPECT_EQ(word, 0xFE000000u);
    EXPECT_EQ(adp::kTxOpcode.put(word, 8), 0x1E000000u);  // wider than the field
}

TEST(TagFields, IngressPortIsTheLowSixBitsOfTheReceiveWord) {
    EXPECT_EQ(adp::kRxIngressPort.get(0xFFFFFFC0 | 29), 29u);
}

TEST(TxTag, PortsBelow25AreInWord1AndOthersInWord2) {
    adp::TxTag tag(4, 0xC);
    for (const int32_t port : {0, 24, 25, 56}) {
        EXPECT_TRUE(tag.add(adp::PhyPort(port))) << port;
    }
    EXPECT_EQ(bytes_of(tag), tag_of(0x99000001, 0x80000001));
}

TEST(TxTag, PortsWithoutABitAreRefused) {
    adp::TxTag tag;
    for (const int32_t port : {-1, -2, 57, 64, INT32_MAX}) {
        EXPECT_FALSE(tag.add(adp::PhyPort(port))) << port;
    }
    EXPECT_EQ(bytes_of(tag), tag_of(0, 0));
}

TEST(TxTag, OnlyTheLowBitsOfAPortNumberFitTheDestination) {
    adp::TxTag tag(5, 0);
    tag.aim_at(adp::kPhyNotMapped);
    EXPECT_EQ(bytes_of(tag), tag_of(0xA1FFFFFF, 0));
    tag.aim_at(adp::PhyPort(29));
    EXPECT_EQ(bytes_of(tag), tag_of(0xA000001D, 0));
}

class TagTranslation : public library_test::LibraryTest {
  protected:
    static Bytes translated(uint32_t word1, uint32_t word2) {
        Bytes tag = tag_of(word1, word2);
        adp_bcmtag_dest_port_intf_2_phy(tag.data());
        return tag;
    }
};

TEST_F(TagTranslation, OpcodesWithOnePortTranslateIt) {
    for (const uint32_t opcode : {3u, 5u, 6u}) {
        EXPECT_EQ(translated(opcode << 29 | 0x1E000000 | 26, 0x12345678),
                  tag_of(opcode << 29 | 0x1E000000 | 29, 0x12345678))
            << opcode;
    }
}

TEST_F(TagTranslation, AnUnmappedPortFillsTheDestination) {
    EXPECT_EQ(translated(0x60000000 | 27, 0), tag_of(0x61FFFFFF, 0));
}

TEST_F(TagTranslation, OtherOpcodesAreLeftAlone) {
    for (const uint32_t opcode : {0u, 1u, 2u, 7u}) {
        EXPECT_EQ(translated(opcode << 29 | 0x1ABCDEF, 0xFFFFFFFF), tag_of(opcode << 29 | 0x1ABCDEF, 0xFFFFFFFF));
    }
}

TEST_F(TagTranslation, BitmapOfWord1MayMoveToWord2) {
    // Interfaces 0, 1, 21 and 22 are the physical ports 0, 4, 24 and 25.
    EXPECT_EQ(translated(0x98000000 | 1u | 1u << 1 | 1u << 21 | 1u << 22, 0),
              tag_of(0x98000000 | 1u | 1u << 4 | 1u << 24, 1));
}

TEST_F(TagTranslation, BitmapOfWord2KeepsOnlyHighPorts) {
    // Interface 25 is port 28, interface 26 is port 29; interface 26 moved to port 9 is dropped.
    EXPECT_EQ(translated(0x98000000, 3), tag_of(0x98000000, 1u << 3 | 1u << 4));
    ASSERT_EQ(adp_add_phy_port(26, 0, 0, 9, 0), 0);
    EXPECT_EQ(translated(0x98000000, 3), tag_of(0x98000000, 1u << 3));
}

TEST_F(TagTranslation, BitmapDropsUnmappedPortsAndPortsAbove56) {
    ASSERT_EQ(adp_add_phy_port(1, 0, 0, 57, 0), 0);
    ASSERT_EQ(adp_add_phy_port(2, 0, 0, 56, 0), 0);
    ASSERT_EQ(adp_add_phy_port(26, 0, 0, 90, 0), 0);
    EXPECT_EQ(translated(0x98000000 | 1u << 1 | 1u << 2, 0xFFFFFFFF), tag_of(0x98000000, 1u << 31 | 1u << 3));
}

TEST_F(TagTranslation, BitmapKeepsTheUpperBitsOfWord1) {
    EXPECT_EQ(translated(0x9E000000, 0), tag_of(0x9E000000, 0));
}

}  // namespace switch_tag_test
