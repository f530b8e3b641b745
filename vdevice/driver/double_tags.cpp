// Double tags: entries, and each port's mode and tag protocol identifier.
#include "vdevice/driver/check.h"
#include "vdevice/driver/driver.h"
#include "vdevice/driver/tag_words.h"

namespace vdevice::driver {

using chip::Port;
using chip::Status;
using chip::VidMap;

int32_t Driver::user_vlan_dtag_add(uint32_t unit, uint32_t zero, adp_word_t kind, int32_t port, adp_word_t action,
                                   uint32_t inner_vid, uint32_t outer_vid, adp_word_t priority) {
    return on_chip(unit, zero, [&] {
        if (static_cast<uint32_t>(kind) != kByVlan || static_cast<uint32_t>(action) != kAddTag) {
            return Status::kBadArgument;
        }
        return chip_.tag_rules().double_tags.add(port, inner_vid, {outer_vid, static_cast<uint32_t>(priority)});
    });
}

int32_t Driver::user_vlan_dtag_delete(uint32_t unit, uint32_t zero, adp_word_t kind, int32_t port, uint32_t inner_vid) {
    return on_chip(unit, zero, [&] {
        if (static_cast<uint32_t>(kind) != kByVlan) {
            return Status::kBadArgument;
        }
        return chip_.tag_rules().double_tags.remove(port, inner_vid);
    });
}

int32_t Driver::user_vlan_dtag_delete_all(uint32_t unit, uint32_t zero) {
    return clear_table(unit, zero, chip_.tag_rules().double_tags);
}

int32_t Driver::user_vlan_dtag_get(uint32_t unit, uint32_t zero, int32_t port, uint32_t inner_vid, uint32_t *outer_vid,
                                   uint32_t *priority) {
    return read_change(unit, zero, chip_.tag_rules().double_tags, port, inner_vid, outer_vid, priority);
}

int32_t Driver::read_change(uint32_t unit, uint32_t zero, const VidMap &table, int32_t port, uint32_t vid,
                            uint32_t *new_vid, uint32_t *priority) const {
    return on_chip(unit, zero, [&] {
        if (new_vid == nullptr || priority == nullptr) {
            return Status::kBadArgument;
        }
        chip::TagChange change;
        const Status status = table.get(port, vid, change);
        if (status == Status::kOk) {
            *new_vid = change.vid;
            *priority = change.priority;
        }
        return status;
    });
}

int32_t Driver::user_port_dtag_mode_set(uint32_t unit, uint32_t zero, int32_t port, uint32_t mode) {
    return write_user_port(unit, zero, port, [&](Port &state) {
        if (mode >= chip::kDoubleTagModes) {
            return Status::kBadArgument;
        }
        state.tags.mode = static_cast<chip::DoubleTag>(mode);
        return Status::kOk;
    });
}

int32_t Driver::user_port_dtag_mode_get(uint32_t unit, uint32_t zero, int32_t port, uint32_t *mode) {
    return read_port(unit, zero, port, mode, [](const Port &state) { return static_cast<uint32_t>(state.tags.mode); });
}

int32_t Driver::user_port_tpid_set(uint32_t unit, uint32_t zero, int32_t port, uint32_t tpid, adp_word_t /*option*/) {
    return write_user_port(unit, zero, port, [&](Port &state) {
        if (!chip::is_tpid(tpid)) {
            return Status::kBadArgument;
        }
        state.tags.tpid = static_cast<uint16_t>(tpid);
        return Status::kOk;
    });
}

int32_t Driver::user_port_tpid_get(uint32_t unit, uint32_t zero, int32_t port, uint32_t *tpid) {
    return read_port(unit, zero, port, tpid, [](const Port &state) { return uint32_t{state.tags.tpid}; });
}

}  // namespace vdevice::driver
