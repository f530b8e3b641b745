// Shared by the tests of remark rules: requests, and the rules that they become.
#pragma once

#include "fp/testing/support.h"

namespace fp_test {

constexpr uint8_t kPortsOnly = 7;
constexpr uint8_t kOneField = 1;
constexpr uint8_t kFiller = 0xA5;
constexpr uint8_t kMac[] = {0x02, 0x11, 0x22, 0x33, 0x44, 0x55};
inline const std::vector<uint32_t> kAllPorts(8, 0xFFFFFFFF);

/** The rule that request @p rule becomes: ports, and one action. */
inline FpEntity ports_rule(const RemarkRule &rule, uint32_t word0, uint32_t word1) {
    FpEntity entity = make_rule(1, rule.rule_id, rule.rule_id);
    add_qualifier(&entity, 13, {word0, word1}, kAllPorts);
    add_action(&entity, rule.remark_kind == 1 ? 11 : 1, {rule.remark_value});
    return entity;
}

class RemarkTest : public FpTest {
  protected:
    /** A request for the interfaces 1 and 33; unused fields hold a filler. */
    static RemarkRule request(uint8_t form = kPortsOnly, uint8_t field = 0, uint32_t value = 0) {
        RemarkRule rule;
        std::memset(&rule, kFiller, sizeof rule);
        rule.rule_id = 5;
        rule.port_bitmap[0] = 1;
        rule.port_bitmap[1] = 1;
        rule.remark_kind = 1;
        rule.remark_value = 46;
        rule.rule_form = form;
        rule.match_field = field;
        set_word(rule.match_value, value);
        return rule;
    }
    static RemarkRule mac_request(uint8_t field) {
        RemarkRule rule = request(kOneField, field);
        std::memcpy(rule.match_value, kMac, sizeof kMac);
        return rule;
    }

    /** The library's call; the model installs @p expected, and the caller gets @p status. */
    void expect_added(RemarkRule rule, const FpEntity &expected, int32_t status = 0) {
        both([&] { return adp_add_remark_rule(&rule); },
             [&] {
                 const int32_t installed = model().install(expected);
                 return installed < 0 ? 102 : status;
             });
    }
    /** Only the shift of the bitmap happens. */
    void expect_refused(RemarkRule rule, int32_t status) {
        RemarkRule expected = rule;
        expected.port_bitmap[0] = 2;
        expected.port_bitmap[1] = 2;
        EXPECT_EQ(both([&] { return adp_add_remark_rule(&rule); }, [&] { return status; }), status);
        EXPECT_EQ(std::memcmp(&rule, &expected, sizeof rule), 0);
    }
    static FpEntity expected_ports(const RemarkRule &rule) { return ports_rule(rule, 2, 2); }
};

}  // namespace fp_test
