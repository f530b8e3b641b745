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
    /** Of a part of a recording: what stands before this line is not shown, nor said of the recording as a whole. */
    size_t first_line = 0;
    bool has_processes = false; /**< there are several, though the recording has lines of one */
};

/** Takes a line, which ends with a newline. */
using LineSink = std::function<void(const std::string &line)>;

/** No more than a line is kept. */
void show(const Recording &recording, const ShowOptions &options, const LineSink &sink);

}  // namespace adptrace
