// Events in the order of their lines.
#include "tools/adptrace/show/events.h"

#include <algorithm>

namespace adptrace {

std::vector<Event> events_of(const Recording &recording) {
    std::vector<Event> events;
    for (size_t i = 0; i < recording.processes().size(); ++i) {
        const Process &process = recording.processes()[i];
        events.push_back({Event::Kind::kStart, process.line, i, i, process.at});
        if (process.exit_line != 0) {
            events.push_back({Event::Kind::kExit, process.exit_line, i, i, process.ended});
        }
    }
    for (size_t i = 0; i < recording.boards().size(); ++i) {
        const Board &board = recording.boards()[i];
        events.push_back({Event::Kind::kBoard, board.line, board.process, i, board.at});
    }
    for (size_t i = 0; i < recording.frames().size(); ++i) {
        const Frame &frame = recording.frames()[i];
        events.push_back({Event::Kind::kFrame, frame.line, frame.process, i, frame.at});
    }
    std::sort(events.begin(), events.end(), [](const Event &a, const Event &b) { return a.line < b.line; });
    return events;
}

}  // namespace adptrace
