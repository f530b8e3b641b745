// VLAN calls. The second VLAN id of the "Ex" calls ends a range, which is changed whole or not at all. Port sets are
// physical bitmaps of 256 bits, a null address being the empty set.
#include "vdevice/driver/check.h"
#include "vdevice/driver/driver.h"

namespace vdevice::driver {
namespace {

using chip::PortSet;
using chip::Status;
using chip::Vlan;

PortSet ports_at(const uint32_t *words) {
    return words == nullptr ? PortSet{} : PortSet::from_words(words);
}

}  // namespace

int32_t Driver::user_vlan_create(uint32_t unit, uint32_t zero, uint32_t vid) {
    return user_vlan_createEx(unit, zero, vid, vid);
}

int32_t Driver::user_vlan_createEx(uint32_t unit, uint32_t zero, uint32_t first_vid, uint32_t last_vid) {
    return on_chip(unit, zero, [&] { return chip_.vlans().create({first_vid, last_vid}); });
}

int32_t Driver::user_vlan_destroy(uint32_t unit, uint32_t zero, uint32_t vid) {
    return user_vlan_destroyEx(unit, zero, vid, vid);
}

int32_t Driver::user_vlan_destroyEx(uint32_t unit, uint32_t zero, uint32_t first_vid, uint32_t last_vid) {
    return on_chip(unit, zero, [&] { return chip_.destroy_vlans({first_vid, last_vid}); });
}

int32_t Driver::user_vlan_port_add(uint32_t unit, uint32_t zero, uint32_t vid, const uint32_t *ports,
                                   const uint32_t *untagged) {
    return user_vlan_port_addEx(unit, zero, vid, vid, ports, untagged);
}

int32_t Driver::user_vlan_port_addEx(uint32_t unit, uint32_t zero, uint32_t first_vid, uint32_t last_vid,
                                     const uint32_t *ports, const uint32_t *untagged) {
    return on_chip(unit, zero, [&] {
        return chip_.vlans().add_ports({first_vid, last_vid}, ports_at(ports), ports_at(untagged));
    });
}

int32_t Driver::user_vlan_port_remove(uint32_t unit, uint32_t zero, uint32_t vid, const uint32_t *ports) {
    return user_vlan_port_removeEx(unit, zero, vid, vid, ports);
}

int32_t Driver::user_vlan_port_removeEx(uint32_t unit, uint32_t zero, uint32_t first_vid, uint32_t last_vid,
                                        const uint32_t *ports) {
    return on_chip(unit, zero, [&] { return chip_.vlans().remove_ports({first_vid, last_vid}, ports_at(ports)); });
}

int32_t Driver::user_vlan_port_set(uint32_t unit, uint32_t zero, uint32_t vid, const uint32_t *members,
                                   const uint32_t *untagged) {
    return on_chip(unit, zero, [&] { return chip_.vlans().set_ports(vid, ports_at(members), ports_at(untagged)); });
}

int32_t Driver::user_vlan_port_get(uint32_t unit, uint32_t zero, uint32_t vid, uint32_t *members, uint32_t *untagged) {
    return on_chip(unit, zero, [&] {
        if (members == nullptr || untagged == nullptr) {
            return Status::kBadArgument;
        }
        const Vlan *vlan = chip_.vlans().find(vid);
        if (vlan == nullptr) {
            return vid < chip::kMinVid || vid > chip::kMaxVid ? Status::kVlanRange : Status::kVlanMissing;
        }
        vlan->members.to_words(members);
        vlan->untagged.to_words(untagged);
        return Status::kOk;
    });
}

int32_t Driver::user_vlan_default_set(uint32_t unit, uint32_t zero, uint32_t vid) {
    return on_chip(unit, zero, [&] { return chip_.vlans().set_default(vid); });
}

int32_t Driver::user_vlan_default_get(uint32_t unit, uint32_t zero, uint32_t *vid) {
    return on_chip(unit, zero, [&] {
        if (vid == nullptr) {
            return Status::kBadArgument;
        }
        *vid = chip_.vlans().default_vid();
        return Status::kOk;
    });
}

int32_t Driver::user_port_untagged_vlan_set(uint32_t unit, uint32_t zero, int32_t port, uint32_t vid) {
    return on_chip(unit, zero, [&] { return chip_.set_pvid(port, vid); });
}

int32_t Driver::user_port_untagged_vlan_get(uint32_t unit, uint32_t zero, int32_t port, uint32_t *vid) {
    return read_port(unit, zero, port, vid, [](const chip::Port &state) { return uint32_t{state.pvid}; });
}

}  // namespace vdevice::driver
