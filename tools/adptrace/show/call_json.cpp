// The text of a call is the one that people read; the times are numbers beside it.
#include "tools/adptrace/show/call_json.h"

#include <nlohmann/json.hpp>

#include "tools/adptrace/show/times.h"
#include "tools/adptrace/show/tree.h"

namespace adptrace {
namespace {

using nlohmann::json;

constexpr double kNanosecondsInSecond = 1e9;
constexpr double kNanosecondsInMicrosecond = 1e3;

json call_json(const Recording &recording, const Tree &tree, size_t node, const Style &style) {
    const Call &call = tree.call(node);
    json within = json::array();
    for (size_t child = tree.first_within(node); child != kNone; child = tree.next(child)) {
        within.push_back(call_json(recording, tree, child, style));
    }
    const auto duration = static_cast<double>(time_between(call.began, call.ended)) / kNanosecondsInMicrosecond;
    return {{"at", static_cast<double>(call.began) / kNanosecondsInSecond},
            {"process", recording.processes()[call.process].id},
            {"thread", call.thread},
            {"text", call_text(call, style)},
            {"failed", has_failed(call)},
            {"microseconds", call.has_returned ? json(duration) : json()},
            {"within", std::move(within)}};
}

}  // namespace

std::vector<json> calls_json(const Recording &recording, const ShowOptions &options) {
    const Tree tree(
        recording, [&](const Call &call) { return options.filter.has(recording, call); },
        [](const Frame & /*frame*/) { return false; });
    Style style = options.style;
    style.has_duration = false;
    style.has_colours = false;
    std::vector<json> calls;
    for (size_t root = tree.first(); root != kNone; root = tree.next(root)) {
        calls.push_back(call_json(recording, tree, root, style));
    }
    return calls;
}

}  // namespace adptrace
