// Rule records: qualifiers and actions are appended, and refused when they do not fit.
#include <functional>
#include <numeric>

#include "tests/support/library_test.h"

namespace record_test {

using ::testing::Each;
using ::testing::IsEmpty;

constexpr uint8_t kFiller = 0xA5;
constexpr int32_t kNegatives[] = {-1, -17, INT32_MIN};

uint32_t word_of(const uint8_t *field) {
    uint32_t word;
    std::memcpy(&word, field, sizeof word);
    return word;
}

std::string bytes_of(const FpEntity &rule) {
    return {reinterpret_cast<const char *>(&rule), sizeof rule};
}

class Record : public library_test::LibraryTest {
  protected:
    Record() {
        std::iota(std::begin(bytes_), std::end(bytes_), uint8_t{1});
        std::memset(&record_, kFiller, sizeof record_);
        record_.qualify_num = 0;
        record_.action_num = 0;
    }

    int32_t add_qualifier(uint32_t data_len, int32_t mask_len) {
        return adp_fp_add_entity_qualify(&record_, 29, bytes_, data_len, bytes_ + 1, mask_len);
    }
    int32_t add_action(int32_t param_len, int32_t param2_len) {
        return adp_fp_add_entity_action(&record_, 53, bytes_, param_len, bytes_ + 1, param2_len);
    }

    /** Runs the call, which must return -1, print this and leave the record unchanged. */
    void expect_refused(const std::function<int32_t()> &call, const std::string &printed = "") {
        const std::string before = bytes_of(record_);
        ::testing::internal::CaptureStdout();
        const int32_t result = call();
        EXPECT_EQ(::testing::internal::GetCapturedStdout(), printed);
        EXPECT_EQ(result, -1);
        EXPECT_TRUE(bytes_of(record_) == before);
    }

    /** The field holds @p length test bytes from @p first on, and the filler after them. */
    template <size_t kSize>
    void expect_field(const uint8_t (&field)[kSize], const uint8_t *first, size_t length) {
        EXPECT_EQ(std::memcmp(field, first, length), 0);
        EXPECT_THAT(std::vector<uint8_t>(field + length, field + kSize), Each(kFiller));
    }

    uint8_t bytes_[ADP_FP_ACTION_BYTES + 1] = {};
    FpEntity record_{};
};

TEST_F(Record, QualifiersAreAppendedOneByOne) {
    for (int32_t i = 0; i < 16; ++i) {
        const auto type = static_cast<uint32_t>(1000 + i);
        EXPECT_EQ(adp_fp_add_entity_qualify(&record_, type, bytes_ + i, 6, bytes_ + 2 * i, 4), i);
        EXPECT_EQ(record_.qualify_num, i + 1);
    }
    for (int32_t i = 0; i < 16; ++i) {
        EXPECT_EQ(record_.qualifies[i].type, static_cast<uint32_t>(1000 + i));
        expect_field(record_.qualifies[i].data, bytes_ + i, 6);
        expect_field(record_.qualifies[i].mask, bytes_ + 2 * i, 4);
    }
    EXPECT_EQ(record_.action_num, 0);
    EXPECT_THAT(driver().trace(), IsEmpty());
}

TEST_F(Record, QualifierLengthsOtherThan2AreCopied) {
    for (const uint32_t length : {0u, 1u, 3u, 4u, 6u, 16u, 32u, 63u, 64u}) {
        SCOPED_TRACE(length);
        std::memset(record_.qualifies, kFiller, sizeof record_.qualifies);
        record_.qualify_num = 3;
        EXPECT_EQ(add_qualifier(length, static_cast<int32_t>(64 - length)), 3);
        expect_field(record_.qualifies[3].data, bytes_, length);
        expect_field(record_.qualifies[3].mask, bytes_ + 1, 64 - length);
    }
}

TEST_F(Record, TwoBytesAreANumberExtendedToTheFirstWord) {
    const uint16_t data = 0x8123;
    const uint16_t mask = 0xFFFE;
    EXPECT_EQ(adp_fp_add_entity_qualify(&record_, 29, &data, 2, &mask, 2), 0);
    EXPECT_EQ(word_of(record_.qualifies[0].data), 0x8123u);
    EXPECT_EQ(word_of(record_.qualifies[0].mask), 0xFFFEu);
    EXPECT_EQ(record_.qualifies[0].data[4], kFiller);
    EXPECT_EQ(record_.qualifies[0].mask[4], kFiller);
}

TEST_F(Record, DataAndMaskAreCopiedEachByItsOwnLength) {
    const uint16_t number = 0x8123;
    EXPECT_EQ(adp_fp_add_entity_qualify(&record_, 29, &number, 2, bytes_, 4), 0);
    EXPECT_EQ(word_of(record_.qualifies[0].data), 0x8123u);
    expect_field(record_.qualifies[0].mask, bytes_, 4);
    EXPECT_EQ(adp_fp_add_entity_qualify(&record_, 29, bytes_, 4, &number, 2), 1);
    expect_field(record_.qualifies[1].data, bytes_, 4);
    EXPECT_EQ(word_of(record_.qualifies[1].mask), 0x8123u);
}

TEST_F(Record, AQualifierWithoutLengthsNeedsNoAddresses) {
    EXPECT_EQ(adp_fp_add_entity_qualify(&record_, 5, nullptr, 0, nullptr, 0), 0);
    EXPECT_EQ(record_.qualifies[0].type, 5u);
    expect_field(record_.qualifies[0].data, bytes_, 0);
    expect_field(record_.qualifies[0].mask, bytes_, 0);
}

TEST_F(Record, QualifiersThatDoNotFitAreRefused) {
    for (const uint32_t length : {65u, 256u, 0x80000000u, 0xFFFFFFFFu}) {
        expect_refused([&] { return add_qualifier(length, 4); });
        expect_refused([&] { return add_qualifier(4, static_cast<int32_t>(length)); });
    }
    for (const int32_t length : kNegatives) {
        expect_refused([&] { return add_qualifier(2, length); });
    }
}

TEST_F(Record, AFullRecordRefusesAQualifierWithItsCount) {
    for (const int32_t count : {16, 17, INT32_MAX}) {
        record_.qualify_num = count;
        record_.action_num = 3;
        const std::string printed =
            "adp_fp_add_entity_qualify:[00674] Fp qualify number=[" + std::to_string(count) + "] was full!~\n";
        expect_refused([&] { return add_qualifier(4, 4); }, printed);
        // The count is checked before the lengths.
        expect_refused([&] { return add_qualifier(65, 4); }, printed);
        expect_refused([&] { return add_qualifier(4, -1); }, printed);
    }
}

TEST_F(Record, NegativeCountsAppendNothing) {
    for (const int32_t count : kNegatives) {
        record_.qualify_num = count;
        record_.action_num = count;
        expect_refused([&] { return add_qualifier(4, 4); });
        expect_refused([&] { return add_action(4, 4); });
    }
}

TEST_F(Record, ActionsAreAppendedOneByOne) {
    for (int32_t i = 0; i < 8; ++i) {
        const auto type = static_cast<uint32_t>(1000 + i);
        EXPECT_EQ(adp_fp_add_entity_action(&record_, type, bytes_ + i, 4, bytes_ + 2 * i, 2), i);
        EXPECT_EQ(record_.action_num, i + 1);
    }
    for (int32_t i = 0; i < 8; ++i) {
        EXPECT_EQ(record_.actions[i].type, static_cast<uint32_t>(1000 + i));
        expect_field(record_.actions[i].param, bytes_ + i, 4);
        expect_field(record_.actions[i].param2, bytes_ + 2 * i, 2);  // copied: two bytes are not special here
    }
    EXPECT_EQ(record_.qualify_num, 0);
    EXPECT_THAT(driver().trace(), IsEmpty());
}

TEST_F(Record, ActionLengthsUpTo256AreCopied) {
    for (const int32_t length : {0, 1, 2, 4, 64, 65, 255, 256}) {
        SCOPED_TRACE(length);
        std::memset(record_.actions, kFiller, sizeof record_.actions);
        record_.action_num = 2;
        EXPECT_EQ(add_action(length, 256 - length), 2);
        expect_field(record_.actions[2].param, bytes_, static_cast<size_t>(length));
        expect_field(record_.actions[2].param2, bytes_ + 1, static_cast<size_t>(256 - length));
    }
}

TEST_F(Record, ActionsCopyNothingFromNullOrForALengthOfZeroOrLess) {
    for (const int32_t length : {0, -1, INT32_MIN}) {
        record_.action_num = 1;
        EXPECT_EQ(add_action(length, 4), 1);
        expect_field(record_.actions[1].param, bytes_, 0);
        expect_field(record_.actions[1].param2, bytes_ + 1, 4);
        std::memset(record_.actions, kFiller, sizeof record_.actions);
        EXPECT_EQ(add_action(4, length), 2);
        expect_field(record_.actions[2].param, bytes_, 4);
        expect_field(record_.actions[2].param2, bytes_ + 1, 0);
    }
    EXPECT_EQ(adp_fp_add_entity_action(&record_, 7, nullptr, 4, nullptr, 1000), 3);
    EXPECT_EQ(record_.actions[3].type, 7u);
    expect_field(record_.actions[3].param, bytes_, 0);
    expect_field(record_.actions[3].param2, bytes_, 0);
}

TEST_F(Record, ActionsThatDoNotFitAreRefused) {
    for (const int32_t length : {257, 65536, INT32_MAX}) {
        expect_refused([&] { return add_action(length, 4); });
        expect_refused([&] { return add_action(4, length); });
    }
}

TEST_F(Record, AFullRecordRefusesAnActionWithTheCountOfQualifiers) {
    for (const int32_t count : {8, 9, INT32_MAX}) {
        record_.action_num = count;
        record_.qualify_num = 5;
        const std::string printed = "adp_fp_add_entity_action:[00720] Fp qualify number=[5] was full!~\n";
        expect_refused([&] { return add_action(4, 4); }, printed);
        expect_refused([&] { return add_action(257, 4); }, printed);
    }
}

}  // namespace record_test
