/**
 * @file events.h
 * What is in a recording besides calls, in its order.
 */
#pragma once

#include <stddef.h>
#include <stdint.h>
#include <vector>

#include "tools/adptrace/recording/recording.h"

namespace adptrace {

struct Event {
    enum class Kind : uint8_t { kStart, kExit, kBoard, kFrame };

    Kind kind;
    size_t line;
    size_t process;
    size_t index; /**< of the frame or the board */
    int64_t at;
};

std::vector<Event> events_of(const Recording &recording);

}  // namespace adptrace
