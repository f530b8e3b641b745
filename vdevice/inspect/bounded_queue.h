// What one client has not taken yet of what is told frame by frame. It is bounded, and never waited for: a client that
// is too slow is told how much it missed.
#pragma once

#include <stddef.h>
#include <stdint.h>
#include <deque>
#include <functional>
#include <optional>
#include <utility>
#include <variant>

namespace vdevice::inspect {

struct Missed {
    uint64_t count;
};

template <typename Item>
class BoundedQueue {
  public:
    using Taken = std::variant<Item, Missed>;

    /** @p wake is called when the queue is no longer empty. */
    BoundedQueue(size_t most, std::function<void()> wake) : most_{most}, wake_{std::move(wake)} {}

    bool has_room(size_t size = 1) const { return size <= most_ - used_; }

    /** Counts it as missed if there is no room. Sizes are in whatever unit the bound is. */
    void put(Item item, size_t size = 1) {
        if (!has_room(size)) {
            ++missed_;
            return;
        }
        const bool was_empty = waiting_.empty() && missed_ == 0;
        waiting_.push_back({std::move(item), size, std::exchange(missed_, 0)});
        used_ += size;
        if (was_empty) {
            wake_();
        }
    }
    /** Counts one that was not put. */
    void miss() { ++missed_; }
    /** Discards the oldest items until there is room, and counts them as missed. */
    void make_room(size_t size) {
        while (!has_room(size) && !waiting_.empty()) {
            const uint64_t missed = waiting_.front().missed_before + 1;
            used_ -= waiting_.front().size;
            waiting_.pop_front();
            (waiting_.empty() ? missed_ : waiting_.front().missed_before) += missed;
        }
    }

    /** The next item, or how many are missing before it or behind the last one. */
    std::optional<Taken> take() {
        uint64_t &missed = waiting_.empty() ? missed_ : waiting_.front().missed_before;
        if (missed != 0) {
            return Missed{std::exchange(missed, 0)};
        }
        if (waiting_.empty()) {
            return std::nullopt;
        }
        Taken taken{std::move(waiting_.front().item)};
        used_ -= waiting_.front().size;
        waiting_.pop_front();
        return taken;
    }

  private:
    struct Waiting {
        Item item;
        size_t size;
        uint64_t missed_before;
    };

    const size_t most_;
    std::function<void()> wake_;
    std::deque<Waiting> waiting_;
    size_t used_ = 0;
    uint64_t missed_ = 0; /**< behind those that wait */
};

}  // namespace vdevice::inspect
