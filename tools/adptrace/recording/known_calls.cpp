// Joins the tables of exported and imported calls.
#include "tools/adptrace/recording/known_calls.h"

#include <algorithm>
#include <cctype>
#include <map>

#include "calls/call_table.h"
#include "calls/exported.h"

namespace adptrace {
namespace {

constexpr size_t kLongestName = 128;

std::map<std::string_view, KnownCall> known_calls() {
    std::map<std::string_view, KnownCall> known;
    for (const exported::Call &call : exported::calls()) {
        known[call.name] = {call.name, Call::Kind::kLibrary, call.result, call.layout, call.params};
    }
    for (const calls::Call &call : calls::calls()) {
        known[call.name] = {call.name, Call::Kind::kImported, call.result, nullptr, call.params};
    }
    return known;
}

}  // namespace

const KnownCall *known_call(std::string_view name) {
    static const std::map<std::string_view, KnownCall> known = known_calls();
    const auto found = known.find(name);
    return found == known.end() ? nullptr : &found->second;
}

bool is_call_name(std::string_view text) {
    return !text.empty() && text.size() <= kLongestName &&
           std::all_of(text.begin(), text.end(), [](unsigned char c) { return std::isalnum(c) != 0 || c == '_'; });
}

}  // namespace adptrace
