// VLAN translation and subnet VLANs. VLAN ids are cut to 16 bits, other arguments are passed through.
#include <adp/vlan_tag.h>
#include <netlink_api.h>

#include "core/number.h"

using namespace adp;

adp_status_t adp_vlan_translate_add(adp_word_t kind, adp_word_t port, adp_word_t action, uint32_t old_vid,
                                    uint32_t new_vid, adp_word_t priority) {
    return user_vlan_translate_add(0, 0, kind, port, action, low16(old_vid), low16(new_vid), priority);
}

adp_status_t adp_vlan_translate_delete(adp_word_t kind, adp_word_t port, uint32_t old_vid) {
    return user_vlan_translate_delete(0, 0, kind, port, low16(old_vid));
}

adp_status_t adp_vlan_translate_delete_all() {
    return user_vlan_translate_delete_all(0, 0);
}

adp_status_t adp_vlan_translate_get(adp_word_t port, uint32_t old_vid, uint32_t *new_vid, uint32_t *priority) {
    return user_vlan_translate_get(0, 0, port, low16(old_vid), new_vid, priority);
}

adp_status_t adp_vlan_translate_egress_add(adp_word_t kind, adp_word_t port, uint32_t old_vid, uint32_t new_vid,
                                           adp_word_t priority) {
    return user_vlan_translate_egress_add(0, 0, kind, port, low16(old_vid), low16(new_vid), priority);
}

adp_status_t adp_vlan_translate_egress_delete(adp_word_t kind, adp_word_t port, uint32_t old_vid) {
    return user_vlan_translate_egress_delete(0, 0, kind, port, low16(old_vid));
}

adp_status_t adp_vlan_translate_egress_delete_all() {
    return user_vlan_translate_egress_delete_all(0, 0);
}

adp_status_t adp_vlan_translate_egress_get(adp_word_t port, uint32_t old_vid, uint32_t *new_vid, uint32_t *priority) {
    return user_vlan_translate_egress_get(0, 0, port, low16(old_vid), new_vid, priority);
}

adp_status_t adp_vlan_ip4_add(adp_word_t port, adp_word_t address, adp_word_t mask, uint32_t vid, adp_word_t priority,
                              adp_word_t flags) {
    return user_vlan_ip4_add(0, 0, port, address, mask, low16(vid), priority, flags);
}

adp_status_t adp_vlan_ip4_delete(adp_word_t port, adp_word_t address, adp_word_t mask) {
    return user_vlan_ip4_delete(0, 0, port, address, mask);
}

adp_status_t adp_vlan_ip4_delete_all() {
    return user_vlan_ip4_delete_all(0, 0);
}
