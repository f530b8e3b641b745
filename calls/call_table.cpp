// Look-ups in the call table.
#include "calls/call_table.h"

#include <algorithm>

namespace calls {

std::optional<CallId> find_call(std::string_view name) {
    const auto table = calls();
    const auto found = std::lower_bound(table.begin(), table.end(), name,
                                        [](const Call &call, std::string_view wanted) { return call.name < wanted; });
    if (found == table.end() || found->name != name) {
        return std::nullopt;
    }
    return static_cast<CallId>(found - table.begin());
}

std::optional<size_t> find_param(const Call &call, std::string_view name) {
    for (size_t index = 0; index < call.params.size(); ++index) {
        if (call.params[index].name == name) {
            return index;
        }
    }
    return std::nullopt;
}

size_t extent(const Call &call, size_t index, const void *const *arguments) {
    const Param &param = call.params[index];
    if (param.counted_by == kNotCounted) {
        return param.extent;
    }
    const auto counter = static_cast<size_t>(param.counted_by);
    const void *number = target(call.params[counter], arguments[counter]);
    const int64_t count = number == nullptr ? 0 : load(call.params[counter].element.kind, number);
    return count < 0 ? 0 : static_cast<size_t>(count);
}

bool is_event_message(const Call &call, const Param &param) {
    return &call == &calls::call(CallId::equeue_send_ucast) && param.is_pointer() && param.element.kind == Kind::kWord;
}

}  // namespace calls
