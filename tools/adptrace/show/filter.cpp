// What is cheap to ask comes first: whether a call failed is asked of its line.
#include "tools/adptrace/show/filter.h"

#include <fnmatch.h>

#include <algorithm>

namespace adptrace {

bool is_of_library(const Call &call) {
    return call.kind == Call::Kind::kLibrary || (call.kind == Call::Kind::kUnknown && call.name.starts_with("adp_"));
}

bool Filter::has(const Recording &recording, size_t in_process, int64_t at) const {
    return at >= since && at <= until && (!process || recording.processes()[in_process].id == *process);
}

bool Filter::has(const Recording &recording, const Call &call) const {
    const std::string name(call.name);
    const auto matches = [&name](const std::string &each) { return fnmatch(each.c_str(), name.c_str(), 0) == 0; };
    return has(recording, call.process, call.began) && (!thread || call.thread == *thread) &&
           (is_library == is_driver || is_of_library(call) == is_library) &&
           (patterns.empty() || std::any_of(patterns.begin(), patterns.end(), matches)) &&
           (!is_failed || has_failed(call));
}

}  // namespace adptrace
