/**
 * @file progress.h
 * How far a long search is: a line on a terminal that is rewritten, else a line every few seconds.
 */
#pragma once

#include <stddef.h>
#include <chrono>
#include <string>

namespace adptrace {

class Progress {
  public:
    using Clock = std::chrono::steady_clock;

    Progress(bool is_terminal, Clock::time_point now) : is_terminal_(is_terminal), shown_(now) {}

    /** What to write to the terminal or the log now, mostly nothing for a log. */
    std::string update(const std::string &state, Clock::time_point now);
    /** What removes the line. */
    std::string finish();

  private:
    static constexpr std::chrono::seconds kEvery{5};

    bool is_terminal_;
    bool has_line_ = false;
    Clock::time_point shown_;
};

}  // namespace adptrace
