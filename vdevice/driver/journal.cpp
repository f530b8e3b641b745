// Adding lines to the log.
#include "vdevice/driver/journal.h"

#include <utility>

namespace vdevice::driver {

namespace {

/** Gives back the memory of what is cut off, too. */
void cut(std::string &text) {
    if (text.size() > Journal::kMaxText) {
        text.resize(Journal::kMaxText);
        text.shrink_to_fit();
    }
}

}  // namespace

void Journal::add(LogLine line) {
    cut(line.word);
    cut(line.text);
    if (lines_.size() >= kMaxLines) {
        lines_.pop_front();
    }
    lines_.push_back(std::move(line));
    ++total_;
}

}  // namespace vdevice::driver
