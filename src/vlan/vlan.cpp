// VLANs and their ports as the driver numbers them. VLAN ids are cut to 16 bits.
#include <adp/vlan.h>
#include <netlink_api.h>

#include "core/number.h"

using namespace adp;

namespace {

/** A port word of the plain membership calls: for this driver the address of a port set. */
const uint32_t *as_port_set(adp_word_t word) {
    return reinterpret_cast<const uint32_t *>(word);
}

}  // namespace

adp_status_t adp_vlan_create(uint32_t vid) {
    return user_vlan_create(0, 0, low16(vid));
}

adp_status_t adp_vlan_destroy(uint32_t vid) {
    return user_vlan_destroy(0, 0, low16(vid));
}

adp_status_t adp_vlan_createEx(uint32_t first_vid, uint32_t last_vid) {
    return user_vlan_createEx(0, 0, low16(first_vid), low16(last_vid));
}

adp_status_t adp_vlan_destroyEx(uint32_t first_vid, uint32_t last_vid) {
    return user_vlan_destroyEx(0, 0, low16(first_vid), low16(last_vid));
}

adp_status_t adp_vlan_port_add(uint32_t vid, adp_word_t ports, adp_word_t untagged) {
    return user_vlan_port_add(0, 0, low16(vid), as_port_set(ports), as_port_set(untagged));
}

adp_status_t adp_vlan_port_addEx(uint32_t first_vid, uint32_t last_vid, adp_word_t ports, adp_word_t untagged) {
    return user_vlan_port_addEx(0, 0, low16(first_vid), low16(last_vid), as_port_set(ports), as_port_set(untagged));
}

adp_status_t adp_vlan_port_remove(uint32_t vid, adp_word_t ports) {
    return user_vlan_port_remove(0, 0, low16(vid), as_port_set(ports));
}

adp_status_t adp_vlan_port_removeEx(uint32_t first_vid, uint32_t last_vid, adp_word_t ports) {
    return user_vlan_port_removeEx(0, 0, low16(first_vid), low16(last_vid), as_port_set(ports));
}

adp_status_t adp_vlan_default_set(uint32_t vid) {
    return user_vlan_default_set(0, 0, low16(vid));
}

adp_status_t adp_vlan_default_get(uint32_t *vid) {
    return user_vlan_default_get(0, 0, vid);
}
