// VLANs and the VLAN settings of ports. The second VLAN id of the "Ex" calls ends a range, which is changed whole or
// not at all. Port sets are physical bitmaps of 256 bits, a null address being the empty set.
#include "vdevice/driver/driver.h"
#include "vdevice/driver/port_access.h"

namespace vdevice::driver {
namespace {

using chip::Port;
using chip::PortSet;
using chip::Status;
using chip::Vlan;

PortSet ports_at(const uint32_t *words) {
    return words == nullptr ? PortSet{} : PortSet::from_words(words);
}

class Vlans : public VlansCalls {
  public:
    explicit Vlans(chip::Switch &chip) : chip_{chip} {}

    Status user_vlan_create(uint32_t vid) override { return user_vlan_createEx(vid, vid); }

    Status user_vlan_createEx(uint32_t first_vid, uint32_t last_vid) override {
        return chip_.vlans().create({first_vid, last_vid});
    }

    Status user_vlan_destroy(uint32_t vid) override { return user_vlan_destroyEx(vid, vid); }

    Status user_vlan_destroyEx(uint32_t first_vid, uint32_t last_vid) override {
        return chip_.destroy_vlans({first_vid, last_vid});
    }

    Status user_vlan_port_add(uint32_t vid, const uint32_t *ports, const uint32_t *untagged) override {
        return user_vlan_port_addEx(vid, vid, ports, untagged);
    }

    Status user_vlan_port_addEx(uint32_t first_vid, uint32_t last_vid, const uint32_t *ports,
                                const uint32_t *untagged) override {
        return chip_.vlans().add_ports({first_vid, last_vid}, ports_at(ports), ports_at(untagged));
    }

    Status user_vlan_port_remove(uint32_t vid, const uint32_t *ports) override {
        return user_vlan_port_removeEx(vid, vid, ports);
    }

    Status user_vlan_port_removeEx(uint32_t first_vid, uint32_t last_vid, const uint32_t *ports) override {
        return chip_.vlans().remove_ports({first_vid, last_vid}, ports_at(ports));
    }

    Status user_vlan_port_set(uint32_t vid, const uint32_t *members, const uint32_t *untagged) override {
        return chip_.vlans().set_ports(vid, ports_at(members), ports_at(untagged));
    }

    Status user_vlan_port_get(uint32_t vid, uint32_t *members, uint32_t *untagged) override {
        const Vlan *vlan = chip_.vlans().find(vid);
        if (vlan == nullptr) {
            return chip::is_vid(vid) ? Status::kVlanMissing : Status::kVlanRange;
        }
        vlan->members.to_words(members);
        vlan->untagged.to_words(untagged);
        return Status::kOk;
    }

    Status user_vlan_default_set(uint32_t vid) override { return chip_.vlans().set_default(vid); }

    Status user_vlan_default_get(uint32_t &vid) override {
        vid = chip_.vlans().default_vid();
        return Status::kOk;
    }

    Status user_port_untagged_vlan_set(int32_t port, uint32_t vid) override { return chip_.set_pvid(port, vid); }

    Status user_port_untagged_vlan_get(int32_t port, uint32_t &vid) override {
        return read_port(chip_, port, vid, [](const Port &state) { return state.pvid; });
    }

    Status user_vlan_control_port_set(int32_t port, uint32_t control, int32_t value) override {
        return chip_.change_port(port, [&](Port &state) {
            if (control >= Port::kVlanControls) {
                return Status::kBadArgument;
            }
            state.vlan_controls[control] = value;
            return Status::kOk;
        });
    }

    Status user_vlan_control_port_get(int32_t port, uint32_t control, uint32_t &value) override {
        if (control >= Port::kVlanControls) {
            return Status::kBadArgument;
        }
        return read_port(chip_, port, value,
                         [&](const Port &state) { return static_cast<uint32_t>(state.vlan_controls[control]); });
    }

  private:
    chip::Switch &chip_;
};

}  // namespace

std::unique_ptr<VlansCalls> vlans(chip::Switch &chip) {
    return std::make_unique<Vlans>(chip);
}

}  // namespace vdevice::driver
