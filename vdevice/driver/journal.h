// What the device's software told the device: log lines, trace texts, link changes. The newest lines are kept.
#pragma once

#include <stdint.h>
#include <deque>
#include <string>

#include "vdevice/chip/tables/mac_table.h"

namespace vdevice::driver {

struct LogLine {
    chip::Time time{};
    int32_t level = 0;
    int32_t module = 0;
    std::string word; /**< the module's name */
    std::string text;
};

class Journal {
  public:
    static constexpr size_t kMaxLines = 4096;
    static constexpr size_t kMaxText = 1024;

    /** Adds a line; the oldest makes room for it and an overlong text is cut. */
    void add(LogLine line);
    const std::deque<LogLine> &lines() const { return lines_; }
    /** Lines added since the device was switched on, those that had to make room included. */
    uint64_t total() const { return total_; }

  private:
    std::deque<LogLine> lines_;
    uint64_t total_ = 0;
};

}  // namespace vdevice::driver
