// Remark requests of any content: the caller's record, the status and the installed rule against the contract.
//
// Input: which driver calls fail and with what, then requests until it ends.
#include <algorithm>
#include <cstring>
#include <map>

#include "tests/fuzz/fuzz.h"
#include "tests/support/library_state.h"

namespace {

using fuzz::expect;

constexpr int kMostRequests = 16;
constexpr uint32_t kRemarkSubmodule = 1;
constexpr uint8_t kPortsOnly = 7;
constexpr uint8_t kOneField = 1;
constexpr uint8_t kFields = 12;
constexpr uint8_t kDeleteOneIn = 8;

RemarkRule read_request(fuzz::Input *input) {
    RemarkRule rule = {};
    // Few numbers, so that rules replace each other.
    constexpr unsigned kManyIds = 0x80;
    rule.rule_id = input->u8();
    if ((rule.rule_id & kManyIds) != 0) {
        rule.rule_id = input->u16();
    }
    rule.unused2 = input->u16();
    rule.port_bitmap[0] = input->u32();
    rule.port_bitmap[1] = input->u32();
    rule.remark_kind = input->u8();
    rule.remark_value = input->u8();
    rule.rule_form = input->u8();
    rule.match_field = input->u8();
    const fuzz::Bytes value = input->bytes(sizeof rule.match_value);
    std::copy(value.begin(), value.end(), rule.match_value);
    return rule;
}

RemarkRule shifted(RemarkRule rule) {
    const uint64_t ports = (uint64_t{rule.port_bitmap[0]} << 32 | rule.port_bitmap[1]) << 1;
    rule.port_bitmap[0] = static_cast<uint32_t>(ports >> 32);
    rule.port_bitmap[1] = static_cast<uint32_t>(ports);
    return rule;
}

uint32_t word_of(const uint8_t *field) {
    uint32_t word = 0;
    std::memcpy(&word, field, sizeof word);
    return word;
}

bool is_all(const uint8_t *field, size_t size, uint8_t value) {
    return std::all_of(field, field + size, [&](uint8_t byte) { return byte == value; });
}

void expect_condition(const FpQualify &condition, uint32_t type, const void *data, size_t size) {
    expect(condition.type == type, "a condition's type");
    expect(
        std::memcmp(condition.data, data, size) == 0 && is_all(condition.data + size, sizeof condition.data - size, 0),
        "a condition's data");
    expect(is_all(condition.mask, size, 0xFF) && is_all(condition.mask + size, sizeof condition.mask - size, 0),
           "a condition's mask");
}

/** The conditions after that of the ports; the request has been shifted. */
void expect_field(const FpEntity &entity, const RemarkRule &rule) {
    constexpr uint32_t kTypes[kFields] = {7, 6, 23, 22, 29, 10, 9, 30, 31, 332, 27, 28};
    const uint32_t type = kTypes[rule.match_field];
    if (rule.match_field < 2) {
        expect(entity.qualify_num == 2, "one condition for an address");
        expect_condition(entity.qualifies[1], type, rule.match_value, 6);
        return;
    }
    const bool is_dscp = rule.match_field == 8 || rule.match_field == 9;
    const uint32_t packet = rule.match_field == 8 ? 5 : 10;
    const uint32_t value = word_of(rule.match_value) * (is_dscp ? 4 : 1);
    expect(entity.qualify_num == (is_dscp ? 3 : 2), "the number of conditions");
    if (is_dscp) {
        expect_condition(entity.qualifies[1], 61, &packet, sizeof packet);
    }
    expect_condition(entity.qualifies[is_dscp ? 2 : 1], type, &value, sizeof value);
}

void expect_rule(const FpEntity &entity, const RemarkRule &rule) {
    expect(entity.submodule_type == kRemarkSubmodule && entity.unit == 0 && entity.entity_id == rule.rule_id &&
               entity.priority == rule.rule_id && entity.true_entry == 2u * rule.rule_id + 1280,
           "the rule's numbers");
    const uint32_t ports[8] = {rule.port_bitmap[1], rule.port_bitmap[0]};
    expect_condition(entity.qualifies[0], 13, ports, sizeof ports);
    if (rule.rule_form == kOneField && rule.match_field < kFields) {
        expect_field(entity, rule);
    } else {
        expect(entity.qualify_num == 1, "no condition but the ports");
    }
    const FpAction &action = entity.actions[0];
    expect(entity.action_num == 1 && action.type == (rule.remark_kind == 1 ? 11u : 1u) &&
               word_of(action.param) == rule.remark_value && is_all(action.param2, sizeof action.param2, 0),
           "the action");
}

void add(fuzz::Input *input, bool driver_works, std::map<uint32_t, RemarkRule> *installed) {
    RemarkRule rule = read_request(input);
    const RemarkRule expected = shifted(rule);
    const adp_status_t status = adp_add_remark_rule(&rule);
    expect(std::memcmp(&rule, &expected, sizeof rule) == 0, "of the request only the ports are shifted");
    if (rule.rule_form != kPortsOnly && rule.rule_form != kOneField) {
        expect(status == 101, "another form is rejected");
        return;
    }
    (*installed)[rule.rule_id] = rule;
    const bool is_right = (rule.remark_kind == 1 || rule.remark_kind == 2) &&
                          (rule.rule_form == kPortsOnly || rule.match_field < kFields);
    expect(is_right || status == 102, "a wrong kind or field is told, though the rule is installed");
    expect(!is_right || !driver_works || status == 0, "a right request succeeds");
    expect(status == 0 || status == 102, "the status is one of the contract's");
    const FpListNode *node = adp_fp_find_list_node_by_entity(kRemarkSubmodule, rule.rule_id);
    expect(node != nullptr, "the rule is in the list");
    expect_rule(node->entity, rule);
}

void remove(fuzz::Input *input, bool driver_works, std::map<uint32_t, RemarkRule> *installed) {
    const uint32_t id = input->u32();
    const adp_status_t status = adp_del_remark_rule(id);
    expect(status == 0 || (status == 102 && !driver_works), "a removal's status");
    installed->erase(id & UINT16_MAX);
}

/** Makes every call of one name fail. @return true if none fails */
bool script_failures(fuzz::Input *input) {
    const char *const names[] = {"user_field_entry_create_id", "user_field_entry_prio_set",
                                 "user_field_qualify_InPorts", "user_field_action_add",
                                 "user_field_entry_install",   "user_field_entry_destroy"};
    const size_t chosen = input->u8();
    if (chosen >= std::size(names)) {
        return true;
    }
    recording::driver().fail_every(names[chosen], static_cast<int8_t>(input->u8()));
    return false;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    fuzz::be_quiet();
    fuzz::Input input(data, size);
    recording::driver().reset();
    recording::driver().record(false);
    library_test::drop_rules();
    expect(library_test::fill_default_map(), "the map is filled");
    const bool driver_works = script_failures(&input);
    std::map<uint32_t, RemarkRule> installed;
    for (int request = 0; request < kMostRequests && !input.is_empty(); ++request) {
        if (input.u8() % kDeleteOneIn == 1) {
            remove(&input, driver_works, &installed);
        } else {
            add(&input, driver_works, &installed);
        }
        expect(library_test::installed_rules().size() == installed.size(), "one rule for each number");
    }
    for (const auto &[id, rule] : installed) {
        const FpListNode *node = adp_fp_find_list_node_by_entity(kRemarkSubmodule, id);
        expect(node != nullptr, "an installed rule stays");
        expect_rule(node->entity, rule);
    }
    library_test::drop_rules();
    library_test::drop_map();
    return 0;
}
