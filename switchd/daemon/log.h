// What adp-switchd tells people while it runs, on standard error.
#pragma once

#include <optional>
#include <string_view>

#include "vdevice/process/log_level.h"

namespace switchd {

class Log {
  public:
    /** Notices and what is more urgent, without a level. */
    explicit Log(std::optional<vdevice::LogLevel> level);

    void set_level(std::optional<vdevice::LogLevel> level);
    /** A line, in which nothing is left that a terminal would obey; in the journal with its priority. */
    void write(vdevice::LogLevel level, std::string_view text) const;

  private:
    bool to_journal_;
    vdevice::LogLevel level_;
};

}  // namespace switchd
