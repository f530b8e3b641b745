// Trunks. A record names their ports.
#include <vector>

#include "vdevice/driver/driver.h"

namespace vdevice::driver {
namespace {

using chip::Status;
using chip::Switch;

/** Hands the record's ports to the operation, if the record can hold as many as it says. */
template <typename Operation>
Status with_ports(const adp_agg_record_t &record, Operation operation) {
    if (record.count < 0 || record.count > ADP_AGG_MEMBER_BYTES) {
        return Status::kBadArgument;
    }
    return operation(std::vector<int>(record.ports, record.ports + record.count));
}

class Trunks : public TrunksCalls {
  public:
    explicit Trunks(Switch &chip) : chip_{chip} {}

    Status user_trunk_init() override {
        chip_.destroy_all_trunks();
        return Status::kOk;
    }

    Status user_trunk_create_id(int32_t trunk) override { return chip_.create_trunk(trunk); }

    Status user_trunk_destroy(int32_t trunk) override { return chip_.destroy_trunk(trunk); }

    Status user_trunk_set(int32_t trunk, const adp_agg_record_t &record) override {
        return with_ports(record, [&](const std::vector<int> &ports) { return chip_.set_trunk(trunk, ports); });
    }

    Status user_trunk_send_data_to_kernel(int32_t trunk, const adp_agg_record_t &record) override {
        return with_ports(record,
                          [&](const std::vector<int> &ports) { return chip_.set_trunk_configured(trunk, ports); });
    }

    Status user_trunk_loadbalance_set(int32_t trunk, uint32_t mode) override {
        return chip_.set_trunk_balance(trunk, mode);
    }

    Status user_trunk_trap_lacp(uint32_t value, uint32_t /*option*/) override {
        chip_.traps().lacp = value != 0;
        return Status::kOk;
    }

  private:
    Switch &chip_;
};

}  // namespace

std::unique_ptr<TrunksCalls> trunks(Switch &chip) {
    return std::make_unique<Trunks>(chip);
}

}  // namespace vdevice::driver
