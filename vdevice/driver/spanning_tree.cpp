// Spanning-tree groups: their VLANs and the ports' states in them.
#include "vdevice/driver/driver.h"

namespace vdevice::driver {
namespace {

using chip::Status;
using chip::StpGroups;

class SpanningTree : public SpanningTreeCalls {
  public:
    explicit SpanningTree(chip::Switch &chip) : chip_{chip} {}

    // BPDUs are the CPU's from now on, whatever the ports' states.
    Status user_stg_init() override {
        chip_.traps().bpdu = true;
        chip_.stp().reset();
        return Status::kOk;
    }

    Status user_stg_create_id(int32_t stg) override { return chip_.stp().create(stg); }

    Status user_stg_destroy(int32_t stg) override { return chip_.stp().destroy(stg); }

    Status user_stg_vlan_add(int32_t stg, uint32_t vid) override { return chip_.stp().add_vlan(stg, vid); }

    Status user_stg_vlan_remove(int32_t stg, uint32_t vid) override { return chip_.stp().remove_vlan(stg, vid); }

    Status user_stg_stp_set(int32_t stg, int32_t port, uint32_t state) override {
        return chip_.stp().set_state(stg, port, state);
    }

    Status user_stg_stp_get(int32_t stg, int32_t port, uint32_t &state) override {
        Status status = chip_.stp().check(stg);
        if (status == Status::kOk) {
            status = chip::Switch::chip_ports().check(port);
        }
        if (status == Status::kOk) {
            state = static_cast<uint32_t>(chip_.stp().state(stg, port));
        }
        return status;
    }

    Status user_stg_default_get(uint32_t &stg) override {
        stg = StpGroups::kDefault;
        return Status::kOk;
    }

    Status user_stg_max_support_count_get(uint32_t &count) override {
        count = StpGroups::kGroups;
        return Status::kOk;
    }

    Status user_stg_stg_count_get(uint32_t &count) override {
        count = static_cast<uint32_t>(chip_.stp().list().size());
        return Status::kOk;
    }

    Status user_stg_vlan_count_get(int32_t stg, uint32_t &count) override {
        const Status status = chip_.stp().check(stg);
        if (status == Status::kOk) {
            count = static_cast<uint32_t>(chip_.stp().vlans(stg).size());
        }
        return status;
    }

  private:
    chip::Switch &chip_;
};

}  // namespace

std::unique_ptr<SpanningTreeCalls> spanning_tree(chip::Switch &chip) {
    return std::make_unique<SpanningTree>(chip);
}

}  // namespace vdevice::driver
