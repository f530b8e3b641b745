// Structured entries for the journal, lines for standard error.
#include "vdevice/daemon/log.h"

#include <sys/uio.h>

#include <systemd/sd-journal.h>

#include <cstdio>

#include "text/printable.h"
#include "vdevice/process/service.h"

namespace vdevice {
namespace {

bool send_to_journal(const Note &note) {
    std::vector<std::string> entries = {"MESSAGE=" + note.text, "PRIORITY=" + std::to_string(note.level),
                                        "SYSLOG_IDENTIFIER=vdeviced", std::string{"VDEVICE_PART="} + note.word};
    for (const auto &[name, value] : note.fields) {
        entries.push_back(std::string{"VDEVICE_"} + name + "=" + value);
    }
    std::vector<iovec> parts;
    parts.reserve(entries.size());
    for (std::string &entry : entries) {
        parts.push_back({entry.data(), entry.size()});
    }
    return sd_journal_sendv(parts.data(), static_cast<int>(parts.size())) == 0;
}

}  // namespace

Log::Log(std::optional<LogLevel> level)
    : to_journal_{service::is_logging_to_journal()}, level_{level.value_or(default_level())} {}

void Log::write(const Note &note) const {
    if (note.level > static_cast<int>(level_) || (to_journal_ && send_to_journal(note))) {
        return;
    }
    std::string line = "vdeviced: " + text::on_one_line(note.text);
    for (const auto &[name, value] : note.fields) {
        line += std::string{" "} + name + "=" + text::on_one_line(value);
    }
    std::fprintf(stderr, "%s\n", line.c_str());
}

}  // namespace vdevice
