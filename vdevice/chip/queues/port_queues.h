// The egress queues of one port: frames that wait for its shaper or its line, and what became of them and of those that
// did not have to wait.
#pragma once

#include <stddef.h>
#include <stdint.h>
#include <algorithm>
#include <array>
#include <list>
#include <optional>
#include <vector>

#include "vdevice/chip/frame/frame.h"
#include "vdevice/chip/queues/line.h"
#include "vdevice/chip/queues/scheduler.h"
#include "vdevice/chip/rates/token_bucket.h"

namespace vdevice::chip {

/** Whether a frame was switched or is a mirror's copy, which is not mirrored again. */
enum class Origin : uint8_t {
    kSwitched,
    kIngressMirror, /**< of what comes in on a port */
    kEgressMirror,  /**< of what leaves by a port */
    kFlowMirror,    /**< of what a rule has selected */
};

/** Data of a frame on its way out, besides its octets. */
struct Dispatch {
    uint32_t priority;
    Origin origin;
};

/** A frame with octets of its own: those that it came with are gone when it leaves. */
struct QueuedFrame {
    std::vector<uint8_t> octets;
    Dispatch dispatch;
};

/** Octets without the check sequence, as a port's counters have them. */
struct QueueCounters {
    uint64_t frames = 0;  /**< that have left */
    uint64_t octets = 0;  /**< of these */
    uint64_t drops = 0;   /**< frames for which there was no room */
    uint64_t flushed = 0; /**< frames that were waiting when the port went down */
};

class PortQueues {
  public:
    static constexpr size_t kQueueOctets = 65536; /**< that one queue holds */

    const SchedulerSettings &scheduler() const { return scheduler_.settings(); }
    /** Null when the port is not shaped. */
    const RateLimit *shaper() const { return shaper_ ? &shaper_->limit() : nullptr; }
    const QueueCounters &counters(size_t queue) const { return queues_[queue].counters; }
    /** Of all queues. */
    uint64_t drops() const { return sum(&QueueCounters::drops); }
    uint64_t flushed() const { return sum(&QueueCounters::flushed); }
    size_t waiting_frames(size_t queue) const { return queues_[queue].frames.size(); }
    size_t waiting_octets(size_t queue) const { return queues_[queue].octets; }

    /** Whether frames must go through the queues. */
    bool holds() const { return shaper_.has_value() || line_.has_value() || is_waiting(); }
    bool is_waiting() const { return departure_.has_value(); }
    bool has_room(size_t queue, size_t octets) const { return octets <= kQueueOctets - queues_[queue].octets; }

    /** A frame leaves without having waited. */
    void count(size_t queue, size_t octets);
    void count_drop(size_t queue) { ++queues_[queue].counters.drops; }
    void clear_counters() {
        for (Queue &queue : queues_) {
            queue.counters = {};
        }
    }

    /** When the next frame leaves, if any waits. Frames that leave before must be taken before the calls below. */
    const std::optional<Time> &departure() const { return departure_; }
    /** There must be room. */
    void put(Time now, size_t queue, const Frame &frame, Dispatch dispatch);
    /** The next frame, at its departure. One must wait. */
    QueuedFrame take();
    /** Calls visit(frame) for each frame that waits, those of queue 0 first. */
    template <typename Visit>
    void for_each_waiting(Visit visit) const {
        for (const Queue &queue : queues_) {
            std::for_each(queue.frames.begin(), queue.frames.end(), visit);
        }
    }
    /** Drops the waiting frames and returns the number of their octets. */
    size_t flush();

    /** A rate of 0 ends the shaping: what waits leaves at once. */
    void set_shaper(Time now, const RateLimit &limit);
    void set_scheduler(Time now, const SchedulerSettings &settings);
    /** From now on, or until another speed, in Mbit/s, is set, frames leave as fast as the line takes them. */
    void set_line_speed(uint32_t speed);
    bool has_line() const { return line_.has_value(); }

  private:
    struct Queue {
        std::list<QueuedFrame> frames;
        size_t octets = 0; /**< of the frames that wait */
        QueueCounters counters;
    };

    uint64_t sum(uint64_t QueueCounters::*count) const;
    QueueHeads heads() const;
    void update_departure(Time now);

    std::array<Queue, kQueues> queues_;
    Scheduler scheduler_;
    std::optional<TokenBucket> shaper_;
    std::optional<Line> line_;
    std::optional<Time> departure_;
};

}  // namespace vdevice::chip
