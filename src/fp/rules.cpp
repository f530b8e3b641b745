// The list of installed rules: its start, look-up, and the removal of a rule from hardware and list.
#include "fp/rules.h"

#include <netlink_api.h>
#include <stdlib.h>

#include "core/messages.h"
#include "fp/entry.h"

adp_list_link_t acl_fp_list_head = {&acl_fp_list_head, &acl_fp_list_head};

namespace adp {
namespace {

// The links of a freed node, so that a later use is recognised.
constexpr uintptr_t kPoisonNext = 0x00100100;
constexpr uintptr_t kPoisonPrev = 0x00200200;

constexpr Message kInitFailed{{"adp_fp_init", 428}, "%s:[%05d]  error funtion ret=%d \n"};

/** The log lines of a removal; they name the exported call. */
struct RemovalLog {
    Message entry;
    Message second_entry;
};

constexpr char kEntryFormat[] = "%s:[%05d] del entry=[%d] true_entry=[%d]\n";
constexpr char kSecondEntryFormat[] = "%s:[%05d] del double entry=[%d] true_entry=[%d]\n";
constexpr RemovalLog kByKey{{{"adp_fp_delete_entity_rule", 547}, kEntryFormat},
                            {{"adp_fp_delete_entity_rule", 567}, kSecondEntryFormat}};
constexpr RemovalLog kByRecord{{{"adp_fp_delete_entity_rule_ex", 612}, kEntryFormat},
                               {{"adp_fp_delete_entity_rule_ex", 636}, kSecondEntryFormat}};

FpListNode *node_of(adp_list_link_t *link) {
    return reinterpret_cast<FpListNode *>(link);
}

void unlink_and_free(FpListNode *node) {
    adp_list_link_t &link = node->link;
    link.next->prev = link.prev;
    link.prev->next = link.next;
    link.next = reinterpret_cast<adp_list_link_t *>(kPoisonNext);
    link.prev = reinterpret_cast<adp_list_link_t *>(kPoisonPrev);
    // Without this the compiler drops stores to memory that is about to be freed.
    asm volatile("" : : "r"(node) : "memory");
    free(node);
}

uint32_t destroy_entry(uint32_t entry) {
    auto result = static_cast<uint32_t>(user_field_action_remove_all(fp_handle, kFieldUnit, entry));
    result |= static_cast<uint32_t>(user_field_qualify_clear(fp_handle, kFieldUnit, entry));
    result |= static_cast<uint32_t>(user_field_entry_destroy(fp_handle, kFieldUnit, entry));
    return result;
}

uint32_t destroy_meters(uint32_t entry, uint32_t count) {
    uint32_t result = 0;
    for (uint32_t i = 0; i < count; ++i) {
        result |= static_cast<uint32_t>(user_field_meter_destroy(fp_handle, kFieldUnit, entry));
    }
    return result;
}

/** Destroys the meter of the rule @p meters times. */
uint32_t remove_rule(uint32_t submodule_type, uint32_t entity_id, uint32_t meters, const RemovalLog &messages) {
    FpListNode *node = adp_fp_find_list_node_by_entity(submodule_type, entity_id);
    if (node == nullptr) {
        return 0;
    }
    const uint32_t entry = node->entity.true_entry;
    log_rule(messages.entry, entity_id, entry);
    uint32_t result = destroy_meters(entry, meters);
    result |= destroy_entry(entry);
    if (adp_fp_is_double_entity_2(entry) != 0) {
        log_rule(messages.second_entry, entity_id, entry + 1);
        result |= destroy_entry(entry + 1);
    }
    unlink_and_free(node);
    return result;
}

uint32_t meter_actions_of(const FpEntity &entity) {
    uint32_t count = 0;
    for (int32_t i = 0; i < entity.action_num && i < ADP_FP_ACTIONS; ++i) {
        count += entity.actions[i].type == ADP_FP_ACTION_METER ? 1 : 0;
    }
    return count;
}

}  // namespace

uint32_t remove_replaced_rule(const FpEntity &entity) {
    return remove_rule(entity.submodule_type, entity.entity_id, meter_actions_of(entity), kByRecord);
}

bool record_rule(const FpEntity &entity) {
    auto *node = static_cast<FpListNode *>(malloc(sizeof(FpListNode)));
    if (node == nullptr) {
        return false;
    }
    node->link = {&acl_fp_list_head, acl_fp_list_head.prev};
    node->entity = entity;
    acl_fp_list_head.prev->next = &node->link;
    acl_fp_list_head.prev = &node->link;
    return true;
}

}  // namespace adp

using namespace adp;

// Contract: on failure the driver is asked three times; the second answer is shown, the third is the result.
adp_status_t adp_fp_init() {
    acl_fp_list_head = {&acl_fp_list_head, &acl_fp_list_head};
    if (user_field_init(0, 0) >= 0) {
        return ADP_OK;
    }
    print(kInitFailed, user_field_init(0, 0));
    return user_field_init(0, 0);
}

FpListNode *adp_fp_find_list_node_by_entity(uint32_t submodule_type, uint32_t entity_id) {
    for (adp_list_link_t *link = acl_fp_list_head.next; link != &acl_fp_list_head; link = link->next) {
        FpListNode *node = node_of(link);
        if (node->entity.submodule_type == submodule_type && node->entity.entity_id == entity_id) {
            return node;
        }
    }
    return nullptr;
}

adp_status_t adp_fp_delete_entity_rule(uint32_t submodule_type, uint32_t entity_id, uint32_t action_type) {
    const uint32_t meters = action_type == ADP_FP_ACTION_METER ? 1 : 0;
    return static_cast<adp_status_t>(remove_rule(submodule_type, entity_id, meters, kByKey));
}

adp_status_t adp_fp_delete_entity_rule_ex(FpEntity entity) {
    return static_cast<adp_status_t>(remove_replaced_rule(entity));
}
