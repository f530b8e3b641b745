// Look-ups in the call table.
#include "calls/call_table.h"

#include <algorithm>
#include <array>

namespace calls {

namespace {

constexpr size_t kLogParams = 5;

}  // namespace

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

size_t extent(std::span<const Param> params, size_t index, const void *const *arguments) {
    const Param &param = params[index];
    if (param.counted_by == kNotCounted) {
        return param.extent;
    }
    const auto counter = static_cast<size_t>(param.counted_by);
    const void *number = target(params[counter], arguments[counter]);
    int64_t count = number == nullptr ? 0 : load(params[counter].element.kind, number);
    if (param.counts_16_bits) {
        count = static_cast<uint16_t>(count);
    }
    return count < 0 || count > param.most ? 0 : static_cast<size_t>(count);
}

std::span<const Param> log_params() {
    static const std::array<Param, kLogParams> params = [] {
        std::array<Param, kLogParams> each{};
        const Call &logger = call(CallId::Log_logging_func);
        std::copy(logger.params.begin(), logger.params.end(), each.begin());
        each.back() = each[kLogParams - 2];
        each.back().name = "text";
        return each;
    }();
    return params;
}

}  // namespace calls
