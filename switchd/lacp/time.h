// Time, which is always handed in, and timers that end at a time.
#pragma once

#include <chrono>
#include <optional>

namespace switchd::lacp {

/** Since any moment, the same for all that is handed to a system. It never goes back. */
using Time = std::chrono::nanoseconds;

class Timer {
  public:
    void start(Time now, Time period) { end_ = now + period; }
    void stop() { end_.reset(); }
    /** When it ends, while it runs. */
    [[nodiscard]] std::optional<Time> end() const { return end_; }
    /** Whether its end has come; it has stopped then. */
    bool has_ended(Time now) {
        if (!end_ || now < *end_) {
            return false;
        }
        stop();
        return true;
    }

  private:
    std::optional<Time> end_;
};

}  // namespace switchd::lacp
