// The three ways to choose a queue.
#include "vdevice/chip/queues/scheduler.h"

#include <algorithm>
#include <optional>

namespace vdevice::chip {
namespace {

/** The highest queue that has a frame and of which @p is_meant is true. */
template <typename Predicate>
std::optional<size_t> highest(const QueueHeads &heads, Predicate is_meant) {
    for (size_t queue = kQueues; queue-- > 0;) {
        if (heads[queue] != 0 && is_meant(queue)) {
            return queue;
        }
    }
    return std::nullopt;
}

}  // namespace

Status SchedulerSettings::check() const {
    const bool has_weights =
        std::all_of(weights.begin(), weights.end(), [](uint32_t weight) { return weight <= kMaxWeight; });
    return mode < SchedulerMode::kCount && has_weights ? Status::kOk : Status::kBadArgument;
}

size_t Scheduler::next(const QueueHeads &heads) {
    if (settings_.mode == SchedulerMode::kRoundRobin) {
        return next_in_turn(heads);
    }
    const bool is_strict = settings_.mode == SchedulerMode::kStrict;
    const auto first = highest(
        heads, [&](size_t queue) { return is_strict || settings_.weights[queue] == SchedulerSettings::kAhead; });
    return first ? *first : next_by_weight(heads);
}

size_t Scheduler::next_in_turn(const QueueHeads &heads) {
    while (heads[turn_] == 0) {
        end_turn();
    }
    const size_t queue = turn_;
    end_turn();
    return queue;
}

// Ends after a few rounds: each gives every queue with a frame at least a quantum.
size_t Scheduler::next_by_weight(const QueueHeads &heads) {
    for (;; end_turn()) {
        size_t &credit = credits_[turn_];
        if (heads[turn_] == 0) {
            credit = 0;
            continue;
        }
        if (!granted_) {
            credit += kQuantum * settings_.weights[turn_];
            granted_ = true;
        }
        if (heads[turn_] <= credit) {
            credit -= heads[turn_];
            return turn_;
        }
    }
}

void Scheduler::end_turn() {
    turn_ = (turn_ + 1) % kQueues;
    granted_ = false;
}

}  // namespace vdevice::chip
