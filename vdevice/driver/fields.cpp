// The field processor's entries, actions, meters, counters and look-up misses.
#include <algorithm>
#include <cstring>
#include <limits>

#include "vdevice/driver/check.h"
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

/** A block's words are native ones, at whatever address. */
template <typename Words>
void copy_words(const uint8_t *block, Words &words) {
    std::memcpy(&words, block, sizeof(words));
}

}  // namespace

int32_t Driver::user_field_init(uint32_t unit, uint32_t zero) {
    return on_chip(unit, zero, [&] {
        chip_.fields().reset();
        return Status::kOk;
    });
}

int32_t Driver::user_field_entry_create_id(int32_t handle, uint32_t unit, int32_t group, uint32_t entry) {
    return on_fields(handle, unit, [&] { return fields().create(group, entry); });
}

int32_t Driver::user_field_entry_prio_set(int32_t handle, uint32_t unit, uint32_t entry, int32_t priority) {
    return on_fields(handle, unit, [&] { return fields().set_priority(entry, priority); });
}

int32_t Driver::user_field_set_double_entry(int32_t handle, uint32_t unit, uint32_t entry) {
    return on_fields(handle, unit, [&] { return fields().join(entry); });
}

int32_t Driver::user_field_set_select_tempate_idx(int32_t handle, uint32_t unit, uint32_t entry, uint32_t index) {
    return on_fields(handle, unit, [&] {
        if (fields().find(entry) == nullptr) {
            return chip::FieldTable::absence_of(entry);
        }
        return index == 0 ? Status::kOk : Status::kBadArgument;
    });
}

int32_t Driver::user_field_entry_install(int32_t handle, uint32_t unit, uint32_t entry) {
    return on_fields(handle, unit, [&] { return fields().install(entry); });
}

int32_t Driver::user_field_entry_destroy(int32_t handle, uint32_t unit, uint32_t entry) {
    return on_fields(handle, unit, [&] { return fields().destroy(entry); });
}

int32_t Driver::user_field_action_add(int32_t handle, uint32_t unit, uint32_t entry, uint32_t type,
                                      const uint8_t *param, const uint8_t *param2) {
    return on_fields(handle, unit, [&] {
        if (param == nullptr || param2 == nullptr) {
            return Status::kBadArgument;
        }
        chip::ActionParameters parameters;
        copy_words(param, parameters.words);
        copy_words(param2, parameters.second);
        chip::Action action;
        const Status status = chip::make_action(type, parameters, action);
        return status == Status::kOk ? fields().add_action(entry, action) : status;
    });
}

int32_t Driver::user_field_action_remove_all(int32_t handle, uint32_t unit, uint32_t entry) {
    return on_fields(handle, unit, [&] { return fields().clear_actions(entry); });
}

int32_t Driver::user_field_meter_entry_set(uint32_t unit, uint32_t rate, uint32_t meter) {
    return on_chip(unit, 0, [&] { return chip_.fields().meters().set(meter, rate, clock_()); });
}

int32_t Driver::user_field_meter_destroy(int32_t handle, uint32_t unit, uint32_t entry) {
    return on_fields(handle, unit, [&] { return chip_.fields().remove_meter_of(entry); });
}

int32_t Driver::user_field_meter_ifg_exclude_init() {
    chip_.fields().meters().exclude_gap();
    return kOk;
}

int32_t Driver::user_field_get_statistics(int32_t handle, uint32_t unit, int32_t counter, int32_t type,
                                          int32_t *count) {
    return on_fields(handle, unit, [&] {
        const Status status = check_counter(counter, type);
        if (status != Status::kOk || count == nullptr) {
            return status == Status::kOk ? Status::kBadArgument : status;
        }
        constexpr uint64_t kMost = std::numeric_limits<int32_t>::max();
        const uint64_t value =
            chip_.fields().counters().get(static_cast<uint32_t>(counter), static_cast<CounterType>(type));
        *count = static_cast<int32_t>(std::min(value, kMost));
        return Status::kOk;
    });
}

int32_t Driver::user_field_clear_statistics(int32_t handle, uint32_t unit, int32_t counter, int32_t type) {
    return on_fields(handle, unit, [&] {
        const Status status = check_counter(counter, type);
        if (status == Status::kOk) {
            chip_.fields().counters().clear(static_cast<uint32_t>(counter), static_cast<CounterType>(type));
        }
        return status;
    });
}

int32_t Driver::user_field_lookupMissAct_set(int32_t handle, uint32_t unit, int32_t port, uint32_t action) {
    return on_fields(handle, unit, [&] {
        if (action >= static_cast<uint32_t>(MissAction::kCount)) {
            return Status::kBadArgument;
        }
        return chip_.set_miss_action(port, static_cast<MissAction>(action));
    });
}

}  // namespace vdevice::driver
