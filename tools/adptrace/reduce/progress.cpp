// A terminal's line is rewritten as a whole.
#include "tools/adptrace/reduce/progress.h"

namespace adptrace {
namespace {

constexpr const char *kNewLine = "\r\x1b[K";

}  // namespace

std::string Progress::update(const std::string &state, Clock::time_point now) {
    if (is_terminal_) {
        has_line_ = true;
        return kNewLine + state;
    }
    if (now - shown_ < kEvery) {
        return "";
    }
    shown_ = now;
    return state + "\n";
}

std::string Progress::finish() {
    return has_line_ ? kNewLine : "";
}

}  // namespace adptrace
