// The list of rules: found, removed; their counters, and the action of packets that match none.
#include <algorithm>
#include <cstdio>
#include <cstdlib>

#include "platform/netlink_api.h"
#include "tests/differential/reference/log.h"

namespace reference {

adp_status_t adp_fp_init() {
    tables.rules.clear();
    if (user_field_init(0, 0) >= 0) {
        return 0;
    }
    printf("%s:[%05d]  error funtion ret=%d \n", "adp_fp_init", 428, user_field_init(0, 0));
    return user_field_init(0, 0);
}

FpListNode *adp_fp_find_list_node_by_entity(uint32_t submodule_type, uint32_t entity_id) {
    for (FpListNode *node : tables.rules) {
        if (node->entity.submodule_type == submodule_type && node->entity.entity_id == entity_id) {
            return node;
        }
    }
    return nullptr;
}

namespace {

int32_t clear_entry(uint32_t entry) {
    int32_t result = user_field_action_remove_all(0, 0, entry);
    result |= user_field_qualify_clear(0, 0, entry);
    return result | user_field_entry_destroy(0, 0, entry);
}

int32_t remove_rule(FpListNode *node, uint32_t meters, const char *name, int line, int double_line) {
    if (node == nullptr) {
        return 0;
    }
    const uint32_t entry = node->entity.true_entry;
    const uint32_t entity = node->entity.entity_id;
    log("%s:[%05d] del entry=[%d] true_entry=[%d]\n", name, line, entity, entry);
    int32_t result = 0;
    for (uint32_t n = 0; n < meters; ++n) {
        result |= user_field_meter_destroy(0, 0, entry);
    }
    result |= clear_entry(entry);
    if (adp_fp_is_double_entity_2(entry) != 0) {
        log("%s:[%05d] del double entry=[%d] true_entry=[%d]\n", name, double_line, entity, entry + 1);
        result |= clear_entry(entry + 1);
    }
    tables.rules.erase(std::find(tables.rules.begin(), tables.rules.end(), node));
    std::free(node);
    return result;
}

uint32_t meters_of(const FpEntity &entity) {
    const int32_t count = std::min(entity.action_num, 8);
    return static_cast<uint32_t>(std::count_if(entity.actions, entity.actions + std::max(count, 0),
                                               [](const FpAction &action) { return action.type == 53; }));
}

}  // namespace

adp_status_t adp_fp_delete_entity_rule(uint32_t submodule_type, uint32_t entity_id, uint32_t action_type) {
    return remove_rule(adp_fp_find_list_node_by_entity(submodule_type, entity_id), action_type == 53 ? 1 : 0,
                       "adp_fp_delete_entity_rule", 547, 567);
}

adp_status_t adp_fp_delete_entity_rule_ex(FpEntity entity) {
    return remove_rule(adp_fp_find_list_node_by_entity(entity.submodule_type, entity.entity_id), meters_of(entity),
                       "adp_fp_delete_entity_rule_ex", 612, 636);
}

int32_t adp_fp_get_statistics(int32_t counter_idx, int32_t type) {
    int32_t count = 0;
    user_field_get_statistics(0, 0, counter_idx, type, &count);
    log("%s:[%05d] counter_idx=[%d], type=[0x%x], count=[%d]\n", "adp_fp_get_statistics", 1311, counter_idx, type,
        count);
    return count;
}

adp_status_t adp_fp_clear_statistics(uint32_t /*unused1*/, uint32_t /*unused2*/, int32_t counter_idx, int32_t type) {
    const int32_t result = user_field_clear_statistics(0, 0, counter_idx, type);
    log("%s:[%05d] counter_idx=[%d], type=[0x%x]\n", "adp_fp_clear_statistics", 1335, counter_idx, type);
    return result;
}

adp_status_t adp_fp_lookupMissAct_set(int32_t intf, uint32_t miss_action) {
    const int32_t port = adp_intf_2_phy_id(static_cast<uint32_t>(intf));
    const int32_t result = user_field_lookupMissAct_set(0, 0, port, miss_action);
    log("%s:[%05d] unit=[%d] intfId=[%d] phyId=[%d], Missaction=[0x%x]\n", "adp_fp_lookupMissAct_set", 1349, 0, intf,
        port, miss_action);
    return result;
}

adp_status_t adp_fp_lookupMissAct_pbmp_set(FpPortBitmap ports, uint32_t miss_action) {
    adp_status_t result = 0;
    for (int32_t n = 0; n <= 26; ++n) {
        if ((ports.word[0] >> n & 1) != 0) {
            result = adp_fp_lookupMissAct_set(n, miss_action);
        }
    }
    return result;
}

}  // namespace reference
