// Where the notes of device and daemon go besides the log that vdevctl shows: the journal, or standard error.
#pragma once

#include "vdevice/device/device.h"
#include "vdevice/process/log_level.h"

namespace vdevice {

class Log {
  public:
    /** To the journal if standard error is connected with it, as systemd does it. Without a level: see default_level().
     */
    explicit Log(std::optional<LogLevel> level);

    void set_level(std::optional<LogLevel> level) { level_ = level.value_or(default_level()); }
    /** Writes the note if its level is at least as urgent as the log's. */
    void write(const Note &note) const;

  private:
    /** A person at the terminal wants to know what is wrong, a journal what has happened. */
    LogLevel default_level() const { return to_journal_ ? LogLevel::kInfo : LogLevel::kWarning; }

    bool to_journal_;
    LogLevel level_;
};

}  // namespace vdevice
