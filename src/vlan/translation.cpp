// VLAN translation and subnet VLANs. VLAN ids are cut to 16 bits, other arguments are passed through.
#include <adp/vlan_tag.h>
#include <netlink_api.h>

#include "core/number.h"

using namespace adp;

adp_status_t adp_vlan_translate_add(adp_word_t a, adp_word_t b, adp_word_t c, uint32_t d, uint32_t e, adp_word_t f) {
    return user_vlan_translate_add(0, 0, a, b, c, low16(d), low16(e), f);
}

adp_status_t adp_vlan_translate_delete(adp_word_t a, adp_word_t b, uint32_t c) {
    return user_vlan_translate_delete(0, 0, a, b, low16(c));
}

adp_status_t adp_vlan_translate_delete_all() {
    return user_vlan_translate_delete_all(0, 0);
}

adp_status_t adp_vlan_translate_get(adp_word_t a, uint32_t b, uint32_t *c, uint32_t *d) {
    return user_vlan_translate_get(0, 0, a, low16(b), c, d);
}

adp_status_t adp_vlan_translate_egress_add(adp_word_t a, adp_word_t b, uint32_t c, uint32_t d, adp_word_t e) {
    return user_vlan_translate_egress_add(0, 0, a, b, low16(c), low16(d), e);
}

adp_status_t adp_vlan_translate_egress_delete(adp_word_t a, adp_word_t b, uint32_t c) {
    return user_vlan_translate_egress_delete(0, 0, a, b, low16(c));
}

adp_status_t adp_vlan_translate_egress_delete_all() {
    return user_vlan_translate_egress_delete_all(0, 0);
}

adp_status_t adp_vlan_translate_egress_get(adp_word_t a, uint32_t b, uint32_t *c, uint32_t *d) {
    return user_vlan_translate_egress_get(0, 0, a, low16(b), c, d);
}

adp_status_t adp_vlan_ip4_add(adp_word_t a, adp_word_t b, adp_word_t c, uint32_t d, adp_word_t e, adp_word_t f) {
    return user_vlan_ip4_add(0, 0, a, b, c, low16(d), e, f);
}

adp_status_t adp_vlan_ip4_delete(adp_word_t a, adp_word_t b, adp_word_t c) {
    return user_vlan_ip4_delete(0, 0, a, b, c);
}

adp_status_t adp_vlan_ip4_delete_all() {
    return user_vlan_ip4_delete_all(0, 0);
}
