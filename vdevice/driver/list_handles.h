// Lists that a caller asked for and has to give back: their number is limited, as the memory behind them would be.
#pragma once

#include <stdint.h>
#include <algorithm>
#include <vector>

#include "vdevice/chip/frame/status.h"

namespace vdevice::driver {

class ListHandles {
  public:
    static constexpr size_t kLists = 64;

    enum class Kind : uint8_t { kGroups, kVlans };

    struct List {
        Kind kind;
        uint32_t handle;
        int32_t count; /**< elements when the list was made */

        friend bool operator==(const List &, const List &) = default;
    };

    /** Those that have not been given back, in the order of asking. */
    const std::vector<List> &open_lists() const { return lists_; }
    bool has_room() const { return lists_.size() < kLists; }

    /** The handle of a new list, never 0. There must be room. */
    uint32_t open(Kind kind, int32_t count) {
        do {
            ++last_handle_;
        } while (last_handle_ == 0 || is_open(last_handle_));
        lists_.push_back({kind, last_handle_, count});
        return last_handle_;
    }

    /** Kind, handle and count must be those of one list. */
    chip::Status close(const List &list) {
        const auto place = std::find(lists_.begin(), lists_.end(), list);
        if (place == lists_.end()) {
            return chip::Status::kListUnknown;
        }
        lists_.erase(place);
        return chip::Status::kOk;
    }

  private:
    bool is_open(uint32_t handle) const {
        return std::any_of(lists_.begin(), lists_.end(), [&](const List &list) { return list.handle == handle; });
    }

    std::vector<List> lists_;
    uint32_t last_handle_ = 0;
};

}  // namespace vdevice::driver
