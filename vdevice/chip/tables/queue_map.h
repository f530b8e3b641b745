// Which egress queue a priority goes to: one map for the chip, and rows of single ports that replace its rows.
#pragma once

#include <stddef.h>
#include <stdint.h>
#include <algorithm>
#include <array>
#include <optional>

#include "vdevice/chip/frame/chip_ports.h"
#include "vdevice/chip/frame/status.h"
#include "vdevice/chip/tables/port.h"

namespace vdevice::chip {

class QueueMap {
  public:
    /** How many queues there are. Rows that name a queue beyond the last one go to the last one. */
    uint32_t queues() const { return queues_; }
    Status set_queues(uint32_t queues) {
        if (queues == 0 || queues > kQueues) {
            return Status::kQueueRange;
        }
        queues_ = queues;
        return Status::kOk;
    }

    /** The chip's own row; the priority must be one of 0 to 7. */
    uint32_t queue_of(uint32_t priority) const { return std::min(rows_[priority], queues_ - 1); }
    /** The queue on a port, which must exist. */
    uint32_t queue_of(int port, uint32_t priority) const {
        const std::optional<uint8_t> own = own_[static_cast<size_t>(port)][priority];
        return own ? std::min<uint32_t>(*own, queues_ - 1) : queue_of(priority);
    }

    /** The chip's row as it was set, also beyond the last queue. */
    uint32_t row(uint32_t priority) const { return rows_[priority]; }
    /** The port's own row as it was set. */
    std::optional<uint8_t> own_row(int port, uint32_t priority) const {
        return own_[static_cast<size_t>(port)][priority];
    }

    Status set(uint32_t priority, uint32_t queue) {
        const Status status = check(priority, queue);
        if (status == Status::kOk) {
            rows_[priority] = queue;
        }
        return status;
    }
    /** Gives the port, which must exist, a row that replaces the chip's. */
    Status set(int port, uint32_t priority, uint32_t queue) {
        const Status status = check(priority, queue);
        if (status == Status::kOk) {
            own_[static_cast<size_t>(port)][priority] = static_cast<uint8_t>(queue);
        }
        return status;
    }
    /** Removes the port's row: the chip's applies again. Both must exist. */
    void clear(int port, uint32_t priority) { own_[static_cast<size_t>(port)][priority].reset(); }

  private:
    Status check(uint32_t priority, uint32_t queue) const {
        if (priority >= kPriorities) {
            return Status::kBadArgument;
        }
        return queue < queues_ ? Status::kOk : Status::kQueueRange;
    }

    uint32_t queues_ = kQueues;
    std::array<uint32_t, kPriorities> rows_{0, 1, 2, 3, 4, 5, 6, 7};
    std::array<std::array<std::optional<uint8_t>, kPriorities>, kChipPorts> own_{};
};

}  // namespace vdevice::chip
