/**
 * @file show_parts.h
 * A recording shown part by part, in bounded memory, also while it is written.
 */
#pragma once

#include <functional>

#include "tools/adptrace/recording/parts.h"
#include "tools/adptrace/show/options.h"

namespace adptrace {

struct Output {
    LineSink write;
    std::function<void()> flush;
};

/**
 * Shows each call that is within none when it has ended, with all that is within it. One that is followed ends with the
 * recorded program, or when nobody reads the standard output any more. Throws BadRecording.
 */
void show_parts(const Options &options, const Output &output, const Parts::Limits &limits = {});

}  // namespace adptrace
