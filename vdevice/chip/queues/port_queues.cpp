// When the next frame of a port leaves, and from which queue.
#include "vdevice/chip/queues/port_queues.h"

#include <numeric>
#include <utility>

namespace vdevice::chip {

void PortQueues::count(size_t queue, size_t octets) {
    QueueCounters &counters = queues_[queue].counters;
    ++counters.frames;
    counters.octets += octets;
}

void PortQueues::put(Time now, size_t queue, const Frame &frame, Dispatch dispatch) {
    Queue &place = queues_[queue];
    std::vector<uint8_t> octets(frame.size());
    frame.copy_to(octets.data());
    place.octets += octets.size();
    place.frames.push_back({std::move(octets), dispatch});
    if (place.frames.size() == 1) {
        update_departure(now);
    }
}

// The frame is chosen and charged at its own time, however late it is taken. So neither the rate nor the shares depend
// on how punctual the caller is.
QueuedFrame PortQueues::take() {
    const Time now = *departure_;
    const size_t number = scheduler_.next(heads());
    Queue &queue = queues_[number];
    QueuedFrame frame = std::move(queue.frames.front());
    queue.frames.pop_front();
    queue.octets -= frame.octets.size();
    if (shaper_) {
        shaper_->charge(frame.octets.size() + kCheckSequenceBytes, now);
    }
    if (line_) {
        line_->send(frame.octets.size(), now);
    }
    count(number, frame.octets.size());
    update_departure(now);
    return frame;
}

size_t PortQueues::flush() {
    size_t octets = 0;
    for (Queue &queue : queues_) {
        octets += std::exchange(queue.octets, 0);
        queue.counters.flushed += queue.frames.size();
        queue.frames.clear();
    }
    departure_.reset();
    return octets;
}

void PortQueues::set_shaper(Time now, const RateLimit &limit) {
    if (limit.rate == 0) {
        shaper_.reset();
    } else if (shaper_) {
        shaper_->set_limit(limit, now);
    } else {
        shaper_.emplace(Counting::kOctets, limit, now);
    }
    update_departure(now);
}

void PortQueues::set_scheduler(Time now, const SchedulerSettings &settings) {
    scheduler_.set(settings);
    update_departure(now);
}

// A frame that waits keeps its departure: what is on the line goes on as before.
void PortQueues::set_line_speed(uint32_t speed) {
    constexpr uint32_t kKilobits = 1000;
    if (line_) {
        line_->set_speed(speed * kKilobits);
    } else {
        line_.emplace(speed * kKilobits);
    }
}

uint64_t PortQueues::sum(uint64_t QueueCounters::*count) const {
    return std::accumulate(queues_.begin(), queues_.end(), uint64_t{0},
                           [&](uint64_t all, const Queue &queue) { return all + queue.counters.*count; });
}

QueueHeads PortQueues::heads() const {
    QueueHeads heads{};
    for (size_t number = 0; number < kQueues; ++number) {
        const Queue &queue = queues_[number];
        if (!queue.frames.empty()) {
            heads[number] = queue.frames.front().octets.size() + kCheckSequenceBytes;
        }
    }
    return heads;
}

/** Which frame it will be may change until then: a copy of the scheduler is asked. */
void PortQueues::update_departure(Time now) {
    const QueueHeads firsts = heads();
    if (firsts == QueueHeads{}) {
        departure_.reset();
        return;
    }
    departure_ = line_ ? std::max(now, line_->free_at()) : now;
    if (shaper_) {
        Scheduler scheduler = scheduler_;
        departure_ = std::max(*departure_, shaper_->ready_at(firsts[scheduler.next(firsts)]));
    }
}

}  // namespace vdevice::chip
