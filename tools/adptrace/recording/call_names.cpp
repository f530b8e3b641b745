// A call that this build does not know is of another version of the library: its name stays as the recording has it.
#include "tools/adptrace/recording/call_names.h"

#include <algorithm>
#include <cctype>
#include <map>

#include "calls/call_table.h"
#include "calls/exported.h"

namespace adptrace {
namespace {

constexpr size_t kLongestName = 128;

std::map<std::string_view, Call::Kind> known_names() {
    std::map<std::string_view, Call::Kind> names;
    for (const exported::Call &call : exported::calls()) {
        names.emplace(call.name, Call::Kind::kLibrary);
    }
    for (const calls::Call &call : calls::calls()) {
        names.emplace(call.name, Call::Kind::kImported);
    }
    return names;
}

bool is_name(std::string_view text) {
    return !text.empty() && text.size() <= kLongestName &&
           std::all_of(text.begin(), text.end(), [](unsigned char c) { return std::isalnum(c) != 0 || c == '_'; });
}

}  // namespace

CallName call_name(std::string_view name, std::string_view line) {
    static const std::map<std::string_view, Call::Kind> known = known_names();
    if (const auto found = known.find(name); found != known.end()) {
        return {found->first, found->second};
    }
    // The parsed name is gone with its line; the recording's text stays.
    const size_t place = is_name(name) ? line.find(name) : std::string_view::npos;
    return {place == std::string_view::npos ? std::string_view() : line.substr(place, name.size()),
            Call::Kind::kUnknown};
}

}  // namespace adptrace
