// Translation of VLANs and VLANs by subnet.
#include "vdevice/driver/check.h"
#include "vdevice/driver/driver.h"
#include "vdevice/driver/tag_words.h"
#include "vdevice/driver/words.h"

namespace vdevice::driver {
namespace {

using chip::Status;
using chip::Subnet;
using chip::TagChange;
using chip::VidMap;

Status add_to(VidMap &table, adp_word_t kind, adp_word_t port, uint32_t vid, const TagChange &change) {
    return number(kind) == kByVlan ? table.add(port_number(port), vid, change) : Status::kBadArgument;
}

Status remove_from(VidMap &table, adp_word_t kind, adp_word_t port, uint32_t vid) {
    return number(kind) == kByVlan ? table.remove(port_number(port), vid) : Status::kBadArgument;
}

Subnet subnet_key(adp_word_t port, adp_word_t address, adp_word_t mask) {
    return Subnet{port_number(port), number(address), number(mask), {}};
}

}  // namespace

int32_t Driver::user_vlan_translate_add(uint32_t unit, uint32_t zero, adp_word_t kind, adp_word_t port,
                                        adp_word_t action, uint32_t old_vid, uint32_t new_vid, adp_word_t priority) {
    return on_chip(unit, zero, [&] {
        if (number(action) != kReplaceTag) {
            return Status::kBadArgument;
        }
        return add_to(chip_.tag_rules().ingress, kind, port, old_vid, {new_vid, number(priority)});
    });
}

int32_t Driver::user_vlan_translate_delete(uint32_t unit, uint32_t zero, adp_word_t kind, adp_word_t port,
                                           uint32_t old_vid) {
    return on_chip(unit, zero, [&] { return remove_from(chip_.tag_rules().ingress, kind, port, old_vid); });
}

int32_t Driver::user_vlan_translate_delete_all(uint32_t unit, uint32_t zero) {
    return clear_table(unit, zero, chip_.tag_rules().ingress);
}

int32_t Driver::user_vlan_translate_get(uint32_t unit, uint32_t zero, adp_word_t port, uint32_t old_vid,
                                        uint32_t *new_vid, uint32_t *priority) {
    return read_change(unit, zero, chip_.tag_rules().ingress, port_number(port), old_vid, new_vid, priority);
}

int32_t Driver::user_vlan_translate_egress_add(uint32_t unit, uint32_t zero, adp_word_t kind, adp_word_t port,
                                               uint32_t old_vid, uint32_t new_vid, adp_word_t priority) {
    return on_chip(unit, zero, [&] {
        return add_to(chip_.tag_rules().egress, kind, port, old_vid, {new_vid, number(priority)});
    });
}

int32_t Driver::user_vlan_translate_egress_delete(uint32_t unit, uint32_t zero, adp_word_t kind, adp_word_t port,
                                                  uint32_t old_vid) {
    return on_chip(unit, zero, [&] { return remove_from(chip_.tag_rules().egress, kind, port, old_vid); });
}

int32_t Driver::user_vlan_translate_egress_delete_all(uint32_t unit, uint32_t zero) {
    return clear_table(unit, zero, chip_.tag_rules().egress);
}

int32_t Driver::user_vlan_translate_egress_get(uint32_t unit, uint32_t zero, adp_word_t port, uint32_t old_vid,
                                               uint32_t *new_vid, uint32_t *priority) {
    return read_change(unit, zero, chip_.tag_rules().egress, port_number(port), old_vid, new_vid, priority);
}

int32_t Driver::user_vlan_ip4_add(uint32_t unit, uint32_t zero, adp_word_t port, adp_word_t address, adp_word_t mask,
                                  uint32_t vid, adp_word_t priority, adp_word_t flags) {
    return on_chip(unit, zero, [&] {
        if (number(flags) != 0) {
            return Status::kBadArgument;
        }
        Subnet subnet = subnet_key(port, address, mask);
        subnet.change = {vid, number(priority)};
        return chip_.tag_rules().subnets.add(subnet);
    });
}

int32_t Driver::user_vlan_ip4_delete(uint32_t unit, uint32_t zero, adp_word_t port, adp_word_t address,
                                     adp_word_t mask) {
    return on_chip(unit, zero, [&] { return chip_.tag_rules().subnets.remove(subnet_key(port, address, mask)); });
}

int32_t Driver::user_vlan_ip4_delete_all(uint32_t unit, uint32_t zero) {
    return clear_table(unit, zero, chip_.tag_rules().subnets);
}

}  // namespace vdevice::driver
