// How a call is written.
#include "tools/adpsh/usage.h"

#include <algorithm>

namespace adpsh {

using calls::Direction;
using calls::Param;

bool is_inferable_count(const exported::Call &call, size_t index) {
    return std::any_of(call.params.begin(), call.params.end(), [index](const Param &parameter) {
        return parameter.is_read() && parameter.counted_by == static_cast<int32_t>(index);
    });
}

bool is_optional_output(const exported::Call &call, size_t index) {
    const auto is_both = [](const Param &parameter) { return parameter.direction == Direction::kInOut; };
    return index > 0 && call.params[0].is_read() && !is_both(call.params[0]) &&
           std::all_of(call.params.begin() + static_cast<ptrdiff_t>(index), call.params.end(), is_both);
}

std::string usage(const exported::Call &call) {
    std::string text = call.name;
    std::string outputs;
    for (size_t i = 0; i < call.params.size(); ++i) {
        const Param &parameter = call.params[i];
        if (parameter.is_read()) {
            const bool optional = is_inferable_count(call, i) || is_optional_output(call, i);
            text += std::string(optional ? " [" : " ") + parameter.name + (optional ? "]" : "");
        }
        outputs += parameter.is_written() ? std::string(" ") + parameter.name : "";
    }
    return outputs.empty() ? text : text + " ->" + outputs;
}

}  // namespace adpsh
