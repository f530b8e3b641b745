// Remark rules with one field: the qualifiers that each field becomes.
#include "fp/testing/remark.h"

namespace {

using namespace fp_test;
using library_test::installed_rules;
using ::testing::SizeIs;

class RemarkFields : public RemarkTest {};

TEST_F(RemarkFields, MacAddressesAreSixBytesUnderAFullMask) {
    for (const auto &[field, type] : {std::pair<uint8_t, uint32_t>{0, 7}, {1, 6}}) {
        const RemarkRule rule = mac_request(field);
        FpEntity expected = expected_ports(rule);
        add_qualifier(&expected, type, {}, {});
        std::memcpy(expected.qualifies[1].data, kMac, sizeof kMac);
        std::memset(expected.qualifies[1].mask, 0xFF, sizeof kMac);
        expect_added(rule, expected);
    }
}

/** A field of one word: the qualifiers after that of the ports. Only the last one holds the request's value. */
struct WordField {
    uint8_t field;
    uint32_t type;
    uint32_t ip_type;  // 0: none
    uint32_t shift;
};

class RemarkField : public RemarkTest, public ::testing::WithParamInterface<WordField> {};

TEST_P(RemarkField, IsMatchedUnderAFullMask) {
    const WordField &row = GetParam();
    for (const uint32_t value : {0u, 1u, 46u, 0x8123u, 0x40000001u, 0xFFFFFFFFu}) {
        const RemarkRule rule = request(kOneField, row.field, value);
        FpEntity expected = expected_ports(rule);
        if (row.ip_type != 0) {
            add_qualifier(&expected, 61, {row.ip_type}, {0xFFFFFFFF});
        }
        add_qualifier(&expected, row.type, {value << row.shift}, {0xFFFFFFFF});
        expect_added(rule, expected);
    }
}

TEST_P(RemarkField, IsIgnoredByTheFormOfPortsOnly) {
    const RemarkRule rule = request(kPortsOnly, GetParam().field, 46);
    expect_added(rule, expected_ports(rule));
}

TEST_P(RemarkField, WithAnyFailureIs102OnlyWhenTheStatusIsNegative) {
    const WordField &row = GetParam();
    for (const int32_t failure : kFailures) {
        RemarkRule rule = request(kOneField, row.field, 46);
        fail_every("user_field_entry_install", failure);
        EXPECT_EQ(adp_add_remark_rule(&rule), failure < 0 ? 102 : 0);
        EXPECT_THAT(installed_rules(), SizeIs(1));
    }
}

INSTANTIATE_TEST_SUITE_P(OfOneWord, RemarkField,
                         ::testing::Values(WordField{2, 23, 0, 0}, WordField{3, 22, 0, 0}, WordField{4, 29, 0, 0},
                                           WordField{5, 10, 0, 0}, WordField{6, 9, 0, 0}, WordField{7, 30, 0, 0},
                                           WordField{8, 31, 5, 2}, WordField{9, 332, 10, 2}, WordField{10, 27, 0, 0},
                                           WordField{11, 28, 0, 0}),
                         [](const auto &row) { return "Number" + std::to_string(row.param.field); });

TEST_F(RemarkFields, TheDscpReachesTheDriverInTheUpperSixBits) {
    RemarkRule rule = request(kOneField, 8, 46);
    EXPECT_EQ(adp_add_remark_rule(&rule), 0);
    const fp_test::Trace calls = fp_test::driver_calls(driver().trace());
    EXPECT_THAT(calls,
                ::testing::IsSupersetOf({"user_field_qualify_iptype(handle=0, unit=0, entry=1291, data=5)",
                                         "user_field_qualify_DSCP(handle=0, unit=0, entry=1291, data=184, mask=255)"}));
}

TEST_F(RemarkFields, UnknownFieldsAreReportedAndInstalledWithoutAField) {
    for (int field = 12; field <= 255; ++field) {
        for (const int kind : {1, 2, 3}) {
            RemarkRule rule = request(kOneField, static_cast<uint8_t>(field), 46);
            rule.remark_kind = static_cast<uint8_t>(kind);
            expect_added(rule, expected_ports(rule), 102);
        }
        RemarkRule ports = request(kPortsOnly, static_cast<uint8_t>(field), 46);
        expect_added(ports, expected_ports(ports));
    }
    EXPECT_THAT(installed_rules(), SizeIs(1));
}

}  // namespace
