// Double tags: entries, and each port's mode and tag protocol identifier.
#include "vdevice/driver/driver.h"
#include "vdevice/driver/port_access.h"
#include "vdevice/driver/tag_entries.h"

namespace vdevice::driver {
namespace {

using chip::Port;
using chip::Status;

constexpr uint32_t kAddTag = 0; /**< action: the tag comes in front of what is there. The chip has no other. */

class DoubleTags : public DoubleTagsCalls {
  public:
    explicit DoubleTags(chip::Switch &chip) : chip_{chip} {}

    Status user_vlan_dtag_add(uint32_t kind, int32_t port, uint32_t action, uint32_t inner_vid, uint32_t outer_vid,
                              uint32_t priority) override {
        if (kind != kByVlan || action != kAddTag) {
            return Status::kBadArgument;
        }
        return entries().add(port, inner_vid, {outer_vid, priority});
    }

    Status user_vlan_dtag_delete(uint32_t kind, int32_t port, uint32_t inner_vid) override {
        return kind == kByVlan ? entries().remove(port, inner_vid) : Status::kBadArgument;
    }

    Status user_vlan_dtag_delete_all() override {
        entries().clear();
        return Status::kOk;
    }

    Status user_vlan_dtag_get(int32_t port, uint32_t inner_vid, uint32_t &outer_vid, uint32_t &priority) override {
        return read_entry(entries(), port, inner_vid, outer_vid, priority);
    }

    Status user_port_dtag_mode_set(int32_t port, uint32_t mode) override {
        return change_user_port(chip_, port, [&](Port &state) {
            if (mode >= chip::kDoubleTagModes) {
                return Status::kBadArgument;
            }
            state.tags.mode = static_cast<chip::DoubleTag>(mode);
            return Status::kOk;
        });
    }

    Status user_port_dtag_mode_get(int32_t port, uint32_t &mode) override {
        return read_port(chip_, port, mode, [](const Port &state) { return static_cast<uint32_t>(state.tags.mode); });
    }

    Status user_port_tpid_set(int32_t port, uint32_t tpid, uint32_t /*option*/) override {
        return change_user_port(chip_, port, [&](Port &state) {
            if (!chip::is_tpid(tpid)) {
                return Status::kBadArgument;
            }
            state.tags.tpid = static_cast<uint16_t>(tpid);
            return Status::kOk;
        });
    }

    Status user_port_tpid_get(int32_t port, uint32_t &tpid) override {
        return read_port(chip_, port, tpid, [](const Port &state) { return state.tags.tpid; });
    }

  private:
    chip::VidMap &entries() { return chip_.tag_rules().double_tags; }

    chip::Switch &chip_;
};

}  // namespace

std::unique_ptr<DoubleTagsCalls> double_tags(chip::Switch &chip) {
    return std::make_unique<DoubleTags>(chip);
}

}  // namespace vdevice::driver
