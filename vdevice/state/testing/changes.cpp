// All changes, and the calls that are none.
#include "vdevice/state/testing/changes.h"

#include <algorithm>

namespace vdevice::state::test {

using calls::CallId;

std::vector<Change> all_changes() {
    std::vector<Change> changes = port_changes();
    for (const auto &others : {table_changes(), rule_changes()}) {
        changes.insert(changes.end(), others.begin(), others.end());
    }
    return changes;
}

std::vector<CallId> answered_calls() {
    std::vector<CallId> ids;
    for (size_t number = 0; number < calls::kCallCount; ++number) {
        if (const auto id = static_cast<CallId>(number); is_answered(id)) {
            ids.push_back(id);
        }
    }
    return ids;
}

std::vector<CallId> changing_calls() {
    std::vector<CallId> ids;
    for (const Change &change : all_changes()) {
        ids.push_back(calls::find_call(change.call).value());
    }
    return ids;
}

std::vector<CallId> other_calls() {
    const std::vector<CallId> changing = changing_calls();
    std::vector<CallId> ids = answered_calls();
    std::erase_if(ids, [&](CallId id) { return std::find(changing.begin(), changing.end(), id) != changing.end(); });
    return ids;
}

bool has_outputs(CallId id) {
    const auto &params = calls::call(id).params;
    return std::any_of(params.begin(), params.end(), [](const calls::Param &param) { return param.is_written(); });
}

}  // namespace vdevice::state::test
