// Parses states.
#include "tools/vdevctl/state_file.h"

#include <nlohmann/json.hpp>
#include <stdexcept>

namespace vdevctl {

using nlohmann::json;

json state_in(std::string_view content, const std::string &file) {
    constexpr int kMaxDepth = 16;
    // Comparing goes down by functions that call themselves, so the depth is limited.
    bool is_too_deep = false;
    const auto check_depth = [&](int depth, json::parse_event_t, const json &) {
        is_too_deep = is_too_deep || depth > kMaxDepth;
        return !is_too_deep;
    };
    json state = json::parse(content, check_depth, false);
    if (is_too_deep || !state.is_object() || !state.contains(kState) || !state[kState].is_number_integer()) {
        throw std::runtime_error{file + " is no state that 'vdevctl --json state' printed."};
    }
    return state;
}

}  // namespace vdevctl
