// Filling a rule record: qualifiers and actions are appended.
#include "core/messages.h"
#include "fp/entry.h"

namespace adp {
namespace {

// Contract: both are printed with the number of qualifiers.
constexpr char kFullFormat[] = "%s:[%05d] Fp qualify number=[%d] was full!~\n";
constexpr Message kQualifiersFull{{"adp_fp_add_entity_qualify", 674}, kFullFormat};
constexpr Message kActionsFull{{"adp_fp_add_entity_action", 720}, kFullFormat};
constexpr uint32_t kShortBytes = 2;

[[gnu::noinline]] int32_t refuse_full(const Message &message, const FpEntity &entity) {
    print(message, entity.qualify_num);
    return ADP_FAIL;
}

void set_qualifier_field(uint8_t *field, const void *from, uint32_t length) {
    if (length == kShortBytes) {
        uint16_t value = 0;
        memcpy(&value, from, sizeof value);
        store_word(field, value);
    } else if (length != 0) {
        memcpy(field, from, length);
    }
}

// The length of what is copied; a null address and a length of 0 or less copy nothing.
uint32_t action_bytes(const void *param, int32_t length) {
    return param != nullptr && length > 0 ? static_cast<uint32_t>(length) : 0;
}

void set_action_field(uint8_t *field, const void *from, uint32_t length) {
    if (length != 0) {
        memcpy(field, from, length);
    }
}

}  // namespace
}  // namespace adp

using namespace adp;

int32_t adp_fp_add_entity_qualify(FpEntity *entity, uint32_t type, const void *data, uint32_t data_len,
                                  const void *mask, int32_t mask_len) {
    const int32_t index = entity->qualify_num;
    if (index >= ADP_FP_QUALIFIERS) {
        return refuse_full(kQualifiersFull, *entity);
    }
    const auto mask_bytes = static_cast<uint32_t>(mask_len);
    if (index < 0 || data_len > ADP_FP_QUALIFIER_BYTES || mask_bytes > ADP_FP_QUALIFIER_BYTES) {
        return ADP_FAIL;
    }
    FpQualify &qualifier = entity->qualifies[index];
    qualifier.type = type;
    set_qualifier_field(qualifier.data, data, data_len);
    set_qualifier_field(qualifier.mask, mask, mask_bytes);
    entity->qualify_num = index + 1;
    return index;
}

int32_t adp_fp_add_entity_action(FpEntity *entity, uint32_t type, const void *param, int32_t param_len,
                                 const void *param2, int32_t param2_len) {
    const int32_t index = entity->action_num;
    if (index >= ADP_FP_ACTIONS) {
        return refuse_full(kActionsFull, *entity);
    }
    const uint32_t bytes = action_bytes(param, param_len);
    const uint32_t bytes2 = action_bytes(param2, param2_len);
    if (index < 0 || bytes > ADP_FP_ACTION_BYTES || bytes2 > ADP_FP_ACTION_BYTES) {
        return ADP_FAIL;
    }
    FpAction &action = entity->actions[index];
    action.type = type;
    set_action_field(action.param, param, bytes);
    set_action_field(action.param2, param2, bytes2);
    entity->action_num = index + 1;
    return index;
}
