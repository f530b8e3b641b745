// Entries and actions of the field processor.
#include <cstring>

#include "vdevice/driver/driver.h"

namespace vdevice::driver {
namespace {

using chip::Status;

/** A block's words are native ones, at whatever address. */
template <typename Words>
void copy_words(const uint8_t *block, Words &words) {
    std::memcpy(&words, block, sizeof(words));
}

class Fields : public FieldsCalls {
  public:
    explicit Fields(chip::Switch &chip) : chip_{chip} {}

    Status user_field_init() override {
        chip_.fields().reset();
        return Status::kOk;
    }

    Status user_field_entry_create_id(int32_t group, uint32_t entry) override { return table().create(group, entry); }

    Status user_field_entry_prio_set(uint32_t entry, int32_t priority) override {
        return table().set_priority(entry, priority);
    }

    Status user_field_set_double_entry(uint32_t entry) override { return table().join(entry); }

    Status user_field_set_select_tempate_idx(uint32_t entry, uint32_t index) override {
        if (table().find(entry) == nullptr) {
            return chip::FieldTable::absence_of(entry);
        }
        return index == 0 ? Status::kOk : Status::kBadArgument;
    }

    Status user_field_entry_install(uint32_t entry) override { return table().install(entry); }

    Status user_field_entry_destroy(uint32_t entry) override { return table().destroy(entry); }

    Status user_field_action_add(uint32_t entry, uint32_t type, const uint8_t *param, const uint8_t *param2) override {
        chip::ActionParameters parameters;
        copy_words(param, parameters.words);
        copy_words(param2, parameters.second);
        chip::Action action;
        const Status status = chip::make_action(type, parameters, action);
        return status == Status::kOk ? table().add_action(entry, action) : status;
    }

    Status user_field_action_remove_all(uint32_t entry) override { return table().clear_actions(entry); }

  private:
    chip::FieldTable &table() { return chip_.fields().table(); }

    chip::Switch &chip_;
};

}  // namespace

std::unique_ptr<FieldsCalls> fields(chip::Switch &chip) {
    return std::make_unique<Fields>(chip);
}

}  // namespace vdevice::driver
