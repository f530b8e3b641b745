// Lines with the prefix of sd-daemon(3) where the journal reads them.
#include "switchd/daemon/log.h"

#include <cstdio>
#include <string>

#include "text/printable.h"
#include "vdevice/process/service.h"

namespace switchd {

using vdevice::LogLevel;

Log::Log(std::optional<LogLevel> level)
    : to_journal_{vdevice::service::is_logging_to_journal()}, level_{level.value_or(LogLevel::kNotice)} {}

void Log::set_level(std::optional<LogLevel> level) {
    level_ = level.value_or(LogLevel::kNotice);
}

void Log::write(LogLevel level, std::string_view text) const {
    if (level <= level_) {
        const std::string start = to_journal_ ? "<" + std::to_string(static_cast<int>(level)) + ">" : "adp-switchd: ";
        std::fprintf(stderr, "%s%s\n", start.c_str(), text::on_one_line(text).c_str());
    }
}

}  // namespace switchd
