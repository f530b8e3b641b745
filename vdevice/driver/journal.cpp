#include "vdevice/driver/journal.h"

#include <algorithm>
#include <utility>

namespace vdevice::driver {

void Journal::add(LogLine line) {
    line.word.resize(std::min(line.word.size(), kMaxText));
    line.text.resize(std::min(line.text.size(), kMaxText));
    if (lines_.size() >= kMaxLines) {
        lines_.pop_front();
    }
    lines_.push_back(std::move(line));
    ++total_;
}

}  // namespace vdevice::driver
