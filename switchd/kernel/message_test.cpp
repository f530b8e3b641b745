// Messages and attributes: their layout, and every wrong length.
#include "switchd/kernel/message.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "switchd/kernel/testing/compose.h"

namespace switchd::netlink {
namespace message_test {

using test::Bytes;
using test::operator+;
using testing::ElementsAre;

/** A number as this machine has it in memory. */
template <typename Number>
Bytes host(Number number) {
    Bytes octets(sizeof(number));
    std::memcpy(octets.data(), &number, sizeof(number));
    return octets;
}
Bytes host16(unsigned number) {
    return host(static_cast<uint16_t>(number));
}
Bytes host32(unsigned number) {
    return host(static_cast<uint32_t>(number));
}
/** The header of a message of so many octets. */
Bytes header(unsigned length, unsigned type) {
    return host32(length) + host16(type) + host16(0) + host32(0) + host32(0);
}
Bytes attribute(unsigned type, const Bytes &payload) {
    Bytes octets = host16(static_cast<unsigned>(4 + payload.size())) + host16(type) + payload;
    octets.resize(aligned(octets.size()));
    return octets;
}

std::vector<unsigned> types_in(Octets octets) {
    std::vector<unsigned> types;
    while (const auto message = take_message(octets)) {
        types.push_back(message->header.nlmsg_type);
    }
    return types;
}
std::vector<unsigned> attributes_in(Octets octets) {
    std::vector<unsigned> types;
    while (const auto found = take_attribute(octets)) {
        types.push_back(found->type);
    }
    return types;
}

TEST(MessageWriterTest, LaysOutMessagesWithNestedAttributes) {
    MessageWriter writer;
    writer.begin(16, 5, 7);
    writer.add(uint16_t{0x1234});
    {
        const MessageWriter::Nested outer{writer, 18};
        writer.put_text(1, "bridge");
        const MessageWriter::Nested inner{writer, 2};
        writer.put_number(3, uint8_t{9});
    }
    writer.begin(17, 0, 8);
    const Bytes inside = attribute(1, {'b', 'r', 'i', 'd', 'g', 'e', 0}) + attribute(2, attribute(3, {9}));
    const Bytes first = host32(16 + 4 + 4 + 12 + 4 + 8) + host16(16) + host16(5) + host32(7) + host32(0) +
                        host16(0x1234) + Bytes{0, 0} + attribute(18, inside);
    const Bytes second = host32(16) + host16(17) + host16(0) + host32(8) + host32(0);
    EXPECT_EQ(Bytes(writer.octets().begin(), writer.octets().end()), first + second);
}

TEST(MessageTest, OneAfterTheOther) {
    const Bytes octets = header(17, 1) + Bytes{0xAA, 0, 0, 0} + header(16, 2);
    EXPECT_THAT(types_in(octets), ElementsAre(1, 2));
    Octets rest = octets;
    EXPECT_EQ(take_message(rest)->payload.size(), 1U) << "the padding is none of it";
}

TEST(MessageTest, AWrongLengthEndsTheWalk) {
    const Bytes good = header(16, 1);
    for (const unsigned length : {0U, 1U, 15U, 17U, 32U, 0x7FFFFFFFU, 0x80000000U, 0xFFFFFFFDU, 0xFFFFFFFFU}) {
        EXPECT_THAT(types_in(good + header(length, 2)), ElementsAre(1)) << length;
    }
    for (size_t length = 0; length < 16; ++length) {
        Bytes cut = header(16, 2);
        cut.resize(length);
        EXPECT_THAT(types_in(good + cut), ElementsAre(1)) << length;
    }
}

TEST(AttributeTest, AWrongLengthEndsTheWalk) {
    const Bytes good = attribute(1, {1, 2, 3});
    EXPECT_THAT(attributes_in(good + attribute(2, {})), ElementsAre(1, 2));
    for (const unsigned length : {0U, 1U, 3U, 5U, 0xFFFFU}) {
        EXPECT_THAT(attributes_in(good + host16(length) + host16(2)), ElementsAre(1)) << length;
    }
    for (size_t length = 0; length < 4; ++length) {
        Bytes cut = attribute(2, {});
        cut.resize(length);
        EXPECT_THAT(attributes_in(good + cut), ElementsAre(1)) << length;
    }
}

TEST(AttributeTest, TheLastOneNeedsNoPadding) {
    Bytes octets = attribute(1, {1, 2, 3, 4, 5});
    octets.resize(9);
    EXPECT_EQ(Attributes{octets}.payload(1).size(), 5U);
}

TEST(AttributeTest, FlagsAreNoPartOfTheType) {
    EXPECT_TRUE(Attributes{attribute(0x8003, {1})}.flag(3));
    EXPECT_TRUE(Attributes{attribute(0x4003, {1})}.flag(3));
    EXPECT_FALSE(Attributes{attribute(3, {0})}.flag(3));
}

TEST(AttributeTest, ANumberHasExactlyItsSize) {
    for (size_t size = 0; size < 10; ++size) {
        const Bytes octets = attribute(1, Bytes(size, 0xFF));
        const Attributes attributes{octets};
        EXPECT_EQ(attributes.number<uint8_t>(1).has_value(), size == 1) << size;
        EXPECT_EQ(attributes.number<uint16_t>(1).has_value(), size == 2) << size;
        EXPECT_EQ(attributes.number<uint32_t>(1).has_value(), size == 4) << size;
        EXPECT_EQ(attributes.number<uint64_t>(1).has_value(), size == 8) << size;
    }
    EXPECT_EQ(Attributes{attribute(1, host32(0xDEADBEEF))}.number<uint32_t>(1), 0xDEADBEEF);
    EXPECT_FALSE(Attributes{Octets{}}.number<uint8_t>(1).has_value());
}

TEST(AttributeTest, ATextEndsAtItsFirstNullOrWithTheAttribute) {
    EXPECT_EQ(Attributes{attribute(1, {'s', 'w', 'p', '1'})}.text(1), "swp1");
    EXPECT_EQ((Attributes{attribute(1, {'s', 'w', 0, '1'})}.text(1)), "sw");
    EXPECT_EQ(Attributes{attribute(1, {})}.text(1), "");
    EXPECT_EQ(Attributes{attribute(2, {'a'})}.text(1), "");
}

TEST(AttributeTest, OctetsNeedNoAlignment) {
    const Bytes octets = Bytes{0} + attribute(1, host32(5)) + attribute(2, attribute(3, host16(6)));
    const Attributes attributes{Octets{octets}.subspan(1)};
    EXPECT_EQ(attributes.number<uint32_t>(1), 5U);
    EXPECT_EQ(attributes.nested(2).number<uint16_t>(3), 6);
}

TEST(AttributeTest, ATenThousandfoldNestIsReadAsDeepAsItIsAsked) {
    constexpr size_t kDepth = 10000;
    Bytes octets;
    for (size_t depth = 0; depth < kDepth; ++depth) {
        octets = std::move(octets) + host16(static_cast<unsigned>(4 * (kDepth - depth))) + host16(1);
    }
    EXPECT_EQ(Attributes{octets}.nested(1).nested(1).payload(1).size(), 4 * (kDepth - 3));
}

}  // namespace message_test
}  // namespace switchd::netlink
