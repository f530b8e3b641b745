// Parses requests, which may be anything.
#include "vdevice/process/request.h"

#include <nlohmann/json.hpp>

namespace vdevice {

using nlohmann::json;

json request_in(const std::string &line, const char *&problem) {
    // Values are copied and dumped by functions that call themselves, so their depth is limited.
    constexpr int kMostLevels = 16;
    bool is_too_deep = false;
    const auto check_depth = [&](int depth, json::parse_event_t event, json & /*parsed*/) {
        const bool is_start = event == json::parse_event_t::object_start || event == json::parse_event_t::array_start;
        is_too_deep = is_too_deep || (is_start && depth >= kMostLevels);
        return !is_too_deep;
    };
    json request = json::parse(line, check_depth, false);
    if (is_too_deep) {
        problem = "The request has too many levels of lists and objects.";
    } else if (!request.is_object()) {
        problem = "The request is not a JSON object.";
    }
    return request;
}

}  // namespace vdevice
