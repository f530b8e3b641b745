// Lists of spanning-tree groups and of their VLANs: by chunks into the caller's memory, and as handles that stand for
// the driver's own memory and are given back.
#include <algorithm>
#include <vector>

#include "vdevice/driver/check.h"
#include "vdevice/driver/driver.h"

namespace vdevice::driver {
namespace {

using chip::Status;

/** Writes the elements of one chunk; a chunk beyond the last element has none. */
template <typename Element, typename Out>
Status copy_chunk(const std::vector<Element> &elements, Out *out, uint32_t index, uint32_t size) {
    if (out == nullptr || size == 0) {
        return Status::kBadArgument;
    }
    const uint64_t first = std::min<uint64_t>(uint64_t{index} * size, elements.size());
    const uint64_t count = std::min<uint64_t>(size, elements.size() - first);
    std::copy_n(elements.begin() + static_cast<ptrdiff_t>(first), count, out);
    return Status::kOk;
}

/** Handles have 32 bits, on every machine. */
uint32_t handle_of(adp_word_t word) {
    return static_cast<uint32_t>(word);
}

}  // namespace

int32_t Driver::user_stg_each_time_list(uint32_t unit, uint32_t zero, int32_t *groups, uint32_t chunk_index,
                                        uint32_t chunk_size) {
    return on_chip(unit, zero, [&] { return copy_chunk(chip_.stp().list(), groups, chunk_index, chunk_size); });
}

int32_t Driver::user_stg_vlan_each_time_list(uint32_t unit, uint32_t zero, int32_t stg, uint16_t *vlans,
                                             uint32_t chunk_index, uint32_t chunk_size) {
    return on_chip(unit, zero, [&] {
        const Status status = chip_.stp().check(stg);
        return status == Status::kOk ? copy_chunk(chip_.stp().vlans(stg), vlans, chunk_index, chunk_size) : status;
    });
}

int32_t Driver::user_stg_list(uint32_t unit, uint32_t zero, adp_word_t *list, int32_t *count) {
    return on_chip(unit, zero,
                   [&] { return open_list(ListHandles::Kind::kGroups, chip_.stp().list().size(), list, count); });
}

int32_t Driver::user_stg_list_destroy(uint32_t unit, uint32_t zero, adp_word_t list, int32_t count) {
    return on_chip(unit, zero, [&] { return lists_.close({ListHandles::Kind::kGroups, handle_of(list), count}); });
}

int32_t Driver::user_stg_vlan_list(uint32_t unit, uint32_t zero, int32_t stg, adp_word_t *list, int32_t *count) {
    return on_chip(unit, zero, [&] {
        const Status status = chip_.stp().check(stg);
        return status == Status::kOk ? open_list(ListHandles::Kind::kVlans, chip_.stp().vlans(stg).size(), list, count)
                                     : status;
    });
}

int32_t Driver::user_stg_vlan_list_destroy(uint32_t unit, uint32_t zero, adp_word_t list, int32_t count) {
    return on_chip(unit, zero, [&] { return lists_.close({ListHandles::Kind::kVlans, handle_of(list), count}); });
}

Status Driver::open_list(ListHandles::Kind kind, size_t size, adp_word_t *list, int32_t *count) {
    if (list == nullptr || count == nullptr) {
        return Status::kBadArgument;
    }
    if (!lists_.has_room()) {
        return Status::kTooManyLists;
    }
    *count = static_cast<int32_t>(size);
    *list = lists_.open(kind, *count);
    return Status::kOk;
}

}  // namespace vdevice::driver
