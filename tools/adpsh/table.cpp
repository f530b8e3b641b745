#include "tools/adpsh/table.h"

#include <algorithm>

namespace adpsh {

namespace {

template <typename T>
const T *find(std::span<const T> rows, std::string_view name) {
    const auto found = std::find_if(rows.begin(), rows.end(), [name](const T &row) { return row.name == name; });
    return found == rows.end() ? nullptr : &*found;
}

bool is_status_name(std::string_view name) {
    return name == "ADP_OK" || name == "ADP_FAIL" || name.substr(0, 6) == "ADP_E_";
}

}  // namespace

const Call *find_call(std::string_view name) {
    return find(calls(), name);
}
const Table *find_table(std::string_view name) {
    return find(tables(), name);
}
const Constant *find_constant(std::string_view name) {
    return find(constants(), name);
}

const Constant *find_status(int64_t status) {
    for (const Constant &constant : constants()) {
        if (constant.value == status && is_status_name(constant.name)) {
            return &constant;
        }
    }
    return nullptr;
}

bool is_inferable_count(const Call &call, size_t index) {
    return std::any_of(call.parameters.begin(), call.parameters.end(), [index](const Parameter &parameter) {
        return is_input(parameter) && parameter.counter == static_cast<int>(index);
    });
}

std::string usage(const Call &call) {
    std::string text = call.name;
    for (size_t i = 0; i < call.parameters.size(); ++i) {
        if (is_input(call.parameters[i])) {
            const bool optional = is_inferable_count(call, i);
            text += std::string(optional ? " [" : " ") + call.parameters[i].name + (optional ? "]" : "");
        }
    }
    std::string outputs;
    for (const Parameter &parameter : call.parameters) {
        if (is_output(parameter)) {
            outputs += std::string(" ") + parameter.name;
        }
    }
    return outputs.empty() ? text : text + " ->" + outputs;
}

}  // namespace adpsh
