// Sorts the calls of a recording.
#include "tools/adptrace/compare/units.h"

#include <stdint.h>

#include <algorithm>
#include <map>
#include <utility>

#include "tools/adptrace/show/filter.h"

namespace adptrace {

std::vector<std::vector<Thread>> threads_of(const Recording &recording, bool with_imported) {
    const std::vector<Call> &calls = recording.calls();
    std::vector<std::vector<Thread>> threads(recording.processes().size());
    std::map<std::pair<size_t, uint32_t>, size_t> places;                        // of threads in their process
    std::vector<std::pair<size_t, size_t>> units(calls.size(), {kNone, kNone});  // thread and unit of each call
    for (size_t index = 0; index < calls.size(); ++index) {
        const Call &call = calls[index];
        std::vector<Thread> &of_process = threads[call.process];
        if (call.within != kNone) {
            units[index] = units[call.within];
        }
        if (!with_imported && !is_of_library(call)) {
            continue;
        }
        if (units[index].first == kNone) {
            const size_t place = places.try_emplace({call.process, call.thread}, of_process.size()).first->second;
            of_process.resize(std::max(of_process.size(), place + 1));
            units[index] = {place, of_process[place].size()};
            of_process[place].emplace_back();
        }
        of_process[units[index].first][units[index].second].push_back(index);
    }
    return threads;
}

}  // namespace adptrace
