// The device's event queue: messages of eight words posted by one process for another. It is bounded, and a message
// that finds no room is refused. The record that a link-event message points to is copied with it, so that a reader
// in another process can use it.
#pragma once

#include <stdint.h>
#include <algorithm>
#include <array>
#include <deque>
#include <optional>

#include "vdevice/chip/tables/mac_table.h"

namespace vdevice::driver {

struct Event {
    static constexpr size_t kWords = 8;
    static constexpr size_t kRecordFields = 4;

    chip::Time time{};
    uint32_t queue = 0;
    std::array<uint32_t, kWords> words{};         /**< word 7, an address, reads as 0 */
    std::array<uint16_t, kRecordFields> record{}; /**< unit, physical port, interface, link status */
};

class EventQueue {
  public:
    static constexpr size_t kCapacity = 1024;

    bool post(const Event &event) {
        if (events_.size() >= kCapacity) {
            return false;
        }
        events_.push_back(event);
        return true;
    }

    /** Takes the oldest message of a queue. */
    std::optional<Event> take(uint32_t queue) {
        const auto found =
            std::find_if(events_.begin(), events_.end(), [&](const Event &event) { return event.queue == queue; });
        if (found == events_.end()) {
            return std::nullopt;
        }
        const Event event = *found;
        events_.erase(found);
        return event;
    }

    void clear() { events_.clear(); }
    const std::deque<Event> &events() const { return events_; }

  private:
    std::deque<Event> events_;
};

}  // namespace vdevice::driver
