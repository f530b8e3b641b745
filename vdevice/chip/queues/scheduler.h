// Which of a port's queues the next frame leaves from: strictly by priority, in turn, or by weight.
#pragma once

#include <stddef.h>
#include <stdint.h>
#include <array>

#include "vdevice/chip/frame/status.h"
#include "vdevice/chip/tables/port.h"

namespace vdevice::chip {

using QueueWeights = std::array<uint32_t, kQueues>;

/** The octets of each queue's first frame, 0 for an empty queue. */
using QueueHeads = std::array<size_t, kQueues>;

enum class SchedulerMode : uint32_t {
    kStrict = 0,     /**< the highest queue that has a frame */
    kRoundRobin = 1, /**< a frame of each queue that has one, from queue 0 up */
    kWeighted = 2,   /**< in turn, too, with a share of octets by weight */
    kCount = 3,
};

struct SchedulerSettings {
    static constexpr uint32_t kMaxWeight = 127;
    static constexpr uint32_t kAhead = 0; /**< weight of a queue that is served before those with a weight */

    SchedulerMode mode = SchedulerMode::kStrict;
    QueueWeights weights{1, 1, 1, 1, 1, 1, 1, 1};
    uint32_t delay = 0; /**< kept without effect */

    Status check() const;
};

/**
 * The weighted mode is a deficit round robin (Shreedhar and Varghese, 1995): at its turn a queue gets as many quanta of
 * octets as its weight says, and what it could not use for want of a whole frame is kept until its next turn, unless
 * the queue runs empty. So shares are exact whatever the frames' lengths.
 */
class Scheduler {
  public:
    static constexpr size_t kQuantum = 512; /**< octets for a weight of 1 */

    const SchedulerSettings &settings() const { return settings_; }
    /** Begins a new round. The settings must be valid. */
    void set(const SchedulerSettings &settings) { *this = Scheduler{settings}; }

    /** The queue that the next frame leaves from; it counts as served. One queue must have a frame. */
    size_t next(const QueueHeads &heads);

    Scheduler() = default;

  private:
    explicit Scheduler(const SchedulerSettings &settings) : settings_{settings} {}

    size_t next_in_turn(const QueueHeads &heads);
    size_t next_by_weight(const QueueHeads &heads);
    void end_turn();

    SchedulerSettings settings_;
    size_t turn_ = 0;                       /**< the queue whose turn it is */
    bool granted_ = false;                  /**< the queue has got its quanta for this turn */
    std::array<size_t, kQueues> credits_{}; /**< octets that each queue may still send */
};

}  // namespace vdevice::chip
