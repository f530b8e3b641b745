/**
 * @file show.h
 * A recording as lines that people read.
 */
#pragma once

#include <functional>
#include <string>

#include "tools/adptrace/recording/recording.h"
#include "tools/adptrace/show/call_text.h"
#include "tools/adptrace/show/filter.h"

namespace adptrace {

struct ShowOptions {
    Filter filter;
    Style style;
    bool is_tree = false;
    bool has_frames = false;
};

/** Takes a line, which ends with a newline. */
using LineSink = std::function<void(const std::string &line)>;

/** No more than a line is kept. */
void show(const Recording &recording, const ShowOptions &options, const LineSink &sink);

}  // namespace adptrace
