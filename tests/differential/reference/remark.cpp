// Rule records are filled, and the rules that remark packets.
#include <cstdio>
#include <cstring>

#include "tests/differential/reference/log.h"

namespace reference {
namespace {

void fill_field(uint8_t *field, const void *from, uint32_t length) {
    if (length == 2) {
        uint16_t number = 0;
        std::memcpy(&number, from, sizeof number);
        put_word(field, number);
    } else if (length != 0) {
        std::memcpy(field, from, length);
    }
}

}  // namespace

int32_t adp_fp_add_entity_qualify(FpEntity *e, uint32_t type, const void *data, uint32_t data_len, const void *mask,
                                  int32_t mask_len) {
    if (e->qualify_num >= 16) {
        printf("%s:[%05d] Fp qualify number=[%d] was full!~\n", "adp_fp_add_entity_qualify", 674, e->qualify_num);
        return -1;
    }
    if (e->qualify_num < 0 || data_len > 64 || mask_len < 0 || mask_len > 64) {
        return -1;
    }
    FpQualify &qualify = e->qualifies[e->qualify_num];
    qualify.type = type;
    fill_field(qualify.data, data, data_len);
    fill_field(qualify.mask, mask, static_cast<uint32_t>(mask_len));
    return e->qualify_num++;
}

int32_t adp_fp_add_entity_action(FpEntity *e, uint32_t type, const void *param, int32_t param_len, const void *param2,
                                 int32_t param2_len) {
    if (e->action_num >= 8) {
        printf("%s:[%05d] Fp qualify number=[%d] was full!~\n", "adp_fp_add_entity_action", 720, e->qualify_num);
        return -1;
    }
    if (e->action_num < 0 || (param != nullptr && param_len > 256) || (param2 != nullptr && param2_len > 256)) {
        return -1;
    }
    FpAction &action = e->actions[e->action_num];
    action.type = type;
    if (param != nullptr && param_len > 0) {
        std::memcpy(action.param, param, static_cast<size_t>(param_len));
    }
    if (param2 != nullptr && param2_len > 0) {
        std::memcpy(action.param2, param2, static_cast<size_t>(param2_len));
    }
    return e->action_num++;
}

namespace {

struct Field {
    uint32_t type;
    const void *data;
    uint32_t length;
};

void append(FpEntity *entity, uint32_t type, const void *data, uint32_t length) {
    uint8_t ones[64];
    std::memset(ones, 0xFF, sizeof ones);
    reference::adp_fp_add_entity_qualify(entity, type, data, length, ones, static_cast<int32_t>(length));
}

/** Adds the field that the rule matches; false when there is none of that number. */
bool append_field(FpEntity *entity, const RemarkRule &rule) {
    const uint32_t types[] = {7, 6, 23, 22, 29, 10, 9, 30, 31, 332, 27, 28};
    if (rule.match_field >= 12) {
        return false;
    }
    if (rule.match_field <= 1) {
        append(entity, types[rule.match_field], rule.match_value, 6);
        return true;
    }
    uint32_t value = word_of(rule.match_value);
    if (rule.match_field == 8 || rule.match_field == 9) {
        const uint32_t ip_type = rule.match_field == 8 ? 5 : 10;
        append(entity, 61, &ip_type, 4);
        value *= 4;
    }
    append(entity, types[rule.match_field], &value, 4);
    return true;
}

}  // namespace

adp_status_t adp_add_remark_rule(RemarkRule *rule) {
    if (rule == nullptr) {
        return 101;
    }
    const uint64_t shifted = (uint64_t{rule->port_bitmap[0]} << 32 | rule->port_bitmap[1]) << 1;
    rule->port_bitmap[0] = static_cast<uint32_t>(shifted >> 32);
    rule->port_bitmap[1] = static_cast<uint32_t>(shifted);
    if (rule->rule_form != 7 && rule->rule_form != 1) {
        return 101;
    }
    bool is_good = rule->remark_kind == 1 || rule->remark_kind == 2;
    FpEntity entity{};
    entity.submodule_type = 1;
    entity.entity_id = rule->rule_id;
    entity.priority = rule->rule_id;
    PortSet ports;
    ports.word[0] = rule->port_bitmap[1];
    ports.word[1] = rule->port_bitmap[0];
    append(&entity, 13, ports.word.data(), 32);
    if (rule->rule_form == 1 && !append_field(&entity, *rule)) {
        is_good = false;
    }
    const uint32_t value = rule->remark_value;
    reference::adp_fp_add_entity_action(&entity, rule->remark_kind == 1 ? 11 : 1, &value, 4, nullptr, 0);
    if (reference::adp_fp_add_entity_rule(entity) < 0) {
        return 102;
    }
    return is_good ? 0 : 102;
}

adp_status_t adp_del_remark_rule(uint32_t rule_id) {
    return adp_fp_delete_entity_rule(1, rule_id & 0xFFFF, 0) < 0 ? 102 : 0;
}

}  // namespace reference
