// Translation of VLAN ids, and VLANs by subnet.
#include "vdevice/driver/driver.h"
#include "vdevice/driver/tag_entries.h"

namespace vdevice::driver {
namespace {

using chip::Status;
using chip::Subnet;
using chip::VidMap;

constexpr uint32_t kReplaceTag = 0; /**< action: the new VLAN takes the old one's place. The chip has no other. */

// Ports are handed through as words, in which the number of no port is negative.
int32_t port_of(uint32_t word) {
    return static_cast<int32_t>(word);
}

class Translations : public TranslationsCalls {
  public:
    explicit Translations(chip::Switch &chip) : chip_{chip} {}

    Status user_vlan_translate_add(uint32_t kind, uint32_t port, uint32_t action, uint32_t old_vid, uint32_t new_vid,
                                   uint32_t priority) override {
        if (kind != kByVlan || action != kReplaceTag) {
            return Status::kBadArgument;
        }
        return ingress().add(port_of(port), old_vid, {new_vid, priority});
    }

    Status user_vlan_translate_delete(uint32_t kind, uint32_t port, uint32_t old_vid) override {
        return kind == kByVlan ? ingress().remove(port_of(port), old_vid) : Status::kBadArgument;
    }

    Status user_vlan_translate_delete_all() override {
        ingress().clear();
        return Status::kOk;
    }

    Status user_vlan_translate_get(uint32_t port, uint32_t old_vid, uint32_t &new_vid, uint32_t &priority) override {
        return read_entry(ingress(), port_of(port), old_vid, new_vid, priority);
    }

    Status user_vlan_translate_egress_add(uint32_t kind, uint32_t port, uint32_t old_vid, uint32_t new_vid,
                                          uint32_t priority) override {
        return kind == kByVlan ? egress().add(port_of(port), old_vid, {new_vid, priority}) : Status::kBadArgument;
    }

    Status user_vlan_translate_egress_delete(uint32_t kind, uint32_t port, uint32_t old_vid) override {
        return kind == kByVlan ? egress().remove(port_of(port), old_vid) : Status::kBadArgument;
    }

    Status user_vlan_translate_egress_delete_all() override {
        egress().clear();
        return Status::kOk;
    }

    Status user_vlan_translate_egress_get(uint32_t port, uint32_t old_vid, uint32_t &new_vid,
                                          uint32_t &priority) override {
        return read_entry(egress(), port_of(port), old_vid, new_vid, priority);
    }

    Status user_vlan_ip4_add(uint32_t port, uint32_t address, uint32_t mask, uint32_t vid, uint32_t priority,
                             uint32_t flags) override {
        return flags == 0 ? subnets().add(Subnet{port_of(port), address, mask, {vid, priority}}) : Status::kBadArgument;
    }

    Status user_vlan_ip4_delete(uint32_t port, uint32_t address, uint32_t mask) override {
        return subnets().remove(Subnet{port_of(port), address, mask, {}});
    }

    Status user_vlan_ip4_delete_all() override {
        subnets().clear();
        return Status::kOk;
    }

  private:
    VidMap &ingress() { return chip_.tag_rules().ingress; }
    VidMap &egress() { return chip_.tag_rules().egress; }
    chip::SubnetTable &subnets() { return chip_.tag_rules().subnets; }

    chip::Switch &chip_;
};

}  // namespace

std::unique_ptr<TranslationsCalls> translations(chip::Switch &chip) {
    return std::make_unique<Translations>(chip);
}

}  // namespace vdevice::driver
