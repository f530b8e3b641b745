// Meters and counters of the field processor, and what it does with frames that match no entry.
#include <algorithm>
#include <limits>
#include <utility>

#include "vdevice/driver/driver.h"

namespace vdevice::driver {
namespace {

using chip::CounterType;
using chip::FieldCounters;
using chip::MissAction;
using chip::Status;

Status check_counter(int32_t counter, int32_t type) {
    if (counter < 0 || static_cast<uint32_t>(counter) >= FieldCounters::kCounters) {
        return Status::kCounterRange;
    }
    return type >= 0 && type < static_cast<int32_t>(CounterType::kCount) ? Status::kOk : Status::kBadArgument;
}

class FieldMeters : public FieldMetersCalls {
  public:
    FieldMeters(chip::Switch &chip, Clock clock) : chip_{chip}, clock_{std::move(clock)} {}

    Status user_field_meter_entry_set(uint32_t rate, uint32_t meter) override {
        return chip_.fields().meters().set(meter, rate, clock_());
    }

    Status user_field_meter_destroy(uint32_t entry) override { return chip_.fields().remove_meter_of(entry); }

    Status user_field_meter_ifg_exclude_init() override {
        chip_.fields().meters().exclude_gap();
        return Status::kOk;
    }

    Status user_field_get_statistics(int32_t counter, int32_t type, int32_t &count) override {
        const Status status = check_counter(counter, type);
        if (status == Status::kOk) {
            constexpr uint64_t kMost = std::numeric_limits<int32_t>::max();
            const uint64_t value =
                chip_.fields().counters().get(static_cast<uint32_t>(counter), static_cast<CounterType>(type));
            count = static_cast<int32_t>(std::min(value, kMost));
        }
        return status;
    }

    Status user_field_clear_statistics(int32_t counter, int32_t type) override {
        const Status status = check_counter(counter, type);
        if (status == Status::kOk) {
            chip_.fields().counters().clear(static_cast<uint32_t>(counter), static_cast<CounterType>(type));
        }
        return status;
    }

    Status user_field_lookupMissAct_set(int32_t port, uint32_t action) override {
        if (action >= static_cast<uint32_t>(MissAction::kCount)) {
            return Status::kBadArgument;
        }
        return chip_.set_miss_action(port, static_cast<MissAction>(action));
    }

  private:
    chip::Switch &chip_;
    Clock clock_;
};

}  // namespace

std::unique_ptr<FieldMetersCalls> field_meters(chip::Switch &chip, Clock clock) {
    return std::make_unique<FieldMeters>(chip, std::move(clock));
}

}  // namespace vdevice::driver
