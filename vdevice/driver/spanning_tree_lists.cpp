// Lists of spanning-tree groups and of their VLANs: by chunks into the caller's memory, and as handles that stand for
// the driver's own memory and are given back.
#include <algorithm>
#include <vector>

#include "vdevice/driver/driver.h"
#include "vdevice/driver/list_handles.h"

namespace vdevice::driver {
namespace {

using chip::Status;
using ListKind = ListHandles::Kind;

/** Writes the elements of one chunk; a chunk beyond the last element has none. */
template <typename Element, typename Out>
Status copy_chunk(const std::vector<Element> &elements, Out *out, uint32_t index, uint32_t size) {
    if (size == 0) {
        return Status::kBadArgument;
    }
    const uint64_t first = std::min<uint64_t>(uint64_t{index} * size, elements.size());
    const uint64_t count = std::min<uint64_t>(size, elements.size() - first);
    std::copy_n(elements.begin() + static_cast<ptrdiff_t>(first), count, out);
    return Status::kOk;
}

class SpanningTreeLists : public SpanningTreeListsCalls {
  public:
    SpanningTreeLists(chip::Switch &chip, ListHandles &lists) : chip_{chip}, lists_{lists} {}

    Status user_stg_each_time_list(int32_t *groups, uint32_t chunk_index, uint32_t chunk_size) override {
        return copy_chunk(chip_.stp().list(), groups, chunk_index, chunk_size);
    }

    Status user_stg_vlan_each_time_list(int32_t stg, uint16_t *vlans, uint32_t chunk_index,
                                        uint32_t chunk_size) override {
        const Status status = chip_.stp().check(stg);
        return status == Status::kOk ? copy_chunk(chip_.stp().vlans(stg), vlans, chunk_index, chunk_size) : status;
    }

    Status user_stg_list(adp_word_t &list, int32_t &count) override {
        return open(ListKind::kGroups, chip_.stp().list().size(), list, count);
    }

    Status user_stg_list_destroy(uint32_t list, int32_t count) override {
        return lists_.close({ListKind::kGroups, list, count});
    }

    Status user_stg_vlan_list(int32_t stg, adp_word_t &list, int32_t &count) override {
        const Status status = chip_.stp().check(stg);
        return status == Status::kOk ? open(ListKind::kVlans, chip_.stp().vlans(stg).size(), list, count) : status;
    }

    Status user_stg_vlan_list_destroy(uint32_t list, int32_t count) override {
        return lists_.close({ListKind::kVlans, list, count});
    }

  private:
    Status open(ListKind kind, size_t size, adp_word_t &list, int32_t &count) {
        if (!lists_.has_room()) {
            return Status::kTooManyLists;
        }
        count = static_cast<int32_t>(size);
        list = lists_.open(kind, count);
        return Status::kOk;
    }

    chip::Switch &chip_;
    ListHandles &lists_;
};

}  // namespace

std::unique_ptr<SpanningTreeListsCalls> spanning_tree_lists(chip::Switch &chip, ListHandles &lists) {
    return std::make_unique<SpanningTreeLists>(chip, lists);
}

}  // namespace vdevice::driver
