// Remark rules: requests of the management software, built into rules of the remark submodule.
#include <stddef.h>

#include "core/number.h"
#include "fp/entry.h"
#include "fp/install.h"

static_assert(sizeof(RemarkRule) == 32 && offsetof(RemarkRule, port_bitmap) == 8 &&
              offsetof(RemarkRule, remark_kind) == 16 && offsetof(RemarkRule, remark_value) == 18 &&
              offsetof(RemarkRule, rule_form) == 20 && offsetof(RemarkRule, match_field) == 21 &&
              offsetof(RemarkRule, match_value) == 24);

namespace adp {
namespace {

constexpr uint32_t kMacBytes = 6;
constexpr uint32_t kDscpShift = 2;  // the DSCP's place in its byte, above the two ECN bits (RFC 2474, RFC 3168)
constexpr uint32_t kNoIpType = ADP_FP_IP_TYPE_ANY;

/** What a match field becomes: the qualifier, its length, the shift of its value, the kind of packet asked for first.
 */
struct Field {
    uint16_t qualifier;
    uint8_t length;
    uint8_t shift;
    uint8_t ip_type;
};

constexpr uint8_t kWord = sizeof(uint32_t);

constexpr Field kFields[] = {
    {ADP_FP_QUALIFY_DST_MAC, kMacBytes, 0, kNoIpType},
    {ADP_FP_QUALIFY_SRC_MAC, kMacBytes, 0, kNoIpType},
    {ADP_FP_QUALIFY_INNER_VLAN_PRI, kWord, 0, kNoIpType},
    {ADP_FP_QUALIFY_INNER_VLAN_ID, kWord, 0, kNoIpType},
    {ADP_FP_QUALIFY_ETHER_TYPE, kWord, 0, kNoIpType},
    {ADP_FP_QUALIFY_DST_IP, kWord, 0, kNoIpType},
    {ADP_FP_QUALIFY_SRC_IP, kWord, 0, kNoIpType},
    {ADP_FP_QUALIFY_IP_PROTOCOL, kWord, 0, kNoIpType},
    {ADP_FP_QUALIFY_DSCP, kWord, kDscpShift, ADP_FP_IP_TYPE_IP4},
    {ADP_FP_QUALIFY_IP6_TRAFFIC_CLASS, kWord, kDscpShift, ADP_FP_IP_TYPE_IP6},
    {ADP_FP_QUALIFY_L4_SRC_PORT, kWord, 0, kNoIpType},
    {ADP_FP_QUALIFY_L4_DST_PORT, kWord, 0, kNoIpType},
};
constexpr uint32_t kFieldCount = sizeof kFields / sizeof *kFields;
static_assert(kFieldCount == ADP_REMARK_L4_DST_PORT + 1);

constexpr adp_status_t check_kind(uint8_t kind) {
    return kind == ADP_REMARK_KIND_PRIORITY || kind == ADP_REMARK_KIND_DSCP ? ADP_OK : ADP_E_REMARK_KIND;
}

/** A rule's entity has the caller's number. */
constexpr uint32_t entity_of_rule(uint32_t rule_id) {
    return rule_id;
}

/** Callers number interfaces from bit 0; the library's bitmaps have the CPU port there. The shift stays in the record.
 */
void shift_to_interfaces(uint32_t (&bitmap)[2]) {
    bitmap[0] = bitmap[0] << 1 | bitmap[1] >> 31;
    bitmap[1] <<= 1;
}

// An empty record has room for all that a request adds.
void append(FpEntity &entity, uint32_t type, const void *data, uint32_t length) {
    static constexpr adp_port_set_t kAllOnes = {
        {UINT32_MAX, UINT32_MAX, UINT32_MAX, UINT32_MAX, UINT32_MAX, UINT32_MAX, UINT32_MAX, UINT32_MAX}};
    adp_fp_add_entity_qualify(&entity, type, data, length, kAllOnes.word, static_cast<int32_t>(length));
}

void append_ports(FpEntity &entity, const RemarkRule &rule) {
    const adp_ports_t interfaces = {rule.port_bitmap[1], rule.port_bitmap[0]};
    append(entity, ADP_FP_QUALIFY_IN_PORTS, interfaces, sizeof interfaces);
}

void append_field(FpEntity &entity, const RemarkRule &rule) {
    const Field &field = kFields[rule.match_field];
    if (field.length == kMacBytes) {
        return append(entity, field.qualifier, rule.match_value, kMacBytes);
    }
    const uint32_t ip_type = field.ip_type;
    const uint32_t value = load_word(rule.match_value) << field.shift;
    if (ip_type != kNoIpType) {
        append(entity, ADP_FP_QUALIFY_IP_TYPE, &ip_type, sizeof ip_type);
    }
    append(entity, field.qualifier, &value, sizeof value);
}

void append_action(FpEntity &entity, const RemarkRule &rule) {
    const uint32_t type =
        rule.remark_kind == ADP_REMARK_KIND_PRIORITY ? ADP_FP_ACTION_SET_PRIORITY : ADP_FP_ACTION_SET_DSCP;
    const uint32_t value = rule.remark_value;
    adp_fp_add_entity_action(&entity, type, &value, sizeof value, nullptr, 0);
}

/** Contract: the rule is installed even if the check of the request failed. @p check is its result. */
adp_status_t install_remark(const RemarkRule &rule, adp_status_t check) {
    FpEntity entity = {};
    entity.submodule_type = ADP_FP_SUBMODULE_REMARK;
    entity.entity_id = entity_of_rule(rule.rule_id);
    entity.priority = rule.rule_id;
    append_ports(entity, rule);
    if (rule.rule_form == ADP_REMARK_FORM_FIELD) {
        if (rule.match_field < kFieldCount) {
            append_field(entity, rule);
        } else {
            check = ADP_E_REMARK_FIELD;
        }
    }
    append_action(entity, rule);
    return install_rule(entity) < 0 || check != ADP_OK ? ADP_E_DRIVER : ADP_OK;
}

}  // namespace
}  // namespace adp

using namespace adp;

adp_status_t adp_add_remark_rule(RemarkRule *rule) {
    if (rule == nullptr) {
        return ADP_E_SELECTOR;
    }
    shift_to_interfaces(rule->port_bitmap);
    if (fp_find_data_by_submodetype(ADP_FP_SUBMODULE_REMARK) == nullptr) {
        return ADP_E_REMARK_NO_SUBMODULE;
    }
    if (rule->rule_form != ADP_REMARK_FORM_PORTS && rule->rule_form != ADP_REMARK_FORM_FIELD) {
        return ADP_E_SELECTOR;
    }
    return install_remark(*rule, check_kind(rule->remark_kind));
}

adp_status_t adp_del_remark_rule(uint32_t rule_id) {
    const uint32_t entity = entity_of_rule(low16(rule_id));
    return adp_fp_delete_entity_rule(ADP_FP_SUBMODULE_REMARK, entity, 0) < 0 ? ADP_E_DRIVER : ADP_OK;
}
