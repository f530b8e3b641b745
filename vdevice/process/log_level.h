// How much the daemon logs.
#pragma once

#include <array>
#include <optional>
#include <string_view>

namespace vdevice {

/** With the numbers of syslog. */
enum class LogLevel : int { kError = 3, kWarning = 4, kNotice = 5, kInfo = 6 };

struct LogLevelName {
    LogLevel level;
    const char *name;
};

inline constexpr std::array<LogLevelName, 4> kLogLevels = {{{LogLevel::kError, "error"},
                                                            {LogLevel::kWarning, "warning"},
                                                            {LogLevel::kNotice, "notice"},
                                                            {LogLevel::kInfo, "info"}}};
inline constexpr const char *kLogLevelHelp = "error, warning, notice or info";

constexpr std::optional<LogLevel> log_level_named(std::string_view name) {
    for (const LogLevelName &row : kLogLevels) {
        if (name == row.name) {
            return row.level;
        }
    }
    return std::nullopt;
}

}  // namespace vdevice
